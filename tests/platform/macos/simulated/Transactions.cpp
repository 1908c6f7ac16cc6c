#include "tests/platform/macos/simulated/Transactions.h"

#include <CoreGraphics/CoreGraphics.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/Desk.h"
#include "tests/platform/macos/simulated/Reports.h"

struct SimulatedTransaction {
    std::vector<tavrel::simulatedMac::Change> changes;
};

namespace tavrel::simulatedMac {

namespace {

struct Transactions {
    std::mutex mutex;
    std::map<CGDisplayConfigRef, std::unique_ptr<SimulatedTransaction>> open;
};

Transactions& transactions() {
    static Transactions transactions;
    return transactions;
}

/// Takes it out of the open ones; null if it is none of them.
std::unique_ptr<SimulatedTransaction> close(CGDisplayConfigRef configuration) {
    const std::lock_guard lock(transactions().mutex);
    auto node = transactions().open.extract(configuration);
    return node.empty() ? nullptr : std::move(node.mapped());
}

void carryOut(const std::vector<Change>& changes) {
    const auto post = [](State& state, std::vector<Report> reports) {
        for (Report& each : reports) {
            each.madeBy = getpid();
            add(state, each);
        }
        return reports;
    };
    SharedState& mac = SharedState::ofThisProcess();
    report(mac.with([&](State& state) { return post(state, beginReports(state, changes)); }));
    report(mac.with([&](State& state) {
        const std::vector<Report> reports = endReports(state, changes);
        applyChanges(state, changes);
        return post(state, reports);
    }));
}

std::int32_t configure(const char* name, void* configuration, std::uint32_t display,
                       std::int32_t enabled) {
    note(name + ("(" + std::to_string(display)) + ", " + std::to_string(enabled) + ")");
    if (const std::int32_t status = refusal(&Refusals::configure)) {
        return status;
    }
    const bool isThere = SharedState::ofThisProcess().with([&](State& state) {
        const Display* found = find(state, display);
        return found != nullptr && found->connected;
    });
    if (!isThere) {
        return kCGErrorIllegalArgument;
    }
    const std::lock_guard lock(transactions().mutex);
    const auto open = transactions().open.find(static_cast<CGDisplayConfigRef>(configuration));
    if (open == transactions().open.end()) {
        return kCGErrorInvalidContext;
    }
    open->second->changes.push_back({display, enabled != 0});
    return kCGErrorSuccess;
}

std::int32_t list(const char* name, std::uint32_t maxCount, std::uint32_t* displays,
                  std::uint32_t* count) {
    note(name + ("(" + std::to_string(maxCount)) + ")");
    return SharedState::ofThisProcess().with([&](State& state) {
        if (state.refusals.privateList != 0) {
            return state.refusals.privateList;
        }
        *count = 0;
        for (const Display& each : state.displays) {
            const bool isListed =
                each.connected &&
                (each.enabled || each.whenOff == Display::WhenOff::staysInPrivateList);
            if (each.id != 0 && isListed && *count < maxCount) {
                displays[(*count)++] = each.id;
            }
        }
        *count += static_cast<std::uint32_t>(state.refusals.claimed);
        return std::int32_t{kCGErrorSuccess};
    });
}

std::int32_t cgsConfigure(void* configuration, std::uint32_t display, std::int32_t enabled) {
    return configure("CGSConfigureDisplayEnabled", configuration, display, enabled);
}
std::int32_t slsConfigure(void* configuration, std::uint32_t display, std::int32_t enabled) {
    return configure("SLSConfigureDisplayEnabled", configuration, display, enabled);
}
std::int32_t slsList(std::uint32_t maxCount, std::uint32_t* displays, std::uint32_t* count) {
    return list("SLSGetDisplayList", maxCount, displays, count);
}
std::int32_t cgsList(std::uint32_t maxCount, std::uint32_t* displays, std::uint32_t* count) {
    return list("CGSGetDisplayList", maxCount, displays, count);
}

}  // namespace

std::size_t openTransactions() {
    const std::lock_guard lock(transactions().mutex);
    return transactions().open.size();
}

void* privateEntryPoint(const char* name, unsigned offered) {
    struct Entry {
        std::string_view name;
        unsigned bit;
        void* address;
    };
    const Entry entries[] = {
        {"CGSConfigureDisplayEnabled", entryPoint::cgsConfigure,
         reinterpret_cast<void*>(&cgsConfigure)},
        {"SLSConfigureDisplayEnabled", entryPoint::slsConfigure,
         reinterpret_cast<void*>(&slsConfigure)},
        {"SLSGetDisplayList", entryPoint::slsList, reinterpret_cast<void*>(&slsList)},
        {"CGSGetDisplayList", entryPoint::cgsList, reinterpret_cast<void*>(&cgsList)},
    };
    const auto* const found = std::find_if(
        std::begin(entries), std::end(entries),
        [&](const Entry& each) { return each.name == name && (offered & each.bit) != 0; });
    return found == std::end(entries) ? nullptr : found->address;
}

}  // namespace tavrel::simulatedMac

extern "C" {

CGError CGBeginDisplayConfiguration(CGDisplayConfigRef* configuration) {
    using namespace tavrel::simulatedMac;
    note("CGBeginDisplayConfiguration");
    if (const std::int32_t status = refusal(&Refusals::begin)) {
        return static_cast<CGError>(status);
    }
    auto transaction = std::make_unique<SimulatedTransaction>();
    *configuration = transaction.get();
    const std::lock_guard lock(transactions().mutex);
    transactions().open.emplace(*configuration, std::move(transaction));
    return kCGErrorSuccess;
}

CGError CGCancelDisplayConfiguration(CGDisplayConfigRef configuration) {
    using namespace tavrel::simulatedMac;
    note("CGCancelDisplayConfiguration");
    if (close(configuration) == nullptr) {
        return kCGErrorInvalidContext;
    }
    return static_cast<CGError>(refusal(&Refusals::cancel));
}

CGError CGCompleteDisplayConfiguration(CGDisplayConfigRef configuration, CGConfigureOption option) {
    using namespace tavrel::simulatedMac;
    note("CGCompleteDisplayConfiguration(" + std::to_string(option) + ")");
    const auto transaction = close(configuration);
    if (transaction == nullptr) {
        return kCGErrorInvalidContext;
    }
    if (const std::int32_t status = refusal(&Refusals::complete)) {
        return static_cast<CGError>(status);
    }
    carryOut(transaction->changes);
    return kCGErrorSuccess;
}
}

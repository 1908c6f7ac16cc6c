// The window server's transactions, its private entry points, and a loader in place of the
// real one, which finds those in the process and cannot open their framework.
#include "tests/platform/macos/simulated/Transactions.h"

#include <CoreGraphics/CoreGraphics.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "display/control/DynamicLoader.h"
#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/CoreGraphics.h"
#include "tests/platform/macos/simulated/Desk.h"

struct SimulatedTransaction {
    std::vector<tavrel::simulatedMac::Change> changes;
};

namespace tavrel {

namespace simulatedMac {

namespace {

struct Transactions {
    std::mutex mutex;
    std::map<void*, std::unique_ptr<SimulatedTransaction>> open;
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

std::int32_t configureDisplayEnabled(void* configuration, std::uint32_t display,
                                     std::int32_t enabled) {
    note("CGSConfigureDisplayEnabled(" + std::to_string(display) + ", " + std::to_string(enabled) +
         ")");
    if (const std::int32_t status = refusal(&Refusals::configure)) {
        return status;
    }
    const bool isThere = SharedState::ofThisProcess().with([&](State& state) {
        state.switchOnRequests += enabled != 0 ? 1 : 0;
        const Display* found = find(state, display);
        return found != nullptr && found->connected;
    });
    if (!isThere) {
        return kCGErrorIllegalArgument;
    }
    const std::lock_guard lock(transactions().mutex);
    const auto open = transactions().open.find(configuration);
    if (open == transactions().open.end()) {
        return kCGErrorInvalidContext;
    }
    open->second->changes.push_back({display, enabled != 0});
    return kCGErrorSuccess;
}

std::int32_t getDisplayList(std::uint32_t maxCount, std::uint32_t* displays, std::uint32_t* count) {
    note("CGSGetDisplayList(" + std::to_string(maxCount) + ")");
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
        *count += static_cast<std::uint32_t>(state.claimedTooMany);
        return std::int32_t{kCGErrorSuccess};
    });
}

}  // namespace

std::size_t openTransactions() {
    const std::lock_guard lock(transactions().mutex);
    return transactions().open.size();
}

}  // namespace simulatedMac

void* DynamicLoader::open(const char* path, int mode) {
    simulatedMac::note(std::string("dlopen(") + path + ", " + std::to_string(mode) + ")");
    return nullptr;
}

void* DynamicLoader::findInProcess(const char* symbol) {
    using namespace simulatedMac;
    const std::string_view name = symbol;
    const bool isThere =
        SharedState::ofThisProcess().with([](State& state) { return state.hasEntryPoints; });
    return !isThere ? nullptr
           : name == "CGSConfigureDisplayEnabled"
               ? reinterpret_cast<void*>(&configureDisplayEnabled)
           : name == "CGSGetDisplayList" ? reinterpret_cast<void*>(&getDisplayList)
                                         : nullptr;
}

void* DynamicLoader::findInLibrary(void* /*library*/, const char* /*symbol*/) {
    return nullptr;
}

}  // namespace tavrel

using namespace tavrel::simulatedMac;

extern "C" {

CGError CGBeginDisplayConfiguration(CGDisplayConfigRef* configuration) {
    note("CGBeginDisplayConfiguration");
    // Lets a change on another thread come in between, if nothing prevents it.
    std::this_thread::sleep_for(std::chrono::microseconds(100));
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
    note("CGCancelDisplayConfiguration");
    if (close(configuration) == nullptr) {
        return kCGErrorInvalidContext;
    }
    return static_cast<CGError>(refusal(&Refusals::cancel));
}

CGError CGCompleteDisplayConfiguration(CGDisplayConfigRef configuration, CGConfigureOption option) {
    note("CGCompleteDisplayConfiguration(" + std::to_string(option) + ")");
    const auto transaction = close(configuration);
    if (transaction == nullptr) {
        return kCGErrorInvalidContext;
    }
    if (const std::int32_t status = refusal(&Refusals::complete)) {
        return static_cast<CGError>(status);
    }
    SharedState& mac = SharedState::ofThisProcess();
    const bool hangs = mac.with([](State& each) {
        const bool isOne = each.changesToHang > 0;
        each.changesToHang -= isOne ? 1 : 0;
        each.hangingChanges += isOne ? 1 : 0;
        return isOne;
    });
    while (hangs && mac.with([](State& each) { return each.hangingChanges > 0; })) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    report(mac.with([&](State& each) { return begin(each, transaction->changes, getpid()); }));
    report(mac.with([&](State& each) { return complete(each, transaction->changes, getpid()); }));
    return kCGErrorSuccess;
}
}

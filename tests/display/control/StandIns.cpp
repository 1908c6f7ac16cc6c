#include "tests/display/control/StandIns.h"

#include <algorithm>
#include <string_view>

#include "display/control/DisplayTransaction.h"
#include "display/control/DynamicLoader.h"

namespace tavrel {

namespace standIns {

State& state() {
    static State state;
    return state;
}

namespace {

int transactionBegunLast;  // NOLINT(*-avoid-non-const-global-variables): only its address counts
int framework;             // NOLINT(*-avoid-non-const-global-variables): likewise

constexpr char inProcess[] = "process";
constexpr char inFramework[] = "framework";
constexpr char cgsConfigure[] = "CGSConfigureDisplayEnabled";
constexpr char slsConfigure[] = "SLSConfigureDisplayEnabled";
constexpr char slsList[] = "SLSGetDisplayList";
constexpr char cgsList[] = "CGSGetDisplayList";

void note(const std::string& call) {
    state().calls.push_back(call);
}

std::string nameOf(const void* configuration) {
    return configuration == &transactionBegunLast ? "transaction"
           : configuration == nullptr             ? "null"
                                                  : "something else";
}

template <const char* place, const char* name>
std::int32_t configure(void* configuration, std::uint32_t display, std::int32_t enabled) {
    note(std::string(place) + " " + name + "(" + nameOf(configuration) + ", " +
         std::to_string(display) + ", " + std::to_string(enabled) + ")");
    return state().configureStatus;
}

template <const char* place, const char* name>
std::int32_t list(std::uint32_t maxCount, std::uint32_t* displays, std::uint32_t* count) {
    note(std::string(place) + " " + name + "(" + std::to_string(maxCount) +
         (displays == nullptr ? ", null" : ", array") +
         (count == nullptr ? ", null)" : ", count)"));
    if (displays != nullptr) {
        std::copy(state().displays.begin(), state().displays.end(), displays);
    }
    if (count != nullptr) {
        *count = static_cast<std::uint32_t>(state().displays.size());
    }
    return state().listStatus;
}

/// The entry point of this name at one place, or null when the place does not offer it.
template <const char* place>
void* find(const Names& offered, std::string_view symbol) {
    if (std::find(offered.begin(), offered.end(), symbol) == offered.end()) {
        return nullptr;
    }
    return symbol == cgsConfigure   ? reinterpret_cast<void*>(&configure<place, cgsConfigure>)
           : symbol == slsConfigure ? reinterpret_cast<void*>(&configure<place, slsConfigure>)
           : symbol == slsList      ? reinterpret_cast<void*>(&list<place, slsList>)
           : symbol == cgsList      ? reinterpret_cast<void*>(&list<place, cgsList>)
                                    : nullptr;
}

}  // namespace
}  // namespace standIns

void* DynamicLoader::open(const char* path, int mode) {
    standIns::state().openings.push_back(path + (", " + std::to_string(mode)));
    return standIns::state().offer.framework ? &standIns::framework : nullptr;
}

void* DynamicLoader::findInProcess(const char* symbol) {
    return standIns::find<standIns::inProcess>(standIns::state().offer.process, symbol);
}

void* DynamicLoader::findInLibrary(void* library, const char* symbol) {
    const auto& offered = standIns::state().offer.framework;
    return library == &standIns::framework && offered
               ? standIns::find<standIns::inFramework>(*offered, symbol)
               : nullptr;
}

}  // namespace tavrel

using namespace tavrel::standIns;

extern "C" {

std::int32_t CGBeginDisplayConfiguration(void** configuration) {
    note("begin(" + nameOf(*configuration) + ")");
    if (state().beginStatus == 0) {
        *configuration = &transactionBegunLast;
    }
    return state().beginStatus;
}

std::int32_t CGCancelDisplayConfiguration(void* configuration) {
    note("cancel(" + nameOf(configuration) + ")");
    return state().cancelStatus;
}

std::int32_t CGCompleteDisplayConfiguration(void* configuration, std::uint32_t option) {
    note("complete(" + nameOf(configuration) + ", " + std::to_string(option) + ")");
    return state().completeStatus;
}
}

#include "tests/display/control/StandIns.h"

#include <dlfcn.h>

#include <algorithm>

#include "display/control/DisplayTransaction.h"
#include "tests/display/control/EntryPoints.h"

using tavrel::standIns::state;

namespace tavrel::standIns {

State& state() {
    static State state;
    return state;
}

namespace {

int transactionBegunLast;  // NOLINT(*-avoid-non-const-global-variables): only its address counts

std::string nameOf(const void* configuration) {
    return configuration == &transactionBegunLast ? "transaction"
           : configuration == nullptr             ? "null"
                                                  : "something else";
}

}  // namespace
}  // namespace tavrel::standIns

extern "C" {

void* dlopen(const char* path, int mode) noexcept {
    using Open = void* (*)(const char*, int);
    static const auto realOpen = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"));
    if (path == nullptr || path != tavrel::standIns::frameworkOpening.path) {
        return realOpen(path, mode);
    }
    state().openings.push_back({path, mode});
    const std::string& file = state().frameworkFile;
    return file.empty() ? nullptr : realOpen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

std::int32_t CGBeginDisplayConfiguration(void** configuration) {
    state().calls.push_back("begin(" + tavrel::standIns::nameOf(*configuration) + ")");
    if (state().beginStatus == 0) {
        *configuration = &tavrel::standIns::transactionBegunLast;
    }
    return state().beginStatus;
}

std::int32_t CGCancelDisplayConfiguration(void* configuration) {
    state().calls.push_back("cancel(" + tavrel::standIns::nameOf(configuration) + ")");
    return state().cancelStatus;
}

std::int32_t CGCompleteDisplayConfiguration(void* configuration, std::uint32_t option) {
    state().calls.push_back("complete(" + tavrel::standIns::nameOf(configuration) + ", " +
                            std::to_string(option) + ")");
    return state().completeStatus;
}

std::int32_t standInConfigure(const char* name, void* configuration, std::uint32_t display,
                              std::int32_t enabled) {
    state().calls.push_back(name + ("(" + tavrel::standIns::nameOf(configuration)) + ", " +
                            std::to_string(display) + ", " + std::to_string(enabled) + ")");
    return state().configureStatus;
}

std::int32_t standInGetDisplayList(const char* name, std::uint32_t maxCount,
                                   std::uint32_t* displays, std::uint32_t* count) {
    state().calls.push_back(name + ("(" + std::to_string(maxCount)) +
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
}

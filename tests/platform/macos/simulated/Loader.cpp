// The system's loader, in place of the real one.
#include <string_view>

#include "display/control/DynamicLoader.h"
#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/SharedState.h"
#include "tests/platform/macos/simulated/Transactions.h"

namespace tavrel::DynamicLoader {

namespace {

using simulatedMac::EntryPoints;
using simulatedMac::State;

EntryPoints entryPoints() {
    return simulatedMac::SharedState::ofThisProcess().with(
        [](State& state) { return state.entryPoints; });
}

/// Only its address counts.
void* framework() {
    static char framework = 0;
    return &framework;
}

}  // namespace

void* open(const char* path, int mode) {
    simulatedMac::note(std::string("dlopen(") + path + ", " + std::to_string(mode) + ")");
    return entryPoints().hasFramework ? framework() : nullptr;
}

void* findInProcess(const char* symbol) {
    return simulatedMac::privateEntryPoint(symbol, entryPoints().inProcess);
}

void* findInLibrary(void* library, const char* symbol) {
    return library == framework()
               ? simulatedMac::privateEntryPoint(symbol, entryPoints().inFramework)
               : nullptr;
}

}  // namespace tavrel::DynamicLoader

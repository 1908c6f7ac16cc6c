#include "display/control/DisplayControl.h"

#include "display/control/DisplayTransaction.h"
#include "display/control/DynamicLoader.h"
#include "platform/DisplayID.h"

namespace {

constexpr const char* frameworkPath =
    "/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight";
/// Lazy binding and local symbols, in the Mac's numbers, since only a Mac has the file.
constexpr int lazyAndLocal = 5;
constexpr std::uint32_t permanently = 2;

void* findInFramework(const char* preferred, const char* otherwise) {
    void* const framework = openSkyLight();
    if (framework == nullptr) {
        return nullptr;
    }
    void* const symbol = tavrel::DynamicLoader::findInLibrary(framework, preferred);
    return symbol != nullptr ? symbol : tavrel::DynamicLoader::findInLibrary(framework, otherwise);
}

}  // namespace

void* openSkyLight() {
    static bool attemptedResolution = false;
    static void* skyLight = nullptr;  // NOLINT(*-avoid-non-const-global-variables)
    if (!attemptedResolution) {
        attemptedResolution = true;
        skyLight = tavrel::DynamicLoader::open(frameworkPath, lazyAndLocal);
    }
    return skyLight;
}

DCTLConfigureDisplayEnabled resolveConfigureDisplayEnabled() {
    static bool attemptedResolution = false;
    static DCTLConfigureDisplayEnabled function = nullptr;
    if (!attemptedResolution) {
        attemptedResolution = true;
        // Unlike for the list, the newer SLS name counts in the framework only.
        void* symbol = tavrel::DynamicLoader::findInProcess("CGSConfigureDisplayEnabled");
        if (symbol == nullptr) {
            symbol = findInFramework("CGSConfigureDisplayEnabled", "SLSConfigureDisplayEnabled");
        }
        function = reinterpret_cast<DCTLConfigureDisplayEnabled>(symbol);
    }
    return function;
}

DCTLDisplayList resolveGetDisplayList() {
    static bool attemptedResolution = false;
    static DCTLDisplayList function = nullptr;
    if (!attemptedResolution) {
        attemptedResolution = true;
        void* symbol = tavrel::DynamicLoader::findInProcess("SLSGetDisplayList");
        if (symbol == nullptr) {
            symbol = tavrel::DynamicLoader::findInProcess("CGSGetDisplayList");
        }
        if (symbol == nullptr) {
            symbol = findInFramework("SLSGetDisplayList", "CGSGetDisplayList");
        }
        function = reinterpret_cast<DCTLDisplayList>(symbol);
    }
    return function;
}

bool DCTLCanControlDisplays() {
    return resolveConfigureDisplayEnabled() != nullptr;
}

std::int32_t DCTLGetDisplayList(std::uint32_t maxCount, std::uint32_t* displays,
                                std::uint32_t* count) {
    const DCTLDisplayList getDisplayList = resolveGetDisplayList();
    if (getDisplayList == nullptr) {
        return tavrel::serverStatus::notImplemented;
    }
    return getDisplayList(maxCount, displays, count);
}

std::int32_t DCTLSetDisplayEnabled(std::uint32_t displayID, bool enabled) {
    const DCTLConfigureDisplayEnabled configure = resolveConfigureDisplayEnabled();
    if (configure == nullptr) {
        return tavrel::serverStatus::notImplemented;
    }
    void* configuration = nullptr;
    const std::int32_t begun = CGBeginDisplayConfiguration(&configuration);
    if (begun != tavrel::serverStatus::success) {
        return begun;
    }
    const std::int32_t configured = configure(configuration, displayID, enabled ? 1 : 0);
    if (configured != tavrel::serverStatus::success) {
        CGCancelDisplayConfiguration(configuration);
        return configured;
    }
    return CGCompleteDisplayConfiguration(configuration, permanently);
}

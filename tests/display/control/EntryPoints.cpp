// The entry points that one place offers, the process or the framework: those whose
// HAS_… is defined. PLACE is its name.
#include "tests/display/control/EntryPoints.h"

extern "C" {

#if defined(HAS_CGSConfigureDisplayEnabled)
std::int32_t CGSConfigureDisplayEnabled(void* configuration, std::uint32_t display,
                                        std::int32_t enabled) {
    return standInConfigure(PLACE " CGSConfigureDisplayEnabled", configuration, display, enabled);
}
#endif

#if defined(HAS_SLSConfigureDisplayEnabled)
std::int32_t SLSConfigureDisplayEnabled(void* configuration, std::uint32_t display,
                                        std::int32_t enabled) {
    return standInConfigure(PLACE " SLSConfigureDisplayEnabled", configuration, display, enabled);
}
#endif

#if defined(HAS_SLSGetDisplayList)
std::int32_t SLSGetDisplayList(std::uint32_t maxCount, std::uint32_t* displays,
                               std::uint32_t* count) {
    return standInGetDisplayList(PLACE " SLSGetDisplayList", maxCount, displays, count);
}
#endif

#if defined(HAS_CGSGetDisplayList)
std::int32_t CGSGetDisplayList(std::uint32_t maxCount, std::uint32_t* displays,
                               std::uint32_t* count) {
    return standInGetDisplayList(PLACE " CGSGetDisplayList", maxCount, displays, count);
}
#endif
}

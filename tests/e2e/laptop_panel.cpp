// Loaded into the application before its libraries: the virtual desktop's first monitor gets
// the name of a laptop's panel, which no virtual X server has.

#include <dlfcn.h>
#include <xcb/randr.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

extern "C" std::uint8_t* xcb_randr_get_output_info_name(
    const xcb_randr_get_output_info_reply_t* reply) {
    using Function = std::uint8_t* (*)(const xcb_randr_get_output_info_reply_t*);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way.
    static const auto original =
        reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "xcb_randr_get_output_info_name"));
    constexpr std::string_view firstMonitor = "DUMMY0";
    constexpr std::string_view panel = "eDP-00";
    static_assert(firstMonitor.size() == panel.size());

    std::uint8_t* name = original(reply);
    if (std::equal(name, name + reply->name_len, firstMonitor.begin(), firstMonitor.end())) {
        std::copy(panel.begin(), panel.end(), name);
    }
    return name;
}

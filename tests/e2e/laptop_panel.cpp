// Loaded into the application before its libraries: in what the server replies, the virtual
// desktop's first monitor has the name of a laptop's panel, which no virtual X server has.

#include <dlfcn.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace {

void renameFirstMonitor(void* reply) {
    constexpr std::string_view firstMonitor = "DUMMY0";
    constexpr std::string_view panel = "eDP-00";
    static_assert(firstMonitor.size() == panel.size());

    // Of every reply: the smallest one, and how many units of four bytes it is longer.
    constexpr std::uint32_t smallest = 32;
    const std::uint32_t size = smallest + 4 * static_cast<xcb_generic_reply_t*>(reply)->length;
    auto* begin = static_cast<char*>(reply);
    auto* end = begin + size;
    auto* name = std::search(begin, end, firstMonitor.begin(), firstMonitor.end());
    if (name != end) {
        std::copy(panel.begin(), panel.end(), name);
    }
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): it takes that function's place.
extern "C" int xcb_poll_for_reply(xcb_connection_t* connection, unsigned int request, void** reply,
                                  xcb_generic_error_t** error) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way.
    static const auto original =
        reinterpret_cast<decltype(&xcb_poll_for_reply)>(::dlsym(RTLD_NEXT, "xcb_poll_for_reply"));
    const int found = original(connection, request, reply, error);
    if (found != 0 && *reply != nullptr) {
        renameFirstMonitor(*reply);
    }
    return found;
}

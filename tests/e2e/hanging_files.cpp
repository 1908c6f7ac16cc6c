// Preloaded into a program, lets its file system hang for one folder: as long as the file that
// HANGING_WHILE names exists, no call to open a file below HANGING_FOLDER, or to ask for its
// state, returns. That one has begun to hang shows by a file with "-seen" at the end of its name.
// A real file system that hangs takes rights that not everybody has.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using Open = int (*)(const char*, int, ...);

void hangIfTold(const char* path) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way.
    static const auto realOpen = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    const char* folder = std::getenv("HANGING_FOLDER");
    const char* mark = std::getenv("HANGING_WHILE");
    if (folder == nullptr || mark == nullptr || !std::string_view(path).starts_with(folder)) {
        return;
    }
    const std::string seen = std::string(mark) + "-seen";
    while (access(mark, F_OK) == 0) {
        constexpr mode_t ownerFile = 0600;
        close(realOpen(seen.c_str(), O_WRONLY | O_CREAT, ownerFile));
        constexpr useconds_t interval = 5000;
        usleep(interval);
    }
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way.
    static const auto real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    hangIfTold(path);
    return real(path, flags, mode);
}

extern "C" int stat(const char* path, struct stat* status) {
    using Stat = int (*)(const char*, struct stat*);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way.
    static const auto real = reinterpret_cast<Stat>(dlsym(RTLD_NEXT, "stat"));
    hangIfTold(path);
    return real(path, status);
}

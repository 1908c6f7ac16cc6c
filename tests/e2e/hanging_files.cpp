// Preloaded into a program, lets its file system hang for one folder: as long as the file that
// HANGING_WHILE names exists, no call to open a file below HANGING_FOLDER returns. A real file
// system that hangs takes rights that not everybody has.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <string_view>

namespace {

using Open = int (*)(const char*, int, ...);

void hangIfTold(const char* path) {
    const char* folder = std::getenv("HANGING_FOLDER");
    const char* mark = std::getenv("HANGING_WHILE");
    if (folder == nullptr || mark == nullptr || !std::string_view(path).starts_with(folder)) {
        return;
    }
    while (access(mark, F_OK) == 0) {
        constexpr useconds_t interval = 5000;
        usleep(interval);
    }
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
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

#include "platform/posix/SessionLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace tavrel {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Whether nobody else can put anything there.
bool isOursAlone(const std::filesystem::path& folder) {
    struct stat found {};
    return ::lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
           found.st_uid == ::geteuid() && (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::filesystem::path runtimeFolder() {
    std::filesystem::path named = variable("XDG_RUNTIME_DIR");
    if (named.is_absolute()) {
        return named;
    }
    std::error_code error;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path(error) / ("tavrel-" + std::to_string(::geteuid()));
    ::mkdir(folder.c_str(), S_IRWXU);
    return isOursAlone(folder) ? folder : std::filesystem::path{};
}

std::string session() {
    const std::string wayland = variable("WAYLAND_DISPLAY");
    std::string name = wayland.empty() ? variable("DISPLAY") : wayland;
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

}  // namespace

SessionLock::SessionLock(const std::filesystem::path& file)
    : file_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                   S_IRUSR | S_IWUSR)) {
    // Not flock's: a process that is being started has that too until it is another program, and
    // may outlive us.
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    isHeldByAnother_ = file_.isOpen() && ::fcntl(file_.number(), F_SETLK, &whole) != 0 &&
                       (errno == EACCES || errno == EAGAIN);
}

std::filesystem::path sessionLockPath(const std::string& applicationId) {
    const std::filesystem::path folder = runtimeFolder();
    return folder.empty() ? folder : folder / (applicationId + session() + ".lock");
}

}  // namespace tavrel

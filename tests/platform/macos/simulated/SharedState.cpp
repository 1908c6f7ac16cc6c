#include "tests/platform/macos/simulated/SharedState.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::simulatedMac {

namespace {

void* map(std::size_t size, int file) {
    const int kind = file < 0 ? MAP_SHARED | MAP_ANONYMOUS : MAP_SHARED;
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, kind, file, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory for a simulated Mac");
    }
    return memory;
}

/// It stays usable when the process that holds it is killed.
void initialize(pthread_mutex_t& mutex) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

}  // namespace

SharedState::SharedState(const std::filesystem::path& path) {
    const FileDescriptor file(
        path.empty() ? -1 : open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    struct stat status = {};
    if (!path.empty() && (!file.isOpen() || flock(file.number(), LOCK_EX) != 0 ||
                          fstat(file.number(), &status) != 0)) {
        throw std::runtime_error("no file for a simulated Mac: " + path.string());
    }
    const bool isNew = status.st_size == 0;
    if (isNew && file.isOpen() && ftruncate(file.number(), sizeof(Block)) != 0) {
        throw std::runtime_error("no room for a simulated Mac: " + path.string());
    }
    void* memory = map(sizeof(Block), file.number());
    block_ = isNew ? new (memory) Block{} : static_cast<Block*>(memory);
    if (isNew) {
        initialize(block_->mutex);
    }
    // Closing does not release the lock, since the mapping keeps the file open too.
    flock(file.number(), LOCK_UN);
}

SharedState::~SharedState() {
    munmap(block_, sizeof(Block));
}

SharedState& SharedState::ofThisProcess() {
    static SharedState state(std::getenv(variable) == nullptr ? "" : std::getenv(variable));
    return state;
}

SharedState::Lock::Lock(SharedState& shared) : block_(*shared.block_) {
    if (pthread_mutex_lock(&block_.mutex) == EOWNERDEAD) {
        pthread_mutex_consistent(&block_.mutex);
    }
}

SharedState::Lock::~Lock() {
    pthread_mutex_unlock(&block_.mutex);
}

std::int32_t refusal(Refusal which) {
    return SharedState::ofThisProcess().with([&](State& state) { return state.refusals.*which; });
}

}  // namespace tavrel::simulatedMac

#include "tests/support/NoMoreThreads.h"

#include <pthread.h>

#include <stdexcept>

namespace tavrel::support {

namespace {

/// Returns the size until now.
std::size_t setStackSizeOfNewThreads(std::size_t size) {
    pthread_attr_t attributes;
    std::size_t before = 0;
    if (pthread_getattr_default_np(&attributes) != 0 ||
        pthread_attr_getstacksize(&attributes, &before) != 0 ||
        pthread_attr_setstacksize(&attributes, size) != 0 ||
        pthread_setattr_default_np(&attributes) != 0) {
        throw std::runtime_error("the stacks of new threads cannot be given another size");
    }
    pthread_attr_destroy(&attributes);
    return before;
}

/// More than the addresses that a process has.
constexpr std::size_t moreThanThereIs = std::size_t{1} << 56U;

}  // namespace

// A limit on the number of threads binds no superuser; no stack of this size is to be had by
// anyone.
NoMoreThreads::NoMoreThreads() : stackSizeBefore_(setStackSizeOfNewThreads(moreThanThereIs)) {}

NoMoreThreads::~NoMoreThreads() {
    setStackSizeOfNewThreads(stackSizeBefore_);
}

}  // namespace tavrel::support

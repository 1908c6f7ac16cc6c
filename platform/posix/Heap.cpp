#include "platform/posix/Heap.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace tavrel {

void shareOneHeap() {
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 1);
    // Set, or it would grow with each big block that is freed, and such blocks would stay.
    constexpr int bigBlock = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, bigBlock);
#endif
}

}  // namespace tavrel

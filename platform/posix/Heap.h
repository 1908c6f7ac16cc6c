#pragma once

namespace tavrel {

/// Has all threads share one heap, instead of one for each that holds what it once needed, and
/// big blocks given back as soon as they are free. To be called before the first thread is
/// started. Does nothing where the system's library has no such settings.
void shareOneHeap();

}  // namespace tavrel

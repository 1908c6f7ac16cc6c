#pragma once

namespace tavrel {

/// From now on a write to a peer that has gone fails with EPIPE instead of ending this process.
/// To be called before the first connection to an X server: xcb (1.15) writes without asking for
/// that, on whichever thread it is used. Programs started from here inherit it.
void ignoreBrokenPipes();

}  // namespace tavrel

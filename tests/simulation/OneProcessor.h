#pragma once

namespace tavrel::simulation {

/// From now on this thread and those it starts run on one processor; for another `job` of the same
/// program that is another one, as long as there are enough. Of the threads of a simulated world
/// one runs at a time, and to pass the turn to another processor takes several times as long.
/// Does nothing where the system has no call for that.
void stayOnOneProcessor(unsigned job);

}  // namespace tavrel::simulation

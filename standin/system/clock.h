// The clock that run loops go by, and that tests can take over so that none of them has to wait.
#pragma once

#include <poll.h>

#include <vector>

#include "standin/gate/gate.h"

namespace standin {

// Seconds since some moment; never goes back.
STANDIN_API double clockTime();

// From now on the clock stands still until it is advanced, or until a run loop has nothing else to do:
// waiting for a time then means setting the clock to it. It goes on by itself again once it is released.
STANDIN_API void holdClock();
STANDIN_API void advanceClock(double seconds);
STANDIN_API void releaseClock();

// How far a held clock is ahead of the time that has passed since it was first held; 0 when it isn't ahead,
// or isn't held. For whoever goes by the system's time, too.
STANDIN_API double timeSkipped();

// Waits until one of the descriptors is ready, which its `revents` then tell, or the clock shows `until`.
void waitOnClock(std::vector<pollfd>& descriptors, double until);

}  // namespace standin

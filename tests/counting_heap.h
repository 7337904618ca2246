// The process heap of a test program: it counts its blocks, refuses on demand, and fails the program that leaks.
#pragma once

#include <cstddef>

namespace counting_heap {

/// Blocks that were handed out and have not come back.
long liveBlocks();

/// Requests since the program began.
long requests();

/// Bytes of the last request.
std::size_t lastBytes();

/// Refuses the request after the next `served` ones, and all others until `serveAll`.
void refuseAfter(long served);
/// Refuses the one request after the next `served` ones.
void refuseOnce(long served);
/// Refuses every request of more than `bytes`.
void refuseAbove(std::size_t bytes);
void serveAll();

/// Fails the running test, when it goes, if blocks were handed out since it was made and are still live; serves again.
class LeakCheck {
public:
    LeakCheck();
    LeakCheck(LeakCheck const &) = delete;
    ~LeakCheck();

    LeakCheck & operator=(LeakCheck const &) = delete;

private:
    long liveAtFirst;
};

} // namespace counting_heap

// What the library itself does on the debug channel.
#pragma once

#include <atomic>
#include <cstddef>
#include <morvane/platform/debug_channel.h>

namespace morvane::platform {

/// The present listener; null when nobody listens.
extern std::atomic<DebugListener> debugListener;

/// True when somebody listens; false spares the caller all formatting.
inline bool isDebugListening() noexcept {
    return debugListener.load(std::memory_order_relaxed) != nullptr;
}

/// Hands one event to the listener; null is no event. What the listener throws passes through.
void debugOutput(unsigned short int const * text);

/// While one lives, the default listener may gather what this thread says; the last of a thread to go hands all of it
/// over.
///
/// It stands on the stack, where it takes some 4 KB. Only the thread that made it lets it go.
class DebugBatch {
public:
    DebugBatch() noexcept;
    DebugBatch(DebugBatch const &) = delete;
    ~DebugBatch();

    DebugBatch & operator=(DebugBatch const &) = delete;

    /// Adds bytes to what the outermost batch of this thread has gathered, or writes them where there is none.
    static void gather(char const * bytes, std::size_t count) noexcept;

private:
    void append(char const * bytes, std::size_t count) noexcept;
    void handOver() noexcept;

    std::size_t gathered;
    char buffer[4096];
};

} // namespace morvane::platform

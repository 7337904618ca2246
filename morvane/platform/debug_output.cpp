#include <morvane/platform/debug_output.h>

#include <cstdint>
#include <cstring>
#include <morvane/platform/standard_error.h>
#include <morvane/platform/utf8.h>

namespace morvane::platform {
namespace {

/// The outermost batch of the thread.
constinit thread_local DebugBatch * outermostBatch = nullptr;

/// The first listener: writes the text to standard error.
void listenOnStandardError(unsigned short int const * text) {
    DebugBatch batch; // so that one event is one write
    constexpr std::size_t longestCode = 4;
    char bytes[512];
    char * end = bytes;
    while (*text != 0) {
        if (bytes + sizeof(bytes) - end < static_cast<std::ptrdiff_t>(longestCode)) {
            DebugBatch::gather(bytes, static_cast<std::size_t>(end - bytes));
            end = bytes;
        }
        std::uint32_t const point = takeCodePoint(text);
        end = putCodePoint(end, isSurrogate(point) ? 0xFFFD : point);
    }
    DebugBatch::gather(bytes, static_cast<std::size_t>(end - bytes));
}

} // namespace

constinit std::atomic<DebugListener> debugListener{listenOnStandardError};

DebugListener setDebugListener(DebugListener listener) noexcept {
    return debugListener.exchange(listener, std::memory_order_acq_rel);
}

void debugOutput(unsigned short int const * text) {
    DebugListener const listener = debugListener.load(std::memory_order_acquire);
    if (listener != nullptr && text != nullptr) {
        listener(text);
    }
}

// The buffer needs no first value.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
DebugBatch::DebugBatch() noexcept : gathered(0) {
    if (outermostBatch == nullptr) {
        outermostBatch = this;
    }
}

DebugBatch::~DebugBatch() {
    if (outermostBatch == this) {
        handOver();
        outermostBatch = nullptr;
    }
}

void DebugBatch::gather(char const * bytes, std::size_t count) noexcept {
    if (outermostBatch != nullptr) {
        outermostBatch->append(bytes, count);
    } else {
        writeStandardError(bytes, count);
    }
}

void DebugBatch::append(char const * bytes, std::size_t count) noexcept {
    if (count > sizeof(buffer) - gathered) {
        handOver();
    }
    std::memcpy(buffer + gathered, bytes, count);
    gathered += count;
}

void DebugBatch::handOver() noexcept {
    if (gathered != 0) { // the system is not asked for nothing
        writeStandardError(buffer, gathered);
        gathered = 0;
    }
}

} // namespace morvane::platform

#include <morvane/platform/debug_output.h>

#include <cstdint>
#include <cstring>
#include <morvane/platform/standard_error.h>

namespace morvane::platform {
namespace {

/// The outermost batch of the thread.
constinit thread_local DebugBatch * outermostBatch = nullptr;

bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// The UTF-8 form of the code point behind `text`, which moves on behind it; gives the end of the bytes.
char * encodeNext(unsigned short int const *& text, char * target) {
    std::uint32_t code = *text++;
    if (isHighSurrogate(code) && isLowSurrogate(*text)) {
        code = 0x10000 + ((code - 0xD800) << 10) + (*text++ - 0xDC00U);
    } else if (isHighSurrogate(code) || isLowSurrogate(code)) {
        code = 0xFFFD;
    }
    auto const put = [&target](std::uint32_t byte) { *target++ = static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | (code >> 6));
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | (code >> 12));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | (code >> 18));
        put(0x80 | ((code >> 12) & 0x3F));
        put(0x80 | ((code >> 6) & 0x3F));
        put(0x80 | (code & 0x3F));
    }
    return target;
}

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
        end = encodeNext(text, end);
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
    writeStandardError(buffer, gathered);
    gathered = 0;
}

} // namespace morvane::platform

#include <morvane/encodings/utf8_codec.h>

#include <algorithm>
#include <cstdint>
#include <morvane/core/literals.h>
#include <morvane/encodings/utf8_kernels.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/unit_block.h>

namespace morvane::utf8 {

namespace {

using namespace morvane::literals;

/// Below this many bytes or units the plain form is the fastest.
constexpr std::size_t shortText = 16;
/// How many bytes the plain step takes where a run has stopped, before the next run is tried.
constexpr std::size_t plainStretch = 16;
/// How many units of a zero-closed text are measured at a time: they stay in the nearest cache until they are read.
constexpr std::size_t measuredStretch = 0x2000;

/// Takes sequences until `reading` stands at `stop` or behind it; false on a fault. A null target only counts.
template <bool hasTarget>
bool takePlain(DataView source, std::size_t stop, unsigned short int * target, Reading & reading) noexcept {
    auto byteAt = [&source](std::size_t index) { return static_cast<unsigned char>(source.data[index]); };
    std::size_t index = reading.index;
    std::size_t units = reading.units;
    bool hasZero = false;
    Fault fault = Fault::none;
    while (index < stop) {
        unsigned const first = byteAt(index);
        unsigned unit = first;
        if (first < 0x80) {
        } else if ((first & 0xE0U) == 0xC0) {
            index += 1;
            if (index >= source.length) {
                fault = Fault::shortOfTwo;
                break;
            }
            unit = (first & 0x1FU) << 6 | (byteAt(index) & 0x3FU);
        } else if ((first & 0xF0U) == 0xE0) {
            index += 2;
            if (index >= source.length) {
                fault = Fault::shortOfThree;
                break;
            }
            unit = (first & 0x0FU) << 12 | (byteAt(index - 1) & 0x3FU) << 6 | (byteAt(index) & 0x3FU);
        } else {
            fault = Fault::badLead;
            reading.lead = static_cast<unsigned char>(first);
            break;
        }
        if constexpr (hasTarget) {
            target[units] = static_cast<unsigned short int>(unit);
            hasZero |= unit == 0;
        }
        ++units;
        ++index;
    }
    reading.index = index;
    reading.units = units;
    reading.hasZero |= hasZero;
    reading.fault = fault;
    return fault == Fault::none;
}

/// Takes sequences until `reading` stands at `stop` or behind it, or on a fault.
template <bool hasTarget>
void read(Kernel kernel, DataView source, std::size_t stop, unsigned short int * target, Reading & reading) noexcept {
    if (kernel == Kernel::plain || source.length - reading.index < shortText) {
        takePlain<hasTarget>(source, stop, target, reading);
        return;
    }
#if MORVANE_HAS_KERNELS
    for (;;) {
        if constexpr (hasTarget) {
            (kernel == Kernel::avx512 ? decodeRunAvx512 : decodeRunSsse3)(source, target, reading);
        } else {
            (kernel == Kernel::avx512 ? countRunAvx512 : countRunSse2)(source, reading);
        }
        if (reading.index >= stop
            || !takePlain<hasTarget>(source, std::min(stop, reading.index + plainStretch), target, reading)) {
            break;
        }
    }
#endif
}

template <bool hasTarget>
Reading read(Kernel kernel, DataView source, unsigned short int * target) noexcept {
    Reading reading;
    read<hasTarget>(kernel, source, source.length, target, reading);
    return reading;
}

/// True when a fast look at the ASCII that a zero-closed text begins with is worth its while: a text that does not
/// begin with two such units is hardly made of them.
template <typename Unit>
bool beginsWithAscii([[maybe_unused]] Kernel kernel, [[maybe_unused]] Unit const * text) noexcept {
#if MORVANE_HAS_KERNELS && MORVANE_READS_TO_PAGE_END
    auto const isAscii = [](Unit unit) { return unit > 0 && static_cast<unsigned>(unit) < 0x80; };
    return kernel == Kernel::avx512 && isAscii(text[0]) && isAscii(text[1])
           && reinterpret_cast<std::uintptr_t>(text) % sizeof(Unit) == 0;
#else
    return false;
#endif
}

/// Reads what comes behind the first bytes, which are ASCII.
template <bool hasTarget>
Reading readBehind(std::size_t ascii, Kernel kernel, char const * source, unsigned short int * target) noexcept {
    Reading reading{.units = ascii, .index = ascii};
    std::size_t length = ascii;
    bool isEnd = false;
    while (!isEnd && reading.fault == Fault::none) {
        std::size_t const more = unitLength(source + length, measuredStretch);
        length += more;
        isEnd = more < measuredStretch;
        // A sequence that begins in front of the last two bytes ends here.
        read<hasTarget>(kernel, {source, length}, isEnd ? length : length - 2, target, reading);
    }
    return reading;
}

template <bool hasTarget>
Reading readClosed(Kernel kernel, char const * source, unsigned short int * target) noexcept {
    std::size_t ascii = 0;
#if MORVANE_HAS_KERNELS
    if (beginsWithAscii(kernel, source)) {
        ascii = hasTarget ? widenAsciiAvx512(source, target) : countAsciiAvx512(source);
    }
#endif
    if (source[ascii] == 0) {
        return {.units = ascii, .index = ascii};
    }
    return readBehind<hasTarget>(ascii, kernel, source, target);
}

/// Hands a zero-closed text over stretch by stretch and gives the sum of what `work` makes of each.
template <typename Work>
std::size_t sumStretches(unsigned short int const * source, Work work) noexcept {
    std::size_t sum = 0;
    std::size_t count = measuredStretch;
    while (count == measuredStretch) {
        count = unitLength(source, measuredStretch);
        sum += work(WideView{source, count}, sum);
        source += count;
    }
    return sum;
}

std::size_t countBytesPlain(WideView source) noexcept {
    std::size_t bytes = source.length;
    for (unsigned short int const unit : source) {
        bytes += (unit > 0x7F ? 1U : 0U) + (unit > 0x7FF ? 1U : 0U);
    }
    return bytes;
}

std::size_t encodePlain(WideView source, char * target) noexcept {
    char * end = target;
    for (unsigned const unit : source) {
        if (unit < 0x80) {
            *end++ = static_cast<char>(unit);
        } else if (unit < 0x800) {
            *end++ = static_cast<char>(0xC0U + (unit >> 6));
            *end++ = static_cast<char>(0x80U + (unit & 0x3FU));
        } else {
            *end++ = static_cast<char>(0xE0U + (unit >> 12));
            *end++ = static_cast<char>(0x80U + (unit >> 6 & 0x3FU));
            *end++ = static_cast<char>(0x80U + (unit & 0x3FU));
        }
    }
    return static_cast<std::size_t>(end - target);
}

} // namespace

Reading countUnits(Kernel kernel, DataView source) noexcept {
    return read<false>(kernel, source, nullptr);
}

Reading decode(Kernel kernel, DataView source, unsigned short int * target) noexcept {
    return read<true>(kernel, source, target);
}

std::size_t countBytes([[maybe_unused]] Kernel kernel, WideView source) noexcept {
#if MORVANE_HAS_KERNELS
    if (kernel != Kernel::plain && source.length >= shortText) {
        return kernel == Kernel::avx512 ? countBytesAvx512(source) : countBytesSse2(source);
    }
#endif
    return countBytesPlain(source);
}

std::size_t encode([[maybe_unused]] Kernel kernel, WideView source, char * target) noexcept {
#if MORVANE_HAS_KERNELS
    if (kernel != Kernel::plain && source.length >= shortText) {
        return kernel == Kernel::avx512 ? encodeAvx512(source, target) : encodeSsse3(source, target);
    }
#endif
    return encodePlain(source, target);
}

Reading countUnits(DataView source) noexcept {
    return countUnits(bestKernel(), source);
}

Reading decode(DataView source, unsigned short int * target) noexcept {
    return decode(bestKernel(), source, target);
}

Reading countUnits(char const * source) noexcept {
    return readClosed<false>(bestKernel(), source, nullptr);
}

Reading decode(char const * source, unsigned short int * target) noexcept {
    return readClosed<true>(bestKernel(), source, target);
}

Reading decodeTo(DataView source, _WideString & result) {
    Kernel const kernel = bestKernel();
    Reading reading = countUnits(kernel, source);
    if (reading.fault != Fault::none) {
        return reading;
    }
    unsigned short int * const text = allocateText<unsigned short int>(reading.units);
    if (text == nullptr) {
        adoptText(result, nullptr, 0);
        return reading;
    }
    reading = decode(kernel, source, text);
    if (reading.hasZero) {
        assignText(result, viewOf(text));
        releaseText(text);
    } else {
        adoptText(result, text, reading.units);
    }
    return reading;
}

void describeFault(Reading const & reading, std::size_t length, _WideString & message) {
    auto const index = static_cast<std::int32_t>(reading.index);
    auto const bytes = static_cast<std::int32_t>(length);
    switch (reading.fault) {
    case Fault::none:
        break;
    case Fault::shortOfTwo:
        message.format(u"error A: (d(%d) >= length(%d))"_w, index, bytes);
        break;
    case Fault::shortOfThree:
        message.format(u"error B: (d:%d) >= length:%d))"_w, index, bytes);
        break;
    case Fault::badLead:
        message.format(u"error C: (c0:%d) (d:%d) (length:%d)"_w, static_cast<std::int32_t>(reading.lead), index, bytes);
        break;
    }
}

std::size_t countBytes(WideView source) noexcept {
    return countBytes(bestKernel(), source);
}

std::size_t encode(WideView source, char * target) noexcept {
    return encode(bestKernel(), source, target);
}

std::size_t countBytes(unsigned short int const * source) noexcept {
    Kernel const kernel = bestKernel();
    std::size_t ascii = 0;
#if MORVANE_HAS_KERNELS
    ascii = beginsWithAscii(kernel, source) ? countAsciiAvx512(source) : 0;
#endif
    return ascii + sumStretches(source + ascii, [=](WideView part, std::size_t) { return countBytes(kernel, part); });
}

std::size_t encode(unsigned short int const * source, char * target) noexcept {
    Kernel const kernel = bestKernel();
    std::size_t ascii = 0;
#if MORVANE_HAS_KERNELS
    ascii = beginsWithAscii(kernel, source) ? narrowAsciiAvx512(source, target) : 0;
#endif
    return ascii + sumStretches(source + ascii, [=](WideView part, std::size_t done) {
               return encode(kernel, part, target + ascii + done);
           });
}

void encodeTo(WideView source, _DataString & result) {
    Kernel const kernel = bestKernel();
    std::size_t const bytes = countBytes(kernel, source);
    char * const text = allocateText<char>(bytes);
    if (text != nullptr) {
        encode(kernel, source, text);
    }
    adoptText(result, text, bytes);
}

} // namespace morvane::utf8

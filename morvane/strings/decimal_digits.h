// The exact decimal digits of a floating-point value.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace morvane {

/// The decimal digits of one finite value that is not negative, exact, or rounded to the nearest, ties to the even
/// digit.
///
/// The value is 0.d1d2d3... times 10 to the `point()`. Digits behind the last one are zeros.
/// Cost: a few groups of nine digits for values of common size; for the largest and smallest ones quadratic in their
/// exponent, which the type bounds. No heap.
template <typename Float>
class DecimalDigits {
public:
    explicit DecimalDigits(Float value) noexcept {
        int exponent = 0;
        Float rest = std::frexp(value, &exponent);
        while (rest != 0) {
            rest = std::ldexp(rest, 32);
            auto const piece = static_cast<std::uint32_t>(rest);
            rest -= static_cast<Float>(piece);
            exponent -= 32;
            place(piece, exponent + 32 * fractionLimbs);
        }
        makeIntegerDigits();
    }
    DecimalDigits(DecimalDigits const &) = delete;
    DecimalDigits & operator=(DecimalDigits const &) = delete;

    /// Rounds to `places` digits behind the point.
    void roundToPlaces(std::size_t places) noexcept {
        std::size_t const wanted = static_cast<std::size_t>(pointPosition) + places;
        while (count() <= wanted && hasFraction()) {
            makeFractionDigits();
        }
        round(wanted);
    }

    /// Rounds to `wanted` digits, at least 1, from the first that is not zero on. Zero has the one digit 0.
    void roundToCount(std::size_t wanted) noexcept {
        while (count() <= wanted && hasFraction()) {
            makeFractionDigits();
            while (first < last && pointPosition <= 0 && *first == '0') {
                ++first;
                --pointPosition;
            }
        }
        if (count() == 0) {
            *last++ = '0';
            pointPosition = 1;
        }
        round(wanted);
        last = std::min(last, first + wanted);
    }

    char const * digits() const noexcept { return first; }
    std::size_t count() const noexcept { return static_cast<std::size_t>(last - first); }
    /// How many digits stand in front of the point; below 0 where zeros follow it that are not among the digits.
    int point() const noexcept { return pointPosition; }

private:
    using Limits = std::numeric_limits<Float>;

    static constexpr int fractionLimbs = (Limits::digits - Limits::min_exponent + 31) / 32 + 1;
    static constexpr int limbCount = fractionLimbs + Limits::max_exponent / 32 + 2;
    static constexpr int groupDigits = 9;
    static constexpr std::uint32_t group = 1'000'000'000;
    static constexpr int integerCapacity = Limits::max_exponent10 + 1 + groupDigits;
    static constexpr int fractionCapacity = Limits::digits - Limits::min_exponent + 2 * groupDigits;

    /// Puts the bits of `piece` in, the lowest at `bit` from the lowest bit of all.
    void place(std::uint32_t piece, int bit) noexcept {
        int const limb = bit / 32;
        std::uint64_t const bits = std::uint64_t{piece} << bit % 32;
        limbs[limb] |= static_cast<std::uint32_t>(bits);
        limbs[limb + 1] |= static_cast<std::uint32_t>(bits >> 32);
        lowest = std::min(lowest, limb);
        highest = std::max(highest, limb + 2);
    }

    static void writeGroup(std::uint32_t value, char * target) noexcept {
        for (int digit = groupDigits - 1; digit >= 0; --digit) {
            target[digit] = static_cast<char>('0' + value % 10);
            value /= 10;
        }
    }

    void makeIntegerDigits() noexcept {
        while (highest > fractionLimbs) {
            if (limbs[highest - 1] == 0) {
                --highest;
                continue;
            }
            std::uint64_t remainder = 0;
            for (int limb = highest - 1; limb >= fractionLimbs; --limb) {
                std::uint64_t const value = remainder << 32 | limbs[limb];
                limbs[limb] = static_cast<std::uint32_t>(value / group);
                remainder = value % group;
            }
            first -= groupDigits;
            writeGroup(static_cast<std::uint32_t>(remainder), first);
        }
        while (first < last && *first == '0') {
            ++first;
        }
        pointPosition = static_cast<int>(last - first);
        skipEmptyLimbs();
    }

    void skipEmptyLimbs() noexcept {
        while (lowest < fractionLimbs && limbs[lowest] == 0) {
            ++lowest;
        }
    }

    bool hasFraction() const noexcept { return lowest < fractionLimbs; }

    void makeFractionDigits() noexcept {
        std::uint64_t carry = 0;
        for (int limb = lowest; limb < fractionLimbs; ++limb) {
            std::uint64_t const value = std::uint64_t{limbs[limb]} * group + carry;
            limbs[limb] = static_cast<std::uint32_t>(value);
            carry = value >> 32;
        }
        writeGroup(static_cast<std::uint32_t>(carry), last);
        last += groupDigits;
        skipEmptyLimbs();
    }

    /// Keeps `wanted` digits from the first on. Where there are no more, nothing stands behind them either.
    void round(std::size_t wanted) noexcept {
        if (wanted >= count()) {
            return;
        }
        char * const cut = first + wanted;
        bool const hasRest = hasFraction() || std::any_of(cut + 1, last, [](char digit) { return digit != '0'; });
        bool const isOdd = cut > first && (cut[-1] - '0') % 2 != 0;
        bool const goesUp = *cut > '5' || (*cut == '5' && (hasRest || isOdd));
        last = cut;
        if (!goesUp) {
            return;
        }
        char * digit = cut;
        while (digit > first && digit[-1] == '9') {
            *--digit = '0';
        }
        if (digit > first) {
            ++digit[-1];
        } else {
            *--first = '1';
            ++pointPosition;
        }
    }

    /// The value in binary: the limbs below `fractionLimbs` stand behind the point, the lowest first.
    std::uint32_t limbs[limbCount] = {};
    int lowest = fractionLimbs;
    int highest = 0;
    /// Room for a digit that rounding carries out, then integer digits written backwards, then fraction digits.
    char text[1 + integerCapacity + fractionCapacity];
    char * first = text + 1 + integerCapacity;
    char * last = first;
    int pointPosition = 0;
};

} // namespace morvane

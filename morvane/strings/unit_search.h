// Searching text, 16 bytes at a step.
#pragma once

#include <cstddef>
#include <morvane/strings/text_view.h>
#include <type_traits>

namespace morvane {

/// What a search gives that finds nothing.
inline constexpr std::size_t notFound = static_cast<std::size_t>(-1);

/// All of these are templates over the unit and exist for `unsigned short int` and `char`. They look at the whole view,
/// zero units included, from `from` on, which is not above the length, and give an index from the start of the view.

/// The first `unit`.
template <typename Unit>
std::size_t findUnit(TextView<Unit> text, std::type_identity_t<Unit> unit, std::size_t from = 0) noexcept;

/// The first unit that is one of up to eight in `set`, which may hold one twice but is not empty. For a fixed set.
template <typename Unit>
std::size_t findOneOfFew(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set, std::size_t from = 0) noexcept;

/// The first unit that is one of `set`, of any size; an empty set is never found.
template <typename Unit>
std::size_t findOneOf(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set, std::size_t from = 0) noexcept;

/// The last `unit`.
template <typename Unit>
std::size_t findLastUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept;

/// How often `unit` is there.
template <typename Unit>
std::size_t countUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept;

/// The first place where the two texts differ in their first `count` units; `count` where they do not.
template <typename Unit>
std::size_t findDifference(Unit const * left, Unit const * right, std::size_t count) noexcept;

/// Finds one text in others, or again and again in one.
///
/// It compares the ends of the text that is sought 16 bytes at a step; where that meets too many false starts it goes
/// over to the two-way algorithm of Crochemore and Perrin. Cost: linear in what was passed over and in what is sought;
/// no heap.
template <typename Unit>
class TextSearcher {
public:
    /// `sought` must live as long as the searcher; an empty one is found everywhere.
    explicit TextSearcher(TextView<Unit> text) noexcept : sought(text) {}

    /// One that uses the two-way algorithm from the start, for what is known to make false starts.
    static TextSearcher twoWay(TextView<Unit> text) noexcept;

    /// The first occurrence at or after `from`, which is not above the length.
    std::size_t find(TextView<Unit> text, std::size_t from = 0) noexcept;

private:
    std::size_t findTwoWay(TextView<Unit> text, std::size_t from) const noexcept;
    void factor() noexcept;

    TextView<Unit> sought;
    /// Units compared in false starts beyond what the way so far pays for; above a bound the two-way algorithm takes
    /// over.
    std::size_t debt = 0;
    bool isTwoWay = false;
    /// Where the critical factorization cuts `sought`, its period, and whether that period is the one of all of it.
    std::size_t cut = 0;
    std::size_t period = 0;
    bool isPeriodic = false;
};

/// The first occurrence of `sought`.
template <typename Unit>
std::size_t findText(TextView<Unit> text, std::type_identity_t<TextView<Unit>> sought, std::size_t from = 0) noexcept {
    return TextSearcher<Unit>(sought).find(text, from);
}

/// The same a unit at a step: for what is left of a text, where there are no such registers, and to hold the others
/// against.
namespace plain {

template <typename Unit>
std::size_t findUnit(TextView<Unit> text, std::type_identity_t<Unit> unit, std::size_t from = 0) noexcept;
template <typename Unit>
std::size_t findOneOfFew(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set, std::size_t from = 0) noexcept;
template <typename Unit>
std::size_t findLastUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept;
template <typename Unit>
std::size_t findDifference(Unit const * left, Unit const * right, std::size_t count) noexcept;

} // namespace plain
} // namespace morvane

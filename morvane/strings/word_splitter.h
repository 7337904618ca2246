// Words between blanks, and the pieces of a tag.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_stops.h>

namespace morvane {

/// Cuts a text at its blanks (tab and space), without copies.
///
/// A text that ends in blanks, or is nothing but blanks, has an empty word behind them; an empty text has no word.
/// `Quotes::hold` keeps on as long as a word holds exactly one quote, of either kind, and takes blanks in. Cost: one
/// pass; no memory.
class WordSplitter {
public:
    enum class Quotes { ignore, hold };

    WordSplitter(WideView units, Quotes treatment, std::size_t from = 0) noexcept
        : text(units), place(from), quotes(treatment) {}

    /// The next word; false when there is none.
    bool next(WideView & word) noexcept {
        if (place >= text.length) {
            return false;
        }
        skipBlanks();
        std::size_t const begin = place;
        std::size_t const special = firstSpecial(begin);
        place = special == text.length || isBlank(text[special]) ? special : wordEnd(special);
        word = text.part(begin, place - begin);
        return true;
    }

    /// The blank behind the last word; the length of the text behind the last of all.
    std::size_t position() const noexcept { return place; }
    /// Goes on from that index.
    void seek(std::size_t index) noexcept { place = index; }
    /// The whole text.
    WideView units() const noexcept { return text; }
    /// Goes on behind the blanks, if there are any.
    void skipBlanks() noexcept {
        while (place < text.length && isBlank(text[place])) {
            ++place;
        }
    }

    static constexpr bool isBlank(unsigned short int unit) noexcept { return unit == u' ' || unit == u'\t'; }

private:
    /// A blank or a quote.
    static constexpr bool isSpecial(unsigned short int unit) noexcept {
        constexpr std::uint64_t special =
            std::uint64_t{1} << u' ' | std::uint64_t{1} << u'\t' | std::uint64_t{1} << u'"' | std::uint64_t{1} << u'\'';
        return unit < 64 && (special >> unit & 1) != 0;
    }
    /// The first blank or quote at or after `from`, or what comes behind a look without one, or the length of the text.
    std::size_t firstSpecial(std::size_t from) const noexcept {
        if (text.length >= stopsAtOnce && from < text.length) {
            std::uint32_t const hits = stopsFrom<u' ', u'\t', u'"', u'\''>(text, from);
            return hits != 0 ? from + static_cast<std::size_t>(std::countr_zero(hits))
                             : std::min(from + stopsAtOnce, text.length);
        }
        while (from < text.length && !isSpecial(text[from])) {
            ++from;
        }
        return from;
    }
    /// The end of a word that has no quote in front of `from`.
    std::size_t wordEnd(std::size_t from) const noexcept;

    WideView text;
    std::size_t place;
    Quotes quotes;
};

} // namespace morvane

// The inside of a tag, cut into its name and attributes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <morvane/strings/tag_predicates.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_stops.h>
#include <morvane/strings/word_splitter.h>

namespace morvane {

/// A word with an "=" in it: what stands before the first, and what stands behind it, quotes included.
struct AttributeWord {
    WideView name;
    WideView rawValue;

    /// What stands between the quotes, of whichever kinds; empty where the raw value has none.
    constexpr WideView value() const noexcept {
        if (rawValue.length < 2 || !isQuote(rawValue[0]) || !isQuote(rawValue[rawValue.length - 1])) {
            return {};
        }
        return rawValue.part(1, rawValue.length - 2);
    }
};

/// The same as the next word, where that is a short name, "=", and a value between two quotes; false, with nothing
/// passed but blanks, where it is anything else or the whole text is short.
inline bool nextPlainAttribute(WordSplitter & words, AttributeWord & attribute) noexcept {
    WideView const text = words.units();
    words.skipBlanks();
    std::size_t const begin = words.position();
    if (begin == text.length || text.length < stopsAtOnce) {
        return false;
    }
    UnitLook const look(text, begin);
    std::uint32_t const signs = look.stops<u'='>();
    std::uint32_t const quotes = look.stops<u'"', u'\''>();
    std::uint32_t const sign = signs & (0U - signs);
    // The name is in front of the lowest sign, and the sign in front of a quote.
    if ((quotes & 2 * sign) == 0 || ((quotes | look.stops<u' ', u'\t'>()) & (sign - 1)) != 0) {
        return false;
    }
    std::uint32_t const closing = quotes & (0U - 4 * sign);
    std::size_t const last = closing != 0 ? begin + static_cast<std::size_t>(std::countr_zero(closing))
                                          : findStop<u'"', u'\''>(text, begin + stopsAtOnce);
    if (last >= text.length || (last + 1 < text.length && !WordSplitter::isBlank(text[last + 1]))) {
        return false;
    }
    std::size_t const equals = begin + static_cast<std::size_t>(std::countr_zero(sign));
    attribute = {text.part(begin, equals - begin), text.part(equals + 1, last - equals)};
    words.seek(last + 1);
    return true;
}

/// The next word with an "=" in it; those without are passed over. False when there is none left.
inline bool nextAttribute(WordSplitter & words, AttributeWord & attribute) noexcept {
    if (nextPlainAttribute(words, attribute)) {
        return true;
    }
    WideView word;
    while (words.next(word)) {
        for (std::size_t index = 0; index < word.length; ++index) {
            if (word[index] == u'=') {
                attribute = {word.first(index), word.from(index + 1)};
                return true;
            }
        }
    }
    return false;
}

} // namespace morvane

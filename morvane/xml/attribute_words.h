// The inside of a tag, cut into its name and attributes.
#pragma once

#include <cstddef>
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

/// The same as the next word, where that is a name without quotes or blanks, "=", and a value between two quotes;
/// false, with nothing passed but blanks, where it is anything else.
inline bool nextPlainAttribute(WordSplitter & words, AttributeWord & attribute) noexcept {
    WideView const text = words.units();
    words.skipBlanks();
    std::size_t const begin = words.position();
    std::size_t equals = begin;
    while (equals < text.length && text[equals] != u'=') {
        if (WordSplitter::isBlank(text[equals]) || isQuote(text[equals])) {
            return false;
        }
        ++equals;
    }
    if (text.length - equals < 3 || !isQuote(text[equals + 1])) {
        return false;
    }
    std::size_t const end = findStop<u'"', u'\''>(text, equals + 2) + 1;
    if (end > text.length || (end < text.length && !WordSplitter::isBlank(text[end]))) {
        return false;
    }
    attribute = {text.part(begin, equals - begin), text.part(equals + 1, end - equals - 1)};
    words.seek(end);
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

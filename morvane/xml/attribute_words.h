// The inside of a tag, cut into its name and attributes.
#pragma once

#include <cstddef>
#include <morvane/strings/tag_predicates.h>
#include <morvane/strings/text_view.h>
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

/// The next word with an "=" in it; those without are passed over. False when there is none left.
inline bool nextAttribute(WordSplitter & words, AttributeWord & attribute) noexcept {
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

// Words between blanks, and the pieces of a tag.
#pragma once

#include <cstddef>
#include <morvane/strings/text_view.h>

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
    bool next(WideView & word) noexcept;

    /// The blank behind the last word; the length of the text behind the last of all.
    std::size_t position() const noexcept { return place; }

private:
    WideView text;
    std::size_t place;
    Quotes quotes;
};

} // namespace morvane

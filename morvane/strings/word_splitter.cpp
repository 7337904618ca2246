#include <morvane/strings/word_splitter.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <morvane/strings/unit_stops.h>

namespace morvane {

namespace {

constexpr bool isBlank(unsigned short int unit) noexcept {
    return unit == u' ' || unit == u'\t';
}

constexpr bool isQuote(unsigned short int unit) noexcept {
    return unit == u'"' || unit == u'\'';
}

/// `quotes` and as many more as there are bits, where two are as many as more.
constexpr int addQuotes(int quotes, std::uint32_t bits) noexcept {
    return std::min(quotes + (bits != 0 ? 1 : 0) + ((bits & (bits - 1)) != 0 ? 1 : 0), 2);
}

/// The blank that ends the word from `from` on, or the length of the text.
std::size_t findWordEnd(WideView text, std::size_t from) noexcept {
    int quotes = 0;
    if (text.length < stopsAtOnce) {
        for (std::size_t index = from; index < text.length; ++index) {
            if (isQuote(text[index])) {
                ++quotes;
            } else if (isBlank(text[index]) && quotes != 1) {
                return index;
            }
        }
        return text.length;
    }
    for (; from < text.length; from += stopsAtOnce) {
        std::uint32_t quoteBits = stopsFrom<u'"', u'\''>(text, from);
        for (std::uint32_t blankBits = stopsFrom<u' ', u'\t'>(text, from); blankBits != 0; blankBits &= blankBits - 1) {
            // The bits in front of the first blank.
            std::uint32_t const front = (blankBits & (0U - blankBits)) - 1;
            quotes = addQuotes(quotes, quoteBits & front);
            quoteBits &= ~front;
            if (quotes != 1) {
                return from + static_cast<std::size_t>(std::countr_zero(blankBits));
            }
        }
        quotes = addQuotes(quotes, quoteBits);
    }
    return text.length;
}

} // namespace

std::size_t WordSplitter::wordEnd(std::size_t from) const noexcept {
    return quotes == Quotes::hold ? findWordEnd(text, from) : findStop<u' ', u'\t'>(text, from);
}

} // namespace morvane

#include <morvane/strings/word_splitter.h>

#include <morvane/strings/unit_stops.h>

namespace morvane {

namespace {

constexpr bool isBlank(unsigned short int unit) noexcept {
    return unit == u' ' || unit == u'\t';
}

} // namespace

bool WordSplitter::next(WideView & word) noexcept {
    if (place >= text.length) {
        return false;
    }
    while (place < text.length && isBlank(text[place])) {
        ++place;
    }
    std::size_t const begin = place;
    if (quotes == Quotes::ignore) {
        place = findStop<u' ', u'\t'>(text, begin);
    } else {
        std::size_t count = 0;
        for (;; ++place) {
            place = findStop<u' ', u'\t', u'"', u'\''>(text, place);
            if (place == text.length) {
                break;
            }
            if (!isBlank(text[place])) {
                ++count;
            } else if (count != 1) {
                break;
            }
        }
    }
    word = text.part(begin, place - begin);
    return true;
}

} // namespace morvane

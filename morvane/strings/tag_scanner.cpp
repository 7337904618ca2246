#include <morvane/strings/tag_scanner.h>

#include <morvane/strings/unit_search.h>
#include <morvane/strings/unit_stops.h>

namespace morvane {

namespace {

using namespace literals;

constexpr std::size_t openerUnits = 9;
constexpr WideView documentTypeOpener = u"<!DOCTYPE"_wv;
constexpr WideView cdataOpener = u"<![CDATA["_wv;
static_assert(documentTypeOpener.length == openerUnits && cdataOpener.length == openerUnits);

/// The number of "]" that must stand in front of the ">" which closes the tag at `begin`.
std::size_t closingBrackets(WideView text, std::size_t begin) noexcept {
    if (text.length - begin < openerUnits || text[begin + 1] != u'!') {
        return 0;
    }
    WideView const opener = text.part(begin, openerUnits);
    return opener == documentTypeOpener ? 1 : opener == cdataOpener ? 2 : 0;
}

/// The first ">" at or after `from` behind `brackets` times "]", none of which stands in front of `from`.
std::size_t findClosing(WideView text, std::size_t from, std::size_t brackets) noexcept {
    for (std::size_t at = from;; ++at) {
        at = findStop<u'>', 0>(text, at);
        if (at == text.length || text[at] == 0) {
            return notFound;
        }
        std::size_t found = 0;
        while (found < brackets && at - found > from && text[at - found - 1] == u']') {
            ++found;
        }
        if (found == brackets) {
            return at;
        }
    }
}

} // namespace

TagScanner::Found TagScanner::findOddTag(std::size_t & begin, std::size_t & last) noexcept {
    begin = notFound;
    last = notFound;
    std::size_t const from = place;
    stopFrom(from);
    std::size_t at = findStop<u'<', u'>', 0>(text, from);
    if (at != text.length && text[at] == u'>') {
        last = at;
        at = findStop<u'<', 0>(text, at + 1);
    }
    if (at != text.length && text[at] == u'<') {
        begin = at;
    }
    if (begin == notFound) {
        last = rules == Rules::xml ? notFound : last;
        return Found::nothing;
    }
    std::size_t const brackets = rules == Rules::xml ? closingBrackets(text, begin) : 0;
    if (brackets != 0) {
        last = findClosing(text, from, brackets);
    } else if (last == notFound) {
        last = findClosing(text, begin, 0);
    }
    if (last == notFound) {
        return Found::nothing;
    }
    place = last + 1;
    stopFrom(place);
    return last < begin ? Found::strayEnd : Found::tag;
}

} // namespace morvane

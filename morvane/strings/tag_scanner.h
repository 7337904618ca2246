// What a tag is and where it ends.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_stops.h>

namespace morvane {

/// The units `begin` to `end` - 1 of the text that was scanned: a tag with its delimiters, or the text between two.
struct MarkupPiece {
    std::size_t begin;
    std::size_t end;
    bool isTag;
};

/// Cuts a text into tags and the text between them, without copies.
///
/// A tag reaches from "<" to the first ">"; under the rules of XML "<!DOCTYPE" ends at "]>" and "<![CDATA[" at "]]>"
/// instead. The closing is searched from where the tag in front ended: a ">" in the text between stops the scan. A zero
/// unit ends the text. Cost: one pass over what was yielded, sixty-four units at a look; no memory. It may be copied,
/// and goes on from there.
class TagScanner {
public:
    enum class Rules { plain, xml };
    /// What `findTag` came to: a tag; a ">" in front of the next "<"; no "<" or no closing.
    enum class Found { tag, strayEnd, nothing };

    TagScanner(WideView units, Rules rulesOfTags, std::size_t from = 0) noexcept
        : text(units), rules(rulesOfTags), place(from), lookedTo(from) {}

    /// The next piece, in the order of the text; false when the scan stops. Text behind the last tag is no piece.
    bool next(MarkupPiece & piece) noexcept {
        if (hasTag) {
            hasTag = false;
            piece = {tagBegin, place, true};
            return true;
        }
        std::size_t const former = place;
        std::size_t begin = 0;
        std::size_t last = 0;
        if (findTag(begin, last) != Found::tag) {
            return false;
        }
        if (former < begin) {
            tagBegin = begin;
            hasTag = true;
            piece = {former, begin, false};
            return true;
        }
        piece = {begin, place, true};
        return true;
    }

    /// One step of the scan: the next "<" and the ">" that closes it, or `notFound` for either. The position moves
    /// behind the ">" where both were found.
    Found findTag(std::size_t & begin, std::size_t & last) noexcept {
        // Nearly every tag is a "<" and a ">" with no delimiter in front of them; everything else takes the other way.
        std::size_t const first = nextStop();
        if (first == text.length || text[first] != u'<') {
            return findOddTag(begin, last);
        }
        std::size_t const second = nextStop();
        // What begins with "<!" may close otherwise.
        if (second == text.length || text[second] != u'>' || text[first + 1] == u'!') {
            return findOddTag(begin, last);
        }
        begin = first;
        last = second;
        place = second + 1;
        return Found::tag;
    }

    /// Behind the last tag, or behind the stray ">".
    std::size_t position() const noexcept { return place; }

private:
    Found findOddTag(std::size_t & begin, std::size_t & last) noexcept;
    /// The next delimiter or zero, or the length of the text.
    std::size_t nextStop() noexcept {
        while (stops == 0) {
            if (lookedTo >= text.length) {
                return text.length;
            }
            stops = longStopsFrom<u'<', u'>', 0>(text, lookedTo);
            lookedTo += stopsAtLength;
        }
        std::size_t const stop = lookedTo - stopsAtLength + static_cast<std::size_t>(std::countr_zero(stops));
        stops &= stops - 1;
        return stop;
    }
    /// Goes on with the stops at and after `from`.
    void stopFrom(std::size_t from) noexcept {
        stops = 0;
        lookedTo = from;
    }

    WideView text;
    Rules rules;
    std::size_t place;
    std::size_t tagBegin = 0;
    bool hasTag = false;
    /// The delimiters and zeros not yet met among the units in front of `lookedTo`: a bit each, that of the first unit
    /// of the look being the lowest.
    std::uint64_t stops = 0;
    std::size_t lookedTo;
};

} // namespace morvane

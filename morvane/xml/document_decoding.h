// The charset of a document, and its bytes as text.
#pragma once

#include <cstddef>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/text_loading.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/wide_string.h>
#include <morvane/xml/xml_document.h>

namespace morvane {

/// Finds the declarations of a text one after the other: each from "<?xml" to "?>". Cost: one pass over the text.
template <typename Unit>
class DeclarationFinder {
public:
    explicit DeclarationFinder(TextView<Unit> source, std::size_t start = 0) noexcept : text(source), place(start) {}

    /// The next one; empty where "?>" stands in front of "<?xml". False when either is missing.
    bool next(TextView<Unit> & declaration) noexcept;
    /// The index behind the "?>" found last.
    std::size_t position() const noexcept { return place; }

private:
    TextView<Unit> text;
    std::size_t place;
    /// The first "<?xml" at or after some former `place`; 0 before it was sought.
    std::size_t opener = 0;
    bool isOpenerSought = false;
};

extern template class DeclarationFinder<char>;
extern template class DeclarationFinder<unsigned short int>;

/// A text whose charset is not known yet, in the readings that its mark leaves open.
class EncodedText {
public:
    using Format = _StringUtility::StringFileFormat;

    /// A text whose readings are at hand, up to their first zero.
    EncodedText(Format mark, DataView bytesUpToZero, WideView unitsUpToZero) noexcept;
    /// The readings of one block, which outlives this object; the units are read when they are needed.
    explicit EncodedText(MarkedBytes const & block) noexcept;

    Format format() const noexcept { return mark; }
    DataView bytes() const noexcept { return data; }
    /// False when there is surely no "<?xml" among the units.
    bool mayDeclareInUnits() const noexcept;
    /// False when the heap refused the units.
    bool readUnits();
    /// The units that were read.
    WideView units() const noexcept { return wide; }
    /// Makes `result` the units that were read.
    void moveUnitsTo(_WideString & result);

private:
    Format mark;
    DataView body;
    DataView data;
    WideView wide;
    bool hasUnits;
    _WideString read;
};

/// Identifies the charset of `source` by its mark or declaration and decodes it. False on a failure, with `error`
/// written unless the heap refused, and `result` as it was; `charset` may be written even so.
bool decodeDocument(EncodedText & source, _WideString & error, DOM::XMLCharset & charset, _WideString & result);

} // namespace morvane

#include <morvane/xml/document_decoding.h>

#include <bit>
#include <cstdint>
#include <morvane/core/literals.h>
#include <morvane/encodings/code_page.h>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/platform/debug_output.h>
#include <morvane/platform/tick_count.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/unit_search.h>
#include <morvane/xml/charset_table.h>
#include <morvane/xml/folded_name.h>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane {

using namespace literals;

namespace {

constexpr DataView headBytes{"<?xml", 5};
constexpr DataView tailBytes{"?>", 2};
// Made here: within a template Clang 14 calls the literal operator at run time, where it does not exist.
constexpr WideView headUnits = u"<?xml"_wv;
constexpr WideView tailUnits = u"?>"_wv;
/// "<?xml" in units, low byte first.
constexpr DataView headOfUnits{"<\0?\0x\0m\0l", 10};

template <typename Unit>
TextView<Unit> charsetNameIn(std::int32_t number) noexcept {
    if constexpr (std::is_same_v<Unit, char>) {
        return charsetNameBytes(number);
    } else {
        return charsetName(number);
    }
}

template <typename Unit>
std::vector<Unit> lowered(TextView<Unit> text) {
    std::vector<Unit> result(text.begin(), text.end());
    for (Unit & unit : result) {
        if (unit >= 'A' && unit <= 'Z') {
            unit = static_cast<Unit>(unit + ('a' - 'A'));
        }
    }
    return result;
}

template <typename Unit>
bool names(TextView<Unit> declaration, std::int32_t number) noexcept {
    return findText(declaration, charsetNameIn<Unit>(number)) != notFound;
}

/// The charset of the first declaration in `bytes`, the highest that it names. False without a declaration.
bool identifyInBytes(DataView bytes, DOM::XMLCharset & charset) {
    DataView declaration;
    if (!DeclarationFinder<char>(bytes).next(declaration)) {
        return false;
    }
    std::vector<char> const lower = lowered(declaration);
    DataView const text{lower.data(), lower.size()};
    charset = DOM::charsetUTF8;
    for (std::uint32_t left = charsetsOf(signsIn(text)); left != 0;) {
        std::int32_t const number = std::bit_width(left) - 1;
        if (names(text, number)) {
            charset = static_cast<DOM::XMLCharset>(number);
            break;
        }
        left &= ~(std::uint32_t{1} << number);
    }
    return true;
}

/// The charset of the first declaration in `units` that names one, the lowest that it names; `otherwise` if none does.
DOM::XMLCharset identifyInUnits(WideView units, bool inAnyCase, DOM::XMLCharset otherwise) {
    DeclarationFinder<unsigned short int> finder(units);
    WideView declaration;
    while (finder.next(declaration)) {
        std::vector<unsigned short int> text;
        if (inAnyCase) {
            text = lowered(declaration);
            declaration = {text.data(), text.size()};
        }
        for (std::uint32_t left = charsetsOf(signsIn(declaration)); left != 0; left &= left - 1) {
            std::int32_t const number = std::countr_zero(left);
            if (names(declaration, number)) {
                return static_cast<DOM::XMLCharset>(number);
            }
        }
    }
    return otherwise;
}

void traceElapsed(unsigned short int const * what, std::uint32_t start) {
    if (platform::isDebugListening()) {
        _WideString line;
        line.format(u"%s: %d\r\n"_w, what, platform::tickCount() - start);
        platform::debugOutput(line);
    }
}

/// Decodes UTF-8 into `work`; where that fails and `tracesFault` is set, the fault goes to the debug channel.
bool decodeUtf8(DataView bytes, bool tracesFault, _WideString & error, _WideString & work) {
    utf8::Reading const reading = utf8::decodeTo(bytes, work);
    if (reading.fault == utf8::Fault::none) {
        return work.arg() != nullptr;
    }
    if (tracesFault && platform::isDebugListening()) {
        _WideString message;
        utf8::describeFault(reading, bytes.length, message);
        platform::debugOutput(message);
    }
    error = u"utf-8 convertion error"_w;
    return false;
}

/// Decodes the bytes or units of a text without a mark.
bool decodeUnmarked(EncodedText & source, DOM::XMLCharset charset, _WideString & error, _WideString & work) {
    switch (charset) {
    case DOM::charsetUSASCII:
        platform::debugOutput(u"ASCII XML Format Identified\r\n"_w);
        // Latin 1 widens each byte to the unit of its value.
        decodeTo(*findCodePage(_StringUtility::formatISO8859_1), source.bytes(), work);
        return work.arg() != nullptr;
    case DOM::charsetUTF8:
        platform::debugOutput(u"UTF-8 XML Format Identified\r\n"_w);
        return decodeUtf8(source.bytes(), true, error, work);
    case DOM::charsetUTF16:
    case DOM::charsetUCS2:
        platform::debugOutput(u"UTF-16 XML Format Identified\r\n"_w);
        if (!source.readUnits()) {
            return false;
        }
        source.moveUnitsTo(work);
        return work.arg() != nullptr;
    case DOM::charsetUCS4:
        platform::debugOutput(u"UCS XML Format Identified\r\n"_w);
        return true;
    default:
        break;
    }
    if (charset > DOM::charsetISO8859_15) {
        platform::debugOutput(u"Unknown: Not Implemented\r\n"_w);
        return true;
    }
    platform::debugOutput(u"ISO LATIN XML Format Identified\r\n"_w);
    CodePage const * const page = findCodePage(charset + 11);
    if (page == nullptr) {
        error = u"charset conversion error"_w;
        return false;
    }
    decodeTo(*page, source.bytes(), work);
    return work.arg() != nullptr;
}

} // namespace

template <typename Unit>
bool DeclarationFinder<Unit>::next(TextView<Unit> & declaration) noexcept {
    if (place > text.length) {
        return false;
    }
    TextView<Unit> head;
    TextView<Unit> tail;
    if constexpr (std::is_same_v<Unit, char>) {
        head = headBytes;
        tail = tailBytes;
    } else {
        head = headUnits;
        tail = tailUnits;
    }
    if (!isOpenerSought || (opener != notFound && opener < place)) {
        opener = findText(text, head, place);
        isOpenerSought = true;
    }
    std::size_t const closer = opener == notFound ? notFound : findText(text, tail, place);
    if (closer == notFound) {
        return false;
    }
    place = closer + 2;
    declaration = closer < opener ? TextView<Unit>{} : text.part(opener, place - opener);
    return true;
}

template class DeclarationFinder<char>;
template class DeclarationFinder<unsigned short int>;

EncodedText::EncodedText(Format format, DataView bytesUpToZero, WideView unitsUpToZero) noexcept
    : mark(format), data(bytesUpToZero), wide(unitsUpToZero), hasUnits(true) {}

EncodedText::EncodedText(MarkedBytes const & block) noexcept
    : mark(block.format), body(block.body), data(dataReading(block.body)), hasUnits(false) {}

bool EncodedText::mayDeclareInUnits() const noexcept {
    return hasUnits || findText(body, headOfUnits) != notFound;
}

bool EncodedText::readUnits() {
    if (!hasUnits) {
        hasUnits = wideReading(body, mark == _StringUtility::formatUnicodeBigEndian, read);
        wide = viewOf(read);
    }
    return hasUnits;
}

void EncodedText::moveUnitsTo(_WideString & result) {
    if (read.get_length() == wide.length && viewOf(read).data == wide.data) {
        result = std::move(read);
    } else {
        assignText(result, wide);
    }
}

bool decodeDocument(EncodedText & source, _WideString & error, DOM::XMLCharset & charset, _WideString & result) {
    std::uint32_t const start = platform::isDebugListening() ? platform::tickCount() : 0;
    _WideString work;
    switch (source.format()) {
    case _StringUtility::formatUnknown:
        platform::debugOutput(u"Unknown XML Format\r\n"_w);
        if (!identifyInBytes(source.bytes(), charset)) {
            if (!source.mayDeclareInUnits()) {
                charset = DOM::charsetUTF8;
            } else if (source.readUnits()) {
                charset = identifyInUnits(source.units(), true, DOM::charsetUTF8);
            } else {
                return false;
            }
        }
        traceElapsed(u"IdentifyTime"_w, start);
        if (!decodeUnmarked(source, charset, error, work)) {
            return false;
        }
        break;
    case _StringUtility::formatUnicode:
    case _StringUtility::formatUnicodeBigEndian:
        platform::debugOutput(u"Unicode XML Format\r\n"_w);
        if (!source.readUnits()) {
            return false;
        }
        // The declaration changes the later save alone: the mark has told how to read.
        charset = identifyInUnits(source.units(), false, DOM::charsetUTF16);
        source.moveUnitsTo(work);
        if (work.arg() == nullptr) {
            return false;
        }
        break;
    case _StringUtility::formatUTF8:
        platform::debugOutput(u"UTF-8 XML Format\r\n"_w);
        charset = DOM::charsetUTF8;
        if (!decodeUtf8(source.bytes(), false, error, work)) {
            return false;
        }
        break;
    default:
        error = u"unknown file"_w;
        return false;
    }
    result = std::move(work);
    traceElapsed(u"TotalTime"_w, start);
    return true;
}

} // namespace morvane

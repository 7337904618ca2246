// UTF-8 both ways by every kernel, and the readings of a text with or without a mark, beside the plain decoder.

#include "fuzz_input.h"
#include "text_model.h"
#include "text_testing.h"

#include <morvane/encodings/utf8_kernels.h>

using namespace morvane::utf8;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    std::string const bytes(data, data + size);
    std::string const source = text_model::upToZero(bytes);
    std::string told;
    std::u16string const units = text_model::decodedUtf8(source, told);
    std::string const written = text_model::encodedUtf8(units);
    _WideString message("former");
    std::int32_t count = -1;
    auto const fault = _StringUtility::convertUTF8StringToWideString(source.c_str(), nullptr, message, count);
    expect(count == static_cast<std::int32_t>(units.size()) && (fault == 0) == told.empty());
    expect(message.compare(told.empty() ? "former" : told.c_str()) == 0);
    for (Kernel const kernel : {Kernel::plain, Kernel::ssse3, Kernel::avx512}) {
        if (!isAvailable(kernel)) {
            continue;
        }
        // Blocks of exact size, so that a sanitizer sees a step too far.
        std::vector<unsigned short int> decoded(units.size());
        expect(countUnits(kernel, {source.data(), source.size()}).units == units.size());
        Reading const reading = decode(kernel, {source.data(), source.size()}, decoded.data());
        expect(reading.units == units.size() && (reading.fault == Fault::none) == told.empty());
        expect(std::equal(units.begin(), units.end(), decoded.begin()));
        expect(reading.hasZero == (units.find(u'\0') != units.npos));
        describeFault(reading, source.size(), message);
        expect(told.empty() || message.compare(told.c_str()) == 0);
        std::vector<char> encoded(written.size());
        expect(countBytes(kernel, {decoded.data(), decoded.size()}) == written.size());
        expect(encode(kernel, {decoded.data(), decoded.size()}, encoded.data()) == written.size());
        expect(std::equal(written.begin(), written.end(), encoded.begin()));
    }
    if (size >= 3) {
        bool const isBig = bytes.starts_with("\xFE\xFF");
        bool const isWide = isBig || bytes.starts_with("\xFF\xFE");
        bool const isUtf8 = bytes.starts_with("\xEF\xBB\xBF");
        _DataString text("former");
        _WideString wide("former");
        auto format = _StringUtility::formatANSI;
        auto error = _StringUtility::utilErrorBadInput;
        expect(_StringUtility::loadStringFromBinary(data, static_cast<std::int32_t>(size), text, wide, format, error));
        expect(format == (isBig ? 7 : isWide ? 5 : isUtf8 ? 9 : -1) && error == _StringUtility::utilErrorNone);
        std::u16string const toldWide = text_model::unitsOf(bytes.substr(isWide ? 2 : 0), isBig);
        expect(textOf(wide) == (isUtf8 ? u"former" : text_model::upToZero(toldWide)));
        expect(textOf(text) == (isWide ? "former" : text_model::upToZero(bytes.substr(isUtf8 ? 3 : 0))));
    }
    return 0;
}

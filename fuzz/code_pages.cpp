// Every code page both ways, beside its single bytes, and character references both ways.

#include "fuzz_input.h"
#include "text_model.h"
#include "text_testing.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzInput input(data, size);
    int const number = 16 + static_cast<int>(input.below(15));
    auto const limit = input.value<char16_t>();
    bool const isPage = number < 25 || number == 30;
    auto const format = static_cast<_StringUtility::StringFileFormat>(number);
    std::string const bytes = text_model::upToZero(input.bytes(size));

    std::u16string const told = isPage ? text_model::decodedCodePage(bytes, number) : u"";
    _WideString wide("former");
    expect(_StringUtility::convertDataStringToWideString(bytes.c_str(), wide, format) == isPage);
    expect(textOf(wide) == told);
    // Half of the units are those of the code page.
    std::u16string const units = told + text_model::upToZero(text_model::unitsOf(bytes, false));
    _DataString encoded("former");
    expect(_StringUtility::convertWideStringToDataString(wideText(units), encoded, format) == isPage);
    expect(textOf(encoded) == (isPage ? text_model::encodedCodePage(units, number) : "former"));

    expect(
        _StringUtility::convertWideStringToWideString(wideText(units), wide, _StringUtility::operationEncode, limit));
    expect(textOf(wide) == text_model::withReferences(units, limit));
    std::u16string const text = text_model::widened(bytes);
    expect(_StringUtility::convertWideStringToWideString(wideText(text), wide, _StringUtility::operationDecode, 0));
    expect(textOf(wide) == text_model::withoutReferences(text));
    expect(_StringUtility::wideStringCodeToWideChar(wideText(text)) == text_model::referenced(text));
    return 0;
}

// Numbers read out of both text classes and by the helpers, beside their grammar.

#include "fuzz_input.h"
#include "text_model.h"
#include "text_testing.h"

#include <clocale>

namespace {

template <typename String>
void expectNumbers(String const & text, std::u16string const & told) {
    bool const isFull = !told.empty();
    bool const isDecimal = isFull && text_model::decimal(told).has_value();
    bool const isFloat = isFull && text_model::consistsOf(told, "0123456789.");
    expect(text.isDecimalNumber() == isDecimal && text.isFloatNumber() == isFloat);
    expect(text.isHexNumber() == (isFull && text_model::consistsOf(text_model::lower(told), "0123456789abcdef")));
    expect(text.toInteger() == (isDecimal ? static_cast<std::int32_t>(*text_model::decimal(told)) : 0));
    bool const isLongWord = (told.size() == 9 && told[0] == u'#') || (told.size() == 10 && told[0] == u'0');
    std::u16string const digits = isLongWord ? text_model::hexDigits(u"x" + told.substr(told.size() - 8)) : u"";
    bool const hasPrefix = isLongWord && (told[0] == u'#' || told[1] == u'x' || told[1] == u'X');
    expect(text.toLongWord() == (hasPrefix ? text_model::valueOf(digits, 16) : 0));
    double const value = isFloat ? std::strtod(std::string(told.begin(), told.end()).c_str(), nullptr) : 0;
    expect(text.toDouble() == value && text.toFloat() == static_cast<float>(value));
    expect(text.toBoolean() == (text_model::lower(told) == u"true"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    std::setlocale(LC_NUMERIC, "C"); // for the C library's sake
    std::string const bytes = text_model::upToZero(std::string(data, data + size));
    std::u16string const told = text_model::widened(bytes);
    expectNumbers(_DataString(bytes.c_str()), told);
    expectNumbers(_WideString(bytes.c_str()), told);
    auto const decimal = text_model::decimal(told);
    std::u16string const digits = text_model::hexDigits(told);
    auto const value = static_cast<std::int32_t>(decimal.value_or(text_model::valueOf(digits, 16)));
    _WideString const text(bytes.c_str());
    _WideString found("former");
    expect(_StringUtility::isDecimalWideString(text) == decimal.has_value());
    expect(_StringUtility::isHexWideString(text, &found) == !digits.empty());
    expect(textOf(found) == (digits.empty() ? u"former" : digits));
    expect(_StringUtility::decWideStringToLong(text) == (decimal ? value : 0));
    expect(_StringUtility::hexWideStringToLong(text) == (digits.empty() ? 0 : value));
    expect(_StringUtility::numWideStringToLong(text) == (decimal || !digits.empty() ? value : -1));
    return 0;
}

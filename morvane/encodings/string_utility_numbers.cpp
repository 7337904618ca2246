#include <morvane/encodings/character_references.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/strings/text_storage.h>

using namespace morvane;

bool _StringUtility::isDecimalWideString(unsigned short int const * text) {
    return text != nullptr && readDecimal(viewOf(text)).has_value();
}

bool _StringUtility::isHexWideString(unsigned short int const * text, _WideString * digits) {
    WideView const found = hexDigits(viewOf(text));
    if (found.isEmpty()) {
        return false;
    }
    if (digits != nullptr) {
        assignText(*digits, found);
        digits->makeLower();
    }
    return true;
}

std::int32_t _StringUtility::decWideStringToLong(unsigned short int const * text) {
    return readDecimal(viewOf(text)).value_or(0);
}

std::int32_t _StringUtility::hexWideStringToLong(unsigned short int const * text) {
    return text == nullptr ? -1 : readHex(viewOf(text)).value_or(0);
}

std::int32_t _StringUtility::numWideStringToLong(unsigned short int const * text) {
    if (text == nullptr) {
        return -1;
    }
    WideView const number = viewOf(text);
    auto const decimal = readDecimal(number);
    return decimal.has_value() ? *decimal : readHex(number).value_or(-1);
}

_WideString _StringUtility::wideCharToHexWideString(unsigned short int unit) {
    HexText const text = hexText(unit);
    return text.digits;
}

_DataString _StringUtility::wideCharToHexDataString(unsigned short int unit) {
    HexText const text = hexText(unit);
    return text.digits;
}

unsigned short int _StringUtility::wideStringCodeToWideChar(unsigned short int const * text) {
    return referencedUnit(viewOf(text));
}

bool _StringUtility::convertWideStringToWideString(unsigned short int const * text, _WideString & result,
                                                   StringOperation operation, unsigned short int limit) {
    if (text == nullptr) {
        return false;
    }
    // `text` may lie in `result`, which therefore changes last.
    WideView const source = viewOf(text);
    TextBuilder<unsigned short int> target;
    switch (operation) {
    case operationEncode:
        target.reserve(source.length);
        encodeReferences(source, limit, target);
        break;
    case operationDecode:
        if (!hasReferences(source)) {
            assignText(result, source);
            return true;
        }
        target.reserve(source.length);
        decodeReferences(source, target);
        break;
    default:
        assignText(result, WideView{});
        return false;
    }
    target.moveTo(result);
    return true;
}

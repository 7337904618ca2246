#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/strings/text_view.h>

using namespace morvane;
using namespace morvane::literals;

_StringUtility::StringUtilError _StringUtility::convertUTF8StringToWideString(char const * source,
                                                                              unsigned short int * target,
                                                                              _WideString & message,
                                                                              std::int32_t & count) {
    if (source == nullptr) {
        message = u"bad input string"_w;
        return utilErrorBadInput;
    }
    DataView const text = viewOf(source);
    utf8::Reading const reading = target == nullptr ? utf8::countUnits(text) : utf8::decode(text, target);
    count = static_cast<std::int32_t>(reading.units);
    if (reading.fault == utf8::Fault::none) {
        return utilErrorNone;
    }
    utf8::describeFault(reading, text.length, message);
    return utilErrorConversion;
}

bool _StringUtility::convertWideStringToUTF8String(unsigned short int const * source, char * target,
                                                   std::int32_t & count) {
    if (source == nullptr) {
        return false;
    }
    WideView const text = viewOf(source);
    count = static_cast<std::int32_t>(target == nullptr ? utf8::countBytes(text) : utf8::encode(text, target));
    return true;
}

_StringUtility::StringUtilError _StringUtility::convertUTF16StringToWideString(unsigned short int const * source,
                                                                               _WideString & result) {
    result = source;
    return utilErrorNone;
}

bool _StringUtility::convertWideStringToUTF16String(unsigned short int const * source, _WideString & result) {
    result = source;
    return true;
}

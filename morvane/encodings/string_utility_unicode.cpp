#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/strings/text_view.h>

using namespace morvane;
using namespace morvane::literals;

namespace {

_StringUtility::StringUtilError tellFault(utf8::Reading const & reading, char const * source, _WideString & message) {
    utf8::describeFault(reading, unitLength(source), message);
    return _StringUtility::utilErrorConversion;
}

} // namespace

_StringUtility::StringUtilError _StringUtility::convertUTF8StringToWideString(char const * source,
                                                                              unsigned short int * target,
                                                                              _WideString & message,
                                                                              std::int32_t & count) {
    if (source == nullptr) {
        message = u"bad input string"_w;
        return utilErrorBadInput;
    }
    utf8::Reading const reading = target == nullptr ? utf8::countUnits(source) : utf8::decode(source, target);
    count = static_cast<std::int32_t>(reading.units);
    if (reading.fault == utf8::Fault::none) {
        return utilErrorNone;
    }
    return tellFault(reading, source, message);
}

bool _StringUtility::convertWideStringToUTF8String(unsigned short int const * source, char * target,
                                                   std::int32_t & count) {
    if (source == nullptr) {
        return false;
    }
    count = static_cast<std::int32_t>(target == nullptr ? utf8::countBytes(source) : utf8::encode(source, target));
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

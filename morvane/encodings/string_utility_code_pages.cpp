#include <morvane/encodings/code_page.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/strings/text_storage.h>

namespace {

using namespace morvane;

bool isCodePageFormat(_StringUtility::StringFileFormat format) {
    return format >= _StringUtility::formatISO8859_1 && format <= _StringUtility::formatISO8859_15;
}

} // namespace

bool _StringUtility::convertDataStringToWideString(char const * text, _WideString & result, StringFileFormat format) {
    if (!isCodePageFormat(format) || text == nullptr) {
        return false;
    }
    CodePage const * const page = findCodePage(format);
    if (page == nullptr) {
        assignText(result, WideView{});
        return false;
    }
    decodeTo(*page, viewOf(text), result);
    return true;
}

bool _StringUtility::convertWideStringToDataString(unsigned short int const * text, _DataString & result,
                                                   StringFileFormat format) {
    CodePage const * const page = findCodePage(format);
    if (page == nullptr || text == nullptr) {
        return false;
    }
    encodeTo(*page, viewOf(text), result);
    return true;
}

#include <morvane/core/system_utility.h>

#include <algorithm>
#include <cstddef>
#include <morvane/core/literals.h>
#include <morvane/core/windows_version.h>
#include <morvane/platform/debug_output.h>
#include <morvane/platform/last_error.h>
#include <morvane/platform/modules.h>
#include <morvane/platform/show_text.h>
#include <morvane/platform/system_version.h>
#include <morvane/strings/text_view.h>

using namespace morvane::literals;

namespace {

constexpr std::size_t longestDirectory = 255;
constexpr std::size_t longestModulePath = 255;
constexpr std::size_t longestErrorText = 1023;

} // namespace

_SystemUtility::_SystemUtility() = default;

_SystemUtility::_SystemUtility(_SystemUtility const &) {}

_SystemUtility::~_SystemUtility() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_SystemUtility & _SystemUtility::operator=(_SystemUtility const &) {
    return *this;
}

void _SystemUtility::displayLastError() {
    morvane::platform::showText(getLastErrorString(), u"error"_w);
}

_WideString _SystemUtility::filePath(unsigned short int const * path) {
    morvane::WideView const whole = morvane::viewOf(path);
    std::size_t const drive = whole.length >= 2 && whole[1] == u':' ? 2 : 0;
    std::size_t directory = whole.length - drive;
    while (directory != 0 && whole[drive + directory - 1] != u'/' && whole[drive + directory - 1] != u'\\') {
        --directory;
    }
    std::size_t const units = drive + std::min(directory, longestDirectory);
    unsigned short int result[2 + longestDirectory + 1];
    std::copy_n(whole.data, units, result);
    result[units] = 0;
    return _WideString(result);
}

_WideString _SystemUtility::getCurrentDirectory() {
    return filePath(getModuleFileName(morvane::platform::findModule(u"Morvane.dll"_w)));
}

_WideString _SystemUtility::getLastErrorString() {
    std::int32_t const code = morvane::platform::lastError();
    unsigned short int text[longestErrorText + 1];
    morvane::platform::lastErrorText(code, text, longestErrorText + 1);
    return _WideString(text);
}

_WideString _SystemUtility::getModuleFileName(HINSTANCE__ * module) {
    unsigned short int path[longestModulePath + 1];
    morvane::platform::modulePath(module, path, longestModulePath + 1);
    return _WideString(path);
}

TWindowsVersion _SystemUtility::getWindowsVersion() {
    return morvane::windowsVersionOf(morvane::platform::systemVersionWord());
}

void _SystemUtility::outputDebugString(unsigned short int const * text) {
    morvane::platform::debugOutput(text);
}

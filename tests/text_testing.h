// Texts of the library as those of the standard library, so that tests can compare and show them.
#pragma once

#include <morvane/strings/text_view.h>
#include <string>
#include <vector>

inline std::u16string textOf(_WideString const & text) {
    morvane::WideView const view = morvane::viewOf(text);
    return {view.begin(), view.end()};
}

inline std::u16string textOf(unsigned short int const * text) {
    return textOf(_WideString(text));
}

inline std::string textOf(_DataString const & text) {
    morvane::DataView const view = morvane::viewOf(text);
    return {view.begin(), view.end()};
}

inline _WideString wideText(std::u16string const & text) {
    std::vector<unsigned short int> units(text.begin(), text.end());
    units.push_back(0);
    return {units.data()};
}

// Names compared without regard to the case of A to Z.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>

namespace morvane {

/// The unit with A to Z taken as a to z.
constexpr unsigned short int foldUnit(unsigned short int unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<unsigned short int>(unit + (u'a' - u'A')) : unit;
}

/// True when the zero-closed `text`, null reading as empty, equals `name`, which holds no zero.
inline bool equalsFolded(unsigned short int const * text, WideView name) noexcept {
    if (text == nullptr) {
        return name.isEmpty();
    }
    // The closing zero of a shorter text differs from every unit of the name.
    for (std::size_t index = 0; index < name.length; ++index) {
        if (foldUnit(text[index]) != foldUnit(name[index])) {
            return false;
        }
    }
    return text[name.length] == 0;
}

} // namespace morvane

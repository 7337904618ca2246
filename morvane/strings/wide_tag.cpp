#include <morvane/strings/wide_tag.h>

#include <utility>

_WideTag::_WideTag() : tag(false) {}

_WideTag::_WideTag(unsigned short int const * text, bool isATag) : tag(isATag), wideString(text) {}

_WideTag::_WideTag(_WideString && text, bool isATag) : tag(isATag), wideString(std::move(text)) {}

_WideTag::_WideTag(_WideTag const & other) = default;

_WideTag::~_WideTag() = default;

_WideTag & _WideTag::operator=(_WideTag const & other) = default;

bool _WideTag::loadFromStream(_Stream &) {
    return true;
}

bool _WideTag::saveToStream(_Stream &) {
    return true;
}

_DataString _WideTag::toString() const {
    return _DataString("");
}

_WideString _WideTag::get_wideString() const {
    return wideString;
}

void _WideTag::set_wideString(_WideString value) {
    wideString = std::move(value);
}

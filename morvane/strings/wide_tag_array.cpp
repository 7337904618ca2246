#include <morvane/strings/wide_tag_array.h>

_WideTagArray::_WideTagArray() = default;

_WideTagArray::_WideTagArray(_WideTagArray const & other) = default;

_WideTagArray::~_WideTagArray() = default;

_WideTagArray & _WideTagArray::operator=(_WideTagArray const & other) = default;

std::uint32_t _WideTagArray::addTag(_WideTag const * tag) {
    return tag == nullptr ? static_cast<std::uint32_t>(-1) : addObject(const_cast<_WideTag *>(tag));
}

void _WideTagArray::setTag(std::uint32_t index, _WideTag const * tag) {
    setItem(index, const_cast<_WideTag *>(tag));
}

_WideTag * _WideTagArray::getTag(std::uint32_t index) const {
    return static_cast<_WideTag *>(_Container::getItem(index));
}

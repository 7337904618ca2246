#include <morvane/core/mutable_list.h>

_MutableList::_MutableList() = default;

_MutableList::_MutableList(_MutableList const &) : _List() {}

_MutableList::~_MutableList() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_MutableList & _MutableList::operator=(_MutableList const &) {
    return *this;
}

#include <morvane/core/list.h>

_List::_List() = default;

_List::_List(_List const &) : _Object() {}

_List::~_List() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_List & _List::operator=(_List const &) {
    return *this;
}

#include <morvane/core/object.h>

_Object::~_Object() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_Object & _Object::operator=(_Object const &) {
    return *this;
}

void * _Object::vmtPointer() {
    return nullptr;
}

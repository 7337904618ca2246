#include <morvane/strings/named_object.h>

#include <morvane/core/literals.h>
#include <new>

using namespace morvane::literals;

_NamedObject::_NamedObject() : objectName(new (std::nothrow) _String(u""_w)) {}

_NamedObject::_NamedObject(_NamedObject const & other) = default;

_NamedObject::~_NamedObject() = default;

_NamedObject & _NamedObject::operator=(_NamedObject const & other) = default;

_String * _NamedObject::GetObjectName() {
    return objectName;
}

void _NamedObject::SetObjectName(unsigned short int const * name) {
    if (objectName != nullptr) {
        *objectName = name;
    }
}

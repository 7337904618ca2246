// An object with a name holder.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/export.h>
#include <morvane/strings/string.h>

/// An object that points to a `_String` for its name, which keeps no text.
///
/// Ownership: the name holder outlives the object, and copies share it; deleting it is the client's duty.
class MORVANE_EXPORT _NamedObject : public _Object {
public:
    /// Makes a name holder with `new`.
    _NamedObject();
    /// Shares the name holder of `other`.
    _NamedObject(_NamedObject const & other);
    ~_NamedObject() override;

    _NamedObject & operator=(_NamedObject const & other);

    /// The name holder.
    _String * GetObjectName();
    /// Assigns `name` to the name holder, which keeps no text.
    void SetObjectName(unsigned short int const * name);

private:
    /// No operation gives it a meaning; copies take it along.
    [[maybe_unused]] std::uint32_t reserved = 0;
    _String * objectName;
};

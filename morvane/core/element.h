// The base for parts of larger structures.
#pragma once

#include <morvane/core/object.h>

/// An object that stands in a larger structure; it has no fields and no behaviour of its own.
class MORVANE_EXPORT _Element : public _Object {
public:
    _Element();
    /// Copies nothing.
    _Element(_Element const & other);
    ~_Element() override;

    /// Does nothing and gives the object back.
    _Element & operator=(_Element const & other);
};

// The base for writers.
#pragma once

#include <morvane/core/object.h>

/// The counterpart of `_Reader`; it has no fields and no behaviour of its own. Writing goes through `_Stream`.
class MORVANE_EXPORT _Writer : public _Object {
public:
    _Writer();
    /// Copies nothing.
    _Writer(_Writer const & other);
    ~_Writer() override;

    /// Does nothing and gives the object back.
    _Writer & operator=(_Writer const & other);
};

// The base for lists that are objects.
#pragma once

#include <morvane/core/object.h>

/// A list that is an object; it has no fields and no behaviour of its own. The lists that hold items are `_Array` and
/// its descendants.
class MORVANE_EXPORT _List : public _Object {
public:
    _List();
    /// Copies nothing.
    _List(_List const & other);
    ~_List() override;

    /// Does nothing and gives the object back.
    _List & operator=(_List const & other);
};

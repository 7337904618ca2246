// The base for lists that change.
#pragma once

#include <morvane/core/list.h>

/// A `_List` that may change; it has no fields and no behaviour of its own.
class MORVANE_EXPORT _MutableList : public _List {
public:
    _MutableList();
    /// Copies nothing.
    _MutableList(_MutableList const & other);
    ~_MutableList() override;

    /// Does nothing and gives the object back.
    _MutableList & operator=(_MutableList const & other);
};

// The root of the larger branch of the class tree.
#pragma once

#include <morvane/export.h>

/// The base of all objects that containers may own and delete.
///
/// It has no fields; its destructor is its only virtual operation.
class MORVANE_EXPORT _Object {
public:
    _Object() = default;
    /// Copies nothing.
    _Object(_Object const &) {}
    virtual ~_Object();

    /// Does nothing and gives the object back.
    _Object & operator=(_Object const & other);

    /// A null pointer, always.
    void * vmtPointer();
};

// The name of the definitions' room.
#pragma once

#include <morvane/export.h>

/// A class that only names a room: no fields, no static members, and no behaviour of its own.
class MORVANE_EXPORT DEF {
public:
    DEF();
    /// Copies nothing.
    DEF(DEF const & other);
    virtual ~DEF();

    /// Does nothing and gives the object back.
    DEF & operator=(DEF const & other);
};

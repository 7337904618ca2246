// The name of the system's room.
#pragma once

#include <morvane/export.h>

/// A class that only names a room: no fields, no static members, and no behaviour of its own.
class MORVANE_EXPORT SYS {
public:
    SYS();
    /// Copies nothing.
    SYS(SYS const & other);
    virtual ~SYS();

    /// Does nothing and gives the object back.
    SYS & operator=(SYS const & other);
};

// The name of the C runtime's room.
#pragma once

#include <morvane/export.h>

/// A class that only names a room: no fields, no static members, and no behaviour of its own.
class MORVANE_EXPORT CRT {
public:
    CRT();
    /// Copies nothing.
    CRT(CRT const & other);
    virtual ~CRT();

    /// Does nothing and gives the object back.
    CRT & operator=(CRT const & other);
};

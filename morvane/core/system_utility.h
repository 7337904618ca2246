// Services of the operating system.
#pragma once

#include <morvane/export.h>

/// Static services of the operating system; it has no fields.
///
/// Threads: any thread may call them at once.
class MORVANE_EXPORT _SystemUtility {
public:
    _SystemUtility();
    /// Copies nothing.
    _SystemUtility(_SystemUtility const & other);
    virtual ~_SystemUtility();

    /// Does nothing and gives the object back.
    _SystemUtility & operator=(_SystemUtility const & other);

    /// Says the text on the debug channel as it stands, with no line end added; null says nothing.
    static void outputDebugString(unsigned short int const * text);
};

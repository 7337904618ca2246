// A name for component streams.
#pragma once

#include <morvane/components/com.h>
#include <morvane/export.h>

/// Exists by name only; byte streams are `_Stream`.
class MORVANE_EXPORT COM::_IStream {
public:
    /// Does nothing and gives the object back.
    _IStream & operator=(_IStream const & other);
};

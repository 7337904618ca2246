// A name for components that persist.
#pragma once

#include <morvane/components/com.h>
#include <morvane/export.h>

/// Exists by name only.
class MORVANE_EXPORT COM::_IPersistent {
public:
    /// Does nothing and gives the object back.
    _IPersistent & operator=(_IPersistent const & other);
};

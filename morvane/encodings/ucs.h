// The place of a table of Unicode scripts.
#pragma once

#include <cstdint>
#include <morvane/export.h>

class _WideString;

/// A table of Unicode scripts that holds no entries.
///
/// Threads: its functions have no state.
class MORVANE_EXPORT UCS {
public:
    UCS();
    /// Copies nothing.
    UCS(UCS const & other);
    virtual ~UCS();

    /// Does nothing and gives the object back.
    UCS & operator=(UCS const & other);

    /// 0: there are no entries.
    static std::int32_t scriptCount();
    /// Leaves `first` and `last` as they are.
    static void scriptArray(std::int32_t index, unsigned short int & first, unsigned short int & last);
    /// Empty text, whatever the index.
    static _WideString scriptName(std::int32_t index);
    static _WideString scriptDescription(std::int32_t index);
};

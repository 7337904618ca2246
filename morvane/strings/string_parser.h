// An object that holds one text.
#pragma once

#include <morvane/export.h>
#include <morvane/strings/wide_string.h>

/// Holds one `_WideString` and offers nothing to reach it. It is kept for clients that name it; to cut text into words
/// and tags take `_WideStringParser`.
class MORVANE_EXPORT _StringParser {
public:
    /// Holds empty text.
    _StringParser();
    _StringParser(_StringParser const & other);
    virtual ~_StringParser();

    _StringParser & operator=(_StringParser const & other);

private:
    _WideString text;
};

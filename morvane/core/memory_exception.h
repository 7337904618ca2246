// An exception that tells of memory.
#pragma once

#include <morvane/core/exception.h>
#include <morvane/export.h>

/// An `_Exception` of its own type, for clients to throw where memory is short. The library throws none.
class MORVANE_EXPORT _MemoryException : public _Exception {
public:
    _MemoryException();
    _MemoryException(_MemoryException const & other);
    ~_MemoryException() override;

    _MemoryException & operator=(_MemoryException const & other);
};

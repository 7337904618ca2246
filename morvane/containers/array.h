// The abstract face of an indexed list of pointers.
#pragma once

#include <cstdint>
#include <morvane/export.h>

/// An indexed list of pointers that knows its count and leaves the storage to a derived class.
///
/// Use it to take any list as an argument; `_MutableArray` is the list to fill.
/// Threads: a list belongs to one thread at a time.
class MORVANE_EXPORT _Array {
public:
    /// Has no items.
    _Array() : count(0) {}
    /// Copies the count.
    _Array(_Array const & other) : count(other.count) {}
    virtual ~_Array();

    /// Copies the count.
    _Array & operator=(_Array const & other) {
        count = other.count;
        return *this;
    }

    /// The item at `index`.
    virtual void * getItem(std::uint32_t index) const = 0;
    /// The same, through the virtual `getItem`.
    void * operator[](std::uint32_t index) const { return getItem(index); }

    std::uint32_t get_count() const { return count; }

protected:
    /// Stores the field and nothing else.
    void set_count(std::uint32_t value) { count = value; }

private:
    std::uint32_t count;
};

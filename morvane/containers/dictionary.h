// The abstract face of a list of key and value pairs.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/export.h>

class _DictionaryItem;

/// An indexed list of key and value pairs that leaves the storage to a derived class.
class MORVANE_EXPORT _Dictionary : public _Object {
public:
    _Dictionary();
    /// Copies nothing.
    _Dictionary(_Dictionary const & other);
    ~_Dictionary() override;

    /// Does nothing and gives the object back.
    _Dictionary & operator=(_Dictionary const & other);

    virtual std::int32_t getCount() const = 0;
    virtual _DictionaryItem * getItem(std::int32_t index) const = 0;
    /// The same as `getItem`.
    _DictionaryItem * operator[](std::int32_t index) const { return getItem(index); }
};

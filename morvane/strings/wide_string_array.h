// The growing list of texts.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/containers/mutable_array.h>
#include <morvane/export.h>
#include <morvane/strings/wide_string.h>

namespace morvane {
class StringPool;
}

/// A growing list that owns copies of texts.
///
/// Cost: as `_MutableArray`, one `_WideString` an entry; a search walks the list.
/// Threads: an array belongs to one thread at a time, together with its copies.
/// Ownership: the array owns every text that `addString` made, from then to its own end, also after `deleteAll`,
/// `removeAll`, `removeAt` or `setItem` put it out; and every text made with `new` that stands in its list at that end.
/// Copies share list and texts; the texts go with the last of them.
/// Errors: what `operator new` throws passes through and changes nothing. Null entries, which `removeAt` leaves, equal
/// nothing and read as empty text.
class MORVANE_EXPORT _WideStringArray : public _MutableArray {
public:
    _WideStringArray();
    /// Shares list and texts of `other`.
    _WideStringArray(_WideStringArray const & other);
    ~_WideStringArray() override;

    /// Lets go of list and texts and shares those of `other`.
    _WideStringArray & operator=(_WideStringArray const & other);

    /// Appends a copy of `text` and gives its index; -1 for null, and when there is no memory for the entry.
    std::uint32_t addString(unsigned short int const * text);
    /// The index of the first entry that equals `text` with A to Z taken as a to z; -1 where there is none. A null
    /// `text` reads as empty.
    std::uint32_t findString(unsigned short int const * text);
    /// Assigns `text` to the entry at `index`; ignored at and beyond `count`. A null entry gets a new text.
    void setString(std::uint32_t index, unsigned short int const * text);
    /// A copy of the entry at `index`; empty text at and beyond `count`.
    _WideString getString(std::uint32_t index) const;

protected:
    /// The entry itself.
    _WideString * getStringItem(std::uint32_t index) const;

private:
    friend class _WideStringParser;

    /// Moves `text` into a new entry.
    std::uint32_t addMade(_WideString && text);
    /// The pool, made where it was missing.
    std::shared_ptr<morvane::StringPool> const & needPool() const;
    /// Gives the pool what stands in the list and was not made there.
    void adoptEntries() noexcept;

    /// The texts that this array and its copies own; null as long as there is nothing to own.
    mutable std::shared_ptr<morvane::StringPool> pool;
};

// The owning list of scanned markup.
#pragma once

#include <cstdint>
#include <morvane/containers/container.h>
#include <morvane/export.h>
#include <morvane/strings/wide_tag.h>

/// A `_Container` of tags and the text between them, in the order of the document.
class MORVANE_EXPORT _WideTagArray : public _Container {
public:
    _WideTagArray();
    _WideTagArray(_WideTagArray const & other);
    ~_WideTagArray() override;

    _WideTagArray & operator=(_WideTagArray const & other);

    /// Takes `tag` over and gives its index; -1 for null, and when there is no memory for the entry: it stays the
    /// caller's then.
    std::uint32_t addTag(_WideTag const * tag);
    /// Stores `tag` in the entry at `index`; ignored outside `size`. The former tag is not deleted.
    void setTag(std::uint32_t index, _WideTag const * tag);
    /// The entry at `index`; null from `count` on.
    _WideTag * getTag(std::uint32_t index) const;
};

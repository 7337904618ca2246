// The attributes of the tag that is being read, by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/xml/xml_attribute.h>
#include <vector>

namespace morvane {

/// Finds an attribute of one tag by its name in any case of A to Z.
///
/// Use it instead of the node map's look-up while a tag is read: it compares lengths and folded names that lie side by
/// side, and from some number on it looks them up in a table, so that a tag of very many attributes stays linear.
class AttributeIndex {
public:
    /// Forgets the former tag.
    void clear() noexcept;
    /// The attribute of that name; null if there is none.
    DOM::_XMLAttribute * find(WideView name) const noexcept;
    /// Notes an attribute that `find` did not give. The units of `name` stay where they are until `clear`.
    void add(WideView name, DOM::_XMLAttribute * attribute);

private:
    struct Entry {
        WideView name;
        DOM::_XMLAttribute * attribute;
    };
    /// Up to so many entries are compared one by one.
    static constexpr std::size_t listed = 12;

    void enter(std::uint32_t entry) noexcept;

    std::vector<Entry> entries;
    /// Indices into `entries` plus 1, 0 for a free place; a power of two of them, half free at least. Empty while all
    /// are compared.
    std::vector<std::uint32_t> table;
};

} // namespace morvane

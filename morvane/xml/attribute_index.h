// The attributes of the tag that is being read, by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/xml/attribute_words.h>
#include <morvane/xml/growing_stack.h>
#include <vector>

namespace morvane {

/// The attributes of one tag in their order, each name in whichever case of A to Z once.
///
/// Use it while a tag is read: it compares lengths and folded names that lie side by side, and from some number on it
/// looks them up in a table, so that a tag of very many attributes stays linear. The units of all texts stay where they
/// are until `clear`.
class AttributeIndex {
public:
    struct Entry {
        WideView name;
        WideView value;
    };

    /// Forgets the former tag.
    void clear() noexcept {
        entries.cut(0);
        table.clear();
    }
    /// Sets the value of the attribute of that name, which keeps its place and its name as it was written, or adds one.
    void set(WideView name, WideView value);

    std::size_t size() const noexcept { return entries.size(); }
    Entry const * begin() const noexcept { return entries.from(0); }
    Entry const * end() const noexcept { return entries.from(entries.size()); }

private:
    /// Up to so many entries are compared one by one.
    static constexpr std::size_t listed = 12;

    Entry * find(WideView name) noexcept;
    void enter(std::uint32_t entry) noexcept;

    GrowingStack<Entry, 16> entries;
    /// Indices into `entries` plus 1, 0 for a free place; a power of two of them, half free at least. Empty while all
    /// are compared.
    std::vector<std::uint32_t> table;
};

} // namespace morvane

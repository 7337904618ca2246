// The attributes of the tag that is being read, by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/xml/attribute_words.h>
#include <morvane/xml/folded_name.h>
#include <morvane/xml/growing_stack.h>
#include <new>
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
        seen = 0;
    }
    /// Sets the value of the attribute of that name, which keeps its place and its name as it was written, or adds one.
    void set(WideView name, WideView value) {
        std::uint64_t const bit = std::uint64_t{1} << signOf(name);
        if ((seen & bit) != 0 || entries.size() >= listed) {
            setSought(name, value);
        } else {
            add(name, value);
        }
        seen |= bit;
    }

    std::size_t size() const noexcept { return entries.size(); }
    Entry const * begin() const noexcept { return entries.from(0); }
    Entry const * end() const noexcept { return entries.from(entries.size()); }

private:
    /// Up to so many entries are compared one by one.
    static constexpr std::size_t listed = 12;

    /// One of 64 numbers, the same for names that are the same in any case.
    static std::uint32_t signOf(WideView name) noexcept {
        if (name.isEmpty()) {
            return 0;
        }
        std::uint32_t const ends = std::uint32_t{foldUnit(name[0])} << 8 ^ foldUnit(name[name.length - 1]);
        return (ends ^ static_cast<std::uint32_t>(name.length) << 16) * 0x9E3779B1 >> 26;
    }

    void add(WideView name, WideView value) {
        if (!entries.push({name, value})) {
            throw std::bad_alloc();
        }
    }
    void setSought(WideView name, WideView value);
    Entry * find(WideView name) noexcept;
    void enter(std::uint32_t entry) noexcept;

    GrowingStack<Entry, 16> entries;
    /// A bit for each sign of a name among the entries.
    std::uint64_t seen = 0;
    /// Indices into `entries` plus 1, 0 for a free place; a power of two of them, half free at least. Empty while all
    /// are compared.
    std::vector<std::uint32_t> table;
};

} // namespace morvane

#include <morvane/xml/attribute_index.h>

#include <morvane/xml/folded_name.h>

namespace morvane {

namespace {

bool equalFolded(WideView left, WideView right) noexcept {
    if (left.length != right.length) {
        return false;
    }
    for (std::size_t index = 0; index < left.length; ++index) {
        if (foldUnit(left[index]) != foldUnit(right[index])) {
            return false;
        }
    }
    return true;
}

/// FNV-1a over the folded units, its high bits mixed into the low ones.
std::size_t hashFolded(WideView name) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (unsigned short int const unit : name) {
        hash = (hash ^ foldUnit(unit)) * 0x100000001B3;
    }
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

} // namespace

void AttributeIndex::setSought(WideView name, WideView value) {
    if (Entry * const found = find(name)) {
        found->value = value;
        return;
    }
    add(name, value);
    if (entries.size() <= listed) {
        return;
    }
    if (2 * entries.size() <= table.size()) {
        enter(static_cast<std::uint32_t>(entries.size() - 1));
        return;
    }
    table.assign(table.empty() ? 4 * listed + 16 : 2 * table.size(), 0);
    for (std::uint32_t entry = 0; entry < entries.size(); ++entry) {
        enter(entry);
    }
}

AttributeIndex::Entry * AttributeIndex::find(WideView name) noexcept {
    if (table.empty()) {
        for (std::size_t index = 0; index < entries.size(); ++index) {
            if (equalFolded(entries.from(index)->name, name)) {
                return entries.from(index);
            }
        }
        return nullptr;
    }
    std::size_t const mask = table.size() - 1;
    for (std::size_t place = hashFolded(name) & mask; table[place] != 0; place = (place + 1) & mask) {
        Entry * const entry = entries.from(table[place] - 1);
        if (equalFolded(entry->name, name)) {
            return entry;
        }
    }
    return nullptr;
}

void AttributeIndex::enter(std::uint32_t entry) noexcept {
    std::size_t const mask = table.size() - 1;
    std::size_t place = hashFolded(entries.from(entry)->name) & mask;
    while (table[place] != 0) {
        place = (place + 1) & mask;
    }
    table[place] = entry + 1;
}

} // namespace morvane

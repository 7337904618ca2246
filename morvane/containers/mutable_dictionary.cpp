#include <morvane/containers/mutable_dictionary.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <morvane/containers/quick_sort.h>
#include <morvane/platform/process_heap.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_view.h>
#include <typeinfo>
#include <utility>

using morvane::DataBuilder;
using morvane::DataView;
using morvane::viewOf;

namespace {

constexpr std::int32_t noIndex = -1;

constexpr char const * noText = "-1";

DataView upToZero(DataView text) {
    auto const * const zero = static_cast<char const *>(std::memchr(text.data, 0, text.length));
    return zero == nullptr ? text : text.first(static_cast<std::size_t>(zero - text.data));
}

/// The eight bytes at `bytes`, for comparing.
std::uint64_t loadEight(char const * bytes) {
    std::uint64_t value;
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

/// What a text is held against, its length known; zero bytes end both.
class SoughtText {
public:
    explicit SoughtText(char const * text)
        : sought(viewOf(text)), hasEight(sought.length >= sizeof(lastEight)),
          lastEight(hasEight ? loadEight(sought.end() - sizeof(lastEight)) : 0) {}

    bool equals(_DataString const & text) const {
        DataView const stored = viewOf(text);
        // Keys begin alike more often than they end alike.
        if (stored.length < sought.length
            || (hasEight && loadEight(stored.data + sought.length - sizeof(lastEight)) != lastEight)) {
            return false;
        }
        // The zero behind the last byte belongs to the buffer.
        return stored.data[sought.length] == 0 && std::memcmp(stored.data, sought.data, sought.length) == 0;
    }
    bool equalsNoCase(_DataString const & text) const {
        DataView const stored = viewOf(text);
        return stored.length >= sought.length && stored.data[sought.length] == 0
               && text.compareNoCase(sought.data) == 0;
    }

private:
    DataView sought;
    bool hasEight;
    std::uint64_t lastEight;
};

/// Gathers texts as `_DataString::add` joins them: each up to its first zero, but counted with its whole length.
class JoinedText {
public:
    void append(DataView text) {
        joined.append(upToZero(text));
        length += text.length;
    }
    _DataString take() {
        joined.append(0, length - joined.length());
        _DataString text;
        joined.moveTo(text);
        return text;
    }

private:
    DataBuilder joined;
    std::size_t length = 0;
};

/// An item with eight bytes of the text that it is sorted by, as a number that compares like them.
struct PrefixedItem {
    std::uint64_t prefix;
    _DictionaryItem * item;
};

/// The eight bytes from `start` on, which is not behind the first zero; from there on they count as zeros.
std::uint64_t prefixOf(DataView text, std::size_t start) {
    std::uint64_t prefix = 0;
    bool isEnd = false;
    for (std::size_t index = start; index < start + sizeof(prefix); ++index) {
        isEnd = isEnd || index >= text.length || text[index] == 0;
        prefix = prefix << 8 | (isEnd ? 0 : static_cast<unsigned char>(text[index]));
    }
    return prefix;
}

/// How many bytes both begin with, of which `left` has no zero.
std::size_t commonLength(DataView left, DataView right) {
    std::size_t const length = std::min(left.length, right.length);
    return static_cast<std::size_t>(std::mismatch(left.begin(), left.begin() + length, right.begin()).first
                                    - left.begin());
}

struct PrefixedItems {
    PrefixedItem * items;

    PrefixedItem at(std::int32_t index) const { return items[index]; }
    void swap(std::int32_t first, std::int32_t second) const { std::swap(items[first], items[second]); }
};

} // namespace

_MutableDictionary::_MutableDictionary() {
    _initialize();
}

_MutableDictionary::_MutableDictionary(_Stream & stream) {
    _initialize();
    _MutableDictionary::loadFromStream(stream);
}

_MutableDictionary::_MutableDictionary(_Dictionary const * other) {
    _initialize();
    copy(other);
}

_MutableDictionary::_MutableDictionary(_MutableDictionary const & other) = default;

_MutableDictionary::~_MutableDictionary() {
    _uninitialize();
}

_MutableDictionary & _MutableDictionary::operator=(_MutableDictionary const & other) = default;

std::int32_t _MutableDictionary::getCount() const {
    return static_cast<std::int32_t>(data.get_count());
}

_DictionaryItem * _MutableDictionary::getItem(std::int32_t index) const {
    return itemAt(index);
}

bool _MutableDictionary::loadFromStream(_Stream &) {
    return true;
}

bool _MutableDictionary::saveToStream(_Stream &) {
    return true;
}

_DataString _MutableDictionary::toString() const {
    return customString(nullptr, nullptr);
}

std::int32_t _MutableDictionary::add(char const * text) {
    return addNew(std::make_unique<_DictionaryItem>(text));
}

std::int32_t _MutableDictionary::add(char const * key, char const * value) {
    return addNew(std::make_unique<_DictionaryItem>(key, value));
}

std::int32_t _MutableDictionary::add(_DictionaryItem * item) {
    if (item == nullptr) {
        return noIndex;
    }
    return static_cast<std::int32_t>(data.addObject(item));
}

std::int32_t _MutableDictionary::add(_DictionaryItem const & item) {
    return addNew(std::make_unique<_DictionaryItem>(item));
}

std::int32_t _MutableDictionary::add(_Dictionary const * other, bool copyItems) {
    if (other == nullptr) {
        return noIndex;
    }
    auto const * const same = dynamic_cast<_MutableDictionary const *>(other);
    bool const isSameList = same != nullptr && same->data.hasListOf(data);
    std::int32_t const former = getCount();
    for (std::int32_t index = 0; index < (other == this ? former : other->getCount()); ++index) {
        _DictionaryItem * const item = other->getItem(index);
        if (copyItems) {
            addNew(std::make_unique<_DictionaryItem>(static_cast<_DictionaryItem const *>(item)));
        } else if (isSameList && item != nullptr) {
            // The list holds the item already and must not delete it twice.
            data.addBare(item);
        } else {
            add(item);
        }
    }
    return other->getCount();
}

std::int32_t _MutableDictionary::copy(_Dictionary const * other) {
    if (other == this) {
        return getCount();
    }
    deleteAll();
    if (other == nullptr) {
        return 0;
    }
    for (std::int32_t index = 0; index < other->getCount(); ++index) {
        _DictionaryItem const * const item = other->getItem(index);
        addNew(item == nullptr ? std::make_unique<_DictionaryItem>() : std::make_unique<_DictionaryItem>(*item));
    }
    return other->getCount();
}

void _MutableDictionary::deleteAll() {
    data.deleteAll();
}

void _MutableDictionary::deleteAt(std::uint32_t index, std::uint32_t number) {
    data.deleteAt(index, number);
}

void _MutableDictionary::removeAll() {
    data.removeAll();
}

void _MutableDictionary::removeAt(std::uint32_t index, std::uint32_t number) {
    data.removeAt(index, number);
}

void _MutableDictionary::setItem(std::int32_t index, _DictionaryItem * item) {
    data.setItem(static_cast<std::uint32_t>(index), item);
}

bool _MutableDictionary::permute(std::int32_t first, std::int32_t second) {
    auto const count = getCount();
    if (first < 0 || first >= count || second < 0 || second >= count) {
        return false;
    }
    data.swapItems(static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(second));
    return true;
}

bool _MutableDictionary::sort(CompareProcedure procedure) {
    if (getCount() == 0) {
        return false;
    }
    if (procedure == nullptr) {
        return sortBy(_DictionaryItem::sortByKey);
    }
    std::int32_t const itemCount = packItems();
    if (itemCount != 0) {
        _quickSort(this, 0, itemCount - 1, procedure);
    }
    return true;
}

bool _MutableDictionary::sortBy(_DictionaryItem::DictionarySortFilter filter) {
    if (getCount() == 0 || (filter != _DictionaryItem::sortByKey && filter != _DictionaryItem::sortByValue)) {
        return false;
    }
    std::int32_t const itemCount = packItems();
    if (itemCount != 0 && !sortByPrefix(itemCount, filter)) {
        _quickSort(this, 0, itemCount - 1, filter == _DictionaryItem::sortByKey ? keyCompareProc : valueCompareProc);
    }
    return true;
}

bool _MutableDictionary::equals(_Dictionary const * other) const {
    return equalsWith(other,
                      [](_DictionaryItem const & own, _DictionaryItem const & item) { return own.equals(item); });
}

bool _MutableDictionary::equalsNoCase(_Dictionary const * other) const {
    return equalsWith(other,
                      [](_DictionaryItem const & own, _DictionaryItem const & item) { return own.equalsNoCase(item); });
}

_DataString _MutableDictionary::customString(char const * separator, char const * terminator) const {
    DataView const between = viewOf(separator == nullptr ? "=" : separator);
    DataView const behind = viewOf(terminator == nullptr ? "\r\n" : terminator);
    JoinedText text;
    for (std::int32_t index = 0; index < getCount(); ++index) {
        if (_DictionaryItem const * const item = itemAt(index)) {
            text.append(viewOf(item->key));
            text.append(between);
            text.append(viewOf(item->value));
            text.append(behind);
        }
    }
    return text.take();
}

bool _MutableDictionary::keyExists(char const * key) const {
    return keyIndex(key) != noIndex;
}

bool _MutableDictionary::keyExistsNoCase(char const * key) const {
    return keyIndexNoCase(key) != noIndex;
}

bool _MutableDictionary::valueExists(char const * value) const {
    return valueIndex(value) != noIndex;
}

bool _MutableDictionary::valueExistsNoCase(char const * value) const {
    return valueIndexNoCase(value) != noIndex;
}

std::int32_t _MutableDictionary::keyIndex(char const * key) const {
    return indexOf(key, [](_DictionaryItem const & item, SoughtText const & text) { return text.equals(item.key); });
}

std::int32_t _MutableDictionary::keyIndexNoCase(char const * key) const {
    return indexOf(key,
                   [](_DictionaryItem const & item, SoughtText const & text) { return text.equalsNoCase(item.key); });
}

std::int32_t _MutableDictionary::valueIndex(char const * value) const {
    return indexOf(value,
                   [](_DictionaryItem const & item, SoughtText const & text) { return text.equals(item.value); });
}

std::int32_t _MutableDictionary::valueIndexNoCase(char const * value) const {
    return indexOf(value,
                   [](_DictionaryItem const & item, SoughtText const & text) { return text.equalsNoCase(item.value); });
}

_DataString _MutableDictionary::keyOf(char const * value) const {
    return keyAt(valueIndex(value));
}

_DataString _MutableDictionary::keyOfNoCase(char const * value) const {
    return keyAt(valueIndexNoCase(value));
}

_DataString _MutableDictionary::valueOf(char const * key) const {
    return valueAt(keyIndex(key));
}

_DataString _MutableDictionary::valueOfNoCase(char const * key) const {
    return valueAt(keyIndexNoCase(key));
}

_DataString _MutableDictionary::getKeyForValue(char const * value) const {
    return keyOf(value);
}

_DataString _MutableDictionary::getValueForKey(char const * key) const {
    return valueOf(key);
}

bool _MutableDictionary::exists(char const * key, char const * value) const {
    return _find(key, value) != noIndex;
}

bool _MutableDictionary::existsNoCase(char const * key, char const * value) const {
    return _findNoCase(key, value) != noIndex;
}

bool _MutableDictionary::contains(char const * key, char const * value) const {
    return exists(key, value);
}

bool _MutableDictionary::containsNoCase(char const * key, char const * value) const {
    return existsNoCase(key, value);
}

void _MutableDictionary::removeKey(char const *) {}

void _MutableDictionary::removeValue(char const *) {}

void _MutableDictionary::setValueForKey(char const *, char const *) {}

void _MutableDictionary::setKeyForValue(char const *, char const *) {}

std::int32_t _MutableDictionary::_find(char const * key, char const * value) const {
    std::int32_t const index = keyIndex(key);
    if (index == noIndex || value == nullptr || SoughtText(value).equals(itemAt(index)->value)) {
        return index;
    }
    return noIndex;
}

std::int32_t _MutableDictionary::_findNoCase(char const * key, char const * value) const {
    std::int32_t const index = keyIndexNoCase(key);
    if (index == noIndex || value == nullptr || SoughtText(value).equalsNoCase(itemAt(index)->value)) {
        return index;
    }
    return noIndex;
}

std::int32_t _MutableDictionary::keyCompareProc(_DictionaryItem * first, _DictionaryItem * second) {
    return second->compare(first, _DictionaryItem::sortByKey);
}

std::int32_t _MutableDictionary::valueCompareProc(_DictionaryItem * first, _DictionaryItem * second) {
    return second->compare(first, _DictionaryItem::sortByValue);
}

void _MutableDictionary::_initialize() {}

void _MutableDictionary::_uninitialize() {
    data.default_ctor_closure();
}

void _MutableDictionary::_quickSort(_MutableDictionary * dictionary, std::int32_t lo, std::int32_t hi,
                                    CompareProcedure procedure) {
    struct Items {
        _MutableDictionary & dictionary;

        _DictionaryItem * at(std::int32_t index) const { return dictionary.itemAt(index); }
        void swap(std::int32_t first, std::int32_t second) const { dictionary.permute(first, second); }
    };
    Items items{*dictionary};
    morvane::quickSort(items, lo, hi, procedure);
}

std::int32_t _MutableDictionary::_sortItems(CompareProcedure procedure, _DictionaryItem * item) const {
    for (std::int32_t index = 0; index < getCount(); ++index) {
        if (itemAt(index) != nullptr && procedure(item, itemAt(index)) > 0) {
            return index;
        }
    }
    return getCount();
}

_DictionaryItem * _MutableDictionary::itemAt(std::int32_t index) const {
    return static_cast<_DictionaryItem *>(data.getItem(static_cast<std::uint32_t>(index)));
}

_DataString _MutableDictionary::keyAt(std::int32_t index) const {
    return index == noIndex ? _DataString(noText) : itemAt(index)->key;
}

_DataString _MutableDictionary::valueAt(std::int32_t index) const {
    return index == noIndex ? _DataString(noText) : itemAt(index)->value;
}

template <typename Matches>
std::int32_t _MutableDictionary::indexOf(char const * text, Matches matches) const {
    if (text == nullptr) {
        return noIndex;
    }
    SoughtText const sought(text);
    std::int32_t const count = getCount();
    for (std::int32_t index = 0; index < count; ++index) {
        _DictionaryItem const * const item = itemAt(index);
        if (item != nullptr && matches(*item, sought)) {
            return index;
        }
    }
    return noIndex;
}

template <typename Equals>
bool _MutableDictionary::equalsWith(_Dictionary const * other, Equals areEqual) const {
    if (other == nullptr || other->getCount() != getCount()) {
        return false;
    }
    for (std::int32_t index = 0; index < getCount(); ++index) {
        _DictionaryItem const * const own = itemAt(index);
        _DictionaryItem const * const item = other->getItem(index);
        if (own == nullptr || item == nullptr || !areEqual(*own, *item)) {
            return false;
        }
    }
    return true;
}

std::int32_t _MutableDictionary::addNew(std::unique_ptr<_DictionaryItem> item) {
    std::int32_t const index = add(item.get());
    if (index != noIndex) {
        static_cast<void>(item.release());
    }
    return index;
}

std::int32_t _MutableDictionary::packItems() {
    std::int32_t packed = 0;
    for (std::int32_t index = 0; index < getCount(); ++index) {
        if (itemAt(index) != nullptr) {
            if (index != packed) {
                permute(index, packed);
            }
            ++packed;
        }
    }
    return packed;
}

bool _MutableDictionary::sortByPrefix(std::int32_t itemCount, _DictionaryItem::DictionarySortFilter filter) {
    void ** const entries = data.ownEntries();
    if (entries == nullptr) {
        return false;
    }
    auto const textOf = [filter](_DictionaryItem const & item) {
        return viewOf(filter == _DictionaryItem::sortByKey ? item.key : item.value);
    };
    // What all texts begin with tells nothing.
    DataView first = upToZero(textOf(*itemAt(0)));
    for (std::int32_t index = 0; index < itemCount; ++index) {
        _DictionaryItem const & item = *itemAt(index);
        // Only of `_DictionaryItem` itself is it known what its comparison goes by.
        if (typeid(item) != typeid(_DictionaryItem)) {
            return false;
        }
        first = first.first(commonLength(first, textOf(item)));
    }
    std::size_t const common = first.length;
    std::unique_ptr<PrefixedItem[], void (*)(void *)> const scratch(
        static_cast<PrefixedItem *>(
            morvane::platform::heapAllocate(static_cast<std::size_t>(itemCount) * sizeof(PrefixedItem), false)),
        [](void * block) { morvane::platform::heapFree(block); });
    if (scratch == nullptr) {
        return false;
    }
    for (std::int32_t index = 0; index < itemCount; ++index) {
        _DictionaryItem * const item = itemAt(index);
        scratch[static_cast<std::size_t>(index)] = {prefixOf(textOf(*item), common), item};
    }
    PrefixedItems items{scratch.get()};
    morvane::quickSort(items, 0, itemCount - 1,
                       [textOf, common](PrefixedItem const & item, PrefixedItem const & pivot) {
                           if (item.prefix != pivot.prefix) {
                               return item.prefix < pivot.prefix ? 1 : -1;
                           }
                           // A zero among the eight bytes is the end of both texts. The walks meet the pivot itself,
                           // too.
                           return (item.prefix & 0xFF) == 0 || item.item == pivot.item
                                      ? 0
                                      : std::strcmp(textOf(*pivot.item).data + common + sizeof(item.prefix),
                                                    textOf(*item.item).data + common + sizeof(item.prefix));
                       });
    for (std::int32_t index = 0; index < itemCount; ++index) {
        entries[index] = scratch[static_cast<std::size_t>(index)].item;
    }
    return true;
}

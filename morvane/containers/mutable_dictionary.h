// The list of key and value pairs.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/containers/container.h>
#include <morvane/containers/dictionary.h>
#include <morvane/containers/dictionary_item.h>
#include <morvane/export.h>
#include <morvane/strings/data_string.h>

class _Stream;

/// An ordered list of key and value pairs of 8-bit text, searched from front to back.
///
/// Keys need not be unique, and items stay in the order in which they came until `sort`. Use it for settings and other
/// short lists; it has no hashing, so a large one wants another structure.
/// Cost: a look-up walks the list and compares in place; it takes no memory. A sort takes as a quick sort does, with a
/// stack of logarithmic depth. Appending takes constant time on the average.
/// Threads: a dictionary belongs to one thread at a time, together with its copies; `const` members but `get_data`
/// may run side by side.
/// Ownership: an item that goes in belongs to the dictionary, which deletes it. Copies share one list, as copies of a
/// `_Container` do; `copy` and `add` make items of their own. Items put out by `removeAt`, `removeAll` or `setItem` are
/// the caller's to delete.
/// Errors: none is raised here; look-ups that find nothing give -1, false or the text "-1", which is also an ordinary
/// text. Null entries, which `removeAt` leaves, equal nothing and are passed over; entries that `deleteAt` leaves must
/// be cleared with `removeAt` before the next walk. Outside the list items read as null.
class MORVANE_EXPORT _MutableDictionary : public _Dictionary {
public:
    /// Tells two items apart: above 0 when `first` belongs in front of `second`, below 0 when it belongs behind it.
    using CompareProcedure = std::int32_t (*)(_DictionaryItem * first, _DictionaryItem * second);

    /// Has no items.
    _MutableDictionary();
    /// Has no items and reads nothing.
    explicit _MutableDictionary(_Stream & stream);
    /// Has copies of the items of `other`.
    explicit _MutableDictionary(_Dictionary const * other);
    /// Shares the list of `other`.
    _MutableDictionary(_MutableDictionary const & other);
    /// Lets go of the items.
    ~_MutableDictionary() override;

    /// Lets go of the items and shares the list of `other`.
    _MutableDictionary & operator=(_MutableDictionary const & other);

    std::int32_t getCount() const override;
    /// The item at `index`; null outside the list.
    _DictionaryItem * getItem(std::int32_t index) const override;
    /// Reads nothing and gives true.
    virtual bool loadFromStream(_Stream & stream);
    /// Writes nothing and gives true.
    virtual bool saveToStream(_Stream & stream);
    /// The items as lines: key, "=", value, carriage return and line feed each.
    virtual _DataString toString() const;

    /// Appends an item and gives its index; -1 when there is no memory for it. The text is cut as by
    /// `_DictionaryItem::setKeyAndValue`; a pair given by reference is copied, one given by pointer is taken over, and
    /// a null pointer gives -1.
    std::int32_t add(char const * text);
    std::int32_t add(char const * key, char const * value);
    std::int32_t add(_DictionaryItem * item);
    std::int32_t add(_DictionaryItem const & item);
    /// Appends copies of the items of `other`, or the items themselves, and gives the count of `other`; -1 for null.
    /// Items that are not copied stand in two lists, only one of which may go on owning them. Of the dictionary itself
    /// the items count that it has at the call.
    std::int32_t add(_Dictionary const * other, bool copyItems);
    /// Deletes all items, then appends copies of those of `other`, and gives the count of `other`; 0 for null. The
    /// dictionary itself as `other` changes nothing.
    std::int32_t copy(_Dictionary const * other);

    /// Deletes all items; the count is 0 then.
    void deleteAll();
    /// Deletes `number` items from `index` on; their entries keep the old pointers, and the count stays.
    void deleteAt(std::uint32_t index, std::uint32_t number);
    /// Sets all entries to null without deleting an item; the count stays.
    void removeAll();
    /// The same for `number` entries from `index` on.
    void removeAt(std::uint32_t index, std::uint32_t number);
    /// Puts `item` into the entry at `index`; the former item is not deleted.
    void setItem(std::int32_t index, _DictionaryItem * item);

    /// Swaps two entries; false where one lies outside the list.
    bool permute(std::int32_t first, std::int32_t second);
    /// Sorts by `procedure`, or by key for null; equal items may change their order, and null entries go behind the
    /// items. False on an empty dictionary. A procedure that contradicts itself gives some order; what it throws passes
    /// through, and every item is still there.
    bool sort(CompareProcedure procedure);
    /// Sorts ascending by keys or values; false on an empty dictionary and for any other filter.
    bool sortBy(_DictionaryItem::DictionarySortFilter filter);

    /// True when both have as many items, and equal ones in the same order; false for null.
    bool equals(_Dictionary const * other) const;
    /// The same with A to Z taken as a to z.
    bool equalsNoCase(_Dictionary const * other) const;

    /// Key, `separator`, value and `terminator` of every item; null means "=" and "\r\n".
    _DataString customString(char const * separator, char const * terminator) const;

    /// A copy that shares the list.
    _Container get_data() const { return data; }

    /// Whether an item has the key or the value, with or without regard to case; false for null.
    bool keyExists(char const * key) const;
    bool keyExistsNoCase(char const * key) const;
    bool valueExists(char const * value) const;
    bool valueExistsNoCase(char const * value) const;

    /// The index of the first item with the key or the value; -1 where there is none, and for null.
    std::int32_t keyIndex(char const * key) const;
    std::int32_t keyIndexNoCase(char const * key) const;
    std::int32_t valueIndex(char const * value) const;
    std::int32_t valueIndexNoCase(char const * value) const;

    /// The key of the first item with the value, and the reverse; "-1" where there is none, and for null.
    _DataString keyOf(char const * value) const;
    _DataString keyOfNoCase(char const * value) const;
    _DataString valueOf(char const * key) const;
    _DataString valueOfNoCase(char const * key) const;
    _DataString getKeyForValue(char const * value) const;
    _DataString getValueForKey(char const * key) const;

    /// Whether the first item with the key has the value; a null value does not count.
    bool exists(char const * key, char const * value) const;
    bool existsNoCase(char const * key, char const * value) const;
    bool contains(char const * key, char const * value) const;
    bool containsNoCase(char const * key, char const * value) const;

    /// Do nothing.
    void removeKey(char const * key);
    void removeValue(char const * value);
    void setValueForKey(char const * value, char const * key);
    void setKeyForValue(char const * key, char const * value);

protected:
    /// The index of the first item with the key, if it has the value too; -1 otherwise. A null value does not count.
    std::int32_t _find(char const * key, char const * value) const;
    std::int32_t _findNoCase(char const * key, char const * value) const;

private:
    static std::int32_t keyCompareProc(_DictionaryItem * first, _DictionaryItem * second);
    static std::int32_t valueCompareProc(_DictionaryItem * first, _DictionaryItem * second);

    void _initialize();
    void _uninitialize();
    /// Sorts the entries `lo` to `hi` of `dictionary`, of which there is one at least.
    void _quickSort(_MutableDictionary * dictionary, std::int32_t lo, std::int32_t hi, CompareProcedure procedure);
    /// The first index whose item `item` belongs in front of; the count where there is none.
    std::int32_t _sortItems(CompareProcedure procedure, _DictionaryItem * item) const;

    void set_data(_Container value) { data = value; }

    _DictionaryItem * itemAt(std::int32_t index) const;
    /// The text of the item at `index`, "-1" for -1.
    _DataString keyAt(std::int32_t index) const;
    _DataString valueAt(std::int32_t index) const;
    template <typename Matches>
    std::int32_t indexOf(char const * text, Matches matches) const;
    template <typename Equals>
    bool equalsWith(_Dictionary const * other, Equals areEqual) const;
    std::int32_t addNew(std::unique_ptr<_DictionaryItem> item);
    /// Brings the items in front of the null entries, in their order, and gives how many there are.
    std::int32_t packItems();
    /// Sorts the first `itemCount` entries, which are items, one at least, as `_quickSort` does, by a scratch list with
    /// the start of each text at hand; false, with nothing changed, where that cannot be done.
    bool sortByPrefix(std::int32_t itemCount, _DictionaryItem::DictionarySortFilter filter);

    _Container data;
};

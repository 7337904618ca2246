// The growing list of pointers.
#pragma once

#include <cstdint>
#include <morvane/containers/array.h>
#include <morvane/export.h>

class _Object;

/// A list of bare pointers that grows at its end and owns nothing that they point to.
///
/// Use it for pointers that somebody else owns; `_Container` owns its items, `_WideStringArray` its texts.
/// The list has `size` entries, the first `count` of which are items; the others are null. `size` grows by `delta`
/// entries whenever an item finds the list full. Null items are items too, and nothing ever moves another item.
/// Cost: `getItem` and `setItem` are one indexed access; an `add` takes constant time on the average, whatever `delta`
/// is, for the block behind the list grows by factors. An array without entries takes no memory.
/// Threads: an array belongs to one thread at a time, together with its copies.
/// Ownership: the array owns its list. Copies share it: `setItem`, `removeAt`, `removeAll` and `deleteAll` on one show
/// through on the others, while each has a `count` of its own. The list goes with the last that shares it. One that has
/// to grow takes a list of its own and the items along.
/// Errors: none is raised; an `add` that cannot be served changes nothing and gives -1. Outside `size` entries read as
/// null, and stores are ignored.
class MORVANE_EXPORT _MutableArray : public _Array {
public:
    /// Has `size` null entries and no items; `delta` 0 counts as 1 where the list grows.
    explicit _MutableArray(std::uint32_t size, std::uint32_t delta = 4);
    _MutableArray() : delta(4), size(0), deleteAll_(false), list(nullptr) {}
    /// Shares the list of `other`.
    _MutableArray(_MutableArray const & other) : _MutableArray(other, false) {}
    /// Lets go of the list.
    ~_MutableArray() override {
        if (list != nullptr) {
            letGo();
        }
    }

    /// Lets go of the list and shares that of `other`.
    _MutableArray & operator=(_MutableArray const & other);

    /// Lets go of the list and brings the array to what the default constructor gives.
    void default_ctor_closure();

    /// The entry at `index`; null outside `size`.
    void * getItem(std::uint32_t index) const override { return index < size ? list[index] : nullptr; }
    /// `deleteAt` on all items, then sets them to null and `count` to 0; `size` stays.
    virtual void deleteAll();
    /// Does nothing: the items belong to somebody else.
    virtual void deleteAt(std::uint32_t index, std::uint32_t number);

    /// Stores `item` in the entry at `index`; ignored outside `size`. `count` stays.
    void setItem(std::uint32_t index, void * item);

    /// Appends `item`, which may be null, and gives its index; -1 when the heap refuses or 32 bits count no more.
    std::uint32_t add(void * item);
    /// Appends the items of `other` in their order; of the array itself, those that it has at the call.
    void append(_Array const & other);
    /// `deleteAll`, then `append` of `other`. The array itself as `other` changes nothing.
    void copy(_Array const & other);

    /// Sets `number` entries from `index` on to null; moves nothing, and `count` stays. What stood there is not
    /// deleted.
    void removeAt(std::uint32_t index, std::uint32_t number);
    /// The same for all items.
    void removeAll();

    /// Gives the list back: `size` is 0 then, and `count` stays. Items that it still held are put out as by
    /// `removeAll`. For use after `deleteAll`.
    void freeExtra();

    /// Change nothing.
    void insertAt(std::uint32_t index, void * item);
    void insertAt(std::uint32_t index, _Array const & other);
    void insertBefore(void * item, void * inserted);
    void pack();

    std::uint32_t get_delta() const { return delta; }
    std::uint32_t get_size() const { return size; }
    /// Store the field and nothing else. A `size` above that of the list is the caller's fault.
    void set_delta(std::uint32_t value) { delta = value; }
    void set_size(std::uint32_t value) { size = value; }

protected:
    /// The entries; null when `size` is 0.
    void ** get_list() const { return list; }

private:
    friend class _Container;
    friend class _MutableDictionary;

    /// Shares the list of `other`, with the flag set first.
    _MutableArray(_MutableArray const & other, bool ownsItems);

    void set_list(void ** value) { list = value; }
    /// A list of `newSize` entries, null but for those of the old one, which is let go; null when `newSize` is 0, and
    /// when the heap refuses, which lets nothing go.
    void ** _allocate(std::uint32_t newSize, void ** oldList, std::uint32_t oldSize);

    /// Makes room for one more item; false when that cannot be done.
    bool grow();
    /// Prepares the entry behind the items, which is not null, for one: `left` is what `add` deletes, if anything.
    bool takeEntry(_Object *& left);

    /// `add` of an item that belongs to somebody else and is not deleted here.
    std::uint32_t addBare(void * item);
    /// Swaps two entries within `size`, with the knowledge of whose their items are.
    void swapItems(std::uint32_t first, std::uint32_t second);
    bool hasListOf(_MutableArray const & other) const { return list != nullptr && list == other.list; }
    /// The entries, where no item belongs to somebody else; null otherwise.
    void ** ownEntries() const;

    /// Enters one more sharer for the list `joined`, which may be null.
    static void join(void ** joined, bool ownsItems);
    /// Leaves the list to those that share it; the last one releases it, and the last one that owns the items deletes
    /// them first.
    void letGo();
    /// The same without a look at the items.
    void leave();
    /// Deletes the items of all that shared the list, those in front of `from` but for; the others read null then.
    void deleteItems(std::uint32_t from);
    /// Lets go of the list and becomes a copy of `other`, with this flag.
    void assign(_MutableArray const & other, bool ownsItems);
    /// Sets the flag, and tells the list so.
    void setOwner(bool value);

    std::uint32_t delta;
    std::uint32_t size;
    /// The field of `_Container`, always false in other arrays. It stands here because it needs no room here, and
    /// because the list counts those that own its items.
    bool deleteAll_;
    void ** list;
};

// The owning list of objects.
#pragma once

#include <cstdint>
#include <morvane/containers/mutable_array.h>
#include <morvane/core/object.h>
#include <morvane/export.h>

/// A growing list that owns its items, which are pointers to `_Object` and its descendants.
///
/// Use it wherever a list decides how long its objects live; for borrowed pointers take `_MutableArray`, or set the
/// flag `deleteAll` to false.
/// Cost: as `_MutableArray`; an empty container takes no memory, so that it may stand in every node of a tree.
/// Threads: a container belongs to one thread at a time, together with its copies.
/// Ownership: an object that goes in belongs to the container, which deletes it through its virtual destructor, when
/// the flag is true at its own end. Copies share the list: the last one whose flag is true deletes the items, and the
/// others read null from then on. One that has to grow takes a list of its own and the items along; the others keep
/// bare pointers, which they do not delete. Where its flag is false and that of another one true, the items stay with
/// that one. Objects put out by `setItem`, `removeAt`, `removeAll` or `freeExtra` are the caller's to delete.
/// Errors: as `_MutableArray`; what could not be added stays the caller's.
class MORVANE_EXPORT _Container : public _MutableArray {
public:
    /// Has no items and owns what comes.
    _Container() { deleteAll_ = true; }
    /// Shares the list of `other` and takes over its flag.
    _Container(_Container const & other) : _MutableArray(other, other.deleteAll_) {}
    /// Lets go of the list and of its items.
    ~_Container() override {
        if (get_list() != nullptr) {
            letGo();
        }
    }

    /// Lets go of the list and of its items, and becomes a copy of `other`.
    _Container & operator=(_Container const & other);

    /// Deletes all items; then as `_MutableArray`.
    void deleteAll() override;
    /// Deletes the objects of `number` entries from `index` on, null ones and those of bare pointers but for. The
    /// entries keep their pointers until the caller clears them with `removeAt`, and `count` stays.
    void deleteAt(std::uint32_t index, std::uint32_t number) override;

    /// `add` of an object.
    std::uint32_t addObject(_Object * object) { return add(object); }
    /// The object at `index`; null outside `size`.
    _Object * getObject(std::uint32_t index) const { return static_cast<_Object *>((*this)[index]); }

    /// Whether the container deletes its items at its end.
    bool get_deleteAll() const { return deleteAll_; }
    void set_deleteAll(bool value) { setOwner(value); }
};

#include <morvane/containers/mutable_array.h>

#include <algorithm>
#include <limits>
#include <morvane/containers/list_block.h>
#include <morvane/core/object.h>
#include <utility>

using morvane::ListBlock;

namespace {

constexpr std::uint32_t noIndex = static_cast<std::uint32_t>(-1);
constexpr std::uint32_t mostEntries = std::numeric_limits<std::uint32_t>::max();

std::uint32_t addSaturated(std::uint32_t left, std::uint32_t right) {
    return right > mostEntries - left ? mostEntries : left + right;
}

} // namespace

_MutableArray::_MutableArray(std::uint32_t entryCount, std::uint32_t growth)
    : delta(growth), size(0), deleteAll_(false), list(_allocate(entryCount, nullptr, 0)) {
    if (list != nullptr) {
        size = entryCount;
    }
}

_MutableArray::_MutableArray(_MutableArray const & other, bool ownsItems)
    : _Array(other), delta(other.delta), size(other.size), deleteAll_(ownsItems), list(other.list) {
    join(list, deleteAll_);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): `assign` carries it.
_MutableArray & _MutableArray::operator=(_MutableArray const & other) {
    assign(other, deleteAll_);
    return *this;
}

void _MutableArray::default_ctor_closure() {
    letGo();
    set_count(0);
    delta = 4;
}

void _MutableArray::deleteAll() {
    deleteAt(0, get_count());
    removeAll();
    set_count(0);
}

void _MutableArray::deleteAt(std::uint32_t, std::uint32_t) {}

void _MutableArray::setItem(std::uint32_t index, void * item) {
    if (index < size) {
        list[index] = item;
        ListBlock::of(list).claim(index);
    }
}

std::uint32_t _MutableArray::add(void * item) {
    std::uint32_t const index = get_count();
    _Object * left = nullptr;
    if (index >= size ? !grow() : list[index] != nullptr && !takeEntry(left)) {
        return noIndex;
    }
    setItem(index, item);
    set_count(index + 1);
    delete left;
    return index;
}

void _MutableArray::append(_Array const & other) {
    auto const * const array = dynamic_cast<_MutableArray const *>(&other);
    if (array != nullptr && hasListOf(*array)) {
        // The items stand in the list already; the new entries must not delete them a second time.
        std::uint32_t const number = array->get_count();
        for (std::uint32_t index = 0; index < number; ++index) {
            addBare(other[index]);
        }
        return;
    }
    for (std::uint32_t index = 0; index < other.get_count(); ++index) {
        add(other[index]);
    }
}

void _MutableArray::copy(_Array const & other) {
    if (&other != this) {
        deleteAll();
        append(other);
    }
}

void _MutableArray::removeAt(std::uint32_t index, std::uint32_t number) {
    if (index < size) {
        std::fill_n(list + index, std::min(number, size - index), nullptr);
    }
}

void _MutableArray::removeAll() {
    removeAt(0, get_count());
}

void _MutableArray::freeExtra() {
    if (size == 0) {
        return;
    }
    if (list != nullptr && deleteAll_ && ListBlock::of(list).owners == 1) {
        // What those that left have added is no item of this array and nobody else's any more.
        deleteItems(get_count());
    }
    leave();
}

void _MutableArray::insertAt(std::uint32_t, void *) {}

void _MutableArray::insertAt(std::uint32_t index, _Array const & other) {
    for (std::uint32_t item = 0; item < other.get_count(); ++item) {
        insertAt(index, other[item]);
    }
}

void _MutableArray::insertBefore(void *, void *) {}

void _MutableArray::pack() {}

void ** _MutableArray::_allocate(std::uint32_t newSize, void ** oldList, std::uint32_t oldSize) {
    ListBlock * const former = oldList == nullptr ? nullptr : &ListBlock::of(oldList);
    std::uint32_t const kept = std::min(newSize, oldSize);
    if (newSize == 0) {
        if (former != nullptr) {
            leave();
        }
        return nullptr;
    }
    if (former == nullptr) {
        ListBlock * const fresh = ListBlock::create(newSize);
        if (fresh == nullptr) {
            return nullptr;
        }
        fresh->owners = deleteAll_ ? 1 : 0;
        return fresh->entries();
    }
    // By factors, so that a million items are not copied a quarter of a million times.
    std::uint32_t const roomy = std::max(newSize, addSaturated(former->capacity, former->capacity));
    ListBlock * fresh = ListBlock::create(roomy);
    if (fresh == nullptr && roomy != newSize) {
        fresh = ListBlock::create(newSize);
    }
    if (fresh == nullptr) {
        return nullptr;
    }
    if (former->sharers == 1) {
        if (!fresh->replace(former, kept)) {
            ListBlock::destroy(fresh);
            return nullptr;
        }
        return fresh->entries();
    }
    std::uint32_t const otherOwners = former->owners - (deleteAll_ ? 1 : 0);
    if (!fresh->partFrom(*former, kept, deleteAll_ || otherOwners == 0)) {
        ListBlock::destroy(fresh);
        return nullptr;
    }
    fresh->owners = deleteAll_ ? 1 : 0;
    former->owners = otherOwners;
    --former->sharers;
    return fresh->entries();
}

bool _MutableArray::grow() {
    std::uint32_t const step = std::max(delta, std::uint32_t{1});
    // The count is above the size where `freeExtra` took the list away.
    std::uint32_t const newSize = addSaturated(std::max(size, get_count()), step);
    if (newSize <= get_count()) {
        return false;
    }
    if (list == nullptr || ListBlock::of(list).sharers > 1 || ListBlock::of(list).capacity < newSize) {
        void ** const grown = _allocate(newSize, list, size);
        if (grown == nullptr) {
            return false;
        }
        list = grown;
    }
    size = newSize;
    return true;
}

bool _MutableArray::takeEntry(_Object *& left) {
    std::uint32_t const index = get_count();
    ListBlock & block = ListBlock::of(list);
    if (block.sharers > 1) {
        // Another sharer has added an item there, which would be lost.
        void ** const own = _allocate(size, list, index);
        if (own == nullptr) {
            return false;
        }
        list = own;
    } else if (deleteAll_ && index < block.leftCount && !block.isBare(index)) {
        left = static_cast<_Object *>(list[index]);
    }
    return true;
}

std::uint32_t _MutableArray::addBare(void * item) {
    std::uint32_t const index = add(item);
    if (index != noIndex && !ListBlock::of(list).disclaim(index)) {
        list[index] = nullptr;
        set_count(index);
        return noIndex;
    }
    return index;
}

void _MutableArray::swapItems(std::uint32_t first, std::uint32_t second) {
    ListBlock::of(list).swapEntries(first, second);
}

void ** _MutableArray::ownEntries() const {
    return list == nullptr || ListBlock::of(list).hasMarks() ? nullptr : list;
}

void _MutableArray::letGo() {
    if (list == nullptr) {
        size = 0;
        return;
    }
    if (deleteAll_) {
        if (ListBlock::of(list).owners == 1) {
            deleteItems(0);
        } else {
            ListBlock & block = ListBlock::of(list);
            block.leftCount = std::max(block.leftCount, std::min(get_count(), block.capacity));
        }
    }
    leave();
}

void _MutableArray::deleteItems(std::uint32_t from) {
    // The destructors of the items may use this array, so nothing of it is remembered from one to the next.
    for (std::uint32_t index = from; list != nullptr; ++index) {
        ListBlock & block = ListBlock::of(list);
        if (index >= std::min(std::max(get_count(), block.leftCount), block.capacity)) {
            break;
        }
        if (list[index] != nullptr && !block.isBare(index)) {
            delete static_cast<_Object *>(std::exchange(list[index], nullptr));
        }
    }
}

void _MutableArray::leave() {
    if (list != nullptr) {
        ListBlock & block = ListBlock::of(list);
        list = nullptr;
        block.owners -= deleteAll_ ? 1 : 0;
        if (--block.sharers == 0) {
            ListBlock::destroy(&block);
        }
    }
    size = 0;
}

void _MutableArray::join(void ** joined, bool ownsItems) {
    if (joined != nullptr) {
        ListBlock & block = ListBlock::of(joined);
        ++block.sharers;
        block.owners += ownsItems ? 1 : 0;
    }
}

void _MutableArray::assign(_MutableArray const & other, bool ownsItems) {
    if (this == &other) {
        return;
    }
    std::uint32_t const newCount = other.get_count();
    std::uint32_t const newDelta = other.delta;
    std::uint32_t const newSize = other.size;
    void ** const newList = other.list;
    // First, so that items which both have outlive the change.
    join(newList, ownsItems);
    letGo();
    set_count(newCount);
    delta = newDelta;
    size = newSize;
    deleteAll_ = ownsItems;
    list = newList;
}

void _MutableArray::setOwner(bool value) {
    if (list != nullptr && value != deleteAll_) {
        std::uint32_t & owners = ListBlock::of(list).owners;
        owners = value ? owners + 1 : owners - 1;
    }
    deleteAll_ = value;
}

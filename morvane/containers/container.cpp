#include <morvane/containers/container.h>

#include <morvane/containers/list_block.h>

using morvane::ListBlock;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): `assign` carries it.
_Container & _Container::operator=(_Container const & other) {
    assign(other, other.deleteAll_);
    return *this;
}

void _Container::deleteAll() {
    _MutableArray::deleteAll();
}

void _Container::deleteAt(std::uint32_t index, std::uint32_t number) {
    // The destructors of the items may use this container, so its list is looked at anew for each.
    for (; number != 0 && index < get_size(); ++index, --number) {
        void * const item = get_list()[index];
        if (item != nullptr && !ListBlock::of(get_list()).isBare(index)) {
            delete static_cast<_Object *>(item);
        }
    }
}

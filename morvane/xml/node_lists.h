// The lists of children and attributes that nodes own, alone or together with their copies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/containers/container.h>
#include <morvane/containers/list_block.h>
#include <morvane/xml/xml_named_node_map.h>
#include <utility>

namespace morvane {

/// A list that a node makes when it first needs one.
template <typename List>
class NodeList final : public List {
public:
    /// Every list behind the fields of a node was made as one of these.
    static NodeList & of(List & list) noexcept { return static_cast<NodeList &>(list); }
    static NodeList const & of(List const & list) noexcept { return static_cast<NodeList const &>(list); }

    void share() noexcept { ++sharers; }
    bool isAlone() const noexcept { return sharers == 1; }
    /// True when that was the last node.
    bool letGo() noexcept { return --sharers == 0; }

    /// The item at `index`; null outside the list.
    _Object * getObjectAt(std::uint32_t index) const noexcept {
        return static_cast<_Object *>(this->List::getItem(index));
    }
    /// True when the items go with this list, so that they may be taken out and deleted one by one.
    bool ownsItems() const noexcept {
        if (!this->get_deleteAll() || this->get_list() == nullptr) {
            return false;
        }
        ListBlock const & block = ListBlock::of(this->get_list());
        return block.sharers == 1 && block.leftCount <= this->get_count();
    }
    /// Takes out the item at `index`; null outside the list and for one that belongs elsewhere.
    _Object * take(std::uint32_t index) noexcept {
        if (index >= this->get_size()) {
            return nullptr;
        }
        void ** const entry = this->get_list() + index;
        _Object * const item = static_cast<_Object *>(*entry);
        *entry = nullptr;
        return ListBlock::of(this->get_list()).isBare(index) ? nullptr : item;
    }

    static void * operator new(std::size_t bytes);
    static void operator delete(void * block) noexcept;

private:
    std::uint32_t sharers = 1;
};

extern template class NodeList<_Container>;
extern template class NodeList<DOM::_XMLNamedNodeMap>;

using ChildList = NodeList<_Container>;
using AttributeList = NodeList<DOM::_XMLNamedNodeMap>;

/// The list behind `field`, made now if there was none.
template <typename List>
NodeList<List> & makeList(List *& field) {
    if (field == nullptr) {
        field = new NodeList<List>;
    }
    return NodeList<List>::of(*field);
}

/// The list behind `field` with one more node on it; made now if there was none.
template <typename List>
List * shareList(List *& field) {
    NodeList<List> & list = makeList(field);
    list.share();
    return &list;
}

/// Lets go of a list; the last node that does so deletes it with what it owns. Null is ignored.
void releaseList(DOM::_XMLNamedNodeMap * attributes) noexcept;
/// The same. Elements of the library's own class are taken apart at any depth in constant stack: the attributes of each
/// first, then its children, then itself.
void releaseList(_Container * children) noexcept;

/// The number of items in the list behind a field, which may not be made yet, and one of them; null outside the list.
template <typename List>
std::uint32_t countOf(List const * list) noexcept {
    return list == nullptr ? 0 : list->get_count();
}
template <typename Item, typename List>
Item * itemOf(List const * list, std::uint32_t index) noexcept {
    // The call goes straight: nothing derives from that class.
    return list == nullptr ? nullptr : static_cast<Item *>(NodeList<List>::of(*list).getObjectAt(index));
}

} // namespace morvane

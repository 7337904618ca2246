// The children and attributes that nodes own, alone or together with their copies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <morvane/containers/container.h>
#include <morvane/containers/list_block.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/xml_element.h>
#include <morvane/xml/xml_named_node_map.h>
#include <morvane/xml/xml_processing_instruction.h>
#include <utility>

namespace morvane {

/// A list that a node makes when it needs one.
template <typename List>
class NodeList final : public List {
public:
    using Face = List;

    /// Every list behind the fields of a node was made as one of these.
    static NodeList & of(List & list) noexcept { return static_cast<NodeList &>(list); }

    void share() noexcept { ++sharers; }
    bool isAlone() const noexcept { return sharers == 1; }
    /// True when that was the last node.
    bool letGo() noexcept { return --sharers == 0; }

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

/// The nodes that a node was read with, in one block of exactly their size.
struct NodeRow {
    std::size_t count;

    /// A row of `count` nodes, to be written by the caller; throws `std::bad_alloc` where the heap refuses.
    static NodeRow & make(std::size_t count);
    static void destroy(NodeRow & row) noexcept;

    DOM::_XMLNode ** nodes() noexcept { return reinterpret_cast<DOM::_XMLNode **>(this + 1); }
};

/// Appends `item` to `list`; throws `std::bad_alloc`, with nothing changed, where there is no room.
void addTo(_Container & list, _Object * item);

/// The children or the attributes of one node, whichever way it holds them.
template <typename List>
class NodeItems {
public:
    using Node = DOM::_XMLNode;

    NodeItems(Holding & holding, void *& field) noexcept : how(holding), held(field) {}

    std::uint32_t count() const noexcept {
        switch (how) {
        case Holding::only:
            return 1;
        case Holding::row:
            return static_cast<std::uint32_t>(row().count);
        case Holding::list:
            break;
        }
        return held == nullptr ? 0 : listHeld().get_count();
    }
    /// Null outside the list.
    Node * at(std::uint32_t index) const noexcept {
        switch (how) {
        case Holding::only:
            return index == 0 ? static_cast<Node *>(held) : nullptr;
        case Holding::row:
            return index < row().count ? row().nodes()[index] : nullptr;
        case Holding::list:
            break;
        }
        // The call goes straight: nothing derives from that class.
        return held == nullptr ? nullptr : static_cast<Node *>(listHeld()._Container::getItem(index));
    }
    bool isOnly() const noexcept { return how == Holding::only; }
    /// True when they go with the node and may be taken out one by one; false also where there are none.
    bool isOwner() const noexcept {
        return how != Holding::list || (held != nullptr && listHeld().isAlone() && listHeld().ownsItems());
    }
    bool isNothing() const noexcept { return held == nullptr; }
    /// The list; null where there is none.
    List * listOrNull() const noexcept { return how == Holding::list && held != nullptr ? &listHeld() : nullptr; }

    /// The list, made now if there was none.
    List & list();
    void add(Node * item);
    /// Makes them those of `shared`, where there are none.
    void share(List & shared) noexcept {
        shared.share();
        held = static_cast<typename List::Face *>(&shared);
    }
    /// Holds what a reading has made: null, an item, or a row of them.
    void hold(Node * only) noexcept {
        how = Holding::only;
        held = only;
    }
    void hold(NodeRow & nodes) noexcept {
        how = Holding::row;
        held = &nodes;
    }

    /// Takes out an only item; null where there is none or more may be.
    Node * takeOnly() noexcept {
        if (how != Holding::only) {
            return nullptr;
        }
        how = Holding::list;
        return static_cast<Node *>(std::exchange(held, nullptr));
    }
    /// Takes out the next item at or behind `next`, which moves along; null when none is left. For an owner.
    _Object * takeNext(std::uint32_t & next) noexcept {
        if (how != Holding::row) {
            return how == Holding::only ? takeOnly() : takeNextOfList(next);
        }
        while (next < row().count) {
            if (Node * const item = std::exchange(row().nodes()[next++], nullptr)) {
                return item;
            }
        }
        return nullptr;
    }
    /// Lets go of list or row, whose items were taken out or are somebody else's.
    void drop() noexcept;

private:
    _Object * takeNextOfList(std::uint32_t & next) noexcept;

    NodeRow & row() const noexcept { return *static_cast<NodeRow *>(held); }
    List & listHeld() const noexcept { return List::of(*static_cast<typename List::Face *>(held)); }

    Holding & how;
    void *& held;
};

extern template class NodeItems<ChildList>;
extern template class NodeItems<AttributeList>;

using Children = NodeItems<ChildList>;
using Attributes = NodeItems<AttributeList>;

inline Children childrenOf(DOM::_XMLElement const & element) noexcept {
    return {NodeAccess::childHolding(element), NodeAccess::children(element)};
}
template <typename Owner>
inline Attributes attributesOf(Owner const & owner) noexcept {
    return {NodeAccess::attributeHolding(owner), NodeAccess::attributes(owner)};
}

/// Hands a node over to the children or attributes of another, behind what is there.
template <typename List, typename Class>
Class * link(NodeItems<List> items, std::unique_ptr<Class> node) {
    items.add(node.get());
    return node.release();
}

/// The first attribute of that name in any case of A to Z; null if there is none. `name` holds no zero.
DOM::_XMLAttribute * findAttribute(Attributes attributes, WideView name) noexcept;

/// Lets go of the attributes; the last node that does so deletes them.
void releaseAttributes(Attributes attributes) noexcept;

/// Lets go of the attributes first and the children second; what nobody shares is deleted. Elements of the library's
/// own class are taken apart at any depth in constant stack: the attributes of each first, then its children, then
/// itself.
void releaseItems(DOM::_XMLElement & element) noexcept;

} // namespace morvane

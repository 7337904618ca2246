// The lists of children and attributes that nodes own, alone or together with their copies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/containers/container.h>
#include <morvane/containers/list_block.h>
#include <morvane/xml/xml_element.h>
#include <morvane/xml/xml_named_node_map.h>

namespace morvane {

/// A list that a node makes when it needs one.
template <typename List>
class NodeList final : public List {
public:
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

/// Appends `item` to `list`; throws `std::bad_alloc`, with nothing changed, where there is no room.
void addTo(_Container & list, _Object * item);

/// Lets go of the attributes of a node; the last node that does so deletes the map with what it owns. Null is ignored.
void releaseAttributes(DOM::_XMLNamedNodeMap * map) noexcept;

/// The children and attributes of an element, whichever way it holds them.
struct ElementLists {
    using Element = DOM::_XMLElement;

    static std::uint32_t childCount(Element const & element) noexcept {
        if (element.hasOnlyChild) {
            return 1;
        }
        return element.childElements == nullptr ? 0 : element.childElements->get_count();
    }
    /// Null outside the list.
    static DOM::_XMLNode * child(Element const & element, std::uint32_t index) noexcept {
        if (element.hasOnlyChild) {
            return index == 0 ? element.onlyChild : nullptr;
        }
        // The call goes straight: nothing derives from that class.
        return element.childElements == nullptr
                   ? nullptr
                   : static_cast<DOM::_XMLNode *>(element.childElements->_Container::getItem(index));
    }
    static std::uint32_t attributeCount(Element const & element) noexcept {
        if (element.hasOnlyAttribute) {
            return 1;
        }
        return element.attributes == nullptr ? 0 : element.attributes->get_count();
    }
    /// Null outside the list.
    static DOM::_XMLAttribute * attribute(Element const & element, std::uint32_t index) noexcept {
        if (element.hasOnlyAttribute) {
            return index == 0 ? element.onlyAttribute : nullptr;
        }
        return element.attributes == nullptr
                   ? nullptr
                   : static_cast<DOM::_XMLAttribute *>(element.attributes->_Container::getItem(index));
    }

    /// The lists, made now if there were none.
    static ChildList & children(Element const & element);
    static AttributeList & attributes(Element const & element);

    static void addChild(Element & element, DOM::_XMLNode * node);
    static void addAttribute(Element & element, DOM::_XMLAttribute * attribute);

    /// Makes `element`, which holds nothing, share the lists of `other`.
    static void share(Element & element, Element const & other);
    /// Lets go of the attributes first and the children second; what nobody shares is deleted. Elements of the
    /// library's own class are taken apart at any depth in constant stack: the attributes of each first, then its
    /// children, then itself.
    static void release(Element & element) noexcept;

private:
    static void releaseAttributes(Element & element) noexcept;
    static void releaseChildren(Element & element) noexcept;
    static void dropChildList(Element & element) noexcept;
    static bool ownsChildren(Element const & element) noexcept;
    static _Object * takeChild(Element & element, std::uint32_t & next) noexcept;
};

} // namespace morvane

#include <morvane/xml/node_lists.h>

#include <morvane/platform/process_heap.h>
#include <morvane/xml/folded_name.h>
#include <morvane/xml/growing_stack.h>
#include <new>
#include <utility>

namespace morvane {

namespace {

using Element = DOM::_XMLElement;

/// An element whose children are being deleted, and the index of the next one.
struct Deletion {
    Element * element;
    std::uint32_t next;
};

void deleteElement(HeapBatch & batch, Element & element) noexcept {
    if (attributesOf(element).isNothing() && childrenOf(element).isNothing()) [[likely]] {
        NodeAccess::destroy(batch, element);
    } else {
        batch.settle();
        delete &element;
    }
}

/// Deletes a node that holds no children and attributes any more, unless it is an element; the library's own classes go
/// without a look at their virtual destructors.
void deleteLeaf(HeapBatch & batch, _Object * item) noexcept {
    if (isExactly<DOM::_XMLText>(*item)) {
        NodeAccess::destroy(batch, static_cast<DOM::_XMLText &>(*item));
    } else {
        batch.settle();
        delete item;
    }
}

/// Lets go of list or row; what still hangs on a list goes with it.
template <typename List>
void drop(HeapBatch & batch, NodeItems<List> items) noexcept {
    if (items.listOrNull() != nullptr) {
        batch.settle();
    }
    items.drop();
}

void deleteAttributes(HeapBatch & batch, Attributes attributes) noexcept {
    if (attributes.isNothing()) {
        return;
    }
    std::uint32_t next = 0;
    while (attributes.listOrNull() == nullptr) {
        _Object * const item = attributes.takeNext(next);
        if (item == nullptr) {
            break;
        }
        if (isExactly<DOM::_XMLAttribute>(*item)) [[likely]] {
            NodeAccess::destroy(batch, static_cast<DOM::_XMLAttribute &>(*item));
        } else {
            deleteLeaf(batch, item);
        }
    }
    drop(batch, attributes);
}

/// True when the element has a text for its only child, or none.
bool isShallow(Element const & element) noexcept {
    Children const children = childrenOf(element);
    return children.isNothing() || (children.isOnly() && isExactly<DOM::_XMLText>(*children.at(0)));
}

void deleteChildren(HeapBatch & batch, Element & top) noexcept {
    GrowingStack<Deletion, 32> open;
    if (childrenOf(top).isOwner()) {
        // There is always room for the first.
        static_cast<void>(open.push({&top, 0}));
    }
    while (!open.isEmpty()) {
        Deletion & deletion = open.top();
        Children children = childrenOf(*deletion.element);
        _Object * const item = children.takeNext(deletion.next);
        if (item == nullptr) {
            Element & emptied = *deletion.element;
            open.pop();
            drop(batch, children);
            if (&emptied != &top) {
                deleteElement(batch, emptied);
            }
        } else if (!isExactly<Element>(*item)) {
            deleteLeaf(batch, item);
        } else {
            auto & element = static_cast<Element &>(*item);
            deleteAttributes(batch, attributesOf(element));
            if (isShallow(element)) {
                if (DOM::_XMLNode * const text = childrenOf(element).takeOnly()) {
                    deleteLeaf(batch, text);
                }
                deleteElement(batch, element);
            } else if (!childrenOf(element).isOwner() || !open.push({&element, 0})) {
                // Where the stack can't grow, the element's destructor goes down one level instead.
                deleteElement(batch, element);
            }
        }
    }
    drop(batch, childrenOf(top));
}

} // namespace

template <typename List>
void * NodeList<List>::operator new(std::size_t bytes) {
    void * const block = platform::heapAllocate(bytes, false);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

template <typename List>
void NodeList<List>::operator delete(void * block) noexcept {
    platform::heapFree(block);
}

template class NodeList<_Container>;
template class NodeList<DOM::_XMLNamedNodeMap>;

NodeRow & NodeRow::make(std::size_t count) {
    void * const block = platform::heapAllocate(sizeof(NodeRow) + count * sizeof(DOM::_XMLNode *), false);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return *::new (block) NodeRow{count};
}

void NodeRow::destroy(NodeRow & row) noexcept {
    platform::heapFree(&row);
}

void addTo(_Container & list, _Object * item) {
    if (list.addObject(item) == static_cast<std::uint32_t>(-1)) {
        throw std::bad_alloc();
    }
}

template <typename List>
List & NodeItems<List>::list() {
    if (how == Holding::list && held != nullptr) {
        return listHeld();
    }
    auto made = std::make_unique<List>();
    // Until the list holds all of them, the items stay with the node.
    made->set_deleteAll(false);
    for (std::uint32_t index = 0; index < count(); ++index) {
        addTo(*made, at(index));
    }
    made->set_deleteAll(true);
    drop();
    how = Holding::list;
    held = static_cast<typename List::Face *>(made.get());
    return *made.release();
}

template <typename List>
void NodeItems<List>::add(Node * item) {
    if (!isNothing()) {
        addTo(list(), item);
        return;
    }
    hold(item);
}

template <typename List>
_Object * NodeItems<List>::takeNextOfList(std::uint32_t & next) noexcept {
    while (held != nullptr && next < listHeld().get_count()) {
        if (_Object * const item = listHeld().take(next++)) {
            return item;
        }
    }
    return nullptr;
}

template <typename List>
void NodeItems<List>::drop() noexcept {
    Holding const former = std::exchange(how, Holding::list);
    void * const dropped = std::exchange(held, nullptr);
    if (former == Holding::row) {
        NodeRow::destroy(*static_cast<NodeRow *>(dropped));
    } else if (former == Holding::list && dropped != nullptr) {
        List & list = List::of(*static_cast<typename List::Face *>(dropped));
        if (list.letGo()) {
            delete &list;
        }
    }
}

template class NodeItems<ChildList>;
template class NodeItems<AttributeList>;

DOM::_XMLAttribute * findAttribute(Attributes attributes, WideView name) noexcept {
    for (std::uint32_t index = 0; index < attributes.count(); ++index) {
        DOM::_XMLNode * const node = attributes.at(index);
        if (node != nullptr && equalsFolded(NodeAccess::name(*node).arg(), name)) {
            return static_cast<DOM::_XMLAttribute *>(node);
        }
    }
    return nullptr;
}

void releaseAttributes(Attributes attributes) noexcept {
    HeapBatch batch;
    deleteAttributes(batch, attributes);
}

void releaseItems(Element & element) noexcept {
    HeapBatch batch;
    // A node derived elsewhere may have its dying parent make a list anew.
    while (!attributesOf(element).isNothing() || !childrenOf(element).isNothing()) {
        deleteAttributes(batch, attributesOf(element));
        deleteChildren(batch, element);
    }
}

} // namespace morvane

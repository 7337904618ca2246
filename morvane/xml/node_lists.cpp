#include <morvane/xml/node_lists.h>

#include <memory>
#include <morvane/platform/process_heap.h>
#include <morvane/xml/growing_stack.h>
#include <morvane/xml/node_access.h>
#include <new>
#include <utility>

namespace morvane {

namespace {

/// An element whose children are being deleted, and the index of the next one.
struct Deletion {
    DOM::_XMLElement * element;
    std::uint32_t next;
};

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

void addTo(_Container & list, _Object * item) {
    if (list.addObject(item) == static_cast<std::uint32_t>(-1)) {
        throw std::bad_alloc();
    }
}

void releaseAttributes(DOM::_XMLNamedNodeMap * map) noexcept {
    if (map != nullptr && AttributeList::of(*map).letGo()) {
        delete &AttributeList::of(*map);
    }
}

ChildList & ElementLists::children(Element const & element) {
    if (element.hasOnlyChild || element.childElements == nullptr) {
        auto list = std::make_unique<ChildList>();
        if (element.hasOnlyChild) {
            addTo(*list, element.onlyChild);
        }
        element.hasOnlyChild = false;
        element.childElements = list.release();
    }
    return ChildList::of(*element.childElements);
}

AttributeList & ElementLists::attributes(Element const & element) {
    if (element.hasOnlyAttribute || element.attributes == nullptr) {
        auto list = std::make_unique<AttributeList>();
        if (element.hasOnlyAttribute) {
            addTo(*list, element.onlyAttribute);
        }
        element.hasOnlyAttribute = false;
        element.attributes = list.release();
    }
    return AttributeList::of(*element.attributes);
}

void ElementLists::addChild(Element & element, DOM::_XMLNode * node) {
    if (!element.hasOnlyChild && element.childElements == nullptr) {
        element.onlyChild = node;
        element.hasOnlyChild = true;
    } else {
        addTo(children(element), node);
    }
}

void ElementLists::addAttribute(Element & element, DOM::_XMLAttribute * attribute) {
    if (!element.hasOnlyAttribute && element.attributes == nullptr) {
        element.onlyAttribute = attribute;
        element.hasOnlyAttribute = true;
    } else {
        addTo(attributes(element), attribute);
    }
}

void ElementLists::share(Element & element, Element const & other) {
    // Both are made before one is shared, so that nothing is left behind where one can't be made.
    ChildList & childList = children(other);
    AttributeList & attributeList = attributes(other);
    childList.share();
    attributeList.share();
    element.childElements = &childList;
    element.attributes = &attributeList;
}

void ElementLists::release(Element & element) noexcept {
    // A node derived elsewhere may have its dying parent make a list anew.
    while (element.hasOnlyAttribute || element.attributes != nullptr || element.hasOnlyChild
           || element.childElements != nullptr) {
        releaseAttributes(element);
        releaseChildren(element);
    }
}

void ElementLists::releaseAttributes(Element & element) noexcept {
    if (element.hasOnlyAttribute) {
        DOM::_XMLAttribute * const attribute = element.onlyAttribute;
        element.hasOnlyAttribute = false;
        element.attributes = nullptr;
        delete attribute;
    } else {
        morvane::releaseAttributes(std::exchange(element.attributes, nullptr));
    }
}

/// True when the children go with the element, and may be taken out one by one.
bool ElementLists::ownsChildren(Element const & element) noexcept {
    if (element.hasOnlyChild || element.childElements == nullptr) {
        return element.hasOnlyChild;
    }
    ChildList const & list = ChildList::of(*element.childElements);
    return list.isAlone() && list.ownsItems();
}

/// Takes out the next child that there is; null when none is left.
_Object * ElementLists::takeChild(Element & element, std::uint32_t & next) noexcept {
    if (element.hasOnlyChild) {
        DOM::_XMLNode * const child = element.onlyChild;
        element.hasOnlyChild = false;
        element.childElements = nullptr;
        return child;
    }
    if (element.childElements != nullptr) {
        ChildList & list = ChildList::of(*element.childElements);
        while (next < list.get_count()) {
            if (_Object * const item = list.take(next++)) {
                return item;
            }
        }
    }
    return nullptr;
}

void ElementLists::releaseChildren(Element & top) noexcept {
    GrowingStack<Deletion, 32> open;
    if (ownsChildren(top)) {
        // There is always room for the first.
        static_cast<void>(open.push({&top, 0}));
    }
    while (!open.isEmpty()) {
        Deletion & deletion = open.top();
        if (_Object * const item = takeChild(*deletion.element, deletion.next)) {
            if (isExactly<Element>(*item)) {
                auto & element = static_cast<Element &>(*item);
                releaseAttributes(element);
                // Where the stack can't grow, the element's destructor goes down one level instead.
                if (ownsChildren(element) && open.push({&element, 0})) {
                    continue;
                }
            }
            delete item;
            continue;
        }
        Element & emptied = *deletion.element;
        open.pop();
        if (&emptied != &top) {
            dropChildList(emptied);
            delete &emptied;
        }
    }
    dropChildList(top);
}

/// Lets go of the list of children, if there is one.
void ElementLists::dropChildList(Element & element) noexcept {
    if (!element.hasOnlyChild && element.childElements != nullptr) {
        ChildList & list = ChildList::of(*std::exchange(element.childElements, nullptr));
        if (list.letGo()) {
            delete &list;
        }
    }
}

} // namespace morvane

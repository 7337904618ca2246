#include <morvane/xml/node_lists.h>

#include <morvane/platform/process_heap.h>
#include <morvane/xml/growing_stack.h>
#include <morvane/xml/node_access.h>
#include <new>

namespace morvane {

namespace {

/// A list whose items are being deleted, the next of them, and the element that owns the list.
struct Deletion {
    ChildList * list;
    std::uint32_t next;
    DOM::_XMLElement * owner;
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

void releaseList(DOM::_XMLNamedNodeMap * attributes) noexcept {
    if (attributes != nullptr && AttributeList::of(*attributes).letGo()) {
        delete &AttributeList::of(*attributes);
    }
}

void releaseList(_Container * children) noexcept {
    if (children == nullptr || !ChildList::of(*children).letGo()) {
        return;
    }
    GrowingStack<Deletion, 32> open;
    if (ChildList::of(*children).ownsItems()) {
        // There is always room for the first.
        static_cast<void>(open.push({&ChildList::of(*children), 0, nullptr}));
    } else {
        delete &ChildList::of(*children);
    }
    while (!open.isEmpty()) {
        Deletion & deletion = open.top();
        if (deletion.next < deletion.list->get_count()) {
            _Object * const item = deletion.list->take(deletion.next++);
            if (item == nullptr) {
                continue;
            }
            if (isExactly<DOM::_XMLElement>(*item)) {
                auto * const element = static_cast<DOM::_XMLElement *>(item);
                releaseList(NodeAccess::takeAttributes(*element));
                _Container * const list = NodeAccess::children(*element);
                // Where the stack can't grow, the element's destructor goes down one level instead.
                if (list != nullptr && ChildList::of(*list).isAlone() && ChildList::of(*list).ownsItems()
                    && open.push({&ChildList::of(*list), 0, element})) {
                    continue;
                }
            }
            delete item;
        } else {
            Deletion const done = deletion;
            open.pop();
            if (done.owner == nullptr) {
                delete done.list;
                continue;
            }
            NodeAccess::takeChildren(*done.owner);
            if (done.list->letGo()) {
                delete done.list;
            }
            delete done.owner;
        }
    }
}

} // namespace morvane

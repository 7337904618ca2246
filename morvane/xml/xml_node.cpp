#include <morvane/xml/xml_node.h>

#include <morvane/platform/process_heap.h>
#include <morvane/xml/node_access.h>

namespace {

/// A text that was given by value, moved into its field. A released one counts as empty text.
void moveInto(_WideString & field, _WideString & text) {
    if (text.get_data() != nullptr) {
        field = std::move(text);
    } else {
        field = text;
    }
}

} // namespace

DOM::_XMLNode::_XMLNode(NodeType type) : nodeType(static_cast<unsigned short int>(type)) {}

DOM::_XMLNode::_XMLNode(_XMLNode const & other)
    : _Object(other), documentNode(other.documentNode), parentNode(other.parentNode), nodeName(other.nodeName),
      nodeValue(other.nodeValue), nodeType(other.nodeType) {}

DOM::_XMLNode::~_XMLNode() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the texts carry it.
DOM::_XMLNode & DOM::_XMLNode::operator=(_XMLNode const & other) {
    documentNode = other.documentNode;
    parentNode = other.parentNode;
    nodeName = other.nodeName;
    nodeValue = other.nodeValue;
    nodeType = other.nodeType;
    return *this;
}

_WideString DOM::_XMLNode::get_nodeName() const {
    return nodeName;
}

void DOM::_XMLNode::set_nodeName(_WideString name) {
    moveInto(nodeName, name);
}

_WideString DOM::_XMLNode::get_nodeValue() const {
    return nodeValue;
}

void DOM::_XMLNode::set_nodeValue(_WideString value) {
    moveInto(nodeValue, value);
}

unsigned short int DOM::_XMLNode::get_nodeType() const {
    return nodeType;
}

DOM::_XMLNode * DOM::_XMLNode::get_parentNode() const {
    return parentNode;
}

void DOM::_XMLNode::set_parentNode(_XMLNode * parent) {
    parentNode = parent;
}

DOM::_XMLDocument * DOM::_XMLNode::get_documentNode() const {
    return documentNode;
}

void DOM::_XMLNode::set_documentNode(_XMLDocument * document) {
    documentNode = document;
}

_WideString DOM::_XMLNode::toFormatString() {
    return toString(0);
}

void * DOM::_XMLNode::operator new(std::size_t bytes) {
    void * const block = morvane::platform::heapAllocate(bytes, false);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void * DOM::_XMLNode::operator new(std::size_t bytes, std::nothrow_t const &) noexcept {
    return morvane::platform::heapAllocate(bytes, false);
}

void * DOM::_XMLNode::operator new(std::size_t bytes, std::align_val_t alignment) {
    return ::operator new(bytes, alignment);
}

void * DOM::_XMLNode::operator new(std::size_t, void * place) noexcept {
    return place;
}

void DOM::_XMLNode::operator delete(void * block) noexcept {
    morvane::platform::heapFree(block);
}

void DOM::_XMLNode::operator delete(void * block, std::nothrow_t const &) noexcept {
    morvane::platform::heapFree(block);
}

void DOM::_XMLNode::operator delete(void * block, std::align_val_t alignment) noexcept {
    ::operator delete(block, alignment);
}

void DOM::_XMLNode::operator delete(void *, void *) noexcept {}

void DOM::_XMLNode::set_nodeType(unsigned short int type) {
    nodeType = type;
}

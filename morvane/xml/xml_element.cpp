#include <morvane/xml/xml_element.h>

#include <morvane/strings/text_view.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/tree_printer.h>
#include <utility>

using morvane::NodeAccess;

DOM::_XMLElement::_XMLElement() : _XMLNode(ELEMENT_NODE) {}

DOM::_XMLElement::_XMLElement(_XMLElement const & other) : _XMLNode(other) {
    // Both are made before one is shared, so that nothing is left behind where one can't be made.
    morvane::makeList(other.childElements);
    attributes = morvane::shareList(other.attributes);
    childElements = morvane::shareList(other.childElements);
}

DOM::_XMLElement::~_XMLElement() {
    morvane::releaseList(std::exchange(attributes, nullptr));
    morvane::releaseList(std::exchange(childElements, nullptr));
    // A node derived elsewhere may have asked its dying parent for a list.
    morvane::releaseList(attributes);
    morvane::releaseList(childElements);
}

DOM::_XMLElement & DOM::_XMLElement::operator=(_XMLElement const & other) {
    if (this != &other) {
        // The other's lists first: letting go of the own may delete the other.
        _XMLNode::operator=(other);
        morvane::makeList(other.childElements);
        _XMLNamedNodeMap * const map = morvane::shareList(other.attributes);
        _Container * const children = morvane::shareList(other.childElements);
        morvane::releaseList(std::exchange(attributes, map));
        morvane::releaseList(std::exchange(childElements, children));
    }
    return *this;
}

_Container * DOM::_XMLElement::get_childElements() const {
    return &morvane::makeList(childElements);
}

DOM::_XMLNamedNodeMap * DOM::_XMLElement::get_attributes() const {
    return &morvane::makeList(attributes);
}

DOM::_XMLNode * DOM::_XMLElement::addChildNode(_XMLNode const * node) {
    if (node == nullptr) {
        return nullptr;
    }
    // Linking hands the node over, so that it is the element's to change.
    auto * const child = const_cast<_XMLNode *>(node);
    child->set_parentNode(this);
    morvane::makeList(childElements).addObject(child);
    return child;
}

DOM::_XMLText * DOM::_XMLElement::addText(unsigned short int const * text) {
    return NodeAccess::link(
        *this, NodeAccess::make<_XMLText>(get_documentNode(), this, {.name = {}, .value = morvane::viewOf(text)}));
}

DOM::_XMLComment * DOM::_XMLElement::addComment(unsigned short int const * text) {
    return NodeAccess::link(
        *this, NodeAccess::make<_XMLComment>(get_documentNode(), this, {.name = {}, .value = morvane::viewOf(text)}));
}

DOM::_XMLCDATASection * DOM::_XMLElement::addCDATASection(unsigned short int const * text) {
    return NodeAccess::link(*this, NodeAccess::make<_XMLCDATASection>(get_documentNode(), this,
                                                                      {.name = {}, .value = morvane::viewOf(text)}));
}

DOM::_XMLElement * DOM::_XMLElement::addElement(unsigned short int const * name, unsigned short int const * value) {
    auto element =
        NodeAccess::make<_XMLElement>(get_documentNode(), this, {.name = morvane::viewOf(name), .value = {}});
    if (value != nullptr && *value != 0) {
        element->addText(value);
    }
    return NodeAccess::link(*this, std::move(element));
}

DOM::_XMLNode * DOM::_XMLElement::firstChild() const {
    return getNode(0);
}

DOM::_XMLNode * DOM::_XMLElement::getNode(std::uint32_t index) const {
    return morvane::itemOf<_XMLNode>(childElements, index);
}

std::uint32_t DOM::_XMLElement::getNodeCount() const {
    return morvane::countOf(childElements);
}

bool DOM::_XMLElement::hasChildNodes() const {
    return getNodeCount() != 0;
}

DOM::_XMLAttribute * DOM::_XMLElement::getAttribute(std::uint32_t index) const {
    return morvane::itemOf<_XMLAttribute>(attributes, index);
}

std::uint32_t DOM::_XMLElement::getAttributeCount() const {
    return morvane::countOf(attributes);
}

DOM::_XMLAttribute * DOM::_XMLElement::getAttributeNamed(unsigned short int const * name) const {
    return attributes == nullptr ? nullptr : static_cast<_XMLAttribute *>(attributes->getNodeNamed(name));
}

DOM::_XMLAttribute * DOM::_XMLElement::setAttributeNamed(unsigned short int const * name,
                                                         unsigned short int const * value) {
    _XMLAttribute * const attribute = getAttributeNamed(name);
    if (attribute == nullptr) {
        return addAttribute(name, value);
    }
    attribute->set_nodeValue(value);
    return attribute;
}

bool DOM::_XMLElement::hasText() const {
    if (getNodeCount() != 1) {
        return false;
    }
    _XMLNode const * const child = getNode(0);
    return child != nullptr && child->get_nodeType() == TEXT_NODE;
}

bool DOM::_XMLElement::hasTextEmpty() const {
    return hasText() && NodeAccess::value(*getNode(0)).isEmpty();
}

DOM::_XMLAttribute * DOM::_XMLElement::getNameSpace() const {
    return nullptr;
}

DOM::_XMLAttribute * DOM::_XMLElement::setNameSpace(unsigned short int const *, unsigned short int const *,
                                                    unsigned short int const *) {
    return nullptr;
}

_WideString DOM::_XMLElement::toString(std::int32_t level) {
    morvane::TreePrinter printer;
    printer.printElement(*this, level);
    return printer.take();
}

DOM::_XMLAttribute * DOM::_XMLElement::addAttribute(unsigned short int const * name, unsigned short int const * value) {
    return NodeAccess::link(
        *this, NodeAccess::make<_XMLAttribute>(get_documentNode(), this,
                                               {.name = morvane::viewOf(name), .value = morvane::viewOf(value)}));
}

DOM::_XMLAttribute * DOM::_XMLElement::addAttributeNode(_XMLAttribute const * attribute) {
    if (attribute == nullptr) {
        return nullptr;
    }
    auto * const node = const_cast<_XMLAttribute *>(attribute);
    morvane::makeList(attributes).addObject(node);
    return node;
}

DOM::_XMLElement::_XMLElement(morvane::NodeTexts const & texts) : _XMLNode(ELEMENT_NODE, texts) {}

void DOM::_XMLElement::set_childElements(_Container * children) {
    childElements = children;
}

void DOM::_XMLElement::set_attributes(_XMLNamedNodeMap * map) {
    attributes = map;
}

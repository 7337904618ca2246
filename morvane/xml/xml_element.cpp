#include <morvane/xml/xml_element.h>

#include <morvane/strings/text_view.h>
#include <morvane/xml/folded_name.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/tree_printer.h>
#include <utility>

using morvane::attributesOf;
using morvane::childrenOf;
using morvane::NodeAccess;

namespace {

/// Makes `element`, which holds nothing, share the lists of `other`.
void shareItems(DOM::_XMLElement & element, DOM::_XMLElement const & other) {
    // Both are made before one is shared, so that nothing is left behind where one can't be made.
    morvane::ChildList & children = childrenOf(other).list();
    morvane::AttributeList & attributes = attributesOf(other).list();
    childrenOf(element).share(children);
    attributesOf(element).share(attributes);
}

} // namespace

DOM::_XMLElement::_XMLElement() : _XMLNode(ELEMENT_NODE) {}

DOM::_XMLElement::_XMLElement(_XMLElement const & other) : _XMLNode(other) {
    shareItems(*this, other);
}

DOM::_XMLElement::~_XMLElement() {
    morvane::releaseItems(*this);
}

DOM::_XMLElement & DOM::_XMLElement::operator=(_XMLElement const & other) {
    if (this != &other) {
        // Letting go of the own lists may delete the other element.
        _XMLElement const kept(other);
        _XMLNode::operator=(other);
        morvane::releaseItems(*this);
        shareItems(*this, kept);
    }
    return *this;
}

_Container * DOM::_XMLElement::get_childElements() const {
    return &childrenOf(*this).list();
}

DOM::_XMLNamedNodeMap * DOM::_XMLElement::get_attributes() const {
    return &attributesOf(*this).list();
}

DOM::_XMLNode * DOM::_XMLElement::addChildNode(_XMLNode const * node) {
    if (node == nullptr) {
        return nullptr;
    }
    // Linking hands the node over, so that it is the element's to change.
    auto * const child = const_cast<_XMLNode *>(node);
    child->set_parentNode(this);
    childrenOf(*this).add(child);
    return child;
}

DOM::_XMLText * DOM::_XMLElement::addText(unsigned short int const * text) {
    return morvane::link(childrenOf(*this), NodeAccess::make<_XMLText>(get_documentNode(), this,
                                                                       {.name = {}, .value = morvane::viewOf(text)}));
}

DOM::_XMLComment * DOM::_XMLElement::addComment(unsigned short int const * text) {
    return morvane::link(
        childrenOf(*this),
        NodeAccess::make<_XMLComment>(get_documentNode(), this, {.name = {}, .value = morvane::viewOf(text)}));
}

DOM::_XMLCDATASection * DOM::_XMLElement::addCDATASection(unsigned short int const * text) {
    return morvane::link(
        childrenOf(*this),
        NodeAccess::make<_XMLCDATASection>(get_documentNode(), this, {.name = {}, .value = morvane::viewOf(text)}));
}

DOM::_XMLElement * DOM::_XMLElement::addElement(unsigned short int const * name, unsigned short int const * value) {
    auto element =
        NodeAccess::make<_XMLElement>(get_documentNode(), this, {.name = morvane::viewOf(name), .value = {}});
    if (value != nullptr && *value != 0) {
        element->addText(value);
    }
    return morvane::link(childrenOf(*this), std::move(element));
}

DOM::_XMLNode * DOM::_XMLElement::firstChild() const {
    return getNode(0);
}

DOM::_XMLNode * DOM::_XMLElement::getNode(std::uint32_t index) const {
    return childrenOf(*this).at(index);
}

std::uint32_t DOM::_XMLElement::getNodeCount() const {
    return childrenOf(*this).count();
}

bool DOM::_XMLElement::hasChildNodes() const {
    return getNodeCount() != 0;
}

DOM::_XMLAttribute * DOM::_XMLElement::getAttribute(std::uint32_t index) const {
    return static_cast<_XMLAttribute *>(attributesOf(*this).at(index));
}

std::uint32_t DOM::_XMLElement::getAttributeCount() const {
    return attributesOf(*this).count();
}

DOM::_XMLAttribute * DOM::_XMLElement::getAttributeNamed(unsigned short int const * name) const {
    return morvane::findAttribute(attributesOf(*this), morvane::viewOf(name));
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
    return morvane::link(attributesOf(*this), NodeAccess::make<_XMLAttribute>(
                                                  get_documentNode(), this,
                                                  {.name = morvane::viewOf(name), .value = morvane::viewOf(value)}));
}

DOM::_XMLAttribute * DOM::_XMLElement::addAttributeNode(_XMLAttribute const * attribute) {
    if (attribute == nullptr) {
        return nullptr;
    }
    auto * const node = const_cast<_XMLAttribute *>(attribute);
    attributesOf(*this).add(node);
    return node;
}

void DOM::_XMLElement::set_childElements(_Container * container) {
    NodeAccess::childHolding(*this) = morvane::Holding::list;
    childElements = container;
}

void DOM::_XMLElement::set_attributes(_XMLNamedNodeMap * map) {
    NodeAccess::attributeHolding(*this) = morvane::Holding::list;
    attributes = static_cast<void *>(map);
}

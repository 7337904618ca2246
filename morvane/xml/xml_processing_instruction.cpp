#include <morvane/xml/xml_processing_instruction.h>

#include <morvane/strings/text_view.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/tree_printer.h>
#include <utility>

using morvane::NodeAccess;

DOM::_XMLProcessingInstruction::_XMLProcessingInstruction() : _XMLNode(PROCESSING_INSTRUCTION_NODE) {}

DOM::_XMLProcessingInstruction::_XMLProcessingInstruction(_XMLProcessingInstruction const & other) : _XMLNode(other) {
    attributes = other.get_attributes();
    morvane::AttributeList::of(*attributes).share();
}

DOM::_XMLProcessingInstruction::~_XMLProcessingInstruction() {
    // A node derived elsewhere may have its dying parent make a map anew.
    while (attributes != nullptr) {
        morvane::releaseAttributes(std::exchange(attributes, nullptr));
    }
}

DOM::_XMLProcessingInstruction & DOM::_XMLProcessingInstruction::operator=(_XMLProcessingInstruction const & other) {
    if (this != &other) {
        _XMLProcessingInstruction kept(other);
        _XMLNode::operator=(other);
        std::swap(attributes, kept.attributes);
    }
    return *this;
}

DOM::_XMLNamedNodeMap * DOM::_XMLProcessingInstruction::get_attributes() const {
    if (attributes == nullptr) {
        attributes = new morvane::AttributeList;
    }
    return attributes;
}

DOM::_XMLAttribute * DOM::_XMLProcessingInstruction::getAttribute(unsigned short int const * name) const {
    return attributes == nullptr ? nullptr : static_cast<_XMLAttribute *>(attributes->getNodeNamed(name));
}

DOM::_XMLAttribute * DOM::_XMLProcessingInstruction::setAttribute(unsigned short int const * name,
                                                                  unsigned short int const * value, bool create) {
    _XMLAttribute * const found = getAttribute(name);
    if (found != nullptr) {
        found->set_nodeValue(value);
    } else if (create) {
        NodeAccess::link(
            *this, NodeAccess::make<_XMLAttribute>(get_documentNode(), this,
                                                   {.name = morvane::viewOf(name), .value = morvane::viewOf(value)}));
    }
    // The result names the attribute that was there before the call, not the one made.
    return found;
}

_WideString DOM::_XMLProcessingInstruction::toString(std::int32_t) {
    morvane::TreePrinter printer;
    printer.printProcessingInstruction(*this);
    return printer.take();
}

DOM::_XMLProcessingInstruction::_XMLProcessingInstruction(morvane::NodeTexts const & texts)
    : _XMLNode(PROCESSING_INSTRUCTION_NODE, texts) {}

void DOM::_XMLProcessingInstruction::set_attributes(_XMLNamedNodeMap * map) {
    attributes = map;
}

#include <morvane/xml/xml_processing_instruction.h>

#include <morvane/strings/text_view.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/tree_printer.h>

using morvane::attributesOf;
using morvane::NodeAccess;

DOM::_XMLProcessingInstruction::_XMLProcessingInstruction() : _XMLNode(PROCESSING_INSTRUCTION_NODE) {}

DOM::_XMLProcessingInstruction::_XMLProcessingInstruction(_XMLProcessingInstruction const & other) : _XMLNode(other) {
    attributesOf(*this).share(attributesOf(other).list());
}

DOM::_XMLProcessingInstruction::~_XMLProcessingInstruction() {
    // A node derived elsewhere may have its dying parent make a map anew.
    while (!attributesOf(*this).isNothing()) {
        morvane::releaseAttributes(attributesOf(*this));
    }
}

DOM::_XMLProcessingInstruction & DOM::_XMLProcessingInstruction::operator=(_XMLProcessingInstruction const & other) {
    if (this != &other) {
        // Letting go of the own map may delete the other node.
        _XMLProcessingInstruction const kept(other);
        _XMLNode::operator=(other);
        while (!attributesOf(*this).isNothing()) {
            morvane::releaseAttributes(attributesOf(*this));
        }
        attributesOf(*this).share(attributesOf(kept).list());
    }
    return *this;
}

DOM::_XMLNamedNodeMap * DOM::_XMLProcessingInstruction::get_attributes() const {
    return &attributesOf(*this).list();
}

DOM::_XMLAttribute * DOM::_XMLProcessingInstruction::getAttribute(unsigned short int const * name) const {
    return morvane::findAttribute(attributesOf(*this), morvane::viewOf(name));
}

DOM::_XMLAttribute * DOM::_XMLProcessingInstruction::setAttribute(unsigned short int const * name,
                                                                  unsigned short int const * value, bool create) {
    _XMLAttribute * const found = getAttribute(name);
    if (found != nullptr) {
        found->set_nodeValue(value);
    } else if (create) {
        morvane::link(attributesOf(*this),
                      NodeAccess::make<_XMLAttribute>(
                          get_documentNode(), this, {.name = morvane::viewOf(name), .value = morvane::viewOf(value)}));
    }
    // The result names the attribute that was there before the call, not the one made.
    return found;
}

_WideString DOM::_XMLProcessingInstruction::toString(std::int32_t) {
    morvane::TreePrinter printer;
    printer.printProcessingInstruction(*this);
    return printer.take();
}

void DOM::_XMLProcessingInstruction::set_attributes(_XMLNamedNodeMap * map) {
    NodeAccess::attributeHolding(*this) = morvane::Holding::list;
    attributes = static_cast<void *>(map);
}

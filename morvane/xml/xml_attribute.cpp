#include <morvane/xml/xml_attribute.h>

#include <morvane/xml/node_access.h>
#include <morvane/xml/tree_printer.h>

DOM::_XMLAttribute::_XMLAttribute() : _XMLNode(ATTRIBUTE_NODE) {}

DOM::_XMLAttribute::_XMLAttribute(_XMLAttribute const & other) = default;

DOM::_XMLAttribute::~_XMLAttribute() = default;

DOM::_XMLAttribute & DOM::_XMLAttribute::operator=(_XMLAttribute const & other) = default;

_WideString DOM::_XMLAttribute::toString(std::int32_t) {
    morvane::TreePrinter printer;
    printer.printAttribute(*this);
    return printer.take();
}

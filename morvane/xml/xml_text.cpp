#include <morvane/xml/xml_text.h>

#include <morvane/xml/node_access.h>

DOM::_XMLText::_XMLText() : _XMLNode(TEXT_NODE) {}

DOM::_XMLText::_XMLText(_XMLText const & other) = default;

DOM::_XMLText::~_XMLText() = default;

DOM::_XMLText & DOM::_XMLText::operator=(_XMLText const & other) = default;

_WideString DOM::_XMLText::toString(std::int32_t) {
    return get_nodeValue();
}

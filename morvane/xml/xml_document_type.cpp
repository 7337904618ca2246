#include <morvane/xml/xml_document_type.h>

DOM::_XMLDocumentType::_XMLDocumentType() : _XMLNode(DOCUMENT_TYPE_NODE) {}

DOM::_XMLDocumentType::_XMLDocumentType(_XMLDocumentType const & other) = default;

DOM::_XMLDocumentType::~_XMLDocumentType() = default;

DOM::_XMLDocumentType & DOM::_XMLDocumentType::operator=(_XMLDocumentType const & other) = default;

_WideString DOM::_XMLDocumentType::toString(std::int32_t) {
    return _WideString();
}

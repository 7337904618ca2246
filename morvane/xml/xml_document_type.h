// A document type declaration.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

/// A node for a document type. Reading a document makes none, and none is printed.
class MORVANE_EXPORT DOM::_XMLDocumentType : public DOM::_XMLNode {
public:
    _XMLDocumentType();
    _XMLDocumentType(_XMLDocumentType const & other);
    ~_XMLDocumentType() override;

    _XMLDocumentType & operator=(_XMLDocumentType const & other);

    /// Empty text.
    _WideString toString(std::int32_t level) override;
};

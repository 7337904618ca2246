// An attribute of an element or processing instruction.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

/// A name and a value. It stands in the node map of its element or processing instruction, not among the children.
class MORVANE_EXPORT DOM::_XMLAttribute : public DOM::_XMLNode {
public:
    _XMLAttribute();
    _XMLAttribute(_XMLAttribute const & other);
    ~_XMLAttribute() override;

    _XMLAttribute & operator=(_XMLAttribute const & other);

    /// The name, "=", and the value between double quotes; `level` is not read.
    _WideString toString(std::int32_t level) override;

private:
    friend struct morvane::NodeAccess;

    explicit _XMLAttribute(morvane::NodeParts const & parts) noexcept;
};

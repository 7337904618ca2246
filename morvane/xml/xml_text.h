// The text inside an element.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

/// Text between two tags, blanks and line breaks included.
class MORVANE_EXPORT DOM::_XMLText : public DOM::_XMLNode {
public:
    _XMLText();
    _XMLText(_XMLText const & other);
    ~_XMLText() override;

    _XMLText & operator=(_XMLText const & other);

    /// The bare value; `level` is not read.
    _WideString toString(std::int32_t level) override;

private:
    friend struct morvane::NodeAccess;

    explicit _XMLText(morvane::NodeParts const & parts) noexcept;
};

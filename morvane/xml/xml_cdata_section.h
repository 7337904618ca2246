// A CDATA section.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

/// Text between "<![CDATA[" and "]]>". It is no `_XMLText`.
class MORVANE_EXPORT DOM::_XMLCDATASection : public DOM::_XMLNode {
public:
    _XMLCDATASection();
    _XMLCDATASection(_XMLCDATASection const & other);
    ~_XMLCDATASection() override;

    _XMLCDATASection & operator=(_XMLCDATASection const & other);

    /// The section on a line of its own, indented by `level` steps.
    _WideString toString(std::int32_t level) override;

private:
    friend struct morvane::NodeAccess;

    explicit _XMLCDATASection(morvane::NodeParts const & parts) noexcept;
};

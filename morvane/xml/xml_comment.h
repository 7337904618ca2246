// A comment.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

/// Text between "<!--" and "-->".
class MORVANE_EXPORT DOM::_XMLComment : public DOM::_XMLNode {
public:
    _XMLComment();
    _XMLComment(_XMLComment const & other);
    ~_XMLComment() override;

    _XMLComment & operator=(_XMLComment const & other);

    /// The comment on a line of its own, indented by `level` steps.
    _WideString toString(std::int32_t level) override;

private:
    friend struct morvane::NodeAccess;

    explicit _XMLComment(morvane::NodeParts const & parts) noexcept;
};

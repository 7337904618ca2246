#include <morvane/xml/xml_comment.h>

#include <morvane/xml/node_access.h>
#include <morvane/xml/tree_printer.h>

DOM::_XMLComment::_XMLComment() : _XMLNode(COMMENT_NODE) {}

DOM::_XMLComment::_XMLComment(_XMLComment const & other) = default;

DOM::_XMLComment::~_XMLComment() = default;

DOM::_XMLComment & DOM::_XMLComment::operator=(_XMLComment const & other) = default;

_WideString DOM::_XMLComment::toString(std::int32_t level) {
    morvane::TreePrinter printer;
    printer.printComment(*this, level);
    return printer.take();
}

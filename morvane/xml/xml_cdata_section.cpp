#include <morvane/xml/xml_cdata_section.h>

#include <morvane/xml/node_access.h>
#include <morvane/xml/tree_printer.h>

DOM::_XMLCDATASection::_XMLCDATASection() : _XMLNode(CDATA_SECTION_NODE) {}

DOM::_XMLCDATASection::_XMLCDATASection(_XMLCDATASection const & other) = default;

DOM::_XMLCDATASection::~_XMLCDATASection() = default;

DOM::_XMLCDATASection & DOM::_XMLCDATASection::operator=(_XMLCDATASection const & other) = default;

_WideString DOM::_XMLCDATASection::toString(std::int32_t level) {
    morvane::TreePrinter printer;
    printer.printCDATASection(*this, level);
    return printer.take();
}

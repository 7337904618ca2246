#include <morvane/xml/xml_named_node_map.h>

#include <morvane/xml/folded_name.h>
#include <morvane/xml/node_access.h>

DOM::_XMLNamedNodeMap::_XMLNamedNodeMap() = default;

DOM::_XMLNamedNodeMap::_XMLNamedNodeMap(_XMLNamedNodeMap const & other) = default;

DOM::_XMLNamedNodeMap::~_XMLNamedNodeMap() = default;

DOM::_XMLNamedNodeMap & DOM::_XMLNamedNodeMap::operator=(_XMLNamedNodeMap const & other) = default;

DOM::_XMLNode * DOM::_XMLNamedNodeMap::getNamedNode(std::uint32_t index) const {
    return static_cast<_XMLNode *>(getObject(index));
}

std::uint32_t DOM::_XMLNamedNodeMap::getNamedNodeCount() const {
    return get_count();
}

DOM::_XMLNode * DOM::_XMLNamedNodeMap::getNodeNamed(unsigned short int const * name) const {
    morvane::WideView const sought = morvane::viewOf(name);
    for (std::uint32_t index = 0; index < get_count(); ++index) {
        _XMLNode * const node = getNamedNode(index);
        if (node != nullptr && morvane::equalsFolded(morvane::NodeAccess::name(*node), sought)) {
            return node;
        }
    }
    return nullptr;
}

DOM::_XMLNode * DOM::_XMLNamedNodeMap::setNodeNamed(unsigned short int const * name, unsigned short int const * value) {
    _XMLNode * const node = getNodeNamed(name);
    if (node != nullptr) {
        node->set_nodeValue(value);
    }
    return node;
}

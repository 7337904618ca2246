#include "xml_peer.h"

#include <morvane/morvane.h>
#include <vector>

namespace {

XmlShape shapeOfTree(DOM::_XMLDocument * document) {
    XmlShape shape;
    std::vector<_Container *> pending{document->get_childNodes()};
    while (!pending.empty()) {
        _Container const * nodes = pending.back();
        pending.pop_back();
        for (std::uint32_t index = 0; index < nodes->get_count(); ++index) {
            auto * node = static_cast<DOM::_XMLNode *>(nodes->getObject(index));
            if (node->get_nodeType() == DOM::ELEMENT_NODE) {
                auto * element = static_cast<DOM::_XMLElement *>(node);
                ++shape.elements;
                shape.attributes += element->getAttributeCount();
                pending.push_back(element->get_childElements());
            } else if (node->get_nodeType() == DOM::TEXT_NODE) {
                ++shape.texts;
                shape.textUnits += node->get_nodeValue().get_length();
            }
        }
    }
    return shape;
}

} // namespace

XmlPeer const morvanePeer{
    "Morvane",
    [](char const * bytes, std::size_t size) -> void * {
        auto * document = new DOM::_XMLDocument;
        _WideString error;
        _WideString text;
        DOM::XMLCharset charset = DOM::charsetUTF8;
        if (DOM::_XMLDocument::loadStringFromBinary(reinterpret_cast<unsigned char const *>(bytes),
                                                    static_cast<std::int32_t>(size), error, charset, text)
            && document->loadFromString(text, error)) {
            return document;
        }
        delete document;
        return nullptr;
    },
    [](void * tree) { delete static_cast<DOM::_XMLDocument *>(tree); },
    [](void * tree) {
        XmlShape const shape = shapeOfTree(static_cast<DOM::_XMLDocument *>(tree));
        return shape.elements + shape.attributes + shape.texts;
    },
    [](void * tree) -> std::size_t { return static_cast<DOM::_XMLDocument *>(tree)->toFormatString().get_length(); },
    [](void * tree, char const * path) {
        _WideString error;
        _WideString const name(path);
        return static_cast<DOM::_XMLDocument *>(tree)->saveToFile(name, error);
    }};

XmlShape shapeOf(std::string const & text) {
    void * const tree = morvanePeer.load(text.data(), text.size());
    XmlShape const shape = tree != nullptr ? shapeOfTree(static_cast<DOM::_XMLDocument *>(tree)) : XmlShape{};
    morvanePeer.destroy(tree);
    return shape;
}

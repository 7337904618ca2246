// How the parts of the document model reach into its nodes.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/xml_attribute.h>
#include <morvane/xml/xml_cdata_section.h>
#include <morvane/xml/xml_comment.h>
#include <morvane/xml/xml_document.h>
#include <morvane/xml/xml_element.h>
#include <morvane/xml/xml_node.h>
#include <morvane/xml/xml_processing_instruction.h>
#include <morvane/xml/xml_text.h>
#include <typeinfo>
#include <utility>

namespace morvane {

/// The name and value that a node is born with.
struct NodeTexts {
    WideView name;
    WideView value;
};

/// The fields of the nodes, for the reader, the printer and the node classes themselves.
struct NodeAccess {
    using Node = DOM::_XMLNode;

    static _WideString const & name(Node const & node) noexcept { return node.nodeName; }
    static _WideString const & value(Node const & node) noexcept { return node.nodeValue; }
    static _WideString & value(Node & node) noexcept { return node.nodeValue; }
    static DOM::_XMLDocument * document(Node const & node) noexcept { return node.documentNode; }
    static std::uint32_t type(Node const & node) noexcept { return node.nodeType; }
    /// Null where there was none yet.
    static DOM::_XMLNamedNodeMap * attributes(DOM::_XMLProcessingInstruction const & node) noexcept {
        return node.attributes;
    }
    static _WideString const & lineSpace(DOM::_XMLDocument const & document) noexcept { return document.lineSpace_; }
    static _WideString const & lineTermination(DOM::_XMLDocument const & document) noexcept {
        return document.lineTermination_;
    }

    /// Makes a node of `document`, which may be null, that notes `parent`; the texts are written once, at exact size.
    template <typename Class>
    static std::unique_ptr<Class> make(DOM::_XMLDocument * document, Node * parent, NodeTexts const & texts = {}) {
        std::unique_ptr<Class> node(new Class(texts));
        node->documentNode = document;
        node->parentNode = parent;
        return node;
    }

    /// Hand a node over to a parent, behind what it holds.
    template <typename Class>
    static Class * link(DOM::_XMLElement & parent, std::unique_ptr<Class> node) {
        parent.addChildNode(node.get());
        return node.release();
    }
    static DOM::_XMLAttribute * link(DOM::_XMLElement & parent, std::unique_ptr<DOM::_XMLAttribute> attribute) {
        parent.addAttributeNode(attribute.get());
        return attribute.release();
    }
    static DOM::_XMLAttribute * link(DOM::_XMLProcessingInstruction & parent,
                                     std::unique_ptr<DOM::_XMLAttribute> attribute) {
        addTo(*parent.get_attributes(), attribute.get());
        return attribute.release();
    }
    template <typename Class>
    static Class * link(DOM::_XMLDocument & parent, std::unique_ptr<Class> node) {
        parent.addChildNode(node.get());
        return node.release();
    }
};

/// True when the object is exactly a `Class` of this library, so that no derived class has a say in it.
template <typename Class>
bool isExactly(_Object const & object) noexcept {
    // The type of an exported class exists once; comparing the objects saves comparing the names.
    return &typeid(object) == &typeid(Class);
}

} // namespace morvane

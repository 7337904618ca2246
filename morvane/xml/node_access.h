// How the parts of the document model reach into its nodes.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <morvane/core/heap_batch.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>
#include <morvane/xml/xml_attribute.h>
#include <morvane/xml/xml_cdata_section.h>
#include <morvane/xml/xml_comment.h>
#include <morvane/xml/xml_document.h>
#include <morvane/xml/xml_element.h>
#include <morvane/xml/xml_node.h>
#include <morvane/xml/xml_processing_instruction.h>
#include <morvane/xml/xml_text.h>
#include <new>
#include <typeinfo>

namespace morvane {

/// The name and value that a node is born with.
struct NodeTexts {
    WideView name;
    WideView value;
};

/// What a node holds its children or attributes by: a list, which is null as long as there is no item, the item itself,
/// or a `NodeRow`.
enum class Holding : std::uint8_t { list, only, row };

/// What a node is made of: buffers of `globalProcessMemory`, zero-closed, that are its own from then on.
struct NodeParts {
    DOM::_XMLDocument * document;
    DOM::_XMLNode * parent;
    unsigned short int * name;
    std::uint32_t nameUnits;
    unsigned short int * value;
    std::uint32_t valueUnits;
};

/// The fields of the nodes, for the reader, the printer and the node classes themselves.
struct NodeAccess {
    using Node = DOM::_XMLNode;

    static _WideString const & name(Node const & node) noexcept { return node.nodeName; }
    static _WideString const & value(Node const & node) noexcept { return node.nodeValue; }
    static DOM::_XMLDocument * document(Node const & node) noexcept { return node.documentNode; }
    static std::uint32_t type(Node const & node) noexcept { return node.nodeType; }
    static void setParent(Node & node, Node * parent) noexcept { node.parentNode = parent; }

    /// Makes a node of `document`, which may be null, that notes `parent`; the texts are written once, at exact size.
    /// Throws `std::bad_alloc` where the heap refuses: a node without its text would be data lost.
    template <typename Class>
    static std::unique_ptr<Class> make(DOM::_XMLDocument * document, Node * parent, NodeTexts const & texts = {}) {
        HeapBatch batch;
        return make<Class>(batch, document, parent, texts);
    }
    template <typename Class>
    static std::unique_ptr<Class> make(HeapBatch & batch, DOM::_XMLDocument * document, Node * parent,
                                       NodeTexts const & texts) {
        constexpr std::size_t unitBytes = sizeof(unsigned short int);
        HeapBatch::Blocks const blocks =
            batch.take(sizeof(Class), (texts.name.length + 1) * unitBytes, (texts.value.length + 1) * unitBytes);
        if (blocks.object == nullptr) [[unlikely]] {
            throw std::bad_alloc();
        }
        return std::unique_ptr<Class>(::new (blocks.object)
                                          Class({.document = document,
                                                 .parent = parent,
                                                 .name = fill(blocks.first, texts.name),
                                                 .nameUnits = static_cast<std::uint32_t>(texts.name.length),
                                                 .value = fill(blocks.second, texts.value),
                                                 .valueUnits = static_cast<std::uint32_t>(texts.value.length)}));
    }

    /// Deletes a node that is exactly a `Class` and holds no children and attributes.
    template <typename Class>
    static void destroy(HeapBatch & batch, Class & node) noexcept {
        void * const name = node.nodeName.get_data();
        void * const value = node.nodeValue.get_data();
        if (name == nullptr || value == nullptr) [[unlikely]] {
            batch.settle();
            delete &node;
        } else {
            // Nothing is left to its destructor but what goes here.
            batch.giveBack(&node, name, value);
        }
    }

    /// The holdings of an element or instruction.
    static Holding & childHolding(Node const & node) noexcept { return node.childHolding; }
    static Holding & attributeHolding(Node const & node) noexcept { return node.attributeHolding; }
    static void *& children(DOM::_XMLElement const & element) noexcept { return element.childElements; }
    template <typename Owner>
    static void *& attributes(Owner const & owner) noexcept {
        return owner.attributes;
    }

    static _WideString const & lineSpace(DOM::_XMLDocument const & document) noexcept { return document.lineSpace_; }
    static _WideString const & lineTermination(DOM::_XMLDocument const & document) noexcept {
        return document.lineTermination_;
    }

    /// Hands a node over to the top of a document.
    template <typename Class>
    static Class * link(DOM::_XMLDocument & parent, std::unique_ptr<Class> node) {
        parent.addChildNode(node.get());
        return node.release();
    }

private:
    /// Copies a text, most of which are short, into its buffer.
    static unsigned short int * fill(void * buffer, WideView text) noexcept {
        std::size_t const bytes = text.length * sizeof(unsigned short int);
        char * const to = static_cast<char *>(buffer);
        char const * const from = reinterpret_cast<char const *>(text.data);
        if (bytes > 128) {
            std::memcpy(to, from, bytes);
        } else if (bytes >= 16) {
            for (std::size_t done = 0; done + 16 <= bytes; done += 16) {
                std::memcpy(to + done, from + done, 16);
            }
            std::memcpy(to + bytes - 16, from + bytes - 16, 16);
        } else if (bytes >= 8) {
            std::memcpy(to, from, 8);
            std::memcpy(to + bytes - 8, from + bytes - 8, 8);
        } else if (bytes >= 4) {
            std::memcpy(to, from, 4);
            std::memcpy(to + bytes - 4, from + bytes - 4, 4);
        } else if (bytes != 0) {
            std::memcpy(to, from, 2);
        }
        auto * const units = static_cast<unsigned short int *>(buffer);
        units[text.length] = 0;
        return units;
    }
};

/// True when the object is exactly a `Class` of this library, so that no derived class has a say in it.
template <typename Class>
bool isExactly(_Object const & object) noexcept {
    // The type of an exported class exists once; comparing the objects saves comparing the names.
    return &typeid(object) == &typeid(Class);
}

} // namespace morvane

// The constructors around what is there already, for whoever includes this header.

inline DOM::_XMLNode::_XMLNode(NodeType type, morvane::NodeParts const & parts) noexcept
    : documentNode(parts.document), parentNode(parts.parent),
      nodeName(morvane::TextMaker::make(parts.name, parts.nameUnits)),
      nodeValue(morvane::TextMaker::make(parts.value, parts.valueUnits)),
      nodeType(static_cast<unsigned short int>(type)) {}

inline DOM::_XMLAttribute::_XMLAttribute(morvane::NodeParts const & parts) noexcept : _XMLNode(ATTRIBUTE_NODE, parts) {}

inline DOM::_XMLCDATASection::_XMLCDATASection(morvane::NodeParts const & parts) noexcept
    : _XMLNode(CDATA_SECTION_NODE, parts) {}

inline DOM::_XMLComment::_XMLComment(morvane::NodeParts const & parts) noexcept : _XMLNode(COMMENT_NODE, parts) {}

inline DOM::_XMLElement::_XMLElement(morvane::NodeParts const & parts) noexcept : _XMLNode(ELEMENT_NODE, parts) {}

inline DOM::_XMLProcessingInstruction::_XMLProcessingInstruction(morvane::NodeParts const & parts) noexcept
    : _XMLNode(PROCESSING_INSTRUCTION_NODE, parts) {}

inline DOM::_XMLText::_XMLText(morvane::NodeParts const & parts) noexcept : _XMLNode(TEXT_NODE, parts) {}

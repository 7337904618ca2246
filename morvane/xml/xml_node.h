// The base of all nodes of a document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/strings/wide_string.h>
#include <morvane/xml/dom.h>
#include <new>

namespace morvane {
struct NodeAccess;
struct NodeParts;
enum class Holding : std::uint8_t;
} // namespace morvane

/// One node of a document tree: its kind, name and value, and the way up.
///
/// Cost: a node keeps two exact text buffers beside its own fields.
/// Ownership: a node that was linked belongs to the container that holds it and goes with that; until then it is the
/// caller's to delete. `documentNode` and `parentNode` keep nothing alive.
/// Errors: making a node throws `std::bad_alloc` where the heap refuses; nothing else is raised.
class MORVANE_EXPORT DOM::_XMLNode : public _Object {
public:
    /// Makes a node with empty texts, no parent and no document.
    explicit _XMLNode(NodeType type);
    /// Copies the texts, the kind and both pointers.
    _XMLNode(_XMLNode const & other);
    ~_XMLNode() override;

    _XMLNode & operator=(_XMLNode const & other);

    /// The name of an element or attribute, the target of a processing instruction; empty in other nodes.
    _WideString get_nodeName() const;
    void set_nodeName(_WideString name);
    /// The value of an attribute, the content of a text, CDATA section or comment; as a rule empty in other nodes.
    _WideString get_nodeValue() const;
    void set_nodeValue(_WideString value);
    /// The `NodeType`, fixed by the constructor.
    unsigned short int get_nodeType() const;
    /// The node that holds this one; null at the top of a document.
    _XMLNode * get_parentNode() const;
    void set_parentNode(_XMLNode * parent);
    /// The document that made this node, which gives it its line settings; null for a node made by hand.
    _XMLDocument * get_documentNode() const;
    void set_documentNode(_XMLDocument * document);

    /// The node as XML text, indented by `level` steps; a level below 1 gives no indentation. Nothing is escaped.
    virtual _WideString toString(std::int32_t level) = 0;
    /// The virtual `toString(0)`.
    _WideString toFormatString();

    // Nodes come from the process heap, uncounted; a derived class of another size does too.
    static void * operator new(std::size_t bytes);
    static void * operator new(std::size_t bytes, std::nothrow_t const & tag) noexcept;
    static void * operator new(std::size_t bytes, std::align_val_t alignment);
    static void * operator new(std::size_t bytes, void * place) noexcept;
    static void operator delete(void * block) noexcept;
    static void operator delete(void * block, std::nothrow_t const & tag) noexcept;
    static void operator delete(void * block, std::align_val_t alignment) noexcept;
    static void operator delete(void * block, void * place) noexcept;

protected:
    /// Makes a node around texts that are there already; for the library's own classes.
    _XMLNode(NodeType type, morvane::NodeParts const & parts) noexcept;

private:
    friend struct morvane::NodeAccess;

    void set_nodeType(unsigned short int type);

    _XMLDocument * documentNode = nullptr;
    _XMLNode * parentNode = nullptr;
    _WideString nodeName;
    _WideString nodeValue;
    unsigned short int nodeType;
    /// How an element or instruction holds its children and attributes; they stand here because they need no room here.
    mutable morvane::Holding childHolding{};
    mutable morvane::Holding attributeHolding{};
};

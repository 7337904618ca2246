// An element with its children and attributes.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

class _Container;

/// An element: a name, attributes in order, and children of every kind in order.
///
/// Cost: an only child or attribute takes no list, and those that were read stand in a plain row; one more, or asking
/// for the list, makes it. A look-up of an attribute compares the names one by one. Ownership: the element owns its two
/// lists, and they own what was linked into them. A copy shares both lists; they go with the last of the elements that
/// share them. Deleting an element deletes its attributes first and its children second, at any depth in constant
/// stack. Errors: a null text reads as empty; an index outside a list gives null.
class MORVANE_EXPORT DOM::_XMLElement : public DOM::_XMLNode {
public:
    _XMLElement();
    /// Copies the fields and shares the lists.
    _XMLElement(_XMLElement const & other);
    ~_XMLElement() override;

    /// Lets go of the own lists and shares those of `other`.
    _XMLElement & operator=(_XMLElement const & other);

    /// The children and the attributes; the lists stay where they are for the life of the element.
    _Container * get_childElements() const;
    _XMLNamedNodeMap * get_attributes() const;

    /// Takes `node` over as the last child, sets its parent and gives it back; null for null. Its document stays.
    _XMLNode * addChildNode(_XMLNode const * node);
    /// Makes a child that holds `text`, links it and gives it.
    _XMLText * addText(unsigned short int const * text);
    _XMLComment * addComment(unsigned short int const * text);
    _XMLCDATASection * addCDATASection(unsigned short int const * text);
    /// Makes a child element, with `value` as its text child unless that is null or empty, links it and gives it.
    _XMLElement * addElement(unsigned short int const * name, unsigned short int const * value);

    /// The first child, or the child at `index`; null if there is none.
    _XMLNode * firstChild() const;
    _XMLNode * getNode(std::uint32_t index) const;
    std::uint32_t getNodeCount() const;
    bool hasChildNodes() const;

    /// The attribute at `index`, or the first of that name in any case of A to Z; null if there is none.
    _XMLAttribute * getAttribute(std::uint32_t index) const;
    std::uint32_t getAttributeCount() const;
    _XMLAttribute * getAttributeNamed(unsigned short int const * name) const;
    /// Sets the value of the first attribute of that name, which keeps its name as it was written, or makes one; gives
    /// that attribute.
    _XMLAttribute * setAttributeNamed(unsigned short int const * name, unsigned short int const * value);

    /// True when the only child is a text; with `hasTextEmpty` one whose value is empty.
    bool hasText() const;
    bool hasTextEmpty() const;

    /// Always null: there are no namespaces.
    _XMLAttribute * getNameSpace() const;
    _XMLAttribute * setNameSpace(unsigned short int const * prefix, unsigned short int const * name,
                                 unsigned short int const * value);

    /// The element with its subtree, a line a node; an only text child stands on the line of its tags. Cost: linear in
    /// the text that comes out, in constant stack but for node classes derived elsewhere.
    _WideString toString(std::int32_t level) override;

protected:
    /// Makes an attribute behind the others, whether or not the name is there already, and gives it.
    _XMLAttribute * addAttribute(unsigned short int const * name, unsigned short int const * value);
    /// Takes `attribute` over and gives it back, its parent as it was; null for null.
    _XMLAttribute * addAttributeNode(_XMLAttribute const * attribute);

private:
    friend struct morvane::NodeAccess;

    explicit _XMLElement(morvane::NodeParts const & parts) noexcept;

    void set_childElements(_Container * container);
    void set_attributes(_XMLNamedNodeMap * map);

    // What the holdings say: a list, an only item, or a row of them. A list is made when it is asked for and when an
    // item comes that there is no place for.
    mutable void * childElements = nullptr;
    mutable void * attributes = nullptr;
};

// A processing instruction, the XML declaration above all.
#pragma once

#include <cstdint>
#include <morvane/xml/xml_node.h>

/// A target, in `nodeName`, and the `name="value"` words behind it as attributes.
///
/// Ownership: as for an element's attributes.
class MORVANE_EXPORT DOM::_XMLProcessingInstruction : public DOM::_XMLNode {
public:
    _XMLProcessingInstruction();
    /// Copies the fields and shares the attributes.
    _XMLProcessingInstruction(_XMLProcessingInstruction const & other);
    ~_XMLProcessingInstruction() override;

    /// Lets go of the own attributes and shares those of `other`.
    _XMLProcessingInstruction & operator=(_XMLProcessingInstruction const & other);

    /// The attributes; the map stays where it is for the life of the node.
    _XMLNamedNodeMap * get_attributes() const;

    /// The first attribute of that name in any case of A to Z; null if there is none.
    _XMLAttribute * getAttribute(unsigned short int const * name) const;
    /// Sets the value of the first attribute of that name and gives the attribute. If there is none the result is null,
    /// and `create` says whether one is made.
    _XMLAttribute * setAttribute(unsigned short int const * name, unsigned short int const * value, bool create);

    /// "<?xml", whatever the target, the attributes, and "?>"; `level` is not read, and no line end follows.
    _WideString toString(std::int32_t level) override;

private:
    friend struct morvane::NodeAccess;

    explicit _XMLProcessingInstruction(morvane::NodeParts const & parts) noexcept;

    void set_attributes(_XMLNamedNodeMap * map);

    // What `attributeHolding` says: the map, an only attribute, or a row of them.
    mutable void * attributes = nullptr;
};

// The attributes of one node, found by name.
#pragma once

#include <cstdint>
#include <morvane/containers/container.h>
#include <morvane/xml/dom.h>

/// The attributes of an element or processing instruction, in the order in which they were made.
///
/// Cost: a look-up compares the names from the first to the last, the cases of A to Z being equal.
/// Ownership: as `_Container`. A null name reads as empty text; null entries are passed over.
class MORVANE_EXPORT DOM::_XMLNamedNodeMap : public _Container {
public:
    _XMLNamedNodeMap();
    /// Shares the list of `other`, as `_Container` does.
    _XMLNamedNodeMap(_XMLNamedNodeMap const & other);
    ~_XMLNamedNodeMap() override;

    _XMLNamedNodeMap & operator=(_XMLNamedNodeMap const & other);

    /// The node at `index`; null outside the map.
    _XMLNode * getNamedNode(std::uint32_t index) const;
    std::uint32_t getNamedNodeCount() const;
    /// The first node of that name; null if there is none.
    _XMLNode * getNodeNamed(unsigned short int const * name) const;
    /// Sets the value of the first node of that name and gives the node; null if there is none: nothing is added.
    _XMLNode * setNodeNamed(unsigned short int const * name, unsigned short int const * value);
};

// The base for nodes of linked structures.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>

/// A node of a linked structure: three words that the library itself gives no meaning.
class MORVANE_EXPORT _Node : public _Object {
public:
    /// All three words are 0.
    _Node();
    _Node(_Node const & other);
    ~_Node() override;

    _Node & operator=(_Node const & other);

private:
    [[maybe_unused]] std::uint32_t words[3];
};

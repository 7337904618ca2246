#include <morvane/core/node.h>

_Node::_Node() : words{} {}

_Node::_Node(_Node const & other) = default;

_Node::~_Node() = default;

_Node & _Node::operator=(_Node const & other) = default;

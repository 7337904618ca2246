#include <morvane/core/memory_exception.h>

_MemoryException::_MemoryException() = default;

_MemoryException::_MemoryException(_MemoryException const & other) = default;

_MemoryException::~_MemoryException() = default;

_MemoryException & _MemoryException::operator=(_MemoryException const & other) = default;

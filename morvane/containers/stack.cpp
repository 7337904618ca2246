#include <morvane/containers/stack.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>

namespace {

unsigned char * allocateItems(std::uint32_t length, std::uint32_t partSize) {
    std::uint64_t const bytes = std::uint64_t{length} * partSize;
    if (bytes > std::numeric_limits<std::uint32_t>::max() || globalProcessMemory == nullptr) {
        return nullptr;
    }
    return static_cast<unsigned char *>(globalProcessMemory->heapAllocate(static_cast<std::uint32_t>(bytes), false));
}

} // namespace

_Stack::_Stack(std::uint32_t itemCount, std::uint32_t itemBytes)
    : pointer(itemCount), length(itemCount), partSize(itemBytes), stack(allocateItems(itemCount, itemBytes)),
      next(this), previous(this) {}

_Stack::_Stack(_Stack const & other)
    : pointer(other.pointer), length(other.length), partSize(other.partSize), stack(other.stack) {
    joinRing(other);
}

_Stack::~_Stack() {
    letGo();
}

_Stack & _Stack::operator=(_Stack const & other) {
    if (this == &other) {
        return *this;
    }
    letGo();
    pointer = other.pointer;
    length = other.length;
    partSize = other.partSize;
    stack = other.stack;
    joinRing(other);
    return *this;
}

bool _Stack::push(void const * item) {
    if (item == nullptr || isEmpty() || stack == nullptr) {
        return false;
    }
    --pointer;
    std::memcpy(top(), item, partSize);
    return true;
}

bool _Stack::pop(void * space) {
    if (space == nullptr || isFull() || stack == nullptr) {
        return false;
    }
    std::memcpy(space, top(), partSize);
    ++pointer;
    return true;
}

void _Stack::set_stack(void * value) {
    if (value != stack) {
        leaveRing();
        stack = static_cast<unsigned char *>(value);
    }
}

void _Stack::joinRing(_Stack const & other) {
    previous = &other;
    next = other.next;
    next->previous = this;
    other.next = this;
}

void _Stack::leaveRing() {
    previous->next = next;
    next->previous = previous;
    next = this;
    previous = this;
}

void _Stack::letGo() {
    if (next != this) {
        leaveRing();
    } else if (globalProcessMemory != nullptr) {
        globalProcessMemory->heapUnallocate(stack);
    }
}

unsigned char * _Stack::top() const {
    return stack + std::size_t{pointer} * partSize;
}

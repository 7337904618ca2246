// The stack of equally sized items.
#pragma once

#include <cstdint>
#include <morvane/export.h>

/// A stack of a fixed number of items of one size, copied in and out by value.
///
/// The words `isEmpty` and `isFull` speak of the free slots, not of the items: a new stack is full.
/// Cost: constant time a call; one block from `globalProcessMemory` for all items.
/// Threads: a stack belongs to one thread at a time, together with its copies.
/// Ownership: the stack owns its storage. Copies share it, each with a pointer of its own; whichever goes last releases
/// it. The raw setters trust the caller.
/// Errors: none is raised; a stack whose storage was refused, or would pass 32 bits of bytes, takes and gives nothing.
class MORVANE_EXPORT _Stack {
public:
    /// Has room for `length` items of `partSize` bytes.
    _Stack(std::uint32_t length, std::uint32_t partSize);
    /// Shares the storage of `other`.
    _Stack(_Stack const & other);
    virtual ~_Stack();

    /// Lets go of the storage and shares that of `other`.
    _Stack & operator=(_Stack const & other);

    /// Copies the item in; false for null, and when no slot is left.
    bool push(void const * item);
    /// Copies the item pushed last out; false for null, and when nothing is stored.
    bool pop(void * space);

    /// True when no slot is left.
    bool isEmpty() const { return pointer == 0; }
    /// True when nothing is stored.
    bool isFull() const { return pointer == length; }

    /// Store the field and nothing else. A block given to `set_stack` comes from `globalProcessMemory` and is the
    /// stack's from then on; the former one is left to the copies, or to the caller.
    void set_length(std::uint32_t value) { length = value; }
    void set_partSize(std::uint32_t value) { partSize = value; }
    void set_pointer(std::uint32_t value) { pointer = value; }
    void set_stack(void * value);

private:
    std::uint32_t get_length() const { return length; }
    std::uint32_t get_partSize() const { return partSize; }
    std::uint32_t get_pointer() const { return pointer; }
    void * get_stack() const { return stack; }

    /// Joins and leaves the ring of those that share the storage of `other`; an object alone is a ring of one.
    void joinRing(_Stack const & other);
    void leaveRing();
    /// Leaves the ring; the last one releases the storage.
    void letGo();
    /// Where the item of the slot `pointer` lies.
    unsigned char * top() const;

    std::uint32_t pointer;
    std::uint32_t length;
    std::uint32_t partSize;
    unsigned char * stack;
    mutable _Stack const * next;
    mutable _Stack const * previous;
};

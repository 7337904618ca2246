// The reference-counted object.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/components/com.h>
#include <morvane/export.h>

/// The base of all objects that count their references: it lives on the heap and ends with its last reference.
///
/// Cost: 16 bytes beside the table pointer; `addRef` and `release` take one atomic instruction each, none in a process
/// of one thread. Threads: `addRef` and `release` may run on any thread at once; the rest belongs to one thread.
/// Ownership: the creator holds the first reference. The `release` that leaves 0 deletes the object.
/// `addRef`, `release` and `free` answer on a null object too, where they are called by their qualified names.
class MORVANE_EXPORT COM::_IUnknown {
public:
    /// Copies the count as well: a copy starts with as many references as its source has.
    _IUnknown(_IUnknown const & other);

protected:
    virtual ~_IUnknown();

public:
    /// What the factory of this object makes for `id`; `comFailed` when it has no factory, as nothing here gives it
    /// one.
    virtual ComResult queryInterface(ComIdentifier id, void ** object);
    /// The new count; -1 on a null object.
    virtual std::int32_t addRef();
    /// The count that this call left, 0 when it deleted the object; -1 on a null object.
    virtual std::int32_t release();

    /// Copies the count as well.
    _IUnknown & operator=(_IUnknown const & other);

protected:
    /// An object of one reference, without a factory.
    _IUnknown();

    /// Deletes the object, whatever its count, and gives `comOk`; `comFailed` on a null object.
    ComResult free();

private:
    _IClassFactory * classFactory;
    std::atomic<std::int32_t> referenceCount;
};

// The stream over one block of memory.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/export.h>
#include <morvane/streams/stream.h>

/// A cursor over one block of memory: a zero-filled block of its own or bytes that the caller has. The block never
/// grows by itself.
///
/// The position may stand anywhere, also before the start or past the end; a transfer moves the bytes that lie inside
/// the block and gives their count, none where it starts outside. Ownership: the caller's bytes are never released, and
/// they outlive the stream. Copies share their block, each with a position of its own; a block of the stream's own goes
/// when the last stream over it goes or takes another block by `setSize`. Errors: a block that the heap refuses is
/// null; the stream then holds nothing, and transfers move nothing.
class MORVANE_EXPORT _MemoryStream : public _Stream {
public:
    /// Takes a zero-filled block of `size` bytes. `delta` is stored and has no effect.
    _MemoryStream(std::int32_t size = 1024, std::int32_t delta = 1024);
    /// Stands over `size` bytes at `bytes`, which are not copied; `write` changes them in place.
    _MemoryStream(unsigned char const * bytes, std::int32_t size);
    _MemoryStream(_MemoryStream const & other);

    std::int32_t read(void * buffer, std::int32_t count) override;
    std::int32_t write(void const * buffer, std::int32_t count) override;

    ~_MemoryStream() override;

    /// As in `_Stream`, modulo 2 to the 32; another origin leaves the position where it is.
    std::int32_t seek(std::int32_t offset, SeekOrigin origin) override;
    /// Takes a new zero-filled block of `size` bytes in place of the present one; contents are not carried over, and
    /// the position stays.
    void setSize(std::int32_t size) override;

    _MemoryStream & operator=(_MemoryStream const & other);

    /// Store the bare field. Bytes given to `set_pointer` are the caller's, and `set_size` does not touch the block.
    void set_pointer(unsigned char * value);
    void set_delta(std::int32_t value);
    void set_position(std::int32_t value);
    void set_size(std::int32_t value);

protected:
    /// A zero-filled block from `globalProcessMemory`; null when it refuses and for a negative `size`.
    unsigned char * streamAlloc(std::int32_t size);
    /// Gives a block back to `globalProcessMemory`.
    void streamUnalloc(unsigned char const * block);

private:
    struct OwnBlock;

    unsigned char * get_pointer() const;
    std::int32_t get_delta() const;
    std::int32_t get_position() const;
    std::int32_t get_size() const;

    std::int32_t countInside(std::int32_t count) const;
    void takeBlock();

    unsigned char * pointer;
    std::int32_t delta;
    std::int32_t position;
    std::int32_t size;
    std::shared_ptr<OwnBlock> ownBlock;
};

#include <morvane/streams/memory_stream.h>

#include <algorithm>
#include <cstring>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/platform/process_heap.h>
#include <new>

namespace {

/// The sum modulo 2 to the 32.
std::int32_t wrappedSum(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(left) + static_cast<std::uint32_t>(right));
}

} // namespace

/// The block that copies share. Where no `setSize` released it, it goes back to the system's heap uncounted.
struct _MemoryStream::OwnBlock {
    OwnBlock() = default;
    OwnBlock(OwnBlock const &) = delete;
    ~OwnBlock() { morvane::platform::heapFree(bytes); }

    OwnBlock & operator=(OwnBlock const &) = delete;

    unsigned char * bytes = nullptr;
};

_MemoryStream::_MemoryStream(std::int32_t size_, std::int32_t delta_)
    : pointer(nullptr), delta(delta_), position(0), size(size_) {
    takeBlock();
}

_MemoryStream::_MemoryStream(unsigned char const * bytes, std::int32_t size_)
    : pointer(const_cast<unsigned char *>(bytes)), delta(0), position(0), size(size_) {}

_MemoryStream::_MemoryStream(_MemoryStream const & other) = default;

std::int32_t _MemoryStream::read(void * buffer, std::int32_t count) {
    std::int32_t const inside = countInside(count);
    if (inside > 0) {
        std::memmove(buffer, pointer + position, static_cast<std::size_t>(inside));
        position += inside;
    }
    return inside;
}

std::int32_t _MemoryStream::write(void const * buffer, std::int32_t count) {
    std::int32_t const inside = countInside(count);
    if (inside > 0) {
        std::memmove(pointer + position, buffer, static_cast<std::size_t>(inside));
        position += inside;
    }
    return inside;
}

_MemoryStream::~_MemoryStream() = default;

std::int32_t _MemoryStream::seek(std::int32_t offset, SeekOrigin origin) {
    switch (origin) {
    case seekBegin:
        position = offset;
        break;
    case seekCurrent:
        position = wrappedSum(position, offset);
        break;
    case seekEnd:
        position = wrappedSum(size, offset);
        break;
    }
    return position;
}

void _MemoryStream::setSize(std::int32_t size_) {
    size = size_;
    if (ownBlock.use_count() == 1) {
        streamUnalloc(ownBlock->bytes);
        ownBlock->bytes = nullptr;
    }
    ownBlock.reset();
    takeBlock();
}

_MemoryStream & _MemoryStream::operator=(_MemoryStream const & other) = default;

void _MemoryStream::set_pointer(unsigned char * value) {
    pointer = value;
}

void _MemoryStream::set_delta(std::int32_t value) {
    delta = value;
}

void _MemoryStream::set_position(std::int32_t value) {
    position = value;
}

void _MemoryStream::set_size(std::int32_t value) {
    size = value;
}

unsigned char * _MemoryStream::streamAlloc(std::int32_t size_) {
    if (size_ < 0 || globalProcessMemory == nullptr) {
        return nullptr;
    }
    return static_cast<unsigned char *>(globalProcessMemory->heapAllocate(static_cast<std::uint32_t>(size_), true));
}

void _MemoryStream::streamUnalloc(unsigned char const * block) {
    if (globalProcessMemory != nullptr) {
        globalProcessMemory->heapUnallocate(const_cast<unsigned char *>(block));
    }
}

unsigned char * _MemoryStream::get_pointer() const {
    return pointer;
}

std::int32_t _MemoryStream::get_delta() const {
    return delta;
}

std::int32_t _MemoryStream::get_position() const {
    return position;
}

std::int32_t _MemoryStream::get_size() const {
    return size;
}

std::int32_t _MemoryStream::countInside(std::int32_t count) const {
    if (pointer == nullptr || count < 0 || position < 0 || position >= size) {
        return 0;
    }
    return std::min(count, size - position);
}

void _MemoryStream::takeBlock() {
    try {
        ownBlock = std::make_shared<OwnBlock>();
        ownBlock->bytes = streamAlloc(size);
        pointer = ownBlock->bytes;
    } catch (std::bad_alloc const &) {
        pointer = nullptr;
    }
}

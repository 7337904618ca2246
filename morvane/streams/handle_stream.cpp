#include <morvane/streams/handle_stream.h>

#include <algorithm>
#include <morvane/platform/files.h>
#include <morvane/streams/file_utility.h>

_HandleStream::_HandleStream() : handle(-1) {}

_HandleStream::_HandleStream(std::int32_t handle_) : handle(handle_) {}

_HandleStream::_HandleStream(_HandleStream const & other) = default;

std::int32_t _HandleStream::read(void * buffer, std::int32_t count) {
    return count < 0 ? 0 : std::max(_FileUtility::fileRead(handle, buffer, static_cast<std::uint32_t>(count)), 0);
}

std::int32_t _HandleStream::write(void const * buffer, std::int32_t count) {
    return count < 0 ? 0 : std::max(_FileUtility::fileWrite(handle, buffer, static_cast<std::uint32_t>(count)), 0);
}

_HandleStream::~_HandleStream() = default;

std::int32_t _HandleStream::seek(std::int32_t offset, SeekOrigin origin) {
    return _FileUtility::fileSeek(handle, offset, origin);
}

void _HandleStream::setSize(std::int32_t size) {
    // Where the seek fails the file would be cut at some other place.
    if (seek(size, seekBegin) != -1) {
        morvane::platform::setFileEnd(handle);
    }
}

_HandleStream & _HandleStream::operator=(_HandleStream const & other) = default;

std::int32_t _HandleStream::get_handle() const {
    return handle;
}

void _HandleStream::set_handle(std::int32_t value) {
    handle = value;
}

#include <morvane/streams/file_stream.h>

#include <morvane/streams/file_utility.h>
#include <new>

namespace {

constexpr std::uint32_t fileCreateMode = 0xFFFF;

} // namespace

/// The file that the copies of a stream share.
struct _FileStream::OpenFile {
    OpenFile() = default;
    OpenFile(OpenFile const &) = delete;
    ~OpenFile() {
        if (handle >= 0) {
            _FileUtility::fileClose(handle);
        }
    }

    OpenFile & operator=(OpenFile const &) = delete;

    std::int32_t handle = -1;
};

_FileStream::_FileStream(unsigned short int const * filename, std::uint32_t mode) {
    try {
        file = std::make_shared<OpenFile>();
    } catch (std::bad_alloc const &) {
        throw 0;
    }
    file->handle = mode == fileCreateMode ? _FileUtility::fileCreate(filename) : _FileUtility::fileOpen(filename, mode);
    if (file->handle < 0) {
        throw 0;
    }
    handle = file->handle;
}

_FileStream::_FileStream(_FileStream const & other) = default;

_FileStream::~_FileStream() = default;

_FileStream & _FileStream::operator=(_FileStream const & other) = default;

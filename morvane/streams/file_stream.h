// The stream that opens and closes its file.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/export.h>
#include <morvane/streams/handle_stream.h>

/// A file opened or created by name, closed with the stream.
///
/// Ownership: copies share the open file and its position; the file closes when the last of them goes. Assignment lets
/// go of the file held before.
/// Errors: the constructor throws the `int` 0 when the file cannot be opened; no file is open then.
class MORVANE_EXPORT _FileStream : public _HandleStream {
public:
    /// Creates the file, or cuts an existing one to nothing, where `mode` is 0xFFFF; otherwise opens an existing one
    /// with an open mode of `_FileUtility::fileOpen`.
    _FileStream(unsigned short int const * filename, std::uint32_t mode);
    _FileStream(_FileStream const & other);
    ~_FileStream() override;

    _FileStream & operator=(_FileStream const & other);

private:
    struct OpenFile;

    std::shared_ptr<OpenFile> file;
};

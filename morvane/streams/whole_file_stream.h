// A file that is written from its beginning to its end.
#pragma once

#include <cstdint>
#include <morvane/streams/handle_stream.h>

namespace morvane {

/// An open file that ends, when it closes, where its position is then.
class WholeFile {
public:
    WholeFile(WholeFile const &) = delete;
    ~WholeFile();

    WholeFile & operator=(WholeFile const &) = delete;

protected:
    explicit WholeFile(unsigned short int const * filename);

    std::int32_t const opened;
};

/// Creates a file, or writes over an existing one, which ends with the stream where the last byte was written.
///
/// It leaves what a `_FileStream` in create mode leaves, also where a write fails, but goes over the blocks that the
/// file has: systems take long to cut a file to nothing and to give it new blocks at once. Errors: the constructor
/// throws the `int` 0 when the file cannot be opened; no file is open then.
class WholeFileStream final : private WholeFile, public _HandleStream {
public:
    explicit WholeFileStream(unsigned short int const * filename) : WholeFile(filename), _HandleStream(opened) {}
};

} // namespace morvane

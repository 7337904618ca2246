#include <morvane/streams/whole_file_stream.h>

#include <morvane/platform/files.h>

namespace morvane {

WholeFile::WholeFile(unsigned short int const * filename)
    : opened(platform::openFile(filename, platform::fileUseReadWrite, platform::fileUseNone,
                                platform::FileDisposition::createWhole)) {
    if (opened < 0) {
        throw 0;
    }
}

WholeFile::~WholeFile() {
    platform::setFileEnd(opened);
    platform::closeFile(opened);
}

} // namespace morvane

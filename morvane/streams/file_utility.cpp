#include <morvane/streams/file_utility.h>

#include <iterator>
#include <morvane/platform/fat_time.h>
#include <morvane/platform/files.h>
#include <morvane/platform/last_error.h>

using namespace morvane;

namespace {

/// The age of a file last written at `seconds`; -1 where that has no FAT form.
std::int32_t ageOf(std::int64_t seconds) {
    std::uint32_t age = 0;
    return platform::fatTimeFromSeconds(seconds, age) ? static_cast<std::int32_t>(age) : -1;
}

} // namespace

_FileUtility::_FileUtility() = default;

_FileUtility::_FileUtility(_FileUtility const &) {}

_FileUtility::~_FileUtility() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_FileUtility & _FileUtility::operator=(_FileUtility const &) {
    return *this;
}

std::int32_t _FileUtility::fileCreate(unsigned short int const * filename) {
    return platform::openFile(filename, platform::fileUseReadWrite, platform::fileUseNone,
                              platform::FileDisposition::createAlways);
}

std::int32_t _FileUtility::fileOpen(unsigned short int const * filename, std::uint32_t mode) {
    using namespace platform;
    constexpr FileUse accesses[] = {fileUseRead, fileUseWrite, fileUseReadWrite, fileUseNone};
    constexpr FileUse sharings[] = {fileUseNone, fileUseNone, fileUseRead, fileUseWrite, fileUseReadWrite};
    std::uint32_t const sharing = mode >> 4 & 15;
    if (sharing >= std::size(sharings)) {
        return openFile(filename, fileUseNone, fileUseNone,
                        FileDisposition::openExisting); // refused, with its error code
    }
    return openFile(filename, accesses[mode & 3], sharings[sharing], FileDisposition::openExisting);
}

bool _FileUtility::fileClose(std::int32_t handle) {
    return platform::closeFile(handle);
}

std::int32_t _FileUtility::fileRead(std::int32_t handle, void * buffer, std::uint32_t count) {
    return platform::readFile(handle, buffer, count);
}

std::int32_t _FileUtility::fileWrite(std::int32_t handle, void const * buffer, std::uint32_t count) {
    return platform::writeFile(handle, buffer, count);
}

std::int32_t _FileUtility::fileSeek(std::int32_t handle, std::int32_t offset, std::int32_t origin) {
    return platform::seekFile(handle, offset, origin);
}

std::int32_t _FileUtility::fileAge(unsigned short int const * filename) {
    platform::FoundFile found{};
    if (!platform::findFile(filename, found) || (found.attributes & platform::fileAttributeDirectory) != 0) {
        return -1;
    }
    return ageOf(found.lastWriteTime);
}

bool _FileUtility::fileExists(unsigned short int const * filename) {
    return fileAge(filename) != -1;
}

std::int32_t _FileUtility::fileGetDate(std::int32_t handle) {
    std::int64_t seconds = 0;
    return platform::getLastWriteTime(handle, seconds) ? ageOf(seconds) : -1;
}

std::int32_t _FileUtility::fileSetDate(std::int32_t handle, std::int32_t age) {
    std::int64_t seconds = 0;
    bool const isSet = platform::secondsFromFatTime(static_cast<std::uint32_t>(age), seconds)
                       && platform::setLastWriteTime(handle, seconds);
    return isSet ? 0 : platform::lastError();
}

std::int32_t _FileUtility::fileGetAttr(unsigned short int const * filename) {
    platform::FoundFile found{};
    return platform::findFile(filename, found) ? found.attributes : -1;
}

std::int32_t _FileUtility::fileSetAttr(unsigned short int const * filename, std::int32_t attributes) {
    return platform::setFileAttributes(filename, attributes) ? 0 : platform::lastError();
}

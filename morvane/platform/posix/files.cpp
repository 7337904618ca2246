// Long files, and dates behind the year 2038, on systems of 32 bits.
#define _FILE_OFFSET_BITS 64 // NOLINT(bugprone-reserved-identifier)
#define _TIME_BITS 64        // NOLINT(bugprone-reserved-identifier)

#include <morvane/platform/files.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <limits>
#include <morvane/platform/posix/file_sharing.h>
#include <morvane/platform/posix/signal_guard.h>
#include <morvane/platform/posix/utf8_text.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace morvane::platform {

namespace {

constexpr off_t lastPosition = std::numeric_limits<std::int32_t>::max();
constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

/// `call` until no signal interrupts it.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// The name as the system takes it; null, with errno set, where it names no file.
class FileName {
public:
    explicit FileName(unsigned short int const * name) noexcept : text(name, UnpairedSurrogate::refused) {
        if (name == nullptr || text.bytes() == nullptr) {
            errno = ENOENT;
            valid = false;
        }
    }

    char const * bytes() const noexcept { return valid ? text.bytes() : nullptr; }

private:
    Utf8Text text;
    bool valid = true;
};

/// A descriptor that closes unless it is handed on; errno stays.
class Descriptor {
public:
    explicit Descriptor(int descriptor) noexcept : value(descriptor) {}
    Descriptor(Descriptor const &) = delete;
    ~Descriptor() { reset(-1); }

    Descriptor & operator=(Descriptor const &) = delete;

    int get() const noexcept { return value; }
    int release() noexcept { return std::exchange(value, -1); }
    void reset(int descriptor) noexcept {
        if (value >= 0) {
            int const error = errno;
            ::close(value);
            errno = error;
        }
        value = descriptor;
    }

private:
    int value;
};

/// The descriptors under 1,024 of disk files that `openFile` opened while nothing limited their size. It spares
/// `writeFile` a look at the kind of the file and at the limit in nearly all calls; others are looked at.
constexpr int rememberedDescriptors = 1024;
constinit std::atomic<std::uint64_t> plainFiles[rememberedDescriptors / 64]{};

void rememberPlainFile(int descriptor, bool isPlainFile) noexcept {
    if (descriptor < 0 || descriptor >= rememberedDescriptors) {
        return;
    }
    auto & word = plainFiles[descriptor / 64];
    std::uint64_t const bit = std::uint64_t{1} << descriptor % 64;
    if (isPlainFile) {
        word.fetch_or(bit, std::memory_order_relaxed);
    } else {
        word.fetch_and(~bit, std::memory_order_relaxed);
    }
}

bool isPlainFile(int descriptor) noexcept {
    return descriptor >= 0 && descriptor < rememberedDescriptors
           && (plainFiles[descriptor / 64].load(std::memory_order_relaxed) >> descriptor % 64 & 1) != 0;
}

/// True where the process may make files of any size.
bool isSizeUnlimited() noexcept {
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY;
}

/// When a transfer that moved less than it was asked for goes on.
enum class ShortTransfer { ends, goesOn };

/// Moves `count` bytes by `move`, which takes an offset and a count, in one call but for what the system moves in
/// several.
template <typename Move>
std::int32_t transfer(std::uint32_t count, ShortTransfer shortTransfer, Move move) {
    constexpr std::size_t largestCall = 0x7FFFF000;
    std::size_t const wanted = std::min<std::size_t>(count, static_cast<std::size_t>(lastPosition));
    std::size_t moved = 0;
    std::size_t asked = 0;
    std::size_t got = 0;
    do {
        asked = std::min(wanted - moved, largestCall);
        ssize_t const result = uninterrupted([&] { return move(moved, asked); });
        if (result < 0) {
            return moved != 0 ? static_cast<std::int32_t>(moved) : -1;
        }
        got = static_cast<std::size_t>(result);
        moved += got;
    } while (moved < wanted && (got == asked || (shortTransfer == ShortTransfer::goesOn && got != 0)));
    return static_cast<std::int32_t>(moved);
}

/// Opens without waiting: for the other end of a pipe, or for a line's carrier.
int openWithoutWaiting(char const * name, int flags) {
    constexpr mode_t newFileMode = S_IRUSR | S_IRGRP | S_IROTH | anyWrite;
    int descriptor = uninterrupted([&] { return ::open(name, flags | O_NONBLOCK, newFileMode); });
    if (descriptor < 0 && errno == EWOULDBLOCK) {
        // Another process must first give up its lease on the file, which it does within a set time.
        descriptor = uninterrupted([&] { return ::open(name, flags, newFileMode); });
    }
    return descriptor;
}

std::int32_t attributesOf(struct stat const & status) {
    std::int32_t attributes = 0;
    if ((status.st_mode & anyWrite) == 0) {
        attributes |= fileAttributeReadOnly;
    }
    if (S_ISDIR(status.st_mode)) {
        attributes |= fileAttributeDirectory;
    }
    return attributes != 0 ? attributes : std::int32_t{fileAttributeNormal};
}

bool statusOf(FileName const & name, struct stat & status) {
    return name.bytes() != nullptr && uninterrupted([&] { return ::stat(name.bytes(), &status); }) == 0;
}

} // namespace

std::int32_t openFile(unsigned short int const * name, FileUse access, FileUse sharing,
                      FileDisposition disposition) noexcept {
    if (access == fileUseNone) {
        errno = EINVAL;
        return -1;
    }
    FileName const path(name);
    if (path.bytes() == nullptr) {
        return -1;
    }
    bool const creates = disposition != FileDisposition::openExisting;
    int const flags = (access == fileUseReadWrite ? O_RDWR
                       : access == fileUseWrite   ? O_WRONLY
                                                  : O_RDONLY)
                      | (creates ? O_CREAT : 0) | O_CLOEXEC | O_NOCTTY;
    Descriptor file(openWithoutWaiting(path.bytes(), flags));
    if (file.get() >= 0 && file.get() <= STDERR_FILENO) {
        // A program without standard streams would write its messages into the file.
        file.reset(fcntl(file.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    }
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return -1;
    }
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return -1;
    }
    if (!S_ISREG(status.st_mode)) {
        int const open = fcntl(file.get(), F_GETFL);
        if (open == -1 || fcntl(file.get(), F_SETFL, open & ~O_NONBLOCK) == -1) {
            return -1;
        }
        return file.release();
    }
    if (!enterOpenFile(file.get(), status, access, sharing)) {
        return -1;
    }
    bool const cuts = disposition == FileDisposition::createAlways;
    if (cuts && uninterrupted([&] { return ::ftruncate(file.get(), 0); }) != 0) {
        int const error = errno;
        leaveOpenFile(file.get());
        errno = error;
        return -1;
    }
    rememberPlainFile(file.get(), isSizeUnlimited());
    return file.release();
}

bool closeFile(std::int32_t handle) noexcept {
    if (handle >= 0) {
        rememberPlainFile(handle, false);
        leaveOpenFile(handle);
    }
    return ::close(handle) == 0 || errno == EINTR; // an interrupted close has closed
}

std::int32_t readFile(std::int32_t handle, void * buffer, std::uint32_t count) noexcept {
    return transfer(count, ShortTransfer::ends, [&](std::size_t offset, std::size_t part) {
        return ::read(handle, static_cast<char *>(buffer) + offset, part);
    });
}

std::int32_t writeFile(std::int32_t handle, void const * buffer, std::uint32_t count) noexcept {
    // A signal may interrupt a write to a pipe in its middle, which is no failure.
    auto const writeAll = [&] {
        return transfer(count, ShortTransfer::goesOn, [&](std::size_t offset, std::size_t part) {
            return ::write(handle, static_cast<char const *>(buffer) + offset, part);
        });
    };
    if (isPlainFile(handle)) {
        return writeAll();
    }
    bool const isPipe = ::lseek(handle, 0, SEEK_CUR) == -1 && errno == ESPIPE;
    if (!isPipe && isSizeUnlimited()) {
        return writeAll();
    }
    SignalGuard const guard;
    return writeAll();
}

std::int32_t seekFile(std::int32_t handle, std::int32_t offset, std::int32_t origin) noexcept {
    if (origin < 0 || origin > 2) {
        errno = EINVAL;
        return -1;
    }
    off_t const before = origin == 0 ? 0 : ::lseek(handle, 0, SEEK_CUR);
    if (before == -1) {
        return -1;
    }
    off_t const base = origin == 2 ? ::lseek(handle, 0, SEEK_END) : before;
    if (base == -1) {
        return -1;
    }
    off_t const target = base + offset;
    if (target < 0 || target > lastPosition) {
        if (base != before) {
            ::lseek(handle, before, SEEK_SET);
        }
        errno = target < 0 ? EINVAL : EOVERFLOW;
        return -1;
    }
    bool const isThere = origin != 0 && offset == 0;
    return static_cast<std::int32_t>(isThere ? target : ::lseek(handle, target, SEEK_SET));
}

bool setFileEnd(std::int32_t handle) noexcept {
    off_t const position = ::lseek(handle, 0, SEEK_CUR);
    SignalGuard const guard;
    return position != -1 && uninterrupted([&] { return ::ftruncate(handle, position); }) == 0;
}

bool getLastWriteTime(std::int32_t handle, std::int64_t & seconds) noexcept {
    struct stat status {};
    if (::fstat(handle, &status) != 0) {
        return false;
    }
    seconds = status.st_mtime;
    return true;
}

bool setLastWriteTime(std::int32_t handle, std::int64_t seconds) noexcept {
    if (!std::in_range<time_t>(seconds)) {
        errno = EINVAL;
        return false;
    }
    timespec times[2]{};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(seconds);
    return ::futimens(handle, times) == 0;
}

bool findFile(unsigned short int const * name, FoundFile & found) noexcept {
    FileName const path(name);
    struct stat status {};
    if (!statusOf(path, status)) {
        return false;
    }
    found = {attributesOf(status), status.st_mtime};
    return true;
}

bool setFileAttributes(unsigned short int const * name, std::int32_t attributes) noexcept {
    FileName const path(name);
    struct stat status {};
    if (!statusOf(path, status)) {
        return false;
    }
    bool const isReadOnly = (status.st_mode & anyWrite) == 0;
    bool const becomesReadOnly = (attributes & fileAttributeReadOnly) != 0;
    if (isReadOnly == becomesReadOnly) {
        return true;
    }
    mode_t const mode = status.st_mode & ~static_cast<mode_t>(S_IFMT);
    return ::chmod(path.bytes(), becomesReadOnly ? mode & ~anyWrite : mode | S_IWUSR) == 0;
}

} // namespace morvane::platform

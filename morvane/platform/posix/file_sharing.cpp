// Long files, and dates behind the year 2038, on systems of 32 bits.
#define _FILE_OFFSET_BITS 64 // NOLINT(bugprone-reserved-identifier)
#define _TIME_BITS 64        // NOLINT(bugprone-reserved-identifier)

#include <morvane/platform/posix/file_sharing.h>

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <new>
#include <unordered_map>

namespace morvane::platform {

namespace {

/// What one open does, and what it keeps others from doing: `FileUse` bits.
struct Claim {
    std::uint32_t access;
    std::uint32_t denied;
};

bool conflict(Claim one, Claim other) {
    return ((one.access & other.denied) | (other.access & one.denied)) != 0;
}

// Inside the process: a table of what stands open. It lives from the first open to the last close, so that nothing is
// left when the library is unloaded.

struct FileIdentity {
    dev_t device;
    ino_t number;

    bool operator==(FileIdentity const &) const = default;
};

struct FileIdentityHash {
    std::size_t operator()(FileIdentity const & file) const noexcept {
        return std::hash<ino_t>{}(file.number) ^ std::hash<dev_t>{}(file.device) * 31;
    }
};

/// How many opens of one file use and deny each of the two rights.
struct ClaimCounts {
    std::size_t using_[2]{};
    std::size_t denying[2]{};

    Claim sum() const {
        auto const bits = [](std::size_t const(&counts)[2]) {
            return (counts[0] != 0 ? std::uint32_t{fileUseRead} : 0)
                   | (counts[1] != 0 ? std::uint32_t{fileUseWrite} : 0);
        };
        return {bits(using_), bits(denying)};
    }

    /// `step` is 1, or -1 modulo the counts' width.
    void count(Claim claim, std::size_t step) {
        for (unsigned int right = 0; right < 2; ++right) {
            using_[right] += (claim.access >> right & 1) * step;
            denying[right] += (claim.denied >> right & 1) * step;
        }
    }

    bool isEmpty() const { return using_[0] == 0 && using_[1] == 0; }
};

class OpenFileTable {
public:
    /// False where a claim of the same file stands against it; throws `std::bad_alloc` with nothing entered.
    bool enter(int descriptor, FileIdentity file, Claim claim) {
        leave(descriptor); // whoever closed the descriptor behind our back holds it no more
        auto const place = files.try_emplace(file).first;
        bool admitted = !conflict(place->second.sum(), claim);
        if (admitted) {
            try {
                opens.emplace(descriptor, Open{file, claim});
                place->second.count(claim, 1);
            } catch (...) {
                dropIfEmpty(place);
                throw;
            }
        } else {
            dropIfEmpty(place);
        }
        return admitted;
    }

    void leave(int descriptor) {
        auto const open = opens.find(descriptor);
        if (open == opens.end()) {
            return;
        }
        auto const place = files.find(open->second.file);
        place->second.count(open->second.claim, std::size_t{0} - 1);
        dropIfEmpty(place);
        opens.erase(open);
    }

    bool isEmpty() const { return opens.empty(); }

private:
    struct Open {
        FileIdentity file;
        Claim claim;
    };
    using Files = std::unordered_map<FileIdentity, ClaimCounts, FileIdentityHash>;

    void dropIfEmpty(Files::iterator place) {
        if (place->second.isEmpty()) {
            files.erase(place);
        }
    }

    std::unordered_map<int, Open> opens;
    Files files;
};

constinit std::mutex tableLock;
constinit OpenFileTable * table = nullptr;

void dropTableIfEmpty() {
    if (table->isEmpty()) {
        delete table;
        table = nullptr;
    }
}

bool enterTable(int descriptor, FileIdentity file, Claim claim) noexcept {
    std::scoped_lock const lock(tableLock);
    try {
        if (table == nullptr) {
            table = new OpenFileTable;
        }
        bool const admitted = table->enter(descriptor, file, claim);
        dropTableIfEmpty();
        if (!admitted) {
            errno = EBUSY;
        }
        return admitted;
    } catch (std::bad_alloc const &) {
        if (table != nullptr) {
            dropTableIfEmpty();
        }
        errno = ENOMEM;
        return false;
    }
}

// Between processes: each open locks one byte far behind the end of any file, in a span of places that tells its claim,
// and then looks for locks in the spans of the claims that conflict with it. As the byte is locked before the look, two
// opens can't miss each other; of two at the same moment both may be refused.

#ifdef F_OFD_SETLK

constexpr off_t firstSpan = off_t{1} << 60;
constexpr off_t spanLength = off_t{1} << 54;
constexpr std::uint32_t spanCount = 16;

struct flock lockOf(int type, off_t start, off_t length) {
    struct flock lock {};
    lock.l_type = static_cast<short int>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

off_t spanStart(std::uint32_t span) {
    return firstSpan + static_cast<off_t>(span) * spanLength;
}

Claim claimOfSpan(std::uint32_t span) {
    return {span & 3, span >> 2};
}

/// A byte of the span that nobody else has: a descriptor that can't read gets no lock that could be shared.
off_t ownPlace(int descriptor) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::uint64_t const moment =
        static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec);
    std::uint64_t const mixed = (moment ^ static_cast<std::uint64_t>(descriptor) << 40) * 0x9E3779B97F4A7C15;
    return static_cast<off_t>(mixed >> 10);
}

bool isLocked(int descriptor, std::uint32_t fromSpan, std::uint32_t toSpan) {
    auto lock = lockOf(F_WRLCK, spanStart(fromSpan), spanStart(toSpan) - spanStart(fromSpan));
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK && lock.l_start >= firstSpan;
}

/// True also where the file system has no such locks.
bool lockAgainstProcesses(int descriptor, Claim claim) noexcept {
    std::uint32_t const span = claim.access | claim.denied << 2;
    bool const mayRead = (claim.access & fileUseRead) != 0;
    auto own =
        mayRead ? lockOf(F_RDLCK, spanStart(span), 1) : lockOf(F_WRLCK, spanStart(span) + ownPlace(descriptor), 1);
    if (fcntl(descriptor, F_OFD_SETLK, &own) != 0) {
        return errno != EAGAIN && errno != EACCES;
    }
    std::uint32_t begin = 0;
    for (std::uint32_t end = 0; end <= spanCount; ++end) {
        if (end < spanCount && conflict(claim, claimOfSpan(end))) {
            continue;
        }
        if (begin < end && isLocked(descriptor, begin, end)) {
            return false;
        }
        begin = end + 1;
    }
    return true;
}

#else

bool lockAgainstProcesses(int, Claim) noexcept {
    return true;
}

#endif

} // namespace

bool enterOpenFile(int descriptor, struct stat const & status, FileUse access, FileUse sharing) noexcept {
    Claim const claim{access, fileUseReadWrite & ~std::uint32_t{sharing}};
    if (!enterTable(descriptor, {status.st_dev, status.st_ino}, claim)) {
        return false;
    }
    if (!lockAgainstProcesses(descriptor, claim)) {
        leaveOpenFile(descriptor);
        errno = EBUSY;
        return false;
    }
    return true;
}

void leaveOpenFile(int descriptor) noexcept {
    std::scoped_lock const lock(tableLock);
    if (table != nullptr) {
        table->leave(descriptor);
        dropTableIfEmpty();
    }
}

} // namespace morvane::platform

#include <morvane/platform/system_pages.h>

#include <cerrno>
#include <cstdint>
#include <sys/mman.h>

namespace morvane::platform {
namespace {

/// The calls below must not show in the last error of the thread.
class KeptError {
public:
    KeptError() : error(errno) {}
    KeptError(KeptError const &) = delete;
    ~KeptError() { errno = error; }

    KeptError & operator=(KeptError const &) = delete;

private:
    int error;
};

void * map(std::size_t bytes) {
    void * const pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages != MAP_FAILED ? pages : nullptr;
}

/// Bytes from the address up to the next multiple.
std::size_t gapBefore(void const * address, std::size_t alignment) {
    return (0 - reinterpret_cast<std::uintptr_t>(address)) & (alignment - 1);
}

} // namespace

void * mapPages(std::size_t bytes, std::size_t alignment) noexcept {
    KeptError const kept;
    // The system tends to put one map beside the last, so that most come out aligned.
    void * const lucky = map(bytes);
    if (lucky == nullptr || gapBefore(lucky, alignment) == 0) {
        return lucky;
    }
    munmap(lucky, bytes);
    if (bytes + alignment < bytes) {
        return nullptr;
    }
    char * const wide = static_cast<char *>(map(bytes + alignment));
    if (wide == nullptr) {
        return nullptr;
    }
    std::size_t const before = gapBefore(wide, alignment);
    if (before != 0) {
        munmap(wide, before);
    }
    munmap(wide + before + bytes, alignment - before);
    return wide + before;
}

void unmapPages(void * pages, std::size_t bytes) noexcept {
    KeptError const kept;
    munmap(pages, bytes);
}

bool discardPages(void * pages, std::size_t bytes) noexcept {
#ifdef __linux__
    KeptError const kept;
    return madvise(pages, bytes, MADV_DONTNEED) == 0;
#else
    (void)pages;
    (void)bytes;
    return false;
#endif
}

void populatePages(void * pages, std::size_t bytes) noexcept {
#ifdef MADV_POPULATE_WRITE
    KeptError const kept;
    madvise(pages, bytes, MADV_POPULATE_WRITE);
#else
    (void)pages;
    (void)bytes;
#endif
}

void preferLargePages(void * pages, std::size_t bytes) noexcept {
#ifdef MADV_HUGEPAGE
    KeptError const kept;
    madvise(pages, bytes, MADV_HUGEPAGE);
#else
    (void)pages;
    (void)bytes;
#endif
}

} // namespace morvane::platform

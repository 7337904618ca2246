// A handle is what the dynamic loader gives: the entry of the module in its list of loaded modules. It is looked up
// there before it is used, so that a stale one does no harm.
#include <morvane/platform/modules.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <morvane/platform/posix/utf8_text.h>
#include <unistd.h>

namespace morvane::platform {

namespace {

constexpr std::size_t pathSize = PATH_MAX;

/// The program's own entry, which heads the list and stays as long as the process.
link_map * programEntry() {
    void * const program = dlopen(nullptr, RTLD_LAZY);
    if (program == nullptr) {
        return nullptr;
    }
    link_map * entry = nullptr;
    if (dlinfo(program, RTLD_DI_LINKMAP, &entry) != 0) {
        entry = nullptr;
    }
    dlclose(program);
    return entry;
}

/// Gives the first entry for which `isWanted`, or null. No module comes or goes meanwhile: the loader holds its lock
/// around a callback of `dl_iterate_phdr`, which is taken for that alone.
template <typename Predicate>
link_map * findEntry(Predicate isWanted) {
    struct Search {
        Predicate & isWanted;
        link_map * entry;
    };
    Search search{isWanted, programEntry()};
    auto const walk = [](dl_phdr_info *, std::size_t, void * argument) {
        Search & wanted = *static_cast<Search *>(argument);
        while (wanted.entry != nullptr && !wanted.isWanted(*wanted.entry)) {
            wanted.entry = wanted.entry->l_next;
        }
        return 1;
    };
    return dl_iterate_phdr(walk, &search) != 0 ? search.entry : nullptr;
}

HINSTANCE__ * asHandle(void * entry) {
    return static_cast<HINSTANCE__ *>(entry);
}

/// Empty when the system doesn't tell.
void programPath(char (&path)[pathSize]) {
    ssize_t const length = readlink("/proc/self/exe", path, pathSize - 1);
    path[length > 0 ? length : 0] = 0;
}

char const * fileNameOf(char const * path) {
    char const * const separator = std::strrchr(path, '/');
    return separator != nullptr ? separator + 1 : path;
}

/// Tells the last error where the loader left none.
HINSTANCE__ * loadFailed(int error) {
    if (errno == 0) {
        errno = error;
    }
    return nullptr;
}

} // namespace

HINSTANCE__ * loadModule(unsigned short int const * name) noexcept {
    errno = 0;
    Utf8Text const path(name, UnpairedSurrogate::refused);
    if (path.bytes() == nullptr || path.length() == 0) {
        return loadFailed(ENOENT);
    }
    void * const entry = dlopen(path.bytes(), RTLD_NOW | RTLD_LOCAL);
    return entry != nullptr ? asHandle(entry) : loadFailed(ENOEXEC);
}

bool unloadModule(HINSTANCE__ * module) noexcept {
    void const * const handle = module;
    if (handle == nullptr || findEntry([handle](link_map const & entry) { return &entry == handle; }) == nullptr
        || dlclose(module) != 0) {
        errno = EINVAL;
        return false;
    }
    return true;
}

HINSTANCE__ * findModule(unsigned short int const * name) noexcept {
    Utf8Text const wanted(name, UnpairedSurrogate::refused);
    if (wanted.bytes() == nullptr || wanted.length() == 0) {
        return nullptr;
    }
    if (std::strchr(wanted.bytes(), '/') != nullptr) {
        void * const entry = dlopen(wanted.bytes(), RTLD_LAZY | RTLD_NOLOAD);
        if (entry != nullptr) {
            dlclose(entry);
        }
        return asHandle(entry);
    }
    char program[pathSize];
    programPath(program);
    return asHandle(findEntry([&](link_map const & entry) {
        return std::strcmp(fileNameOf(*entry.l_name != 0 ? entry.l_name : program), wanted.bytes()) == 0;
    }));
}

std::size_t modulePath(HINSTANCE__ * module, unsigned short int * buffer, std::size_t capacity) noexcept {
    void const * const handle = module;
    char path[pathSize] = "";
    auto const isModule = [&](link_map const & entry) {
        if (&entry != handle) {
            return false;
        }
        std::strncat(path, entry.l_name, pathSize - 1);
        return true;
    };
    bool const isKnown = handle == nullptr || findEntry(isModule) != nullptr;
    if (isKnown && path[0] == 0) {
        programPath(path);
    }
    char absolute[pathSize] = "";
    bool const isRelative = path[0] != 0 && path[0] != '/';
    if (isRelative && realpath(path, absolute) == nullptr) {
        absolute[0] = 0;
    }
    return widenUtf8(isRelative ? absolute : path, buffer, capacity);
}

} // namespace morvane::platform

// What the system does to files: names that open nothing, full disks, limits of the process, signals, pipes.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <file_testing.h>
#include <functional>
#include <morvane/core/literals.h>
#include <morvane/morvane.h>
#include <morvane/platform/last_error.h>
#include <stream_testing.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <utility>
#include <vector>

using namespace morvane::literals;
using morvane::platform::lastError;

namespace {

struct Record : _Persistant {
    bool _loadFromStream(_Stream & stream) override { return stream.readString().get_data() != nullptr; }
    bool _saveToStream(_Stream & stream) override {
        stream.writeString(std::string(1000, 'r').c_str());
        return true;
    }
};

/// A limit of the process until the end of the scope.
class Limit {
public:
    Limit(decltype(RLIMIT_FSIZE) resource_, rlim_t value) : resource(resource_) {
        getrlimit(resource, &before);
        rlimit const limit{value, before.rlim_max};
        setrlimit(resource, &limit);
    }
    Limit(Limit const &) = delete;
    ~Limit() { setrlimit(resource, &before); }

    Limit & operator=(Limit const &) = delete;

private:
    decltype(RLIMIT_FSIZE) resource;
    rlimit before{};
};

class SystemFaults : public Files {
protected:
    ~SystemFaults() override {
        if (callsMade != 0) {
            std::printf("%zu loads and saves under a fault\n", callsMade);
        }
    }
    SystemFaults() {
        _WideString error;
        EXPECT_TRUE(document.loadFromString(u"<root><child/></root>"_w, error));
        document.getRoot()->addElement(u"long"_w, _WideString('l', 1000));
    }

    /// One sign a call: t for true, f for false, 0 for the `int` 0.
    std::string answersOf(std::vector<std::function<bool()>> const & calls) {
        std::string answers;
        callsMade += calls.size();
        for (auto const & call : calls) {
            bool result = false;
            answers += fails([&] { result = call(); }) ? '0' : result ? 't' : 'f';
        }
        return answers;
    }

    /// Loads of a document, of a text, of bytes and of a record.
    std::string loadsOf(FileName const & name) {
        DOM::_XMLDocument loaded;
        _WideString wide;
        _DataString data;
        auto format = _StringUtility::formatUnknown;
        auto error = _StringUtility::utilErrorNone;
        return answersOf(
            {[&] { return loaded.loadFromFile(name, wide); },
             [&] { return _StringUtility::loadStringFromFile(name, data, wide, format, error); },
             [&] { return _StringUtility::loadDataStringFromFile(name, data) == _StringUtility::utilErrorNone; },
             [&] { return Record()._loadFromFile(name); }});
    }

    /// Saves of a document, of bytes and of a record.
    std::string savesOf(FileName const & name) {
        _WideString error;
        return answersOf({[&] { return document.saveToFile(name, error); },
                          [&] {
                              return _StringUtility::saveDataStringToFile(name, std::string(1000, 's').c_str(),
                                                                          _StringUtility::formatANSI);
                          },
                          [&] { return Record()._saveToFile(name); }});
    }

    DOM::_XMLDocument document;
    std::size_t callsMade = 0;
};

TEST_F(SystemFaults, HaveTheToldAnswersAndLeaveNoFileOpen) {
    std::filesystem::create_directory(folder.path("folder"));
    std::filesystem::create_symlink("loop", folder.path("loop"));
    mkfifo(folder.path("pipe").c_str(), 0600);
    FileName const used = folder.put("used", "as it was");
    std::int32_t const user = _FileUtility::fileOpen(used, 2);
    struct {
        FileName name;
        char const *loads, *saves;
    } const rows[] = {
        {folder.name("missing/file"), "ffff", "000"},
        {folder.name("folder"), "ffff", "000"},
        {folder.name("used/file"), "ffff", "000"},
        {folder.name("loop"), "ffff", "000"},
        {folder.name(std::string(300, 'n')), "ffff", "000"},
        {FileName(folder.path("").u16string() + u"\xD800"), "ffff", "000"},
        {used, "0000", "000"},
        {folder.put("short", "<a"), "00t0", "ttt"},
        {FileName(u"/dev/null"), "00t0", "ttt"},
        {FileName(u"/dev/full"), "fttt", "tt0"}, // it reads as zeros
        {folder.name("pipe"), "0000", "ttt"},
    };
    for (auto const & row : rows) {
        EXPECT_EQ(loadsOf(row.name), row.loads) << row.name[0];
        EXPECT_EQ(savesOf(row.name), row.saves);
        EXPECT_EQ(openDescriptors(), descriptors + 1);
    }
    EXPECT_EQ(folder.get("used"), "as it was");
    EXPECT_TRUE(_FileUtility::fileClose(user));
    FileName const file = folder.put("file", "text");
    for (rlim_t const limit : {0, 3}) {
        Limit const descriptorLimit(RLIMIT_NOFILE, limit);
        EXPECT_EQ(loadsOf(file), "0000");
        EXPECT_EQ(savesOf(file), "000");
        EXPECT_EQ(lastError(), EMFILE);
    }
    EXPECT_EQ(folder.get("file"), "text") << "a refused create cuts nothing";
}

TEST_F(SystemFaults, StopFilesAtTheLimitOfTheirSizeAndNotTheProcess) {
    FileName const name = folder.put("file", "");
    int const foreign = open(folder.path("foreign").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    for (rlim_t const most : {0, 1, 100}) {
        Limit const limit(RLIMIT_FSIZE, most);
        EXPECT_EQ(savesOf(name), "tt0");
        EXPECT_EQ(lastError(), EFBIG);
        EXPECT_EQ(folder.get("file").size(), most);
        for (std::int32_t const handle : {foreign, _FileUtility::fileOpen(name, 2)}) {
            _HandleStream stream(handle);
            EXPECT_TRUE(fails([&] { stream.writeText(std::string(1000, 'x').c_str()); }));
            stream.setSize(1000);
            EXPECT_EQ(stream.getSize(), static_cast<std::int32_t>(most));
            stream.setSize(0);
            EXPECT_TRUE(handle == foreign || _FileUtility::fileClose(handle));
        }
    }
    EXPECT_EQ(savesOf(name), "ttt");
    close(foreign);
    std::int32_t const full = _FileUtility::fileOpen(u"/dev/full"_w, 1);
    EXPECT_EQ(_FileUtility::fileWrite(full, "text", 4), -1);
    EXPECT_EQ(lastError(), ENOSPC);
    EXPECT_TRUE(_FileUtility::fileClose(full));
}

/// A file that somebody cuts once its size was asked for.
struct ShrinkingFile : _FileStream {
    explicit ShrinkingFile(FileName const & name) : _FileStream(name, 2) {}
    std::int32_t seek(std::int32_t offset, SeekOrigin origin) override {
        std::int32_t const position = _FileStream::seek(offset, origin);
        if (origin == seekEnd) {
            _FileStream::setSize(position / 2);
        }
        return position;
    }
};

TEST_F(SystemFaults, FailTheReadOfAFileThatShrinks) {
    _MemoryStream target(1000);
    _DataString data;
    _WideString wide;
    auto format = _StringUtility::formatUnknown;
    auto error = _StringUtility::utilErrorNone;
    std::function<void(_Stream &)> const reads[] = {
        [&](_Stream & stream) { target.copyFrom(stream, 0); },
        [&](_Stream & stream) { _StringUtility::loadStringFromStream(stream, data, wide, format, error); },
        [](_Stream & stream) { _Reader(stream, 70000); },
        [](_Stream & stream) { stream.readString(); },
    };
    for (auto const & read : reads) {
        // A length of 66,051 bytes, which the file holds.
        ShrinkingFile file(folder.put("file", "\3\2\1" + std::string(1, '\0') + std::string(66051, 'x')));
        EXPECT_TRUE(fails([&] { read(file); }));
    }
}

int ends[2];
volatile std::sig_atomic_t interruptions = 0;
volatile std::sig_atomic_t drained = 0;

/// Interrupts what runs every millisecond, without SA_RESTART; from the twentieth time on `act` helps it along.
class Interrupter {
public:
    explicit Interrupter(void (*act_)()) {
        act = act_;
        interruptions = 0;
        struct sigaction action {};
        action.sa_handler = [](int) {
            int const before = errno;
            interruptions = interruptions + 1;
            if (interruptions >= 20) {
                act();
            }
            errno = before;
        };
        sigaction(SIGALRM, &action, nullptr);
        itimerval const each{{0, 1000}, {0, 1000}};
        setitimer(ITIMER_REAL, &each, nullptr);
    }
    Interrupter(Interrupter const &) = delete;
    ~Interrupter() {
        itimerval const none{};
        setitimer(ITIMER_REAL, &none, nullptr);
        signal(SIGALRM, SIG_DFL);
    }

    Interrupter & operator=(Interrupter const &) = delete;

private:
    static inline void (*act)();
};

TEST_F(SystemFaults, LetASignalInterruptNoTransfer) {
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    char bytes[4]{};
    {
        Interrupter const interrupter([] { static_cast<void>(!write(ends[1], "t", interruptions == 20 ? 1 : 0)); });
        EXPECT_EQ(_FileUtility::fileRead(ends[0], bytes, 4), 1);
    }
    EXPECT_GE(interruptions, 20);
    // In its middle too: the pipe takes a part, and more whenever it was drained.
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    std::string const text(100000, 'x');
    auto const drain = [] {
        char part[4096];
        for (ssize_t count = 0; (count = read(ends[0], part, sizeof part)) > 0;) {
            drained = drained + static_cast<int>(count);
        }
    };
    {
        Interrupter const interrupter(drain);
        EXPECT_EQ(_HandleStream(ends[1]).writeBuffer(text.data(), 100000), 100000);
    }
    drain();
    EXPECT_EQ(drained, 100000);
    EXPECT_TRUE(_FileUtility::fileClose(ends[0]) && _FileUtility::fileClose(ends[1]));
}

TEST_F(SystemFaults, LeavePipesAsTheyAre) {
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    FileName const name = folder.name("pipe");
    EXPECT_EQ(_FileUtility::fileOpen(name, 1), -1) << "it does not wait for the other end";
    std::int32_t const reader = _FileUtility::fileOpen(name, 0);
    std::int32_t const writer = _FileUtility::fileOpen(name, 1);
    EXPECT_EQ(fcntl(reader, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(_FileUtility::fileWrite(writer, "text", 4), 4);
    char bytes[8];
    EXPECT_EQ(_FileUtility::fileRead(reader, bytes, 8), 4);
    // What can't be sought has no size, and a long text is read in steps.
    fcntl(writer, F_SETPIPE_SZ, 1 << 18);
    std::string const text(200000, 'x');
    _HandleStream(writer).writeString(text.c_str());
    EXPECT_TRUE(_HandleStream(reader).getSize() == -1 && _FileUtility::fileSeek(reader, 0, 1) == -1);
    EXPECT_EQ(bytesOf(_HandleStream(reader).readString()), text);
    EXPECT_TRUE(_FileUtility::fileClose(reader));
    EXPECT_EQ(_FileUtility::fileWrite(writer, "text", 4), -1) << "nor dies without it";
    EXPECT_EQ(lastError(), EPIPE);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    EXPECT_TRUE(_FileUtility::fileClose(writer));
}

} // namespace

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

using namespace morvane::literals;
using morvane::platform::lastError;

namespace {

std::string const text(1000, 'x');
int loadsAndSaves = 0;

struct Record : _Persistant {
    bool _loadFromStream(_Stream & stream) override { return stream.readString().get_data() != nullptr; }
    bool _saveToStream(_Stream & stream) override { return stream.writeString(text.c_str()), true; }
};

/// A sign for what `call` answers: t for true, f for false, 0 for the `int` 0.
char answerOf(std::function<bool()> const & call) {
    bool result = false;
    ++loadsAndSaves;
    return fails([&] { result = call(); }) ? '0' : result ? 't' : 'f';
}

/// What loads of a document, a text, bytes and a record, and saves of a document, bytes and a record answer.
std::string answersOf(FileName const & name) {
    DOM::_XMLDocument document;
    _WideString wide;
    _DataString data;
    auto format = _StringUtility::formatUnknown;
    auto error = _StringUtility::utilErrorNone;
    std::string answers{
        answerOf([&] { return document.loadFromFile(name, wide); }),
        answerOf([&] { return _StringUtility::loadStringFromFile(name, data, wide, format, error); }),
        answerOf([&] { return _StringUtility::loadDataStringFromFile(name, data) == _StringUtility::utilErrorNone; }),
        answerOf([&] { return Record()._loadFromFile(name); })};
    document.addElement(u"long"_w, {})->addText(_WideString('l', 1000));
    auto const bytes = _StringUtility::formatANSI;
    answers += answerOf([&] { return document.saveToFile(name, wide); });
    answers += answerOf([&] { return _StringUtility::saveDataStringToFile(name, text.c_str(), bytes); });
    return answers + answerOf([&] { return Record()._saveToFile(name); });
}

/// `work` while the process may not have more of something.
template <typename Work>
void limited(decltype(RLIMIT_FSIZE) resource, rlim_t most, Work work) {
    rlimit before{};
    getrlimit(resource, &before);
    rlimit const limit{most, before.rlim_max};
    setrlimit(resource, &limit);
    work();
    setrlimit(resource, &before);
}

using SystemFaults = Files;

TEST_F(SystemFaults, HaveTheToldAnswersAndLeaveNoFileOpen) {
    std::filesystem::create_directory(folder.path("folder"));
    std::filesystem::create_symlink("loop", folder.path("loop"));
    mkfifo(folder.path("pipe").c_str(), 0600);
    FileName const used = folder.put("used", "as it was");
    FileName const file = folder.put("file", "text");
    std::int32_t const user = _FileUtility::fileOpen(used, 2);
    std::pair<FileName, char const *> const rows[] = {
        {folder.name("missing/file"), "ffff000"},
        {folder.name("folder"), "ffff000"},
        {folder.name("used/file"), "ffff000"},
        {folder.name("loop"), "ffff000"},
        {folder.name(std::string(300, 'n')), "ffff000"},
        {FileName(folder.path("").u16string() + u"\xD800"), "ffff000"},
        {used, "0000000"},
        {folder.put("short", "<a"), "00t0ttt"},
        {FileName(u"/dev/null"), "00t0ttt"},
        {FileName(u"/dev/full"), "fttttt0"}, // it reads as zeros
        {folder.name("pipe"), "0000ttt"},
    };
    for (auto const & [name, answers] : rows) {
        EXPECT_EQ(answersOf(name), answers);
        EXPECT_EQ(openDescriptors(), descriptors + 1);
    }
    EXPECT_TRUE(_FileUtility::fileClose(user));
    for (rlim_t const most : {0U, 3U}) {
        limited(RLIMIT_NOFILE, most, [&] { EXPECT_EQ(answersOf(file), "0000000"); });
        EXPECT_EQ(lastError(), EMFILE);
    }
    EXPECT_EQ(folder.get("used") + folder.get("file"), "as it wastext") << "a refused create cuts nothing";
    int const foreign = open(folder.path("foreign").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    for (rlim_t const most : {0U, 1U, 100U}) {
        limited(RLIMIT_FSIZE, most, [&] {
            EXPECT_EQ(answersOf(file).substr(4), "tt0") << "and the process lives on";
            EXPECT_EQ(lastError(), EFBIG);
            EXPECT_EQ(folder.get("file").size(), most);
            for (std::int32_t const handle : {foreign, _FileUtility::fileOpen(file, 2)}) {
                _HandleStream stream(handle);
                EXPECT_TRUE(fails([&] { stream.writeText(text.c_str()); }));
                stream.setSize(1000);
                EXPECT_EQ(stream.getSize(), static_cast<std::int32_t>(most));
                stream.setSize(0);
                EXPECT_TRUE(handle == foreign || _FileUtility::fileClose(handle));
            }
        });
    }
    close(foreign);
    FileName const longer = folder.put("longer", std::string(500, 'f'));
    limited(RLIMIT_FSIZE, 100, [&] {
        std::string const contents(1000, 'x');
        EXPECT_TRUE(_StringUtility::saveDataStringToFile(longer, contents.c_str(), _StringUtility::formatANSI));
        EXPECT_EQ(folder.get("longer"), contents.substr(0, 100)) << "nothing stays of what was there";
    });
    std::printf("%d loads and saves\n", loadsAndSaves);
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
    std::function<void(_Stream &)> const reads[] = {
        [](_Stream & stream) { _MemoryStream(1000).copyFrom(stream, 0); },
        [](_Stream & stream) {
            _DataString data;
            _WideString wide;
            auto format = _StringUtility::formatUnknown;
            auto error = _StringUtility::utilErrorNone;
            _StringUtility::loadStringFromStream(stream, data, wide, format, error);
        },
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

/// `work` with a signal every millisecond, without SA_RESTART; each from the twentieth on makes `help` do its part.
template <void (*help)()>
void interrupted(std::function<void()> const & work) {
    interruptions = 0;
    struct sigaction action {};
    action.sa_handler = [](int) {
        int const before = errno;
        interruptions = interruptions + 1;
        if (interruptions >= 20) {
            help();
        }
        errno = before;
    };
    sigaction(SIGALRM, &action, nullptr);
    itimerval const each{{0, 1000}, {0, 1000}};
    itimerval const none{};
    setitimer(ITIMER_REAL, &each, nullptr);
    work();
    setitimer(ITIMER_REAL, &none, nullptr);
}

void writeOne() {
    static_cast<void>(!write(ends[1], "t", interruptions == 20 ? 1 : 0));
}

void drain() {
    char part[4096];
    for (ssize_t count = 0; (count = read(ends[0], part, sizeof part)) > 0;) {
        drained = drained + static_cast<int>(count);
    }
}

TEST_F(SystemFaults, LetASignalInterruptNoTransfer) {
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    char bytes[4]{};
    interrupted<writeOne>([&] { EXPECT_EQ(_FileUtility::fileRead(ends[0], bytes, 4), 1); });
    // In its middle too: the pipe takes a part, and more whenever it was drained.
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    std::string const much(100000, 'x');
    interrupted<drain>([&] { EXPECT_EQ(_HandleStream(ends[1]).writeBuffer(much.data(), 100000), 100000); });
    drain();
    EXPECT_EQ(drained, 100000);
    EXPECT_TRUE(_FileUtility::fileClose(ends[0]) && _FileUtility::fileClose(ends[1]));
}

TEST_F(SystemFaults, LeavePipesAsTheyAre) {
    mkfifo(folder.path("pipe").c_str(), 0600);
    FileName const name = folder.name("pipe");
    EXPECT_EQ(_FileUtility::fileOpen(name, 1), -1) << "it does not wait for the other end";
    std::int32_t const reader = _FileUtility::fileOpen(name, 0);
    std::int32_t const writer = _FileUtility::fileOpen(name, 1);
    EXPECT_EQ(fcntl(reader, F_GETFL) & O_NONBLOCK, 0);
    // What can't be sought has no size, and a long text is read in steps.
    fcntl(writer, F_SETPIPE_SZ, 1 << 18);
    std::string const much(200000, 'x');
    _HandleStream(writer).writeString(much.c_str());
    EXPECT_TRUE(_HandleStream(reader).getSize() == -1 && _FileUtility::fileSeek(reader, 0, 1) == -1);
    EXPECT_EQ(bytesOf(_HandleStream(reader).readString()), much);
    EXPECT_TRUE(_FileUtility::fileClose(reader));
    EXPECT_EQ(_FileUtility::fileWrite(writer, "text", 4), -1) << "nor dies without it";
    EXPECT_EQ(lastError(), EPIPE);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    EXPECT_TRUE(_FileUtility::fileClose(writer));
}

} // namespace

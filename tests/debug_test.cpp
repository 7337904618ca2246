#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <morvane/core/literals.h>
#include <morvane/core/system_utility.h>
#include <morvane/platform/critical_section.h>
#include <morvane/platform/debug_output.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace morvane::literals;
using morvane::platform::DebugBatch;
using morvane::platform::setDebugListener;

namespace {

/// Standard error, led into a pipe. Nothing else may be said on it meanwhile.
class ErrorPipe {
public:
    explicit ErrorPipe(int flags = O_NONBLOCK) : former(dup(STDERR_FILENO)) {
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        fcntl(ends[0], F_SETFL, flags);
        fcntl(ends[1], F_SETFL, O_NONBLOCK);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
    }
    ErrorPipe(ErrorPipe const &) = delete;
    ~ErrorPipe() {
        finish();
        close(ends[0]);
    }

    ErrorPipe & operator=(ErrorPipe const &) = delete;

    /// Gives standard error back, so that a reader finds the end.
    void finish() {
        if (former >= 0) {
            dup2(former, STDERR_FILENO);
            close(former);
            former = -1;
        }
    }

    /// What one read gives: what has been written so far.
    std::string read(std::size_t most = 65536) {
        std::string bytes(most, ' ');
        ssize_t const count = ::read(ends[0], bytes.data(), bytes.size());
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

    int readEnd() const { return ends[0]; }

private:
    int ends[2]{};
    int former;
};

TEST(DebugChannel, WritesUtf8ToStandardError) {
    struct {
        unsigned short int const * text;
        char const * bytes;
    } const cases[] = {
        {u"plain \r\n"_w, "plain \r\n"},
        {u"\u007F\u0080\u07FF\u0800\uFFFF"_w, "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {u"\U00010000\U0010FFFF"_w, "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {u""_w, ""},
    };
    for (auto const & event : cases) {
        ErrorPipe channel;
        _SystemUtility::outputDebugString(event.text);
        EXPECT_EQ(channel.read(), event.bytes);
    }
    unsigned short int const unpaired[][4] = {{0xD800, 0}, {0xDC00, 0}, {0xD800, 0xD800, 'x', 0}, {0xDC00, 0xD800, 0}};
    char const * const replaced[] = {"\xEF\xBF\xBD", "\xEF\xBF\xBD", "\xEF\xBF\xBD\xEF\xBF\xBDx",
                                     "\xEF\xBF\xBD\xEF\xBF\xBD"};
    for (std::size_t index = 0; index < 4; ++index) {
        ErrorPipe channel;
        _SystemUtility::outputDebugString(nullptr);
        _SystemUtility::outputDebugString(unpaired[index]);
        EXPECT_EQ(channel.read(), replaced[index]);
    }
}

TEST(DebugChannel, WritesALongEventWholeThroughANarrowPipe) {
    ErrorPipe channel(0);
    fcntl(channel.readEnd(), F_SETPIPE_SZ, 4096);
    std::string received;
    std::thread reader([&channel, &received] {
        for (std::string bytes = channel.read(777); !bytes.empty(); bytes = channel.read(777)) {
            received += bytes;
        }
    });
    std::vector<unsigned short int> text(200000, 0x20AC);
    text.back() = 0;
    errno = EDOM;
    _SystemUtility::outputDebugString(text.data());
    EXPECT_EQ(errno, EDOM);
    channel.finish();
    reader.join();
    std::string expected;
    for (std::size_t unit = 1; unit < text.size(); ++unit) {
        expected += "\xE2\x82\xAC";
    }
    EXPECT_TRUE(received == expected);
}

TEST(DebugChannel, HandsABatchOverWhenItsOutermostEnds) {
    ErrorPipe channel;
    try {
        DebugBatch const outer;
        {
            DebugBatch const inner;
            _SystemUtility::outputDebugString(u"one,"_w);
        }
        EXPECT_EQ(channel.read(), "");
        std::thread([] { _SystemUtility::outputDebugString(u"other,"_w); }).join();
        EXPECT_EQ(channel.read(), "other,");
        _SystemUtility::outputDebugString(u"two"_w);
        throw 0;
    } catch (int) {
        EXPECT_EQ(channel.read(), "one,two");
    }
}

std::atomic<int> first{0};
std::atomic<int> second{0};

void countFirst(unsigned short int const *) {
    ++first;
}

void countSecond(unsigned short int const *) {
    ++second;
}

TEST(DebugChannel, CallsOneListenerAnEventWhileListenersChange) {
    morvane::platform::DebugListener const former = setDebugListener(countFirst);
    std::vector<std::thread> speakers;
    for (int number = 0; number < 3; ++number) {
        speakers.emplace_back([] {
            for (int event = 0; event < 2000; ++event) {
                _SystemUtility::outputDebugString(u"event"_w);
            }
        });
    }
    for (int change = 0; change < 1000; ++change) {
        EXPECT_EQ(setDebugListener(change % 2 == 0 ? countSecond : countFirst),
                  change % 2 == 0 ? countFirst : countSecond);
    }
    for (std::thread & speaker : speakers) {
        speaker.join();
    }
    EXPECT_EQ(first + second, 6000);
    setDebugListener(nullptr);
    EXPECT_FALSE(morvane::platform::isDebugListening());
    _SystemUtility::outputDebugString(u"nobody hears this"_w);
    setDebugListener([](unsigned short int const *) { throw 5; });
    EXPECT_THROW(_SystemUtility::outputDebugString(u""_w), int);
    setDebugListener(former);
}

TEST(CriticalSection, AdmitsOneThreadAtATime) {
    constinit static _RTL_CRITICAL_SECTION section;
    // The lone thread enters without an atomic instruction; the one that it starts must find the lock held.
    section.enter();
    long count = 0;
    std::atomic<bool> inside{false};
    std::thread waiting([&] {
        section.enter();
        inside = true;
        ++count;
        section.leave();
    });
    for (int spin = 0; spin < 1000; ++spin) {
        EXPECT_FALSE(inside);
        std::this_thread::yield();
    }
    ++count;
    section.leave();
    waiting.join();
    EXPECT_EQ(count, 2);
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&count] {
            for (int round = 0; round < 20000; ++round) {
                section.enter();
                ++count;
                section.leave();
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 80002);
}

} // namespace

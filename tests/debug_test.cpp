#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <morvane/morvane.h>
#include <morvane/platform/debug_output.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace morvane::literals;
using morvane::platform::DebugBatch;
using morvane::platform::setDebugListener;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

/// Runs the work in several threads at once while this one goes on with its own.
void runInThreads(int count, std::function<void()> const & work, std::function<void()> const & own) {
    std::vector<std::jthread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back(work);
    }
    own();
}

TEST(DebugChannel, WritesUtf8ToStandardError) {
    std::pair<unsigned short int const *, char const *> const cases[] = {
        {u"plain \r\n"_w, "plain \r\n"},
        {u"\u007F\u0080\u07FF\u0800\uFFFF"_w, "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {u"\U00010000\U0010FFFF"_w, "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {u"\xD800"_w, "\xEF\xBF\xBD"},
        {u"\xD800\xD800x\xDC00\xD800"_w, "\xEF\xBF\xBD\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD"},
        {u""_w, ""},
        {nullptr, ""},
    };
    for (auto const & [text, bytes] : cases) {
        CaptureStderr();
        _SystemUtility::outputDebugString(text);
        EXPECT_EQ(GetCapturedStderr(), bytes);
    }
}

TEST(DebugChannel, WritesALongEventWholeThroughANarrowPipe) {
    int const standardError = dup(STDERR_FILENO);
    int ends[2]{};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    std::string received;
    std::jthread reader([&received, end = ends[0]] {
        char bytes[777];
        for (ssize_t count = 0; (count = read(end, bytes, sizeof bytes)) > 0;) {
            received.append(bytes, static_cast<std::size_t>(count));
        }
    });
    std::vector<unsigned short int> text(200000, 0x20AC);
    text.back() = 0;
    errno = EDOM;
    _SystemUtility::outputDebugString(text.data());
    EXPECT_EQ(errno, EDOM);
    dup2(standardError, STDERR_FILENO);
    reader.join();
    close(standardError);
    close(ends[0]);
    ASSERT_EQ(received.size(), 3 * (text.size() - 1));
    for (std::size_t index = 0; index < received.size(); ++index) {
        ASSERT_EQ(received[index], "\xE2\x82\xAC"[index % 3]);
    }
}

TEST(DebugChannel, OutlivesAPipeThatNobodyReads) {
    int const standardError = dup(STDERR_FILENO);
    int ends[2]{};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    _SystemUtility::outputDebugString(u"nobody reads this"_w);
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST(DebugChannel, HandsABatchOverWhenItsOutermostEnds) {
    CaptureStderr();
    try {
        DebugBatch const outer;
        {
            DebugBatch const inner;
            _SystemUtility::outputDebugString(u"one,"_w);
        }
        std::thread([] { _SystemUtility::outputDebugString(u"other,"_w); }).join();
        _SystemUtility::outputDebugString(u"two"_w);
        throw 0;
    } catch (int) {
        EXPECT_EQ(GetCapturedStderr(), "other,one,two");
    }
}

std::atomic<int> heard[2];

template <int listener>
void count(unsigned short int const *) {
    ++heard[listener];
}

TEST(DebugChannel, CallsOneListenerAnEventWhileListenersChange) {
    morvane::platform::DebugListener const former = setDebugListener(count<0>);
    auto const speak = [] {
        for (int event = 0; event < 2000; ++event) {
            _SystemUtility::outputDebugString(u"event"_w);
        }
    };
    runInThreads(3, speak, [] {
        for (int change = 0; change < 1000; ++change) {
            EXPECT_EQ(setDebugListener(change % 2 == 0 ? count<1> : count<0>), change % 2 == 0 ? count<0> : count<1>);
        }
    });
    EXPECT_EQ(heard[0] + heard[1], 6000);
    setDebugListener(nullptr);
    EXPECT_FALSE(morvane::platform::isDebugListening());
    _SystemUtility::outputDebugString(u"nobody hears this"_w);
    setDebugListener([](unsigned short int const *) { throw 5; });
    EXPECT_THROW(_SystemUtility::outputDebugString(u""_w), int);
    setDebugListener(former);
}

TEST(CriticalSection, AdmitsOneThreadAtATime) {
    constinit static _RTL_CRITICAL_SECTION section;
    // The lone thread enters without an atomic instruction; those that it starts must find the lock held.
    section.enter();
    long count = 0;
    std::atomic<bool> inside{false};
    auto const work = [&] {
        for (int round = 0; round < 20000; ++round) {
            section.enter();
            inside = true;
            ++count;
            section.leave();
        }
    };
    runInThreads(4, work, [&] {
        for (int spin = 0; spin < 1000; ++spin) {
            EXPECT_FALSE(inside);
            std::this_thread::yield();
        }
        ++count;
        section.leave();
    });
    EXPECT_EQ(count, 80001);
}

} // namespace

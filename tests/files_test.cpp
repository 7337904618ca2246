// Long files, and dates behind the year 2038, on systems of 32 bits.
#define _FILE_OFFSET_BITS 64 // NOLINT(bugprone-reserved-identifier)
#define _TIME_BITS 64        // NOLINT(bugprone-reserved-identifier)

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <file_testing.h>
#include <gtest/gtest.h>
#include <morvane/core/literals.h>
#include <morvane/platform/fat_time.h>
#include <morvane/platform/last_error.h>
#include <morvane/streams/file_utility.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace morvane::literals;
using namespace morvane::platform;

namespace {

bool admitted(FileName const & name, std::uint32_t mode) {
    return _FileUtility::fileClose(_FileUtility::fileOpen(name, mode));
}

std::uint32_t modeOf(std::uint32_t access, std::uint32_t sharing) {
    return access | sharing << 4;
}

TEST_F(Files, OpenOnlyUnderNamesOfFiles) {
    std::filesystem::create_directory(folder.path("folder"));
    std::filesystem::create_symlink("folder", folder.path("link"));
    std::u16string const base = folder.path("").u16string();
    for (char const * const file : {"file", "\u00E9\u20AC\U0001F600"}) {
        FileName const name = folder.put(file, "text");
        EXPECT_TRUE(_FileUtility::fileExists(name) && admitted(name, 0));
    }
    for (std::u16string const & text : {base + u"link", base + u"file/", base + u"\xDE00", base + u"\xDE00\xD83D",
                                        base + std::u16string(5000, u'a'), std::u16string()}) {
        FileName const name(text);
        errno = 0;
        EXPECT_EQ(_FileUtility::fileOpen(name, 0), -1) << testing::PrintToString(text);
        EXPECT_NE(lastError(), 0);
        EXPECT_TRUE(_FileUtility::fileAge(name) == -1 && _FileUtility::fileCreate(name) == -1);
    }
    FileName const missing = folder.name("missing");
    EXPECT_TRUE(_FileUtility::fileOpen(missing, 0) == -1 && _FileUtility::fileGetAttr(missing) == -1);
    EXPECT_EQ(_FileUtility::fileSetAttr(missing, 0), ENOENT);
    EXPECT_TRUE(_FileUtility::fileCreate(nullptr) == -1 && _FileUtility::fileGetAttr(nullptr) == -1);
}

TEST_F(Files, OpenInTheModesOfTheTablesAlone) {
    FileName const name = folder.put("file", "text");
    for (std::uint32_t mode = 0; mode < 0x400; ++mode) {
        std::int32_t const handle = _FileUtility::fileOpen(name, mode);
        bool const opens = (mode & 3) < 3 && (mode >> 4 & 15) < 5;
        char byte = 'x';
        ASSERT_EQ(handle >= 0, opens) << mode;
        EXPECT_EQ(_FileUtility::fileRead(handle, &byte, 1), opens && (mode & 3) != 1 ? 1 : -1);
        EXPECT_EQ(_FileUtility::fileWrite(handle, &byte, 1), opens && (mode & 3) != 0 ? 1 : -1);
        EXPECT_EQ(_FileUtility::fileClose(handle), opens);
    }
}

TEST_F(Files, AdmitOpensThatAllowEachOther) {
    FileName const name = folder.put("file", "text");
    std::filesystem::create_symlink("file", folder.path("symbolic"));
    std::filesystem::create_hard_link(folder.path("file"), folder.path("hard"));
    // What a sharing admits, as bits: 1 read, 2 write. An access is one less than its bits.
    constexpr unsigned sharingBits[] = {0, 0, 1, 2, 3};
    for (unsigned index = 0; index < 15 * 15; ++index) {
        unsigned const access[] = {index % 3, index / 3 % 3};
        unsigned const sharing[] = {index / 9 % 5, index / 45};
        SCOPED_TRACE(testing::PrintToString(access) + testing::PrintToString(sharing));
        bool const admits =
            ((access[0] + 1) & ~sharingBits[sharing[1]]) == 0 && ((access[1] + 1) & ~sharingBits[sharing[0]]) == 0;
        std::int32_t const first = _FileUtility::fileOpen(name, modeOf(access[0], sharing[0]));
        FileName const second = folder.name(index % 2 == 0 ? "symbolic" : "hard");
        auto const isAdmitted = [&] { return admitted(second, modeOf(access[1], sharing[1])); };
        EXPECT_EQ(isAdmitted(), admits);
        auto const otherProcess = [&] {
            // The child closes what it inherited, the table with it; the parent's locks stay.
            for (int handle = 3; handle <= first; ++handle) {
                _FileUtility::fileClose(handle);
            }
            return isAdmitted() ? 1 : 0;
        };
        EXPECT_EQ(inChild(otherProcess), admits ? 1 : 0);
        EXPECT_EQ(_FileUtility::fileCreate(second), -1);
        ASSERT_TRUE(_FileUtility::fileClose(first));
    }
}

TEST_F(Files, HoldAnOpenAgainstAllOthersUntilTheyClose) {
    FileName const name = folder.put("file", "");
    std::int32_t const writer = _FileUtility::fileOpen(name, modeOf(1, 4));
    std::int32_t const reader = _FileUtility::fileOpen(name, modeOf(0, 4));
    std::int32_t const second = _FileUtility::fileOpen(name, modeOf(0, 4));
    EXPECT_FALSE(admitted(name, modeOf(0, 2))) << "somebody writes";
    EXPECT_TRUE(_FileUtility::fileClose(writer));
    std::int32_t const guard = _FileUtility::fileOpen(name, modeOf(0, 2));
    EXPECT_TRUE(_FileUtility::fileClose(reader));
    EXPECT_FALSE(admitted(name, modeOf(1, 4))) << "somebody forbids it";
    EXPECT_FALSE(admitted(name, modeOf(0, 0))) << "the second reader is still there";
    EXPECT_TRUE(_FileUtility::fileClose(guard) && admitted(name, modeOf(1, 4)));
    EXPECT_TRUE(_FileUtility::fileClose(second) && admitted(name, modeOf(2, 0)));
}

TEST_F(Files, AreOpenedOnceAmongRacingThreads) {
    FileName const name = folder.put("file", "");
    std::atomic<int> inside{0};
    auto const race = [&] {
        for (int step = 0; step < 500; ++step) {
            std::int32_t const handle =
                step % 2 == 0 ? _FileUtility::fileOpen(name, 0) : _FileUtility::fileCreate(name);
            if (handle >= 0) {
                EXPECT_EQ(++inside, 1);
                --inside;
                _FileUtility::fileClose(handle);
            }
        }
    };
    std::jthread const other(race);
    race();
}

TEST_F(Files, LeaveNothingBehindTheirHandle) {
    FileName const name = folder.put("file", "former text");
    std::int32_t const lost = _FileUtility::fileOpen(name, 0);
    close(lost);
    std::int32_t const handle = _FileUtility::fileCreate(name);
    EXPECT_EQ(handle, lost) << "an open that ended elsewhere is forgotten";
    EXPECT_EQ(fcntl(handle, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(_FileUtility::fileWrite(handle, "new", 3), 3);
    EXPECT_TRUE(_FileUtility::fileClose(handle));
    EXPECT_EQ(folder.get("file"), "new");
    char byte = 0;
    for (std::int32_t const bad : {handle, -1, 0x7FFFFFFF}) {
        EXPECT_FALSE(_FileUtility::fileClose(bad));
        EXPECT_TRUE(_FileUtility::fileRead(bad, &byte, 1) == -1 && _FileUtility::fileWrite(bad, &byte, 1) == -1);
        EXPECT_TRUE(_FileUtility::fileSeek(bad, 0, 0) == -1 && _FileUtility::fileGetDate(bad) == -1);
        EXPECT_EQ(_FileUtility::fileSetDate(bad, 0x50215000), EBADF);
    }
}

TEST_F(Files, SeekWithin31BitsAndStayWhereTheyCannot) {
    FileName const name = folder.put("file", "0123456789");
    std::filesystem::resize_file(folder.path("file"), 0x80000010u);
    std::int32_t const handle = _FileUtility::fileOpen(name, 2);
    constexpr std::int32_t last = 0x7FFFFFFF;
    struct {
        std::int32_t offset, origin, result;
    } const cases[] = {
        {5, 0, 5},    {2, 1, 7},          {-7, 1, 0},   {-1, 1, -1},        {0, 1, 0},      {-1, 0, -1},
        {0, 1, 0},    {3, 0, 3},          {0, 2, -1},   {0, 1, 3},          {-17, 2, last}, {1, 1, -1},
        {0, 1, last}, {-last - 1, 1, -1}, {0, 1, last}, {-last - 1, 2, 16}, {0, 3, -1},     {0, -1, -1},
        {0, 1, 16},   {last, 1, -1},      {0, 1, 16},   {last, 0, last},
    };
    for (auto const & [offset, origin, result] : cases) {
        EXPECT_EQ(_FileUtility::fileSeek(handle, offset, origin), result) << offset << ' ' << origin;
    }
    char bytes[64];
    EXPECT_EQ(_FileUtility::fileRead(handle, bytes, 8), 8) << "reading goes on beyond 2 GiB";
    EXPECT_EQ(_FileUtility::fileSeek(handle, 0, 1), -1);
    EXPECT_EQ(_FileUtility::fileWrite(handle, "x", 1), 1);
    EXPECT_TRUE(_FileUtility::fileRead(handle, bytes, 64) == 8 && _FileUtility::fileRead(handle, bytes, 64) == 0);
    EXPECT_EQ(_FileUtility::fileSeek(handle, -17, 1), last);
    EXPECT_TRUE(_FileUtility::fileClose(handle));
}

TEST_F(Files, TakeCountsBeyondTheLargestResult) {
    constexpr std::uint32_t count = 0xFFFFFFFF;
    if (sizeof(void *) == 4) {
        GTEST_SKIP() << "no buffer is so large";
    }
    void * const buffer =
        mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(buffer, MAP_FAILED);
    std::int32_t const handle = _FileUtility::fileOpen(folder.put("file", "0123456789"), 0);
    EXPECT_EQ(_FileUtility::fileRead(handle, buffer, count), 10);
    std::int32_t const sink = _FileUtility::fileOpen(u"/dev/null"_w, 2);
    EXPECT_EQ(_FileUtility::fileWrite(sink, buffer, count), 0x7FFFFFFF) << "the system moves less in one call";
    EXPECT_TRUE(_FileUtility::fileClose(handle) && _FileUtility::fileClose(sink));
    munmap(buffer, count);
}

TEST_F(Files, StayOffTheStandardStreams) {
    auto const openWithoutStreams = [name = folder.put("file", "")] {
        close(0);
        close(2);
        return _FileUtility::fileOpen(name, 2) > 2 && fcntl(2, F_GETFD) == -1 ? 0 : 1;
    };
    EXPECT_EQ(inChild(openWithoutStreams), 0);
}

TEST_F(Files, CarryTheAttributeBits) {
    std::filesystem::create_directory(folder.path("folder"));
    folder.put("file", "");
    chmod(folder.path("file").c_str(), 0664);
    chmod(folder.path("folder").c_str(), 0755);
    struct {
        char const * name;
        std::int32_t set, got;
        mode_t mode;
    } const cases[] = {{"file", 0x80, 0x80, 0664}, {"file", 0x21, 0x01, 0444}, {"file", 0x01, 0x01, 0444},
                       {"file", 0, 0x80, 0644},    {"file", 0x10, 0x80, 0644}, {"folder", 0x11, 0x11, 0555},
                       {"folder", 0, 0x10, 0755}};
    for (auto const & [name, set, got, mode] : cases) {
        EXPECT_EQ(_FileUtility::fileSetAttr(folder.name(name), set), 0);
        EXPECT_EQ(_FileUtility::fileGetAttr(folder.name(name)), got) << name << std::hex << set;
        EXPECT_EQ(static_cast<mode_t>(std::filesystem::status(folder.path(name)).permissions()), mode);
    }
}

/// Each test of dates begins with one.
void setZone(char const * rules) {
    setenv("TZ", rules, 1);
    tzset();
}

constexpr std::int32_t ageFrom(int year, int month, int day, int hour, int minute, int second) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>((year - 1980) << 9 | month << 5 | day) << 16
                                     | static_cast<std::uint32_t>(hour << 11 | minute << 5 | second / 2));
}

constexpr char const * centralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST_F(Files, GiveBackTheDateThatWasSet) {
    FileName const name = folder.put("file", "");
    for (char const * const rules :
         {"UTC0", centralEurope, "ACST-9:30ACDT,M10.1.0,M4.1.0/3", "PST8PDT,M3.2.0,M11.1.0"}) {
        setZone(rules);
        std::int32_t const handle = _FileUtility::fileOpen(name, 2);
        int refused = 0;
        // Every half hour of a leap year, so that both changes of the clock are met.
        for (int step = 0; step < 372 * 48; ++step) {
            int const day = step / 48;
            std::int32_t const age = ageFrom(2024, 1 + day / 31, 1 + day % 31, step / 2 % 24, step % 2 * 30, 58);
            std::int32_t const result = _FileUtility::fileSetDate(handle, age);
            refused += result == EINVAL ? 1 : 0;
            ASSERT_TRUE(result == EINVAL || (result == 0 && _FileUtility::fileGetDate(handle) == age)) << rules;
        }
        // Left out: the days that no month has, and the hour that the clock jumps over.
        EXPECT_EQ(refused, 6 * 48 + (rules == std::string("UTC0") ? 0 : 2)) << rules;
        EXPECT_EQ(_FileUtility::fileAge(name), _FileUtility::fileGetDate(handle));
        EXPECT_TRUE(_FileUtility::fileClose(handle));
    }
}

TEST_F(Files, TellDatesByTheRulesOfTheirOwnMoment) {
    FileName const name = folder.put("file", "");
    setZone(centralEurope);
    // No month, no day, no hour, minute or second, and an hour that the clock jumps over.
    for (std::int32_t const age :
         {ageFrom(2024, 0, 1, 0, 0, 0), ageFrom(2024, 13, 1, 0, 0, 0), ageFrom(2024, 1, 0, 0, 0, 0),
          ageFrom(2100, 2, 29, 0, 0, 0), ageFrom(2024, 1, 1, 24, 0, 0), ageFrom(2024, 1, 1, 0, 60, 0),
          ageFrom(2024, 1, 1, 0, 0, 60), ageFrom(2024, 3, 31, 2, 30, 0)}) {
        std::int64_t seconds = 0;
        EXPECT_FALSE(secondsFromFatTime(static_cast<std::uint32_t>(age), seconds)) << std::hex << age;
    }
    std::pair<std::int64_t, std::int32_t> const cases[] = {
        {315529200, ageFrom(1980, 1, 1, 0, 0, 0)},       {315529199, -1},  {-1, -1},
        {1705320001, ageFrom(2024, 1, 15, 13, 0, 0)}, // 12:00:01 UTC, winter
        {1721044803, ageFrom(2024, 7, 15, 14, 0, 2)}, // 12:00:03 UTC, summer
        {1729987200, ageFrom(2024, 10, 27, 2, 0, 0)}, // the clock shows it a first time
        {1729990800, ageFrom(2024, 10, 27, 2, 0, 0)}, // and again
        {4354815599, ageFrom(2107, 12, 31, 23, 59, 58)}, {4354815600, -1},
    };
    std::int32_t const handle = _FileUtility::fileOpen(name, 2);
    for (auto const & [seconds, age] : cases) {
        timespec const times[2] = {{12345, 6}, {seconds, 999999999}};
        futimens(handle, times);
        EXPECT_EQ(_FileUtility::fileAge(name), age) << seconds;
        EXPECT_EQ(_FileUtility::fileExists(name), age != -1);
        EXPECT_EQ(_FileUtility::fileSetDate(handle, age) == 0, age != -1);
        EXPECT_EQ(_FileUtility::fileGetDate(handle), age);
        struct stat status {};
        fstat(handle, &status);
        EXPECT_EQ(status.st_atim.tv_sec, 12345) << "other times stay";
    }
    EXPECT_TRUE(_FileUtility::fileClose(handle));
}

TEST(LastError, BelongsToItsThreadAndHasATextThatIsCut) {
    unsigned short int text[64];
    EXPECT_EQ(lastErrorText(ENOENT, text, 6) + text[4], 4u) << "cut, with room for a pair";
    EXPECT_EQ(lastErrorText(987654, text, 64) + text[0], 0u);
    EXPECT_EQ(lastErrorText(ENOENT, text, 0), 0u);
    setLastError(ENOENT);
    std::thread([] { setLastError(EIO); }).join();
    EXPECT_EQ(lastError(), ENOENT);
}

} // namespace

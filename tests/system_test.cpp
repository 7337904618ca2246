#include "temporary_folder.h"
#include "text_testing.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <morvane/core/windows_version.h>
#include <morvane/morvane.h>
#include <morvane/platform/last_error.h>
#include <morvane/platform/modules.h>
#include <morvane/platform/posix/utf8_text.h>
#include <morvane/platform/show_text.h>
#include <string>
#include <system_error>
#include <tuple>
#include <vector>

using namespace morvane::literals;
using namespace morvane::platform;

namespace {

std::filesystem::path const samplePath = MORVANE_SAMPLE_MODULE;
std::u16string const sampleName = samplePath.filename().u16string();

bool sampleIsLoaded() {
    return std::getenv("MORVANE_SAMPLE_MODULE") != nullptr;
}

std::u16string pathOf(HINSTANCE__ * module, std::size_t capacity = 4096) {
    std::vector<unsigned short int> buffer(capacity, 0xABCD);
    std::size_t const units = modulePath(module, buffer.data(), capacity);
    std::u16string const path = textOf(buffer.data());
    EXPECT_EQ(units, path.size());
    return path;
}

TEST(Modules, ComeAndGoWithTheirLoads) {
    ASSERT_FALSE(sampleIsLoaded());
    FileName const path(samplePath.u16string());
    HINSTANCE__ * const module = loadModule(path);
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(sampleIsLoaded());
    for (HINSTANCE__ * const again : {loadModule(path), findModule(FileName(sampleName)), findModule(path)}) {
        EXPECT_EQ(again, module);
    }
    EXPECT_EQ(pathOf(module), samplePath.u16string());
    EXPECT_TRUE(unloadModule(module) && sampleIsLoaded());
    EXPECT_TRUE(unloadModule(module) && !sampleIsLoaded());
    EXPECT_TRUE(findModule(FileName(sampleName)) == nullptr && findModule(path) == nullptr);

    // A handle that has become stale, or never was one, does no harm.
    int stranger = 0;
    for (HINSTANCE__ * const handle :
         {module, static_cast<HINSTANCE__ *>(nullptr), reinterpret_cast<HINSTANCE__ *>(&stranger)}) {
        EXPECT_FALSE(unloadModule(handle));
        EXPECT_TRUE(handle == nullptr || pathOf(handle).empty());
    }
}

TEST(Modules, ThatCannotBeLoadedLeaveALastError) {
    TemporaryFolder const folder;
    for (FileName const & name :
         {folder.name("missing.so"), folder.put("text.so", "no module"), FileName(u""), FileName(u"\xD800.so")}) {
        EXPECT_EQ(loadModule(name), nullptr);
        EXPECT_NE(errno, 0);
    }
    EXPECT_EQ(loadModule(nullptr), nullptr);
}

TEST(Utf8Names, AreReadLenientlyAndCut) {
    std::tuple<char const *, std::size_t, std::u16string> const rows[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", 16, u"a\u00E9\u20AC\U0001F600z"},
        {"\xC0\x80", 16, u"\xFFFD\xFFFD"},
        {"\xE0\x80\x80/", 16, u"\xFFFD\xFFFD\xFFFD/"},
        {"\xED\xA0\x80", 16, u"\xFFFD\xFFFD\xFFFD"},
        {"\xF4\x90\x80\x80", 16, u"\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"\xFFz\xE2\x82", 16, u"\uFFFDz\uFFFD\uFFFD"},
        {"abc", 3, u"ab"},
        {"abc", 1, u""},
        {"\xF0\x9F\x98\x80", 2, u"\xD83D"},
    };
    for (auto const & [bytes, capacity, expected] : rows) {
        std::vector<unsigned short int> buffer(capacity, 0xABCD);
        EXPECT_EQ(widenUtf8(bytes, buffer.data(), capacity), expected.size());
        EXPECT_EQ(textOf(buffer.data()), expected) << bytes;
    }
}

TEST(ModuleFileName, IsCutAt255Units) {
    TemporaryFolder const folder;
    std::filesystem::path deep = folder.path("");
    while (deep.u16string().size() < 300) {
        deep /= std::u16string(40, u'\u20AC');
        std::filesystem::create_directory(deep);
    }
    deep /= samplePath.filename();
    std::filesystem::copy_file(samplePath, deep);
    HINSTANCE__ * const module = loadModule(FileName(deep.u16string()));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(pathOf(module), deep.u16string());
    EXPECT_EQ(textOf(_SystemUtility::getModuleFileName(module)), deep.u16string().substr(0, 255));
    EXPECT_TRUE(unloadModule(module));
    EXPECT_TRUE(_SystemUtility::getModuleFileName(module).isEmpty());
}

TEST(CurrentDirectory, IsThatOfTheLibraryModuleOrOfTheProgram) {
    std::filesystem::path const program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(textOf(_SystemUtility::getModuleFileName(nullptr)), program.u16string());
    EXPECT_EQ(textOf(_SystemUtility::getCurrentDirectory()), program.parent_path().u16string() + u"/");
    HINSTANCE__ * const module = loadModule(FileName(samplePath.u16string()));
    EXPECT_EQ(textOf(_SystemUtility::getCurrentDirectory()), samplePath.parent_path().u16string() + u"/");
    EXPECT_TRUE(unloadModule(module));
}

TEST(FilePath, KeepsDriveAndDirectory) {
    std::u16string const longest(255, u'd');
    std::pair<std::u16string, std::u16string> const rows[] = {{u"c:\\folder\\name.txt", u"c:\\folder\\"},
                                                              {u"name", u""},
                                                              {u"", u""},
                                                              {u"c:name", u"c:"},
                                                              {u":", u""},
                                                              {u"::", u"::"},
                                                              {u"/", u"/"},
                                                              {u"a\\b/c\\d", u"a\\b/c\\"},
                                                              {u"a/b\\c/d", u"a/b\\c/"},
                                                              {longest.substr(1) + u"/name", longest.substr(1) + u"/"},
                                                              {longest + u"/name", longest},
                                                              {u"c:" + longest + longest + u"/name", u"c:" + longest},
                                                              {longest + longest, u""}};
    for (auto const & [path, expected] : rows) {
        EXPECT_EQ(textOf(_SystemUtility::filePath(FileName(path))), expected);
    }
    EXPECT_TRUE(_SystemUtility::filePath(nullptr).isEmpty());
}

TEST(WindowsVersion, IsReadFromTheVersionWord) {
    std::pair<std::uint32_t, TWindowsVersion> const rows[] = {
        {0x80000A03, windowsWin32s},  {0x80005A00, windowsWin32s},  {0x80000004, windows95},
        {0x80000006, windows95},      {0xC0000A04, windows98},      {0x80005A04, windowsMe},
        {0x80000B04, windowsUnknown}, {0x05650004, windowsNT4},     {0x00005A04, windowsNT4},
        {0x00000005, windows2000},    {0x00000105, windowsXP},      {0x00000205, windowsUnknown},
        {0x00000006, windowsUnknown}, {0x00000003, windowsUnknown}, {0, windowsUnknown},
    };
    for (auto const & [word, expected] : rows) {
        EXPECT_EQ(morvane::windowsVersionOf(word), expected) << std::hex << word;
    }
}

std::u16string shownText;

TEST(LastError, HasTheTextOfTheSystemAndIsShownByThePresenter) {
    TextPresenter const first =
        setTextPresenter([](unsigned short int const * text, unsigned short int const * caption) {
            shownText = textOf(caption) + u"|" + textOf(text);
        });
    std::filesystem::path const expected = "error|" + std::generic_category().message(ENOENT);
    setLastError(ENOENT);
    _SystemUtility::displayLastError();
    EXPECT_EQ(shownText, expected.u16string());
    EXPECT_NE(setTextPresenter(nullptr), nullptr);
    _SystemUtility::displayLastError();
    EXPECT_EQ(setTextPresenter(first), nullptr);

    testing::internal::CaptureStderr();
    showText(u"\xD83D\xDE00 \xDE00 \u00E9"_w, u"error"_w);
    showText(u"closed\n"_w, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: \U0001F600 \uFFFD \u00E9\n: closed\n");
}

} // namespace

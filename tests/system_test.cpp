#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <morvane/core/literals.h>
#include <morvane/platform/last_error.h>
#include <morvane/platform/modules.h>
#include <morvane/platform/show_text.h>
#include <morvane/platform/shown_text.h>
#include <string>

using namespace morvane::literals;
using namespace morvane::platform;

namespace {

/// A text of code units for the calls under test.
class Units {
public:
    Units(std::u16string const & text) : units(text.begin(), text.end()) { units.push_back(0); }
    operator unsigned short int const *() const { return units.data(); }

private:
    std::basic_string<unsigned short int> units;
};

std::u16string textOf(unsigned short int const * units) {
    std::u16string text;
    while (units != nullptr && *units != 0) {
        text.push_back(static_cast<char16_t>(*units++));
    }
    return text;
}

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

/// A fresh folder, gone at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "morvane-system-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    std::filesystem::path path;
};

TEST(Modules, ComeAndGoWithTheirLoads) {
    ASSERT_FALSE(sampleIsLoaded());
    HINSTANCE__ * const module = loadModule(Units(samplePath.u16string()));
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(sampleIsLoaded());
    EXPECT_EQ(loadModule(Units(samplePath.u16string())), module);
    EXPECT_EQ(findModule(Units(sampleName)), module);
    EXPECT_EQ(findModule(Units(samplePath.u16string())), module);
    EXPECT_EQ(pathOf(module), samplePath.u16string());

    EXPECT_TRUE(unloadModule(module));
    EXPECT_TRUE(sampleIsLoaded());
    EXPECT_TRUE(unloadModule(module));
    EXPECT_FALSE(sampleIsLoaded());
    EXPECT_EQ(findModule(Units(sampleName)), nullptr);
    EXPECT_EQ(findModule(Units(samplePath.u16string())), nullptr);

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
    std::filesystem::path const text = folder.path / "text.so";
    std::FILE * const file = std::fopen(text.c_str(), "w");
    std::fputs("no module", file);
    std::fclose(file);
    for (Units const & name :
         {Units((folder.path / "missing.so").u16string()), Units(text.u16string()), Units(u""), Units(u"\xD800.so")}) {
        EXPECT_EQ(loadModule(name), nullptr);
        EXPECT_NE(errno, 0);
    }
    EXPECT_EQ(loadModule(nullptr), nullptr);
}

} // namespace

// A fresh folder for the files of one test, and names as the library takes them.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// A file name in zero-closed 16-bit units.
class FileName {
public:
    explicit FileName(std::u16string const & text) : units(text.begin(), text.end()) { units.push_back(0); }

    // NOLINTNEXTLINE(google-explicit-constructor): the library takes bare pointers.
    operator unsigned short int const *() const { return units.data(); }

private:
    std::vector<unsigned short int> units;
};

/// Gone with all its files at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string text = (std::filesystem::temp_directory_path() / "morvane-XXXXXX").string();
        folder = mkdtemp(text.data());
    }
    TemporaryFolder(TemporaryFolder const &) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    TemporaryFolder & operator=(TemporaryFolder const &) = delete;

    std::filesystem::path path(std::string const & file) const { return folder / file; }
    FileName name(std::string const & file) const { return FileName(path(file).u16string()); }

    /// Makes a file with these bytes, and gives its name.
    FileName put(std::string const & file, std::string const & bytes) const {
        std::ofstream(path(file), std::ios::binary) << bytes;
        return name(file);
    }
    std::string get(std::string const & file) const {
        std::ifstream stream(path(file), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    std::filesystem::path folder;
};

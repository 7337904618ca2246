// Reads settings of the form key=value from a text file, sorts them, looks keys up, and carries them through a stream.

#include "console_program.h"
#include "console_text.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <iostream>
#include <morvane/morvane.h>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr char const * usage = "Usage: dictionary_report [--by-value] [--look-up KEY]... [--quiet] FILE\n";

constexpr char const * help = R"(
Reads the lines key=value of FILE, which is UTF-8, or UTF-16 with or without a mark, and prints them sorted. Lines without "=" are
passed over and counted. The items are then written to a stream and read back.

  --by-value       sorts by the values instead of the keys
  --look-up KEY    prints the value of KEY, whatever its case; may be given several times
  --quiet          hears no debug channel

Examples:
  dictionary_report --quiet examples/data/settings.txt
  dictionary_report --quiet --by-value --look-up WIDTH --look-up height examples/data/settings.txt
)";

struct Options {
    _DictionaryItem::DictionarySortFilter order = _DictionaryItem::sortByKey;
    std::vector<std::string> keys;
    bool quiet = false;
    std::string file;
};

bool readCommandLine(int count, char ** arguments, Options & options, bool & wantsHelp) {
    static option const longOptions[] = {
        {"by-value", no_argument, nullptr, 'v'},
        {"look-up", required_argument, nullptr, 'l'},
        {"quiet", no_argument, nullptr, 'q'},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    };
    for (int found = 0; (found = getopt_long(count, arguments, "h", longOptions, nullptr)) != -1;) {
        switch (found) {
        case 'v':
            options.order = _DictionaryItem::sortByValue;
            break;
        case 'l':
            options.keys.emplace_back(optarg);
            break;
        case 'q':
            options.quiet = true;
            break;
        case 'h':
            wantsHelp = true;
            return true;
        default:
            return false;
        }
    }
    if (count - optind != 1) {
        std::cerr << "dictionary_report: one FILE is needed\n";
        return false;
    }
    options.file = arguments[optind];
    return true;
}

/// The text of the file as UTF-8, told apart by its mark. Without one the library gives both readings; the bytes end
/// early at a zero byte where the text is made of 16-bit units.
std::string textOf(std::string const & name) {
    _DataString bytes;
    _WideString units;
    auto format = _StringUtility::formatUnknown;
    auto error = _StringUtility::utilErrorNone;
    try {
        if (!_StringUtility::loadStringFromFile(toUnits(name).arg(), bytes, units, format, error)) {
            throw Failure{name + ": there is no such file"};
        }
    } catch (int) {
        throw Failure{name + ": the file can't be opened, or has fewer than three bytes"};
    }
    bool const isUnits = format == _StringUtility::formatUnicode || format == _StringUtility::formatUnicodeBigEndian
                         || (format == _StringUtility::formatUnknown && bytes.get_length() < units.get_length());
    std::cout << name << ": "
              << (format != _StringUtility::formatUnknown ? toUtf8(_StringUtility::formatName(format).arg())
                  : isUnits                               ? "16-bit units without a mark"
                                                          : "bytes without a mark")
              << '\n';
    return isUnits ? toUtf8(units.arg()) : std::string(bytes.isEmpty() ? "" : bytes.get_data());
}

/// Adds every line that holds "="; gives the number of the other lines that are not empty.
std::size_t addLines(_MutableDictionary & dictionary, std::string_view text) {
    std::size_t others = 0;
    while (!text.empty()) {
        std::size_t const end = text.find('\n');
        std::string line(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.find('=') != std::string::npos) {
            dictionary.add(line.c_str());
        } else if (!line.empty()) {
            ++others;
        }
    }
    return others;
}

void lookUp(_MutableDictionary const & dictionary, std::string const & key) {
    // "-1" could be a value, so the index is asked for first.
    std::int32_t const index = dictionary.keyIndexNoCase(key.c_str());
    if (index < 0) {
        std::cout << "  " << key << " is not there\n";
        return;
    }
    _DictionaryItem const & item = *dictionary.getItem(index);
    std::cout << "  " << key << " is item " << index << ", " << item.customString(':').get_data() << '\n';
}

/// Writes all items to a stream in memory and reads them back through a small read-ahead buffer.
void carryThroughStream(_MutableDictionary const & dictionary) {
    std::size_t bytes = 0;
    for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
        _DictionaryItem const & item = *dictionary.getItem(index);
        bytes += 8 + item.getKey().get_length() + item.getValue().get_length();
    }
    _MemoryStream stream(static_cast<std::int32_t>(bytes));
    for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
        dictionary.getItem(index)->saveToStream(stream);
    }
    stream.seekToBegin();
    _MutableDictionary readBack;
    _Reader reader(stream, 64);
    for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
        _DataString const key = reader.readString();
        _DataString const value = reader.readString();
        readBack.add(key.get_data(), value.get_data());
    }
    std::cout << "stream: " << bytes << " bytes, read back "
              << (readBack.equals(&dictionary) ? "the same" : "DIFFERENT") << '\n';
}

void report(Options const & options) {
    _MutableDictionary dictionary;
    std::size_t const others = addLines(dictionary, textOf(options.file));
    std::cout << "  items: " << dictionary.getCount() << ", other lines: " << others << '\n';
    dictionary.sortBy(options.order);
    std::cout << dictionary.customString(" = ", "\n").get_data();
    for (std::string const & key : options.keys) {
        lookUp(dictionary, key);
    }
    carryThroughStream(dictionary);
}

} // namespace

int main(int count, char ** arguments) {
    return runProgram<Options>({"dictionary_report", usage, help}, count, arguments, readCommandLine, report);
}

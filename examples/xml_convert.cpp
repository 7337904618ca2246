// Converts an XML document from one charset to another, and tells what it holds.

#include "console_program.h"
#include "console_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <getopt.h>
#include <iostream>
#include <morvane/morvane.h>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

using namespace morvane::literals;

namespace {

constexpr char const * usage =
    "Usage: xml_convert [--charset NAME] [--indent TEXT] [--line-end lf|crlf] [--tree] [--quiet] INPUT [OUTPUT]\n";

constexpr char const * help = R"(
Reads the XML document INPUT, tells its charset and what it holds, and saves it to OUTPUT where one is named. The declaration
in OUTPUT names the charset that it is written in.

  --charset NAME       the charset of OUTPUT: us-ascii, utf-8, utf-16, iso-10646-ucs-2, iso-8859-1 to iso-8859-9 or
                       iso-8859-15; without it the charset of INPUT
  --indent TEXT        one step of indentation, two blanks without it; \t stands for a tab
  --line-end lf|crlf   the line end of OUTPUT, crlf without it
  --tree               prints the nodes: depth, kind, name, attributes and the beginning of each text
  --quiet              hears no debug channel; without it the reader's traces go to standard error

A document that the reader could not read to its end is not saved. The exit status is 0, 1 when INPUT can't be read whole or
OUTPUT can't be written, and 2 for a wrong command line.

Examples:
  xml_convert --quiet --charset utf-8 --line-end lf examples/data/catalogue-iso-8859-5.xml catalogue.xml
  xml_convert --quiet --tree examples/data/scripts.xml
)";

struct Options {
    std::string charset;
    _WideString indent{u"  "_w};
    _WideString lineEnd{u"\r\n"_w};
    bool tree = false;
    bool quiet = false;
    std::string input;
    std::string output;
};

class Stopwatch {
public:
    [[nodiscard]] double milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// The text with a tab for each "\t" in it, which is hard to type in a shell.
std::string withTabs(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool const isTab = text.substr(at, 2) == "\\t";
        result += isTab ? '\t' : text[at];
        at += isTab ? 1 : 0;
    }
    return result;
}

/// Fills `options` from the command line; false when it is wrong.
bool readCommandLine(int count, char ** arguments, Options & options, bool & wantsHelp) {
    static std::array<option, 7> const longOptions{{
        {"charset", required_argument, nullptr, 'c'},
        {"indent", required_argument, nullptr, 'i'},
        {"line-end", required_argument, nullptr, 'l'},
        {"tree", no_argument, nullptr, 't'},
        {"quiet", no_argument, nullptr, 'q'},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    }};
    for (int found = 0; (found = getopt_long(count, arguments, "h", longOptions.data(), nullptr)) != -1;) {
        switch (found) {
        case 'c':
            options.charset = optarg;
            break;
        case 'i':
            options.indent = toUnits(withTabs(optarg));
            break;
        case 'l':
            if (std::string_view(optarg) == "lf") {
                options.lineEnd = u"\n"_w;
            } else if (std::string_view(optarg) != "crlf") {
                std::cerr << "xml_convert: --line-end takes lf or crlf\n";
                return false;
            }
            break;
        case 't':
            options.tree = true;
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
    if (count - optind < 1 || count - optind > 2) {
        std::cerr << "xml_convert: one INPUT and at most one OUTPUT are needed\n";
        return false;
    }
    options.input = arguments[optind];
    options.output = count - optind == 2 ? arguments[optind + 1] : "";
    return true;
}

/// Whether documents of this charset can be read and written; the table of charsets names more than that.
bool isServed(DOM::XMLCharset charset) {
    return charset <= DOM::charsetUCS2 || (charset >= DOM::charsetISO8859_1 && charset <= DOM::charsetISO8859_9)
           || charset == DOM::charsetISO8859_15;
}

std::string nameOf(DOM::XMLCharset charset) {
    return toUtf8(DOM::_XMLDocument::charsetToWideString(charset).arg());
}

/// The charset of that name. The library's own look-up answers an unknown name with UTF-8, so the name is held against
/// the answer.
DOM::XMLCharset charsetNamed(std::string const & name) {
    _WideString const wanted = toUnits(name);
    DOM::XMLCharset const charset = DOM::_XMLDocument::wideStringToCharset(wanted.arg());
    if (wanted.compareNoCase(DOM::_XMLDocument::charsetToWideString(charset).arg()) != 0) {
        throw Failure{"unknown charset: " + name};
    }
    if (!isServed(charset)) {
        throw Failure{"documents can't be written in " + nameOf(charset)};
    }
    return charset;
}

std::uintmax_t sizeOfFile(std::string const & name) {
    std::error_code error;
    std::uintmax_t const size = std::filesystem::file_size(name, error);
    return error ? 0 : size;
}

void load(DOM::_XMLDocument & document, std::string const & name) {
    _WideString const wideName = toUnits(name);
    if (!_FileUtility::fileExists(wideName.arg())) {
        throw Failure{name + ": there is no such file"};
    }
    _WideString error;
    bool isLoaded = false;
    try {
        isLoaded = document.loadFromFile(wideName.arg(), error);
    } catch (int) {
        std::error_code failure;
        bool const isShort = std::filesystem::file_size(name, failure) < 3 && !failure;
        throw Failure{name
                      + (isShort ? ": a file of fewer than three bytes is no document" : ": the file can't be opened")};
    }
    if (isLoaded) {
        return;
    }
    if (!isServed(document.get_encoding())) {
        throw Failure{name + ": documents in " + nameOf(document.get_encoding()) + " can't be read"};
    }
    throw Failure{name + ": this is no XML document ("
                  + (error.isEmpty() ? "nothing that makes a node" : toUtf8(error.arg())) + ")"};
}

/// Whether a tag is a document type without an internal subset: the scanner runs on to the "]>" of something else
/// behind it.
bool isOverlongDocumentType(unsigned short int const * tag) {
    for (char const expected : std::string_view("<!DOCTYPE")) {
        if (*tag++ != static_cast<unsigned char>(expected)) {
            return false;
        }
    }
    while (*tag != '[' && *tag != '>' && *tag != 0) {
        ++tag;
    }
    return *tag != '[';
}

/// The line, counted from 1, from which on the reader took nothing into the tree; 0 when it read to the end.
///
/// The reader gives up without a word at markup that it doesn't know. Its scanner is public, so the same road is walked
/// again.
std::size_t lineOfEarlyEnd(std::string const & name) {
    auto * const listener = morvane::platform::setDebugListener(nullptr);
    _WideString error;
    _WideString text;
    _WideString decoded;
    DOM::XMLCharset charset = DOM::charsetUTF8;
    DOM::_XMLDocument::loadStringFromFile(toUnits(name).arg(), error, charset, text);
    morvane::platform::setDebugListener(listener);
    _StringUtility::convertWideStringToWideString(text.arg(), decoded, _StringUtility::operationDecode, 127);

    unsigned short int const * const units = decoded.arg();
    _WideStringParser parser(units);
    std::int32_t start = 0;
    std::int32_t end = 0;
    std::int32_t readTo = 0;
    while (parser.nextTag(start, end, _WideStringParser::docTypeXML) && end >= start
           && !isOverlongDocumentType(units + start)) {
        readTo = end + 1;
    }
    std::int32_t unread = readTo;
    while (units[unread] == ' ' || units[unread] == '\t' || units[unread] == '\r' || units[unread] == '\n') {
        ++unread;
    }
    if (units[unread] == 0) {
        return 0;
    }
    std::size_t line = 1;
    for (std::int32_t index = 0; index < unread; ++index) {
        line += units[index] == '\n' ? 1 : 0;
    }
    return line;
}

char const * kindOf(DOM::_XMLNode const & node) {
    switch (node.get_nodeType()) {
    case DOM::ELEMENT_NODE:
        return "element";
    case DOM::TEXT_NODE:
        return "text";
    case DOM::CDATA_SECTION_NODE:
        return "CDATA section";
    case DOM::PROCESSING_INSTRUCTION_NODE:
        return "processing instruction";
    case DOM::COMMENT_NODE:
        return "comment";
    default:
        return "other node";
    }
}

DOM::_XMLNamedNodeMap const * attributesOf(DOM::_XMLNode const & node) {
    switch (node.get_nodeType()) {
    case DOM::ELEMENT_NODE:
        return static_cast<DOM::_XMLElement const &>(node).get_attributes();
    case DOM::PROCESSING_INSTRUCTION_NODE:
        return static_cast<DOM::_XMLProcessingInstruction const &>(node).get_attributes();
    default:
        return nullptr;
    }
}

/// The beginning of a text in quotes, with its line breaks and tabs made visible.
std::string shortened(_WideString const & text) {
    constexpr std::int32_t longest = 48;
    std::string shown = "\"";
    for (char const byte : toUtf8(text.left(longest).arg())) {
        switch (byte) {
        case '\n':
            shown += "\\n";
            break;
        case '\r':
            shown += "\\r";
            break;
        case '\t':
            shown += "\\t";
            break;
        default:
            shown += byte;
        }
    }
    return shown + (text.get_length() > longest ? "\"..." : "\"");
}

/// One line of the tree. The indentation stops growing at some depth: a deep tree must not print a quadratic number of
/// blanks.
void printNode(DOM::_XMLNode & node, std::size_t depth) {
    constexpr std::size_t deepest = 16;
    std::cout << std::string(2 + 2 * std::min(depth, deepest), ' ') << depth << ' ' << kindOf(node);
    if (_WideString const name = node.get_nodeName(); !name.isEmpty()) {
        std::cout << ' ' << toUtf8(name.arg());
    }
    if (auto const * const attributes = attributesOf(node)) {
        for (std::uint32_t index = 0; index < attributes->getNamedNodeCount(); ++index) {
            DOM::_XMLNode & attribute = *attributes->getNamedNode(index);
            std::cout << ' ' << toUtf8(attribute.get_nodeName().arg()) << '=' << shortened(attribute.get_nodeValue());
        }
    }
    if (_WideString const value = node.get_nodeValue(); !value.isEmpty()) {
        std::cout << ' ' << shortened(value);
    }
    std::cout << '\n';
}

struct Counts {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t texts = 0;
    std::size_t sections = 0;
    std::size_t comments = 0;
    std::size_t instructions = 0;

    void add(DOM::_XMLNode const & node) {
        switch (node.get_nodeType()) {
        case DOM::ELEMENT_NODE:
            ++elements;
            attributes += static_cast<DOM::_XMLElement const &>(node).getAttributeCount();
            break;
        case DOM::TEXT_NODE:
            ++texts;
            break;
        case DOM::CDATA_SECTION_NODE:
            ++sections;
            break;
        case DOM::COMMENT_NODE:
            ++comments;
            break;
        default:
            ++instructions;
        }
    }
};

/// Calls `visit(node, depth)` for every node of the document, in document order, with a stack of its own: a tree may be
/// deeper than the thread's stack is.
template <typename Visit>
void walk(DOM::_XMLDocument const & document, Visit visit) {
    struct Place {
        DOM::_XMLNode * node;
        std::size_t depth;
    };
    std::vector<Place> ahead;
    auto const pushChildren = [&ahead](_Container const & children, std::size_t depth) {
        for (std::uint32_t index = children.get_count(); index > 0; --index) {
            ahead.push_back({static_cast<DOM::_XMLNode *>(children.getObject(index - 1)), depth});
        }
    };
    pushChildren(*document.get_childNodes(), 0);
    while (!ahead.empty()) {
        auto const [node, depth] = ahead.back();
        ahead.pop_back();
        visit(*node, depth);
        if (node->get_nodeType() == DOM::ELEMENT_NODE) {
            pushChildren(*static_cast<DOM::_XMLElement const *>(node)->get_childElements(), depth + 1);
        }
    }
}

/// The bytes that one code unit takes in a file of this charset.
std::uintmax_t bytesOf(unsigned short int unit, DOM::XMLCharset charset) {
    switch (charset) {
    case DOM::charsetUSASCII: // &#x...; from 128 on
        return unit < 0x80 ? 1 : unit < 0x100 ? 6 : unit < 0x1000 ? 7 : 8;
    case DOM::charsetUTF8:
        return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
    case DOM::charsetUTF16:
    case DOM::charsetUCS2:
        return 2;
    default:
        return 1;
    }
}

std::uintmax_t bytesOfMark(DOM::XMLCharset charset) {
    return charset == DOM::charsetUTF8 ? 3 : charset == DOM::charsetUTF16 || charset == DOM::charsetUCS2 ? 2 : 0;
}

/// How many units of the text have no byte in a code page, and go out as "?".
std::size_t unitsWithoutByte(_WideString const & text, DOM::XMLCharset charset) {
    _DataString bytes;
    auto const format = static_cast<_StringUtility::StringFileFormat>(charset + 11);
    if (charset < DOM::charsetISO8859_1 || !_StringUtility::convertWideStringToDataString(text.arg(), bytes, format)) {
        return 0;
    }
    std::size_t count = 0;
    for (std::uint32_t index = 0; index < bytes.get_length(); ++index) {
        count += bytes.get_data()[index] == '?' && text.arg()[index] != '?' ? 1 : 0;
    }
    return count;
}

void save(DOM::_XMLDocument & document, std::string const & name, DOM::XMLCharset charset) {
    _WideString text;
    _WideString error;
    document.saveToString(text, error);
    Stopwatch const watch;
    bool isSaved = false;
    try {
        isSaved = DOM::_XMLDocument::saveStringToFile(toUnits(name).arg(), error, charset, text.arg());
    } catch (int) {
        throw Failure{name + ": the file can't be created"};
    }
    double const milliseconds = watch.milliseconds();
    // The library's save doesn't tell when the disk was full, so the size of the file is held against what it must be.
    std::uintmax_t expected = bytesOfMark(charset);
    for (unsigned short int const * unit = text.arg(); *unit != 0; ++unit) {
        expected += bytesOf(*unit, charset);
    }
    if (!isSaved || sizeOfFile(name) != expected) {
        throw Failure{name + ": the file could not be written whole"};
    }
    std::printf("%s: %ju bytes, %s, written in %.1f ms\n", name.c_str(), expected, nameOf(charset).c_str(),
                milliseconds);
    if (std::size_t const count = unitsWithoutByte(text, charset); count != 0) {
        std::printf("  %zu characters have no place in %s and were written as ?\n", count, nameOf(charset).c_str());
    }
}

void convert(Options const & options) {
    std::error_code ignored;
    if (!options.output.empty() && std::filesystem::equivalent(options.input, options.output, ignored)) {
        throw Failure{options.output + ": this is INPUT itself"};
    }
    auto const outputStatus = std::filesystem::status(options.output, ignored);
    if (!options.output.empty() && std::filesystem::exists(outputStatus)
        && !std::filesystem::is_regular_file(outputStatus)) {
        throw Failure{options.output + ": this is no regular file"};
    }
    DOM::XMLCharset charset = options.charset.empty() ? DOM::charsetUTF8 : charsetNamed(options.charset);

    DOM::_XMLDocument document;
    Stopwatch const watch;
    load(document, options.input);
    double const milliseconds = watch.milliseconds();

    DOM::XMLCharset const found = document.get_encoding();
    std::printf("%s: %ju bytes, %s, read in %.1f ms\n", options.input.c_str(), sizeOfFile(options.input),
                nameOf(found).c_str(), milliseconds);
    Counts counts;
    walk(document, [&counts](DOM::_XMLNode const & node, std::size_t) { counts.add(node); });
    std::printf("  elements: %zu, attributes: %zu, texts: %zu, CDATA sections: %zu, comments: %zu, processing "
                "instructions: %zu\n",
                counts.elements, counts.attributes, counts.texts, counts.sections, counts.comments,
                counts.instructions);
    if (options.tree) {
        walk(document, printNode);
    }

    if (std::size_t const line = lineOfEarlyEnd(options.input)) {
        throw Failure{options.input + ":" + std::to_string(line)
                      + ": the reader stopped here, what follows is not in the tree"};
    }
    if (!document.hasRoot()) {
        throw Failure{options.input + ": there is no root element"};
    }
    if (!options.output.empty()) {
        charset = options.charset.empty() ? found : charset;
        document.set_lineSpace(options.indent);
        document.set_lineTermination(options.lineEnd);
        document.set_encoding(charset);
        save(document, options.output, charset);
    }
}

} // namespace

int main(int count, char ** arguments) {
    return runProgram<Options>({"xml_convert", usage, help}, count, arguments, readCommandLine, convert);
}

#include "xml_model.h"

#include "text_model.h"

#include <algorithm>
#include <iterator>

namespace xml_model {

namespace {

bool isBlank(char16_t unit) {
    return unit == 9 || unit == 32;
}

bool isQuote(char16_t unit) {
    return unit == 34 || unit == 39;
}

char const * const charsets[] = {
    "us-ascii",    "utf-8",       "utf-16",      "iso-10646-ucs-2", "iso-10646-ucs-4", "iso-8859-1",
    "iso-8859-2",  "iso-8859-3",  "iso-8859-4",  "iso-8859-5",      "iso-8859-6",      "iso-8859-7",
    "iso-8859-8",  "iso-8859-9",  "iso-8859-10", "iso-8859-11",     "iso-8859-12",     "iso-8859-13",
    "iso-8859-14", "iso-8859-15", "iso-2022-jp", "shift_jis",       "euc-jp",          "big5",
    "gb231259-15", "koi6-r",      "iso-2022-kr", "euc-kr",          "iso-2022-cn"};

/// The next declaration from `position` on, which goes behind it.
std::optional<std::u16string> declaration(std::u16string const & text, std::size_t & position) {
    std::size_t const begin = text.find(u"<?xml", position);
    std::size_t const end = text.find(u"?>", position);
    if (begin == text.npos || end == text.npos) {
        return std::nullopt;
    }
    position = end + 2;
    return end < begin ? u"" : text.substr(begin, position - begin);
}

bool names(std::u16string const & text, int charset) {
    std::string const name = charsets[charset];
    return text.find(std::u16string(name.begin(), name.end())) != text.npos;
}

/// The charset that a declaration of 16-bit text names, lowest first; -1 for none.
int declaredWide(std::u16string const & text, bool lowers) {
    std::size_t position = 0;
    while (auto const found = declaration(text, position)) {
        for (int charset = 0; charset < 29; ++charset) {
            if (names(lowers ? text_model::lower(*found) : *found, charset)) {
                return charset;
            }
        }
    }
    return -1;
}

std::u16string attributeText(Node const & node) {
    std::u16string text;
    for (auto const & [name, value] : node.attributes) {
        text += u" " + name + u"=\"" + value + u"\"";
    }
    return text;
}

std::u16string repeated(std::u16string const & text, std::size_t count) {
    std::u16string result;
    for (; count != 0; --count) {
        result += text;
    }
    return result;
}

} // namespace

int Scanner::find(std::u16string const & sought, int from) const {
    auto const start = static_cast<std::size_t>(from);
    std::size_t const found = from >= length() ? text.npos : text.find(sought, start);
    return found >= text.find(u'\0', start) ? -1 : static_cast<int>(found);
}

std::u16string Scanner::mid(int from, int to) const {
    return text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from));
}

int Scanner::skipBlanks() {
    int const start = position;
    while (position < length() && isBlank(text[static_cast<std::size_t>(position)])) {
        ++position;
    }
    return position - start;
}

int Scanner::nextBlank() {
    if (position >= length()) {
        return -1;
    }
    while (position < length() && !isBlank(text[static_cast<std::size_t>(position)])) {
        ++position;
    }
    return position == length() ? -1 : position;
}

bool Scanner::nextTag(int & start, int & end, bool isXml) {
    start = find(u"<", position);
    bool const hasOpener = isXml && start != -1 && start < length() - 8;
    std::u16string const opener = hasOpener ? mid(start, start + 9) : u"";
    std::u16string const closing = opener == u"<!DOCTYPE" ? u"]>" : opener == u"<![CDATA[" ? u"]]>" : u">";
    end = isXml && start == -1 ? -1 : find(closing, position);
    end += end == -1 ? 0 : static_cast<int>(closing.size()) - 1;
    position = start == -1 || end == -1 ? position : end + 1;
    return start != -1 && end != -1;
}

bool Scanner::nextLine(std::u16string & line) {
    int const start = position;
    int const feed = find(u"\n", start);
    position = feed == -1 ? length() : feed + 1;
    if (start == (feed == -1 ? length() : feed)) {
        return false;
    }
    line = mid(start, position);
    std::erase(line, u'\r');
    std::erase(line, u'\n');
    // Appending unit by unit brings zeros to the end.
    std::stable_partition(line.begin(), line.end(), [](char16_t unit) { return unit != 0; });
    return true;
}

bool Scanner::nextCode(int & start, int & end) {
    start = find(u"&", position);
    if (start == -1) {
        return false;
    }
    end = find(u";", start);
    position = end == -1 ? start + 1 : end + 1;
    return end != -1;
}

std::vector<std::pair<std::u16string, bool>> Scanner::parseTags(bool isXml) {
    std::vector<std::pair<std::u16string, bool>> pieces;
    int pending = position;
    for (int start = 0, end = 0; nextTag(start, end, isXml) && end >= start; pending = end + 1) {
        if (pending < start) {
            pieces.emplace_back(mid(pending, start), false);
        }
        pieces.emplace_back(mid(start, end + 1), true);
    }
    return pieces;
}

std::vector<std::u16string> Scanner::parseStrings(bool holdsQuotes) {
    std::vector<std::u16string> words;
    bool isOpen = false;
    int start = 0;
    while (position < length()) {
        skipBlanks();
        start = isOpen ? start : position;
        int const blank = nextBlank();
        std::u16string const piece = mid(start, blank == -1 ? length() : blank);
        isOpen = holdsQuotes && blank != -1 && std::count_if(piece.begin(), piece.end(), isQuote) == 1;
        if (!isOpen) {
            words.push_back(text_model::upToZero(piece));
        }
        if (blank == -1) {
            break;
        }
    }
    return words;
}

std::optional<std::u16string> brokeTag(std::u16string const & inside, std::vector<Attribute> & attributes,
                                       std::vector<std::u16string> & traces) {
    std::vector<std::u16string> const tokens = Scanner{inside}.parseStrings(true);
    for (std::size_t index = 1; index < tokens.size(); ++index) {
        std::size_t const equals = tokens[index].find(u'=');
        if (equals != std::u16string::npos) {
            std::u16string const raw = tokens[index].substr(equals + 1);
            traces.push_back(raw);
            bool const isQuoted = raw.size() >= 2 && isQuote(raw.front()) && isQuote(raw.back());
            attributes.emplace_back(tokens[index].substr(0, equals), isQuoted ? raw.substr(1, raw.size() - 2) : u"");
        }
    }
    return tokens.empty() ? std::nullopt : std::optional(tokens[0]);
}

Tree read(std::u16string const & text) {
    auto const pieces = Scanner{text_model::upToZero(text_model::withoutReferences(text))}.parseTags(true);
    Tree tree;
    tree.pieces = pieces.size();
    std::size_t current = 0;
    auto const trace = [&tree](std::u16string const & event) { tree.traces.push_back(event); };
    auto const add = [&](int type, std::u16string const & name, std::u16string const & value) {
        tree.nodes[current].children.push_back(tree.nodes.size());
        tree.nodes.push_back({type, name, value, {}, current, {}});
    };
    auto const addBroken = [&](int type, std::u16string const & inside, bool traces) {
        std::vector<Attribute> all;
        std::u16string const name = brokeTag(inside, all, tree.traces).value_or(u"");
        add(type, name, u"");
        std::vector<Attribute> & merged = tree.nodes.back().attributes;
        traces ? trace(name) : void();
        for (Attribute const & attribute : all) {
            auto const found = std::find_if(merged.begin(), merged.end(), [&](Attribute const & other) {
                return text_model::lower(other.first) == text_model::lower(attribute.first);
            });
            found == merged.end() ? merged.push_back(attribute) : void(found->second = attribute.second);
            traces ? trace(attribute.first), trace(attribute.second) : void();
        }
    };
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        auto const & [tag, isTag] = pieces[index];
        auto const is = [&tag = tag](std::u16string_view opening, std::u16string_view closing) {
            return tag.size() >= opening.size() + closing.size() && tag.starts_with(opening) && tag.ends_with(closing);
        };
        auto const inside = [&tag = tag](std::size_t front, std::size_t back) {
            return tag.substr(front, tag.size() - front - back);
        };
        if (!isTag) {
            continue;
        }
        // A trace of a format is cut at its limit.
        trace((u"Data: " + tag + u"\r\n").substr(0, 32767));
        if (is(u"</", u">")) {
            trace(u"DOMElement:TAG_STATUS_ENDING");
            if (current != 0 && inside(2, 1) == tree.nodes[current].name) {
                if (tree.nodes[current].children.empty() && !pieces[index - 1].second) {
                    trace(u"DOMText");
                    add(3, u"", pieces[index - 1].first);
                }
                current = tree.nodes[current].parent;
            }
        } else if (is(u"<", u"/>")) {
            trace(u"TAG_STATUS_EMPTY");
            addBroken(1, inside(1, 2), true);
        } else if (is(u"<![CDATA[", u"]]>")) {
            trace(u"XMLCDATASection");
            add(4, u"", inside(9, 3));
        } else if (is(u"<!--", u"-->")) {
            trace(u"XMLComment");
            add(8, u"", inside(4, 3));
        } else if (is(u"<!DOCTYPE", u"]>")) {
            trace(u"XMLDocumentType");
        } else if (is(u"<?", u"?>")) {
            trace(u"DOMProcessingInstruction");
            addBroken(7, inside(2, 2), false);
        } else {
            trace(u"TAG_STATUS_BEGINNING");
            addBroken(1, inside(1, 1), false);
            current = tree.nodes.size() - 1;
        }
    }
    return tree;
}

std::u16string printed(Tree const & tree, std::u16string const & space, std::u16string const & lineEnd) {
    std::u16string text;
    std::vector<std::pair<std::size_t, std::size_t>> open; // an element and its next child
    auto const print = [&](std::size_t index) {
        Node const & node = tree.nodes[index];
        std::u16string const indent = repeated(space, open.size());
        std::u16string const head = indent + u"<" + node.name + attributeText(node);
        Node const * const only = node.children.size() == 1 ? &tree.nodes[node.children[0]] : nullptr;
        bool const hasText = only != nullptr && only->type == 3;
        if (node.type == 3) {
            text += node.value;
        } else if (node.type == 4) {
            text += indent + u"<![CDATA[" + node.value + u"]]>" + lineEnd;
        } else if (node.type == 7) {
            text += u"<?xml" + attributeText(node) + u"?>";
        } else if (node.type == 8) {
            text += indent + u"<!--" + node.value + u"-->" + lineEnd;
        } else if (node.children.empty() || (hasText && only->value.empty())) {
            text += head + u"/>" + lineEnd;
        } else if (hasText) {
            text += head + u">" + only->value + u"</" + node.name + u">" + lineEnd;
        } else {
            text += head + u">" + lineEnd;
            open.emplace_back(index, 0);
        }
    };
    std::size_t root = 0;
    for (std::size_t const child : tree.nodes[0].children) {
        if (tree.nodes[child].type == 7) {
            print(child);
            text += lineEnd;
        }
        root = root == 0 && tree.nodes[child].type == 1 ? child : root;
    }
    if (root != 0) {
        print(root);
    }
    while (!open.empty()) {
        Node const & node = tree.nodes[open.back().first];
        if (open.back().second < node.children.size()) {
            print(node.children[open.back().second++]);
        } else {
            open.pop_back();
            text += repeated(space, open.size()) + u"</" + node.name + u">" + lineEnd;
        }
    }
    return text;
}

Loading load(std::string const & bytes) {
    bool const isBig = bytes.starts_with("\xFE\xFF");
    if (isBig || bytes.starts_with("\xFF\xFE")) {
        std::u16string const wide = text_model::upToZero(text_model::unitsOf(bytes.substr(2), isBig));
        int const declared = declaredWide(wide, false);
        return {declared == -1 ? 2 : declared, wide, u""};
    }
    bool const isUtf8 = bytes.starts_with("\xEF\xBB\xBF");
    std::string const data = text_model::upToZero(bytes.substr(isUtf8 ? 3 : 0));
    std::u16string const widened = [&data] {
        std::u16string units;
        for (char const byte : data) {
            units += static_cast<unsigned char>(byte);
        }
        return units;
    }();
    std::u16string const wide = text_model::upToZero(text_model::unitsOf(bytes, false));
    int charset = 1;
    if (std::size_t position = 0; !isUtf8) {
        if (auto const found = declaration(widened, position)) {
            for (charset = 28; charset >= 0 && !names(text_model::lower(*found), charset);) {
                --charset;
            }
        } else {
            charset = declaredWide(wide, true);
        }
        charset = charset == -1 ? 1 : charset;
    }
    if (charset == 1) {
        std::string message;
        std::u16string const text = text_model::decodedUtf8(data, message);
        return message.empty() ? Loading{1, text_model::upToZero(text), u""}
                               : Loading{1, u"", u"utf-8 convertion error"};
    }
    std::u16string text = charset == 0 ? widened : charset < 4 ? wide : u"";
    if (charset >= 14 && charset <= 18) {
        return {charset, u"", u"charset conversion error"};
    }
    if (charset >= 5 && charset <= 19) {
        auto const & units = text_model::codePage(charset + 11);
        std::transform(widened.begin(), widened.end(), std::back_inserter(text), [&](char16_t c) { return units[c]; });
    }
    return {charset, text, u""};
}

std::optional<std::string> saved(std::u16string const & text, int charset) {
    if (charset == 0) {
        std::u16string const units = text_model::withReferences(text, 127);
        return std::string(units.begin(), units.end());
    }
    if (charset == 1) {
        return "\xEF\xBB\xBF" + text_model::encodedUtf8(text);
    }
    if (charset == 2 || charset == 3) {
        return "\xFF\xFE" + text_model::bytesOf(text, false);
    }
    bool const isCodePage = (charset >= 5 && charset <= 13) || charset == 19;
    return isCodePage ? std::optional(text_model::encodedCodePage(text, charset + 11)) : std::nullopt;
}

} // namespace xml_model

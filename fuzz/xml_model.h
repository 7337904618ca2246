// The scanner, the reader and the printer of documents, step by step as their contract tells them, without a thought
// for their cost.
#pragma once

#include "text_model.h"

#include <algorithm>
#include <iterator>
#include <morvane/xml/xml_document.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace xml_model {

inline constexpr std::size_t none = std::u16string::npos;

/// The search of a text, which its first zero unit ends.
inline std::size_t find(std::u16string const & text, std::u16string_view sought, std::size_t from) {
    std::size_t const found = text.find(sought, from);
    return found == none || text.substr(from, found - from).find(u'\0') != none ? none : found;
}

/// The bounds of the next tag, `none` for what is missing; `position` goes behind a tag that has both.
inline std::pair<std::size_t, std::size_t> nextTag(std::u16string const & text, std::size_t & position, bool isXml) {
    std::size_t const start = find(text, u"<", position);
    auto const isOpener = [&](std::u16string_view opener) {
        return isXml && start != none && text.compare(start, 9, opener) == 0;
    };
    std::u16string_view const closing = isOpener(u"<!DOCTYPE") ? u"]>" : isOpener(u"<![CDATA[") ? u"]]>" : u">";
    std::size_t end = isXml && start == none ? none : find(text, closing, position);
    end += end == none ? 0 : closing.size() - 1;
    position = start == none || end == none ? position : end + 1;
    return {start, end};
}

/// A text, and whether it is a tag.
using Piece = std::pair<std::u16string, bool>;

inline std::vector<Piece> parseTags(std::u16string const & text, std::size_t & position, bool isXml) {
    std::vector<Piece> pieces;
    for (std::size_t pending = position;; pending = position) {
        auto const [start, end] = nextTag(text, position, isXml);
        if (start == none || end == none || end < start) {
            return pieces;
        }
        if (pending < start) {
            pieces.emplace_back(text.substr(pending, start - pending), false);
        }
        pieces.emplace_back(text.substr(start, end + 1 - start), true);
    }
}

inline bool isQuote(char16_t unit) {
    return unit == u'"' || unit == u'\'';
}

inline std::vector<std::u16string> parseStrings(std::u16string const & text, std::size_t & position, bool holdsQuotes) {
    std::vector<std::u16string> words;
    bool isOpen = false;
    for (std::size_t start = 0; position < text.size();) {
        position = std::min(text.find_first_not_of(u" \t", position), text.size());
        start = isOpen ? start : position;
        std::size_t const blank = text.find_first_of(u" \t", position);
        position = std::min(blank, text.size());
        std::u16string const piece = text.substr(start, position - start);
        isOpen = holdsQuotes && blank != none && std::count_if(piece.begin(), piece.end(), isQuote) == 1;
        if (!isOpen) {
            words.push_back(text_model::upToZero(piece));
        }
        if (blank == none) {
            break;
        }
    }
    return words;
}

using Attribute = std::pair<std::u16string, std::u16string>;

/// The name and the attributes in the inside of a tag, those of one name not merged; nothing for empty text. The raw
/// values go to `traces`.
inline std::optional<std::u16string> brokeTag(std::u16string const & inside, std::vector<Attribute> & attributes,
                                              std::vector<std::u16string> & traces) {
    std::size_t position = 0;
    std::vector<std::u16string> const tokens = parseStrings(inside, position, true);
    for (std::size_t index = 1; index < tokens.size(); ++index) {
        std::size_t const equals = tokens[index].find(u'=');
        if (equals != none) {
            std::u16string const raw = tokens[index].substr(equals + 1);
            traces.push_back(raw);
            bool const isQuoted = raw.size() >= 2 && isQuote(raw.front()) && isQuote(raw.back());
            attributes.emplace_back(tokens[index].substr(0, equals), isQuoted ? raw.substr(1, raw.size() - 2) : u"");
        }
    }
    return tokens.empty() ? std::nullopt : std::optional(tokens[0]);
}

struct Node {
    int type; ///< the number of DOM Core
    std::u16string name;
    std::u16string value;
    std::size_t parent;
    std::vector<Attribute> attributes{};
    std::vector<std::size_t> children{};
};

/// Node 0 is the document.
struct Tree {
    std::vector<Node> nodes{{9, u"", u"", 0}};
    std::vector<std::u16string> traces{};
    std::size_t pieces = 0;

    void add(int type, std::u16string const & name, std::u16string const & value, std::size_t parent) {
        nodes[parent].children.push_back(nodes.size());
        nodes.push_back({type, name, value, parent});
    }
};

/// The forms of a tag in the order in which they are tried.
struct Form {
    std::u16string_view opening, closing, trace;
    int type; ///< of the node that it makes; 0 for an end tag
};
inline constexpr Form forms[] = {
    {u"</", u">", u"DOMElement:TAG_STATUS_ENDING", 0}, {u"<", u"/>", u"TAG_STATUS_EMPTY", 1},
    {u"<![CDATA[", u"]]>", u"XMLCDATASection", 4},     {u"<!--", u"-->", u"XMLComment", 8},
    {u"<!DOCTYPE", u"]>", u"XMLDocumentType", 10},     {u"<?", u"?>", u"DOMProcessingInstruction", 7},
    {u"<", u">", u"TAG_STATUS_BEGINNING", 1}};

/// What a text comes to, its references being resolved first.
inline Tree read(std::u16string const & text) {
    std::size_t position = 0;
    auto const pieces = parseTags(text_model::upToZero(text_model::withoutReferences(text)), position, true);
    Tree tree;
    tree.pieces = pieces.size();
    std::size_t current = 0;
    auto const addBroken = [&](int type, std::u16string const & inside, bool traces) {
        std::vector<Attribute> all;
        std::u16string const name = brokeTag(inside, all, tree.traces).value_or(u"");
        tree.add(type, name, u"", current);
        traces ? tree.traces.push_back(name) : void();
        for (Attribute const & attribute : all) {
            std::vector<Attribute> & merged = tree.nodes.back().attributes;
            auto const found = std::find_if(merged.begin(), merged.end(), [&](Attribute const & other) {
                return text_model::lower(other.first) == text_model::lower(attribute.first);
            });
            found == merged.end() ? merged.push_back(attribute) : void(found->second = attribute.second);
            tree.traces.insert(tree.traces.end(), traces ? 1U : 0U, attribute.first);
            tree.traces.insert(tree.traces.end(), traces ? 1U : 0U, attribute.second);
        }
    };
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        std::u16string const & tag = pieces[index].first;
        if (!pieces[index].second) {
            continue;
        }
        // A trace of a format is cut at its limit.
        tree.traces.push_back((u"Data: " + tag + u"\r\n").substr(0, 32767));
        Form const & form = *std::find_if(std::begin(forms), std::end(forms), [&tag](Form const & each) {
            return tag.size() >= each.opening.size() + each.closing.size() && tag.starts_with(each.opening)
                   && tag.ends_with(each.closing);
        });
        tree.traces.emplace_back(form.trace);
        std::u16string const inside =
            tag.substr(form.opening.size(), tag.size() - form.opening.size() - form.closing.size());
        if (form.type == 1 || form.type == 7) {
            addBroken(form.type, inside, form.closing == u"/>");
            current = form.closing == u">" ? tree.nodes.size() - 1 : current;
        } else if (form.type == 4 || form.type == 8) {
            tree.add(form.type, u"", inside, current);
        } else if (form.type == 0 && current != 0 && inside == tree.nodes[current].name) {
            if (tree.nodes[current].children.empty() && !pieces[index - 1].second) {
                tree.traces.emplace_back(u"DOMText");
                tree.add(3, u"", pieces[index - 1].first, current);
            }
            current = tree.nodes[current].parent;
        }
    }
    return tree;
}

/// A node and what stands under it, `indent` in front of each line.
inline std::u16string printed(Tree const & tree, Node const & node, std::u16string const & indent,
                              std::u16string const & space, std::u16string const & lineEnd) {
    std::u16string attributes;
    for (auto const & [name, value] : node.attributes) {
        attributes += u" " + name + u"=\"" + value + u"\"";
    }
    std::u16string inside;
    for (std::size_t const child : node.children) {
        inside += printed(tree, tree.nodes[child], indent + space, space, lineEnd);
    }
    bool const isText = node.children.size() == 1 && tree.nodes[node.children[0]].type == 3;
    std::u16string const head = u"<" + node.name + attributes;
    std::u16string const tail = u"</" + node.name + u">" + lineEnd;
    bool const isEmpty = node.children.empty() || (isText && inside.empty());
    return node.type == 3   ? node.value
           : node.type == 4 ? indent + u"<![CDATA[" + node.value + u"]]>" + lineEnd
           : node.type == 7 ? u"<?xml" + attributes + u"?>"
           : node.type == 8 ? indent + u"<!--" + node.value + u"-->" + lineEnd
           : isEmpty        ? indent + head + u"/>" + lineEnd
           : isText         ? indent + head + u">" + inside + tail
                            : indent + head + u">" + lineEnd + inside + indent + tail;
}

/// The declarations of a document, each in a line, and its first element.
inline std::u16string printed(Tree const & tree, std::u16string const & space, std::u16string const & lineEnd) {
    std::u16string text;
    std::u16string root;
    for (std::size_t const child : tree.nodes[0].children) {
        Node const & node = tree.nodes[child];
        text += node.type == 7 ? printed(tree, node, u"", space, lineEnd) + lineEnd : u"";
        root = root.empty() && node.type == 1 ? printed(tree, node, u"", space, lineEnd) : root;
    }
    return text + root;
}

/// The next declaration from `position` on, which goes behind it.
inline std::optional<std::u16string> declaration(std::u16string const & text, std::size_t & position) {
    std::size_t const begin = text.find(u"<?xml", position);
    std::size_t const end = text.find(u"?>", position);
    if (begin == none || end == none) {
        return std::nullopt;
    }
    position = end + 2;
    return end < begin ? u"" : text.substr(begin, position - begin);
}

inline bool declares(std::u16string const & text, int charset) {
    _WideString const name = DOM::_XMLDocument::charsetToWideString(static_cast<DOM::XMLCharset>(charset));
    return text.find(std::u16string(name.arg(), name.arg() + name.get_length())) != none;
}

/// What at least three bytes come to: the text, or the error.
struct Loading {
    int charset;
    std::u16string text;
    std::u16string error;
};

inline Loading load(std::string const & bytes) {
    bool const isBig = bytes.starts_with("\xFE\xFF");
    bool const isWide = isBig || bytes.starts_with("\xFF\xFE");
    bool const isUtf8 = bytes.starts_with("\xEF\xBB\xBF");
    std::u16string const wide = text_model::upToZero(text_model::unitsOf(bytes.substr(isWide ? 2 : 0), isBig));
    std::string const data = text_model::upToZero(bytes.substr(isUtf8 ? 3 : 0));
    std::u16string const widened = text_model::widened(data);
    int charset = -1;
    std::size_t position = 0;
    auto const first = isWide ? std::nullopt : declaration(widened, position);
    if (first && !isUtf8) {
        for (charset = 28; charset >= 0 && !declares(text_model::lower(*first), charset);) {
            --charset;
        }
    } else if (!isUtf8) {
        for (auto found = declaration(wide, position = 0); found && charset == -1;
             found = declaration(wide, position)) {
            for (int sought = 28; sought >= 0; --sought) {
                charset = declares(isWide ? *found : text_model::lower(*found), sought) ? sought : charset;
            }
        }
    }
    charset = charset != -1 ? charset : isWide ? 2 : 1;
    if (isWide || charset == 2 || charset == 3) {
        return {charset, wide, u""};
    }
    std::string message;
    std::u16string text = charset == 0 ? widened : charset == 1 ? text_model::decodedUtf8(data, message) : u"";
    if (charset >= 5 && charset <= 19) {
        text = text_model::decodedCodePage(data, charset + 11);
    }
    char16_t const * const error = !message.empty()                 ? u"utf-8 convertion error"
                                   : charset >= 14 && charset <= 18 ? u"charset conversion error"
                                                                    : u"";
    return {charset, *error != 0 ? u"" : text_model::upToZero(text), error};
}

/// The bytes of a file in that charset; nothing where it can't be written.
inline std::optional<std::string> saved(std::u16string const & text, int charset) {
    std::u16string const units = text_model::withReferences(text, 127);
    bool const isCodePage = (charset >= 5 && charset <= 13) || charset == 19;
    return charset == 0                   ? std::optional(std::string(units.begin(), units.end()))
           : charset == 1                 ? "\xEF\xBB\xBF" + text_model::encodedUtf8(text)
           : charset == 2 || charset == 3 ? "\xFF\xFE" + text_model::bytesOf(text, false)
           : isCodePage                   ? std::optional(text_model::encodedCodePage(text, charset + 11))
                                          : std::nullopt;
}

} // namespace xml_model

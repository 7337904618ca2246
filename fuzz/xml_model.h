// The scanner, the reader and the printer of documents, step by step as their contract tells them, without a thought
// for their cost.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace xml_model {

/// The scanning operations over a text, whose first zero unit ends it for a search.
struct Scanner {
    std::u16string text;
    int position = 0;

    int length() const { return static_cast<int>(text.size()); }
    int find(std::u16string const & sought, int from) const;
    std::u16string mid(int from, int to) const;

    int skipBlanks();
    int nextBlank();
    bool nextTag(int & start, int & end, bool isXml);
    bool nextLine(std::u16string & line);
    bool nextCode(int & start, int & end);
    /// The pieces; the flag of a tag is true.
    std::vector<std::pair<std::u16string, bool>> parseTags(bool isXml);
    std::vector<std::u16string> parseStrings(bool holdsQuotes);
};

using Attribute = std::pair<std::u16string, std::u16string>;

/// The name and the attributes in the inside of a tag, those of one name not merged; nothing for empty text. The raw
/// values go to `traces`.
std::optional<std::u16string> brokeTag(std::u16string const & inside, std::vector<Attribute> & attributes,
                                       std::vector<std::u16string> & traces);

struct Node {
    int type; ///< the number of DOM Core
    std::u16string name;
    std::u16string value;
    std::vector<Attribute> attributes;
    std::size_t parent = 0;
    std::vector<std::size_t> children;
};

/// Node 0 is the document.
struct Tree {
    std::vector<Node> nodes{{9, u"", u"", {}, 0, {}}};
    std::vector<std::u16string> traces;
    std::size_t pieces = 0;
};

/// What a text comes to, its references being resolved first.
Tree read(std::u16string const & text);

std::u16string printed(Tree const & tree, std::u16string const & space, std::u16string const & lineEnd);

/// What at least three bytes come to: the text, or the error.
struct Loading {
    int charset;
    std::u16string text;
    std::u16string error;
};
Loading load(std::string const & bytes);

/// The bytes of a file in that charset; nothing where it can't be written.
std::optional<std::string> saved(std::u16string const & text, int charset);

} // namespace xml_model

// Scanned markup, made into nodes.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/strings/tag_scanner.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/xml/attribute_index.h>
#include <morvane/xml/attribute_words.h>
#include <morvane/xml/growing_stack.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/xml_document.h>
#include <morvane/xml/xml_element.h>

namespace morvane {

/// A tag with its delimiters, or the text between two.
struct MarkupText {
    WideView text;
    bool isTag = false;
};

/// The pieces of a text as the scanner yields them, uncopied.
class ScannedPieces {
public:
    explicit ScannedPieces(WideView source) noexcept : text(source), scanner(source, TagScanner::Rules::xml) {}

    bool next(MarkupText & piece) noexcept {
        MarkupPiece bounds{};
        if (!scanner.next(bounds)) {
            return false;
        }
        yielded = true;
        piece = {text.part(bounds.begin, bounds.end - bounds.begin), bounds.isTag};
        return true;
    }
    /// The text in front of the first piece: none.
    WideView textBefore() const noexcept { return {}; }
    /// True when there was a piece.
    bool hasYielded() const noexcept { return yielded; }

private:
    WideView text;
    TagScanner scanner;
    bool yielded = false;
};

/// The pieces of a tag array from `index` on, which moves along.
class ArrayPieces {
public:
    ArrayPieces(_WideTagArray const & array, std::uint32_t & start);

    bool next(MarkupText & piece);
    /// The text in front of the first piece.
    WideView textBefore() const noexcept { return viewOf(text); }

private:
    _WideTagArray const & tags;
    std::uint32_t & index;
    _WideString text;
    _WideString tag;
};

/// Builds the tree of a document out of pieces of markup.
///
/// It knows no error: what doesn't fit is skipped. An element is linked when its end tag or the end of the pieces
/// arrives, behind its finished subtree. Cost: linear, in constant stack; no heap beside the nodes but for the stacks
/// of open elements and of nodes that wait for their parent. Errors: what making a node or the debug listener throws
/// passes through; nodes not yet linked are deleted then.
class TreeBuilder {
public:
    /// Builds the children of `parent`, or the top of `owner` if `parent` is null.
    TreeBuilder(DOM::_XMLDocument & owner, DOM::_XMLElement * parent) noexcept : document(owner), outermost(parent) {}
    TreeBuilder(TreeBuilder const &) = delete;
    ~TreeBuilder();

    TreeBuilder & operator=(TreeBuilder const &) = delete;

    /// Takes pieces up to the end tag of the parent or to their end, and gives the number of nodes that were linked,
    /// attributes not counted.
    template <typename Pieces>
    std::uint32_t build(Pieces & pieces) {
        WideView textBefore = pieces.textBefore();
        MarkupText piece;
        while (pieces.next(piece)) {
            if (!piece.isTag) {
                textBefore = piece.text;
                continue;
            }
            if (takeTag(piece.text, textBefore)) {
                return count;
            }
            textBefore = {};
        }
        while (!open.isEmpty()) {
            closeElement();
        }
        return count;
    }

private:
    using Node = DOM::_XMLNode;

    /// An element whose end tag is still to come, and the first of its children among those that wait.
    struct OpenElement {
        DOM::_XMLElement * element;
        std::size_t firstChild;
    };

    bool takeTag(WideView tag, WideView textBefore);
    void takeOtherTag(WideView tag);
    bool endElement(WideView name, WideView textBefore);
    void closeElement();
    void takeElement(WideView text, bool isEmptyElement);
    void takeProcessingInstruction(WideView text);
    void readAttributes(WordSplitter & words, bool tracesEach);
    template <typename Class>
    std::unique_ptr<Class> make(NodeTexts const & texts) {
        return NodeAccess::make<Class>(&document, current(), texts);
    }
    template <typename Owner>
    void makeAttributes(Owner & owner);
    template <typename Class>
    void link(std::unique_ptr<Class> node);
    DOM::_XMLElement * current() noexcept { return open.isEmpty() ? outermost : open.top().element; }

    DOM::_XMLDocument & document;
    DOM::_XMLElement * outermost;
    GrowingStack<OpenElement, 64> open;
    /// Finished nodes of the open elements, those of the innermost behind the others.
    GrowingStack<Node *, 256> waiting;
    AttributeIndex attributes;
    std::uint32_t count = 0;
};

} // namespace morvane

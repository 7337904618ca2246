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

/// A tag with its delimiters, and the text directly before it.
struct Markup {
    WideView textBefore;
    WideView tag;
    /// So many units in front of the tag may be read too: a look that reaches behind its end can begin there.
    std::size_t unitsBefore = 0;
};

/// The tags of a text as the scanner yields them, uncopied.
class ScannedPieces {
public:
    explicit ScannedPieces(WideView source) noexcept : text(source), scanner(source, TagScanner::Rules::xml) {}

    bool next(Markup & markup) noexcept {
        std::size_t const former = scanner.position();
        std::size_t begin = 0;
        std::size_t last = 0;
        if (scanner.findTag(begin, last) != TagScanner::Found::tag) {
            return false;
        }
        yielded = true;
        markup = {text.part(former, begin - former), text.part(begin, last - begin + 1), begin};
        return true;
    }
    /// True when there was a tag.
    bool hasYielded() const noexcept { return yielded; }

private:
    WideView text;
    TagScanner scanner;
    bool yielded = false;
};

/// The tags of a tag array from `index` on, which moves along.
class ArrayPieces {
public:
    ArrayPieces(_WideTagArray const & array, std::uint32_t & start);

    bool next(Markup & markup);

private:
    _WideTagArray const & tags;
    std::uint32_t & index;
    /// What the text before the next tag may be, and that tag.
    _WideString text;
    _WideString tag;
    bool isBehindTag = false;
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
    std::uint32_t build(Pieces & pieces);

private:
    using Node = DOM::_XMLNode;

    /// An element whose end tag is still to come, and the first of its children among those that wait.
    struct OpenElement {
        DOM::_XMLElement * element;
        std::size_t firstChild;
    };

    inline bool takeTag(Markup const & markup);
    void takeOtherTag(Markup const & markup);
    inline bool endElement(WideView name, WideView textBefore);
    bool endOutermost(WideView name, WideView textBefore);
    inline void closeElement(WideView textBefore);
    inline void takeElement(Markup const & markup, bool isEmptyElement);
    void takeProcessingInstruction(Markup const & markup);
    void readAttributes(WordSplitter & words, bool tracesEach);
    template <typename Class>
    std::unique_ptr<Class> make(NodeTexts const & texts) {
        return make<Class>(current(), texts);
    }
    template <typename Class>
    std::unique_ptr<Class> make(Node * parent, NodeTexts const & texts) {
        return NodeAccess::make<Class>(batch, &document, parent, texts);
    }
    template <typename Owner>
    void makeAttributes(Owner & owner);
    template <typename Class>
    void link(std::unique_ptr<Class> node);
    DOM::_XMLElement * current() noexcept { return open.isEmpty() ? outermost : open.top().element; }

    void trace(unsigned short int const * event);
    void trace(WideView event);
    void traceRawValues(WordSplitter words);

    DOM::_XMLDocument & document;
    DOM::_XMLElement * outermost;
    GrowingStack<OpenElement, 64> open;
    /// Finished nodes of the open elements, those of the innermost behind the others.
    GrowingStack<Node *, 256> waiting;
    AttributeIndex attributes;
    HeapBatch batch;
    std::uint32_t count = 0;
};

} // namespace morvane

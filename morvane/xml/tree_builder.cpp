#include <morvane/xml/tree_builder.h>

#include <morvane/core/literals.h>
#include <morvane/platform/debug_output.h>
#include <morvane/strings/tag_predicates.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <new>
#include <utility>

namespace morvane {

using namespace literals;

namespace {

void trace(unsigned short int const * event) {
    if (platform::isDebugListening()) {
        platform::debugOutput(event);
    }
}

void trace(WideView event) {
    if (platform::isDebugListening()) {
        platform::debugOutput(makeText(event));
    }
}

/// The raw values of the words that are left, as cutting a tag tells them.
void traceRawValues(WordSplitter words) {
    AttributeWord attribute;
    while (nextAttribute(words, attribute)) {
        trace(attribute.rawValue);
    }
}

/// What stands between the `head` units and the `tail` units of a tag.
constexpr WideView inside(WideView tag, std::size_t head, std::size_t tail) noexcept {
    return tag.part(head, tag.length - head - tail);
}

} // namespace

bool ScannedPieces::next(MarkupText & piece) noexcept {
    MarkupPiece bounds{};
    if (!scanner.next(bounds)) {
        return false;
    }
    yielded = true;
    piece = {text.part(bounds.begin, bounds.end - bounds.begin), bounds.isTag};
    return true;
}

ArrayPieces::ArrayPieces(_WideTagArray const & array, std::uint32_t & start) : tags(array), index(start) {
    // Index 0 wraps to one that no list reaches.
    _WideTag const * const before = tags.getTag(index - 1);
    if (before != nullptr && !before->isTag()) {
        text = before->get_wideString();
    }
}

bool ArrayPieces::next(MarkupText & piece) {
    if (index >= tags.get_count()) {
        return false;
    }
    _WideTag const * const entry = tags.getTag(index);
    ++index;
    piece.isTag = entry != nullptr && entry->isTag();
    _WideString & held = piece.isTag ? tag : text;
    held = entry == nullptr ? _WideString() : entry->get_wideString();
    piece.text = viewOf(held);
    return true;
}

TreeBuilder::~TreeBuilder() {
    for (; !open.isEmpty(); open.pop()) {
        delete open.top();
    }
}

/// Takes one tag with the text directly before it; true when it closed the outermost parent.
bool TreeBuilder::takeTag(WideView tag, WideView textBefore) {
    if (platform::isDebugListening()) {
        _WideString line;
        line.format(u"Data: %s\r\n"_w, makeText(tag).arg());
        trace(line.arg());
    }
    if (isElement(tag, _WideString::TAG_STATUS_ENDING)) {
        trace(u"DOMElement:TAG_STATUS_ENDING"_w);
        return endElement(inside(tag, 2, 1), textBefore);
    }
    if (isElement(tag, _WideString::TAG_STATUS_EMPTY)) {
        trace(u"TAG_STATUS_EMPTY"_w);
        link(makeElement(inside(tag, 1, 2), true));
    } else if (isCDATASection(tag)) {
        trace(u"XMLCDATASection"_w);
        link(NodeAccess::make<DOM::_XMLCDATASection>(&document, nullptr, {.name = {}, .value = inside(tag, 9, 3)}));
    } else if (isComment(tag)) {
        trace(u"XMLComment"_w);
        link(NodeAccess::make<DOM::_XMLComment>(&document, nullptr, {.name = {}, .value = inside(tag, 4, 3)}));
    } else if (isDocumentType(tag)) {
        trace(u"XMLDocumentType"_w);
    } else if (isProcessingInstruction(tag)) {
        trace(u"DOMProcessingInstruction"_w);
        linkProcessingInstruction(inside(tag, 2, 2));
    } else if (isElement(tag, _WideString::TAG_STATUS_BEGINNING)) {
        trace(u"TAG_STATUS_BEGINNING"_w);
        std::unique_ptr<DOM::_XMLElement> element = makeElement(inside(tag, 1, 1), false);
        if (!open.push(element.get())) {
            throw std::bad_alloc();
        }
        element.release();
    }
    return false;
}

/// Closes the innermost open element if that is its name; true when it was the outermost parent.
bool TreeBuilder::endElement(WideView name, WideView textBefore) {
    DOM::_XMLElement * const element = current();
    if (element == nullptr || !(viewOf(NodeAccess::name(*element)) == name)) {
        return false;
    }
    if (!textBefore.isEmpty() && !element->hasChildNodes()) {
        trace(u"DOMText"_w);
        link(NodeAccess::make<DOM::_XMLText>(&document, nullptr, {.name = {}, .value = textBefore}));
    }
    if (open.isEmpty()) {
        return true;
    }
    closeElement();
    return false;
}

/// Links the innermost open element.
void TreeBuilder::closeElement() {
    std::unique_ptr<DOM::_XMLElement> element(open.top());
    open.pop();
    link(std::move(element));
}

std::unique_ptr<DOM::_XMLElement> TreeBuilder::makeElement(WideView text, bool isEmptyElement) {
    WordSplitter words(text, WordSplitter::Quotes::hold);
    WideView name;
    words.next(name);
    if (platform::isDebugListening()) {
        traceRawValues(words);
    }
    if (isEmptyElement) {
        trace(name);
    }
    auto element = NodeAccess::make<DOM::_XMLElement>(&document, nullptr, {.name = name, .value = {}});
    attributes.clear();
    AttributeWord word;
    while (nextAttribute(words, word)) {
        setAttribute(*element, word);
        if (isEmptyElement) {
            trace(word.name);
            trace(word.value());
        }
    }
    return element;
}

void TreeBuilder::linkProcessingInstruction(WideView text) {
    WordSplitter words(text, WordSplitter::Quotes::hold);
    WideView name;
    words.next(name);
    if (platform::isDebugListening()) {
        traceRawValues(words);
    }
    auto node = NodeAccess::make<DOM::_XMLProcessingInstruction>(&document, nullptr, {.name = name, .value = {}});
    attributes.clear();
    AttributeWord word;
    while (nextAttribute(words, word)) {
        setAttribute(*node, word);
    }
    link(std::move(node));
}

/// Sets the value of the attribute of that name or makes it, as `setAttributeNamed` would.
template <typename Owner>
void TreeBuilder::setAttribute(Owner & owner, AttributeWord const & word) {
    if (DOM::_XMLAttribute * const found = attributes.find(word.name)) {
        if (!assignText(NodeAccess::value(*found), word.value())) {
            throw std::bad_alloc();
        }
        return;
    }
    auto attribute =
        NodeAccess::make<DOM::_XMLAttribute>(&document, &owner, {.name = word.name, .value = word.value()});
    attributes.add(word.name, NodeAccess::link(owner, std::move(attribute)));
}

/// Links a node to the innermost open element, or to the top.
template <typename Class>
void TreeBuilder::link(std::unique_ptr<Class> node) {
    if (DOM::_XMLElement * const parent = current()) {
        NodeAccess::link(*parent, std::move(node));
    } else {
        NodeAccess::link(document, std::move(node));
    }
    ++count;
}

} // namespace morvane

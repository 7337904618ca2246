#include <morvane/xml/tree_builder.h>

#include <morvane/core/literals.h>
#include <morvane/platform/debug_output.h>
#include <morvane/strings/tag_predicates.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/wide_tag.h>
#include <new>
#include <utility>

namespace morvane {

using namespace literals;

namespace {

/// Whether the two are the same name, which is short as a rule.
bool isSame(WideView left, WideView right) noexcept {
    constexpr std::size_t wordUnits = sizeof(std::uint64_t) / sizeof(unsigned short int);
    constexpr std::size_t mostUnits = 32;
    auto const wordAt = [](unsigned short int const * units) {
        std::uint64_t word = 0;
        std::memcpy(&word, units, sizeof word);
        return word;
    };
    if (left.length != right.length || left.length < wordUnits || left.length > mostUnits) {
        return left == right;
    }
    std::size_t const last = left.length - wordUnits;
    for (std::size_t index = 0; index < last; index += wordUnits) {
        if (wordAt(left.data + index) != wordAt(right.data + index)) {
            return false;
        }
    }
    return wordAt(left.data + last) == wordAt(right.data + last);
}

/// What stands between the `head` units and the `tail` units of a tag.
constexpr WideView inside(WideView tag, std::size_t head, std::size_t tail) noexcept {
    return tag.part(head, tag.length - head - tail);
}

/// The words of that.
WordSplitter wordsInside(Markup const & markup, std::size_t head, std::size_t tail) noexcept {
    std::size_t const before = markup.unitsBefore;
    return {{markup.tag.data - before, before + markup.tag.length - tail}, WordSplitter::Quotes::hold, before + head};
}

} // namespace

ArrayPieces::ArrayPieces(_WideTagArray const & array, std::uint32_t & start) : tags(array), index(start) {
    // Index 0 wraps to one that no list reaches.
    _WideTag const * const before = tags.getTag(index - 1);
    if (before != nullptr && !before->isTag()) {
        text = before->get_wideString();
    }
}

bool ArrayPieces::next(Markup & markup) {
    if (std::exchange(isBehindTag, true)) {
        text = _WideString();
    }
    while (index < tags.get_count()) {
        _WideTag const * const entry = tags.getTag(index);
        ++index;
        if (entry != nullptr && entry->isTag()) {
            tag = entry->get_wideString();
            markup = {viewOf(text), viewOf(tag), 0};
            return true;
        }
        text = entry == nullptr ? _WideString() : entry->get_wideString();
    }
    return false;
}

inline void TreeBuilder::trace(unsigned short int const * event) {
    if (platform::isDebugListening()) {
        batch.settle();
        platform::debugOutput(event);
    }
}

inline void TreeBuilder::trace(WideView event) {
    if (platform::isDebugListening()) {
        trace(makeText(event).arg());
    }
}

/// The raw values of the words that are left, as cutting a tag tells them.
void TreeBuilder::traceRawValues(WordSplitter words) {
    AttributeWord attribute;
    while (nextAttribute(words, attribute)) {
        trace(attribute.rawValue);
    }
}

TreeBuilder::~TreeBuilder() {
    for (; !open.isEmpty(); open.pop()) {
        for (; waiting.size() > open.top().firstChild; waiting.pop()) {
            delete waiting.top();
        }
        delete open.top().element;
    }
}

/// Takes one tag with the text directly before it; true when it closed the outermost parent.
bool TreeBuilder::takeTag(Markup const & markup) {
    WideView const tag = markup.tag;
    if (platform::isDebugListening()) {
        _WideString line;
        line.format(u"Data: %s\r\n"_w, makeText(tag).arg());
        trace(line.arg());
    }
    // Nearly every tag is told by its second unit.
    if (tag.length > 2 && isTag(tag)) {
        if (tag[1] == u'/') {
            trace(u"DOMElement:TAG_STATUS_ENDING"_w);
            return endElement(inside(tag, 2, 1), markup.textBefore);
        }
        if (tag[1] != u'!' && tag[1] != u'?') {
            bool const isEmptyElement = tag[tag.length - 2] == u'/';
            trace(isEmptyElement ? u"TAG_STATUS_EMPTY"_w : u"TAG_STATUS_BEGINNING"_w);
            takeElement(markup, isEmptyElement);
            return false;
        }
    }
    takeOtherTag(markup);
    return false;
}

void TreeBuilder::takeOtherTag(Markup const & markup) {
    WideView const tag = markup.tag;
    if (isElement(tag, _WideString::TAG_STATUS_EMPTY)) {
        trace(u"TAG_STATUS_EMPTY"_w);
        takeElement(markup, true);
    } else if (isCDATASection(tag)) {
        trace(u"XMLCDATASection"_w);
        link(make<DOM::_XMLCDATASection>({.name = {}, .value = inside(tag, 9, 3)}));
    } else if (isComment(tag)) {
        trace(u"XMLComment"_w);
        link(make<DOM::_XMLComment>({.name = {}, .value = inside(tag, 4, 3)}));
    } else if (isDocumentType(tag)) {
        trace(u"XMLDocumentType"_w);
    } else if (isProcessingInstruction(tag)) {
        trace(u"DOMProcessingInstruction"_w);
        takeProcessingInstruction(markup);
    } else if (isElement(tag, _WideString::TAG_STATUS_BEGINNING)) {
        trace(u"TAG_STATUS_BEGINNING"_w);
        takeElement(markup, false);
    }
}

/// Closes the innermost open element if that is its name; true when it was the outermost parent.
bool TreeBuilder::endElement(WideView name, WideView textBefore) {
    if (open.isEmpty()) {
        return endOutermost(name, textBefore);
    }
    if (isSame(viewOf(NodeAccess::name(*open.top().element)), name)) {
        closeElement(textBefore);
    }
    return false;
}

bool TreeBuilder::endOutermost(WideView name, WideView textBefore) {
    if (outermost == nullptr || !isSame(viewOf(NodeAccess::name(*outermost)), name)) {
        return false;
    }
    if (!textBefore.isEmpty() && !outermost->hasChildNodes()) {
        trace(u"DOMText"_w);
        link(make<DOM::_XMLText>({.name = {}, .value = textBefore}));
    }
    return true;
}

/// Gives the innermost open element its children, or its text where there are none, and links it.
void TreeBuilder::closeElement(WideView textBefore) {
    auto const [element, firstChild] = open.top();
    std::size_t const children = waiting.size() - firstChild;
    if (children == 0) {
        if (!textBefore.isEmpty()) {
            trace(u"DOMText"_w);
            childrenOf(*element).hold(make<DOM::_XMLText>(element, {.name = {}, .value = textBefore}).release());
            ++count;
        }
    } else if (children == 1) {
        childrenOf(*element).hold(waiting.top());
    } else {
        NodeRow & row = NodeRow::make(children);
        std::memcpy(row.nodes(), waiting.from(firstChild), children * sizeof(Node *));
        childrenOf(*element).hold(row);
    }
    waiting.cut(firstChild);
    open.pop();
    link(std::unique_ptr<DOM::_XMLElement>(element));
}

void TreeBuilder::takeElement(Markup const & markup, bool isEmptyElement) {
    WordSplitter words = wordsInside(markup, 1, isEmptyElement ? 2 : 1);
    WideView name;
    words.next(name);
    if (platform::isDebugListening()) {
        traceRawValues(words);
    }
    if (isEmptyElement) {
        trace(name);
    }
    bool const mayHaveAttributes = words.position() < words.units().length;
    if (mayHaveAttributes) {
        readAttributes(words, isEmptyElement);
    }
    std::unique_ptr<DOM::_XMLElement> element = make<DOM::_XMLElement>({.name = name, .value = {}});
    if (mayHaveAttributes) {
        makeAttributes(*element);
    }
    if (isEmptyElement) {
        link(std::move(element));
        return;
    }
    if (!open.push({element.get(), waiting.size()})) {
        throw std::bad_alloc();
    }
    element.release();
}

void TreeBuilder::takeProcessingInstruction(Markup const & markup) {
    WordSplitter words = wordsInside(markup, 2, 2);
    WideView name;
    words.next(name);
    if (platform::isDebugListening()) {
        traceRawValues(words);
    }
    readAttributes(words, false);
    std::unique_ptr<DOM::_XMLProcessingInstruction> node =
        make<DOM::_XMLProcessingInstruction>({.name = name, .value = {}});
    makeAttributes(*node);
    link(std::move(node));
}

/// Notes the attributes among the words that are left.
void TreeBuilder::readAttributes(WordSplitter & words, bool tracesEach) {
    attributes.clear();
    AttributeWord word;
    while (nextAttribute(words, word)) {
        WideView const value = word.value();
        attributes.set(word.name, value);
        if (tracesEach) {
            trace(word.name);
            trace(value);
        }
    }
}

/// Makes the attributes that were noted.
template <typename Owner>
void TreeBuilder::makeAttributes(Owner & owner) {
    auto const makeOne = [&](AttributeIndex::Entry const & entry) {
        return make<DOM::_XMLAttribute>(&owner, {.name = entry.name, .value = entry.value}).release();
    };
    if (attributes.size() == 1) {
        attributesOf(owner).hold(makeOne(*attributes.begin()));
    } else if (attributes.size() != 0) {
        NodeRow & row = NodeRow::make(attributes.size());
        row.count = 0;
        attributesOf(owner).hold(row);
        for (AttributeIndex::Entry const & entry : attributes) {
            row.nodes()[row.count] = makeOne(entry);
            ++row.count;
        }
    }
}

/// Links a node to the innermost open element, or to the top.
template <typename Class>
void TreeBuilder::link(std::unique_ptr<Class> node) {
    if (!open.isEmpty()) {
        if (!waiting.push(node.get())) {
            throw std::bad_alloc();
        }
    } else if (outermost != nullptr) {
        childrenOf(*outermost).add(node.get());
    } else {
        addTo(*document.get_childNodes(), node.get());
    }
    node.release();
    ++count;
}

template <typename Pieces>
std::uint32_t TreeBuilder::build(Pieces & pieces) {
    Markup markup;
    while (pieces.next(markup)) {
        if (takeTag(markup)) {
            return count;
        }
    }
    while (!open.isEmpty()) {
        closeElement({});
    }
    return count;
}

template std::uint32_t TreeBuilder::build(ScannedPieces &);
template std::uint32_t TreeBuilder::build(ArrayPieces &);

} // namespace morvane

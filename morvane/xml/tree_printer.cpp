#include <morvane/xml/tree_printer.h>

#include <algorithm>
#include <morvane/containers/container.h>
#include <morvane/strings/unit_search.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>

namespace morvane {

using namespace literals;

namespace {

/// What a virtual `toString` takes; a level beyond it wraps as in the sum of two such numbers.
std::int32_t levelArgument(std::int64_t level) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(level));
}

} // namespace

void TreePrinter::printAttribute(DOM::_XMLAttribute const & attribute) {
    append(NodeAccess::name(attribute));
    append(u"=\""_wv);
    append(NodeAccess::value(attribute));
    append(u"\""_wv);
}

void TreePrinter::printCDATASection(DOM::_XMLCDATASection const & section, std::int64_t level) {
    appendMarkup(section, u"<![CDATA["_wv, u"]]>"_wv, level);
}

void TreePrinter::printComment(DOM::_XMLComment const & comment, std::int64_t level) {
    appendMarkup(comment, u"<!--"_wv, u"-->"_wv, level);
}

void TreePrinter::printProcessingInstruction(DOM::_XMLProcessingInstruction const & node) {
    append(u"<?xml"_wv);
    appendAttributes(attributesOf(node));
    append(u"?>"_wv);
}

void TreePrinter::printElement(DOM::_XMLElement const & top, std::int64_t level) {
    beginElement(top, level);
    while (!open.isEmpty() && !text.hasFailed()) {
        OpenElement & parent = open.top();
        std::int64_t const depth = static_cast<std::int64_t>(open.size());
        if (parent.next == parent.count) {
            endElement(*parent.element, level + depth - 1);
            open.pop();
        } else if (auto * const child = childrenOf(*parent.element).at(parent.next++)) {
            printChild(*child, level + depth);
        }
    }
}

void TreePrinter::printDocument(DOM::_XMLDocument const & document) {
    _Container const & nodes = *document.get_childNodes();
    for (std::uint32_t index = 0; index < nodes.get_count(); ++index) {
        auto * const node = static_cast<DOM::_XMLNode *>(nodes.getObject(index));
        if (node != nullptr && NodeAccess::type(*node) == DOM::PROCESSING_INSTRUCTION_NODE) {
            printChild(*node, 0);
            appendWhole(NodeAccess::lineTermination(document));
        }
    }
    if (DOM::_XMLElement * const root = document.getRoot()) {
        if (isExactly<DOM::_XMLElement>(*root)) {
            printElement(*root, 0);
        } else {
            printChild(*root, 0);
        }
    }
}

_WideString TreePrinter::take() {
    text.append(0, trailingZeros);
    _WideString result;
    if (isRefused) {
        result.empty();
    } else {
        text.moveTo(result);
    }
    return result;
}

TreePrinter::LineSettings TreePrinter::settingsOf(DOM::_XMLNode const & node) noexcept {
    DOM::_XMLDocument const * const document = NodeAccess::document(node);
    if (document == nullptr) {
        return {u"  "_wv, u"\r\n"_wv};
    }
    return {viewOf(NodeAccess::lineSpace(*document).arg()), viewOf(NodeAccess::lineTermination(*document).arg())};
}

/// Appends up to the first zero, as a formatted text does.
void TreePrinter::append(_WideString const & part) noexcept {
    WideView const units = viewOf(part);
    text.append(units.first(std::min(findUnit(units, 0), units.length)));
}

/// Appends as text is appended to text: up to the first zero, while the length grows by all.
void TreePrinter::appendWhole(_WideString const & part) noexcept {
    std::size_t const before = text.length();
    append(part);
    trailingZeros += part.get_length() - (text.length() - before);
}

void TreePrinter::appendIndent(WideView space, std::int64_t level) noexcept {
    if (level < 1 || space.isEmpty()) {
        return;
    }
    auto const count = static_cast<std::size_t>(level);
    if (std::all_of(space.begin(), space.end(), [&](unsigned short int unit) { return unit == space[0]; })) {
        text.append(space[0], count * space.length);
        return;
    }
    for (std::size_t step = 0; step < count && !text.hasFailed(); ++step) {
        text.append(space);
    }
}

void TreePrinter::appendMarkup(DOM::_XMLNode const & node, WideView head, WideView tail, std::int64_t level) {
    LineSettings const settings = settingsOf(node);
    appendIndent(settings.space, level);
    append(head);
    append(NodeAccess::value(node));
    append(tail);
    append(settings.termination);
}

void TreePrinter::appendAttributes(Attributes attributes) {
    for (std::uint32_t index = 0; index < attributes.count(); ++index) {
        appendAttribute(attributes.at(index));
    }
}

/// Appends an attribute behind a blank; null is passed over.
void TreePrinter::appendAttribute(DOM::_XMLNode * node) {
    if (node == nullptr) {
        return;
    }
    text.append(u' ');
    if (isExactly<DOM::_XMLAttribute>(*node)) {
        printAttribute(static_cast<DOM::_XMLAttribute const &>(*node));
    } else {
        append(node->toString(0));
    }
}

/// The content of an element whose only child is a text that is not empty.
void TreePrinter::appendOnlyText(DOM::_XMLNode & node, std::int64_t level) {
    if (isExactly<DOM::_XMLText>(node)) {
        append(NodeAccess::value(node));
        return;
    }
    _WideString const content = node.toString(levelArgument(level));
    if (content.arg() == nullptr) {
        // As any formatted text prints a released one.
        append(u"(null)"_wv);
    } else {
        append(content);
    }
}

/// Prints an element that fits on one line, or the start tag of another, which is open then.
void TreePrinter::beginElement(DOM::_XMLElement const & element, std::int64_t level) {
    LineSettings const settings = settingsOf(element);
    Children const children = childrenOf(element);
    std::uint32_t const count = children.count();
    DOM::_XMLNode * const only = count == 1 ? children.at(0) : nullptr;
    bool const hasText = only != nullptr && NodeAccess::type(*only) == DOM::TEXT_NODE;
    appendIndent(settings.space, level);
    text.append(u'<');
    append(NodeAccess::name(element));
    appendAttributes(attributesOf(element));
    if (count == 0 || (hasText && NodeAccess::value(*only).isEmpty())) {
        append(u"/>"_wv);
    } else if (hasText) {
        text.append(u'>');
        appendOnlyText(*only, level + 1);
        append(u"</"_wv);
        append(NodeAccess::name(element));
        text.append(u'>');
    } else {
        text.append(u'>');
        isRefused = !open.push({&element, 0, count}) || isRefused;
    }
    append(settings.termination);
}

void TreePrinter::endElement(DOM::_XMLElement const & element, std::int64_t level) {
    LineSettings const settings = settingsOf(element);
    appendIndent(settings.space, level);
    append(u"</"_wv);
    append(NodeAccess::name(element));
    text.append(u'>');
    append(settings.termination);
}

/// Prints a node; an element with children is begun only.
void TreePrinter::printChild(DOM::_XMLNode & node, std::int64_t level) {
    if (isExactly<DOM::_XMLElement>(node)) {
        beginElement(static_cast<DOM::_XMLElement const &>(node), level);
    } else if (isExactly<DOM::_XMLText>(node)) {
        appendWhole(NodeAccess::value(node));
    } else if (isExactly<DOM::_XMLComment>(node)) {
        printComment(static_cast<DOM::_XMLComment const &>(node), level);
    } else if (isExactly<DOM::_XMLCDATASection>(node)) {
        printCDATASection(static_cast<DOM::_XMLCDATASection const &>(node), level);
    } else if (isExactly<DOM::_XMLProcessingInstruction>(node)) {
        printProcessingInstruction(static_cast<DOM::_XMLProcessingInstruction const &>(node));
    } else {
        appendWhole(node.toString(levelArgument(level)));
    }
}

} // namespace morvane

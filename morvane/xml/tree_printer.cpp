#include <morvane/xml/tree_printer.h>

#include <algorithm>
#include <cstring>
#include <morvane/containers/container.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>

namespace morvane {

using namespace literals;

namespace {

using Unit = unsigned short int;

Unit * put(Unit * at, WideView part) noexcept {
    for (Unit const unit : part) {
        *at++ = unit;
    }
    return at;
}

/// What a virtual `toString` takes; a level beyond it wraps as in the sum of two such numbers.
std::int32_t levelArgument(std::int64_t level) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(level));
}

} // namespace

void TreePrinter::printAttribute(DOM::_XMLAttribute const & attribute) {
    WideView const name = viewOf(NodeAccess::name(attribute));
    WideView const value = viewOf(NodeAccess::value(attribute));
    if (Unit * at = text.room(name.length + value.length + 3)) {
        at = put(copyUpToZero(at, name), u"=\""_wv);
        text.finish(put(copyUpToZero(at, value), u"\""_wv));
    }
}

void TreePrinter::printCDATASection(DOM::_XMLCDATASection const & section, std::int64_t level) {
    appendMarkup(section, u"<![CDATA["_wv, u"]]>"_wv, level);
}

void TreePrinter::printComment(DOM::_XMLComment const & comment, std::int64_t level) {
    appendMarkup(comment, u"<!--"_wv, u"-->"_wv, level);
}

void TreePrinter::printProcessingInstruction(DOM::_XMLProcessingInstruction const & node) {
    text.append(u"<?xml"_wv);
    appendAttributes(attributesOf(node));
    text.append(u"?>"_wv);
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
            appendWhole(viewOf(NodeAccess::lineTermination(document)));
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
    _WideString result;
    text.moveTo(result, trailingZeros);
    return result;
}

/// The settings of the document of `node`, valid until the next node is asked.
TreePrinter::LineSettings const & TreePrinter::settingsOf(DOM::_XMLNode const & node) noexcept {
    DOM::_XMLDocument const * const document = NodeAccess::document(node);
    if (settings.isKnown && settings.document == document) {
        return settings;
    }
    settings = {.space = u"  "_wv, .termination = u"\r\n"_wv, .isUniform = true, .document = document, .isKnown = true};
    if (document != nullptr) {
        settings.space = viewOf(NodeAccess::lineSpace(*document).arg());
        settings.termination = viewOf(NodeAccess::lineTermination(*document).arg());
        settings.isUniform = std::all_of(settings.space.begin(), settings.space.end(),
                                         [&](Unit unit) { return unit == settings.space[0]; });
    }
    return settings;
}

/// Asks a node of a class derived elsewhere, which may change what the settings were taken from.
_WideString TreePrinter::ask(DOM::_XMLNode & node, std::int64_t level) {
    settings.isKnown = false;
    return node.toString(levelArgument(level));
}

/// Appends up to the first zero, as a formatted text does.
void TreePrinter::appendUpToZero(WideView part) noexcept {
    if (Unit * const at = text.room(part.length)) {
        text.finish(copyUpToZero(at, part));
    }
}

/// Appends as text is appended to text: up to the first zero, while the length grows by all.
void TreePrinter::appendWhole(WideView part) noexcept {
    if (Unit * const at = text.room(part.length)) {
        Unit * const end = copyUpToZero(at, part);
        text.finish(end);
        trailingZeros += part.length - static_cast<std::size_t>(end - at);
    }
}

/// Units of an indent; one that no text holds is told as so many that what stands beside it still adds up in 32 bits.
std::size_t TreePrinter::LineSettings::indentUnits(std::int64_t level) const noexcept {
    constexpr std::uint64_t moreThanAnyText = std::uint64_t{1} << 31;
    std::uint64_t const units = level < 1 ? 0 : static_cast<std::uint64_t>(level) * space.length;
    return static_cast<std::size_t>(std::min(units, moreThanAnyText));
}

/// Writes an indent of so many units; up to `slack` units behind it may be overwritten.
unsigned short int * TreePrinter::LineSettings::putIndent(Unit * at, std::size_t units) const noexcept {
    Unit * const end = at + units;
    if (isUniform && units != 0) {
        Unit step[slack];
        std::fill_n(step, slack, space[0]);
        for (; at < end; at += slack) {
            std::memcpy(at, step, sizeof step);
        }
    }
    while (at < end) {
        at = put(at, space);
    }
    return end;
}

void TreePrinter::appendMarkup(DOM::_XMLNode const & node, WideView head, WideView tail, std::int64_t level) {
    LineSettings const & line = settingsOf(node);
    WideView const value = viewOf(NodeAccess::value(node));
    std::size_t const indent = line.indentUnits(level);
    if (Unit * at = text.room(indent + LineSettings::slack + head.length + value.length + tail.length
                              + line.termination.length)) {
        at = put(line.putIndent(at, indent), head);
        at = put(copyUpToZero(at, value), tail);
        text.finish(put(at, line.termination));
    }
}

void TreePrinter::appendAttributes(Attributes attributes) {
    std::uint32_t const count = attributes.count();
    for (std::uint32_t index = 0; index < count; ++index) {
        if (DOM::_XMLNode * const node = attributes.at(index)) {
            text.append(u" "_wv);
            if (isExactly<DOM::_XMLAttribute>(*node)) {
                printAttribute(static_cast<DOM::_XMLAttribute const &>(*node));
            } else {
                appendUpToZero(viewOf(ask(*node, 0)));
            }
        }
    }
}

/// The content of an element whose only child is a text that is not empty.
void TreePrinter::appendOnlyText(DOM::_XMLNode & node, std::int64_t level) {
    if (isExactly<DOM::_XMLText>(node)) {
        appendUpToZero(viewOf(NodeAccess::value(node)));
        return;
    }
    _WideString const content = ask(node, level);
    if (content.arg() == nullptr) {
        // As any formatted text prints a released one.
        text.append(u"(null)"_wv);
    } else {
        appendUpToZero(viewOf(content));
    }
}

/// Prints an element that fits on one line, or the start tag of another, which is open then.
void TreePrinter::beginElement(DOM::_XMLElement const & element, std::int64_t level) {
    Children const children = childrenOf(element);
    std::uint32_t const count = children.count();
    DOM::_XMLNode * const only = count == 1 ? children.at(0) : nullptr;
    bool const hasText = only != nullptr && NodeAccess::type(*only) == DOM::TEXT_NODE;
    LineSettings const & line = settingsOf(element);
    WideView const name = viewOf(NodeAccess::name(element));
    std::size_t const indent = line.indentUnits(level);
    if (Unit * at = text.room(indent + LineSettings::slack + 1 + name.length)) {
        at = put(line.putIndent(at, indent), u"<"_wv);
        text.finish(copyUpToZero(at, name));
    }
    appendAttributes(attributesOf(element));
    if (count == 0 || (hasText && NodeAccess::value(*only).isEmpty())) {
        text.append(u"/>"_wv);
        text.append(settingsOf(element).termination);
    } else if (hasText) {
        text.append(u">"_wv);
        appendOnlyText(*only, level + 1);
        appendEndTag(element);
    } else {
        text.append(u">"_wv);
        if (!open.push({&element, 0, count})) {
            text.fail();
        }
        text.append(settingsOf(element).termination);
    }
}

void TreePrinter::endElement(DOM::_XMLElement const & element, std::int64_t level) {
    LineSettings const & line = settingsOf(element);
    std::size_t const indent = line.indentUnits(level);
    if (Unit * const at = text.room(indent + LineSettings::slack)) {
        text.finish(line.putIndent(at, indent));
    }
    appendEndTag(element);
}

/// The end tag and the end of its line.
void TreePrinter::appendEndTag(DOM::_XMLElement const & element) noexcept {
    WideView const name = viewOf(NodeAccess::name(element));
    WideView const termination = settingsOf(element).termination;
    if (Unit * at = text.room(name.length + 3 + termination.length)) {
        at = copyUpToZero(put(at, u"</"_wv), name);
        text.finish(put(put(at, u">"_wv), termination));
    }
}

/// Prints a node; an element with children is begun only.
void TreePrinter::printChild(DOM::_XMLNode & node, std::int64_t level) {
    if (isExactly<DOM::_XMLElement>(node)) {
        beginElement(static_cast<DOM::_XMLElement const &>(node), level);
    } else if (isExactly<DOM::_XMLText>(node)) {
        appendWhole(viewOf(NodeAccess::value(node)));
    } else if (isExactly<DOM::_XMLComment>(node)) {
        printComment(static_cast<DOM::_XMLComment const &>(node), level);
    } else if (isExactly<DOM::_XMLCDATASection>(node)) {
        printCDATASection(static_cast<DOM::_XMLCDATASection const &>(node), level);
    } else if (isExactly<DOM::_XMLProcessingInstruction>(node)) {
        printProcessingInstruction(static_cast<DOM::_XMLProcessingInstruction const &>(node));
    } else {
        appendWhole(viewOf(ask(node, level)));
    }
}

} // namespace morvane

// Nodes as XML text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/xml/growing_stack.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/printed_text.h>
#include <morvane/xml/xml_document.h>

namespace morvane {

/// Prints nodes into one text; `toString` of the node classes is its public face.
///
/// Nodes of the library's own classes are appended in place; one of a class derived from them is asked through its
/// `toString`. Cost: linear in the text, in constant stack. Errors: where the heap refuses, the text ends released.
class TreePrinter {
public:
    void printAttribute(DOM::_XMLAttribute const & attribute);
    void printCDATASection(DOM::_XMLCDATASection const & section, std::int64_t level);
    void printComment(DOM::_XMLComment const & comment, std::int64_t level);
    void printProcessingInstruction(DOM::_XMLProcessingInstruction const & node);
    void printElement(DOM::_XMLElement const & top, std::int64_t level);
    void printDocument(DOM::_XMLDocument const & document);

    /// The text that was printed.
    _WideString take();

private:
    /// An element whose start tag is printed, and the first child that is not.
    struct OpenElement {
        DOM::_XMLElement const * element;
        std::uint32_t next;
        std::uint32_t count;
    };

    /// How a document wants its lines.
    struct LineSettings {
        WideView space;
        WideView termination;
        /// Whether the space repeats one unit.
        bool isUniform;
        DOM::_XMLDocument const * document;
        bool isKnown;

        static constexpr std::size_t slack = 8;

        std::size_t indentUnits(std::int64_t level) const noexcept;
        unsigned short int * putIndent(unsigned short int * at, std::size_t units) const noexcept;
    };
    LineSettings const & settingsOf(DOM::_XMLNode const & node) noexcept;
    _WideString ask(DOM::_XMLNode & node, std::int64_t level);

    void appendUpToZero(WideView part) noexcept;
    void appendWhole(WideView part) noexcept;
    void appendMarkup(DOM::_XMLNode const & node, WideView head, WideView tail, std::int64_t level);
    void appendEndTag(DOM::_XMLElement const & element) noexcept;
    void appendAttributes(Attributes attributes);
    void appendOnlyText(DOM::_XMLNode & node, std::int64_t level);
    void beginElement(DOM::_XMLElement const & element, std::int64_t level);
    void endElement(DOM::_XMLElement const & element, std::int64_t level);
    void printChild(DOM::_XMLNode & node, std::int64_t level);

    PrintedText text;
    LineSettings settings{};
    /// Zero units that stand behind the text: what appending whole texts with zeros inside leaves there.
    std::size_t trailingZeros = 0;
    GrowingStack<OpenElement, 32> open;
};

} // namespace morvane

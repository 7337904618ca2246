#include "xml_support.h"

#include <limits>
#include <morvane/core/literals.h>
#include <morvane/xml/xml_cdata_section.h>
#include <morvane/xml/xml_comment.h>
#include <morvane/xml/xml_document_type.h>
#include <morvane/xml/xml_text.h>

namespace {

using namespace morvane::literals;
using namespace xml_test;

class Printer : public Silent {};

std::u16string printed(DOM::_XMLNode & node, std::int32_t level = 0) {
    return units(node.toString(level));
}

TEST_F(Printer, PrintsEachKindOfNode) {
    DOM::_XMLAttribute attribute;
    attribute.set_nodeName(u"a"_w);
    attribute.set_nodeValue(u"x\"y"_w);
    EXPECT_EQ(printed(attribute, 3), u"a=\"x\"y\"");
    DOM::_XMLText text;
    text.set_nodeValue(u"<&\r\n"_w);
    EXPECT_EQ(printed(text, 3), u"<&\r\n");
    DOM::_XMLComment comment;
    comment.set_nodeValue(u"c"_w);
    EXPECT_EQ(printed(comment, 2), u"    <!--c-->\r\n");
    EXPECT_EQ(units(comment.toFormatString()), u"<!--c-->\r\n");
    DOM::_XMLCDATASection section;
    section.set_nodeValue(u"]]>"_w);
    EXPECT_EQ(printed(section, 1), u"  <![CDATA[]]>]]>\r\n");
    DOM::_XMLProcessingInstruction instruction;
    EXPECT_EQ(printed(instruction, 4), u"<?xml?>");
    instruction.set_nodeName(u"target"_w);
    instruction.setAttribute(u"b"_w, u"1"_w, true);
    instruction.setAttribute(u"c"_w, u""_w, true);
    EXPECT_EQ(printed(instruction, 4), u"<?xml b=\"1\" c=\"\"?>");
    DOM::_XMLDocumentType type;
    type.set_nodeValue(u"ignored"_w);
    EXPECT_EQ(printed(type, 1), u"");
}

TEST_F(Printer, PrintsWhatTheReaderMade) {
    struct {
        char16_t const * markup;
        char16_t const * lines; // "|" for a line end
    } const rows[] = {
        {u"<?xml version=\"1.0\" encoding=\"utf-8\"?><a b=\"1\"><c>x</c><d/><!--m--></a>",
         u"<?xml version=\"1.0\" encoding=\"utf-8\"?>|<a b=\"1\">|  <c>x</c>|  <d/>|  <!--m-->|</a>|"},
        {u"<!--only-->", u""},
        {u"<?xml?>", u"<?xml?>|"},
        {u"<?pi a=\"1\"?>", u"<?xml a=\"1\"?>|"},
        {u"<a/><!--c--><?xml?><![CDATA[d]]><b/>", u"<?xml?>|<a/>|"},
        {u"<a></a>", u"<a/>|"},
        {u"<a> </a>", u"<a> </a>|"},
        {u"<a><![CDATA[x]]></a>", u"<a>|  <![CDATA[x]]>|</a>|"},
        {u"<a><?p b='1'?><c/></a>", u"<a>|<?xml b=\"1\"?>  <c/>|</a>|"},
        {u"<a><b><c>x</c></b></a>", u"<a>|  <b>|    <c>x</c>|  </b>|</a>|"},
        {u"<></>", u"</>|"},
    };
    for (auto const & row : rows) {
        DOM::_XMLDocument document;
        loaded(document, row.markup);
        std::u16string lines;
        for (char16_t const * unit = row.lines; *unit != 0; ++unit) {
            lines += *unit == u'|' ? u"\r\n" : std::u16string(1, *unit);
        }
        EXPECT_EQ(printed(document), lines) << shown(row.markup);
        EXPECT_EQ(printed(document, 5), lines) << shown(row.markup);
        _WideString result;
        _WideString error(u"kept"_w);
        EXPECT_TRUE(document.saveToString(result, error));
        EXPECT_EQ(units(result), lines);
        EXPECT_EQ(units(error), u"kept");
    }
    DOM::_XMLDocument empty;
    EXPECT_EQ(printed(empty), u"");
}

TEST_F(Printer, MixedContentStandsBare) {
    DOM::_XMLDocument document;
    DOM::_XMLElement * const root = document.addElement(u"a"_w, u"not printed"_w);
    root->addText(u"t"_w);
    root->addElement(u"b"_w, u""_w);
    EXPECT_EQ(printed(document), u"<a>\r\nt  <b/>\r\n</a>\r\n");
    root->firstChild()->set_nodeValue(u""_w);
    EXPECT_EQ(printed(document), u"<a>\r\n  <b/>\r\n</a>\r\n");
    DOM::_XMLElement * const empty = document.addElement(u"e"_w, u""_w);
    empty->addText(u""_w);
    EXPECT_EQ(printed(*empty, 1), u"  <e/>\r\n");
    empty->set_nodeName(u"f"_w);
    empty->firstChild()->set_nodeValue(u"x"_w);
    EXPECT_EQ(printed(*empty, 1), u"  <f>x</f>\r\n");
}

TEST_F(Printer, LevelsBelowOneHaveNoIndentation) {
    DOM::_XMLDocument document;
    loaded(document, u"<a><b><c><d/></c></b></a>");
    DOM::_XMLElement & root = *document.getRoot();
    EXPECT_EQ(printed(root, -1), u"<a>\r\n<b>\r\n  <c>\r\n    <d/>\r\n  </c>\r\n</b>\r\n</a>\r\n");
    EXPECT_EQ(printed(root, std::numeric_limits<std::int32_t>::min()),
              u"<a>\r\n<b>\r\n<c>\r\n<d/>\r\n</c>\r\n</b>\r\n</a>\r\n");
    document.set_lineSpace(u""_w);
    EXPECT_EQ(printed(root, std::numeric_limits<std::int32_t>::max()),
              u"<a>\r\n<b>\r\n<c>\r\n<d/>\r\n</c>\r\n</b>\r\n</a>\r\n");
}

TEST_F(Printer, SettingsOfTheDocumentCountAtOnce) {
    DOM::_XMLDocument document;
    loaded(document, u"<?xml?><a><b><c/></b></a>");
    document.set_lineSpace(u" \t"_w);
    document.set_lineTermination(u"\n"_w);
    document.set_lineQuote(u"'"_w);
    EXPECT_EQ(printed(document), u"<?xml?>\n<a>\n \t<b>\n \t \t<c/>\n \t</b>\n</a>\n");
    // Each node asks its own document.
    DOM::_XMLElement * const b = static_cast<DOM::_XMLElement *>(document.getRoot()->firstChild());
    b->set_documentNode(nullptr);
    EXPECT_EQ(printed(document), u"<?xml?>\n<a>\n  <b>\r\n \t \t<c/>\n  </b>\r\n</a>\n");
}

TEST_F(Printer, LongPiecesPrintWhole) {
    std::u16string const longText(100000, u'x');
    DOM::_XMLDocument document;
    DOM::_XMLElement * const root = document.addElement(wide(longText), u""_w);
    root->setAttributeNamed(u"a"_w, Units(longText));
    root->addElement(u"b"_w, Units(longText));
    root->addComment(Units(longText));
    root->addCDATASection(Units(longText));
    EXPECT_EQ(printed(document), u"<" + longText + u" a=\"" + longText + u"\">\r\n  <b>" + longText + u"</b>\r\n  <!--"
                                     + longText + u"-->\r\n  <![CDATA[" + longText + u"]]>\r\n</" + longText
                                     + u">\r\n");
}

// Not within the template, where Clang 14 calls the literal operator at run time.
unsigned short int const * const levelPattern = u"{%d}"_w;
unsigned short int const * const valuePattern = u"v"_w;

/// Says its level, or gives a released text.
template <typename Class>
class Own : public Class {
public:
    explicit Own(bool silent = false) : isReleased(silent) { this->set_nodeValue(valuePattern); }

    _WideString toString(std::int32_t level) override {
        _WideString text;
        if (isReleased) {
            text.empty();
        } else {
            text.format(levelPattern, level);
        }
        return text;
    }

private:
    bool isReleased;
};

TEST_F(Printer, DerivedClassesHaveTheirSay) {
    DOM::_XMLDocument document;
    DOM::_XMLElement * const root = document.addElement(u"a"_w, u""_w);
    root->addChildNode(new Own<DOM::_XMLElement>);
    root->addChildNode(new Own<DOM::_XMLComment>(true));
    DOM::_XMLElement * const b = root->addElement(u"b"_w, nullptr);
    b->addChildNode(new Own<DOM::_XMLText>);
    DOM::_XMLElement * const c = root->addElement(u"c"_w, nullptr);
    c->addChildNode(new Own<DOM::_XMLText>(true));
    c->get_attributes()->addObject(new Own<DOM::_XMLAttribute>);
    c->get_attributes()->addObject(new Own<DOM::_XMLAttribute>(true));
    EXPECT_EQ(printed(document), u"<a>\r\n{1}  <b>{2}</b>\r\n  <c {0} >(null)</c>\r\n</a>\r\n");

    DOM::_XMLDocument other;
    other.get_childNodes()->addObject(new Own<DOM::_XMLElement>);
    other.get_childNodes()->addObject(nullptr);
    other.get_childNodes()->addObject(new Own<DOM::_XMLProcessingInstruction>);
    EXPECT_EQ(printed(other), u"{0}\r\n{0}");

    // A derived element that prints as its base does.
    class Plain : public DOM::_XMLElement {};
    auto * const plain = new Plain;
    plain->set_nodeName(u"p"_w);
    plain->addElement(u"q"_w, u"x"_w);
    root->get_childElements()->deleteAll();
    root->addChildNode(plain);
    EXPECT_EQ(printed(document), u"<a>\r\n  <p>\r\n    <q>x</q>\r\n  </p>\r\n</a>\r\n");
}

TEST_F(Printer, ZeroUnitsEndAFormattedPiece) {
    std::u16string_view const withZero(u"x\0y", 3);
    _WideString value(u' ', 3);
    for (std::int32_t index = 0; index < 3; ++index) {
        value.setAt(index, withZero[static_cast<std::size_t>(index)]);
    }
    DOM::_XMLElement element;
    element.set_nodeName(value);
    element.addText(u""_w)->set_nodeValue(value);
    EXPECT_EQ(printed(element), u"<x>x</x>\r\n");
    // A text that is appended as it is counts whole.
    element.addComment(u"c"_w);
    EXPECT_EQ(printed(element), std::u16string(u"<x>\r\nx  <!--c-->\r\n</x>\r\n") + std::u16string(2, u'\0'));
}

TEST_F(Printer, ATextTooLargeForTheHeapEndsReleased) {
    DOM::_XMLElement element;
    element.addElement(u"b"_w, nullptr);
    EXPECT_EQ(element.toString(std::numeric_limits<std::int32_t>::max()).arg(), nullptr);
}

} // namespace

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
    DOM::_XMLText text;
    DOM::_XMLComment comment;
    DOM::_XMLCDATASection section;
    DOM::_XMLProcessingInstruction instruction;
    DOM::_XMLDocumentType type;
    instruction.setAttribute(u"b"_w, u"1"_w, true);
    instruction.setAttribute(u"c"_w, u""_w, true);
    std::pair<DOM::_XMLNode &, std::u16string> const rows[] = {{attribute, u"n=\"x\"y\r\n\""},
                                                               {text, u"x\"y\r\n"},
                                                               {comment, u"    <!--x\"y\r\n-->\r\n"},
                                                               {section, u"    <![CDATA[x\"y\r\n]]>\r\n"},
                                                               {type, u""},
                                                               {instruction, u"<?xml b=\"1\" c=\"\"?>"}};
    for (auto const & [node, expected] : rows) {
        node.set_nodeName(u"n"_w);
        node.set_nodeValue(u"x\"y\r\n"_w);
        EXPECT_EQ(printed(node, 2), expected);
    }
    EXPECT_EQ(units(comment.toFormatString()), u"<!--x\"y\r\n-->\r\n");
}

TEST_F(Printer, PrintsWhatTheReaderMade) {
    std::pair<char16_t const *, char16_t const *> const rows[] = {
        // the lines with "|" for their ends
        {u"<?xml version=\"1.0\" encoding=\"utf-8\"?><a b=\"1\"><c>x</c><d/><!--m--></a>",
         u"<?xml version=\"1.0\" encoding=\"utf-8\"?>|<a b=\"1\">|  <c>x</c>|  <d/>|  <!--m-->|</a>|"},
        {u"<!--only-->", u""},
        {u"<a/><!--c--><?pi a=\"1\"?><![CDATA[d]]><b/>", u"<?xml a=\"1\"?>|<a/>|"},
        {u"<a><?p b='1'?><c><![CDATA[x]]></c></a>", u"<a>|<?xml b=\"1\"?>  <c>|    <![CDATA[x]]>|  </c>|</a>|"},
        {u"<></>", u"</>|"}};
    for (auto const & [markup, lines] : rows) {
        DOM::_XMLDocument document;
        document.set_lineTermination(u"|"_w);
        loaded(document, markup);
        EXPECT_EQ(printed(document), lines) << shown(markup);
        _WideString result;
        _WideString error(u"kept"_w);
        EXPECT_TRUE(document.saveToString(result, error));
        EXPECT_EQ(units(result) + units(error), std::u16string(lines) + u"kept");
    }
}

TEST_F(Printer, MixedContentStandsBare) {
    DOM::_XMLDocument document;
    document.set_lineTermination(u"|"_w);
    DOM::_XMLElement * const root = document.addElement(u"a"_w, u"not printed"_w);
    root->addText(u"t"_w);
    DOM::_XMLElement * const b = root->addElement(u"b"_w, u""_w);
    EXPECT_EQ(printed(document), u"<a>|t  <b/>|</a>|");
    root->firstChild()->set_nodeValue(u""_w);
    b->addText(u""_w);
    EXPECT_EQ(printed(document), u"<a>|  <b/>|</a>|");
    b->firstChild()->set_nodeValue(u"x"_w);
    EXPECT_EQ(printed(*b, 1), u"  <b>x</b>|");
}

TEST_F(Printer, TakesLevelsAndSettingsAsTheyAre) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    DOM::_XMLDocument document;
    loaded(document, u"<?xml?><a><b><c/></b></a>");
    EXPECT_EQ(printed(document, 5), u"<?xml?>\r\n<a>\r\n  <b>\r\n    <c/>\r\n  </b>\r\n</a>\r\n");
    document.set_lineSpace(u" \t"_w);
    document.set_lineTermination(u"|"_w);
    document.set_lineQuote(u"'"_w);
    DOM::_XMLElement & root = *document.getRoot();
    EXPECT_EQ(printed(root), u"<a>| \t<b>| \t \t<c/>| \t</b>|</a>|");
    EXPECT_EQ(printed(root, -1), u"<a>|<b>| \t<c/>|</b>|</a>|");
    EXPECT_EQ(printed(root, least), u"<a>|<b>|<c/>|</b>|</a>|");
    // Each node asks its own document.
    root.firstChild()->set_documentNode(nullptr);
    EXPECT_EQ(printed(document), u"<?xml?>|<a>|  <b>\r\n \t \t<c/>|  </b>\r\n</a>|");
    // A text too large for the heap ends released; empty steps are none.
    EXPECT_EQ(root.toString(-(least + 1)).arg(), nullptr);
    root.firstChild()->set_documentNode(&document);
    document.set_lineSpace(u""_w);
    EXPECT_EQ(printed(root, -(least + 1)), u"<a>|<b>|<c/>|</b>|</a>|");
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

TEST_F(Printer, ManyAndLongPiecesComeTogetherWhole) {
    for (char16_t const * const space : {u"  ", u"\t", u"ab", u"0123456789"}) {
        std::u16string expected = u"<r>\r\n";
        for (std::size_t number = 0; number < 3000; ++number) {
            bool const isLong = number == 7;
            std::u16string const text(isLong ? 100000 : 1 + number % 300, static_cast<char16_t>(u'a' + number % 26));
            expected += space + std::u16string(u"<e a=\"") + text.substr(0, isLong ? 90000 : number % 40) + u"\">"
                        + text + u"</e>\r\n";
        }
        expected += u"</r>\r\n";
        DOM::_XMLDocument document;
        document.set_lineSpace(wide(space));
        _WideString error;
        ASSERT_TRUE(document.loadFromString(Units(expected), error));
        EXPECT_TRUE(printed(document) == expected) << shown(space);
    }
}

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

    // One that changes the settings of its document while it is printed.
    class Changing : public DOM::_XMLComment {
        _WideString toString(std::int32_t) override {
            get_documentNode()->set_lineTermination(u"|"_w);
            return _WideString(valuePattern);
        }
    };
    auto * const changing = new Changing;
    changing->set_documentNode(&document);
    root->get_childElements()->deleteAll();
    root->addChildNode(changing);
    root->addElement(u"e"_w, nullptr);
    EXPECT_EQ(printed(document), u"<a>\r\nv  <e/>|</a>|");
}

TEST_F(Printer, ZeroUnitsEndAFormattedPiece) {
    _WideString value(u"x-y"_w);
    value.setAt(1, 0);
    DOM::_XMLElement element;
    element.set_nodeName(value);
    element.addText(u""_w)->set_nodeValue(value);
    EXPECT_EQ(printed(element), u"<x>x</x>\r\n");
    // A text that is appended as it is counts whole.
    element.addComment(u"c"_w);
    EXPECT_EQ(printed(element), std::u16string(u"<x>\r\nx  <!--c-->\r\n</x>\r\n") + std::u16string(2, u'\0'));
}

} // namespace

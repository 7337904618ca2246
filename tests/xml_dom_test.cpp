#include "xml_support.h"

#include <memory>
#include <morvane/core/lifecycle.h>
#include <morvane/core/literals.h>
#include <morvane/core/memory.h>
#include <morvane/xml/dom_options.h>
#include <morvane/xml/xml_cdata_section.h>
#include <morvane/xml/xml_comment.h>
#include <morvane/xml/xml_document_type.h>
#include <morvane/xml/xml_text.h>
#include <new>

namespace {

using namespace morvane::literals;
using namespace xml_test;

class Model : public Silent {};

/// Reaches the factories.
class OpenDocument : public DOM::_XMLDocument {
public:
    using _XMLDocument::createAttribute;
    using _XMLDocument::createCDATASection;
    using _XMLDocument::createComment;
    using _XMLDocument::createElement;
    using _XMLDocument::createProcessingInstruction;
    using _XMLDocument::createText;
};

/// Notes its name when it goes, a text that of its parent, which must still live then.
template <typename Class>
class Watched : public Class {
public:
    explicit Watched(std::string & destroyed, char16_t name = u'?') : log(destroyed) {
        this->set_nodeName(wide({&name, 1}));
    }
    ~Watched() override {
        bool const isText = this->get_nodeType() == DOM::TEXT_NODE;
        DOM::_XMLNode const & named = isText && this->get_parentNode() != nullptr ? *this->get_parentNode() : *this;
        log += isText ? joined({"(", shown(named.get_nodeName()), ")"}) : shown(named.get_nodeName());
    }

    /// Makes the class larger than its base.
    char padding[100] = {};

private:
    std::string & log;
};

using WatchedElement = Watched<DOM::_XMLElement>;
using WatchedAttribute = Watched<DOM::_XMLAttribute>;
using WatchedText = Watched<DOM::_XMLText>;

class OpenElement : public DOM::_XMLElement {
public:
    using _XMLElement::addAttribute;
    using _XMLElement::addAttributeNode;
};

TEST_F(Model, ResetGivesANewDocumentButForTheLineSettings) {
    DOM::_XMLDocument document;
    EXPECT_EQ(settings(document), "\"|  |\\x000d\\x000a|1|yes|1.0");
    EXPECT_EQ(shownDocument(document), "");
    EXPECT_FALSE(document.hasRoot());
    EXPECT_EQ(document.get_nodeType(), DOM::DOCUMENT_NODE);
    EXPECT_TRUE(document.get_parentNode() == nullptr && document.get_documentNode() == nullptr);
    _Container * const nodes = document.get_childNodes();
    document.set_lineQuote(u"q"_w);
    document.set_lineSpace(u"s"_w);
    document.set_lineTermination(u"t"_w);
    document.addElement(u"a"_w, u""_w);
    document.set_encoding(DOM::charsetUTF16);
    document.set_standalone(false);
    document.set_version(u"2"_w);
    EXPECT_EQ(settings(document), "q|s|t|2|no|2");
    EXPECT_EQ(units(document.lineQuote()) + units(document.lineSpace()) + units(document.lineTermination()), u"qst");
    document.resetDocument();
    EXPECT_EQ(settings(document), "q|s|t|1|yes|1.0");
    EXPECT_TRUE(document.get_childNodes() == nodes && nodes->get_count() + nodes->get_size() == 0);
}

TEST_F(Model, FactoriesTieANodeToDocumentAndParentAndLinkNothing) {
    OpenDocument document;
    DOM::_XMLElement * const parent = document.addElement(u"p"_w, u""_w);
    DOM::_XMLNode * const nodes[] = {document.createElement(parent), document.createAttribute(parent),
                                     document.createText(parent),    document.createCDATASection(parent),
                                     document.createComment(parent), document.createProcessingInstruction(parent)};
    int const types[] = {1, 2, 3, 4, 8, 7};
    for (std::size_t index = 0; index < 6; ++index) {
        EXPECT_EQ(nodes[index]->get_nodeType(), types[index]);
        EXPECT_EQ(nodes[index]->get_documentNode(), &document);
        EXPECT_EQ(nodes[index]->get_parentNode(), parent);
        delete nodes[index];
    }
    EXPECT_EQ(parent->getNodeCount(), 0U);
    EXPECT_EQ(DOM::_XMLDocumentType().get_nodeType(), DOM::DOCUMENT_TYPE_NODE);
}

TEST_F(Model, ElementsGrowChildrenOfEveryKind) {
    DOM::_XMLDocument document;
    DOM::_XMLElement * const root = document.addElement(u"r"_w, u"kept aside"_w);
    EXPECT_EQ(units(root->get_nodeValue()), u"kept aside");
    EXPECT_EQ(root->get_parentNode(), nullptr);
    EXPECT_TRUE(root->firstChild() == nullptr && root->addChildNode(nullptr) == nullptr && !root->hasChildNodes());
    DOM::_XMLElement * const full = root->addElement(u"full"_w, u"v"_w);
    EXPECT_FALSE(root->addElement(u"empty"_w, u""_w)->hasText());
    EXPECT_FALSE(root->addElement(nullptr, nullptr)->hasText());
    root->addText(nullptr);
    root->addComment(u"c"_w);
    root->addCDATASection(u"d"_w);
    EXPECT_EQ(shownDocument(document), "r(full(\"v\"),empty,,\"\",<!--c],<![d])");
    EXPECT_TRUE(full->get_parentNode() == root && full->get_documentNode() == &document);
    EXPECT_EQ(full->firstChild()->get_parentNode(), full);
    EXPECT_EQ(root->getNode(0), full);
    EXPECT_TRUE(root->getNode(6) == nullptr && root->getNode(0xFFFFFFFF) == nullptr
                && root->getAttribute(0) == nullptr);
    EXPECT_TRUE(root->setNameSpace(u"a"_w, u"b"_w, u"c"_w) == nullptr && root->getNameSpace() == nullptr);
    // A node that was made by hand keeps having no document.
    auto * const loose = new DOM::_XMLElement;
    EXPECT_EQ(root->addChildNode(loose), loose);
    EXPECT_TRUE(loose->get_parentNode() == root && loose->get_documentNode() == nullptr);
    EXPECT_EQ(loose->addText(u"t"_w)->get_documentNode(), nullptr);
    DOM::_XMLElement * const second = document.addElement(u"s"_w, u""_w);
    EXPECT_EQ(document.get_childNodes()->getObject(1), second);
    EXPECT_EQ(document.getRoot(), root);
}

TEST_F(Model, OnlyASingleTextChildIsText) {
    DOM::_XMLElement element;
    EXPECT_FALSE(element.hasText());
    element.addText(u""_w);
    EXPECT_TRUE(element.hasText() && element.hasTextEmpty());
    element.firstChild()->set_nodeValue(u"x"_w);
    EXPECT_TRUE(element.hasText() && !element.hasTextEmpty());
    // The lists show the items that were there before they were asked for.
    EXPECT_EQ(element.get_childElements()->getObject(0), element.firstChild());
    DOM::_XMLAttribute * const attribute = element.setAttributeNamed(u"a"_w, u"1"_w);
    EXPECT_EQ(element.getAttributeNamed(u"A"_w), attribute);
    EXPECT_EQ(element.get_attributes()->getNamedNode(0), attribute);
    EXPECT_EQ(element.getAttributeNamed(u"A"_w), attribute);
    element.addComment(u""_w);
    EXPECT_FALSE(element.hasText());
    element.get_childElements()->deleteAll();
    element.addCDATASection(u""_w);
    EXPECT_FALSE(element.hasText());
}

TEST_F(Model, AttributeNamesIgnoreTheCaseOfAToZ) {
    OpenElement element;
    DOM::_XMLAttribute * const id = element.setAttributeNamed(u"id"_w, u"1"_w);
    EXPECT_EQ(element.setAttributeNamed(u"ID"_w, u"2"_w), id);
    EXPECT_EQ(shownAttributes(element), "[id=2]");
    EXPECT_EQ(element.getAttributeNamed(u"Id"_w), id);
    for (char16_t const * const name : {u"i", u"idx", u""}) {
        EXPECT_EQ(element.getAttributeNamed(Units(name)), nullptr);
    }
    element.setAttributeNamed(u"\u00C9"_w, u"3"_w);
    element.setAttributeNamed(u"\u00E9"_w, u"4"_w);
    EXPECT_EQ(element.getAttributeCount(), 3U);
    DOM::_XMLAttribute * const nameless = element.setAttributeNamed(nullptr, nullptr);
    EXPECT_EQ(element.getAttributeNamed(u""_w), nameless);
    EXPECT_EQ(element.getAttributeNamed(nullptr), nameless);
    EXPECT_EQ(element.addAttributeNode(nullptr), nullptr);
    DOM::_XMLAttribute * const twice = element.addAttribute(u"Id"_w, u"5"_w);
    EXPECT_EQ(element.getAttribute(4), twice);
    EXPECT_EQ(element.getAttributeNamed(u"Id"_w), id);
    auto * const given = new DOM::_XMLAttribute;
    EXPECT_EQ(element.addAttributeNode(given), given);
    EXPECT_EQ(given->get_parentNode(), nullptr);
    EXPECT_EQ(twice->get_parentNode(), &element);
}

TEST_F(Model, MapSetsButNeverAdds) {
    DOM::_XMLNamedNodeMap map;
    EXPECT_TRUE(map.getNodeNamed(u"a"_w) == nullptr && map.setNodeNamed(u"a"_w, u"1"_w) == nullptr);
    EXPECT_TRUE(map.getNamedNodeCount() == 0 && map.getNamedNode(0) == nullptr);
    auto * const node = new DOM::_XMLAttribute;
    node->set_nodeName(u"a"_w);
    map.addObject(nullptr);
    map.addObject(node);
    EXPECT_EQ(map.setNodeNamed(u"A"_w, u"1"_w), node);
    EXPECT_EQ(units(node->get_nodeValue()), u"1");
    EXPECT_EQ(map.getNamedNode(1), node);
}

TEST_F(Model, InstructionGivesTheAttributeThatWasThereBefore) {
    DOM::_XMLDocument document;
    DOM::_XMLProcessingInstruction & node = *document.addProcessingInstruction();
    EXPECT_EQ(node.setAttribute(u"a"_w, u"1"_w, false), nullptr);
    EXPECT_EQ(node.getAttribute(u"a"_w), nullptr);
    EXPECT_EQ(node.setAttribute(u"a"_w, u"1"_w, true), nullptr);
    DOM::_XMLAttribute * const made = node.getAttribute(u"A"_w);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->get_documentNode(), &document);
    EXPECT_EQ(made->get_parentNode(), &node);
    EXPECT_EQ(node.setAttribute(u"A"_w, u"2"_w, true), made);
    EXPECT_EQ(shownDocument(document), "?[a=2]");
}

TEST_F(Model, TreeGoesAttributesFirstThenChildrenThenTheElement) {
    std::string log;
    {
        DOM::_XMLDocument document;
        DOM::_XMLElement * const plain = document.addElement(u"plain"_w, u""_w);
        auto * const a = new WatchedElement(log, u'a');
        a->get_attributes()->addObject(new WatchedAttribute(log, u'1'));
        a->get_attributes()->addObject(new WatchedAttribute(log, u'2'));
        a->addChildNode(new WatchedText(log));
        // The library's own elements in between are taken apart in the same order.
        DOM::_XMLElement * const inner = a->addElement(u"inner"_w, nullptr);
        inner->addChildNode(new WatchedText(log));
        inner->get_attributes()->addObject(new WatchedAttribute(log, u'3'));
        auto * const b = new WatchedElement(log, u'b');
        b->addChildNode(new WatchedText(log));
        inner->addChildNode(b);
        inner->addChildNode(new WatchedText(log));
        plain->addChildNode(a);
        plain->addChildNode(new WatchedElement(log, u'c'));
    }
    EXPECT_EQ(log, "a12(a)3(inner)b(b)(inner)c");
}

TEST_F(Model, ListsThatDoNotOwnLeaveTheirNodesAlive) {
    std::string log;
    WatchedText text(log);
    {
        DOM::_XMLElement top;
        DOM::_XMLElement * const element = top.addElement(u"e"_w, nullptr);
        element->addChildNode(&text);
        element->get_childElements()->set_deleteAll(false);
        DOM::_XMLElement * const shared = top.addElement(u"s"_w, nullptr);
        shared->addChildNode(new WatchedElement(log, u'x'));
        _Container const sharer(*shared->get_childElements());
        delete top.getNode(1);
        top.get_childElements()->removeAt(1, 1);
        EXPECT_EQ(log, "");
        text.set_parentNode(nullptr);
    }
    EXPECT_EQ(log, "x");
}

TEST_F(Model, CopiesShareTheirListsAndReleaseThemOnce) {
    std::string log;
    {
        DOM::_XMLElement source;
        DOM::_XMLElement copy(source);
        EXPECT_EQ(copy.get_childElements(), source.get_childElements());
        EXPECT_EQ(copy.get_attributes(), source.get_attributes());
        {
            DOM::_XMLElement third;
            third.addChildNode(new WatchedElement(log, u'o'));
            third = copy;
            EXPECT_EQ(log, "o");
            third.addChildNode(new WatchedElement(log, u'n'));
            DOM::_XMLElement & same = third;
            third = same;
        }
        EXPECT_EQ(source.getNodeCount(), 1U);
        EXPECT_EQ(log, "o");
    }
    EXPECT_EQ(log, "on");
    {
        DOM::_XMLProcessingInstruction source;
        source.get_attributes()->addObject(new WatchedAttribute(log, u'p'));
        DOM::_XMLProcessingInstruction const copy(source);
        EXPECT_EQ(copy.get_attributes(), source.get_attributes());
        DOM::_XMLProcessingInstruction other;
        other = copy;
        source = DOM::_XMLProcessingInstruction();
        EXPECT_EQ(source.getAttribute(u"p"_w), nullptr);
        EXPECT_NE(other.getAttribute(u"p"_w), nullptr);
        EXPECT_EQ(log, "on");
    }
    EXPECT_EQ(log, "onp");
}

TEST_F(Model, CopiesOfADocumentOutliveIt) {
    std::string log;
    DOM::_XMLDocument survivor;
    {
        DOM::_XMLDocument source;
        source.set_lineTermination(u"\n"_w);
        DOM::_XMLElement * const root = source.addElement(u"a"_w, u""_w);
        root->addElement(u"b"_w, u"x"_w);
        root->addChildNode(new WatchedElement(log, u'w'));
        survivor = source;
        DOM::_XMLDocument const third(source);
        EXPECT_EQ(third.getRoot(), root);
        EXPECT_EQ(root->get_documentNode(), &source);
    }
    EXPECT_EQ(log, "");
    EXPECT_EQ(survivor.getRoot()->get_documentNode(), &survivor);
    EXPECT_EQ(survivor.getRoot()->firstChild()->get_documentNode(), &survivor);
    EXPECT_EQ(shown(survivor.toFormatString()), "<a>\\x000a  <b>x</b>\\x000a  <w/>\\x000d\\x000a</a>\\x000a");
    survivor.resetDocument();
    EXPECT_EQ(log, "w");
}

/// Text buffers that live, as the counts of the heap tell.
std::int32_t liveTexts() {
    return globalProcessMemory->heapAllocationCount() - globalProcessMemory->heapUnallocationCount();
}

TEST_F(Model, EveryNodeCountsTwoTextsHoweverItWasMade) {
    std::int32_t const before = liveTexts();
    DOM::_XMLText given;
    EXPECT_EQ(liveTexts() - before, 2);
    given.set_nodeValue(u"x"_w);
    DOM::_XMLText const copy(given);
    EXPECT_EQ(liveTexts() - before, 4);
    DOM::_XMLDocument document;
    std::int32_t const empty = liveTexts();
    ASSERT_EQ(loaded(document, u"<?p q='r'?><a b='1' c='2' B='3'><d>e</d><f/></a>"), "?p[q=r],a[b=3,c=2](d(\"e\"),f)");
    EXPECT_EQ(liveTexts() - empty, 16);
    DOM::_XMLElement & root = *document.getRoot();
    root.set_nodeName(u"name"_w);
    root.setAttributeNamed(u"C"_w, u"4"_w);
    EXPECT_EQ(liveTexts() - empty, 16);
    static_cast<DOM::_XMLElement *>(root.getNode(1))->addElement(u"g"_w, u"h"_w);
    root.get_childElements();
    EXPECT_EQ(liveTexts() - empty, 20);
    EXPECT_EQ(shownDocument(document), "?p[q=r],name[b=3,c=4](d(\"e\"),f(g(\"h\")))");
    document.resetDocument();
    EXPECT_EQ(liveTexts(), empty);
    // What was read and left alone goes at once.
    loaded(document, u"<a b='1' c='2'><d>e</d><f/></a><!--g-->");
    EXPECT_EQ(liveTexts() - empty, 14);
    document.resetDocument();
    EXPECT_EQ(liveTexts(), empty);
}

TEST_F(Model, NodesThatWereReadCanBeTakenOutAndOutliveTheRest) {
    std::string log;
    char16_t const * const markup = u"<?p q='r'?><a b='1' c='2'><d>e</d><f g='h'/><i/></a><j><k/></j>";
    for (int way = 0; way < 5; ++way) {
        auto document = std::make_unique<DOM::_XMLDocument>();
        loaded(*document, markup);
        DOM::_XMLElement & root = *document->getRoot();
        DOM::_XMLNode * taken = nullptr;
        switch (way) {
        case 0:
            taken = &root;
            document->get_childNodes()->setItem(1, nullptr);
            break;
        case 1:
            taken = root.getNode(1);
            root.get_childElements()->setItem(1, nullptr);
            break;
        case 2:
            taken = root.getAttribute(1);
            root.get_attributes()->setItem(1, nullptr);
            break;
        case 3:
            // One more child among those that were read.
            static_cast<DOM::_XMLElement *>(root.getNode(2))->addChildNode(new WatchedText(log));
            break;
        default:
            document->get_childNodes()->set_deleteAll(false);
            taken = document->get_childNodes()->getObject(2) == nullptr ? nullptr : root.getNode(0);
            delete document->get_childNodes()->getObject(0);
            delete document->get_childNodes()->getObject(2);
            root.get_childElements()->setItem(0, nullptr);
            delete &root;
            break;
        }
        document.reset();
        if (taken != nullptr) {
            log += shownNode(*taken) + shown(taken->get_nodeValue());
            taken->set_documentNode(nullptr);
            taken->set_nodeValue(u"set"_w);
            EXPECT_EQ(shown(taken->get_nodeValue()), "set");
            EXPECT_EQ(taken->get_documentNode(), nullptr);
            delete taken;
        }
        log += "|";
    }
    EXPECT_EQ(log, "a[b=1,c=2](d(\"e\"),f[g=h],i)|f[g=h]|(unexpected node)2|(i)|d(\"e\")|");
}

TEST_F(Model, CopiesOfAReadDocumentOutliveIt) {
    DOM::_XMLDocument survivor;
    {
        DOM::_XMLDocument source;
        loaded(source, u"<?p q='r'?><a b='1'><c>d</c></a>");
        source.getRoot()->set_nodeValue(u"set"_w);
        survivor = source;
    }
    DOM::_XMLElement & root = *survivor.getRoot();
    for (DOM::_XMLNode const * const node :
         {static_cast<DOM::_XMLNode *>(&root), static_cast<DOM::_XMLNode *>(root.getAttribute(0)), root.firstChild()}) {
        EXPECT_EQ(node->get_documentNode(), &survivor);
    }
    DOM::_XMLElement const copy(root);
    EXPECT_EQ(copy.getNode(0), root.getNode(0));
    EXPECT_EQ(shownDocument(survivor), "?p[q=r],a[b=1](c(\"d\"))");
}

TEST_F(Model, TextsOfNodesAreLiveWhateverTheyWereGiven) {
    DOM::_XMLText text;
    _WideString released;
    released.empty();
    text.set_nodeValue(released);
    EXPECT_EQ(units(text.get_nodeValue()), u"");
    text.set_nodeName(std::move(released));
    EXPECT_EQ(units(text.get_nodeName()), u"");
    _WideString given(u"given"_w);
    text.set_nodeValue(given);
    EXPECT_EQ(units(given), u"given");
    DOM::_XMLText const copy(text);
    EXPECT_EQ(units(copy.get_nodeValue()), u"given");
}

TEST_F(Model, NodesCanBePlacedAndAligned) {
    class alignas(128) Wide : public DOM::_XMLText {};
    auto * const wide = new Wide;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wide) % 128, 0U);
    delete wide;
    alignas(DOM::_XMLText) unsigned char place[sizeof(DOM::_XMLText)];
    auto * const text = new (place) DOM::_XMLText;
    EXPECT_EQ(static_cast<void *>(text), static_cast<void *>(place));
    text->~_XMLText();
    delete new (std::nothrow) DOM::_XMLText;
}

TEST(Tags, StaticPredicatesAskTheText) {
    for (char16_t const * const row : {u"", u"<>", u"</a/>", u"<!---->", u"<!DOCTYPE]>", u"<![CDATA[]]>", u"<?\?>"}) {
        _WideString const text(wide(row));
        EXPECT_EQ(DOM::isDOMTag(&text), text.isDOMTag()) << shown(row);
        EXPECT_EQ(DOM::isDOMComment(&text), text.isDOMComment()) << shown(row);
        EXPECT_EQ(DOM::isDOMDocumentType(&text), text.isDOMDocumentType()) << shown(row);
        EXPECT_EQ(DOM::isDOMCDATASection(&text), text.isDOMCDATASection()) << shown(row);
        EXPECT_EQ(DOM::isDOMProcessingInstruction(&text), text.isDOMProcessingInstruction()) << shown(row);
        for (std::int32_t number = 0; number < 4; ++number) {
            auto const status = static_cast<_WideString::TagStatus>(number);
            EXPECT_EQ(DOM::isDOMElement(&text, status), text.isDOMElement(status)) << shown(row);
        }
        EXPECT_TRUE(DOM::isDOMText(&text) && DOM::isDOMAttribute(&text) && DOM::isDOMEntityReference(&text));
    }
    EXPECT_FALSE(DOM::isDOMTag(nullptr));
    EXPECT_TRUE(DOM::isDOMQuote(u'"') && DOM::isDOMQuote(u'\''));
    EXPECT_FALSE(DOM::isDOMQuote(u'`'));
}

TEST(Charsets, NamesGoBothWays) {
    EXPECT_EQ(DOM::_XMLDocument::charsetCount(), 29U);
    for (std::int32_t number = 0; number < 29; ++number) {
        auto const charset = static_cast<DOM::XMLCharset>(number);
        EXPECT_EQ(DOM::_XMLDocument::wideStringToCharset(DOM::_XMLDocument::charsetToWideString(charset)), charset);
    }
    for (auto const & [number, name] :
         {std::pair{21, "shift_jis"}, {24, "gb231259-15"}, {29, "us-ascii"}, {-1, "us-ascii"}}) {
        EXPECT_EQ(shown(DOM::_XMLDocument::charsetToWideString(static_cast<DOM::XMLCharset>(number))), name);
    }
    for (auto const & [name, number] : {std::pair{u"Shift_jis", 21}, {u"ISO-8859-15", 19}, {u"latin1", 1}}) {
        EXPECT_EQ(DOM::_XMLDocument::wideStringToCharset(Units(name)), number);
    }
    EXPECT_EQ(DOM::_XMLDocument::wideStringToCharset(nullptr), DOM::charsetUTF8);
    EXPECT_EQ(units(DOM::getDescripton()), u"Document Object Model Core 3.0");
    EXPECT_EQ(DOM::getMajorVersion() * 10 + DOM::getMinorVersion(), 10);
}

TEST_F(Model, PropertiesWriteThroughToEveryDeclaration) {
    DOM::_XMLDocument document;
    document.set_encoding(DOM::charsetUTF8);
    EXPECT_EQ(shownDocument(document), "?[version=1.0,encoding=utf-8,standalone=yes]");
    document.addElement(u"r"_w, u""_w);
    document.addProcessingInstruction();
    document.set_version(u"1.1"_w);
    EXPECT_EQ(shownDocument(document), "?[version=1.1,encoding=utf-8,standalone=yes],r,?[version=1.1]");
    EXPECT_EQ(units(document.get_version()), u"1.1");
    document.set_encoding(DOM::charsetUTF16);
    EXPECT_EQ(document.get_encoding(), DOM::charsetUTF16);
    EXPECT_EQ(shownDocument(document),
              "?[version=1.1,encoding=utf-16,standalone=yes],r,?[version=1.1,encoding=utf-16]");

    DOM::_XMLDocument other;
    other.set_standalone(false);
    EXPECT_FALSE(other.get_standalone());
    EXPECT_EQ(shownDocument(other), "?[version=1.0,standalone=yes]");
    other.set_standalone(false);
    EXPECT_EQ(shownDocument(other), "?[version=1.0,standalone=no]");
    DOM::_XMLDocument third;
    third.set_version(nullptr);
    EXPECT_EQ(shownDocument(third), "?[version=,standalone=yes]");
    EXPECT_EQ(units(third.get_version()), u"");
}

} // namespace

#include "xml_support.h"

#include <memory>
#include <morvane/core/lifecycle.h>
#include <morvane/core/literals.h>
#include <morvane/core/memory.h>
#include <morvane/xml/xml_cdata_section.h>
#include <morvane/xml/xml_comment.h>
#include <morvane/xml/xml_document_type.h>
#include <morvane/xml/xml_text.h>
#include <new>

namespace {

using namespace morvane::literals;
using namespace xml_test;

class Model : public Silent {};

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

TEST_F(Model, ResetGivesANewDocumentButForTheLineSettings) {
    DOM::_XMLDocument document;
    EXPECT_EQ(settings(document), "\"|  |\\x000d\\x000a|1|yes|1.0");
    EXPECT_FALSE(document.hasRoot());
    _Container * const nodes = document.get_childNodes();
    document.set_lineQuote(u"q"_w);
    document.set_lineSpace(u"s"_w);
    document.set_lineTermination(u"t"_w);
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
    struct Open : DOM::_XMLDocument {
        std::vector<DOM::_XMLNode *> makeAll(DOM::_XMLElement * parent) {
            return {createElement(parent),      createAttribute(parent), createText(parent),
                    createCDATASection(parent), createComment(parent),   createProcessingInstruction(parent)};
        }
    } document;
    DOM::_XMLElement * const parent = document.addElement(u"p"_w, u""_w);
    std::string types;
    for (DOM::_XMLNode * const node : document.makeAll(parent)) {
        types += std::to_string(node->get_nodeType());
        EXPECT_TRUE(node->get_documentNode() == &document && node->get_parentNode() == parent) << types;
        delete node;
    }
    EXPECT_EQ(types, "123487");
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
    root->addElement(u"empty"_w, u""_w);
    root->addElement(nullptr, nullptr);
    root->addText(nullptr);
    root->addComment(u"c"_w);
    root->addCDATASection(u"d"_w);
    EXPECT_EQ(shownDocument(document), "r(full(\"v\"),empty,,\"\",<!--c],<![d])");
    EXPECT_TRUE(full->get_parentNode() == root && full->get_documentNode() == &document);
    EXPECT_EQ(full->firstChild()->get_parentNode(), full);
    EXPECT_TRUE(root->setNameSpace(u"a"_w, u"b"_w, u"c"_w) == nullptr && root->getNameSpace() == nullptr);
    // A node that was made by hand keeps having no document.
    auto * const loose = new DOM::_XMLElement;
    EXPECT_EQ(root->addChildNode(loose), loose);
    EXPECT_TRUE(loose->get_parentNode() == root && loose->get_documentNode() == nullptr);
    EXPECT_EQ(loose->addText(u"t"_w)->get_documentNode(), nullptr);
    DOM::_XMLElement * const second = document.addElement(u"s"_w, u""_w);
    EXPECT_TRUE(document.get_childNodes()->getObject(1) == second && document.getRoot() == root);
}

TEST_F(Model, OnlyASingleTextChildIsText) {
    DOM::_XMLElement element;
    element.addText(u""_w);
    EXPECT_TRUE(element.hasText() && element.hasTextEmpty());
    element.firstChild()->set_nodeValue(u"x"_w);
    EXPECT_TRUE(element.hasText() && !element.hasTextEmpty());
    element.addText(u"y"_w);
    EXPECT_FALSE(element.hasText());
    element.get_childElements()->deleteAll();
    EXPECT_FALSE(element.hasText());
    element.addCDATASection(u""_w);
    EXPECT_FALSE(element.hasText());
}

TEST_F(Model, AttributeNamesIgnoreTheCaseOfAToZ) {
    class Open : public DOM::_XMLElement {
    public:
        using _XMLElement::addAttribute;
        using _XMLElement::addAttributeNode;
    } element;
    DOM::_XMLAttribute * const id = element.setAttributeNamed(u"id"_w, u"1"_w);
    EXPECT_EQ(element.setAttributeNamed(u"ID"_w, u"2"_w), id);
    EXPECT_EQ(element.getAttributeNamed(u"Id"_w), id);
    EXPECT_EQ(element.get_attributes()->getNamedNode(0), id);
    for (char16_t const * const name : {u"i", u"idx", u""}) {
        EXPECT_EQ(element.getAttributeNamed(Units(name)), nullptr);
    }
    element.setAttributeNamed(u"\u00C9"_w, u"3"_w);
    element.setAttributeNamed(u"\u00E9"_w, u"4"_w);
    DOM::_XMLAttribute * const nameless = element.setAttributeNamed(nullptr, nullptr);
    EXPECT_TRUE(element.getAttributeNamed(u""_w) == nameless && element.getAttributeNamed(nullptr) == nameless);
    EXPECT_EQ(element.addAttributeNode(nullptr), nullptr);
    DOM::_XMLAttribute * const twice = element.addAttribute(u"Id"_w, u"5"_w);
    EXPECT_EQ(twice->get_parentNode(), &element);
    EXPECT_EQ(element.getAttributeNamed(u"Id"_w), id);
    EXPECT_EQ(element.addAttributeNode(new DOM::_XMLAttribute)->get_parentNode(), nullptr);
    EXPECT_EQ(shownAttributes(element), "[id=2,\\x00c9=3,\\x00e9=4,=,Id=5,=]");
}

TEST_F(Model, MapSetsButNeverAddsAndAnInstructionGivesTheAttributeThatWasThereBefore) {
    DOM::_XMLNamedNodeMap map;
    auto * const node = new DOM::_XMLAttribute;
    node->set_nodeName(u"a"_w);
    map.addObject(nullptr);
    map.addObject(node);
    EXPECT_EQ(map.setNodeNamed(u"b"_w, u"1"_w), nullptr);
    EXPECT_EQ(map.setNodeNamed(u"A"_w, u"1"_w), node);
    EXPECT_TRUE(map.getNamedNode(1) == node && map.getNamedNode(2) == nullptr && map.getNamedNodeCount() == 2);

    DOM::_XMLDocument document;
    DOM::_XMLProcessingInstruction & instruction = *document.addProcessingInstruction();
    EXPECT_EQ(instruction.setAttribute(u"a"_w, u"1"_w, false), nullptr);
    EXPECT_EQ(instruction.setAttribute(u"a"_w, u"1"_w, true), nullptr);
    DOM::_XMLAttribute * const made = instruction.getAttribute(u"A"_w);
    EXPECT_EQ(instruction.setAttribute(u"A"_w, u"2"_w, true), made);
    EXPECT_TRUE(made->get_documentNode() == &document && made->get_parentNode() == &instruction);
    EXPECT_EQ(shownNode(*node) + shownDocument(document), "a=1?[a=2]");
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
            third.addChildNode(new WatchedElement(log, u'n'));
            DOM::_XMLElement & same = third;
            third = same;
        }
        EXPECT_EQ(source.getNodeCount(), 1U);
        EXPECT_EQ(log, "o");
    }
    EXPECT_EQ(log, "on");
    DOM::_XMLProcessingInstruction other;
    {
        DOM::_XMLProcessingInstruction source;
        source.get_attributes()->addObject(new WatchedAttribute(log, u'p'));
        DOM::_XMLProcessingInstruction const copy(source);
        EXPECT_EQ(copy.get_attributes(), source.get_attributes());
        other = copy;
        source = DOM::_XMLProcessingInstruction();
        EXPECT_EQ(shownNode(source), "?");
    }
    EXPECT_EQ(shownNode(other) + log, "?[p=]on");
    other = DOM::_XMLProcessingInstruction();
    EXPECT_EQ(log, "onp");
}

TEST_F(Model, CopiesOfADocumentOutliveIt) {
    std::string log;
    DOM::_XMLDocument survivor;
    {
        DOM::_XMLDocument source;
        source.set_lineTermination(u"\n"_w);
        loaded(source, u"<?p q='r'?><a b='1'><c>d</c></a>");
        DOM::_XMLElement * const root = source.getRoot();
        root->addChildNode(new WatchedElement(log, u'w'));
        survivor = source;
        DOM::_XMLDocument const third(source);
        EXPECT_TRUE(third.getRoot() == root && root->get_documentNode() == &source);
    }
    EXPECT_EQ(log, "");
    DOM::_XMLElement & root = *survivor.getRoot();
    EXPECT_TRUE(root.get_documentNode() == &survivor && root.getAttribute(0)->get_documentNode() == &survivor);
    EXPECT_EQ(root.firstChild()->get_documentNode(), &survivor);
    EXPECT_EQ(shownDocument(survivor), "?p[q=r],a[b=1](c(\"d\"),w)");
    EXPECT_EQ(shown(root.toString(0)), "<a b=\"1\">\\x000a  <c>d</c>\\x000a  <w/>\\x000d\\x000a</a>\\x000a");
    EXPECT_EQ(DOM::_XMLElement(root).getNode(0), root.getNode(0));
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
    given.set_nodeValue(u"x"_w);
    DOM::_XMLText const copy(given);
    EXPECT_EQ(liveTexts() - before, 4);
    DOM::_XMLDocument document;
    std::int32_t const empty = liveTexts();
    // The second time what was read is left alone and goes at once.
    for (bool const isChanged : {true, false}) {
        loaded(document, u"<?p q='r'?><a b='1' c='2' B='3'><d>e</d><f/></a>");
        EXPECT_EQ(liveTexts() - empty, 16);
        if (isChanged) {
            DOM::_XMLElement & root = *document.getRoot();
            root.set_nodeName(u"name"_w);
            root.setAttributeNamed(u"C"_w, u"4"_w);
            static_cast<DOM::_XMLElement *>(root.getNode(1))->addElement(u"g"_w, u"h"_w);
            root.get_childElements();
            EXPECT_EQ(liveTexts() - empty, 20);
            EXPECT_EQ(shownDocument(document), "?p[q=r],name[b=3,c=4](d(\"e\"),f(g(\"h\")))");
        }
        document.resetDocument();
        EXPECT_EQ(liveTexts(), empty);
    }
}

TEST_F(Model, NodesThatWereReadCanBeTakenOutAndOutliveTheRest) {
    auto const takeOut = [](_Container & list, std::uint32_t index) {
        std::unique_ptr<DOM::_XMLNode> node(static_cast<DOM::_XMLNode *>(list.getObject(index)));
        list.setItem(index, nullptr);
        return node;
    };
    std::string log;
    for (int way = 0; way < 5; ++way) {
        auto document = std::make_unique<DOM::_XMLDocument>();
        loaded(*document, u"<?p q='r'?><a b='1' c='2'><d>e</d><f g='h'/><i/></a><j><k/></j>");
        DOM::_XMLElement & root = *document->getRoot();
        _Container * const lists[] = {document->get_childNodes(), root.get_childElements(), root.get_attributes()};
        std::unique_ptr<DOM::_XMLNode> const taken = takeOut(*lists[way % 3], way < 3 ? 1 : 0);
        if (way == 3) {
            // One by one, for a list that does not own them.
            lists[0]->set_deleteAll(false);
            delete lists[0]->getObject(1);
            delete lists[0]->getObject(2);
        } else if (way == 4) {
            static_cast<DOM::_XMLElement *>(root.getNode(2))->addChildNode(new WatchedText(log));
        }
        document.reset();
        log += shownNode(*taken) + "|";
        taken->set_documentNode(nullptr);
        taken->set_nodeValue(u"set"_w);
        EXPECT_EQ(shown(taken->get_nodeValue()), "set");
    }
    EXPECT_EQ(log, "a[b=1,c=2](d(\"e\"),f[g=h],i)|f[g=h]|c=2|?p[q=r]|(i)d(\"e\")|");
}

TEST_F(Model, TextsOfNodesAreLiveWhateverTheyWereGiven) {
    DOM::_XMLText text;
    _WideString released;
    released.empty();
    text.set_nodeValue(released);
    text.set_nodeName(std::move(released));
    EXPECT_EQ(units(text.get_nodeValue()) + units(text.get_nodeName()), u"");
    _WideString given(u"given"_w);
    text.set_nodeValue(given);
    EXPECT_EQ(units(given) + units(DOM::_XMLText(text).get_nodeValue()), u"givengiven");
}

TEST_F(Model, NodesCanBePlacedAndAligned) {
    class alignas(128) Wide : public DOM::_XMLText {};
    auto const wide = std::make_unique<Wide>();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wide.get()) % 128, 0U);
    alignas(DOM::_XMLText) unsigned char place[sizeof(DOM::_XMLText)];
    auto * const text = new (place) DOM::_XMLText;
    EXPECT_EQ(static_cast<void *>(text), static_cast<void *>(place));
    text->~_XMLText();
    delete new (std::nothrow) DOM::_XMLText;
}

TEST(Tags, StaticPredicatesAskTheText) {
    using Text = _WideString;
    for (char16_t const * const row : {u"", u"<>", u"</a/>", u"<!---->", u"<!DOCTYPE]>", u"<![CDATA[]]>", u"<?\?>"}) {
        Text const text(wide(row));
        std::vector<bool> const asked = {DOM::isDOMTag(&text),
                                         DOM::isDOMComment(&text),
                                         DOM::isDOMDocumentType(&text),
                                         DOM::isDOMCDATASection(&text),
                                         DOM::isDOMProcessingInstruction(&text),
                                         DOM::isDOMElement(&text, Text::TAG_STATUS_ENDING)};
        EXPECT_EQ(asked, (std::vector<bool>{text.isDOMTag(), text.isDOMComment(), text.isDOMDocumentType(),
                                            text.isDOMCDATASection(), text.isDOMProcessingInstruction(),
                                            text.isDOMElement(Text::TAG_STATUS_ENDING)}))
            << shown(row);
        EXPECT_TRUE(DOM::isDOMText(&text) && DOM::isDOMAttribute(&text) && DOM::isDOMEntityReference(&text));
    }
    EXPECT_FALSE(DOM::isDOMTag(nullptr));
    EXPECT_TRUE(DOM::isDOMQuote(u'"') && DOM::isDOMQuote(u'\'') && !DOM::isDOMQuote(u'`'));
}

TEST(Charsets, NamesGoBothWays) {
    using Document = DOM::_XMLDocument;
    EXPECT_EQ(Document::charsetCount(), 29U);
    for (std::int32_t number = 0; number < 29; ++number) {
        auto const charset = static_cast<DOM::XMLCharset>(number);
        EXPECT_EQ(Document::wideStringToCharset(Document::charsetToWideString(charset)), charset);
    }
    for (auto const & [number, name] :
         {std::pair{21, "shift_jis"}, {24, "gb231259-15"}, {29, "us-ascii"}, {-1, "us-ascii"}}) {
        EXPECT_EQ(shown(Document::charsetToWideString(static_cast<DOM::XMLCharset>(number))), name);
    }
    for (auto const & [name, number] : {std::pair{u"Shift_jis"_w, 21}, {u"latin1"_w, 1}, {nullptr, 1}}) {
        EXPECT_EQ(Document::wideStringToCharset(name), number);
    }
    EXPECT_EQ(units(DOM::getDescripton()), u"Document Object Model Core 3.0");
    EXPECT_EQ(DOM::getMajorVersion() * 10 + DOM::getMinorVersion(), 10);
}

TEST_F(Model, PropertiesWriteThroughToEveryDeclaration) {
    DOM::_XMLDocument document;
    // A new declaration says "yes" whatever the call that makes it was given.
    document.set_standalone(false);
    EXPECT_EQ(shownDocument(document), "?[version=1.0,standalone=yes]");
    document.set_standalone(false);
    document.addElement(u"r"_w, u""_w);
    document.addProcessingInstruction();
    document.set_version(u"1.1"_w);
    EXPECT_EQ(shownDocument(document), "?[version=1.1,standalone=no],r,?[version=1.1]");
    DOM::_XMLDocument other;
    other.set_encoding(DOM::charsetUTF16);
    other.set_version(nullptr);
    EXPECT_EQ(shownDocument(other), "?[version=,encoding=utf-16,standalone=yes]");
    EXPECT_EQ(units(other.get_version()), u"");
}

} // namespace

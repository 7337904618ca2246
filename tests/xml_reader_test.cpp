#include "xml_support.h"

#include <algorithm>
#include <functional>
#include <morvane/core/literals.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/xml/printed_text.h>
#include <morvane/xml/tree_builder.h>
#include <pthread.h>

namespace {

using namespace morvane::literals;
using namespace xml_test;

class Reader : public Silent {};

TEST_F(Reader, TakesWhatItFinds) {
    struct {
        char16_t const * markup;
        char const * tree; // behind "!" the error of a failure
    } const rows[] = {
        // Text counts alone between the two tags of an element.
        {u"<r><a>x</a><a>  </a><a>\r\n</a><a></a><a/><a /><a>x<b/>y</a><a><!--c-->x</a><a>x<?p?></a><a>x</b></a>"
         u"<a>x</b>y</a><a>x<!DOCTYPE b [ ]></a></r>",
         "r(a(\"x\"),a(\"  \"),a(\"\\x000d\\x000a\"),a,a,a,a(b),a(<!--c]),a(?p),a,a(\"y\"),a)"},
        // End tags match exactly or not at all.
        {u"<a><b></a></b>", "a(b)"},
        {u"<a><b><c>lost", "a(b(c))"},
        {u"<r>x</r ></R>", "r"},
        {u"<a></a></a>x<b/>y", "a,b"},
        {u"</a>", "!"},
        {u"<r><a/ >x</a/><></><>x</>< a>x</a></r>", "r(a/(\"x\"),,(\"x\"),a(\"x\"))"},
        // Attributes.
        {u"<r><a x=\"1\" X=\"2\"/><a x=\"1\" y='2' x='3'/><a b=1 c=\"2\" d/><a b=\"c d e\"/><a b=\"c\td \"/>"
         u"<a b=\"x' c='y\"/><a b=\"it's here\"/><a b = \"1\"/><a = = b=\"1\"/><a b=\"1/><a b=\"\" c='\" d=\"/></r>",
         "r(a[x=2],a[x=3,y=2],a[b=,c=2],a[b=c d e],a[b=c\\x0009d ],a[b=x,c=y],a[b=],a[=],a[=,b=1],a[b=],"
         "a[b=,c=,d=])"},
        {u"<r><a b=\"x=y\"/><a b=\"1\"\r\n c=\"2\"/><a\nb=\"1\"/><a  \t b=\"1\"  /><a b=\"1\" >x</a><x:a y:b='c'/></r>",
         "r(a[b=x=y],a[b=,c=2],a\\x000ab=\"1\",a[b=1],a[b=1](\"x\"),x:a[y:b=c])"},
        // Stray and early ends.
        {u"<a><b/>x>y</a><c/>", "a(b)"},
        {u"<a b=\"1>2\"/><c/>", "a[b=]"},
        {u"<a>1 < 2</a>", "a(2</a)"},
        // The other kinds of markup.
        {u"<!-- a --><!----><!---><!--a>b--><c/>", "<!-- a ],<!--],!---(!--a)"},
        {u"<![CDATA[a<b>c]]><a><![CDATA[]]></a><![cdata[a]]>", "<![a<b>c],a(<![]),![cdata[a]]"},
        {u"<?pi some data?><?p a=\"1\" A=\"2\" b?><?\?>", "?pi,?p[a=2],?"},
        {u"<!DOCTYPE a [ <!ELEMENT a ANY> ]><a/>", "a"},
        {u"<!DOCTYPE a><a/><!DOCTYPE b [ ]><c/>", "c"},
        {u"<!DOCTYPE a [ ]>", "!"},
        {u"<!DOCTYPE a><a/>", "!loadFromString:no nodes"},
        // References are resolved before the scan.
        {u"<r><a>&#233;</a><a>x&amp;y</a>&#60;b/&#62;</r>", "r(a(\"\\x00e9\"),a(\"xy\"),b)"},
        {u"<a>x&y</a><b>z;</a>", "a(\"x\")"},
        {u"<a>x&#0000;y</a>", "a(\"xy\")"}};
    for (auto const & row : rows) {
        DOM::_XMLDocument document;
        document.addElement(u"former"_w, u""_w);
        EXPECT_EQ(loaded(document, row.markup), row.tree) << shown(row.markup);
    }
}

TEST_F(Reader, NullTextEmptiesTheTreeAndKeepsTheSettings) {
    DOM::_XMLDocument document;
    document.set_encoding(DOM::charsetUTF16);
    document.set_version(u"7"_w);
    std::string const before = settings(document);
    _WideString error;
    EXPECT_FALSE(document.loadFromString(nullptr, error));
    EXPECT_EQ(shownDocument(document), "");
    EXPECT_TRUE(document.loadFromString(u"<?xml version='1' encoding='utf-8'?>"_w, error));
    EXPECT_EQ(shown(error), "loadFromString:bad input string");
    EXPECT_EQ(settings(document), before);
}

TEST_F(Reader, BrokeTagSplitsTheInsideOfATag) {
    using Split = DOM::_XMLDocument;
    _WideStringArray names;
    _WideStringArray values;
    _WideString name(u"former"_w);
    EXPECT_FALSE(Split::brokeTag(nullptr, name, &names, &values));
    EXPECT_FALSE(Split::brokeTag(u"a b=\"1\""_w, name, nullptr, &values));
    EXPECT_FALSE(Split::brokeTag(u"a b=\"1\""_w, name, &names, nullptr));
    EXPECT_FALSE(Split::brokeTag(u""_w, name, &names, &values));
    EXPECT_EQ(units(name), u"former");
    EXPECT_FALSE(Split::brokeTag(u"a"_w, name, &names, &values));
    EXPECT_EQ(units(name), u"a");
    name = u"n b=\"1\" c "_w;
    EXPECT_TRUE(Split::brokeTag(name, name, &names, &values));
    EXPECT_EQ(units(name), u"n");
    // What the arrays held before counts in the result.
    EXPECT_TRUE(Split::brokeTag(u" \t"_w, name, &names, &values));
    EXPECT_EQ(units(name), u"");
    EXPECT_EQ(names.get_count() + values.get_count(), 2U);
    EXPECT_EQ(units(names.getString(0)) + units(values.getString(0)), u"b1");
}

TEST(ReaderTraces, TellEveryEventInOrder) {
    DebugChannel channel;
    DOM::_XMLDocument document;
    loaded(document, u"<?xml v=\"1\"?><!DOCTYPE r [ ]><r a='1' b=2><e c=\"3\"/><!--m--><![CDATA[n]]><t>u</t></r>");
    std::string events;
    for (std::string const & event : channel.events()) {
        events += joined({event.starts_with("Data: ") ? "\n" : "|", event});
    }
    EXPECT_EQ(events, R"(
Data: <?xml v="1"?>\x000d\x000a|DOMProcessingInstruction|"1"
Data: <!DOCTYPE r [ ]>\x000d\x000a|XMLDocumentType
Data: <r a='1' b=2>\x000d\x000a|TAG_STATUS_BEGINNING|'1'|2
Data: <e c="3"/>\x000d\x000a|TAG_STATUS_EMPTY|"3"|e|c|3
Data: <!--m-->\x000d\x000a|XMLComment
Data: <![CDATA[n]]>\x000d\x000a|XMLCDATASection
Data: <t>\x000d\x000a|TAG_STATUS_BEGINNING
Data: </t>\x000d\x000a|DOMElement:TAG_STATUS_ENDING|DOMText
Data: </r>\x000d\x000a|DOMElement:TAG_STATUS_ENDING)");
}

TEST(ReaderTraces, CutALongTagAtTheFormatLimitAndNothingElse) {
    DebugChannel channel;
    DOM::_XMLDocument document;
    std::u16string const content(40000, u'x');
    loaded(document, u"<a b=\"" + content + u"\"/>");
    std::vector<std::size_t> sizes;
    for (std::string const & event : channel.events()) {
        sizes.push_back(event.size());
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{32767, 16, 40002, 1, 1, 40000}));
}

TEST(ReaderTraces, AListenerThatThrowsLeavesAUsableDocument) {
    static int left = 0; // of the events that are heard
    DOM::_XMLDocument document;
    for (int planned = 0; planned < 8; ++planned) {
        left = planned;
        auto const former = morvane::platform::setDebugListener([](unsigned short int const *) {
            if (left-- == 0) {
                throw left;
            }
        });
        EXPECT_ANY_THROW(loaded(document, u"<a x='1'><b><c/></b></a>")) << planned;
        morvane::platform::setDebugListener(nullptr);
        EXPECT_EQ(loaded(document, u"<d/>"), "d");
        morvane::platform::setDebugListener(former);
    }
}

TEST_F(Reader, ATreeOfAnArrayEndsAtTheEndTagOfItsParent) {
    _WideTagArray tags;
    for (char16_t const * const tag : {u"<b>", u"</b>", u"</c>", u"text", u"</a>", u"<d/>"}) {
        tags.addTag(new _WideTag(Units(tag), *tag == u'<'));
    }
    DOM::_XMLDocument document;
    std::uint32_t index = 0;
    morvane::ArrayPieces pieces(tags, index);
    EXPECT_EQ(morvane::TreeBuilder(document, document.addElement(u"a"_w, u""_w)).build(pieces), 1U);
    EXPECT_EQ(index, 5U);
    // The entry in front of the first one counts as well.
    index = 4;
    morvane::ArrayPieces rest(tags, index);
    EXPECT_EQ(morvane::TreeBuilder(document, document.addElement(u"a"_w, u""_w)).build(rest), 1U);
    EXPECT_EQ(shownDocument(document), "a(b),a(\"text\")");
}

TEST_F(Reader, TakesVeryManyAttributesAndSiblings) {
    std::u16string markup = u"<r";
    auto const name = [](std::uint32_t number, char16_t first) {
        std::string const digits = std::to_string(number);
        return std::u16string(1, first).append(digits.begin(), digits.end());
    };
    for (char16_t const first : {u'n', u'N'}) {
        for (std::uint32_t number = 0; number < 20000; ++number) {
            markup.append(u" ").append(name(number, first)).append({u'=', u'"', first, u'"'});
        }
    }
    markup += u">";
    for (int count = 0; count < 100000; ++count) {
        markup += u"<a b='1'>t</a>";
    }
    DOM::_XMLDocument document;
    _WideString error;
    ASSERT_TRUE(document.loadFromString(Units(markup + u"</r>"), error));
    DOM::_XMLElement & root = *document.getRoot();
    ASSERT_EQ(root.getAttributeCount(), 20000U);
    for (std::uint32_t number = 0; number < 20000; number += 999) {
        EXPECT_EQ(shownNode(*root.getAttribute(number)), shown(name(number, u'n') + u"=N"));
    }
    ASSERT_EQ(root.getNodeCount(), 100000U);
    EXPECT_EQ(shownNode(*root.getNode(99999)), "a[b=1](\"t\")");
}

/// Runs `work` on a thread of its own with a stack of 256 KiB.
void runOnSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    pthread_t thread;
    auto const start = [](void * task) -> void * {
        (*static_cast<std::function<void()> *>(task))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST_F(Reader, DepthTakesNoStack) {
    constexpr std::uint32_t depth = 1000000;
    std::u16string unclosed;
    std::u16string ends;
    for (std::uint32_t level = 0; level < depth; ++level) {
        unclosed += u"<a>";
        ends += u"</a>";
    }
    runOnSmallStack([&] {
        DOM::_XMLDocument document;
        document.set_lineSpace(u""_w);
        document.set_lineTermination(u""_w);
        for (std::u16string const & text : {unclosed + ends, unclosed}) {
            _WideString error;
            ASSERT_TRUE(document.loadFromString(Units(text), error));
            _WideString const printed = document.toFormatString();
            // The innermost prints as an empty element, in four units.
            ASSERT_EQ(printed.get_length(), (depth - 1) * 7 + 4);
            EXPECT_EQ(units(printed.mid((depth - 2) * 3, 11)), u"<a><a/></a>");
        }
    });
}

TEST(PrintedText, CopiesUpToTheFirstZeroAtAnyLength) {
    for (std::size_t length = 0; length <= 72; ++length) {
        for (std::size_t zero = 0; zero <= length; ++zero) {
            std::u16string text(length, u'\x8000');
            if (zero < length) {
                text[zero] = 0;
            }
            std::vector<unsigned short int> source(text.begin(), text.end());
            source.push_back(1);
            std::vector<unsigned short int> target(length + 1);
            EXPECT_EQ(morvane::copyUpToZero(target.data(), {source.data(), length}) - target.data(),
                      static_cast<std::ptrdiff_t>(zero));
            EXPECT_TRUE(std::equal(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(zero), target.begin()));
        }
    }
}

} // namespace

// A document out of any bytes, printed, saved in a charset and loaded again, beside the slow model.

#include "fuzz_input.h"
#include "stream_testing.h"
#include "temporary_folder.h"
#include "text_model.h"
#include "text_testing.h"
#include "xml_model.h"

#include <morvane/containers/container.h>
#include <morvane/platform/debug_channel.h>
#include <morvane/strings/wide_string_parser.h>
#include <morvane/xml/tree_builder.h>
#include <morvane/xml/xml_attribute.h>
#include <morvane/xml/xml_document.h>
#include <morvane/xml/xml_element.h>
#include <morvane/xml/xml_named_node_map.h>
#include <morvane/xml/xml_processing_instruction.h>

namespace {

std::vector<std::u16string> events;

void listen(unsigned short int const * text) {
    events.push_back(textOf(text));
}

bool isLoaded(unsigned char const * bytes, std::size_t size, xml_model::Loading & loading) {
    _WideString error;
    _WideString result;
    DOM::XMLCharset charset = DOM::charsetEUCKR;
    bool const isRead =
        DOM::_XMLDocument::loadStringFromBinary(bytes, static_cast<std::int32_t>(size), error, charset, result);
    loading = {charset, textOf(result), textOf(error)};
    return isRead;
}

/// Every node with its names, values, attributes and links, as the model has it.
void expectTree(DOM::_XMLDocument const & document, xml_model::Tree const & model) {
    std::vector<DOM::_XMLNode *> nodes(model.nodes.size());
    for (std::size_t index = 0; index < nodes.size(); ++index) {
        xml_model::Node const & told = model.nodes[index];
        auto * const element = told.type == 1 ? static_cast<DOM::_XMLElement *>(nodes[index]) : nullptr;
        _Container const & children = element == nullptr ? *document.get_childNodes() : *element->get_childElements();
        expect(told.type == 1 || told.type == 9 ? children.get_count() == told.children.size() : told.children.empty());
        for (std::uint32_t child = 0; child < told.children.size(); ++child) {
            nodes[told.children[child]] = static_cast<DOM::_XMLNode *>(children.getObject(child));
        }
        if (index != 0) {
            DOM::_XMLNode & node = *nodes[index];
            expect(node.get_nodeType() == told.type && node.get_documentNode() == &document);
            expect(node.get_parentNode() == nodes[told.parent]);
            expect(textOf(node.get_nodeName()) == told.name && textOf(node.get_nodeValue()) == told.value);
        }
        if (told.type == 1 || told.type == 7) {
            DOM::_XMLNamedNodeMap const & map =
                told.type == 1 ? *element->get_attributes()
                               : *static_cast<DOM::_XMLProcessingInstruction *>(nodes[index])->get_attributes();
            expect(map.get_count() == told.attributes.size());
            for (std::uint32_t place = 0; place < map.get_count(); ++place) {
                DOM::_XMLNode & attribute = *map.getNamedNode(place);
                expect(textOf(attribute.get_nodeName()) == told.attributes[place].first);
                expect(textOf(attribute.get_nodeValue()) == told.attributes[place].second);
            }
        }
    }
}

/// Loads `bytes` and gives those of the file that they come to in some charset.
std::string throughADocument(std::string const & bytes, TemporaryFolder const & folder) {
    // What the test chooses comes from the length, so that any document is an input.
    std::size_t const choice = bytes.size();
    xml_model::Loading const told = xml_model::load(bytes);
    xml_model::Loading found;
    expect(isLoaded(reinterpret_cast<unsigned char const *>(bytes.data()), bytes.size(), found) == told.error.empty());
    expect(found.charset == told.charset && found.text == told.text && found.error == told.error);

    DOM::_XMLDocument document;
    std::u16string const space = choice % 3 == 0 ? u"" : choice % 3 == 1 ? u"  " : u"\t";
    std::u16string const lineEnd = choice % 2 == 0 ? u"\r\n" : u"\n";
    document.set_lineSpace(wideText(space));
    document.set_lineTermination(wideText(lineEnd));
    FileName const name = folder.put("in", bytes);
    _WideString error;
    bool const isRead = document.loadFromFile(name, error);
    expect(document.get_encoding() == told.charset);
    if (!told.error.empty()) {
        expect(!isRead && textOf(error) == told.error && !document.hasRoot());
        return "";
    }
    xml_model::Tree tree = xml_model::read(told.text);
    expect(isRead == (tree.nodes.size() > 1));
    expect(textOf(error) == (tree.pieces == 0 ? u"loadFromString:no nodes" : u""));
    expectTree(document, tree);
    events.clear();
    morvane::platform::setDebugListener(listen);
    expect(document.loadFromString(wideText(told.text), error) == isRead);
    morvane::platform::setDebugListener(nullptr);
    expect(events == tree.traces);
    expectTree(document, tree);

    // The same over an array of tags.
    _WideStringParser parser(wideText(text_model::withoutReferences(told.text)));
    _WideTagArray tags;
    expect(parser.parseTags(&tags, _WideStringParser::docTypeXML, true) == static_cast<int>(tree.pieces));
    std::uint32_t index = 0;
    morvane::ArrayPieces pieces(tags, index);
    DOM::_XMLDocument other;
    expect(morvane::TreeBuilder(other, nullptr).build(pieces) == tree.nodes.size() - 1 && index == tree.pieces);
    expectTree(other, tree);

    // Mixed content comes from edits alone.
    if (document.hasRoot()) {
        document.getRoot()->addText(wideText(choice % 5 == 0 ? u"" : u"t"));
        std::size_t root = 1;
        while (tree.nodes[root].type != 1 || tree.nodes[root].parent != 0) {
            ++root;
        }
        tree.nodes[root].children.push_back(tree.nodes.size());
        tree.nodes.push_back({3, u"", choice % 5 == 0 ? u"" : u"t", {}, root, {}});
    }
    std::u16string const printed = xml_model::printed(tree, space, lineEnd);
    expect(textOf(document.toString(0)) == printed);
    expect(document.saveToFile(folder.name("out"), error) == xml_model::saved(printed, told.charset).has_value());
    auto const charset = static_cast<int>(choice % 31);
    auto const toldBytes = xml_model::saved(printed, charset);
    expect(DOM::_XMLDocument::saveStringToFile(folder.name("out"), error, static_cast<DOM::XMLCharset>(charset),
                                               wideText(printed))
           == toldBytes.has_value());
    expect(!toldBytes || folder.get("out") == *toldBytes);
    return toldBytes.value_or("");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    static TemporaryFolder const folder;
    morvane::platform::setDebugListener(nullptr);
    std::string bytes(data, data + size);
    if (size < 3) {
        xml_model::Loading loading;
        expect(fails([&] { isLoaded(data, size, loading); }));
        return 0;
    }
    // Once more with what was saved.
    for (int round = 0; round < 2 && bytes.size() >= 3; ++round) {
        bytes = throughADocument(bytes, folder);
    }
    return 0;
}

// A document out of any bytes, printed, saved in a charset and loaded again, beside the slow model.

#include "fuzz_input.h"
#include "stream_testing.h"
#include "temporary_folder.h"
#include "text_testing.h"
#include "xml_model.h"

#include <morvane/morvane.h>
#include <morvane/xml/tree_builder.h>

namespace {

std::vector<std::u16string> events;

bool isLoaded(std::string const & bytes, xml_model::Loading & loading) {
    _WideString error;
    _WideString result;
    DOM::XMLCharset charset = DOM::charsetEUCKR;
    bool const isRead =
        DOM::_XMLDocument::loadStringFromBinary(reinterpret_cast<unsigned char const *>(bytes.data()),
                                                static_cast<std::int32_t>(bytes.size()), error, charset, result);
    loading = {charset, textOf(result), textOf(error)};
    return isRead;
}

/// Every node with its names, values, attributes and links, as the model has it.
void expectTree(DOM::_XMLDocument const & document, xml_model::Tree const & model) {
    std::vector<DOM::_XMLNode *> nodes(model.nodes.size());
    for (std::size_t index = 0; index < nodes.size(); ++index) {
        xml_model::Node const & told = model.nodes[index];
        _Container const * children = index == 0 ? document.get_childNodes() : nullptr;
        _Container const * attributes = nullptr;
        if (told.type == 1) {
            children = static_cast<DOM::_XMLElement *>(nodes[index])->get_childElements();
            attributes = static_cast<DOM::_XMLElement *>(nodes[index])->get_attributes();
        } else if (told.type == 7) {
            attributes = static_cast<DOM::_XMLProcessingInstruction *>(nodes[index])->get_attributes();
        }
        expect((children == nullptr ? 0 : children->get_count()) == told.children.size());
        for (std::uint32_t child = 0; child < told.children.size(); ++child) {
            nodes[told.children[child]] = static_cast<DOM::_XMLNode *>(children->getObject(child));
        }
        if (index != 0) {
            DOM::_XMLNode & node = *nodes[index];
            expect(node.get_nodeType() == told.type && node.get_documentNode() == &document);
            expect(node.get_parentNode() == nodes[told.parent]);
            expect(textOf(node.get_nodeName()) == told.name && textOf(node.get_nodeValue()) == told.value);
        }
        expect((attributes == nullptr ? 0 : attributes->get_count()) == told.attributes.size());
        for (std::uint32_t place = 0; place < told.attributes.size(); ++place) {
            auto & attribute = *static_cast<DOM::_XMLNode *>(attributes->getObject(place));
            expect(textOf(attribute.get_nodeName()) == told.attributes[place].first);
            expect(textOf(attribute.get_nodeValue()) == told.attributes[place].second);
        }
    }
}

/// Loads `bytes` and gives those of the file that they come to in some charset.
std::string throughADocument(std::string const & bytes, TemporaryFolder const & folder) {
    // What the test chooses comes from the length, so that any document is an input.
    std::size_t const choice = bytes.size();
    xml_model::Loading const told = xml_model::load(bytes);
    xml_model::Loading found;
    expect(isLoaded(bytes, found) == told.error.empty());
    expect(found.charset == told.charset && found.text == told.text && found.error == told.error);

    DOM::_XMLDocument document;
    std::u16string const space = choice % 3 == 0 ? u"" : choice % 3 == 1 ? u"  " : u"\t";
    std::u16string const lineEnd = choice % 2 == 0 ? u"\r\n" : u"\n";
    document.set_lineSpace(wideText(space));
    document.set_lineTermination(wideText(lineEnd));
    _WideString error;
    bool const isRead = document.loadFromFile(folder.put("file", bytes), error);
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
    morvane::platform::setDebugListener([](unsigned short int const * text) { events.push_back(textOf(text)); });
    expect(document.loadFromString(wideText(told.text), error) == isRead);
    morvane::platform::setDebugListener(nullptr);
    expect(events == tree.traces);
    expectTree(document, tree);

    // The same over an array of tags.
    _WideStringParser parser(wideText(text_model::withoutReferences(told.text)));
    _WideTagArray tags;
    parser.parseTags(&tags, _WideStringParser::docTypeXML, true);
    std::uint32_t index = 0;
    morvane::ArrayPieces pieces(tags, index);
    DOM::_XMLDocument other;
    expect(morvane::TreeBuilder(other, nullptr).build(pieces) == tree.nodes.size() - 1 && index == tree.pieces);
    expectTree(other, tree);

    // Mixed content comes from edits alone.
    for (std::size_t node = 1; document.hasRoot(); ++node) {
        if (tree.nodes[node].type == 1) {
            std::u16string const text = choice % 5 == 0 ? u"" : u"t";
            document.getRoot()->addText(wideText(text));
            tree.add(3, u"", text, node);
            break;
        }
    }
    std::u16string const printed = xml_model::printed(tree, space, lineEnd);
    expect(textOf(document.toString(0)) == printed);
    auto const charset = static_cast<int>(choice % 31);
    auto const toldBytes = xml_model::saved(printed, charset);
    // A file system may hurry to bring a file to the disk that is emptied and written again.
    std::filesystem::remove(folder.path("file"));
    expect(DOM::_XMLDocument::saveStringToFile(folder.name("file"), error, static_cast<DOM::XMLCharset>(charset),
                                               wideText(printed))
           == toldBytes.has_value());
    expect(!toldBytes || folder.get("file") == *toldBytes);
    return toldBytes.value_or("");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    static TemporaryFolder const folder;
    morvane::platform::setDebugListener(nullptr);
    std::string bytes(data, data + size);
    xml_model::Loading loading;
    expect(size >= 3 || fails([&] { isLoaded(bytes, loading); }));
    // Once more with what was saved.
    for (int round = 0; round < 2 && bytes.size() >= 3; ++round) {
        std::filesystem::remove(folder.path("file"));
        bytes = throughADocument(bytes, folder);
    }
    return 0;
}

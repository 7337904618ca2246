// The scanning operations of a parser and the splitting of a tag, from any position of any text, beside the slow model.

#include "fuzz_input.h"
#include "text_model.h"
#include "text_testing.h"
#include "xml_model.h"

#include <morvane/platform/debug_channel.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_string_parser.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/xml/xml_document.h>

namespace {

std::vector<std::u16string> textsOf(_WideStringArray const & array) {
    std::vector<std::u16string> texts;
    for (std::uint32_t index = 0; index < array.get_count(); ++index) {
        texts.push_back(textOf(array.getString(index)));
    }
    return texts;
}

std::vector<std::pair<std::u16string, bool>> piecesOf(_WideTagArray const & tags) {
    std::vector<std::pair<std::u16string, bool>> pieces;
    for (std::uint32_t index = 0; index < tags.get_count(); ++index) {
        pieces.emplace_back(textOf(tags.getTag(index)->get_wideString()), tags.getTag(index)->isTag());
    }
    return pieces;
}

void expectWholeScans(xml_model::Scanner told, _WideStringParser parser, bool isXml) {
    auto const type = isXml ? _WideStringParser::docTypeXML : static_cast<_WideStringParser::DocType>(0);
    int const position = told.position;
    _WideTagArray tags;
    parser.parseTags(&tags, type, false);
    expect(piecesOf(tags) == told.parseTags(isXml) && parser.get_position() == told.position);

    parser.seek(told.position = position);
    _WideStringArray words;
    isXml ? parser.parseStringsEx(&words, false) : parser.parseStrings(&words, false);
    expect(textsOf(words) == told.parseStrings(isXml) && parser.get_position() == told.position);

    parser.seek(told.position = position);
    std::pair<int, int> toldBounds;
    std::pair<std::int32_t, std::int32_t> bounds;
    for (bool found = true; found;) {
        found = told.nextTag(toldBounds.first, toldBounds.second, isXml);
        expect(parser.nextTag(bounds.first, bounds.second, type) == found);
        expect(bounds == toldBounds && parser.get_position() == told.position);
    }
}

void expectSteps(xml_model::Scanner told, _WideStringParser parser) {
    std::pair<int, int> toldBounds;
    std::pair<std::int32_t, std::int32_t> bounds;
    std::u16string toldLine = u"former";
    _WideString line("former");
    while (told.position < told.length()) {
        expect(parser.nextCode(bounds.first, bounds.second) == told.nextCode(toldBounds.first, toldBounds.second));
        expect(bounds == toldBounds);
        expect(parser.nextLine(line) == told.nextLine(toldLine) && textOf(line) == toldLine);
        expect(parser.nextBlank() == told.nextBlank());
        expect(parser.skipBlanks() == told.skipBlanks());
        expect(parser.get_position() == told.position);
    }
}

void expectSplit(std::u16string const & inside) {
    std::vector<xml_model::Attribute> attributes;
    std::vector<std::u16string> traces;
    auto const toldName = xml_model::brokeTag(inside, attributes, traces);
    _WideString name("former");
    _WideStringArray names;
    _WideStringArray values;
    expect(DOM::_XMLDocument::brokeTag(wideText(inside), name, &names, &values) == !attributes.empty());
    expect(textOf(name) == toldName.value_or(u"former"));
    expect(names.get_count() == attributes.size() && values.get_count() == attributes.size());
    for (std::uint32_t index = 0; index < attributes.size(); ++index) {
        expect(textOf(names.getString(index)) == attributes[index].first);
        expect(textOf(values.getString(index)) == attributes[index].second);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzInput input(data, size);
    auto const start = input.value<std::uint8_t>();
    std::u16string text;
    while (!input.isEmpty()) {
        // Bytes above ASCII become units that hold a delimiter in one half.
        int const byte = input.value<std::uint8_t>();
        text += static_cast<char16_t>(byte < 0x80 ? byte : byte < 0xC0 ? byte << 8 | '>' : ('<' << 8 | (byte & 0x3F)));
    }
    xml_model::Scanner const told{text, static_cast<int>(start % (text.size() + 1))};
    // By hand, so that zeros stay.
    _WideString wide(u' ', told.length());
    std::copy(text.begin(), text.end(), wide.get_data());
    _WideStringParser parser;
    parser.set_wideString(wide);
    parser.set_position(told.position);
    morvane::platform::setDebugListener(nullptr);
    expectWholeScans(told, parser, true);
    expectWholeScans(told, parser, false);
    expectSteps(told, parser);
    expectSplit(text_model::upToZero(text));
    return 0;
}

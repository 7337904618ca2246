// The scans of a parser and the splitting of a tag, from any position of any text, beside the slow model.

#include "fuzz_input.h"
#include "text_testing.h"
#include "xml_model.h"

#include <morvane/platform/debug_channel.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_string_parser.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/strings/wide_tag_array.h>

namespace {

void expectTexts(_WideStringArray const & array, std::vector<std::u16string> const & told) {
    expect(array.get_count() == told.size());
    for (std::uint32_t index = 0; index < told.size(); ++index) {
        expect(textOf(array.getString(index)) == told[index]);
    }
}

void expectScans(std::u16string const & text, std::size_t start, _WideStringParser parser, bool isXml) {
    auto const type = isXml ? _WideStringParser::docTypeXML : static_cast<_WideStringParser::DocType>(0);
    auto const from = static_cast<std::int32_t>(start);
    auto const isAt = [&parser](std::size_t place) {
        return parser.get_position() == static_cast<std::int32_t>(place);
    };
    std::size_t place = start;
    auto const pieces = xml_model::parseTags(text, place, isXml);
    _WideTagArray tags;
    expect(parser.parseTags(&tags, type, false) == static_cast<std::int32_t>(pieces.size()) && isAt(place));
    for (std::uint32_t index = 0; index < pieces.size(); ++index) {
        expect(textOf(tags.getTag(index)->get_wideString()) == pieces[index].first);
        expect(tags.getTag(index)->isTag() == pieces[index].second);
    }
    parser.seek(from);
    _WideStringArray words;
    isXml ? parser.parseStringsEx(&words, false) : parser.parseStrings(&words, false);
    expectTexts(words, xml_model::parseStrings(text, place = start, isXml));
    expect(isAt(place));
    parser.seek(from);
    place = start;
    for (bool found = true; found;) {
        auto const [toldBegin, toldEnd] = xml_model::nextTag(text, place, isXml);
        std::int32_t begin = 0;
        std::int32_t end = 0;
        found = parser.nextTag(begin, end, type);
        expect(found == (toldBegin != xml_model::none && toldEnd != xml_model::none) && isAt(place));
        expect(begin == static_cast<std::int32_t>(toldBegin) && end == static_cast<std::int32_t>(toldEnd));
    }
}

void expectSplit(std::u16string const & inside) {
    std::vector<xml_model::Attribute> attributes;
    std::vector<std::u16string> told[3];
    auto const toldName = xml_model::brokeTag(inside, attributes, told[0]);
    for (auto const & [name, value] : attributes) {
        told[1].push_back(name);
        told[2].push_back(value);
    }
    _WideString name("former");
    _WideStringArray names;
    _WideStringArray values;
    expect(DOM::_XMLDocument::brokeTag(wideText(inside), name, &names, &values) == !attributes.empty());
    expect(textOf(name) == toldName.value_or(u"former"));
    expectTexts(names, told[1]);
    expectTexts(values, told[2]);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzInput input(data, size);
    std::size_t start = input.below(256);
    std::u16string text = text_model::widened(input.bytes(size));
    // Bytes above ASCII become units that hold a delimiter in one half.
    for (char16_t & unit : text) {
        int const wide = unit < 0xC0 ? unit << 8 | '>' : '<' << 8 | (unit & 0x3F);
        unit = unit < 0x80 ? unit : static_cast<char16_t>(wide);
    }
    start %= text.size() + 1;
    // By hand, so that zeros stay.
    _WideString wide(u' ', static_cast<std::int32_t>(text.size()));
    std::copy(text.begin(), text.end(), wide.get_data());
    _WideStringParser parser;
    parser.set_wideString(wide);
    parser.set_position(static_cast<std::int32_t>(start));
    morvane::platform::setDebugListener(nullptr);
    expectScans(text, start, parser, true);
    expectScans(text, start, parser, false);
    expectSplit(text_model::upToZero(text));
    return 0;
}

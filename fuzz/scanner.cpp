// The scans of a parser and the splitting of a tag, from any position of any text, beside the slow model.

#include "fuzz_input.h"
#include "text_testing.h"
#include "xml_model.h"

#include <morvane/morvane.h>

namespace {

std::vector<std::u16string> textsOf(_WideStringArray const & array) {
    std::vector<std::u16string> texts;
    for (std::uint32_t index = 0; index < array.get_count(); ++index) {
        texts.push_back(textOf(array.getString(index)));
    }
    return texts;
}

void expectScans(std::u16string const & text, std::size_t start, _WideStringParser parser, bool isXml) {
    auto const type = isXml ? _WideStringParser::docTypeXML : static_cast<_WideStringParser::DocType>(0);
    std::size_t place = start;
    auto const restart = [&] { parser.seek(static_cast<std::int32_t>(place = start)); };
    auto const isSame = [](std::int32_t found, std::size_t told) { return found == static_cast<std::int32_t>(told); };
    restart();
    auto const pieces = xml_model::parseTags(text, place, isXml);
    _WideTagArray tags;
    expect(isSame(parser.parseTags(&tags, type, false), pieces.size()) && isSame(parser.get_position(), place));
    for (std::uint32_t index = 0; index < pieces.size(); ++index) {
        expect(textOf(tags.getTag(index)->get_wideString()) == pieces[index].first);
        expect(tags.getTag(index)->isTag() == pieces[index].second);
    }
    restart();
    _WideStringArray words;
    isXml ? parser.parseStringsEx(&words, false) : parser.parseStrings(&words, false);
    expect(textsOf(words) == xml_model::parseStrings(text, place, isXml) && isSame(parser.get_position(), place));
    restart();
    for (bool found = true; found;) {
        auto const told = xml_model::nextTag(text, place, isXml);
        std::int32_t begin = 0;
        std::int32_t end = 0;
        found = parser.nextTag(begin, end, type);
        expect(found == (begin != -1 && end != -1) && isSame(parser.get_position(), place));
        expect(isSame(begin, told.first) && isSame(end, told.second));
    }
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
    morvane::platform::setDebugListener(nullptr);
    expectScans(text, start, parser, true);
    expectScans(text, start, parser, false);

    std::vector<xml_model::Attribute> attributes;
    std::vector<std::u16string> told[3];
    auto const toldName = xml_model::brokeTag(text_model::upToZero(text), attributes, told[0]);
    for (auto const & [name, value] : attributes) {
        told[1].push_back(name);
        told[2].push_back(value);
    }
    _WideString name("former");
    _WideStringArray names;
    _WideStringArray values;
    expect(DOM::_XMLDocument::brokeTag(wide, name, &names, &values) == !attributes.empty());
    expect(textOf(name) == toldName.value_or(u"former") && textsOf(names) == told[1] && textsOf(values) == told[2]);
    return 0;
}

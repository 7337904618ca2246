// What the tests of the document model share: texts in and out, trees as one line, the debug channel caught.
#pragma once

#include <cstdio>
#include <gtest/gtest.h>
#include <initializer_list>
#include <morvane/containers/container.h>
#include <morvane/platform/debug_channel.h>
#include <morvane/strings/wide_string.h>
#include <morvane/xml/xml_attribute.h>
#include <morvane/xml/xml_document.h>
#include <morvane/xml/xml_element.h>
#include <morvane/xml/xml_named_node_map.h>
#include <morvane/xml/xml_processing_instruction.h>
#include <string>
#include <string_view>
#include <vector>

namespace xml_test {

/// Zero-closed units.
class Units {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): stands for a text in a call.
    Units(std::u16string_view text) : units(text.begin(), text.end()) { units.push_back(0); }

    // NOLINTNEXTLINE(google-explicit-constructor)
    operator unsigned short int const *() const { return units.data(); }

private:
    std::vector<unsigned short int> units;
};

inline _WideString wide(std::u16string_view text) {
    return _WideString(static_cast<unsigned short int const *>(Units(text)));
}

inline std::u16string units(_WideString const & text) {
    return text.arg() == nullptr ? u"(released)" : std::u16string(text.arg(), text.arg() + text.get_length());
}

/// A text for a message: units beyond ASCII and controls as \xNNNN.
inline std::string shown(std::u16string_view text) {
    std::string result;
    for (char16_t const unit : text) {
        char piece[8] = {static_cast<char>(unit)};
        if (unit < 0x20 || unit >= 0x7F) {
            std::snprintf(piece, sizeof piece, "\\x%04x", static_cast<unsigned>(unit));
        }
        result += piece;
    }
    return result;
}
inline std::string shown(char16_t const * text) {
    return shown(std::u16string_view(text));
}
inline std::string shown(_WideString const & text) {
    return shown(units(text));
}

inline std::string joined(std::initializer_list<std::string_view> parts) {
    std::string result;
    for (std::string_view const part : parts) {
        result += part;
    }
    return result;
}

inline std::string shownNode(DOM::_XMLNode const & node);

/// The items with commas in between and the two brackets around; nothing where there are none.
template <typename Get>
std::string shownItems(std::uint32_t count, Get get, std::string_view brackets = "") {
    std::string result;
    for (std::uint32_t index = 0; index < count; ++index) {
        result += index == 0 ? brackets.substr(0, 1) : ",";
        result += shownNode(*get(index));
    }
    return result.append(count == 0 || brackets.empty() ? "" : brackets.substr(1));
}

inline std::string shownAttributes(DOM::_XMLElement const & element) {
    return shownItems(
        element.getAttributeCount(), [&](std::uint32_t index) { return element.getAttribute(index); }, "[]");
}

/// A node in one line: `name[attribute=value,...](child,...)`, `"text"`, `<![data]`, `<!--comment]`, `?target[...]`.
inline std::string shownNode(DOM::_XMLNode const & node) {
    std::string const name = shown(node.get_nodeName());
    std::string const value = shown(node.get_nodeValue());
    switch (node.get_nodeType()) {
    case DOM::ELEMENT_NODE: {
        auto const & element = static_cast<DOM::_XMLElement const &>(node);
        auto const child = [&](std::uint32_t index) { return element.getNode(index); };
        return joined({name, shownAttributes(element), shownItems(element.getNodeCount(), child, "()")});
    }
    case DOM::ATTRIBUTE_NODE:
        return joined({name, "=", value});
    case DOM::TEXT_NODE:
        return joined({"\"", value, "\""});
    case DOM::CDATA_SECTION_NODE:
        return joined({"<![", value, "]"});
    case DOM::COMMENT_NODE:
        return joined({"<!--", value, "]"});
    case DOM::PROCESSING_INSTRUCTION_NODE: {
        auto const & map = *static_cast<DOM::_XMLProcessingInstruction const &>(node).get_attributes();
        auto const attribute = [&](std::uint32_t index) { return map.getNamedNode(index); };
        return joined({"?", name, shownItems(map.get_count(), attribute, "[]")});
    }
    default:
        return "(unexpected node)";
    }
}

/// The top of a document; asks no element for its lists.
inline std::string shownDocument(DOM::_XMLDocument const & document) {
    _Container const & nodes = *document.get_childNodes();
    return shownItems(nodes.get_count(),
                      [&](std::uint32_t index) { return static_cast<DOM::_XMLNode const *>(nodes.getObject(index)); });
}

/// The settings and properties: quote, space, termination, encoding, standalone flag, version.
inline std::string settings(DOM::_XMLDocument const & document) {
    return joined({shown(document.get_lineQuote()), "|", shown(document.get_lineSpace()), "|",
                   shown(document.get_lineTermination()), "|", std::to_string(document.get_encoding()), "|",
                   document.get_standalone() ? "yes|" : "no|", shown(document.get_version())});
}

/// Catches what is said on the debug channel; with `silent` nobody listens.
class DebugChannel {
public:
    explicit DebugChannel(bool silent = false) {
        heard.clear();
        former = morvane::platform::setDebugListener(silent ? nullptr : listen);
    }
    DebugChannel(DebugChannel const &) = delete;
    ~DebugChannel() { morvane::platform::setDebugListener(former); }

    DebugChannel & operator=(DebugChannel const &) = delete;

    std::vector<std::string> const & events() const { return heard; }

private:
    static void listen(unsigned short int const * text) { heard.push_back(shown(_WideString(text))); }

    inline static std::vector<std::string> heard;
    morvane::platform::DebugListener former;
};

/// A test in which nobody listens to the debug channel.
class Silent : public testing::Test {
    DebugChannel channel{true};
};

/// Loads `markup` into `document`; the tree in one line, or the failure.
inline std::string loaded(DOM::_XMLDocument & document, std::u16string_view markup) {
    _WideString error;
    bool const result = document.loadFromString(Units(markup), error);
    std::string const tree = shownDocument(document);
    return result ? tree : joined({tree, "!", shown(error)});
}

} // namespace xml_test

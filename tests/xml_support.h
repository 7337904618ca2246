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
        if (unit >= 0x20 && unit < 0x7F) {
            result += static_cast<char>(unit);
        } else {
            char digits[8];
            std::snprintf(digits, sizeof digits, "\\x%04x", static_cast<unsigned>(unit));
            result += digits;
        }
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

/// A node in one line: `name[attribute=value,...](child,...)`, `"text"`, `<![data]`, `<!--comment]`, `?target[...]`.
inline std::string shownNode(DOM::_XMLNode const & node);

template <typename Count, typename Get>
std::string shownItems(Count count, Get get) {
    std::string result;
    for (std::uint32_t index = 0; index < count; ++index) {
        DOM::_XMLNode const & node = *get(index);
        result += index == 0 ? "" : ",";
        result += node.get_nodeType() == DOM::ATTRIBUTE_NODE
                      ? joined({shown(node.get_nodeName()), "=", shown(node.get_nodeValue())})
                      : shownNode(node);
    }
    return result;
}

inline std::string shownAttributes(DOM::_XMLElement const & element) {
    std::uint32_t const count = element.getAttributeCount();
    std::string const items = shownItems(count, [&](std::uint32_t index) { return element.getAttribute(index); });
    return count == 0 ? "" : joined({"[", items, "]"});
}

inline std::string shownNode(DOM::_XMLNode const & node) {
    std::string const name = shown(node.get_nodeName());
    std::string const value = shown(node.get_nodeValue());
    switch (node.get_nodeType()) {
    case DOM::ELEMENT_NODE: {
        auto const & element = static_cast<DOM::_XMLElement const &>(node);
        std::uint32_t const count = element.getNodeCount();
        std::string const items = shownItems(count, [&](std::uint32_t index) { return element.getNode(index); });
        return joined({name, shownAttributes(element), count == 0 ? "" : joined({"(", items, ")"})});
    }
    case DOM::TEXT_NODE:
        return joined({"\"", value, "\""});
    case DOM::CDATA_SECTION_NODE:
        return joined({"<![", value, "]"});
    case DOM::COMMENT_NODE:
        return joined({"<!--", value, "]"});
    case DOM::PROCESSING_INSTRUCTION_NODE: {
        auto const & map = *static_cast<DOM::_XMLProcessingInstruction const &>(node).get_attributes();
        std::string const items =
            shownItems(map.get_count(), [&](std::uint32_t index) { return map.getNamedNode(index); });
        return joined({"?", name, items.empty() ? "" : joined({"[", items, "]"})});
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
        heard().clear();
        former = morvane::platform::setDebugListener(silent ? nullptr : listen);
    }
    DebugChannel(DebugChannel const &) = delete;
    ~DebugChannel() { morvane::platform::setDebugListener(former); }

    DebugChannel & operator=(DebugChannel const &) = delete;

    std::vector<std::string> const & events() const { return heard(); }

private:
    static std::vector<std::string> & heard() {
        static std::vector<std::string> events;
        return events;
    }
    static void listen(unsigned short int const * text) {
        std::u16string event;
        for (; *text != 0; ++text) {
            event += static_cast<char16_t>(*text);
        }
        heard().push_back(shown(event));
    }

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

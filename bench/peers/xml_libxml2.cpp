#include "xml_peer.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <vector>

namespace {

std::size_t countNodes(xmlNodePtr root) {
    std::size_t count = 0;
    std::vector<xmlNodePtr> pending{root};
    while (!pending.empty()) {
        xmlNodePtr const node = pending.back();
        pending.pop_back();
        for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
            if (child->type == XML_ELEMENT_NODE) {
                ++count;
                for (xmlAttrPtr attribute = child->properties; attribute != nullptr; attribute = attribute->next) {
                    ++count;
                }
                for (xmlNsPtr space = child->nsDef; space != nullptr; space = space->next) {
                    ++count;
                }
                pending.push_back(child);
            } else if (child->type == XML_TEXT_NODE && xmlIsBlankNode(child) == 0) {
                ++count;
            }
        }
    }
    return count;
}

} // namespace

XmlPeer const libxml2Peer{
    "libxml2",
    [](char const * bytes, std::size_t size) -> void * {
        return xmlReadMemory(bytes, static_cast<int>(size), nullptr, nullptr,
                             XML_PARSE_NOBLANKS | XML_PARSE_HUGE | XML_PARSE_NONET);
    },
    [](void * tree) { xmlFreeDoc(static_cast<xmlDocPtr>(tree)); },
    [](void * tree) { return countNodes(static_cast<xmlNodePtr>(tree)); },
    [](void * tree) -> std::size_t {
        xmlChar * text = nullptr;
        int size = 0;
        xmlDocDumpFormatMemory(static_cast<xmlDocPtr>(tree), &text, &size, 1);
        xmlFree(text);
        return static_cast<std::size_t>(size);
    },
    [](void * tree, char const * path) { return xmlSaveFormatFile(path, static_cast<xmlDocPtr>(tree), 1) > 0; }};

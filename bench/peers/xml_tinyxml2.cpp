#include "xml_peer.h"

#include <memory>
#include <tinyxml2.h>
#include <vector>

namespace {

std::size_t countNodes(tinyxml2::XMLNode const * root) {
    std::size_t count = 0;
    std::vector<tinyxml2::XMLNode const *> pending{root};
    while (!pending.empty()) {
        tinyxml2::XMLNode const * node = pending.back();
        pending.pop_back();
        for (auto const * child = node->FirstChild(); child != nullptr; child = child->NextSibling()) {
            if (tinyxml2::XMLElement const * element = child->ToElement()) {
                ++count;
                for (auto const * attribute = element->FirstAttribute(); attribute != nullptr;
                     attribute = attribute->Next()) {
                    ++count;
                }
                pending.push_back(child);
            } else if (child->ToText() != nullptr) {
                ++count;
            }
        }
    }
    return count;
}

} // namespace

XmlPeer const tinyxml2Peer{
    "TinyXML-2",
    [](char const * bytes, std::size_t size) -> void * {
        auto document = std::make_unique<tinyxml2::XMLDocument>();
        return document->Parse(bytes, size) == tinyxml2::XML_SUCCESS ? document.release() : nullptr;
    },
    [](void * tree) { delete static_cast<tinyxml2::XMLDocument *>(tree); },
    [](void * tree) { return countNodes(static_cast<tinyxml2::XMLDocument *>(tree)); },
    [](void * tree) {
        tinyxml2::XMLPrinter printer;
        static_cast<tinyxml2::XMLDocument *>(tree)->Print(&printer);
        return static_cast<std::size_t>(printer.CStrSize());
    },
    [](void * tree, char const * path) {
        return static_cast<tinyxml2::XMLDocument *>(tree)->SaveFile(path) == tinyxml2::XML_SUCCESS;
    }};

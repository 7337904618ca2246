#include "xml_peer.h"

#include <pugixml.hpp>
#include <vector>

namespace {

struct SizeWriter : pugi::xml_writer {
    std::string text;
    void write(void const * data, std::size_t size) override { text.append(static_cast<char const *>(data), size); }
};

std::size_t countNodes(pugi::xml_node root) {
    std::size_t count = 0;
    std::vector<pugi::xml_node> pending{root};
    while (!pending.empty()) {
        pugi::xml_node const node = pending.back();
        pending.pop_back();
        for (pugi::xml_node child : node.children()) {
            if (child.type() == pugi::node_element) {
                ++count;
                for ([[maybe_unused]] pugi::xml_attribute attribute : child.attributes()) {
                    ++count;
                }
                pending.push_back(child);
            } else if (child.type() == pugi::node_pcdata) {
                ++count;
            }
        }
    }
    return count;
}

} // namespace

XmlPeer const pugixmlPeer{
    "pugixml",
    [](char const * bytes, std::size_t size) -> void * {
        auto * document = new pugi::xml_document;
        if (!document->load_buffer(bytes, size)) {
            delete document;
            return nullptr;
        }
        return document;
    },
    [](void * tree) { delete static_cast<pugi::xml_document *>(tree); },
    [](void * tree) { return countNodes(*static_cast<pugi::xml_document *>(tree)); },
    [](void * tree) {
        SizeWriter writer;
        static_cast<pugi::xml_document *>(tree)->save(writer, "  ");
        return writer.text.size();
    },
    [](void * tree, char const * path) { return static_cast<pugi::xml_document *>(tree)->save_file(path, "  "); }};

#include "xml_peer.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <rapidxml/rapidxml.hpp>
// The printer calls what it declares later; these stand in front of it.
namespace rapidxml::internal {
template <class OutIt, class Ch>
inline OutIt print_children(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_element_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_data_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_cdata_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_declaration_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_comment_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_doctype_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
template <class OutIt, class Ch>
inline OutIt print_pi_node(OutIt out, xml_node<Ch> const * node, int flags, int indent);
} // namespace rapidxml::internal
#include <rapidxml/rapidxml_print.hpp>
#include <string>
#include <vector>

namespace {

struct Tree {
    std::unique_ptr<char[]> text;
    rapidxml::xml_document<> document;
};

bool isBlank(char const * text, std::size_t size) {
    for (std::size_t index = 0; index < size; ++index) {
        if (text[index] != ' ' && text[index] != '\t' && text[index] != '\r' && text[index] != '\n') {
            return false;
        }
    }
    return true;
}

std::size_t countNodes(rapidxml::xml_node<> * root) {
    std::size_t count = 0;
    std::vector<rapidxml::xml_node<> *> pending{root};
    while (!pending.empty()) {
        rapidxml::xml_node<> * node = pending.back();
        pending.pop_back();
        for (auto * child = node->first_node(); child != nullptr; child = child->next_sibling()) {
            if (child->type() == rapidxml::node_element) {
                ++count;
                for (auto * attribute = child->first_attribute(); attribute != nullptr;
                     attribute = attribute->next_attribute()) {
                    ++count;
                }
                pending.push_back(child);
            } else if (child->type() == rapidxml::node_data && !isBlank(child->value(), child->value_size())) {
                ++count;
            }
        }
    }
    return count;
}

std::string printed(void * tree) {
    std::string text;
    rapidxml::print(std::back_inserter(text), static_cast<Tree *>(tree)->document);
    return text;
}

} // namespace

XmlPeer const rapidxmlPeer{"RapidXML",
                           [](char const * bytes, std::size_t size) -> void * {
                               auto tree = std::make_unique<Tree>();
                               tree->text = std::make_unique<char[]>(size + 1);
                               std::memcpy(tree->text.get(), bytes, size);
                               try {
                                   tree->document.parse<0>(tree->text.get());
                               } catch (rapidxml::parse_error const &) {
                                   return nullptr;
                               }
                               return tree.release();
                           },
                           [](void * tree) { delete static_cast<Tree *>(tree); },
                           [](void * tree) { return countNodes(&static_cast<Tree *>(tree)->document); },
                           [](void * tree) { return printed(tree).size(); },
                           [](void * tree, char const * path) {
                               std::string const text = printed(tree);
                               std::ofstream file(path, std::ios::binary);
                               file.write(text.data(), static_cast<std::streamsize>(text.size()));
                               return file.good();
                           }};

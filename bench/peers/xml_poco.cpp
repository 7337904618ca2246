#include "xml_peer.h"

#include <Poco/AutoPtr.h>
#include <Poco/DOM/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/DOMWriter.h>
#include <Poco/DOM/Document.h>
#include <Poco/DOM/NamedNodeMap.h>
#include <Poco/Exception.h>
#include <Poco/SAX/XMLReader.h>
#include <Poco/XML/XMLWriter.h>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

std::size_t countNodes(Poco::XML::Node * root) {
    std::size_t count = 0;
    std::vector<Poco::XML::Node *> pending{root};
    while (!pending.empty()) {
        Poco::XML::Node * node = pending.back();
        pending.pop_back();
        for (auto * child = node->firstChild(); child != nullptr; child = child->nextSibling()) {
            if (child->nodeType() == Poco::XML::Node::ELEMENT_NODE) {
                Poco::XML::AutoPtr<Poco::XML::NamedNodeMap> attributes(child->attributes());
                count += 1 + attributes->length();
                pending.push_back(child);
            } else if (child->nodeType() == Poco::XML::Node::TEXT_NODE) {
                ++count;
            }
        }
    }
    return count;
}

void write(void * tree, std::ostream & stream) {
    Poco::XML::DOMWriter writer;
    writer.setOptions(Poco::XML::XMLWriter::PRETTY_PRINT | Poco::XML::XMLWriter::WRITE_XML_DECLARATION);
    writer.writeNode(stream, static_cast<Poco::XML::Document *>(tree));
}

} // namespace

XmlPeer const pocoPeer{"POCO",
                       [](char const * bytes, std::size_t size) -> void * {
                           Poco::XML::DOMParser parser;
                           parser.setFeature(Poco::XML::DOMParser::FEATURE_FILTER_WHITESPACE, true);
                           // Else namespace declarations would not be among the attributes.
                           parser.setFeature(Poco::XML::XMLReader::FEATURE_NAMESPACES, false);
                           try {
                               return parser.parseMemory(bytes, size);
                           } catch (Poco::Exception const &) {
                               return nullptr;
                           }
                       },
                       [](void * tree) { static_cast<Poco::XML::Document *>(tree)->release(); },
                       [](void * tree) { return countNodes(static_cast<Poco::XML::Document *>(tree)); },
                       [](void * tree) -> std::size_t {
                           std::ostringstream stream;
                           write(tree, stream);
                           return stream.str().size();
                       },
                       [](void * tree, char const * path) {
                           std::ofstream stream(path, std::ios::binary);
                           write(tree, stream);
                           return stream.good();
                       }};

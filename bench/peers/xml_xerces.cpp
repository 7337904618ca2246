#include "xml_peer.h"

#include <memory>
#include <vector>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/LocalFileFormatTarget.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLChar.hpp>

namespace {

namespace x = xercesc;

void start() {
    static bool const started = [] {
        x::XMLPlatformUtils::Initialize();
        return true;
    }();
    (void)started;
}

std::size_t countNodes(x::DOMNode * root) {
    std::size_t count = 0;
    std::vector<x::DOMNode *> pending{root};
    while (!pending.empty()) {
        x::DOMNode * node = pending.back();
        pending.pop_back();
        for (auto * child = node->getFirstChild(); child != nullptr; child = child->getNextSibling()) {
            if (child->getNodeType() == x::DOMNode::ELEMENT_NODE) {
                count += 1 + child->getAttributes()->getLength();
                pending.push_back(child);
            } else if (child->getNodeType() == x::DOMNode::TEXT_NODE
                       && !x::XMLChar1_0::isAllSpaces(child->getNodeValue(),
                                                      x::XMLString::stringLen(child->getNodeValue()))) {
                ++count;
            }
        }
    }
    return count;
}

void write(void * tree, x::XMLFormatTarget & target) {
    static XMLCh const core[]{x::chLatin_C, x::chLatin_o, x::chLatin_r, x::chLatin_e, 0};
    auto * implementation =
        static_cast<x::DOMImplementationLS *>(x::DOMImplementationRegistry::getDOMImplementation(core));
    x::DOMLSSerializer * serializer = implementation->createLSSerializer();
    if (serializer->getDomConfig()->canSetParameter(x::XMLUni::fgDOMWRTFormatPrettyPrint, true)) {
        serializer->getDomConfig()->setParameter(x::XMLUni::fgDOMWRTFormatPrettyPrint, true);
    }
    x::DOMLSOutput * output = implementation->createLSOutput();
    output->setByteStream(&target);
    serializer->write(static_cast<x::DOMDocument *>(tree), output);
    output->release();
    serializer->release();
}

} // namespace

XmlPeer const xercesPeer{"Xerces-C",
                         [](char const * bytes, std::size_t size) -> void * {
                             start();
                             x::XercesDOMParser parser;
                             parser.setValidationScheme(x::XercesDOMParser::Val_Never);
                             parser.setLoadExternalDTD(false);
                             parser.setCreateEntityReferenceNodes(false);
                             x::MemBufInputSource source(reinterpret_cast<XMLByte const *>(bytes), size, "race", false);
                             try {
                                 parser.parse(source);
                             } catch (...) {
                                 return nullptr;
                             }
                             return parser.getErrorCount() == 0 ? parser.adoptDocument() : nullptr;
                         },
                         [](void * tree) { static_cast<x::DOMDocument *>(tree)->release(); },
                         [](void * tree) { return countNodes(static_cast<x::DOMDocument *>(tree)); },
                         [](void * tree) -> std::size_t {
                             x::MemBufFormatTarget target;
                             write(tree, target);
                             return target.getLen();
                         },
                         [](void * tree, char const * path) {
                             x::LocalFileFormatTarget target(path);
                             write(tree, target);
                             return true;
                         }};

#include "xml_peer.h"

#include <QByteArray>
#include <QDomDocument>
#include <QFile>
#include <QTextStream>
#include <memory>
#include <vector>

namespace {

std::size_t countNodes(QDomNode const & root) {
    std::size_t count = 0;
    std::vector<QDomNode> pending{root};
    while (!pending.empty()) {
        QDomNode const node = pending.back();
        pending.pop_back();
        for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
            if (child.isElement()) {
                count += 1 + static_cast<std::size_t>(child.attributes().count());
                pending.push_back(child);
            } else if (child.isText()) {
                ++count;
            }
        }
    }
    return count;
}

} // namespace

XmlPeer const qtPeer{
    "Qt",
    [](char const * bytes, std::size_t size) -> void * {
        auto document = std::make_unique<QDomDocument>();
        return document->setContent(QByteArray::fromRawData(bytes, static_cast<int>(size))) ? document.release()
                                                                                            : nullptr;
    },
    [](void * tree) { delete static_cast<QDomDocument *>(tree); },
    [](void * tree) { return countNodes(*static_cast<QDomDocument *>(tree)); },
    [](void * tree) { return static_cast<std::size_t>(static_cast<QDomDocument *>(tree)->toByteArray(2).size()); },
    [](void * tree, char const * path) {
        QFile file(QString::fromUtf8(path));
        if (!file.open(QIODevice::WriteOnly)) {
            return false;
        }
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        static_cast<QDomDocument *>(tree)->save(stream, 2);
        return true;
    }};

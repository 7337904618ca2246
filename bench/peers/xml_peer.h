// What the XML race asks of every contestant.
#pragma once

#include <cstddef>
#include <string>

/// One library that loads XML into a tree. A tree is whatever the contestant makes of it.
struct XmlPeer {
    char const * name;
    /// The tree of `size` bytes of UTF-8; null when the library refuses. The bytes outlive the tree.
    void * (*load)(char const * bytes, std::size_t size);
    /// Deletes the tree.
    void (*destroy)(void * tree);
    /// Elements, attributes, and texts that are not blank.
    std::size_t (*count)(void * tree);
    /// Prints the tree to memory and gives its size in bytes; null where the library can't.
    std::size_t (*print)(void * tree);
    /// Prints the tree to a file; null where the library can't.
    bool (*save)(void * tree, char const * path);
};

extern XmlPeer const morvanePeer;
extern XmlPeer const pugixmlPeer;
extern XmlPeer const rapidxmlPeer;
extern XmlPeer const tinyxml2Peer;
extern XmlPeer const libxml2Peer;
extern XmlPeer const xercesPeer;
extern XmlPeer const qtPeer;
extern XmlPeer const pocoPeer;

/// What a document is made of. Texts are those that are not blank.
struct XmlShape {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t texts = 0;
    /// Of all texts together.
    std::size_t textUnits = 0;
};

XmlShape shapeOf(std::string const & text);

// The documents of the race, each of a shape that every contestant keeps whole.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct Document {
    std::string name;
    std::string text;
    /// How many times it is loaded in one run.
    int times;
};

/// Records of a few short fields with attributes, about 36 bytes an element; of about `bytes` bytes.
std::string recordsOf(std::size_t bytes);

/// The documents that all contestants load; `quick` makes them smaller.
std::vector<Document> raceDocuments(bool quick);

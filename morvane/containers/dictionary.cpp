#include <morvane/containers/dictionary.h>

_Dictionary::_Dictionary() = default;

_Dictionary::_Dictionary(_Dictionary const & other) = default;

_Dictionary::~_Dictionary() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_Dictionary & _Dictionary::operator=(_Dictionary const &) {
    return *this;
}

#include <morvane/components/istream.h>

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
COM::_IStream & COM::_IStream::operator=(_IStream const &) {
    return *this;
}

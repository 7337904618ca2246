#include <morvane/xml/dom_options.h>

DOM::_DOMOptions::_DOMOptions() = default;

DOM::_DOMOptions::_DOMOptions(_DOMOptions const &) {}

DOM::_DOMOptions::~_DOMOptions() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
DOM::_DOMOptions & DOM::_DOMOptions::operator=(_DOMOptions const &) {
    return *this;
}

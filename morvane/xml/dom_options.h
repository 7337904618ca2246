// Options of the document object model.
#pragma once

#include <morvane/xml/dom.h>

/// Holds nothing; no operation reads it.
class MORVANE_EXPORT DOM::_DOMOptions {
public:
    _DOMOptions();
    /// Copies nothing.
    _DOMOptions(_DOMOptions const & other);
    virtual ~_DOMOptions();

    /// Does nothing and gives the object back.
    _DOMOptions & operator=(_DOMOptions const & other);
};

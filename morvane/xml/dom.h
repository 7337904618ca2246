// The document object model: what its classes share, and the predicates over single tags.
#pragma once

#include <cstdint>
#include <morvane/export.h>
#include <morvane/strings/wide_string.h>

/// The namespace of the XML document object model: a small subset of DOM Core, read leniently and printed indented.
///
/// Start from `DOM::_XMLDocument`. It has no namespaces, no entities, no removal of a child and no sibling links. Each
/// nested class is defined in its own header. Threads: a document and its nodes belong to one thread at a time.
class MORVANE_EXPORT DOM {
public:
    /// The kind of a node; the numbers are those of DOM Core.
    enum NodeType : std::int32_t {
        ELEMENT_NODE = 1,
        ATTRIBUTE_NODE = 2,
        TEXT_NODE = 3,
        CDATA_SECTION_NODE = 4,
        PROCESSING_INSTRUCTION_NODE = 7,
        COMMENT_NODE = 8,
        DOCUMENT_NODE = 9,
        DOCUMENT_TYPE_NODE = 10
    };

    /// The charsets that a document can declare. Reading and writing cover 0 to 3, 5 to 13 and 19.
    enum XMLCharset : std::int32_t {
        charsetUSASCII = 0,
        charsetUTF8 = 1,
        charsetUTF16 = 2,
        charsetUCS2 = 3,
        charsetUCS4 = 4,
        charsetISO8859_1 = 5,
        charsetISO8859_2 = 6,
        charsetISO8859_3 = 7,
        charsetISO8859_4 = 8,
        charsetISO8859_5 = 9,
        charsetISO8859_6 = 10,
        charsetISO8859_7 = 11,
        charsetISO8859_8 = 12,
        charsetISO8859_9 = 13,
        charsetISO8859_10 = 14,
        charsetISO8859_11 = 15,
        charsetISO8859_12 = 16,
        charsetISO8859_13 = 17,
        charsetISO8859_14 = 18,
        charsetISO8859_15 = 19,
        charsetISO2022JP = 20,
        charsetShiftJIS = 21,
        charsetEUCJP = 22,
        charsetBig5 = 23,
        charsetGB231259_15 = 24,
        charsetKOI6R = 25,
        charsetISO2022KR = 26,
        charsetEUCKR = 27,
        charsetISO2022CN = 28
    };

    class _DOMOptions;
    class _XMLAttribute;
    class _XMLCDATASection;
    class _XMLComment;
    class _XMLDocument;
    class _XMLDocumentType;
    class _XMLElement;
    class _XMLNamedNodeMap;
    class _XMLNode;
    class _XMLProcessingInstruction;
    class _XMLText;

    DOM();
    /// Copies nothing.
    DOM(DOM const & other);
    virtual ~DOM();

    /// Does nothing and gives the object back.
    DOM & operator=(DOM const & other);

    /// The version of the model, 1 and 0, and its name.
    static unsigned char getMajorVersion();
    static unsigned char getMinorVersion();
    static _WideString getDescripton();

    // What the first and last units of `text` make of it. The forms overlap: every other form is a start tag as well.
    // Cost: constant. A null `text` reads as empty text.

    /// "<" to ">".
    static bool isDOMTag(_WideString const * text);
    /// "<!--" to "-->".
    static bool isDOMComment(_WideString const * text);
    /// "<!DOCTYPE" to "]>": a document type without an internal subset is none here.
    static bool isDOMDocumentType(_WideString const * text);
    /// "<![CDATA[" to "]]>".
    static bool isDOMCDATASection(_WideString const * text);
    /// "<?" to "?>".
    static bool isDOMProcessingInstruction(_WideString const * text);
    /// An element tag of the form `status`; false for a `status` outside the enum.
    static bool isDOMElement(_WideString const * text, _WideString::TagStatus status);
    /// True for every text.
    static bool isDOMAttribute(_WideString const * text);
    static bool isDOMEntityReference(_WideString const * text);
    static bool isDOMText(_WideString const * text);
    /// True for the double and the single quote.
    static bool isDOMQuote(unsigned short int unit);
};

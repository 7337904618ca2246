// A document: the owner of a tree, its reader, printer and factory.
#pragma once

#include <cstdint>
#include <morvane/encodings/string_utility.h>
#include <morvane/xml/xml_node.h>

class _Container;
class _DataString;
class _WideStringArray;
class _WideTagArray;

/// An XML document: read it from a file or text, walk and change the tree, print it to a file or text.
///
/// Use it for data and settings files whose shape is known; it is no conforming parser. The reader takes what it finds:
/// it knows no error in the markup, drops document types, mixed text and named entity references, and stops without a
/// word at a ">" in text. The printer indents and escapes nothing.
/// Cost: loading and printing are linear in the text and use no stack that grows with the depth of the tree.
/// Threads: a document and its nodes belong to one thread at a time; the static members work on their arguments alone.
/// Ownership: the document owns the tree; a copy shares it, and it goes with the last of them.
/// Errors: false and an English text in `error`, which is written on the failures that name one and stays as it was
/// otherwise. The `int` 0 of a file that can't be opened or created, or that has fewer than three bytes, passes to the
/// caller.
class MORVANE_EXPORT DOM::_XMLDocument : public DOM::_XMLNode {
public:
    /// An empty document: UTF-8, two blanks of indentation, lines that end in carriage return and line feed.
    _XMLDocument();
    /// Copies the fields and shares the tree, whose nodes keep their document.
    _XMLDocument(_XMLDocument const & other);
    ~_XMLDocument() override;

    /// Lets go of the own tree and shares that of `other`.
    _XMLDocument & operator=(_XMLDocument const & other);

    // Charsets.

    /// 29.
    static std::uint32_t charsetCount();
    /// The name of `charset` in lower case, such as "utf-8"; that of `charsetUSASCII` for a value outside the enum.
    static _WideString charsetToWideString(XMLCharset charset);
    /// The charset of that name in any case of A to Z; `charsetUTF8` if there is none. Null reads as empty text.
    static XMLCharset wideStringToCharset(unsigned short int const * name);

    // The tree.

    /// The nodes at the top, in document order; the list stays where it is for the life of the document.
    _Container * get_childNodes() const;
    /// The first element at the top; null if there is none.
    _XMLElement * getRoot() const;
    bool hasRoot() const;
    /// Makes an element at the top and gives it. `value` becomes its node value, which is not printed.
    _XMLElement * addElement(_WideString name, _WideString value);
    /// Makes a processing instruction behind what stands at the top and gives it.
    _XMLProcessingInstruction * addProcessingInstruction();
    /// Deletes the tree; encoding, standalone flag and version become those of a new document. The line settings stay.
    void resetDocument();

    // Line settings of the printed form. The quote is stored and not used.

    _WideString get_lineQuote() const;
    _WideString lineQuote() const;
    void set_lineQuote(_WideString text);
    _WideString get_lineSpace() const;
    _WideString lineSpace() const;
    void set_lineSpace(_WideString text);
    _WideString get_lineTermination() const;
    _WideString lineTermination() const;
    void set_lineTermination(_WideString text);

    // Properties. The setters write through to every processing instruction at the top, or make a declaration if there
    // is none.

    /// The charset in which the document is saved. `loadFromFile` sets it to what it identified.
    XMLCharset get_encoding() const;
    void set_encoding(XMLCharset charset);
    /// Stored values: no load writes and no save reads them. A declaration that `set_standalone` makes says "yes".
    bool get_standalone() const;
    void set_standalone(bool value);
    _WideString get_version() const;
    void set_version(unsigned short int const * text);

    // Reading.

    /// Finds the first "<?xml" and the first "?>" from `position` on, each on its own. If both are there, `found` is
    /// the text from one to the other, empty if "?>" comes first, `position` goes behind "?>", and the result is true;
    /// else nothing changes.
    static bool findProcessingInstructionData(_DataString const * text, std::uint32_t & position, _DataString & found);
    static bool findProcessingInstructionWide(_WideString const * text, std::uint32_t & position, _WideString & found);
    /// Identifies the charset of a text, told by its mark (`format`: unknown, UTF-8 or UTF-16 of either byte order) or
    /// its declaration, and decodes it. `data` and `wide` are the two readings of the text that `_StringUtility` gives.
    static bool loadString(_StringUtility::StringFileFormat format, char const * data, unsigned short int const * wide,
                           _WideString & error, XMLCharset & charset, _WideString & result);
    /// The same for a block of `size` bytes or a file.
    static bool loadStringFromBinary(unsigned char const * bytes, std::int32_t size, _WideString & error,
                                     XMLCharset & charset, _WideString & result);
    static bool loadStringFromFile(unsigned short int const * filename, _WideString & error, XMLCharset & charset,
                                   _WideString & result);
    /// Replaces the tree by what the file holds. A file that can't be read leaves the tree as it was; `encoding` may
    /// have changed.
    bool loadFromFile(unsigned short int const * filename, _WideString & error);
    /// Replaces the tree by what `text` holds; the old tree goes in every case. False without a node, and, with an
    /// empty tree, where the heap refused.
    bool loadFromString(unsigned short int const * text, _WideString & error);
    /// Splits the inside of a tag into its name and the names and values of its attributes, which are added to the
    /// arrays. True when `attributeNames` then holds an entry; false, with nothing changed, for a null argument and for
    /// empty text.
    static bool brokeTag(unsigned short int const * text, _WideString & name, _WideStringArray * attributeNames,
                         _WideStringArray * attributeValues);

    // Writing.

    /// Writes `text` in `charset` to a new or emptied file. False for a charset that can't be written. A failed write
    /// is not noticed.
    static bool saveStringToFile(unsigned short int const * filename, _WideString & error, XMLCharset charset,
                                 unsigned short int const * text);
    /// Writes the printed document to a file in its encoding; the declaration is printed as it stands.
    bool saveToFile(unsigned short int const * filename, _WideString & error);
    /// `result` gets the printed document. Always true.
    bool saveToString(_WideString & result, _WideString & error);

    /// The declarations, a line each, and the first element; what else stands at the top is not printed. `level` is not
    /// read.
    _WideString toString(std::int32_t level) override;

protected:
    /// Make a node of this document that notes `parent` and is linked nowhere; the caller owns it.
    _XMLElement * createElement(_XMLNode const * parent);
    _XMLAttribute * createAttribute(_XMLNode const * parent);
    _XMLText * createText(_XMLNode const * parent);
    _XMLCDATASection * createCDATASection(_XMLNode const * parent);
    _XMLComment * createComment(_XMLNode const * parent);
    _XMLProcessingInstruction * createProcessingInstruction(_XMLNode const * parent);

private:
    friend struct morvane::NodeAccess;

    void set_childNodes(_Container * nodes);
    _XMLNode * addChildNode(_XMLNode const * node);
    std::uint32_t parse(_WideTagArray const * tags, std::uint32_t & index, _XMLElement * parent);
    bool setProcessingInstructionAttribute(unsigned short int const * name, unsigned short int const * value);
    void releaseTree();

    _Container * childNodes;
    _WideString lineQuote_;
    _WideString lineSpace_;
    _WideString lineTermination_;
    XMLCharset encoding = charsetUTF8;
    bool standalone = true;
    _WideString version;
    mutable _XMLDocument * nextSharer; // the ring of documents that share `childNodes`; this document when it is alone
};

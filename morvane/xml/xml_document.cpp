#include <morvane/xml/xml_document.h>

#include <algorithm>
#include <morvane/containers/container.h>
#include <morvane/core/literals.h>
#include <morvane/encodings/character_references.h>
#include <morvane/encodings/text_loading.h>
#include <morvane/platform/debug_output.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/unit_search.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/xml/attribute_words.h>
#include <morvane/xml/charset_table.h>
#include <morvane/xml/document_decoding.h>
#include <morvane/xml/folded_name.h>
#include <morvane/xml/node_access.h>
#include <morvane/xml/node_lists.h>
#include <morvane/xml/tree_builder.h>
#include <morvane/xml/tree_printer.h>
#include <new>
#include <utility>

using namespace morvane::literals;
using morvane::NodeAccess;
using morvane::platform::DebugBatch;

namespace {

/// The text in front of its first zero; null reads as empty.
template <typename String>
auto viewUpToZero(String const * text) {
    return morvane::viewOf(text == nullptr ? nullptr : text->get_data());
}

template <typename Unit, typename String>
bool findDeclaration(morvane::TextView<Unit> text, std::uint32_t & position, String & found) {
    morvane::DeclarationFinder<Unit> finder(text, position);
    morvane::TextView<Unit> declaration;
    if (!finder.next(declaration)) {
        return false;
    }
    position = static_cast<std::uint32_t>(finder.position());
    morvane::assignText(found, declaration);
    return true;
}

/// The units of `text` in front of its first zero, and whether an "&" is among
/// them. They are looked through in stretches that are still in the cache from
/// being measured.
morvane::WideView measure(unsigned short int const * text, bool & hasAmpersand) noexcept {
    constexpr std::size_t stretch = 8192;
    morvane::WideView measured{text, 0};
    hasAmpersand = false;
    for (;;) {
        std::size_t const start = measured.length;
        std::size_t const added = morvane::unitLength(text + start, stretch);
        hasAmpersand = hasAmpersand || morvane::findUnit(morvane::WideView{text + start, added}, u'&') < added;
        measured.length += added;
        if (added < stretch) {
            return measured;
        }
    }
}

/// Gives a node and its attributes to `heir` where they know `former` as their
/// document.
void handOverNode(DOM::_XMLNode & node, DOM::_XMLDocument const * former, DOM::_XMLDocument * heir) {
    if (node.get_documentNode() == former) {
        node.set_documentNode(heir);
    }
    if (auto const * const element = dynamic_cast<DOM::_XMLElement const *>(&node)) {
        for (std::uint32_t index = 0; index < element->getAttributeCount(); ++index) {
            if (DOM::_XMLAttribute * const attribute = element->getAttribute(index)) {
                handOverNode(*attribute, former, heir);
            }
        }
    } else if (auto const * const instruction = dynamic_cast<DOM::_XMLProcessingInstruction const *>(&node)) {
        morvane::Attributes const attributes = morvane::attributesOf(*instruction);
        for (std::uint32_t index = 0; index < attributes.count(); ++index) {
            if (DOM::_XMLNode * const attribute = attributes.at(index)) {
                handOverNode(*attribute, former, heir);
            }
        }
    }
}

/// An element on a walk down a tree, and the next of its children.
struct Walk {
    DOM::_XMLElement const * element;
    std::uint32_t next;
};

/// Gives `top` and the nodes under it to `heir` where they know `former` as
/// their document.
void handOver(DOM::_XMLNode & top, DOM::_XMLDocument const * former, DOM::_XMLDocument * heir) {
    morvane::GrowingStack<Walk, 64> walks;
    DOM::_XMLNode * node = &top;
    for (;;) {
        if (node != nullptr) {
            handOverNode(*node, former, heir);
            auto const * const element = dynamic_cast<DOM::_XMLElement const *>(node);
            if (element != nullptr && !walks.push({element, 0})) {
                // The nodes further on keep a document that is gone, as loose nodes do.
                return;
            }
        }
        while (!walks.isEmpty() && walks.top().next == walks.top().element->getNodeCount()) {
            walks.pop();
        }
        if (walks.isEmpty()) {
            return;
        }
        node = walks.top().element->getNode(walks.top().next++);
    }
}

} // namespace

DOM::_XMLDocument::_XMLDocument()
    : _XMLNode(DOCUMENT_NODE), childNodes(new _Container), lineQuote_(u"\""_w), lineSpace_(u"  "_w),
      lineTermination_(u"\r\n"_w), version(u"1.0"_w), nextSharer(this) {}

DOM::_XMLDocument::_XMLDocument(_XMLDocument const & other)
    : _XMLNode(other), childNodes(other.childNodes), lineQuote_(other.lineQuote_), lineSpace_(other.lineSpace_),
      lineTermination_(other.lineTermination_), encoding(other.encoding), standalone(other.standalone),
      version(other.version), nextSharer(other.nextSharer) {
    other.nextSharer = this;
}

DOM::_XMLDocument::~_XMLDocument() {
    releaseTree();
}

DOM::_XMLDocument & DOM::_XMLDocument::operator=(_XMLDocument const & other) {
    if (this != &other) {
        _XMLNode::operator=(other);
        lineQuote_ = other.lineQuote_;
        lineSpace_ = other.lineSpace_;
        lineTermination_ = other.lineTermination_;
        encoding = other.encoding;
        standalone = other.standalone;
        version = other.version;
        if (childNodes != other.childNodes) {
            releaseTree();
            childNodes = other.childNodes;
            nextSharer = std::exchange(other.nextSharer, this);
        }
    }
    return *this;
}

std::uint32_t DOM::_XMLDocument::charsetCount() {
    return morvane::charsetLimit;
}

_WideString DOM::_XMLDocument::charsetToWideString(XMLCharset charset) {
    bool const isKnown = charset >= 0 && charset < morvane::charsetLimit;
    return morvane::makeText(morvane::charsetName(isKnown ? charset : charsetUSASCII));
}

DOM::XMLCharset DOM::_XMLDocument::wideStringToCharset(unsigned short int const * name) {
    for (std::int32_t number = 0; number < morvane::charsetLimit; ++number) {
        if (morvane::equalsFolded(name, morvane::charsetName(number))) {
            return static_cast<XMLCharset>(number);
        }
    }
    return charsetUTF8;
}

_Container * DOM::_XMLDocument::get_childNodes() const {
    return childNodes;
}

DOM::_XMLElement * DOM::_XMLDocument::getRoot() const {
    for (std::uint32_t index = 0; index < childNodes->get_count(); ++index) {
        auto * const node = static_cast<_XMLNode *>(childNodes->getObject(index));
        if (node != nullptr && node->get_nodeType() == ELEMENT_NODE) {
            return static_cast<_XMLElement *>(node);
        }
    }
    return nullptr;
}

bool DOM::_XMLDocument::hasRoot() const {
    return getRoot() != nullptr;
}

DOM::_XMLElement * DOM::_XMLDocument::addElement(_WideString name, _WideString value) {
    return NodeAccess::link(
        *this,
        NodeAccess::make<_XMLElement>(this, nullptr, {.name = morvane::viewOf(name), .value = morvane::viewOf(value)}));
}

DOM::_XMLProcessingInstruction * DOM::_XMLDocument::addProcessingInstruction() {
    return NodeAccess::link(*this, NodeAccess::make<_XMLProcessingInstruction>(this, nullptr));
}

void DOM::_XMLDocument::resetDocument() {
    childNodes->deleteAll();
    childNodes->freeExtra();
    encoding = charsetUTF8;
    standalone = true;
    version = u"1.0"_w;
}

_WideString DOM::_XMLDocument::get_lineQuote() const {
    return lineQuote_;
}

_WideString DOM::_XMLDocument::lineQuote() const {
    return lineQuote_;
}

void DOM::_XMLDocument::set_lineQuote(_WideString text) {
    lineQuote_ = text;
}

_WideString DOM::_XMLDocument::get_lineSpace() const {
    return lineSpace_;
}

_WideString DOM::_XMLDocument::lineSpace() const {
    return lineSpace_;
}

void DOM::_XMLDocument::set_lineSpace(_WideString text) {
    lineSpace_ = text;
}

_WideString DOM::_XMLDocument::get_lineTermination() const {
    return lineTermination_;
}

_WideString DOM::_XMLDocument::lineTermination() const {
    return lineTermination_;
}

void DOM::_XMLDocument::set_lineTermination(_WideString text) {
    lineTermination_ = text;
}

DOM::XMLCharset DOM::_XMLDocument::get_encoding() const {
    return encoding;
}

void DOM::_XMLDocument::set_encoding(XMLCharset charset) {
    setProcessingInstructionAttribute(u"encoding"_w, charsetToWideString(charset));
    encoding = charset;
}

bool DOM::_XMLDocument::get_standalone() const {
    return standalone;
}

void DOM::_XMLDocument::set_standalone(bool value) {
    setProcessingInstructionAttribute(u"standalone"_w, value ? u"yes"_w : u"no"_w);
    standalone = value;
}

_WideString DOM::_XMLDocument::get_version() const {
    return version;
}

void DOM::_XMLDocument::set_version(unsigned short int const * text) {
    setProcessingInstructionAttribute(u"version"_w, text);
    version = text;
}

bool DOM::_XMLDocument::findProcessingInstructionData(_DataString const * text, std::uint32_t & position,
                                                      _DataString & found) {
    return findDeclaration(viewUpToZero(text), position, found);
}

bool DOM::_XMLDocument::findProcessingInstructionWide(_WideString const * text, std::uint32_t & position,
                                                      _WideString & found) {
    return findDeclaration(viewUpToZero(text), position, found);
}

bool DOM::_XMLDocument::loadString(_StringUtility::StringFileFormat format, char const * data,
                                   unsigned short int const * wide, _WideString & error, XMLCharset & charset,
                                   _WideString & result) {
    DebugBatch const batch;
    morvane::EncodedText source(format, morvane::viewOf(data), morvane::viewOf(wide));
    return morvane::decodeDocument(source, error, charset, result);
}

bool DOM::_XMLDocument::loadStringFromBinary(unsigned char const * bytes, std::int32_t size, _WideString & error,
                                             XMLCharset & charset, _WideString & result) {
    DebugBatch const batch;
    if (bytes == nullptr || size < 3) {
        // As a stream fails that ends inside the mark.
        throw 0;
    }
    morvane::EncodedText source(
        morvane::findMark({reinterpret_cast<char const *>(bytes), static_cast<std::size_t>(size)}));
    morvane::platform::debugOutput(u"loadString...\r\n"_w);
    return morvane::decodeDocument(source, error, charset, result);
}

bool DOM::_XMLDocument::loadStringFromFile(unsigned short int const * filename, _WideString & error,
                                           XMLCharset & charset, _WideString & result) {
    DebugBatch const batch;
    morvane::LoadedText file;
    switch (morvane::loadTextFile(filename, file)) {
    case morvane::TextLoading::done:
        break;
    case morvane::TextLoading::fileNotFound:
        error = u"binary stream error"_w;
        return false;
    case morvane::TextLoading::refused:
        return false;
    }
    morvane::EncodedText source(file.text);
    return morvane::decodeDocument(source, error, charset, result);
}

bool DOM::_XMLDocument::loadFromFile(unsigned short int const * filename, _WideString & error) {
    DebugBatch const batch;
    _WideString text;
    return loadStringFromFile(filename, error, encoding, text) && loadFromString(text, error);
}

bool DOM::_XMLDocument::loadFromString(unsigned short int const * text, _WideString & error) {
    DebugBatch const batch;
    childNodes->deleteAll();
    childNodes->freeExtra();
    if (text == nullptr) {
        error = u"loadFromString:bad input string"_w;
        return false;
    }
    bool hasAmpersand = false;
    morvane::WideView markup = measure(text, hasAmpersand);
    morvane::WideBuilder decoded;
    if (hasAmpersand && morvane::hasReferences(markup)) {
        morvane::decodeReferences(markup, decoded);
        if (decoded.hasFailed()) {
            return false;
        }
        markup = decoded.view();
        markup = markup.first(std::min(morvane::findUnit(markup, 0), markup.length));
    }
    try {
        morvane::ScannedPieces pieces(markup);
        std::uint32_t const nodeCount = morvane::TreeBuilder(*this, nullptr).build(pieces);
        if (!pieces.hasYielded()) {
            error = u"loadFromString:no nodes"_w;
        }
        return nodeCount != 0;
    } catch (std::bad_alloc const &) {
        // No part of a tree is left that could pass for the whole.
        childNodes->deleteAll();
        childNodes->freeExtra();
        return false;
    }
}

bool DOM::_XMLDocument::brokeTag(unsigned short int const * text, _WideString & name, _WideStringArray * attributeNames,
                                 _WideStringArray * attributeValues) {
    if (text == nullptr || attributeNames == nullptr || attributeValues == nullptr) {
        return false;
    }
    DebugBatch const batch;
    morvane::WordSplitter words(morvane::viewOf(text), morvane::WordSplitter::Quotes::hold);
    morvane::WideView firstWord;
    if (!words.next(firstWord)) {
        return false;
    }
    morvane::AttributeWord attribute;
    while (morvane::nextAttribute(words, attribute)) {
        attributeNames->addString(morvane::makeText(attribute.name));
        if (morvane::platform::isDebugListening()) {
            morvane::platform::debugOutput(morvane::makeText(attribute.rawValue));
        }
        attributeValues->addString(morvane::makeText(attribute.value()));
    }
    // Last, as the text may be the buffer of the name.
    morvane::assignText(name, firstWord);
    return attributeNames->get_count() != 0;
}

bool DOM::_XMLDocument::saveStringToFile(unsigned short int const * filename, _WideString & error, XMLCharset charset,
                                         unsigned short int const * text) {
    switch (charset) {
    case charsetUSASCII: {
        _WideString encoded;
        _StringUtility::convertWideStringToWideString(text, encoded, _StringUtility::operationEncode, 127);
        return encoded.arg() != nullptr
               && _StringUtility::saveDataStringToFile(filename, encoded.toDataString(), _StringUtility::formatASCII);
    }
    case charsetUTF8:
        if (text == nullptr) {
            return false;
        }
        morvane::saveUtf8File(filename, morvane::viewOf(text));
        return true;
    case charsetUTF16:
    case charsetUCS2:
        return _StringUtility::saveWideStringToFile(filename, text, _StringUtility::formatUTF16);
    default:
        break;
    }
    if (charset < charsetISO8859_1 || charset > charsetISO8859_15) {
        return false;
    }
    _DataString encoded;
    auto const format = static_cast<_StringUtility::StringFileFormat>(charset + 11);
    if (!_StringUtility::convertWideStringToDataString(text, encoded, format)) {
        error = u"charset convertion error"_w;
        return false;
    }
    return _StringUtility::saveDataStringToFile(filename, encoded, _StringUtility::formatANSI);
}

bool DOM::_XMLDocument::saveToFile(unsigned short int const * filename, _WideString & error) {
    _WideString const text = toString(0);
    // Nothing is written over a file where the heap refused the text.
    return text.arg() != nullptr && saveStringToFile(filename, error, encoding, text);
}

bool DOM::_XMLDocument::saveToString(_WideString & result, _WideString &) {
    result = toFormatString();
    return true;
}

_WideString DOM::_XMLDocument::toString(std::int32_t) {
    morvane::TreePrinter printer;
    printer.printDocument(*this);
    return printer.take();
}

DOM::_XMLElement * DOM::_XMLDocument::createElement(_XMLNode const * parent) {
    return NodeAccess::make<_XMLElement>(this, const_cast<_XMLNode *>(parent)).release();
}

DOM::_XMLAttribute * DOM::_XMLDocument::createAttribute(_XMLNode const * parent) {
    return NodeAccess::make<_XMLAttribute>(this, const_cast<_XMLNode *>(parent)).release();
}

DOM::_XMLText * DOM::_XMLDocument::createText(_XMLNode const * parent) {
    return NodeAccess::make<_XMLText>(this, const_cast<_XMLNode *>(parent)).release();
}

DOM::_XMLCDATASection * DOM::_XMLDocument::createCDATASection(_XMLNode const * parent) {
    return NodeAccess::make<_XMLCDATASection>(this, const_cast<_XMLNode *>(parent)).release();
}

DOM::_XMLComment * DOM::_XMLDocument::createComment(_XMLNode const * parent) {
    return NodeAccess::make<_XMLComment>(this, const_cast<_XMLNode *>(parent)).release();
}

DOM::_XMLProcessingInstruction * DOM::_XMLDocument::createProcessingInstruction(_XMLNode const * parent) {
    return NodeAccess::make<_XMLProcessingInstruction>(this, const_cast<_XMLNode *>(parent)).release();
}

void DOM::_XMLDocument::set_childNodes(_Container * nodes) {
    childNodes = nodes;
}

DOM::_XMLNode * DOM::_XMLDocument::addChildNode(_XMLNode const * node) {
    auto * const child = const_cast<_XMLNode *>(node);
    morvane::addTo(*childNodes, child);
    return child;
}

std::uint32_t DOM::_XMLDocument::parse(_WideTagArray const * tags, std::uint32_t & index, _XMLElement * parent) {
    if (tags == nullptr) {
        return 0;
    }
    morvane::ArrayPieces pieces(*tags, index);
    return morvane::TreeBuilder(*this, parent).build(pieces);
}

bool DOM::_XMLDocument::setProcessingInstructionAttribute(unsigned short int const * name,
                                                          unsigned short int const * value) {
    bool isSet = false;
    for (std::uint32_t index = 0; index < childNodes->get_count(); ++index) {
        auto * const node = static_cast<_XMLNode *>(childNodes->getObject(index));
        if (node != nullptr && node->get_nodeType() == PROCESSING_INSTRUCTION_NODE) {
            static_cast<_XMLProcessingInstruction *>(node)->setAttribute(name, value, true);
            isSet = true;
        }
    }
    if (!isSet) {
        _XMLProcessingInstruction * const declaration = addProcessingInstruction();
        declaration->setAttribute(u"version"_w, u"1.0"_w, true);
        declaration->setAttribute(name, value, true);
        declaration->setAttribute(u"standalone"_w, u"yes"_w, true);
    }
    return true;
}

/// Lets go of the tree; the last document that does so deletes it.
void DOM::_XMLDocument::releaseTree() {
    if (nextSharer == this) {
        delete childNodes;
        return;
    }
    _XMLDocument * before = nextSharer;
    while (before->nextSharer != this) {
        before = before->nextSharer;
    }
    before->nextSharer = nextSharer;
    for (std::uint32_t index = 0; index < childNodes->get_count(); ++index) {
        if (auto * const node = static_cast<_XMLNode *>(childNodes->getObject(index))) {
            handOver(*node, this, nextSharer);
        }
    }
    nextSharer = this;
}

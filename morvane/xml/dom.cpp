#include <morvane/xml/dom.h>

#include <morvane/core/literals.h>
#include <morvane/strings/tag_predicates.h>
#include <morvane/strings/text_view.h>

using namespace morvane::literals;

namespace {

morvane::WideView read(_WideString const * text) noexcept {
    return text == nullptr ? morvane::WideView{} : morvane::viewOf(*text);
}

} // namespace

DOM::DOM() = default;

DOM::DOM(DOM const &) {}

DOM::~DOM() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
DOM & DOM::operator=(DOM const &) {
    return *this;
}

unsigned char DOM::getMajorVersion() {
    return 1;
}

unsigned char DOM::getMinorVersion() {
    return 0;
}

_WideString DOM::getDescripton() {
    return _WideString(u"Document Object Model Core 3.0"_w);
}

bool DOM::isDOMTag(_WideString const * text) {
    return morvane::isTag(read(text));
}

bool DOM::isDOMComment(_WideString const * text) {
    return morvane::isComment(read(text));
}

bool DOM::isDOMDocumentType(_WideString const * text) {
    return morvane::isDocumentType(read(text));
}

bool DOM::isDOMCDATASection(_WideString const * text) {
    return morvane::isCDATASection(read(text));
}

bool DOM::isDOMProcessingInstruction(_WideString const * text) {
    return morvane::isProcessingInstruction(read(text));
}

bool DOM::isDOMElement(_WideString const * text, _WideString::TagStatus status) {
    return morvane::isElement(read(text), status);
}

bool DOM::isDOMAttribute(_WideString const *) {
    return true;
}

bool DOM::isDOMEntityReference(_WideString const *) {
    return true;
}

bool DOM::isDOMText(_WideString const *) {
    return true;
}

bool DOM::isDOMQuote(unsigned short int unit) {
    return morvane::isQuote(unit);
}

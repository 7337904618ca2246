#include <morvane/strings/wide_string.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/number_text.h>
#include <morvane/strings/tag_predicates.h>
#include <morvane/strings/text_algorithms.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_comparison.h>
#include <morvane/strings/text_format.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_width.h>
#include <utility>

using namespace morvane;

namespace {

using Unit = unsigned short int;

/// Null and released texts compare as empty ones.
Unit const * orEmpty(Unit const * text) noexcept {
    return text != nullptr ? text : emptyText<Unit>;
}

std::uint32_t orNone(std::int32_t count) noexcept {
    return static_cast<std::uint32_t>(std::max(count, 0));
}

/// The bytes of `text` as units, for as long as the builder lives.
WideView widened(char const * text, WideBuilder & scratch) noexcept {
    DataView const bytes = viewOf(text);
    Unit * const units = scratch.extend(bytes.length);
    if (units != nullptr) {
        widen(bytes, units);
    }
    return scratch.view();
}

} // namespace

_WideString::_WideString() {
    _initialize();
    data = _allocate(1, size);
}

_WideString::_WideString(_WideString const & other) {
    _initialize();
    copy(other);
}

_WideString::_WideString(_WideString && other) noexcept {
    _initialize();
    *this = std::move(other);
}

_WideString::_WideString(unsigned short int c, std::int32_t count) {
    _initialize();
    _assign(c, orNone(count));
}

_WideString::_WideString(unsigned short int const * text, std::int32_t count) {
    _initialize();
    assignRepeated(*this, viewOf(text), orNone(count));
}

_WideString::_WideString(char const * text) {
    _initialize();
    _assign(text);
}

_WideString::_WideString(unsigned short int const * text) {
    _initialize();
    _assign(text);
}

_WideString::_WideString(std::int32_t value) {
    _initialize();
    _assign(value);
}

_WideString::_WideString(std::uint32_t value) {
    _initialize();
    _assign(value);
}

_WideString::_WideString(bool value) {
    _initialize();
    _assign(value);
}

_WideString::_WideString(float value) {
    _initialize();
    _assign(value);
}

_WideString::~_WideString() {
    _uninitialize();
}

_WideString _WideString::createStr(unsigned short int const * text) {
    return makeText(viewOf(text));
}

_WideString const & _WideString::operator=(_WideString const & other) {
    _assign(other);
    return *this;
}

_WideString const & _WideString::operator=(_WideString && other) noexcept {
    if (other.data == nullptr) {
        _assign(other);
    } else if (this != &other) {
        _uninitialize();
        data = std::exchange(other.data, nullptr);
        length = std::exchange(other.length, 0);
        size = std::exchange(other.size, 0);
    }
    return *this;
}

_WideString const & _WideString::operator=(unsigned short int c) {
    _assign(c);
    return *this;
}

_WideString const & _WideString::operator=(unsigned short int const * text) {
    _assign(text);
    return *this;
}

_WideString const & _WideString::operator=(char const * text) {
    _assign(text);
    return *this;
}

_WideString const & _WideString::operator=(std::int32_t value) {
    _assign(value);
    return *this;
}

_WideString const & _WideString::operator=(std::uint32_t value) {
    _assign(value);
    return *this;
}

_WideString const & _WideString::operator=(bool value) {
    _assign(value);
    return *this;
}

_WideString const & _WideString::operator=(float value) {
    _assign(value);
    return *this;
}

void _WideString::copy(_WideString const & other) {
    assignText(*this, viewOf(other));
}

void _WideString::add(_WideString const & other) {
    if (other.data != nullptr) {
        appendText<_WideString, Unit>(*this, {viewOf(other)});
    }
}

void _WideString::add(unsigned short int c, std::int32_t count) {
    appendText<_WideString, Unit>(*this, {{&c, 1}, orNone(count)});
}

void _WideString::add(char const * text) {
    WideBuilder scratch;
    WideView const units = widened(text, scratch);
    if (scratch.hasFailed()) {
        _uninitialize();
    } else {
        appendText<_WideString, Unit>(*this, {units});
    }
}

void _WideString::add(unsigned short int const * text) {
    appendText<_WideString, Unit>(*this, {viewOf(text)});
}

void _WideString::add(std::uint32_t value) {
    appendText<_WideString, Unit>(*this, {textOf<Unit>(value).view()});
}

void _WideString::add(bool value) {
    appendText<_WideString, Unit>(*this, {textOf<Unit>(value).view()});
}

void _WideString::add(float value) {
    appendText<_WideString, Unit>(*this, {textOf<Unit>(value).view()});
}

_WideString const & _WideString::operator+=(_WideString const & other) {
    add(other);
    return *this;
}

_WideString const & _WideString::operator+=(unsigned short int c) {
    add(c, 1);
    return *this;
}

_WideString const & _WideString::operator+=(char const * text) {
    add(text);
    return *this;
}

_WideString const & _WideString::operator+=(unsigned short int const * text) {
    add(text);
    return *this;
}

_WideString const & _WideString::operator+=(std::uint32_t value) {
    add(value);
    return *this;
}

_WideString const & _WideString::operator+=(bool value) {
    add(value);
    return *this;
}

_WideString const & _WideString::operator+=(float value) {
    add(value);
    return *this;
}

void _WideString::empty() {
    _uninitialize();
}

unsigned short int _WideString::getAt(std::int32_t index) const {
    WideView const text = viewOf(*this);
    auto const place = static_cast<std::uint32_t>(index);
    return place < text.length ? text[place] : Unit{};
}

unsigned short int _WideString::getChar(std::int32_t index) const {
    return getAt(index);
}

unsigned short int _WideString::operator[](std::int32_t index) const {
    return getAt(index);
}

unsigned short int _WideString::firstChar() const {
    return getAt(0);
}

unsigned short int _WideString::lastChar() const {
    return getAt(static_cast<std::int32_t>(length - 1));
}

void _WideString::setAt(std::int32_t index, unsigned short int c) {
    if (static_cast<std::uint32_t>(index) < viewOf(*this).length) {
        data[index] = c;
    }
}

std::int32_t _WideString::compare(unsigned short int const * text) const {
    return signOf(compareText(orEmpty(data), orEmpty(text)));
}

std::int32_t _WideString::compare(char const * text) const {
    // Neither text is copied: the bytes are held against the units one by one.
    WideView const ours = viewOf(*this);
    char const * theirs = text != nullptr ? text : "";
    std::size_t index = 0;
    for (; ours.data[index] != 0 && ours.data[index] == static_cast<unsigned char>(theirs[index]); ++index) {
    }
    return signOf(ours.data[index] - static_cast<unsigned char>(theirs[index]));
}

std::int32_t _WideString::compareStr(_WideString const & other) const {
    return compare(other.data);
}

std::int32_t _WideString::compareNoCase(unsigned short int const * text) const {
    return compareTextNoCase(orEmpty(data), orEmpty(text));
}

std::int32_t _WideString::find(unsigned short int c) const {
    return find(c, 0);
}

std::int32_t _WideString::find(unsigned short int c, std::int32_t from) const {
    return toIndex(searchUnit(viewOf(*this), c, from));
}

std::int32_t _WideString::find(unsigned short int const * text) const {
    return find(text, 0U);
}

std::int32_t _WideString::find(unsigned short int const * text, std::uint32_t from) const {
    return toIndex(searchText(viewOf(*this), viewOf(text), from, false));
}

std::int32_t _WideString::findOneOf(unsigned short int const * set) const {
    return toIndex(searchOneOf(viewOf(*this), viewOf(set)));
}

std::int32_t _WideString::reverseFind(unsigned short int c) const {
    return toIndex(searchLastUnit(viewOf(*this), c));
}

_WideString _WideString::mid(std::int32_t start, std::int32_t count) const {
    return makeText(partOf(viewOf(*this), static_cast<std::uint32_t>(start), count));
}

_WideString _WideString::mid(std::int32_t start) const {
    return makeText(partOf(viewOf(*this), static_cast<std::uint32_t>(start), length));
}

_WideString _WideString::left(std::int32_t count) const {
    return mid(0, count);
}

_WideString _WideString::right(std::int32_t count) const {
    return makeText(lastPartOf(viewOf(*this), count));
}

_WideString _WideString::extract(std::int32_t first, std::int32_t last) const {
    return makeText(partOf(viewOf(*this), static_cast<std::uint32_t>(first), std::int64_t{last} - first + 1));
}

std::int32_t _WideString::insert(std::int32_t position, unsigned short int c) {
    insertText(*this, position, WideView{&c, 1});
    return static_cast<std::int32_t>(length);
}

std::int32_t _WideString::insert(std::int32_t position, unsigned short int const * text) {
    insertText(*this, position, viewOf(text));
    return static_cast<std::int32_t>(length);
}

std::int32_t _WideString::deleteArray(std::int32_t start, std::int32_t count) {
    deletePart(*this, start, count);
    return static_cast<std::int32_t>(length);
}

std::int32_t _WideString::remove(unsigned short int c) {
    return static_cast<std::int32_t>(removeUnit(*this, c));
}

std::int32_t _WideString::remove(unsigned short int * text) {
    return static_cast<std::int32_t>(replaceText(*this, viewOf(text), WideView{}));
}

std::int32_t _WideString::replace(unsigned short int from, unsigned short int to) {
    return static_cast<std::int32_t>(replaceUnit(data, viewOf(*this).length, from, to));
}

std::int32_t _WideString::replace(unsigned short int * from, unsigned short int * to) {
    return static_cast<std::int32_t>(replaceText(*this, viewOf(from), viewOf(to)));
}

std::int32_t _WideString::replaceAll(unsigned short int c) {
    overwrite(data, viewOf(*this).length, c);
    return static_cast<std::int32_t>(viewOf(*this).length);
}

void _WideString::makeUpper() {
    shiftLetters(data, viewOf(*this).length, 'a', 'z', 'A' - 'a');
}

void _WideString::makeLower() {
    shiftLetters(data, viewOf(*this).length, 'A', 'Z', 'a' - 'A');
}

void _WideString::makeReverse() {
    reverseUnits(data, viewOf(*this).length);
}

void _WideString::bigEndian() {
    std::size_t const count = viewOf(*this).length;
    for (std::size_t index = 0; index < count; ++index) {
        data[index] = static_cast<Unit>(data[index] << 8 | data[index] >> 8);
    }
}

bool _WideString::isDecimalNumber() const {
    return isDecimal(viewOf(*this));
}

bool _WideString::isFloatNumber() const {
    return isFloat(viewOf(*this));
}

bool _WideString::isHexNumber() const {
    return isHexadecimal(viewOf(*this));
}

bool _WideString::toBoolean() const {
    return readBoolean(viewOf(*this));
}

std::int32_t _WideString::toInteger() const {
    return static_cast<std::int32_t>(readDecimal(viewOf(*this)));
}

std::uint32_t _WideString::toLongWord() const {
    return readLongWord(viewOf(*this));
}

float _WideString::toFloat() const {
    return static_cast<float>(toDouble());
}

double _WideString::toDouble() const {
    return readDouble(viewOf(*this));
}

_WideString _WideString::toUniString() const {
    return *this;
}

_DataString _WideString::toDataString() const {
    WideView const text = viewOf(*this);
    char * const bytes = allocateText<char>(text.length);
    if (bytes != nullptr) {
        WideView const seen = upToZero(text);
        std::size_t const narrowed = narrow(seen, bytes);
        if (narrowed < text.length) {
            bytes[narrowed] = 0;
            std::fill(bytes + narrowed + 1, bytes + text.length, ' ');
        }
    }
    return TextMaker::make(bytes, text.length);
}

void _WideString::format(unsigned short int const * pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    formatArgList(pattern, arguments);
    va_end(arguments);
}

void _WideString::formatArgList(unsigned short int const * pattern, std::va_list arguments) {
    Unit text[largestFormattedText];
    assignText(*this, {text, formatText(text, largestFormattedText, orEmpty(pattern), arguments)});
}

bool _WideString::isDOMTag() const {
    return isTag(viewOf(*this));
}

bool _WideString::isDOMComment() const {
    return isComment(viewOf(*this));
}

bool _WideString::isDOMDocumentType() const {
    return isDocumentType(viewOf(*this));
}

bool _WideString::isDOMCDATASection() const {
    return isCDATASection(viewOf(*this));
}

bool _WideString::isDOMProcessingInstruction() const {
    return isProcessingInstruction(viewOf(*this));
}

bool _WideString::isDOMElement(TagStatus status) const {
    return isElement(viewOf(*this), status);
}

bool _WideString::isDOMAttribute() const {
    return true;
}

bool _WideString::isDOMEntityReference() const {
    return true;
}

bool _WideString::isDOMText() const {
    return true;
}

void _WideString::_assign(_WideString const & other) {
    copy(other);
}

void _WideString::_assign(unsigned short int c) {
    _assign(c, 1U);
}

void _WideString::_assign(unsigned short int c, std::uint32_t count) {
    assignRepeated(*this, WideView{&c, 1}, count);
}

void _WideString::_assign(unsigned short int const * text) {
    assignText(*this, viewOf(text));
}

void _WideString::_assign(char const * text) {
    DataView const bytes = viewOf(text);
    Unit * const units = allocateText<Unit>(bytes.length);
    if (units != nullptr) {
        // The bytes may be the object's own buffer under another type, so that goes only afterwards.
        widen(bytes, units);
    }
    adoptText(*this, units, bytes.length);
}

void _WideString::_assign(std::int32_t value) {
    assignText(*this, textOf<Unit>(value).view());
}

void _WideString::_assign(std::uint32_t value) {
    assignText(*this, textOf<Unit>(value).view());
}

void _WideString::_assign(bool value) {
    assignText(*this, textOf<Unit>(value).view());
}

void _WideString::_assign(float value) {
    assignText(*this, textOf<Unit>(value).view());
}

unsigned short int * _WideString::_allocate(std::uint32_t count, std::uint32_t & bytes) {
    constexpr std::uint32_t largestCount = std::numeric_limits<std::uint32_t>::max() / sizeof(Unit);
    Unit * units = nullptr;
    if (count <= largestCount && globalProcessMemory != nullptr) {
        bytes = count * static_cast<std::uint32_t>(sizeof(Unit));
        units = static_cast<Unit *>(globalProcessMemory->heapAllocate(bytes, true));
    }
    bytes = units != nullptr ? bytes : 0;
    return units;
}

void _WideString::_copy(unsigned short int const * source, unsigned short int * target, std::uint32_t count) {
    std::memmove(target, source, std::size_t{count} * sizeof(Unit));
}

void _WideString::_copy(char const * source, unsigned short int * target, std::uint32_t) {
    DataView const bytes = viewOf(source);
    widen(bytes, target);
    target[bytes.length] = 0;
}

void _WideString::_copy(unsigned short int const * source, char * target, std::uint32_t) {
    target[narrow(viewOf(source), target)] = 0;
}

void _WideString::_initialize() {
    data = nullptr;
    length = 0;
    size = 0;
}

void _WideString::_uninitialize() {
    releaseText(data);
    _initialize();
}

std::uint32_t _WideString::_toLongWord() {
    return readEightHexDigits(viewOf(*this));
}

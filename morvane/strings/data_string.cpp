#include <morvane/strings/data_string.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <morvane/streams/stream.h>
#include <morvane/strings/number_text.h>
#include <morvane/strings/text_algorithms.h>
#include <morvane/strings/text_comparison.h>
#include <morvane/strings/text_format.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_width.h>
#include <morvane/strings/wide_string.h>
#include <new>
#include <utility>

using namespace morvane;

namespace {

/// Null and released texts compare as empty ones.
char const * orEmpty(char const * text) noexcept {
    return text != nullptr ? text : "";
}

std::uint32_t orNone(std::int32_t count) noexcept {
    return static_cast<std::uint32_t>(std::max(count, 0));
}

} // namespace

_DataString::_DataString() {
    _initialize();
}

_DataString::_DataString(_DataString const & other) : _Object(other) {
    _initialize();
    copy(other);
}

_DataString::_DataString(_DataString && other) noexcept {
    _initialize();
    *this = std::move(other);
}

_DataString::_DataString(char c, std::int32_t count) {
    _initialize();
    _assign(c, orNone(count));
}

_DataString::_DataString(char const * text) {
    _initialize();
    _assign(text);
}

_DataString::_DataString(std::uint32_t value) {
    _initialize();
    _assign(value);
}

_DataString::_DataString(bool value) {
    _initialize();
    _assign(value);
}

_DataString::_DataString(float value) {
    _initialize();
    _assign(value);
}

_DataString::~_DataString() {
    _uninitialize();
}

bool _DataString::equals(_Object const &) const {
    return true;
}

bool _DataString::loadFromStream(_Stream &) {
    return true;
}

bool _DataString::saveToStream(_Stream & stream) {
    DataView const text = viewOf(*this);
    stream.writeLong(static_cast<std::int32_t>(text.length));
    if (!text.isEmpty()) {
        stream.writeBuffer(text.data, static_cast<std::int32_t>(text.length));
    }
    return true;
}

_DataString _DataString::toString() const {
    return makeText(DataView{});
}

_DataString _DataString::createStr(char const * text) {
    return _DataString(text);
}

_DataString const & _DataString::operator=(_DataString const & other) {
    _assign(other);
    return *this;
}

_DataString const & _DataString::operator=(_DataString && other) noexcept {
    if (other.data == nullptr) {
        _assign(other);
    } else if (this != &other) {
        _uninitialize();
        data = std::exchange(other.data, nullptr);
        length = std::exchange(other.length, 0);
    }
    return *this;
}

_DataString const & _DataString::operator=(char c) {
    _assign(c);
    return *this;
}

_DataString const & _DataString::operator=(char const * text) {
    _assign(text);
    return *this;
}

_DataString const & _DataString::operator=(std::uint32_t value) {
    _assign(value);
    return *this;
}

_DataString const & _DataString::operator=(bool value) {
    _assign(value);
    return *this;
}

_DataString const & _DataString::operator=(float value) {
    _assign(value);
    return *this;
}

void _DataString::copy(_DataString const & other) {
    assignText(*this, viewOf(other));
}

void _DataString::add(_DataString const & other) {
    if (other.data != nullptr) {
        appendText<_DataString, char>(*this, {viewOf(other)});
    }
}

void _DataString::add(char c, std::int32_t count) {
    appendText<_DataString, char>(*this, {{&c, 1}, orNone(count)});
}

void _DataString::add(char const * text) {
    if (text != nullptr) {
        appendText<_DataString, char>(*this, {viewOf(text)});
    }
}

void _DataString::add(std::int32_t value) {
    appendText<_DataString, char>(*this, {textOf<char>(value).view()});
}

void _DataString::add(std::uint32_t value) {
    appendText<_DataString, char>(*this, {textOf<char>(value).view()});
}

void _DataString::add(bool value) {
    appendText<_DataString, char>(*this, {textOf<char>(value).view()});
}

void _DataString::add(float value) {
    appendText<_DataString, char>(*this, {textOf<char>(value).view()});
}

_DataString const & _DataString::operator+=(_DataString const & other) {
    add(other);
    return *this;
}

_DataString const & _DataString::operator+=(char c) {
    add(c, 1);
    return *this;
}

_DataString const & _DataString::operator+=(char const * text) {
    add(text);
    return *this;
}

_DataString const & _DataString::operator+=(std::uint32_t value) {
    add(value);
    return *this;
}

_DataString const & _DataString::operator+=(bool value) {
    add(value);
    return *this;
}

_DataString const & _DataString::operator+=(float value) {
    add(value);
    return *this;
}

void _DataString::empty() {
    _uninitialize();
}

char _DataString::getAt(std::uint32_t index) const {
    DataView const text = viewOf(*this);
    return index < text.length ? text[index] : '\0';
}

char _DataString::operator[](std::uint32_t index) const {
    return getAt(index);
}

void _DataString::setAt(std::int32_t index, char c) {
    if (static_cast<std::uint32_t>(index) < viewOf(*this).length) {
        data[index] = c;
    }
}

std::int32_t _DataString::compare(char const * text) const {
    return signOf(compareText(orEmpty(data), orEmpty(text)));
}

std::int32_t _DataString::compare(_DataString const & other) const {
    return compare(other.data);
}

std::int32_t _DataString::compareNoCase(char const * text) const {
    return signOf(compareTextNoCase(orEmpty(data), orEmpty(text)));
}

std::int32_t _DataString::find(char c) const {
    return find(c, 0);
}

std::int32_t _DataString::find(char c, std::int32_t from) const {
    return toIndex(searchUnit(viewOf(*this), c, from));
}

std::int32_t _DataString::find(char const * text) const {
    return find(text, 0U);
}

std::int32_t _DataString::find(char const * text, std::uint32_t from) const {
    return toIndex(searchText(viewOf(*this), viewOf(text), from, true));
}

std::int32_t _DataString::findOneOf(char const * set) const {
    return toIndex(searchOneOf(viewOf(*this), viewOf(set)));
}

std::int32_t _DataString::reverseFind(char c) const {
    return toIndex(searchLastUnit(viewOf(*this), c));
}

_DataString _DataString::mid(std::int32_t start, std::int32_t count) const {
    return makeText(partOf(viewOf(*this), static_cast<std::uint32_t>(start), count));
}

_DataString _DataString::mid(std::int32_t start) const {
    return makeText(partOf(viewOf(*this), static_cast<std::uint32_t>(start), length));
}

_DataString _DataString::left(std::int32_t count) const {
    return mid(0, count);
}

_DataString _DataString::right(std::int32_t count) const {
    return makeText(lastPartOf(viewOf(*this), count));
}

_DataString _DataString::extract(std::int32_t first, std::int32_t last) const {
    return makeText(partOf(viewOf(*this), static_cast<std::uint32_t>(first), std::int64_t{last} - first + 1));
}

std::int32_t _DataString::insert(std::int32_t position, char c) {
    insertText(*this, position, DataView{&c, 1});
    return static_cast<std::int32_t>(length);
}

std::int32_t _DataString::insert(std::int32_t position, char const * text) {
    insertText(*this, position, viewOf(text));
    return static_cast<std::int32_t>(length);
}

std::int32_t _DataString::deleteArray(std::int32_t start, std::int32_t count) {
    deletePart(*this, start, count);
    return static_cast<std::int32_t>(length);
}

std::int32_t _DataString::remove(char c) {
    return static_cast<std::int32_t>(removeUnit(*this, c));
}

std::int32_t _DataString::remove(char const * text) {
    return static_cast<std::int32_t>(replaceText(*this, viewOf(text), DataView{}));
}

std::int32_t _DataString::replace(char from, char to) {
    return static_cast<std::int32_t>(replaceUnit(data, viewOf(*this).length, from, to));
}

std::int32_t _DataString::replace(char const * from, char const * to) {
    return static_cast<std::int32_t>(replaceText(*this, viewOf(from), viewOf(to)));
}

std::int32_t _DataString::replaceAll(char c) {
    overwrite(data, viewOf(*this).length, c);
    return static_cast<std::int32_t>(viewOf(*this).length);
}

void _DataString::makeUpper() {
    shiftLetters(data, viewOf(*this).length, 'a', 'z', 'A' - 'a');
}

void _DataString::makeLower() {
    shiftLetters(data, viewOf(*this).length, 'A', 'Z', 'a' - 'A');
}

void _DataString::makeReverse() {
    reverseUnits(data, viewOf(*this).length);
}

bool _DataString::isDecimalNumber() const {
    return isDecimal(viewOf(*this));
}

bool _DataString::isFloatNumber() const {
    return isFloat(viewOf(*this));
}

bool _DataString::isHexNumber() const {
    return isHexadecimal(viewOf(*this));
}

bool _DataString::toBoolean() const {
    return readBoolean(viewOf(*this));
}

std::int32_t _DataString::toInteger() const {
    return static_cast<std::int32_t>(readDecimal(viewOf(*this)));
}

std::uint32_t _DataString::toLongWord() const {
    return readLongWord(viewOf(*this));
}

float _DataString::toFloat() const {
    return static_cast<float>(toDouble());
}

double _DataString::toDouble() const {
    return readDouble(viewOf(*this));
}

_WideString _DataString::toWideString() const {
    DataView const text = viewOf(*this);
    unsigned short int * const units = allocateText<unsigned short int>(text.length);
    if (units != nullptr) {
        widen(text, units);
    }
    return TextMaker::make(units, text.length);
}

void _DataString::format(char const * pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    formatArgList(pattern, arguments);
    va_end(arguments);
}

void _DataString::formatArgList(char const * pattern, std::va_list arguments) {
    char text[largestFormattedText];
    assignText(*this, {text, formatText(text, largestFormattedText, orEmpty(pattern), arguments)});
}

_DataString::_DataString(morvane::TextMaker, char * text, std::uint32_t count) noexcept : data(text), length(count) {}

void _DataString::_assign(_DataString const & other) {
    copy(other);
}

void _DataString::_assign(char c) {
    _assign(c, 1U);
}

void _DataString::_assign(char c, std::uint32_t count) {
    assignRepeated(*this, DataView{&c, 1}, count);
}

void _DataString::_assign(char const * text) {
    if (text != nullptr) {
        assignText(*this, viewOf(text));
    } else {
        _uninitialize();
    }
}

void _DataString::_assign(std::int32_t value) {
    assignText(*this, textOf<char>(value).view());
}

void _DataString::_assign(std::uint32_t value) {
    assignText(*this, textOf<char>(value).view());
}

void _DataString::_assign(bool value) {
    assignText(*this, textOf<char>(value).view());
}

void _DataString::_assign(float value) {
    assignText(*this, textOf<char>(value).view());
}

char * _DataString::_allocate(std::uint32_t count) {
    return new (std::nothrow) char[count]();
}

void _DataString::_copy(char const * source, char * target, std::uint32_t count) {
    std::memmove(target, source, count);
}

void _DataString::_initialize() {
    data = nullptr;
    length = 0;
}

void _DataString::_uninitialize() {
    releaseText(data);
    _initialize();
}

std::uint32_t _DataString::_toLongWord() const {
    return readEightHexDigits(viewOf(*this));
}

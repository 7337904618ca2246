#include <morvane/containers/dictionary_item.h>

#include <morvane/streams/stream.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_search.h>
#include <utility>

using morvane::DataView;
using morvane::viewOf;

namespace {

/// The zero-closed bytes; empty text where they were never set.
char const * bytesOf(_DataString const & text) {
    return viewOf(text).data;
}

} // namespace

_DictionaryItem::_DictionaryItem() {
    _initialize();
}

_DictionaryItem::_DictionaryItem(char const * text) {
    _initialize();
    setKeyAndValue(text);
}

_DictionaryItem::_DictionaryItem(char const * keyText, char const * valueText) : key(keyText), value(valueText) {
    _initialize();
}

_DictionaryItem::_DictionaryItem(_Stream & stream) {
    _initialize();
    _DictionaryItem::loadFromStream(stream);
}

_DictionaryItem::_DictionaryItem(_DictionaryItem const & other) : _Object(other), key(other.key), value(other.value) {
    _initialize();
}

_DictionaryItem::_DictionaryItem(_DictionaryItem const * other) {
    _initialize();
    if (other != nullptr) {
        setKey(other->key);
        setValue(other->value);
    }
}

_DictionaryItem::~_DictionaryItem() {
    _uninitialize();
}

_DictionaryItem & _DictionaryItem::operator=(_DictionaryItem const & other) {
    key = other.key;
    value = other.value;
    return *this;
}

std::int32_t _DictionaryItem::compare(_DictionaryItem * other, DictionarySortFilter filter) {
    switch (filter) {
    case sortByKey:
        return other == nullptr ? key.compare("") : key.compare(other->key);
    case sortByValue:
        return other == nullptr ? value.compare("") : value.compare(other->value);
    }
    return 0;
}

void _DictionaryItem::copy(_DictionaryItem const & other) {
    key = other.key;
    value = other.value;
}

bool _DictionaryItem::equals(_DictionaryItem const & other) const {
    return key.compare(other.key) == 0 && value.compare(other.value) == 0;
}

bool _DictionaryItem::equalsNoCase(_DictionaryItem const & other) const {
    return key.compareNoCase(other.key) == 0 && value.compareNoCase(other.value) == 0;
}

bool _DictionaryItem::loadFromStream(_Stream & stream) {
    key = stream.readString();
    value = stream.readString();
    return true;
}

bool _DictionaryItem::saveToStream(_Stream & stream) {
    stream.writeString(bytesOf(key));
    stream.writeString(bytesOf(value));
    return true;
}

_DataString _DictionaryItem::toString() {
    return customString('=');
}

_DataString _DictionaryItem::customString(char separator) const {
    _DataString text;
    text.format("%s%c%s", bytesOf(key), separator, bytesOf(value));
    return text;
}

_DataString _DictionaryItem::getKeyAndValue() {
    return customString('=');
}

_DataString _DictionaryItem::getKey() const {
    return key;
}

_DataString _DictionaryItem::getValue() const {
    return value;
}

void _DictionaryItem::setKey(char const * text) {
    key = text;
}

void _DictionaryItem::setValue(char const * text) {
    value = text;
}

void _DictionaryItem::setKeyAndValue(char const * text) {
    DataView const whole = viewOf(text);
    std::size_t const sign = morvane::findUnit(whole, '=');
    if (sign == morvane::notFound) {
        return;
    }
    // The text may lie in one of the two.
    _DataString front;
    _DataString back;
    assignText(front, whole.first(sign));
    assignText(back, whole.from(sign + 1));
    key = std::move(front);
    value = std::move(back);
}

void _DictionaryItem::_initialize() {}

void _DictionaryItem::_uninitialize() {}

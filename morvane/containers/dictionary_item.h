// One pair of a dictionary.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/export.h>
#include <morvane/strings/data_string.h>

class _Stream;

/// A key and a value, both 8-bit text.
///
/// On a stream it is the two texts in the form of `_Stream::writeString`, the key first: a 32-bit length, lowest byte
/// first, and that many bytes for each.
/// Threads: an item belongs to one thread at a time.
/// Ownership: an item owns its texts. A text that was never set reads as empty text, and so do a null text and a null
/// item as arguments.
/// Errors: what a stream throws passes through, and a key may then have been read without its value.
class MORVANE_EXPORT _DictionaryItem : public _Object {
public:
    /// What a comparison and a sort go by.
    enum DictionarySortFilter : std::int32_t {
        sortByKey = 0,
        sortByValue = 1,
    };

    _DictionaryItem();
    /// Makes the pair of `setKeyAndValue`.
    _DictionaryItem(char const * text);
    _DictionaryItem(char const * key, char const * value);
    /// Reads the pair as `loadFromStream` does.
    explicit _DictionaryItem(_Stream & stream);
    _DictionaryItem(_DictionaryItem const & other);
    /// Copies each text up to its first zero byte.
    explicit _DictionaryItem(_DictionaryItem const * other);
    ~_DictionaryItem() override;

    _DictionaryItem & operator=(_DictionaryItem const & other);

    /// -1, 0 or 1 by unsigned byte values of the two keys or of the two values; 0 for any other filter.
    virtual std::int32_t compare(_DictionaryItem * other, DictionarySortFilter filter);
    /// Copies both texts.
    virtual void copy(_DictionaryItem const & other);
    /// True when both keys and both values are equal.
    virtual bool equals(_DictionaryItem const & other) const;
    /// The same with A to Z taken as a to z.
    virtual bool equalsNoCase(_DictionaryItem const & other) const;
    /// Reads the key, then the value, and gives true.
    virtual bool loadFromStream(_Stream & stream);
    /// Writes the key, then the value, each up to its first zero byte, and gives true.
    virtual bool saveToStream(_Stream & stream);
    /// Key, "=" and value.
    virtual _DataString toString();

    /// Key, `separator` and value, cut at 32,767 bytes.
    _DataString customString(char separator) const;
    /// Key, "=" and value.
    _DataString getKeyAndValue();

    /// A copy of the text.
    _DataString getKey() const;
    _DataString getValue() const;
    void setKey(char const * text);
    void setValue(char const * text);
    /// Cuts `text` at its first "=" into key and value; changes nothing where it has none.
    void setKeyAndValue(char const * text);

private:
    friend class _MutableDictionary;

    void _initialize();
    void _uninitialize();

    _DataString key;
    _DataString value;
};

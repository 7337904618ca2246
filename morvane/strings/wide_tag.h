// One piece of scanned markup.
#pragma once

#include <morvane/core/object.h>
#include <morvane/export.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/wide_string.h>

class _Stream;

/// A tag with its delimiters, or the text between two tags.
class MORVANE_EXPORT _WideTag : public _Object {
public:
    /// Makes empty text that is no tag.
    _WideTag();
    _WideTag(unsigned short int const * text, bool tag);
    _WideTag(_WideTag const & other);
    ~_WideTag() override;

    _WideTag & operator=(_WideTag const & other);

    /// Touch no stream and give true.
    virtual bool loadFromStream(_Stream & stream);
    virtual bool saveToStream(_Stream & stream);
    /// Empty text, whatever the tag holds.
    virtual _DataString toString() const;

    /// Whether the text is a tag.
    bool isTag() const { return tag; }
    bool get_tag() const { return tag; }
    void set_tag(bool value) { tag = value; }

    /// A copy of the text.
    _WideString get_wideString() const;
    void set_wideString(_WideString value);

private:
    friend class _WideStringParser;

    _WideTag(_WideString && text, bool isTag);

    bool tag;
    _WideString wideString;
};

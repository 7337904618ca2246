// A text class that keeps no text.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <morvane/export.h>

/// A class with the members of a text that holds none: each answers with a constant and looks at no argument.
///
/// It is kept for clients that name it. Do not use it for text: `_WideString` is the text class.
class MORVANE_EXPORT _String {
public:
    _String();
    _String(_String const & other);
    _String(char const * text);
    _String(unsigned char const * text);
    _String(unsigned short int const * text);
    _String(unsigned short int c, std::int32_t count);
    _String(unsigned short int const * text, std::int32_t count);
    virtual ~_String();

    /// The object, unchanged.
    _String const & operator=(_String const & other);
    _String const & operator=(unsigned short int c);
    _String const & operator=(char const * text);
    _String const & operator=(unsigned char const * text);
    _String const & operator=(unsigned short int const * text);
    _String const & operator+=(_String const & other);
    _String const & operator+=(unsigned short int c);
    _String const & operator+=(unsigned short int const * text);

    /// Nothing happens.
    void Empty();
    void MakeLower();
    void MakeReverse();
    void MakeUpper();
    void Format(unsigned short int const * pattern, ...);
    void FormatMessageW(unsigned short int const * pattern, ...);
    void FormatV(unsigned short int const * pattern, std::va_list arguments);
    void SetAt(std::int32_t index, unsigned short int c);
    void TrimLeft();
    void TrimLeft(unsigned short int c);
    void TrimLeft(unsigned short int const * set);
    void TrimRight();
    void TrimRight(unsigned short int c);
    void TrimRight(unsigned short int const * set);

    /// 0, always, also where that reads as equality or as a hit at the start.
    std::int32_t Collate(unsigned short int const * text) const;
    std::int32_t CollateNoCase(unsigned short int const * text) const;
    std::int32_t Compare(unsigned short int const * text) const;
    std::int32_t CompareNoCase(unsigned short int const * text) const;
    std::int32_t Delete(std::int32_t index, std::int32_t count);
    std::int32_t Find(unsigned short int c) const;
    std::int32_t Find(unsigned short int c, std::int32_t from) const;
    std::int32_t Find(unsigned short int const * text) const;
    std::int32_t Find(unsigned short int const * text, std::int32_t from) const;
    std::int32_t FindOneOf(unsigned short int const * set) const;
    std::int32_t ReverseFind(unsigned short int c) const;
    std::int32_t Insert(std::int32_t index, unsigned short int c);
    std::int32_t Insert(std::int32_t index, unsigned short int const * text);
    std::int32_t Remove(unsigned short int c);
    std::int32_t Remove(unsigned short int const * text);
    std::int32_t Replace(unsigned short int from, unsigned short int to);
    std::int32_t Replace(unsigned short int const * from, unsigned short int const * to);

    /// True, always.
    bool IsEmpty() const;
    /// The unit 65, the letter A, always.
    unsigned short int GetAt(std::int32_t index) const;
    unsigned short int operator[](std::int32_t index) const;
    /// Null, always.
    operator unsigned short int const *() const;
    /// 0: no member writes the field that it reads.
    std::uint32_t GetLength();

    /// A new object.
    _String Left(std::int32_t count) const;
    _String Mid(std::int32_t start) const;
    _String Mid(std::int32_t start, std::int32_t count) const;
    _String Right(std::int32_t count) const;
    _String SpanExcluding(unsigned short int const * set) const;
    _String SpanIncluding(unsigned short int const * set) const;

private:
    std::uint32_t length = 0;
    /// No operation gives it a meaning.
    [[maybe_unused]] std::uint32_t reserved = 0;
};

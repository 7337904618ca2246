#include <morvane/strings/string.h>

_String::_String() = default;

_String::_String(_String const &) {}

_String::_String(char const *) {}

_String::_String(unsigned char const *) {}

_String::_String(unsigned short int const *) {}

_String::_String(unsigned short int, std::int32_t) {}

_String::_String(unsigned short int const *, std::int32_t) {}

_String::~_String() = default;

_String const & _String::operator=(_String const &) {
    return *this;
}

_String const & _String::operator=(unsigned short int) {
    return *this;
}

_String const & _String::operator=(char const *) {
    return *this;
}

_String const & _String::operator=(unsigned char const *) {
    return *this;
}

_String const & _String::operator=(unsigned short int const *) {
    return *this;
}

_String const & _String::operator+=(_String const &) {
    return *this;
}

_String const & _String::operator+=(unsigned short int) {
    return *this;
}

_String const & _String::operator+=(unsigned short int const *) {
    return *this;
}

void _String::Empty() {}

void _String::MakeLower() {}

void _String::MakeReverse() {}

void _String::MakeUpper() {}

void _String::Format(unsigned short int const *, ...) {}

void _String::FormatMessageW(unsigned short int const *, ...) {}

void _String::FormatV(unsigned short int const *, std::va_list) {}

void _String::SetAt(std::int32_t, unsigned short int) {}

void _String::TrimLeft() {}

void _String::TrimLeft(unsigned short int) {}

void _String::TrimLeft(unsigned short int const *) {}

void _String::TrimRight() {}

void _String::TrimRight(unsigned short int) {}

void _String::TrimRight(unsigned short int const *) {}

std::int32_t _String::Collate(unsigned short int const *) const {
    return 0;
}

std::int32_t _String::CollateNoCase(unsigned short int const *) const {
    return 0;
}

std::int32_t _String::Compare(unsigned short int const *) const {
    return 0;
}

std::int32_t _String::CompareNoCase(unsigned short int const *) const {
    return 0;
}

std::int32_t _String::Delete(std::int32_t, std::int32_t) {
    return 0;
}

std::int32_t _String::Find(unsigned short int) const {
    return 0;
}

std::int32_t _String::Find(unsigned short int, std::int32_t) const {
    return 0;
}

std::int32_t _String::Find(unsigned short int const *) const {
    return 0;
}

std::int32_t _String::Find(unsigned short int const *, std::int32_t) const {
    return 0;
}

std::int32_t _String::FindOneOf(unsigned short int const *) const {
    return 0;
}

std::int32_t _String::ReverseFind(unsigned short int) const {
    return 0;
}

std::int32_t _String::Insert(std::int32_t, unsigned short int) {
    return 0;
}

std::int32_t _String::Insert(std::int32_t, unsigned short int const *) {
    return 0;
}

std::int32_t _String::Remove(unsigned short int) {
    return 0;
}

std::int32_t _String::Remove(unsigned short int const *) {
    return 0;
}

std::int32_t _String::Replace(unsigned short int, unsigned short int) {
    return 0;
}

std::int32_t _String::Replace(unsigned short int const *, unsigned short int const *) {
    return 0;
}

bool _String::IsEmpty() const {
    return true;
}

unsigned short int _String::GetAt(std::int32_t) const {
    return u'A';
}

unsigned short int _String::operator[](std::int32_t) const {
    return u'A';
}

_String::operator unsigned short int const *() const {
    return nullptr;
}

std::uint32_t _String::GetLength() {
    return length;
}

_String _String::Left(std::int32_t) const {
    return {};
}

_String _String::Mid(std::int32_t) const {
    return {};
}

_String _String::Mid(std::int32_t, std::int32_t) const {
    return {};
}

_String _String::Right(std::int32_t) const {
    return {};
}

_String _String::SpanExcluding(unsigned short int const *) const {
    return {};
}

_String _String::SpanIncluding(unsigned short int const *) const {
    return {};
}

// An exception with a code and a text.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/export.h>
#include <morvane/strings/wide_string.h>

/// An error code and its text, for clients to throw. The library throws none of them.
class MORVANE_EXPORT _Exception : public _Object {
public:
    /// The values are the client's.
    enum ExceptionError : std::int32_t {};

    /// Code 0 and an empty text.
    _Exception();
    _Exception(_Exception const & other);
    ~_Exception() override;

    _Exception & operator=(_Exception const & other);

    /// The error code.
    ExceptionError get_code() const;
    void set_code(ExceptionError code);
    /// A copy of the error text.
    _WideString get_message() const;
    void set_message(_WideString message);

private:
    ExceptionError code;
    _WideString message;
};

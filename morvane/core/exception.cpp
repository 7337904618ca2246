#include <morvane/core/exception.h>

#include <utility>

_Exception::_Exception() : code() {}

_Exception::_Exception(_Exception const & other) = default;

_Exception::~_Exception() = default;

_Exception & _Exception::operator=(_Exception const & other) = default;

_Exception::ExceptionError _Exception::get_code() const {
    return code;
}

void _Exception::set_code(ExceptionError newCode) {
    code = newCode;
}

_WideString _Exception::get_message() const {
    return message;
}

void _Exception::set_message(_WideString newMessage) {
    message = std::move(newMessage);
}

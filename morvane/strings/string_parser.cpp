#include <morvane/strings/string_parser.h>

_StringParser::_StringParser() = default;

_StringParser::_StringParser(_StringParser const & other) = default;

_StringParser::~_StringParser() = default;

_StringParser & _StringParser::operator=(_StringParser const & other) = default;

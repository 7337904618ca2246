#include <morvane/streams/persistant.h>

#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/strings/data_string.h>

namespace {

constexpr std::uint32_t readMode = 0;
constexpr std::uint32_t createMode = 0xFFFF;

} // namespace

_Persistant::_Persistant() = default;

_Persistant::_Persistant(_Persistant const & other) : _Object(other) {}

_Persistant::~_Persistant() = default;

bool _Persistant::_loadFromStream(_Stream &) {
    return false;
}

bool _Persistant::_saveToStream(_Stream &) {
    return false;
}

_DataString _Persistant::_toString() const {
    return {""};
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_Persistant & _Persistant::operator=(_Persistant const &) {
    return *this;
}

bool _Persistant::_loadFromFile(unsigned short int const * filename) {
    if (!_FileUtility::fileExists(filename)) {
        return false;
    }
    _FileStream stream(filename, readMode);
    return _loadFromStream(stream);
}

bool _Persistant::_saveToFile(unsigned short int const * filename) {
    _FileStream stream(filename, createMode);
    return _saveToStream(stream);
}

bool _Persistant::_deepCopy(_Object const &) {
    return true;
}

bool _Persistant::_isEqual(_Object const &) {
    return true;
}

#include <morvane/components/iclass_server.h>

COM::_IClassServer::_IClassServer(_IClassServer const & other) = default;

COM::_IClassServer & COM::_IClassServer::operator=(_IClassServer const & other) = default;

COM::ComResult COM::_IClassServer::createObjectInstance(ComIdentifier, void ** object) {
    return object == nullptr || *object == nullptr ? comBadPointer : comFailed;
}

COM::_IClassServer::_IClassServer() = default;

COM::_IClassServer::~_IClassServer() = default;

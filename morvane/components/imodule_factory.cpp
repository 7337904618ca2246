#include <morvane/components/imodule_factory.h>

#include <morvane/platform/modules.h>

COM::_IModuleFactory::_IModuleFactory(_IModuleFactory const & other) = default;

COM::ComResult COM::_IModuleFactory::createObjectInstance(ComIdentifier, void **) {
    return comFailed;
}

COM::ComResult COM::_IModuleFactory::loadServer(ComIdentifier id) {
    unsigned short int * path = nullptr;
    if (resolveServerID(id, path) != comOk) {
        return comNotFound;
    }
    serverModule = morvane::platform::loadModule(path);
    return serverModule != nullptr ? comOk : comFailed;
}

COM::ComResult COM::_IModuleFactory::unloadServer() {
    if (serverLocked || !morvane::platform::unloadModule(serverModule)) {
        return comFailed;
    }
    serverModule = nullptr;
    serverLocked = false;
    return comOk;
}

COM::_IModuleFactory & COM::_IModuleFactory::operator=(_IModuleFactory const & other) = default;

COM::_IModuleFactory::_IModuleFactory() : serverLocked(false), serverModule(nullptr) {}

COM::_IModuleFactory::~_IModuleFactory() {
    _IModuleFactory::unloadServer();
}

COM::ComResult COM::_IModuleFactory::resolveServerID(ComIdentifier, unsigned short int *&) {
    return comFailed;
}

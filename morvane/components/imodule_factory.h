// The class factory over loaded code modules.
#pragma once

#include <morvane/components/iclass_factory.h>

struct HINSTANCE__;

/// A class factory that finds the module of a class by its identifier and loads it. No identifier leads to a module, so
/// that it never holds one.
class MORVANE_EXPORT COM::_IModuleFactory : public COM::_IClassFactory {
    friend class COM;

public:
    /// Copies the handle of the module too, without loading the module once more.
    _IModuleFactory(_IModuleFactory const & other);

    /// Makes nothing and gives `comFailed`.
    ComResult createObjectInstance(ComIdentifier id, void ** object) override;
    /// `comOk` when the module that serves `id` was loaded, `comFailed` when it could not be, `comNotFound` when no
    /// module serves `id`, which is so for every identifier.
    ComResult loadServer(ComIdentifier id) override;
    /// `comOk` when the module was released; `comFailed` when there is none or when it is locked.
    ComResult unloadServer() override;

    _IModuleFactory & operator=(_IModuleFactory const & other);

protected:
    /// A factory without a module, not locked.
    _IModuleFactory();
    /// Lets go of the module, as `unloadServer` does.
    ~_IModuleFactory() override;

    /// Gives `comFailed` and leaves `path` alone: no identifier leads to a module.
    ComResult resolveServerID(ComIdentifier id, unsigned short int *& path);

private:
    bool serverLocked;
    HINSTANCE__ * serverModule;
};

// The abstract class factory.
#pragma once

#include <morvane/components/iunknown.h>

/// Makes objects by class identifier and holds the module that their classes come from.
class MORVANE_EXPORT COM::_IClassFactory : public COM::_IUnknown {
public:
    _IClassFactory(_IClassFactory const & other);

    /// Fills `*object` with a new object of the class `id`.
    virtual ComResult createObjectInstance(ComIdentifier id, void ** object) = 0;
    /// Loads the module that serves the class `id`.
    virtual ComResult loadServer(ComIdentifier id) = 0;
    /// Lets go of the module that was loaded.
    virtual ComResult unloadServer() = 0;

    _IClassFactory & operator=(_IClassFactory const & other);

    /// Reads nothing and gives `comFailed`: there are no resolution tables.
    ComResult loadResolutionTable(unsigned short int const * filename);

protected:
    _IClassFactory();
    ~_IClassFactory() override;
};

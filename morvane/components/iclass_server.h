// The class server.
#pragma once

#include <morvane/components/iunknown.h>

/// Stands for a module that serves classes. It makes nothing.
class MORVANE_EXPORT COM::_IClassServer : public COM::_IUnknown {
    friend class COM;

public:
    _IClassServer(_IClassServer const & other);

    _IClassServer & operator=(_IClassServer const & other);

    /// `comBadPointer` when `object` or `*object` is null, `comFailed` otherwise.
    ComResult createObjectInstance(ComIdentifier id, void ** object);

protected:
    _IClassServer();
    ~_IClassServer() override;
};

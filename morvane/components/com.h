// The namespace class of the component layer: identifiers, results, and the functions that make factories and servers.
#pragma once

#include <cstdint>
#include <morvane/export.h>

/// Gathers the component layer: objects that count their references, class identifiers, and the frame of class
/// factories.
///
/// It has no objects of its own. The layer above the counted objects has no content: no identifier leads to a module,
/// and no factory makes an object.
class MORVANE_EXPORT COM {
public:
    class _IClassFactory;
    class _IClassServer;
    class _IModuleFactory;
    class _IPersistent;
    class _IStream;
    class _IUnknown;

    /// The result of nearly every operation here.
    enum ComResult : std::int32_t {
        /// The operation failed, or has nothing to do it with.
        comFailed = -1,
        /// Done.
        comOk = 0,
        /// An object pointer argument was refused.
        comBadPointer = 2,
        /// No factory of this kind, or no server for the identifier.
        comNotFound = 3,
    };

    /// The kind of factory that `createClassFactory` makes.
    enum ComFactory : std::int32_t { comFactoryModule = 0 };

    /// A class identifier: three numbers and two short texts, filled up with zeros, without a closing zero when full.
    struct ComIdentifier {
        std::uint16_t word1;
        std::uint16_t word2;
        std::uint16_t word3;
        char text4[4];
        char text8[8];
    };

    COM();
    /// Copies nothing.
    COM(COM const & other);
    virtual ~COM() = 0;

    /// Does nothing and gives the object back.
    COM & operator=(COM const & other);

    /// An identifier of the three numbers, the first 4 bytes of `text4` and the first 8 of `text8`; all zeros, the
    /// numbers too, when a text is null.
    static ComIdentifier createClassID(unsigned short int number1, unsigned short int number2,
                                       unsigned short int number3, char const * text4, char const * text8);

    /// `comOk`, and a new factory of one reference in `*factory`, which becomes null when there is no memory.
    /// `*factory` must hold a pointer other than null on entry and is overwritten, not released: otherwise
    /// `comBadPointer`. `comNotFound` for a `kind` other than `comFactoryModule`; `*factory` then stays.
    static ComResult createClassFactory(ComFactory kind, _IClassFactory ** factory);

    /// `comFailed`, always. When `*server` holds a pointer other than null on entry, it is overwritten with a new
    /// server of one reference, or with null when there is no memory.
    static ComResult createClassServer(_IClassServer ** server);
};

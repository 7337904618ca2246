// The base of objects that load from and save to streams and files.
#pragma once

#include <morvane/core/object.h>
#include <morvane/export.h>

class _DataString;
class _Stream;

/// Turns the stream operations of a derived class into file operations: the file is opened, handed over as a stream and
/// closed, also where the operation throws.
///
/// Errors: a file that cannot be opened or created throws the `int` 0 of `_FileStream`; what a derived class throws
/// passes through.
class MORVANE_EXPORT _Persistant : public _Object {
public:
    _Persistant();
    /// Copies nothing.
    _Persistant(_Persistant const & other);
    ~_Persistant() override;

    /// Reads the object from `stream`; true on success. Here it reads nothing and gives false.
    virtual bool _loadFromStream(_Stream & stream);
    /// Writes the object to `stream`; true on success. Here it writes nothing and gives false.
    virtual bool _saveToStream(_Stream & stream);
    /// The object as text; here an empty one.
    virtual _DataString _toString() const;

    /// Assigns nothing and gives the object back.
    _Persistant & operator=(_Persistant const & other);

    /// What `_loadFromStream` gives over the file, which is opened for reading without sharing; false if there is none.
    bool _loadFromFile(unsigned short int const * filename);
    /// What `_saveToStream` gives over the file, which is created, or cut to nothing, first.
    bool _saveToFile(unsigned short int const * filename);
    /// True; copies nothing.
    bool _deepCopy(_Object const & source);
    /// True; compares nothing.
    bool _isEqual(_Object const & other);
};

// The base for what runs on a thread.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>

/// Something that a thread may run. The library starts no thread: a derived class overrides `run`, and its owner calls
/// it.
class MORVANE_EXPORT _Thread : public _Object {
public:
    /// The word is 0.
    _Thread();
    _Thread(_Thread const & other);
    ~_Thread() override;

    _Thread & operator=(_Thread const & other);

    /// Does nothing here.
    virtual void run();

private:
    [[maybe_unused]] std::uint32_t word;
};

#include <morvane/core/thread.h>

_Thread::_Thread() : word(0) {}

_Thread::_Thread(_Thread const & other) = default;

_Thread::~_Thread() = default;

_Thread & _Thread::operator=(_Thread const & other) = default;

void _Thread::run() {}

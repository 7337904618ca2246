// A code module for the tests to load. It says in the environment whether it is there.
#include <cstdlib>

namespace {

struct Presence {
    Presence() { setenv("MORVANE_SAMPLE_MODULE", "loaded", 1); }
    ~Presence() { unsetenv("MORVANE_SAMPLE_MODULE"); }
} presence;

} // namespace

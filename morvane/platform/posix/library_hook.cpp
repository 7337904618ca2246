// The loader calls the library when it comes and when it goes. The priorities put that before the constructors of all
// static objects and after their destructors, also where the objects of the library are linked into a program. The
// process heap goes one step later.

#include <morvane/platform/library_entry.h>

namespace morvane {
namespace {

[[gnu::constructor(102)]] void attach() {
    libraryEntry(nullptr, processAttach, nullptr);
}

[[gnu::destructor(102)]] void detach() {
    libraryEntry(nullptr, processDetach, nullptr);
}

} // namespace
} // namespace morvane

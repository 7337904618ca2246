#include <morvane/platform/critical_section.h>

#include <morvane/platform/critical_section_guard.h>

void _RTL_CRITICAL_SECTION::enter() noexcept {
    morvane::platform::CriticalSectionGuard::enter(state);
}

void _RTL_CRITICAL_SECTION::leave() noexcept {
    morvane::platform::CriticalSectionGuard::leave(state);
}

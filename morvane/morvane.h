// Brings the whole public interface of the library.
#pragma once

#include <morvane/core/literals.h>
#include <morvane/core/object.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/ucs.h>
#include <morvane/platform/critical_section.h>
#include <morvane/platform/debug_channel.h>

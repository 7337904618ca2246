// Brings the whole public interface of the library.
#pragma once

#include <morvane/components/com.h>
#include <morvane/components/iclass_factory.h>
#include <morvane/components/iclass_server.h>
#include <morvane/components/imodule_factory.h>
#include <morvane/components/ipersistent.h>
#include <morvane/components/istream.h>
#include <morvane/components/iunknown.h>
#include <morvane/core/literals.h>
#include <morvane/core/object.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/ucs.h>
#include <morvane/platform/critical_section.h>
#include <morvane/platform/debug_channel.h>
#include <morvane/platform/shown_text.h>
#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/handle_stream.h>
#include <morvane/streams/memory_stream.h>
#include <morvane/streams/persistant.h>
#include <morvane/streams/reader.h>
#include <morvane/streams/stream.h>

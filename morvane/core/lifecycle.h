// The two process-wide allocators, and when they live.
#pragma once

#include <morvane/export.h>

class _Memory;
class _MemoryManager;

/// The counting face of the process heap. Text buffers, pool nodes, stacks and memory streams come from it.
///
/// It lives from the loading of the library, before any static object of a program that links it is made, to its
/// unloading, after the last of them is gone; null when there was no memory for it. The pointer is not cleared at
/// unloading. Any thread may read it.
extern MORVANE_EXPORT _Memory * globalProcessMemory;

/// The pools for small blocks, with 262,144 bytes of data in a node. It lives as `globalProcessMemory` does, and a
/// little shorter.
extern MORVANE_EXPORT _MemoryManager * globalMemoryManager;

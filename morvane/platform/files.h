// Files by 16-bit name and numeric handle.
//
// A name is a zero-closed text of 16-bit code units; null, and a text with an unpaired surrogate, name no file. Handles
// are not negative; those that the system gave out elsewhere work too. Any thread may call any of these. A call that
// fails sets the thread's last error (last_error.h).
#pragma once

#include <cstdint>

namespace morvane::platform {

/// What an open file is used for, and what others may use it for meanwhile: bits.
enum FileUse : std::uint32_t {
    fileUseNone = 0,
    fileUseRead = 1,
    fileUseWrite = 2,
    fileUseReadWrite = fileUseRead | fileUseWrite,
};

enum class FileDisposition : std::uint32_t {
    openExisting, ///< fails where there is no such file
    createAlways, ///< makes the file, or cuts an existing one to nothing once the open is admitted
    createWhole,  ///< the same, but that an existing file keeps what it holds until it is written over or cut
};

enum FileAttribute : std::int32_t {
    fileAttributeReadOnly = 0x01,
    fileAttributeDirectory = 0x10,
    fileAttributeNormal = 0x80, ///< stands alone
};

/// What the system tells of a name.
struct FoundFile {
    std::int32_t attributes;
    std::int64_t lastWriteTime; ///< seconds since 1970-01-01 00:00 UTC, rounded down
};

/// Opens a file for `access` and gives its handle; -1 on failure, for a directory, and for an access of `fileUseNone`.
///
/// An open is admitted when each open of the same file allows its access and its sharing allows theirs: exactly inside
/// the process, by whatever names the file was opened; between processes as far as the system carries it. Files of
/// other kinds than data on a disk are not held to this. The call does not wait for the other end of a pipe.
std::int32_t openFile(unsigned short int const * name, FileUse access, FileUse sharing,
                      FileDisposition disposition) noexcept;

/// Closes a handle; false on failure.
bool closeFile(std::int32_t handle) noexcept;

/// Moves up to `count` bytes at the position and gives the number moved, at most 2,147,483,647; -1 on failure. A signal
/// that comes in between is no failure, neither is the end of what can be read (0) or stored (fewer). A pipe that
/// nobody reads, a full disk or a limit on the size of files fails the call and nothing else; where the process sets
/// itself such a limit after the open, the system decides.
std::int32_t readFile(std::int32_t handle, void * buffer, std::uint32_t count) noexcept;
std::int32_t writeFile(std::int32_t handle, void const * buffer, std::uint32_t count) noexcept;

/// Moves the position by `offset` from the start (`origin` 0), itself (1) or the end (2) and gives the new one. -1 with
/// the position unmoved where that is below 0 or above 2,147,483,647, and for another origin.
std::int32_t seekFile(std::int32_t handle, std::int32_t offset, std::int32_t origin) noexcept;

/// Makes the position the end of the file, cutting it or lengthening it by zero bytes; false on failure.
bool setFileEnd(std::int32_t handle) noexcept;

/// The last-write time of an open file in seconds since 1970-01-01 00:00 UTC; setting it leaves the other times. False
/// on failure.
bool getLastWriteTime(std::int32_t handle, std::int64_t & seconds) noexcept;
bool setLastWriteTime(std::int32_t handle, std::int64_t seconds) noexcept;

/// Finds a file or directory by name; false if there is none.
bool findFile(unsigned short int const * name, FoundFile & found) noexcept;

/// Sets the attributes of a name; of the bits only `fileAttributeReadOnly` is obeyed. False on failure.
bool setFileAttributes(unsigned short int const * name, std::int32_t attributes) noexcept;

} // namespace morvane::platform

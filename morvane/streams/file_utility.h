// Files by 16-bit name and numeric handle.
#pragma once

#include <cstdint>
#include <morvane/export.h>

/// The one place where the library touches files: a thin call each over the system.
///
/// A file name is a zero-closed text of 16-bit code units; null, and a text with an unpaired surrogate, name no file. A
/// handle is not negative; -1 means no file. Handles of the system that were opened elsewhere (pipes, standard streams)
/// work as well.
/// What two opens of one file may do to each other is settled by the sharing that each asked for, under whatever names
/// the file was opened: exactly inside the process, and between processes as the system's advisory locks carry it.
/// Positions are 32 bits: a place beyond 2 GiB can be reached by reading or writing on, not by seeking.
/// Threads: any thread may call these; one handle belongs to one thread at a time.
/// Errors: none is raised; -1, false or the system's error code come back, and the thread's last error is set.
class MORVANE_EXPORT _FileUtility {
public:
    _FileUtility();
    _FileUtility(_FileUtility const & other);
    virtual ~_FileUtility();

    /// Does nothing and gives the object back.
    _FileUtility & operator=(_FileUtility const & other);

    /// Creates the file for reading and writing without sharing, an existing one cut to nothing, and gives its handle;
    /// -1 on failure, an existing file then being as it was.
    static std::int32_t fileCreate(unsigned short int const * filename);
    /// Opens an existing file and gives its handle; -1 on failure and for a directory.
    ///
    /// Bits 0 to 1 of `mode` are the access: 0 read, 1 write, 2 both. Bits 4 to 7 are what others may do: 0 and 1
    /// nothing, 2 read, 3 write, 4 both. Other values of these bits give -1; the other bits are ignored.
    static std::int32_t fileOpen(unsigned short int const * filename, std::uint32_t mode);
    /// Closes the handle; true if it succeeded.
    static bool fileClose(std::int32_t handle);

    /// The bytes moved, at most 2,147,483,647; 0 at the end of the file; -1 on failure.
    static std::int32_t fileRead(std::int32_t handle, void * buffer, std::uint32_t count);
    /// The bytes moved, at most 2,147,483,647, fewer than `count` where the file takes no more; -1 on failure.
    static std::int32_t fileWrite(std::int32_t handle, void const * buffer, std::uint32_t count);
    /// The new position, counted from `origin`: 0 the start, 1 the current position, 2 the end. A place before the
    /// start or beyond 2,147,483,647 gives -1, and the position stays.
    static std::int32_t fileSeek(std::int32_t handle, std::int32_t offset, std::int32_t origin);

    /// The file's age: the published FAT date word of its last-write time in the high 16 bits and the FAT time word in
    /// the low 16, in local time, an odd second taken down to the even one. -1 for no such file, for a directory and
    /// for a time outside the years 1980 to 2107.
    static std::int32_t fileAge(unsigned short int const * filename);
    /// True if `fileAge` has an answer.
    static bool fileExists(unsigned short int const * filename);
    /// The age of the open file as `fileAge` tells it; -1 on failure.
    static std::int32_t fileGetDate(std::int32_t handle);
    /// Sets the last-write time and no other from an age; 0 on success, else the system's error code. Words that are no
    /// date or time fail, and so does a local time that the zone leaves out when it changes to summer time.
    static std::int32_t fileSetDate(std::int32_t handle, std::int32_t age);
    /// The attribute bits: 0x01 nobody may write, 0x10 a directory, 0x80 none of these; -1 on failure.
    static std::int32_t fileGetAttr(unsigned short int const * filename);
    /// Takes the right to write from everybody where bit 0x01 is set, gives it to the owner where it is not and nobody
    /// has it; other bits do nothing. 0 on success, else the system's error code.
    static std::int32_t fileSetAttr(unsigned short int const * filename, std::int32_t attributes);
};

// Services of the operating system.
#pragma once

#include <cstdint>
#include <morvane/export.h>
#include <morvane/strings/wide_string.h>

struct HINSTANCE__;

/// The Windows systems that `_SystemUtility::getWindowsVersion` tells apart; every later one is unknown.
enum TWindowsVersion : std::int32_t {
    windowsUnknown = 0,
    windowsWin32s = 1,
    windows95 = 2,
    windows98 = 3,
    windowsMe = 4,
    windowsNT4 = 5,
    windows2000 = 6,
    windowsXP = 7,
};

/// Static services of the operating system; it has no fields.
///
/// Threads: any thread may call them at once.
/// Errors: none is raised; a service that has nothing to tell gives empty text.
class MORVANE_EXPORT _SystemUtility {
public:
    _SystemUtility();
    /// Copies nothing.
    _SystemUtility(_SystemUtility const & other);
    virtual ~_SystemUtility();

    /// Does nothing and gives the object back.
    _SystemUtility & operator=(_SystemUtility const & other);

    /// Shows `getLastErrorString` to the user under the caption "error". Who shows it, and where, is settled by
    /// `morvane::platform::setTextPresenter`.
    static void displayLastError();
    /// The drive, a unit and a colon in front, and the directory of a path up to and with its last slash or backslash;
    /// a directory is cut to 255 units.
    static _WideString filePath(unsigned short int const * path);
    /// The directory, as `filePath` gives it, of the loaded module "Morvane.dll", or of the program where there is
    /// none; not the working directory.
    static _WideString getCurrentDirectory();
    /// The system's text for the last error of the calling thread, as it stands.
    static _WideString getLastErrorString();
    /// The path of a module's file, or of the program's where `module` is null, cut to 255 units; empty for a handle of
    /// no loaded module.
    static _WideString getModuleFileName(HINSTANCE__ * module);
    /// The Windows system that the program runs on; on any other system `windowsUnknown`.
    static TWindowsVersion getWindowsVersion();
    /// Says the text on the debug channel as it stands, with no line end added; null says nothing.
    static void outputDebugString(unsigned short int const * text);
};

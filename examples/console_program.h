// The frame of a program with a command line.
#pragma once

#include <iostream>
#include <morvane/platform/debug_channel.h>
#include <new>
#include <string>

/// Why the work was not done: one line for the user.
struct Failure {
    std::string message;
};

struct ProgramTexts {
    char const * name;
    char const * usage;
    char const * help;
};

/// Reads the command line into `Options`, which has a member `quiet`, does the work, and gives the exit status: 0, 1
/// for a `Failure`, 2 for a wrong command line.
template <typename Options>
int runProgram(ProgramTexts const & texts, int count, char ** arguments,
               bool (*readCommandLine)(int, char **, Options &, bool &), void (*work)(Options const &)) {
    Options options;
    bool wantsHelp = false;
    if (!readCommandLine(count, arguments, options, wantsHelp)) {
        std::cerr << texts.usage << "Try " << texts.name << " --help\n";
        return 2;
    }
    if (wantsHelp) {
        std::cout << texts.usage << texts.help;
        return 0;
    }
    if (options.quiet) {
        morvane::platform::setDebugListener(nullptr);
    }
    try {
        work(options);
    } catch (Failure const & failure) {
        std::cout.flush();
        std::cerr << texts.name << ": " << failure.message << '\n';
        return 1;
    } catch (std::bad_alloc const &) {
        std::cerr << texts.name << ": there is not enough memory\n";
        return 1;
    }
    return 0;
}

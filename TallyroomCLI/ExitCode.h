#pragma once

namespace tallyroom {

/// What the command line tells the shell.
enum class ExitCode : int {
    success = 0,
    failure = 1,      ///< the folder does not exist or is none, or the output cannot be written
    usage = 2,        ///< the command line itself is wrong
    interrupted = 130 ///< 128 + SIGINT
};

} // namespace tallyroom

#pragma once

namespace tallyroom {

/// The exit codes.
enum class ExitCode : int {
    success = 0,
    failure = 1,      ///< the folder cannot be scanned, or the output cannot be written
    usage = 2,        ///< the command line itself is wrong
    interrupted = 130 ///< 128 + SIGINT
};

} // namespace tallyroom

#pragma once

#include "Model/FileUrl.h"

#include <QString>

#include <optional>
#include <span>

namespace tallyroom {

/// The program: reads its arguments, makes the window, runs until it is closed.
namespace TallyroomApp {

/// What a command line asks for.
struct Invocation {
    enum class Kind { window, help, version, mistake };

    Kind kind = Kind::window;
    std::optional<FileUrl> folder; ///< to be opened
    QString mistake;               ///< in words for people

    friend bool operator==(const Invocation&, const Invocation&) = default;
};

/// Reads the arguments after the program's name, bytes as the shell passed them; relative paths start at
/// `workingFolder`.
[[nodiscard]] Invocation parse(std::span<const char* const> arguments, const FileUrl& workingFolder);

/// The whole run; returns the exit code. Once a process.
[[nodiscard]] int run(int argc, char** argv);

} // namespace TallyroomApp

} // namespace tallyroom

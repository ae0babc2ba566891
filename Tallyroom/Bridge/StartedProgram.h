#pragma once

#include "Model/FileUrl.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace tallyroom {

/// Starts another program without waiting for it. Main thread.
namespace StartedProgram {

/// What `ended` is told of a program that could not be started.
constexpr int notStarted = -1;

/// Starts `program`, a path, in `folder` where one is given, whatever its name's bytes. It may run as long as
/// it likes and outlive this one; should it end before, `ended` gets its exit code.
void start(const QString& program, const QStringList& arguments,
           const std::function<void(int exitCode)>& ended, const std::optional<FileUrl>& folder = {});

} // namespace StartedProgram

} // namespace tallyroom

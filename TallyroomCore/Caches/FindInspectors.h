#pragma once

#include "Scanning/FindInspector.h"

#include <memory>

namespace tallyroom {

/// Inspectors for searches of what can be made again. Any thread.
namespace FindInspectors {

/// For build caches: finds the ecosystem, and marks unproven caches, those of installed programs and those in
/// use. What holds files that Git tracks is unproven.
[[nodiscard]] std::shared_ptr<const FindInspector> ofCaches();

/// For node_modules: marks those of installed programs, those of projects that a program works in, and
/// as unproven those with files that Git tracks.
[[nodiscard]] std::shared_ptr<const FindInspector> ofNodeModules();

/// Whether an item at `url` belongs to an installed program: below a hidden folder of the home folder or of
/// another user's, or in the folders where systems and people install programs.
[[nodiscard]] bool isOfInstalledProgram(const FileUrl& url);

} // namespace FindInspectors

} // namespace tallyroom

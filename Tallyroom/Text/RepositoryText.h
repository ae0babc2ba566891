#pragma once

#include "Git/RepositoryState.h"
#include "Model/EntryList.h"

#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace tallyroom {

/// What would be lost with Git histories, in words. Main thread.
namespace RepositoryText {

/// Nothing for a repository that cannot be read.
using State = std::optional<RepositoryState>;

/// The state of the repository whose history an entry is; null while it is not known.
using StateOf = std::function<const State*(const Entry&)>;

/// What would be lost, a few words each; none where nothing would.
[[nodiscard]] QStringList losses(const State& state);

/// "12 historiques · 3 avec du travail qui n’est nulle part ailleurs"
[[nodiscard]] QString summary(const EntryList& histories, const StateOf& stateOf);

/// Which of `histories` would lose work and why, a line each, or that none would; for the question before
/// they are deleted.
[[nodiscard]] QString warning(const std::vector<Entry>& histories, const StateOf& stateOf);

} // namespace RepositoryText

} // namespace tallyroom

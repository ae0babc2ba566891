#pragma once

#include "Model/AgeThreshold.h"
#include "Model/Entry.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace tallyroom {

/// What a search found out about entries, in words. Main thread.
namespace MarkText {

/// A word or two for each mark: "à vérifier".
[[nodiscard]] QStringList words(const Entry& entry);

/// The same for node_modules, and whether they are older than `threshold`.
[[nodiscard]] QStringList nodeModulesWords(const Entry& nodeModules, AgeThreshold threshold);

/// What the marks mean, a sentence a line; empty without a mark.
[[nodiscard]] QString explanation(const Entry& entry);

/// How a build cache is made again, then what its marks mean.
[[nodiscard]] QString cacheExplanation(const Entry& cache);

/// When node_modules were modified and, where it is known, their project; then what the marks mean.
[[nodiscard]] QString nodeModulesExplanation(const Entry& nodeModules,
                                             const std::optional<Timestamp>& projectDate);

/// Warnings before `entries` are deleted, a sentence a line; empty where none is marked.
[[nodiscard]] QString warning(const std::vector<Entry>& entries);

} // namespace MarkText

} // namespace tallyroom

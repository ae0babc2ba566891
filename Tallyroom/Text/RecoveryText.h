#pragma once

#include "Model/AgeThreshold.h"

#include <QString>

#include <cstddef>

namespace tallyroom {

/// What a tool's finds amount to for somebody who wants room, in words. Main thread.
namespace RecoveryText {

/// "17 caches sans risque sur 20", "aucun cache sans risque sur 20"
[[nodiscard]] QString caches(std::size_t safe, std::size_t all);

/// "3 anciens sur 20 · projets sans changement depuis 1 mois"
[[nodiscard]] QString nodeModules(std::size_t safe, std::size_t all, AgeThreshold threshold);

/// "les 100 plus gros · à vous de choisir"
[[nodiscard]] QString largest(std::size_t count);

/// "12 copies en trop · une copie de chaque reste"
[[nodiscard]] QString copies(std::size_t count);

} // namespace RecoveryText

} // namespace tallyroom

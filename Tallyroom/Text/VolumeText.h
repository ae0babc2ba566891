#pragma once

#include "FileSystem/UnreadPlaces.h"
#include "Kinds/VolumeAccount.h"
#include "Volumes/VolumeUsage.h"

#include <QString>

#include <cstdint>

namespace tallyroom {

/// What the dashboard says of volumes. Any thread.
namespace VolumeText {

/// A volume is called nearly full from this part on.
inline constexpr double nearlyFull = 0.9;

[[nodiscard]] bool isNearlyFull(const VolumeUsage& volume);

/// "180,4 Go"
[[nodiscard]] QString size(std::int64_t bytes);

/// "3,2 Go"; "au moins 3,2 Go" for a lower bound.
[[nodiscard]] QString atLeast(std::int64_t bytes, bool isLowerBound);

/// "65 %"; for a volume that is nearly full "presque plein", or "plein" when there is no room left.
[[nodiscard]] QString fill(const VolumeUsage& volume);

/// "Système, /, 331,7 Go utilisés sur 512,1 Go, 180,4 Go disponibles": a card in one line, for who cannot see
/// it.
[[nodiscard]] QString name(const VolumeUsage& volume);

/// What the card shows besides, and what it does.
[[nodiscard]] QString description(const VolumeUsage& volume, bool isMain);

/// What the card does, as markup; whatever the mount point looks like, it is not markup.
[[nodiscard]] QString toolTip(const VolumeUsage& volume);

/// "2 volumes ne répondent pas."; milder while they still may. Empty for none.
[[nodiscard]] QString unanswered(std::int64_t count, bool mayStillAnswer);

/// "Utilisés sur le volume : 26 Go · analysés : 24,1 Go · réservés au système : 1,3 Go · hors de portée :
/// 0,6 Go (12 dossiers illisibles…)": why a volume holds more, or less, than its top folder; parts of
/// 0 bytes are left out.
[[nodiscard]] QString account(const VolumeAccount& account, const SharedUnreadPlaces& unread);

} // namespace VolumeText

} // namespace tallyroom

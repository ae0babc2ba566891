#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <optional>

namespace tallyroom {

/// The user's choices that survive a restart, in one INI file of the user's configuration folder. Values of
/// a wrong shape read as absent. Main thread.
namespace Settings {

/// The one handle, made on first use.
[[nodiscard]] QSettings& store();

/// A stored integer; nothing when absent or anything else.
[[nodiscard]] std::optional<std::int64_t> integer(const QString& key);

/// A stored number without its fraction; nothing when absent, no number or beyond 64 bits.
[[nodiscard]] std::optional<std::int64_t> truncatedNumber(const QString& key);

[[nodiscard]] std::optional<QString> text(const QString& key);

/// A stored list of texts; nothing when absent or anything else.
[[nodiscard]] std::optional<QStringList> textList(const QString& key);

[[nodiscard]] bool flag(const QString& key, bool otherwise);

/// Writes a value; it reaches the disk soon, and at the latest when the program ends.
void write(const QString& key, const QVariant& value);

/// How many of the largest files are kept: "lf.limit", 100 when not chosen.
[[nodiscard]] std::int64_t largeFilesLimit();

/// The smallest file looked at for duplicates, in bytes: "dup.minSize", 1 MiB when not chosen.
[[nodiscard]] std::int64_t duplicatesMinSize();

} // namespace Settings

} // namespace tallyroom

#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <memory>
#include <optional>

namespace tallyroom {

/// The user's choices that survive a restart, in one JSON object (RFC 8259) in the user's configuration
/// folder. Values of a wrong shape read as absent, and so does all of a damaged file. Main thread.
namespace Settings {

/// How the file is read and written.
[[nodiscard]] QSettings::Format format();

/// The settings in the file at `path`. What is no regular file there is left alone; choices then last as long
/// as the program.
[[nodiscard]] std::unique_ptr<QSettings> open(const QString& path);

/// The one handle, made on first use.
[[nodiscard]] QSettings& store();

/// A stored number that is whole; nothing when absent or anything else, a text of digits included.
[[nodiscard]] std::optional<std::int64_t> integer(const QString& key);

/// A stored number without its fraction; nothing when absent, no number or beyond 64 bits.
[[nodiscard]] std::optional<std::int64_t> truncatedNumber(const QString& key);

[[nodiscard]] std::optional<QString> text(const QString& key);

/// A stored list of texts; nothing when absent or anything else.
[[nodiscard]] std::optional<QStringList> textList(const QString& key);

[[nodiscard]] bool flag(const QString& key, bool otherwise);

/// Writes a text, a number, a truth or a list of texts; it reaches the disk soon, and at the latest when the
/// program ends.
void write(const QString& key, const QVariant& value);

/// How many of the largest files are kept: "lf.limit", 100 when not chosen.
[[nodiscard]] std::int64_t largeFilesLimit();

/// The smallest file looked at for duplicates, in bytes: "dup.minSize", 1 MiB when not chosen.
[[nodiscard]] std::int64_t duplicatesMinSize();

/// How long work takes that is worth a notification, in seconds: "reports.seconds", 10 when not chosen.
[[nodiscard]] std::int64_t longWorkSeconds();

/// Where it is kept whether the map moves: "view.animations", true when not chosen.
[[nodiscard]] QString animationsKey();

} // namespace Settings

} // namespace tallyroom

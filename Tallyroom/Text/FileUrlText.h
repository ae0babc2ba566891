#pragma once

#include "Model/FileUrl.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <string_view>

namespace tallyroom {

/// Between the bytes of file names and the text of the screen. What is drawn may lose information, what is
/// typed or dropped must not. Any thread.
namespace FileUrlText {

/// `name` as text to draw: bytes that are not UTF-8 as "\xFF", control characters as their pictures ("␊"),
/// characters that turn the writing direction or break the line as "\u202E": no name can pose as another.
[[nodiscard]] QString display(std::string_view name);

/// The whole path, drawn the same way.
[[nodiscard]] QString display(const FileUrl& url);

/// The whole path with the home folder as "~".
[[nodiscard]] QString displayFromHome(const FileUrl& url);

/// An absolute location from what stands on a command line or was typed: a file: URL (percent-encoded, this
/// machine's), "~" or "~/…", an absolute path, or one relative to `base`. Nothing for an empty text and for
/// URLs of other schemes or machines.
[[nodiscard]] std::optional<FileUrl> parse(std::string_view text, const FileUrl& base);

/// The same for a URL that another program dropped or passed; its escaped bytes are kept.
[[nodiscard]] std::optional<FileUrl> fromUrl(const QUrl& url);

/// The location as the toolkit takes file names.
[[nodiscard]] QString toFileName(const FileUrl& url);

/// The location of a file name that the toolkit returned.
[[nodiscard]] FileUrl fromFileName(const QString& name);

[[nodiscard]] FileUrl homeFolder();

} // namespace FileUrlText

} // namespace tallyroom

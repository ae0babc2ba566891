#pragma once

#include <QString>

#include <string_view>

namespace tallyroom {

/// Words of the core, which are UTF-8. Names of files are not: `FileUrlText` draws them.
[[nodiscard]] QString toText(std::string_view words);

/// A reason as the core gives it, as a sentence: "Ce fichier n’existe plus."
[[nodiscard]] QString toSentence(std::string_view reason);

/// `text` for a tool tip, which the toolkit reads as rich text when it looks like it: shown letter by letter
/// whatever it holds. For every tool tip with a name in it; labels are plain by `Theme::style`.
[[nodiscard]] QString plainToolTip(const QString& text);

} // namespace tallyroom

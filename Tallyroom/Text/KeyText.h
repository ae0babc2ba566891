#pragma once

#include <QKeyCombination>
#include <QString>

namespace tallyroom::KeyText {

/// A key as French keyboards have it printed, with those that are held down before it: "Maj+Suppr", "Alt+←".
[[nodiscard]] QString name(QKeyCombination key);

} // namespace tallyroom::KeyText

#pragma once

#include "Model/FileKind.h"

#include <QWidget>

#include <array>
#include <optional>

class QAbstractButton;

namespace tallyroom {

/// The kinds that a map shows, with their colours and sums, the largest first: one of them dims the others,
/// and lets go of them again. Main thread.
class TreemapLegend : public QWidget {
    Q_OBJECT

public:
    explicit TreemapLegend(QWidget* parent = nullptr);

    /// Bytes by the place of the kind; a kind without any is not offered, unless it is the chosen one.
    void show(const std::array<std::int64_t, 11>& bytesByKind);

    void forgetChoice();

Q_SIGNALS:
    void chosen(const std::optional<tallyroom::FileKind>& kind);

private:
    void choose(const std::optional<FileKind>& kind);

    std::array<QAbstractButton*, 11> m_buttons{};
    std::array<FileKind, 11> m_order = FileKind::all;
    std::optional<FileKind> m_choice;
};

} // namespace tallyroom

#pragma once

#include <QWidget>

namespace tallyroom {

/// "node_modules · ~/Projets": a tool's name and its folder, the folder cut short in the middle where the
/// room is small. Main thread.
class ToolTitle : public QWidget {
    Q_OBJECT

public:
    explicit ToolTitle(QString title, QWidget* parent = nullptr);

    /// An empty text for none.
    void setFolder(const QString& folder);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_title;
    QString m_folder;
};

} // namespace tallyroom

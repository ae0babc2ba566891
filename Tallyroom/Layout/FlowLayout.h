#pragma once

#include <QLayout>
#include <QList>

namespace tallyroom {

/// Sets widgets side by side and goes on in the next row where the width ends, as text does. Main thread.
class FlowLayout : public QLayout {
    Q_OBJECT

public:
    explicit FlowLayout(QWidget* parent = nullptr);
    FlowLayout(const FlowLayout&) = delete;
    FlowLayout& operator=(const FlowLayout&) = delete;
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;

    [[nodiscard]] int count() const override { return static_cast<int>(m_items.size()); }

    [[nodiscard]] QLayoutItem* itemAt(int index) const override { return m_items.value(index); }

    QLayoutItem* takeAt(int index) override;

    [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }

    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    /// Gives each widget its place when `isReal`, and the height that all of them take.
    int arrange(const QRect& rect, bool isReal) const;

    QList<QLayoutItem*> m_items;
};

} // namespace tallyroom

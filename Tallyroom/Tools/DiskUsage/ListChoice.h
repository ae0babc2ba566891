#pragma once

#include <QAbstractButton>

#include <string>

namespace tallyroom {

/// One of two joined buttons of which one is on, left or right half of one frame. Main thread.
class ListChoice : public QAbstractButton {
    Q_OBJECT

public:
    enum class Half { left, right };

    ListChoice(Half half, std::string symbol, const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Half m_half;
    std::string m_symbol;
};

} // namespace tallyroom

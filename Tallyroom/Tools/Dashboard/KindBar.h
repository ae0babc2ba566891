#pragma once

#include "Tools/Dashboard/KindShare.h"

#include <QWidget>

#include <vector>

namespace tallyroom {

/// A folder as one bar, in which every kind of files has the length of its share. The pointer names them.
/// Main thread.
class KindBar : public QWidget {
    Q_OBJECT

public:
    explicit KindBar(QWidget* parent = nullptr);

    /// From left to right; those without bytes are left out.
    void setKinds(const std::vector<KindShare>& kinds);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] std::vector<QRectF> places() const;

    std::vector<KindShare> m_kinds;
};

} // namespace tallyroom

#pragma once

#include <QWidget>

class QLabel;

namespace tallyroom {

/// A spinner with a message under it, in the middle. Main thread.
class ScanningView : public QWidget {
    Q_OBJECT

public:
    explicit ScanningView(const QString& message = {}, QWidget* parent = nullptr);

    [[nodiscard]] QString message() const;
    void setMessage(const QString& message);

private:
    QLabel* m_message;
};

} // namespace tallyroom

#pragma once

#include <QWidget>

#include <cstdint>
#include <optional>

class QLabel;
class QProgressBar;

namespace tallyroom {

class Spinner;

/// How far a scan has come: a bar, and under it the counts and the percentage. Main thread.
class ScanProgressBar : public QWidget {
    Q_OBJECT

public:
    explicit ScanProgressBar(QWidget* parent = nullptr);

    /// `fraction` must be finite; the bar shows it within 0 to 1, the text as it is.
    void setProgress(double fraction, std::int64_t completed, std::int64_t total);

    /// The same with words of the tool's own. Without a fraction the end is not known: the words stand alone.
    void setProgress(const QString& text, std::optional<double> fraction);

private:
    QProgressBar* m_bar;
    Spinner* m_spinner;
    QLabel* m_counts;
    QLabel* m_percentage;
};

} // namespace tallyroom

#pragma once

#include <QWidget>

#include <string>

class QLabel;
class QPushButton;

namespace tallyroom {

class ShareBar;
class Spinner;

/// One line of the search for room: what, in words, how much of it may go, as a bar, and what can be done.
/// Main thread.
class RecoveryLine : public QWidget {
    Q_OBJECT

public:
    struct Content {
        QString words;
        QString figure;   ///< "4,2 Go"; empty where nothing may go
        double share = 0; ///< of the largest figure, 0 to 1
        QString action;   ///< "Libérer 4,2 Go…"; none where it is empty
        bool isBusy = false;
        bool isLast = false; ///< nothing follows that a line would part it from

        friend bool operator==(const Content&, const Content&) = default;
    };

    /// `canBeViewed`: a tool shows what it is about.
    RecoveryLine(QString name, std::string icon, bool canBeViewed, QWidget* parent = nullptr);

    void setContent(const Content& content);

    [[nodiscard]] QPushButton& action() const { return *m_action; }

Q_SIGNALS:
    void actionRequested();
    void viewRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeLayout(bool canBeViewed);
    void showSymbol();
    void showBar();

    QString m_name;
    std::string m_icon;
    bool m_isLast = false;
    QLabel* m_symbol;
    Spinner* m_spinner;
    QLabel* m_words;
    ShareBar* m_bar;
    QLabel* m_figure;
    QPushButton* m_action;
    QPushButton* m_view;
};

/// How much of the largest one something is. Main thread.
class ShareBar : public QWidget {
    Q_OBJECT

public:
    explicit ShareBar(QWidget* parent = nullptr);

    void setShare(double share);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double m_share = 0;
};

} // namespace tallyroom

#pragma once

#include "Model/FileUrl.h"

#include <QColor>
#include <QScrollArea>

#include <optional>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tallyroom {

class RecentFolderList;

/// What a tool shows before a folder is chosen: what it does, the button that begins, the recent folders.
/// Scrolls where the room is small. Main thread.
class ToolWelcome : public QScrollArea {
    Q_OBJECT

public:
    struct Content {
        std::string icon; ///< a symbol's name
        QString title;
        QString message;
        std::optional<QString> hint;
        QString actionTitle;
        /// The circle's colour; the theme's accent when it is not valid.
        QColor accent;
    };

    explicit ToolWelcome(Content content, QWidget* parent = nullptr);

    /// The most recent first; the first five are shown, the section is absent when there are none.
    void setRecents(const std::vector<FileUrl>& recents);

    /// Offers a folder that is open elsewhere as the first choice; none: the chooser is.
    void setOffer(const std::optional<FileUrl>& folder);

Q_SIGNALS:
    /// The offered folder is wanted.
    void offerTaken(const tallyroom::FileUrl& folder);
    /// The prominent button was pressed.
    void actionRequested();
    void recentRequested(const tallyroom::FileUrl& location);

private:
    void addIntroduction(QVBoxLayout& column);
    void addHint(QVBoxLayout& column);
    void addAction(QVBoxLayout& column);
    void showSymbols();

    Content m_content;
    QLabel* m_icon = nullptr;
    QLabel* m_hintIcon = nullptr;
    std::optional<FileUrl> m_offered;
    QPushButton* m_offer;
    QPushButton* m_action;
    RecentFolderList* m_recents;
};

} // namespace tallyroom

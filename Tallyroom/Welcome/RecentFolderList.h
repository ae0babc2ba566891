#pragma once

#include "Model/FileUrl.h"

#include <QWidget>

#include <vector>

namespace tallyroom {

/// The recent folders as cards that open them, under a title; hidden when there are none. Main thread.
class RecentFolderList : public QWidget {
    Q_OBJECT

public:
    static constexpr std::size_t shownCount = 5;

    explicit RecentFolderList(QWidget* parent = nullptr);

    /// The most recent first; the first five are shown.
    void setRecents(const std::vector<FileUrl>& recents);

Q_SIGNALS:
    void requested(const tallyroom::FileUrl& location);

protected:
    void showEvent(QShowEvent* event) override;

private:
    std::vector<FileUrl> m_recents;
};

} // namespace tallyroom

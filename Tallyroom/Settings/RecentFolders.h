#pragma once

#include "Model/FileUrl.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace tallyroom {

/// The folders opened last, by any tool, most recent first, kept across restarts. Main thread.
class RecentFolders : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t maxCount = 8;

    /// The one list of the process, made on first use.
    static RecentFolders& shared();

    /// Reads the list stored under `key`.
    explicit RecentFolders(QString key = QStringLiteral("recentFolders"));

    /// Standardized locations; whether they still exist is not asked.
    [[nodiscard]] const std::vector<FileUrl>& urls() const { return m_urls; }

    /// The folder that a tool opened last since the program began, to be offered by the others.
    [[nodiscard]] const std::optional<FileUrl>& openedLast() const { return m_openedLast; }

    /// Puts a folder that a tool has just opened first, and stores the list at once.
    void add(const FileUrl& url);

Q_SIGNALS:
    /// So did `openedLast`, maybe alone.
    void urlsChanged();

private:
    QString m_key;
    std::vector<FileUrl> m_urls;
    std::optional<FileUrl> m_openedLast;
};

} // namespace tallyroom

#pragma once

#include "Bridge/StreamPump.h"
#include "Scanning/TreeOutline.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tallyroom {

/// What lies below the listed folder, as its map shows it: read apart, again when something changed, and in
/// more detail where one looks closer. Nothing is read while nobody looks. Main thread.
class FolderOutline : public QObject {
    Q_OBJECT

public:
    using Read = std::function<TreeOutline::Stream(const FileUrl& folder, const TreeOutline::Detail& detail)>;

    explicit FolderOutline(Read read);

    /// The folder's outline, then those of folders below it that were looked at closer; empty before
    /// something was read.
    [[nodiscard]] const std::vector<SharedOutline>& outlines() const { return m_outlines; }

    /// Somebody looks at the outline, or nobody does any more.
    void setWanted(bool isWanted);

    /// Forgets everything: another folder is listed.
    void open(const std::optional<FileUrl>& folder);

    /// Reads again what was read. Called before `open` said of which folder, it does nothing.
    void update();

    /// While a scan measures the folder it is read now and then, as far as it is known; once it is over, like
    /// `update`.
    void setMeasuring(bool isMeasuring);

    /// Reads more of `folder`, which lies below the one that is open.
    void lookCloser(const FileUrl& folder);

    /// Stops telling of removed items and what lay below them.
    void takeOut(const std::vector<Entry>& gone);

Q_SIGNALS:
    void changed();

private:
    using Pump = std::unique_ptr<StreamPump<TreeOutline::Progress>>;

    void readFolder();
    void receive(const TreeOutline::Progress& record);
    void showNewest();
    void receiveCloser(const TreeOutline::Progress& record);

    Read m_read;
    bool m_isWanted = false;
    bool m_isDue = false;   ///< to be read as soon as somebody looks
    bool m_isFirst = true;  ///< nothing was read of this folder before
    SharedOutline m_newest; ///< of the reading that goes on
    std::optional<FileUrl> m_folder;
    std::vector<SharedOutline> m_outlines;
    bool m_isMeasuring = false;
    QTimer m_again; ///< while others measure
    std::optional<FileUrl> m_closer;
    Pump m_reading;
    Pump m_readingCloser;
};

} // namespace tallyroom

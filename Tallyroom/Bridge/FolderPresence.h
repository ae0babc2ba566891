#pragma once

#include "Bridge/StreamPump.h"
#include "Concurrency/PatientCalls.h"
#include "Model/FileUrl.h"

#include <QObject>

#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tallyroom {

/// Which of the folders that a person knows have vanished. Asked in the background: a dead mount holds up
/// nobody. Main thread.
class FolderPresence : public QObject {
    Q_OBJECT

public:
    /// The one of the process, made on first use.
    static FolderPresence& shared();

    FolderPresence();

    /// Asks about each of them; sends `changed` when an answer differs from the last one.
    void look(const std::vector<FileUrl>& folders);

    /// Whether nothing, or no folder, was found there. False while there is no answer.
    [[nodiscard]] bool isMissing(const FileUrl& folder) const { return m_missing.contains(folder); }

Q_SIGNALS:
    void changed();

private:
    void receive(const FileUrl& folder, bool isMissing);

    PatientCalls m_calls;
    std::unordered_map<FileUrl, std::unique_ptr<StreamPump<bool>>> m_asked;
    std::unordered_set<FileUrl> m_missing;
};

} // namespace tallyroom

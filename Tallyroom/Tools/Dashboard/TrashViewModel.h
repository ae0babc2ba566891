#pragma once

#include "Bridge/StreamPump.h"
#include "Deletion/DeletionRunner.h"
#include "Model/UrlSet.h"
#include "Removal/TrashContents.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// What lies in the trash of each volume, and emptying it. Nothing here waits for a disk. Main thread.
class TrashViewModel : public QObject {
    Q_OBJECT

public:
    using Contents = std::shared_ptr<const TrashContents>;
    using Source = std::function<ProgressStream<TrashContents>(const FileUrl& mountPoint)>;
    using Failures = std::vector<FileRemover::RemovalFailure>;

    /// `deletions` must outlive it.
    TrashViewModel(DeletionRunner& deletions, Source source);

    /// What lies in the trash of a volume; null when nothing does, as far as is known.
    [[nodiscard]] Contents of(const FileUrl& mountPoint) const;

    /// The report of the last emptying.
    [[nodiscard]] const std::optional<QString>& statusMessage() const { return m_statusMessage; }

    /// Whether that report is of a failure; changes with `statusMessage` only.
    [[nodiscard]] ReportTone statusTone() const { return m_statusTone; }

    /// What it left, by the places where it was before; changes with `statusMessage` only.
    [[nodiscard]] const Failures& failures() const { return m_failures; }

    /// How far the emptying has come, while one runs.
    [[nodiscard]] const std::optional<RemovalProgress>& removal() const { return m_removal; }

    /// Begins a round: looks at every volume once more, and keeps the known contents until then.
    void beginRound();

    /// Looks at a volume, unless that was done in this round.
    void look(const FileUrl& mountPoint);

    /// Ends a round: forgets the volumes that it did not look at.
    void endRound();

    /// Looks at a volume at this moment, for a question about all that lies there then (`emptyingReady`).
    void prepareEmptying(const FileUrl& mountPoint);

    /// Removes these items for good. Runs on; says so when another removal runs.
    void empty(const Contents& contents);

    /// Ends the emptying after the item in hand.
    void stop();

    /// Takes the report off the screen.
    void dismissStatus();

Q_SIGNALS:
    void contentsChanged();
    /// What was asked for lies there now; never nothing.
    void emptyingReady(const tallyroom::FileUrl& mountPoint);
    void statusMessageChanged();
    void removalChanged();

private:
    void start(const FileUrl& mountPoint);
    void receive(const FileUrl& mountPoint, TrashContents contents);
    void end(const FileUrl& mountPoint);
    void report(const TrashContents& contents, const RemovalOutcome& outcome);
    void tell(const std::optional<QString>& message, ReportTone tone = ReportTone::done,
              Failures failures = {});
    void showRemoval(const std::optional<RemovalProgress>& progress);

    DeletionRunner& m_deletions;
    Source m_source;
    std::unordered_map<FileUrl, Contents> m_contents;
    UrlSet m_round;                   // volumes that this round has looked at
    std::optional<FileUrl> m_awaited; // the volume whose look is to end in a question
    std::optional<QString> m_statusMessage;
    ReportTone m_statusTone = ReportTone::done;
    Failures m_failures;
    std::optional<RemovalProgress> m_removal;
    std::unordered_map<FileUrl, std::unique_ptr<StreamPump<TrashContents>>> m_looks;
};

} // namespace tallyroom

#pragma once

#include "Bridge/StreamPump.h"
#include "Deletion/RemovedPlaces.h"
#include "Model/AgeThreshold.h"
#include "Model/Category.h"
#include "Scanning/FileScanner.h"
#include "Tools/Frame/ToolOption.h"

#include <QTimer>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// What all tools that list entries have in common: the list and how a scan fills it, the filter, deletion
/// and undo. A tool adds `startStream` and what only it knows. Main thread.
class ListToolViewModel : public ScanToolViewModel {
    Q_OBJECT
    Q_PROPERTY(tallyroom::EntryList entries READ entries NOTIFY progressChanged)
    Q_PROPERTY(std::int64_t scanCompleted READ scanCompleted NOTIFY progressChanged)
    Q_PROPERTY(std::int64_t scanTotal READ scanTotal NOTIFY progressChanged)
    Q_PROPERTY(bool isDiscovering READ isDiscovering NOTIFY progressChanged)
    Q_PROPERTY(std::optional<tallyroom::AgeThreshold> age READ age WRITE setAge NOTIFY remarksChanged)

public:
    /// The text that the filter searches.
    enum class FilterSubject { name, path };
    /// Whether a scan begins by looking for its work items.
    enum class ScanBeginning { measuring, discovering };
    /// Whether the list can be narrowed down to what is older than an age.
    enum class Ages { unused, offered };

    /// What a list is narrowed down to; everything where nothing is given.
    struct Narrowing {
        std::optional<std::string> category{};
        std::optional<AgeThreshold> age{}; ///< what is older

        /// Whether this lets everything through that `other` does.
        [[nodiscard]] bool contains(const Narrowing& other) const;
        friend bool operator==(const Narrowing&, const Narrowing&) = default;
    };

    /// The results, in the order in which the scan delivers them.
    [[nodiscard]] const EntryList& entries() const { return m_entries; }

    [[nodiscard]] std::int64_t scanCompleted() const { return m_scanCompleted; }

    [[nodiscard]] std::int64_t scanTotal() const { return m_scanTotal; }

    [[nodiscard]] bool isDiscovering() const { return m_isDiscovering; }

    /// The category that the list is narrowed down to; none: all are shown. Forgotten with the root.
    [[nodiscard]] const std::optional<std::string>& category() const { return m_category; }

    void setCategory(const std::optional<std::string>& category);

    /// The age beyond which entries are shown; none: all are shown. Forgotten with the root.
    [[nodiscard]] std::optional<AgeThreshold> age() const { return m_age ? m_age->value() : std::nullopt; }

    /// Does nothing where no ages are offered.
    void setAge(const std::optional<AgeThreshold>& age);

    [[nodiscard]] Narrowing narrowing() const { return {m_category, age()}; }

    /// How many `entries` there are of each category; none where the tool knows no categories.
    [[nodiscard]] virtual CategoryCounts categoryCounts() const;

    /// Opens `root`, which may be gone, with the list narrowed down to a category from the start.
    void openCategory(const FileUrl& root, std::string_view category);

    [[nodiscard]] bool isFiltering() const override;
    void clearFilter() override;

    /// Whether an entry contains the search text and is what the list is narrowed down to; empty while there
    /// is neither. A copy of what it needs: it may be called on any thread.
    [[nodiscard]] std::function<bool(const Entry&)> filter() const;

    /// `entries` that the filter lets through, in the same order. Linear in the list.
    [[nodiscard]] EntryList filteredEntries() const;

    /// The bytes of all `entries`, also of those that the filter hides. Linear in the list.
    [[nodiscard]] std::int64_t totalSize() const;

    /// The part of `totalSize` that the scan counted more than once, as it ended.
    [[nodiscard]] std::int64_t countedAgain() const { return m_countedAgain; }

    /// scanCompleted / scanTotal; 0 while the total is not known.
    [[nodiscard]] double scanFraction() const;

    [[nodiscard]] ScanLine scanLine() const override;

    [[nodiscard]] bool hasProgress() const override { return m_scanTotal > 0 || m_isDiscovering; }

    [[nodiscard]] std::size_t entryCount() const override { return m_entries.size(); }

    /// The folders that the running scan is still measuring, with their sizes so far; none of them is in
    /// `entries`. Looked up some eight times a second.
    [[nodiscard]] const std::vector<Entry>& running() const { return m_running; }

    [[nodiscard]] bool isShowingRunning() const override { return !m_running.empty(); }

    void forEachEntry(const Visitor& visit) const override;

    [[nodiscard]] QString scanReport() const override;

Q_SIGNALS:
    void categoryChanged();
    void runningChanged();

protected:
    /// `deletions` must outlive the view model; `categoryOf` is for tools that know categories.
    explicit ListToolViewModel(DeletionRunner& deletions, CategoryOf categoryOf = {},
                               Ages ages = Ages::unused, FilterSubject filterSubject = FilterSubject::path,
                               ScanBeginning beginning = ScanBeginning::discovering);

    /// Starts the scan that fills the list; called with a root folder set and no scan running.
    [[nodiscard]] virtual FileScanner::ScanStream startStream() = 0;

    void startScan(PropertyUpdate& update) override;
    void dropScan(PropertyUpdate& update) override;
    void rootChosen(PropertyUpdate& update) override;

    /// Called when the user narrows the list down to something else, but not when a root is chosen.
    virtual void narrowed() {}

    /// Whether a restored item belongs in the list, even if it was never listed.
    [[nodiscard]] virtual bool lists(const Entry& /*entry*/) const { return false; }

    void takeOut(PropertyUpdate& update, const std::vector<Entry>& gone) override;
    void putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn) override;
    void measureAgain(const UrlSet& folders) override;

    /// A folder of the list was measured again.
    virtual void noteMeasured(const Entry& /*folder*/, const FolderSize& /*size*/) {}

private:
    void offerAges();
    void receive(const ScanProgress& record);
    void showRunning(PropertyUpdate& update);
    /// The new sizes of folders that were measured again.
    using Sizes = std::unordered_map<FileUrl, FolderSize>;

    void startMeasuring();
    void showSizes(const Sizes& sizes);
    [[nodiscard]] EntryList amended(const EntryList& found) const;

    FilterSubject m_filterSubject;
    ScanBeginning m_beginning;
    CategoryOf m_categoryOf;
    std::optional<std::string> m_category;
    std::optional<std::string> m_categoryToOpen;                  // for the root that is about to be chosen
    std::optional<ToolOption<std::optional<AgeThreshold>>> m_age; // where ages are offered
    EntryList m_entries;
    std::int64_t m_scanCompleted = 0;
    std::int64_t m_scanTotal = 0;
    bool m_isDiscovering = false;
    std::shared_ptr<const RunningFolders> m_runningFolders; // of the running scan
    std::vector<Entry> m_running;
    QTimer m_runningClock;
    std::optional<SystemError> m_unread; // of the running scan, as what follows
    SharedUnreadPlaces m_unreadPlaces;
    std::int64_t m_countedAgain = 0;
    EntryList m_taken;      // removed since this list began to fill
    EntryList m_takenAlong; // lay below a folder that was removed: they come back with it
    // While the list fills:
    RemovedPlaces m_removed; // deleted meanwhile: the scan may still report them
    EntryList m_restored;    // put back meanwhile: the scan may have passed them by
    std::unique_ptr<StreamPump<ScanProgress>> m_pump;
    UrlSet m_changedFolders; // those listed among them are to be measured again
    std::unique_ptr<StreamPump<Sizes>> m_measuring;
};

} // namespace tallyroom

#pragma once

#include "Tools/DiskUsage/ContentColumns.h"
#include "Tools/DiskUsage/FolderOutline.h"
#include "Tools/Frame/ListToolViewModel.h"
#include "Volumes/VolumesBelow.h"

#include <functional>
#include <string>
#include <vector>

namespace tallyroom {

/// One step of the way from the root to the folder on screen.
struct BreadcrumbItem {
    std::string name; ///< in bytes, as its folder knows it
    FileUrl url;

    friend bool operator==(const BreadcrumbItem&, const BreadcrumbItem&) = default;
};

/// What the navigator lists folders with and shows files with; the real ones unless a test brings its own.
struct FolderServices {
    std::function<FileScanner::ScanStream(const FileUrl& folder, bool useCache)> list =
        FileScanner::directEntriesStream;
    std::function<void(const FileUrl& folder)> invalidate = FileScanner::invalidateAround;
    std::function<void(const FileUrl& file)> reveal = Desktop::reveal;
    FolderOutline::Read outline = TreeOutline::read;
    std::function<std::optional<std::int64_t>(const FileUrl& folder)> usedBytes = usedBytesBelow;
};

/// Walks down a folder level by level: the children of the current one with their sizes, the way back, the
/// way up. Main thread.
class FolderNavigatorViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::optional<tallyroom::FileUrl> currentURL READ currentURL NOTIFY currentURLChanged)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY canGoBackChanged)

public:
    explicit FolderNavigatorViewModel(DeletionRunner& deletions, FolderServices services = {});

    /// The folder whose children are listed.
    [[nodiscard]] const std::optional<FileUrl>& currentURL() const { return m_currentURL; }

    [[nodiscard]] bool canGoBack() const { return !m_history.empty(); }

    /// The folders that the way back leads through, the next one last.
    [[nodiscard]] const std::vector<FileUrl>& history() const { return m_history; }

    /// From the root to the current folder; empty before one is open. The current folder is taken to lie
    /// under the root.
    [[nodiscard]] std::vector<BreadcrumbItem> breadcrumb() const;

    /// The folders above the root, from the top of the file system on; empty before one is open.
    [[nodiscard]] std::vector<BreadcrumbItem> wayToRoot() const;

    [[nodiscard]] std::int64_t currentTotalSize() const { return totalSize(); }

    /// What lies deeper in the current folder.
    [[nodiscard]] FolderOutline& outline() { return m_outline; }

    /// What the listed folders hold besides bytes.
    [[nodiscard]] ShownContents contents() const { return m_contents; }

    /// Enters a folder; shows a file in the file browser.
    void activate(const Entry& entry);

    void goBack();

    /// While the top of a volume is listed: what is counted of what the volume says is used.
    [[nodiscard]] ScanLine scanLine() const override;

    /// To the parent, not above the root.
    void goUp();

    void goToRoot();

    void navigateViaBreadcrumb(const FileUrl& url);

    /// The same for a step above the root, which becomes the root.
    void goTo(const FileUrl& step);

    /// Measures the current folder anew, without what the caches know.
    void refreshCurrent();

    void refresh() override { refreshCurrent(); }

    [[nodiscard]] std::optional<FileUrl> listedFolder() const override { return m_currentURL; }

Q_SIGNALS:
    void currentURLChanged();
    void canGoBackChanged();
    /// These items, and what lay below them, are no longer there.
    void itemsGone(const std::vector<tallyroom::Entry>& items);

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;
    void scanAgain() override;
    void rootChosen(PropertyUpdate& update) override;
    void takeOut(PropertyUpdate& update, const std::vector<Entry>& gone) override;
    void putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn) override;
    void measureAgain(const UrlSet& folders) override;
    void noteMeasured(const Entry& folder, const FolderSize& size) override;

    [[nodiscard]] bool lists(const Entry& entry) const override
    {
        return m_currentURL && entry.url.parent() == *m_currentURL;
    }

private:
    enum class Caching { use, ignore };

    void navigate(const FileUrl& url, Caching caching, std::vector<FileUrl> history);
    void placeAt(PropertyUpdate& update, const FileUrl& url, Caching caching, std::vector<FileUrl> history);

    FolderServices m_services;
    std::optional<FileUrl> m_currentURL;
    std::vector<FileUrl> m_history; // oldest first
    FolderOutline m_outline;
    const std::shared_ptr<Locked<SharedFolderContents>> m_contents =
        std::make_shared<Locked<SharedFolderContents>>();
    Caching m_caching = Caching::use;
    std::optional<std::int64_t> m_usedBytes; // of the volume that is listed, once it is known
    std::unique_ptr<StreamPump<std::optional<std::int64_t>>> m_askingVolume;
};

} // namespace tallyroom

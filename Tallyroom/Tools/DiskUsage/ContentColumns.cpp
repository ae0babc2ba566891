#include "Tools/DiskUsage/ContentColumns.h"

#include "Text/AgeText.h"
#include "Text/KindText.h"
#include "Text/NumberText.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace tallyroom {

namespace {

using Content = FolderContents::Content;

constexpr int shareColumnWidth = 116;
constexpr int filesColumnWidth = 92;
constexpr int newestColumnWidth = 122;

/// None for what is no folder, and for a folder of which nothing is known.
std::optional<Content> contentOf(const ShownContents& contents, const Entry& entry)
{
    const SharedFolderContents shown = contents->get();
    return entry.isDirectory && shown != nullptr ? shown->find(entry.name) : std::nullopt;
}

/// The last change at or below an entry, as far as it is known.
struct Newest {
    enum class Bound : unsigned char { exact, least, most };

    Timestamp moment;
    Bound bound = Bound::exact;
};

/// The first and the last moment that a folder's content tells stand for all before and after them.
std::optional<Newest> newestAt(const ShownContents& contents, const Entry& entry)
{
    constexpr std::uint32_t first = 1;
    constexpr std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
    const auto content = contentOf(contents, entry);
    const std::uint32_t told = content ? content->newest : 0;
    if (told == 0 && !entry.modifiedAt) {
        return std::nullopt;
    }
    const bool isLeast = entry.unread > 0 || told == last;
    return Newest{told > 0 ? Timestamp{std::chrono::seconds{told}} : *entry.modifiedAt,
                  isLeast         ? Newest::Bound::least
                  : told == first ? Newest::Bound::most
                                  : Newest::Bound::exact};
}

/// A day after the word for its bound.
std::function<QString(const Entry&)> newestText(const ShownContents& contents, const QString& exactly,
                                                const QString& atLeast, const QString& atMost)
{
    return [=](const Entry& entry) {
        const auto newest = newestAt(contents, entry);
        if (!newest) {
            return QString{};
        }
        switch (newest->bound) {
        case Newest::Bound::least:
            return atLeast + dayText(newest->moment);
        case Newest::Bound::most:
            return atMost + dayText(newest->moment);
        case Newest::Bound::exact:
            break;
        }
        return exactly + dayText(newest->moment);
    };
}

/// Text that says nothing of a folder that cannot be read, and "at least" of one that was read in part.
template <class Number>
std::function<QString(const Entry&)> filesText(const ShownContents& contents, const QString& atLeast,
                                               const Number& number)
{
    return [contents, atLeast, number](const Entry& entry) {
        const auto content = contentOf(contents, entry);
        return !content || entry.has(EntryMark::unreadable)
                   ? QString{}
                   : (entry.unread > 0 ? atLeast : QString{}) + number(content->files);
    };
}

EntryTableColumn shareColumn(std::function<std::int64_t()> total)
{
    const auto text = [total = std::move(total)](const Entry& entry) {
        const std::int64_t whole = total();
        return whole <= 0 || entry.has(EntryMark::unreadable)
                   ? QString{}
                   : KindText::share(static_cast<double>(entry.sizeBytes) / static_cast<double>(whole));
    };
    EntryTableColumn column{QStringLiteral("Part du dossier"), shareColumnWidth, text,
                            [](const Entry& entry) { return static_cast<double>(entry.sizeBytes); }};
    column.optionName = QStringLiteral("share");
    column.isNumeric = true;
    column.spoken = [text](const Entry& entry) {
        const QString share = text(entry);
        return share.isEmpty() ? share : share + QStringLiteral(" du dossier");
    };
    return column;
}

EntryTableColumn filesColumn(const ShownContents& contents)
{
    const auto key = [contents](const Entry& entry) {
        const auto content = contentOf(contents, entry);
        return content ? static_cast<double>(content->files) : -1.0; // after folders without any
    };
    const auto grouped = [](std::int64_t count) { return NumberText::grouped(count); };
    EntryTableColumn column{QStringLiteral("Fichiers"), filesColumnWidth,
                            filesText(contents, QStringLiteral("≥\u00a0"), grouped), key};
    column.optionName = QStringLiteral("files");
    column.isNumeric = true;
    column.spoken = filesText(contents, QStringLiteral("au moins "), NumberText::files);
    return column;
}

EntryTableColumn newestColumn(const ShownContents& contents)
{
    const auto key = [contents](const Entry& entry) {
        const auto newest = newestAt(contents, entry);
        return newest ? std::chrono::duration<double>(newest->moment.time_since_epoch()).count() : 0;
    };
    EntryTableColumn column{QStringLiteral("Modifié"), newestColumnWidth,
                            newestText(contents, {}, QStringLiteral("≥\u00a0"), QStringLiteral("≤\u00a0")),
                            key};
    column.optionName = QStringLiteral("newest");
    column.spoken =
        newestText(contents, QStringLiteral("modifié le "), QStringLiteral("modifié au plus tôt le "),
                   QStringLiteral("modifié au plus tard le "));
    return column;
}

} // namespace

std::vector<EntryTableColumn> contentColumns(const ShownContents& contents,
                                             std::function<std::int64_t()> total)
{
    return {shareColumn(std::move(total)), filesColumn(contents), newestColumn(contents)};
}

} // namespace tallyroom

#include "Tools/LargeFiles/LargeFiles.h"

#include "Text/AgeText.h"
#include "Text/NumberText.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

namespace {

OptionPlan<std::int64_t> limitPlan()
{
    const auto& offered = LargeFilesViewModel::offeredLimits;
    return {
        [](std::int64_t limit) { return QStringLiteral("Les %1 plus gros").arg(NumberText::grouped(limit)); },
        {offered.begin(), offered.end()},
        [](std::int64_t limit) { return QString::number(limit); }};
}

using Age = std::optional<AgeThreshold>;

OptionPlan<Age> agePlan()
{
    const auto name = [](const Age& age) {
        return age ? QStringLiteral("plus de ") + thresholdText(*age) : QStringLiteral("tous");
    };
    OptionPlan<Age> plan{
        [name](const Age& age) { return QStringLiteral("Âge : ") + name(age); }, {Age{}}, name};
    plan.choices.insert(plan.choices.end(), AgeThreshold::all.begin(), AgeThreshold::all.end());
    return plan;
}

} // namespace

bool LargeFilesViewModel::Narrowing::contains(const Narrowing& other) const
{
    return (!kind || kind == other.kind) && (!age || (other.age && *other.age >= *age));
}

LargeFilesViewModel::LargeFilesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions, [](const Entry& entry) { return FileKind::of(entry).rawValue(); }),
      m_age(*this, {}, agePlan(),
            [this] {
                scanWhereNeeded();
                Q_EMIT filterChanged();
            }),
      m_limit(*this, {QStringLiteral("lf.limit"), Settings::largeFilesLimit()}, limitPlan(),
              [this] { scan(); })
{
    connect(this, &ScanToolViewModel::progressChanged, this, [this] {
        if (!m_scanned.kind && !entries().empty()) {
            m_kindCounts = ListToolViewModel::categoryCounts();
        }
        m_isCut = m_isCut || static_cast<std::int64_t>(entries().size()) >= limit();
    });
    connect(this, &FolderTool::stateChanged, this, [this] {
        if (state() == ToolState::loaded()) {
            scanWhereNeeded();
        }
    });
}

void LargeFilesViewModel::openLargestOf(const FileUrl& folder, FileKind kind)
{
    Desktop::examine(this, folder, [this, kind](const FolderChoice& choice) {
        if (choice && !choice->empty()) {
            openCategory(choice->front(), std::string{kind.rawValue()});
        } else {
            handleImport(choice);
        }
    });
}

void LargeFilesViewModel::rootChosen(PropertyUpdate& update)
{
    m_kindCounts.clear();
    ListToolViewModel::rootChosen(update);
    m_age.set(std::nullopt, update);
    m_toScan = wanted();
    update.announce(&ListToolViewModel::filterChanged);
}

void LargeFilesViewModel::categoryChosen()
{
    scanWhereNeeded();
}

void LargeFilesViewModel::scanWhereNeeded()
{
    if (state() == ToolState::idle()) {
        return;
    }
    // Whether a running scan will lack some is known at its end; and one that the user stopped is no reason
    // for another as long as it may hold what is wanted.
    const bool lacksSome = m_isCut && scanEnd().isComplete();
    if (!m_scanned.contains(wanted()) || (lacksSome && wanted() != m_scanned)) {
        m_toScan = wanted();
        scan();
    }
}

CategoryCounts LargeFilesViewModel::categoryCounts() const
{
    CategoryCounts counts = ListToolViewModel::categoryCounts();
    if (m_scanned.kind) {
        counts.insert(m_kindCounts.begin(), m_kindCounts.end());
    }
    return counts;
}

std::function<bool(const Entry&)> LargeFilesViewModel::filter() const
{
    auto usual = ListToolViewModel::filter();
    if (!age()) {
        return usual;
    }
    return [usual = std::move(usual), age = *age(), now = Timestamp{std::chrono::system_clock::now()}](
               const Entry& entry) { return age.isOld(entry.modifiedAt, now) && usual(entry); };
}

bool LargeFilesViewModel::isFiltering() const
{
    return age().has_value() || ListToolViewModel::isFiltering();
}

void LargeFilesViewModel::clearFilter()
{
    setCategory(std::nullopt);
    setAge(std::nullopt);
    ListToolViewModel::clearFilter();
}

ScanLine LargeFilesViewModel::scanLine() const
{
    return {QStringLiteral("Analyse en cours… ") + NumberText::examinedFiles(scanCompleted()), std::nullopt};
}

Recovery LargeFilesViewModel::recovery() const
{
    Recovery recovery = Recovery::parted(entries(), [](const Entry&) { return false; });
    recovery.words =
        QStringLiteral("les %1 plus gros · à vous de choisir").arg(NumberText::grouped(entries().size()));
    return recovery;
}

FileScanner::ScanStream LargeFilesViewModel::startStream()
{
    m_scanned = m_toScan;
    m_isCut = false;
    FileScanner::FileCriteria criteria;
    if (m_scanned.kind) {
        criteria.kind = FileKind::fromRawValue(*m_scanned.kind);
    }
    if (m_scanned.age) {
        criteria.modifiedBefore = m_scanned.age->before(std::chrono::system_clock::now());
    }
    return FileScanner::findLargestFilesStream(*rootURL(), limit(), criteria);
}

ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool)
{
    ListToolStyle style =
        ToolStyles::search({.icon = "doc.text.magnifyingglass",
                            .title = QStringLiteral("Gros fichiers"),
                            .message = QStringLiteral(
                                "Choisissez un dossier : Tallyroom y cherche les fichiers les plus lourds, à "
                                "n’importe quelle profondeur."),
                            .emptyMessage = QStringLiteral("Aucun fichier dans ce dossier.")},
                           QStringLiteral("Fichier"));
    style.table.columns.push_back(ToolStyles::ageColumn());
    style.categories = ToolStyles::chips(FileKind::all);
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom

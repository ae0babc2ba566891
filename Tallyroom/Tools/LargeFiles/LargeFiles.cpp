#include "Tools/LargeFiles/LargeFiles.h"

#include "Controls/OptionMenu.h"
#include "Model/FileKind.h"
#include "Settings/Settings.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Theme/FileKindPresentation.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

namespace {

ListToolStyle largeFilesStyle()
{
    ListToolStyle style = ToolStyles::search(
        "doc.text.magnifyingglass", QStringLiteral("Gros fichiers"),
        QStringLiteral("Choisissez un dossier : Tallyroom y cherche les fichiers les plus lourds, à "
                       "n’importe quelle profondeur."));
    style.emptyMessage = QStringLiteral("Aucun fichier dans ce dossier.");
    style.table.firstColumnTitle = QStringLiteral("Fichier");
    style.table.columns.push_back(ToolStyles::ageColumn());
    for (const FileKind kind : FileKind::all) {
        if (kind != FileKind::folder) {
            style.categories.push_back(
                {std::string{kind.rawValue()}, displayName(kind), std::string{kind.symbolName()}});
        }
    }
    return style;
}

QString ageChoice(const std::optional<AgeThreshold>& age)
{
    return age ? QStringLiteral("plus de ") + toText(age->label()) : QStringLiteral("tous");
}

OptionMenu* makeLimits(LargeFilesViewModel& tool)
{
    auto* const limits = new OptionMenu(OptionMenu::Choices::one, [&tool] {
        return QStringLiteral("Les %1 plus gros").arg(NumberText::grouped(tool.limit()));
    });
    limits->addChoices(
        LargeFilesViewModel::offeredLimits, [](std::int64_t limit) { return QString::number(limit); },
        [&tool](std::int64_t limit) { return limit == tool.limit(); },
        [&tool](std::int64_t limit, bool) { tool.setLimit(limit); });
    limits->follow(tool, &LargeFilesViewModel::limitChanged);
    return limits;
}

OptionMenu* makeAges(LargeFilesViewModel& tool)
{
    auto* const ages = new OptionMenu(OptionMenu::Choices::one,
                                      [&tool] { return QStringLiteral("Âge : ") + ageChoice(tool.age()); });
    std::vector<std::optional<AgeThreshold>> choices{std::nullopt};
    choices.insert(choices.end(), AgeThreshold::all.begin(), AgeThreshold::all.end());
    ages->addChoices(
        choices, ageChoice, [&tool](const auto& age) { return age == tool.age(); },
        [&tool](const auto& age, bool) { tool.setAge(age); });
    ages->follow(tool, &LargeFilesViewModel::ageChanged);
    return ages;
}

} // namespace

bool LargeFilesViewModel::Narrowing::contains(const Narrowing& other) const
{
    return (!kind || kind == other.kind) && (!age || (other.age && *other.age >= *age));
}

LargeFilesViewModel::LargeFilesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions, [](const Entry& entry) { return FileKind::of(entry).rawValue(); }),
      m_limit(Settings::largeFilesLimit())
{
    connect(this, &ScanToolViewModel::progressChanged, this, [this] {
        if (!m_scanned.kind && !entries().empty()) {
            m_kindCounts = ListToolViewModel::categoryCounts();
        }
        m_isCut = m_isCut || static_cast<std::int64_t>(entries().size()) >= m_limit;
    });
    connect(this, &FolderTool::stateChanged, this, [this] {
        if (state() == ToolState::loaded()) {
            scanWhereNeeded();
        }
    });
}

void LargeFilesViewModel::setLimit(std::int64_t limit)
{
    if (!assignIfChanged(m_limit, limit)) {
        return;
    }
    Settings::write(QStringLiteral("lf.limit"), QVariant::fromValue<qlonglong>(limit));
    Q_EMIT limitChanged();
    scan();
}

void LargeFilesViewModel::setAge(const std::optional<AgeThreshold>& age)
{
    if (assignIfChanged(m_age, age)) {
        scanWhereNeeded();
        Q_EMIT ageChanged();
        Q_EMIT filterChanged();
    }
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
    update.assign(m_age, std::nullopt, &LargeFilesViewModel::ageChanged);
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
    if (!m_age) {
        return usual;
    }
    return [usual = std::move(usual), age = *m_age, now = Timestamp{std::chrono::system_clock::now()}](
               const Entry& entry) { return age.isOld(entry.modifiedAt, now) && usual(entry); };
}

bool LargeFilesViewModel::isFiltering() const
{
    return m_age.has_value() || ListToolViewModel::isFiltering();
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
    return FileScanner::findLargestFilesStream(*rootURL(), m_limit, criteria);
}

ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool)
{
    auto* const screen = new ListToolScreen(tool, largeFilesStyle());
    screen->addOption(makeAges(tool));
    screen->addOption(makeLimits(tool));
    return screen;
}

} // namespace tallyroom

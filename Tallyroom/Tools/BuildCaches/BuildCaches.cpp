#include "Tools/BuildCaches/BuildCaches.h"

#include "Caches/FindInspectors.h"
#include "Controls/OptionMenu.h"
#include "Recovery/SafeRemoval.h"
#include "Settings/Settings.h"
#include "Text/MarkText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

namespace {

const QString ecosystemsKey = QStringLiteral("bc.ecosystems");

/// The stored set; all of them when nothing known is stored.
std::set<Ecosystem> loadEcosystems()
{
    std::set<Ecosystem> ecosystems;
    for (const QString& text : Settings::textList(ecosystemsKey).value_or(QStringList{})) {
        if (const auto ecosystem = Ecosystem::fromRawValue(text.toStdString())) {
            ecosystems.insert(*ecosystem);
        }
    }
    return ecosystems.empty() ? std::set<Ecosystem>{Ecosystem::all.begin(), Ecosystem::all.end()}
                              : ecosystems;
}

std::string_view ecosystemOf(const Entry& entry)
{
    const auto ecosystem = Ecosystem::of(entry);
    return ecosystem ? ecosystem->rawValue() : std::string_view{};
}

std::string symbolOf(const Entry& entry)
{
    const auto ecosystem = Ecosystem::of(entry);
    return std::string{ecosystem ? ecosystem->symbolName() : std::string_view{"folder.fill"}};
}

/// How a cache is made again, then what its marks mean.
QString cacheToolTip(const Entry& entry)
{
    const auto ecosystem = Ecosystem::of(entry);
    const CacheFolder* const folder = ecosystem ? ecosystem->folder(entry.name) : nullptr;
    QString marks = MarkText::explanation(entry);
    if (folder == nullptr || entry.has(EntryMark::toVerify)) {
        return marks;
    }
    const QString remedy = folder->remedy.empty()
                               ? QStringLiteral("Se refait tout seul à la prochaine exécution.")
                               : QStringLiteral("Se refait par « %1 ».").arg(toText(folder->remedy));
    return marks.isEmpty() ? remedy : remedy + QLatin1Char{'\n'} + marks;
}

/// The place of an ecosystem in their order, to sort by; unknown ones last.
double orderOf(const Entry& entry)
{
    return static_cast<double>(Ecosystem::of(entry).value_or(Ecosystem::xcode).index());
}

ListToolStyle buildCachesStyle()
{
    ListToolStyle style = ToolStyles::search(
        "hammer", QStringLiteral("Caches de build"),
        QStringLiteral("Choisissez un dossier de code : Tallyroom y cherche ce que vos outils de "
                       "développement savent refaire."));
    style.emptyMessage = QStringLiteral("Aucun cache de build ici.");
    style.table.firstColumnTitle = QStringLiteral("Cache");
    style.table.name = [](const Entry& entry) { return ToolStyles::projectName(entry) + " / " + entry.name; };
    style.table.symbol = symbolOf;
    style.table.toolTip = cacheToolTip;
    style.table.columns.push_back({QStringLiteral("Écosystème"), 130,
                                   [](const Entry& entry) {
                                       const auto ecosystem = Ecosystem::of(entry);
                                       return ecosystem ? toText(ecosystem->displayName()) : QString{};
                                   },
                                   orderOf});
    for (const Ecosystem ecosystem : Ecosystem::all) {
        style.categories.push_back({std::string{ecosystem.rawValue()}, toText(ecosystem.displayName()),
                                    std::string{ecosystem.symbolName()}});
    }
    return style;
}

} // namespace

BuildCachesViewModel::BuildCachesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions, ecosystemOf), m_enabled(loadEcosystems())
{}

void BuildCachesViewModel::setEnabledEcosystems(const std::set<Ecosystem>& ecosystems)
{
    if (!assignIfChanged(m_enabled, ecosystems)) {
        return;
    }
    QStringList names;
    for (const Ecosystem ecosystem : m_enabled) {
        names.append(toText(ecosystem.rawValue()));
    }
    Settings::write(ecosystemsKey, names);
    Q_EMIT enabledEcosystemsChanged();
    scan();
}

void BuildCachesViewModel::enable(Ecosystem ecosystem, bool isOn)
{
    std::set<Ecosystem> ecosystems = m_enabled;
    if (isOn) {
        ecosystems.insert(ecosystem);
    } else {
        ecosystems.erase(ecosystem);
    }
    setEnabledEcosystems(ecosystems);
}

Recovery BuildCachesViewModel::recovery() const
{
    // A tool of their own tells of node_modules.
    const EntryList own =
        entries().parted([](const Entry& entry) { return entry.name == "node_modules"; }).second;
    Recovery recovery = Recovery::parted(own, SafeRemoval::isSafeCache);
    recovery.words = NumberText::plural(recovery.safe.size(), QStringLiteral("cache sans risque"),
                                        QStringLiteral("caches sans risque")) +
                     QStringLiteral(" sur ") + NumberText::grouped(own.size());
    return recovery;
}

FileScanner::ScanStream BuildCachesViewModel::startStream()
{
    return FileScanner::findDirectoriesStream(Ecosystem::ruleNames(m_enabled), *rootURL(),
                                              FindInspectors::ofCaches());
}

ListToolScreen* makeBuildCachesScreen(BuildCachesViewModel& tool)
{
    auto* const ecosystems = new OptionMenu(OptionMenu::Choices::many, [&tool] {
        return QStringLiteral("Écosystèmes (%1)").arg(tool.enabledEcosystems().size());
    });
    ecosystems->addChoices(
        Ecosystem::all, [](Ecosystem ecosystem) { return toText(ecosystem.displayName()); },
        [&tool](Ecosystem ecosystem) { return tool.enabledEcosystems().contains(ecosystem); },
        [&tool](Ecosystem ecosystem, bool isOn) { tool.enable(ecosystem, isOn); });
    ecosystems->follow(tool, &BuildCachesViewModel::enabledEcosystemsChanged);
    auto* const screen = new ListToolScreen(tool, buildCachesStyle());
    screen->addOption(ecosystems);
    return screen;
}

} // namespace tallyroom

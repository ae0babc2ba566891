#include "Tools/BuildCaches/BuildCachesViewModel.h"

#include "Settings/PersistedSettings.h"

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
    const auto ecosystem = Ecosystem::first(entry.name);
    return ecosystem ? ecosystem->rawValue() : std::string_view{};
}

} // namespace

BuildCachesViewModel::BuildCachesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(FilterSubject::path, ScanBeginning::discovering, deletions, ecosystemOf),
      m_enabled(loadEcosystems())
{}

void BuildCachesViewModel::setEnabledEcosystems(const std::set<Ecosystem>& ecosystems)
{
    if (!assignIfChanged(m_enabled, ecosystems)) {
        return;
    }
    QStringList names;
    for (const Ecosystem ecosystem : m_enabled) {
        const std::string_view raw = ecosystem.rawValue();
        names.append(QString::fromLatin1(raw.data(), static_cast<qsizetype>(raw.size())));
    }
    Settings::write(ecosystemsKey, names);
    Q_EMIT enabledEcosystemsChanged();
    scan();
}

FileScanner::ScanStream BuildCachesViewModel::startStream()
{
    return FileScanner::findDirectoriesStream(Ecosystem::ruleNames(m_enabled), *rootURL());
}

} // namespace tallyroom

#include "Settings/ScanRules.h"

#include "Bridge/Desktop.h"
#include "Bridge/Observable.h"
#include "Scanning/FileScanner.h"
#include "Settings/Settings.h"
#include "Settings/StoredUrl.h"

#include <algorithm>

namespace tallyroom {

namespace {

const QString namesKey = QStringLiteral("scan.excludedNames");
const QString foldersKey = QStringLiteral("scan.excludedFolders");
const QString fileSystemKey = QStringLiteral("scan.oneFileSystem");

ScanScope::Rules storedRules()
{
    ScanScope::Rules rules;
    for (const QString& name : Settings::textList(namesKey).value_or(QStringList{})) {
        rules.names.insert(name.toStdString());
    }
    for (const QString& folder : Settings::textList(foldersKey).value_or(QStringList{})) {
        rules.folders.push_back(StoredUrl::read(folder));
    }
    std::erase_if(rules.folders, [](const FileUrl& url) { return !url.path().starts_with('/'); });
    rules.staysOnFileSystem = Settings::flag(fileSystemKey, false);
    return rules;
}

} // namespace

ScanRules& ScanRules::shared()
{
    static auto* const rules = new ScanRules; // never destroyed, like the recent folders
    return *rules;
}

ScanRules::ScanRules() : m_rules(storedRules())
{
    ScanScope::use(m_rules);
}

void ScanRules::setRules(ScanScope::Rules rules)
{
    if (!assignIfChanged(m_rules, std::move(rules))) {
        return;
    }
    QStringList names;
    for (const std::string& name : m_rules.names) {
        names += QString::fromStdString(name);
    }
    QStringList folders;
    for (const FileUrl& folder : m_rules.folders) {
        folders += StoredUrl::text(folder);
    }
    Settings::write(namesKey, names);
    Settings::write(foldersKey, folders);
    Settings::write(fileSystemKey, m_rules.staysOnFileSystem);
    ScanScope::use(m_rules);
    FileScanner::clearCache();
    Q_EMIT changed();
}

bool ScanRules::isFolderExcluded(std::string_view name) const
{
    return std::ranges::any_of(m_rules.folders,
                               [name](const FileUrl& folder) { return folder.lastPathComponent() == name; });
}

void ScanRules::exclude(const FileUrl& folder)
{
    Desktop::findRealPlace(this, folder, [this](const FileUrl& place) {
        ScanScope::Rules rules = m_rules;
        if (std::ranges::find(rules.folders, place) == rules.folders.end()) {
            rules.folders.push_back(place);
            setRules(std::move(rules));
        }
    });
}

void ScanRules::includeName(const std::string& name)
{
    ScanScope::Rules rules = m_rules;
    rules.names.erase(name);
    setRules(std::move(rules));
}

void ScanRules::include(const FileUrl& folder)
{
    Desktop::findRealPlace(this, folder, [this, folder](const FileUrl& place) {
        ScanScope::Rules rules = m_rules;
        std::erase_if(rules.folders, [&](const FileUrl& one) { return one == folder || one == place; });
        setRules(std::move(rules));
    });
}

} // namespace tallyroom

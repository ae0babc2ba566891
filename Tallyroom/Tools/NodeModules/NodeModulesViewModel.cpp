#include "Tools/NodeModules/NodeModulesViewModel.h"

#include "Settings/PersistedSettings.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

const QString thresholdKey = QStringLiteral("nm.threshold");

AgeThreshold storedThreshold()
{
    const QString text = Settings::text(thresholdKey).value_or(QString{});
    return AgeThreshold::fromRawValue(text.toStdString()).value_or(AgeThreshold::oneMonth);
}

} // namespace

QString NodeModulesProgress::text() const
{
    return isDiscovering ? QStringLiteral("Recherche… %1 node_modules trouvés").arg(found)
                         : QStringLiteral("Mesure des tailles… %1/%2").arg(sized).arg(found);
}

NodeModulesViewModel::NodeModulesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(FilterSubject::path, ScanBeginning::discovering, deletions),
      m_threshold(storedThreshold())
{}

void NodeModulesViewModel::setThreshold(AgeThreshold threshold)
{
    const std::string_view raw = threshold.rawValue();
    Settings::write(thresholdKey, QString::fromLatin1(raw.data(), static_cast<qsizetype>(raw.size())));
    if (assignIfChanged(m_threshold, threshold)) {
        Q_EMIT thresholdChanged();
    }
}

std::vector<Entry> NodeModulesViewModel::oldEntries() const
{
    std::vector<Entry> old;
    std::ranges::copy_if(entries(), std::back_inserter(old),
                         [this, now = Timestamp{std::chrono::system_clock::now()}](const Entry& entry) {
                             return m_threshold.isOld(entry.modifiedAt, now);
                         });
    return old;
}

ScanLine NodeModulesViewModel::scanLine() const
{
    const NodeModulesProgress progress{isDiscovering(), scanTotal(), scanCompleted(), scanFraction()};
    return {progress.text(), isDiscovering() ? std::nullopt : std::optional{progress.fraction}};
}

FileScanner::ScanStream NodeModulesViewModel::startStream()
{
    return FileScanner::findNodeModulesStream(*rootURL());
}

} // namespace tallyroom

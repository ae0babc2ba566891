#include "Tools/LargeFiles/LargeFilesViewModel.h"

#include "Model/FileKind.h"
#include "Settings/PersistedSettings.h"
#include "Text/NumberText.h"

namespace tallyroom {

LargeFilesViewModel::LargeFilesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(FilterSubject::path, ScanBeginning::discovering, deletions,
                        [](const Entry& entry) { return FileKind::of(entry).rawValue(); }),
      m_limit(Settings::largeFilesLimit())
{}

void LargeFilesViewModel::setLimit(std::int64_t limit)
{
    if (!assignIfChanged(m_limit, limit)) {
        return;
    }
    Settings::write(QStringLiteral("lf.limit"), QVariant::fromValue<qlonglong>(limit));
    Q_EMIT limitChanged();
    scan();
}

ScanLine LargeFilesViewModel::scanLine() const
{
    return {QStringLiteral("Analyse en cours… ") + NumberText::examinedFiles(scanCompleted()), std::nullopt};
}

FileScanner::ScanStream LargeFilesViewModel::startStream()
{
    return FileScanner::findLargestFilesStream(*rootURL(), m_limit);
}

} // namespace tallyroom

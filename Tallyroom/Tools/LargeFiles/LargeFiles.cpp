#include "Tools/LargeFiles/LargeFiles.h"

#include "Model/FileKind.h"
#include "Text/RecoveryText.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

LargeFilesViewModel::LargeFilesViewModel(DeletionRunner& deletions)
    : TopListViewModel(
          deletions, [](const Entry& entry) { return FileKind::of(entry).rawValue(); },
          {QStringLiteral("lf.limit"), Settings::largeFilesLimit()}, offeredLimits)
{}

Recovery LargeFilesViewModel::recovery() const
{
    Recovery recovery = Recovery::parted(entries(), [](const Entry&) { return false; });
    recovery.words = RecoveryText::largest(entries().size());
    return recovery;
}

FileScanner::ScanStream LargeFilesViewModel::startSearch(const Narrowing& narrowing)
{
    FileScanner::FileCriteria criteria;
    if (narrowing.category) {
        criteria.kind = FileKind::fromRawValue(*narrowing.category);
    }
    if (narrowing.age) {
        criteria.modifiedBefore = narrowing.age->before(std::chrono::system_clock::now());
    }
    return FileScanner::findLargestFilesStream(*rootURL(), limit(), criteria);
}

ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool)
{
    ListToolStyle style = ToolStyles::search(ToolTexts::largeFiles);
    style.table.columns.push_back(ToolStyles::ageColumn());
    style.categories = ToolStyles::chips(FileKind::all);
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom

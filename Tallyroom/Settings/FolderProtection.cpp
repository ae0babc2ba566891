#include "Settings/FolderProtection.h"

#include "Removal/ProtectedLocations.h"
#include "Settings/Settings.h"
#include "Settings/StoredUrl.h"

namespace tallyroom::FolderProtection {

namespace {

const QString protectedFoldersKey = QStringLiteral("removal.protectedFolders");

} // namespace

std::vector<FileUrl> folders()
{
    std::vector<FileUrl> folders;
    for (const QString& text : Settings::textList(protectedFoldersKey).value_or(QStringList{})) {
        if (FileUrl folder = StoredUrl::read(text); folder.path().starts_with('/')) {
            folders.push_back(std::move(folder));
        }
    }
    return folders;
}

void setFolders(const std::vector<FileUrl>& folders)
{
    QStringList texts;
    for (const FileUrl& folder : folders) {
        texts += StoredUrl::text(folder);
    }
    Settings::write(protectedFoldersKey, texts);
    apply();
}

void apply()
{
    ProtectedLocations::protect(folders());
}

} // namespace tallyroom::FolderProtection

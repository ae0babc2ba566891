#include "Model/FileKind.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace tallyroom {

namespace {

struct KindRow {
    CaseNames names;
    std::string_view extensions; // separated by one space
};

/// In the order of the cases.
constexpr std::array<KindRow, 11> kindRows{{
    {{"folder", "Dossiers", "folder.fill"}, ""},
    {{"image", "Images", "photo"}, "jpg jpeg png gif heic heif webp bmp tiff tif svg ico"},
    {{"video", "Vidéos", "film"}, "mp4 mov avi mkv webm m4v wmv flv"},
    {{"audio", "Audio", "music.note"}, "mp3 wav aac flac m4a ogg aiff"},
    {{"archive", "Archives", "archivebox"}, "zip tar gz tgz bz2 7z rar xz zst"},
    {{"code", "Code", "chevron.left.forwardslash.chevron.right"},
     "swift js mjs cjs ts tsx jsx py rb go rs java kt c cpp cc h hpp cs php html "
     "css scss json yaml yml toml sh bash zsh"},
    {{"document", "Documents", "doc.text"}, "pdf doc docx txt md rtf pages key odt"},
    {{"spreadsheet", "Tableurs", "tablecells"}, "xls xlsx csv tsv numbers"},
    {{"data", "Données", "cylinder.split.1x2"}, "sql db sqlite sqlite3 log dat bin parquet"},
    {{"diskImage", "Images disque", "opticaldiscdrive"}, "dmg iso pkg img"},
    {{"other", "Autres", "doc"}, ""},
}};

using ExtensionMap = std::unordered_map<std::string_view, FileKind>;

ExtensionMap buildExtensionMap()
{
    ExtensionMap map;
    for (const FileKind kind : FileKind::all) {
        const std::string_view extensions = kindRows.at(kind.index()).extensions;
        for (std::size_t start = 0; start < extensions.size();) {
            const std::size_t end = std::min(extensions.find(' ', start), extensions.size());
            map.emplace(extensions.substr(start, end - start), kind);
            start = end + 1;
        }
    }
    return map;
}

constexpr std::size_t longestExtension = 7;

} // namespace

const std::array<FileKind, 11> FileKind::all{folder,   image,       video, audio,     archive, code,
                                             document, spreadsheet, data,  diskImage, other};

FileKind FileKind::of(const Entry& entry)
{
    return entry.isDirectory ? FileKind{folder} : of(entry.url.pathExtension());
}

FileKind FileKind::of(std::string_view extension)
{
    // Never destroyed: a worker may still classify while the program leaves.
    static const ExtensionMap& map = *new ExtensionMap{buildExtensionMap()};
    if (extension.size() > longestExtension) {
        return other;
    }
    std::array<char, longestExtension> lowered{};
    std::ranges::transform(extension, lowered.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    const auto found = map.find({lowered.data(), extension.size()});
    return found == map.end() ? FileKind{other} : found->second;
}

const CaseNames& FileKind::namesAt(std::size_t index) noexcept
{
    return kindRows[index].names;
}

} // namespace tallyroom

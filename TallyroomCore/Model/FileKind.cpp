#include "Model/FileKind.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace tallyroom {

namespace {

struct KindExtensions {
    FileKind::Value kind;
    std::string_view extensions; // separated by one space
};

constexpr std::array extensionTable{
    KindExtensions{FileKind::image, "jpg jpeg png gif heic heif webp bmp tiff tif svg ico"},
    KindExtensions{FileKind::video, "mp4 mov avi mkv webm m4v wmv flv"},
    KindExtensions{FileKind::audio, "mp3 wav aac flac m4a ogg aiff"},
    KindExtensions{FileKind::archive, "zip tar gz tgz bz2 7z rar xz zst"},
    KindExtensions{FileKind::code,
                   "swift js mjs cjs ts tsx jsx py rb go rs java kt c cpp cc h hpp cs php html "
                   "css scss json yaml yml toml sh bash zsh"},
    KindExtensions{FileKind::document, "pdf doc docx txt md rtf pages key odt"},
    KindExtensions{FileKind::spreadsheet, "xls xlsx csv tsv numbers"},
    KindExtensions{FileKind::data, "sql db sqlite sqlite3 log dat bin parquet"},
    KindExtensions{FileKind::diskImage, "dmg iso pkg img"},
};

using ExtensionMap = std::unordered_map<std::string_view, FileKind>;

ExtensionMap buildExtensionMap()
{
    ExtensionMap map;
    for (const auto& [kind, extensions] : extensionTable) {
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

std::optional<FileKind> FileKind::fromRawValue(std::string_view text)
{
    const auto* const found =
        std::ranges::find_if(all, [text](FileKind kind) { return kind.rawValue() == text; });
    return found == all.end() ? std::nullopt : std::optional{*found};
}

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

std::string_view FileKind::rawValue() const noexcept
{
    switch (m_value) {
    case folder:
        return "folder";
    case image:
        return "image";
    case video:
        return "video";
    case audio:
        return "audio";
    case archive:
        return "archive";
    case code:
        return "code";
    case document:
        return "document";
    case spreadsheet:
        return "spreadsheet";
    case data:
        return "data";
    case diskImage:
        return "diskImage";
    case other:
        return "other";
    }
    return {};
}

std::string_view FileKind::displayName() const noexcept
{
    switch (m_value) {
    case folder:
        return "Dossiers";
    case image:
        return "Images";
    case video:
        return "Vidéos";
    case audio:
        return "Audio";
    case archive:
        return "Archives";
    case code:
        return "Code";
    case document:
        return "Documents";
    case spreadsheet:
        return "Tableurs";
    case data:
        return "Données";
    case diskImage:
        return "Images disque";
    case other:
        return "Autres";
    }
    return {};
}

std::string_view FileKind::symbolName() const noexcept
{
    switch (m_value) {
    case folder:
        return "folder.fill";
    case image:
        return "photo";
    case video:
        return "film";
    case audio:
        return "music.note";
    case archive:
        return "archivebox";
    case code:
        return "chevron.left.forwardslash.chevron.right";
    case document:
        return "doc.text";
    case spreadsheet:
        return "tablecells";
    case data:
        return "cylinder.split.1x2";
    case diskImage:
        return "opticaldiscdrive";
    case other:
        return "doc";
    }
    return {};
}

} // namespace tallyroom

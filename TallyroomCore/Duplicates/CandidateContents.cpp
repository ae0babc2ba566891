#include "Duplicates/CandidateContents.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tallyroom {

namespace {

bool hasKey(const std::string& key, const StableFile& file, DigestStage stage, const std::stop_token& stop)
{
    switch (stage) {
    case DigestStage::head:
        return true;
    case DigestStage::tail:
        return DigestStages::contentKey(file, DigestStage::head, stop) == key;
    case DigestStage::whole:
        return DigestStages::contentKey(file, DigestStage::tail, stop) == key;
    }
    return false;
}

bool leadsTo(const FileUrl& url, const FileIdentity& file)
{
    const auto now = fileAttributes(url);
    return now && FileIdentity::of(*now).isSameFile(file);
}

} // namespace

CandidateContents::CandidateContents(CandidateWalk::Findings findings)
    : m_findings(std::move(findings)),
      m_trash(m_findings.root == nullptr ? TrashFolders::Lookup{} : TrashFolders::Lookup{*m_findings.root}),
      m_isTrashed(m_findings.folders.size())
{
    auto& candidates = m_findings.candidates;
    std::ranges::sort(candidates, {}, [](const Candidate& file) {
        return std::tuple{file.identity.device, file.identity.inode, file.size, file.identity.changedAt,
                          file.identity.modifiedAt};
    });
    for (std::uint32_t i = 0; i < candidates.size(); ++i) {
        if (m_contents.empty() || candidates[i].size != candidates[i - 1].size ||
            candidates[i].identity != candidates[i - 1].identity) {
            m_contents.push_back({i, 0, candidates[i].identity, {}});
        }
        ++m_contents.back().paths;
    }
}

std::map<std::uint64_t, FileUrl> CandidateContents::devices() const
{
    std::map<std::uint64_t, FileUrl> devices;
    for (const Candidate& candidate : m_findings.candidates) {
        if (!devices.contains(candidate.identity.device)) {
            const ScanRoot& root = *m_findings.root;
            const std::string below = urlOf(candidate).path().substr(root.url.path().size());
            devices.emplace(candidate.identity.device, FileUrl{root.place.path() + "/" + below});
        }
    }
    return devices;
}

std::optional<StableFile> CandidateContents::open(std::uint32_t number, const std::string& key,
                                                  DigestStage stage, const std::stop_token& stop)
{
    Content& content = m_contents[number];
    for (std::uint32_t path = 0; path < content.paths; ++path) {
        const Candidate& way = m_findings.candidates[content.firstPath + path];
        auto file = StableFile::open(urlOf(way), way.size, way.identity.modifiedAt);
        if (!file) {
            continue;
        }
        if (file->identity() != content.identity && !hasKey(key, *file, stage, stop)) {
            return std::nullopt;
        }
        content.identity = file->identity();
        content.item = m_findings.root->identify(file->attributes());
        return std::move(*file);
    }
    return std::nullopt;
}

FileUrl CandidateContents::urlOf(const Candidate& way) const
{
    return FileUrl{m_findings.folders.path(way.folder, way.name)};
}

DuplicateGroup CandidateContents::group(std::string id, std::span<const std::uint32_t> numbers)
{
    struct Copy {
        Entry entry;
        FileIdentity identity;
        bool isInTrash = false;
    };

    std::vector<Copy> copies;
    for (const std::uint32_t number : numbers) {
        const Content& content = m_contents[number];
        for (std::uint32_t path = 0; path < content.paths; ++path) {
            const Candidate& way = m_findings.candidates[content.firstPath + path];
            Entry entry{.url = urlOf(way), .name = way.name, .sizeBytes = way.size, .identity = content.item};
            if (content.paths == 1 || leadsTo(entry.url, content.identity)) {
                const bool isTrashed = isInTrash(way.folder, entry.url);
                copies.push_back({std::move(entry), content.identity, isTrashed});
            }
        }
    }
    std::ranges::sort(copies, {}, [](const Copy& copy) -> const FileUrl& { return copy.entry.url; });
    DuplicateGroup group;
    group.id = std::move(id);
    for (Copy& copy : copies) {
        group.entries.push_back(std::move(copy.entry));
        group.identities.push_back(copy.identity);
        group.inTrash.push_back(copy.isInTrash);
    }
    return group;
}

/// One question a folder, and no look-up by name for the other files in it.
bool CandidateContents::isInTrash(std::uint32_t folder, const FileUrl& file)
{
    std::optional<bool>& known = m_isTrashed[folder];
    if (!known) {
        known = m_trash.contains(file);
    }
    return *known;
}

} // namespace tallyroom

#pragma once

#include "Duplicates/CandidateWalk.h"
#include "Duplicates/DigestStage.h"
#include "Duplicates/DuplicateGroup.h"
#include "Duplicates/StableFile.h"
#include "Removal/TrashFolders.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace tallyroom {

/// The files on the disk that a walk found as candidates, each with all the paths that lead to it: it is read
/// once. They have numbers, in the order of devices and inodes, which is about that of the disk. One thread
/// for each file at a time.
class CandidateContents {
public:
    explicit CandidateContents(CandidateWalk::Findings findings);

    [[nodiscard]] std::size_t size() const noexcept { return m_contents.size(); }

    /// A file by the first of its paths.
    [[nodiscard]] const Candidate& operator[](std::uint32_t number) const
    {
        return m_findings.candidates[m_contents[number].firstPath];
    }

    [[nodiscard]] FileUrl url(std::uint32_t number) const { return urlOf((*this)[number]); }

    /// How many paths lead to a file.
    [[nodiscard]] std::uint32_t paths(std::uint32_t number) const { return m_contents[number].paths; }

    /// The devices that hold the files, each with a path to one of them that has no links on its way.
    [[nodiscard]] std::map<std::uint64_t, FileUrl> devices() const;

    /// Opens a file by the first of its paths that still leads to it, for a stage. What the stages before
    /// read of it is read again when its state has changed since: only with the same bytes there, as `key`
    /// tells them, is it still to be compared with the others of that key.
    [[nodiscard]] std::optional<StableFile> open(std::uint32_t number, const std::string& key,
                                                 DigestStage stage, const std::stop_token& stop);

    /// The paths that lead to some files. Where several paths led to one file, those that no longer do are
    /// left out. One thread.
    [[nodiscard]] DuplicateGroup group(std::string id, std::span<const std::uint32_t> numbers);

private:
    struct Content {
        std::uint32_t firstPath = 0; ///< among the candidates
        std::uint32_t paths = 0;
        FileIdentity identity; ///< as it was when it was read last
        ItemIdentity item{};   ///< likewise
    };

    [[nodiscard]] FileUrl urlOf(const Candidate& way) const;
    [[nodiscard]] bool isInTrash(std::uint32_t folder, const FileUrl& file);

    CandidateWalk::Findings m_findings;
    std::vector<Content> m_contents;
    TrashFolders::Lookup m_trash;
    std::vector<std::optional<bool>> m_isTrashed; ///< the folders, by their numbers
};

} // namespace tallyroom

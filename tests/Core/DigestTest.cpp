#include "FileSystem/Digest.h"

#include "Duplicates/BatchDigester.h"
#include "Support/TemporaryTree.h"

#include <gmock/gmock.h>
#include <string_view>

namespace tallyroom {

namespace {

using testing::ElementsAre;

std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span{text});
}

TEST(BatchDigester, SharesDigestsAmongEqualFilesOnly)
{
    // Longer than a chunk, to be read in step; short enough to be held; a span in the middle.
    for (const FileSpan span : {FileSpan{0, 2'500'000}, FileSpan{0, 50'000}, FileSpan{2'450'000, 40'000}}) {
        const std::string content(2'500'000, 'x');
        std::string late = content;
        late[static_cast<std::size_t>(span.offset + span.length - 1)] = 'y';
        std::string early = content;
        early[static_cast<std::size_t>(span.offset)] = 'y';
        const TemporaryTree tree{
            file("0", content), file("1", late), file("2", early), file("3", late),
            file("short", content.substr(0, static_cast<std::size_t>(span.offset + 100)))};
        const auto open = [&tree](const std::string& name) {
            const auto now = fileAttributes(tree.url(name));
            auto file = StableFile::open(tree.url(name), now->logicalBytes, now->modifiedAt);
            return file ? std::optional{std::move(*file)} : std::nullopt;
        };
        BatchDigester digester;
        std::atomic<std::int64_t> readBytes = 0;
        const auto digests = digester.digest(
            4, span, [&](std::size_t index) { return open(std::to_string(index)); }, {}, readBytes);
        Digester alone;
        const std::string* const contents[] = {&content, &late, &early, &late};
        for (std::size_t i = 0; i < 4; ++i) {
            const auto bytes = std::string_view{*contents[i]}.substr(static_cast<std::size_t>(span.offset),
                                                                     static_cast<std::size_t>(span.length));
            EXPECT_EQ(digests[i], alone.digest(bytesOf(bytes))) << i;
        }
        const std::vector<std::string> names{"0", "missing", "0", "short"};
        const auto odd = digester.digest(
            4, span,
            [&](std::size_t index) { return names[index] == "missing" ? std::nullopt : open(names[index]); },
            {}, readBytes);
        EXPECT_THAT(odd, ElementsAre(digests[0], std::nullopt, digests[0], std::nullopt))
            << "a file that ends early has no digest";
        std::stop_source stop;
        stop.request_stop();
        EXPECT_THAT(digester.digest(
                        1, span, [&](std::size_t) { return open("0"); }, stop.get_token(), readBytes),
                    ElementsAre(std::nullopt));
    }
}

TEST(BatchDigester, WhatChangesWhileItIsReadIsReadAgain)
{
    for (const FileSpan span : {FileSpan{0, 2'500'000}, FileSpan{0, 50'000}}) {
        const std::string content(2'500'000, 'x');
        const TemporaryTree tree{file("0", content), file("1", content)};
        int changes = 0;
        const auto open = [&](std::size_t index) -> std::optional<StableFile> {
            const std::string name = std::to_string(index);
            const FileUrl url = tree.url(name);
            auto opened = StableFile::open(url, 2'500'000, fileAttributes(url)->modifiedAt);
            if (index == 1 && changes > 0) {
                --changes;
                tree.keepingItsTime(name, [&] { tree.overwrite(name, std::to_string(changes % 10), 1); });
            }
            return opened ? std::optional{std::move(*opened)} : std::nullopt;
        };
        BatchDigester digester;
        std::atomic<std::int64_t> readBytes = 0;
        Digester alone;
        const auto digestOf = [&](char second) {
            std::string now = content.substr(0, static_cast<std::size_t>(span.length));
            now[1] = second;
            return std::optional{alone.digest(bytesOf(now))};
        };
        changes = 1;
        EXPECT_THAT(digester.digest(2, span, open, {}, readBytes), ElementsAre(digestOf('x'), digestOf('0')));
        changes = 100;
        EXPECT_THAT(digester.digest(2, span, open, {}, readBytes), ElementsAre(digestOf('x'), std::nullopt));
    }
}

} // namespace

} // namespace tallyroom

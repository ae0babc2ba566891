#include "FileSystem/Digest.h"

#include "Concurrency/ParallelFor.h"
#include "Duplicates/BatchDigester.h"
#include "Support/TemporaryTree.h"

#include <gmock/gmock.h>
#include <latch>
#include <stdexcept>
#include <string_view>

namespace tallyroom {

namespace {

using testing::ElementsAre;

std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span{text});
}

TEST(Digest, GivesThePublishedDigestsOneAfterAnother)
{
    Digester digester;
    EXPECT_EQ(digester.digest(bytesOf("")).text(),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digester.digest(bytesOf("abc")).text(),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digester.digest(bytesOf(std::string(1'000'000, 'a'))).text(),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
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

TEST(ParallelFor, TakesEveryNumberOnceWithinItsLanes)
{
    WorkerPool pool{8};
    std::vector<std::atomic<int>> calls(5000);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::latch mayLeave{3};
    const ParallelForOptions options{.lanes = 3, .stop = {}, .whileWaiting = [&] {
                                         mayLeave.try_wait() ? void() : mayLeave.count_down();
                                     }};
    parallelFor(
        pool, calls.size(),
        [&](std::size_t number, unsigned worker) {
            EXPECT_LT(worker, 8U);
            const int now = ++inside;
            for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
            }
            mayLeave.wait(); // so that others can come in
            --inside;
            ++calls[number];
        },
        options);
    EXPECT_TRUE(std::ranges::all_of(calls, [](const auto& count) { return count == 1; }));
    EXPECT_LE(most, 3);
}

TEST(ParallelFor, AStopOrAnExceptionLeavesNoWorkerBehind)
{
    WorkerPool pool{4};
    for (int round = 0; round < 50; ++round) {
        std::stop_source stop;
        std::atomic<int> begun = 0;
        std::atomic<int> ended = 0;
        const ParallelForOptions options{.lanes = 4, .stop = stop.get_token(), .whileWaiting = {}};
        const auto failing = [&](std::size_t, unsigned) {
            if (++begun % 100 == 0) {
                throw std::runtime_error("broken");
            }
        };
        EXPECT_THROW(parallelFor(pool, 1000, failing, options), std::runtime_error);
        begun = 0;
        const auto stopping = [&](std::size_t, unsigned) {
            if (++begun == 10) {
                stop.request_stop();
            }
            ++ended;
        };
        parallelFor(pool, 1000, stopping, options);
        EXPECT_EQ(ended, begun);
        EXPECT_LT(begun, 1000);
    }
}

} // namespace

} // namespace tallyroom

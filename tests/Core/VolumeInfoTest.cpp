#include "Volumes/VolumeInfo.h"

#include "FileSystem/BlockDevices.h"
#include "Support/AllRecords.h"
#include "Support/Cases.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"
#include "Support/TemporaryTree.h"
#include "Volumes/VolumeMounts.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <latch>
#include <map>
#include <sstream>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

/// The longest wait; only a test that fails takes so long.
constexpr auto ample = 60s;

std::vector<Mount> parsed(const std::string& text)
{
    const TemporaryTree tree{file("mountinfo", text)};
    return MountTable::read(tree.path("mountinfo"));
}

std::vector<std::string> places(const std::vector<Mount>& mounts)
{
    std::vector<std::string> result;
    std::ranges::transform(mounts, std::back_inserter(result), &Mount::mountPoint);
    return result;
}

std::vector<std::string> listedPlaces(const std::string& text)
{
    return places(VolumeMounts::listed(MountTable::reachable(parsed(text))));
}

TEST(VolumeMounts, OfEveryMachineDisksAndSharesAreListedAndNothingElse)
{
    // Each file is a mount table, and after "=> " the places to be listed.
    int machines = 0;
    for (const auto& machine : std::filesystem::directory_iterator{TALLYROOM_MACHINES}) {
        std::ifstream lines{machine.path()};
        std::string table;
        std::vector<std::string> expected;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("=> ")) {
                expected.push_back(line.substr(3));
            } else {
                table += line + "\n";
            }
        }
        EXPECT_EQ(listedPlaces(table), expected) << machine.path();
        ++machines;
    }
    EXPECT_GE(machines, 10);
    EXPECT_THAT(parsed("31 1 254:1 / /a\\040b rw shared:1 - btrfs /dev/sda1 rw,subvolid=5,subvol=/@\n"),
                ElementsAre(Mount{31, 1, (254ULL << 32U) | 1, "/", "/a b", "btrfs", "/dev/sda1", "/@"}));
}

TEST(MountTable, ATableThatIsNoTreeDoesNotEndTheLook)
{
    EXPECT_THAT(MountTable::read("/nothing/here"), IsEmpty());
    EXPECT_THAT(MountTable::read("/"), IsEmpty());
    EXPECT_GE(parsed("20 1 8:1 / / rw - ext4 /dev/sda1 rw\n20 1\n").size(), 1U);
    // Two mounts that lie on each other, and two with one number.
    EXPECT_THAT(MountTable::reachable(parsed("5 6 8:1 / /a rw - ext4 /dev/a rw\n"
                                             "6 5 8:2 / /a/b rw - ext4 /dev/b rw\n")),
                IsEmpty());
    EXPECT_THAT(places(MountTable::reachable(parsed("5 1 8:1 / / rw - ext4 /dev/a rw\n"
                                                    "5 5 8:2 / /b rw - ext4 /dev/b rw\n"
                                                    "6 5 8:3 / /c rw - ext4 /dev/c rw\n"))),
                testing::Contains("/c"));
}

/// Of "8:17".
std::uint64_t deviceNumber(const std::string& text)
{
    return (std::stoull(text) << 32U) | std::stoull(text.substr(text.find(':') + 1));
}

TEST(DeviceTraits, ADiskIsExternalOrRotatesByItselfOrWhatIsBelow)
{
    TemporaryTree sys;
    std::map<std::string, bool> internal;                     ///< by number
    std::map<std::string, std::vector<std::string>> rotating; ///< likewise
    std::map<std::string, bool> solid;                        ///< by place
    std::ifstream lines{TALLYROOM_MACHINES "/../disks"};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words{line};
        std::string word, first, second;
        words >> word >> first >> second;
        if (word == "internal" || word == "external") {
            sys.add({folder("devices/" + second), link("dev/block/" + first, "../../devices/" + second)});
            internal[first] = word == "internal";
        } else if (word == "says") {
            std::string more;
            std::getline(words, more);
            sys.add(file("devices/" + first, second + more + "\n"));
        } else if (word == "solid" || word == "heads") {
            solid[first] = word == "solid";
        } else if (word == "on") {
            const std::string name{FileUrl{"/" + second}.lastPathComponent()};
            sys.add(link("devices/" + first + "/slaves/" + name, "../../../../" + second));
        } else if (word == "rotating") {
            for (auto& names = rotating[first]; !second.empty(); second.clear(), words >> second) {
                names.push_back(second);
            }
        }
    }
    EXPECT_GE(internal.size(), 12U);
    for (const auto& [number, isInternal] : internal) {
        EXPECT_EQ(isInternalDevice(deviceNumber(number), sys.path()), isInternal) << number;
    }
    EXPECT_EQ(isInternalDevice(deviceNumber("1:2"), sys.path()), std::nullopt);
    EXPECT_GE(rotating.size(), 8U);
    for (const auto& [number, names] : rotating) {
        std::vector<std::string> told;
        std::ranges::transform(BlockDevices::rotatingDisksOf(deviceNumber(number), sys.path()),
                               std::back_inserter(told), [](const auto& disk) { return disk.filename(); });
        EXPECT_EQ(told, names) << number;
    }
    EXPECT_EQ(solid.size(), 4U);
    for (const auto& [disk, looksSolid] : solid) {
        EXPECT_EQ(BlockDevices::looksSolid(sys.path("devices/" + disk)), looksSolid) << disk;
    }
}

/// The numbers of the block devices of this machine: "8:1".
std::vector<std::string> blockDevices()
{
    std::vector<std::string> numbers;
    std::error_code none;
    for (const auto& device : std::filesystem::directory_iterator{"/sys/dev/block", none}) {
        numbers.push_back(device.path().filename());
    }
    return numbers;
}

TEST(DeviceTraits, ALabelIsWhatPeopleWroteNotHowItIsKept)
{
    const auto devices = blockDevices();
    const auto run = TemporaryMount::memory("/run");
    if (!run.isMounted() || devices.empty()) {
        GTEST_SKIP() << "no block device here, or " << run.refusal();
    }
    std::filesystem::create_directories("/run/udev/data");
    std::ofstream{"/run/udev/data/b" + devices.front()}
        << "I:1\nE:ID_FS_LABEL_ENC=Vue\\x20d\\x27été\\x5cx20\\x2\n";
    const Mount mount{1, 0, deviceNumber(devices.front()), "/", "/nowhere", "ext4", "", ""};
    EXPECT_EQ(deviceTraits(mount).label, "Vue d'été\\x20\\x2");
}

/// Sources that tests fill; what they share lives as long as the last question.
struct Machine {
    std::string table;
    std::map<std::string, VolumeFigures> figures;
    std::map<std::string, DeviceTraits> traits;
    std::string home = "/";
    std::string dead; ///< this mount point does not answer before `revival`
    std::latch revival{1};
    std::atomic<int> deadAsked = 0;

    VolumeFigures answer(const Mount& mount)
    {
        if (mount.mountPoint == dead) {
            ++deadAsked;
            revival.wait();
        }
        const auto found = figures.find(mount.mountPoint);
        return found == figures.end() ? VolumeFigures{} : found->second;
    }

    [[nodiscard]] DeviceTraits said(const Mount& mount) const
    {
        const auto found = traits.find(mount.mountPoint);
        return found == traits.end() ? DeviceTraits{} : found->second;
    }

    /// `patience` is for shares.
    static VolumeSources sources(const std::shared_ptr<Machine>& machine,
                                 std::chrono::milliseconds patience = ample)
    {
        return {[machine] { return parsed(machine->table); },
                [machine](const Mount& mount) { return machine->answer(mount); },
                [machine](const Mount& mount) { return machine->said(mount); },
                [machine] { return FileUrl{machine->home}; },
                [](const FileUrl& url) { return url; },
                std::make_shared<PatientCalls>(2, ample),
                std::make_shared<PatientCalls>(2, patience)};
    }
};

std::vector<std::string> names(const std::vector<VolumeUsage>& volumes)
{
    std::vector<std::string> result;
    std::ranges::transform(volumes, std::back_inserter(result), &VolumeUsage::name);
    return result;
}

/// A mount a row, with the room on it and what of that is left.
std::shared_ptr<Machine> machineOf(const std::string& table)
{
    auto machine = std::make_shared<Machine>();
    for (const auto& row : cases(table)) {
        const auto bytes = [&row](std::size_t column) {
            return row.at(column).empty() ? std::optional<std::int64_t>{} : std::stoll(row[column]);
        };
        machine->table += row[0] + "\n";
        machine->figures[parsed(row[0] + "\n").front().mountPoint] = {bytes(1), bytes(2)};
    }
    return machine;
}

std::shared_ptr<Machine> severalDisks()
{
    auto machine = machineOf("several disks");
    machine->traits["/usb"] = {"CLÉ", false};
    machine->traits["/mnt/nas"] = {std::nullopt, true}; // whatever a device might say of a share
    machine->traits["/"] = {std::nullopt, false};
    return machine;
}

TEST(VolumeInfo, ListsInternalOnesFirstThenLargerOnesThenInTheTablesOrder)
{
    const auto volumes = VolumeInfo::current(ample, Machine::sources(severalDisks()));
    EXPECT_THAT(names(volumes), ElementsAre("big", "Système", "b", "a", "nas", "CLÉ"));
    EXPECT_EQ(volumes[0], (VolumeUsage{"big", FileUrl{"/big"}, 1000, 10, true}));
    EXPECT_EQ(volumes[5], (VolumeUsage{"CLÉ", FileUrl{"/usb"}, 2000, 100, false}));
    EXPECT_TRUE(volumes[1].isInternal) << "what the machine runs from belongs to it";
    EXPECT_FALSE(volumes[4].isInternal);

    EXPECT_EQ(volumes[2].availableBytes, 0) << "nothing said of the room left";
    EXPECT_EQ(volumes[2].usedFraction(), 1.0);
    EXPECT_EQ(volumes[3].usedBytes(), 0) << "more room left than there is";
    EXPECT_EQ(volumes[3].usedFraction(), 0.0);
    EXPECT_EQ(VolumeUsage{}.usedFraction(), 0.0);
}

TEST(VolumeInfo, TheMainVolumeHoldsTheHomeFolderAndIsTheOneThatIsListed)
{
    const auto machine = machineOf("disks below the home folders");
    for (const auto& row : cases("the main volume of a home folder")) {
        machine->home = row[0];
        const auto found = VolumeInfo::main(ample, Machine::sources(machine));
        ASSERT_TRUE(found.has_value()) << row[0];
        EXPECT_EQ(found->url.path(), row[1]) << row[0];
    }
    EXPECT_THAT(names(VolumeInfo::current(ample, Machine::sources(machine))), ElementsAre("bob", "Système"));
    machine->home = "/home/link";
    VolumeSources resolving = Machine::sources(machine);
    resolving.resolved = [](const FileUrl& url) {
        return url == FileUrl{"/home/link"} ? FileUrl{"/home/bob/really"} : url;
    };
    EXPECT_EQ(VolumeInfo::main(ample, resolving)->url.path(), "/home/bob");
    machine->home = "/home/ill";
    EXPECT_EQ(VolumeInfo::main(ample, Machine::sources(machine)), std::nullopt);
    machine->table.clear();
    EXPECT_EQ(VolumeInfo::main(ample, Machine::sources(machine)), std::nullopt);
    EXPECT_THAT(VolumeInfo::current(ample, Machine::sources(machine)), IsEmpty());
}

TEST(VolumeInfo, ADeadShareIsLeftOutAskedOnceAndListedWhenItIsBack)
{
    const auto machine = severalDisks();
    machine->dead = "/mnt/nas";
    const VolumeSources sources = Machine::sources(machine, 0ms);
    for (int round = 0; round < 20; ++round) {
        EXPECT_THAT(names(VolumeInfo::current(20ms, sources)), testing::Not(testing::Contains("nas")));
    }
    EXPECT_EQ(machine->deadAsked, 1) << "one thread hangs, not one a call";

    // Nobody waits for a volume that is known to hang.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(names(VolumeInfo::current(ample, sources)), ElementsAre("big", "Système", "b", "a", "CLÉ"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, ample / 2);
    EXPECT_EQ(allRecords(VolumeInfo::stream(ample, sources)).back().unanswered, 1)
        << "though it was not asked";

    machine->revival.count_down();
    while (VolumeInfo::current(ample, sources).size() < 6) {
        std::this_thread::yield();
    }
}

TEST(VolumeInfo, AStreamReportsWhatAnswersAndEndsWithoutTheRest)
{
    const auto machine = severalDisks();
    machine->dead = "/mnt/nas";
    auto stream = VolumeInfo::stream(ample, Machine::sources(machine));
    std::optional<VolumeReport> report;
    do {
        report = stream.next();
        ASSERT_TRUE(report.has_value());
    } while (report->unanswered > 1);
    EXPECT_THAT(names(report->volumes), ElementsAre("big", "Système", "b", "a", "CLÉ"));
    ASSERT_TRUE(report->mainVolume.has_value());
    EXPECT_EQ(report->mainVolume->name, "Système");
    machine->revival.count_down();
    report = stream.next();
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->unanswered, 0);
    EXPECT_EQ(report->volumes.size(), 6U);
    EXPECT_EQ(stream.next(), std::nullopt);
}

TEST(VolumeInfo, AStreamGivesAFirstReportAndItsEndWhenNothingAnswers)
{
    const auto machine = machineOf("shares alone");
    machine->dead = "/";
    VolumeSources sources = Machine::sources(machine);
    sources.resolved = [machine](const FileUrl& url) {
        machine->revival.wait();
        return url;
    };
    {
        // Of the two threads for servers one hangs on the home folder and the other one on the root.
        auto stream = VolumeInfo::stream(ample, sources);
        EXPECT_EQ(stream.next(), (VolumeReport{{}, std::nullopt, 2}));
    } // dropped: nobody waits for the end
    auto hopeless = VolumeInfo::stream(1ms, sources);
    while (auto report = hopeless.next()) {
        EXPECT_THAT(report->volumes, IsEmpty());
    }
    EXPECT_EQ(VolumeInfo::main(1ms, sources), std::nullopt);
    machine->revival.count_down();
}

} // namespace

} // namespace tallyroom

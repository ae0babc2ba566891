#include "Rows/Selection.h"

#include "App/NavigatorScene.h"
#include "Rows/EntryArrangement.h"
#include "Rows/EntryTable.h"

#include <QSignalSpy>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace tallyroom {

namespace {

/// A list on screen and its checks, beside a plain set of locations to which the same is done.
class SelectionModel {
public:
    explicit SelectionModel(unsigned seed) : m_random(seed) { grow(200); }

    void act()
    {
        const EntryList& entries = m_rows.entries();
        const Entry one = entries[below(entries.size())];
        switch (below(9)) {
        case 0:
            grow(below(100));
            break;
        case 1: // deleted
            m_entries = EntryList{without(m_entries, below(17))};
            m_isDrained = true;
            break;
        case 2: // scanned again meanwhile, and some are gone, some are there again
            m_entries = EntryList{shuffled(without(m_found.snapshot(), below(17)))};
            m_isDrained = true;
            break;
        case 3:
            m_shownDigit = static_cast<char>('0' + below(20));
            break;
        case 4:
            selection.setAll();
            visitShown([&](const Entry& entry) { checked.insert(entry.url); });
            return;
        case 5:
            selection.setUrls({one.url});
            checked = {one.url};
            return;
        case 6:
            checkSomeRows();
            return;
        default:
            toggle(one.url);
            return;
        }
        show();
    }

    void compare() const
    {
        UrlSet shownAndChecked;
        std::int64_t bytes = 0;
        visitShown([&](const Entry& entry) {
            if (checked.contains(entry.url)) {
                shownAndChecked.insert(entry.url);
                bytes += entry.sizeBytes;
            }
        });
        ASSERT_EQ(selection.count(), shownAndChecked.size());
        ASSERT_EQ(selection.bytes(), bytes);
        ASSERT_EQ(selection.urls(), checked);
        UrlSet deleted;
        for (const Entry& entry : selection.checkedEntries()) {
            deleted.insert(entry.url);
        }
        ASSERT_EQ(deleted, shownAndChecked);
    }

    Selection selection;
    UrlSet checked;

private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }

    void grow(std::size_t count)
    {
        if (m_isDrained) {
            return; // a list that was edited does not grow
        }
        for (std::size_t added = 0; added < count; ++added) {
            m_found.append(
                fileEntry("/" + std::to_string(m_found.size()), static_cast<std::int64_t>(below(1000))));
        }
        m_entries = m_found.snapshot();
        show();
    }

    static std::vector<Entry> without(const EntryList& entries, std::size_t remainder)
    {
        std::vector<Entry> rest = entries.toVector();
        std::erase_if(rest, [&](const Entry& entry) { return std::stoul(entry.name) % 17 == remainder; });
        return rest;
    }

    std::vector<Entry> shuffled(std::vector<Entry> entries)
    {
        std::ranges::shuffle(entries, m_random);
        return entries;
    }

    void show()
    {
        // Digits beyond 9 filter nothing.
        const auto isShown = [digit = m_shownDigit](const Entry& entry) {
            return entry.name.find(digit) != std::string::npos;
        };
        EntryArrangement::Request request{m_entries, {}, {EntrySortOrder::Key::name, 0, true}, {}, {}};
        if (m_shownDigit <= '9') {
            request.filter = isShown;
        }
        do {
            request.absent = selection.absent();
            m_rows = EntryArrangement{request};
            selection.follow(m_entries, m_rows.shown(), m_rows.shownBytes(), m_rows.found());
        } while (selection.isSearchDue());
        selection.forgetAbsent();
        UrlSet listed;
        for (const Entry& entry : m_entries) {
            listed.insert(entry.url);
        }
        std::erase_if(checked, [&](const FileUrl& url) { return !listed.contains(url); });
    }

    void toggle(const FileUrl& url)
    {
        selection.toggle(url);
        if (checked.erase(url) == 0) {
            checked.insert(url);
        }
    }

    void checkSomeRows()
    {
        PositionSet among;
        PositionSet wanted;
        for (std::size_t row = 0; row < m_rows.rowCount(); row += 1 + below(5)) {
            among.insert(m_rows.position(row));
            checked.erase(m_rows.entry(row).url);
            if (below(2) == 0) {
                wanted.insert(m_rows.position(row));
                checked.insert(m_rows.entry(row).url);
            }
        }
        selection.assign(among, wanted);
    }

    template <class Visit>
    void visitShown(const Visit& visit) const
    {
        for (std::size_t row = 0; row < m_rows.rowCount(); ++row) {
            visit(m_rows.entry(row));
        }
    }

    std::mt19937 m_random;
    EntryList::Builder m_found;
    EntryList m_entries;
    EntryArrangement m_rows;
    char m_shownDigit = 'x';
    bool m_isDrained = false;
};

TEST(Selection, IsWhatASetOfLocationsWouldBeWhateverBecomesOfTheList)
{
    for (unsigned seed = 0; seed < 40; ++seed) {
        SelectionModel model{seed};
        for (int step = 0; step < 60; ++step) {
            model.act();
            model.compare();
            ASSERT_FALSE(testing::Test::HasFatalFailure()) << "seed " << seed << ", step " << step;
        }
    }
}

TEST(Selection, WhatIsCheckedBelowAListedFolderCountsOnlyWhileThatIsShown)
{
    const EntryList both{{folderEntry("/r/photos", 900), fileEntry("/r/film", 700)}};
    const auto follow = [](Selection& selection, const EntryList& entries, const char* filter) {
        const EntryArrangement shown{
            {entries, [filter](const Entry& entry) { return entry.name.contains(filter); }, {}, {}, {}}};
        selection.follow(entries, shown.shown(), shown.shownBytes());
    };
    const Entry deep = fileEntry("/r/photos/2023/b", 30);
    Selection selection;
    follow(selection, both, "");
    selection.toggle(deep);
    selection.toggle(FileUrl{"/r/film"});
    EXPECT_EQ(selection.bytes(), 730);
    follow(selection, both, "film");
    EXPECT_EQ(selection.bytes(), 700) << "hidden by the filter: not deleted either";
    EXPECT_EQ(selection.checkedEntries().size(), 1U);
    follow(selection, both, "");
    EXPECT_EQ(selection.checkedEntries().back(), deep);

    follow(selection, EntryList{{folderEntry("/r/photos", 870)}}, ""); // measured again
    EXPECT_TRUE(selection.containsDeeper(deep.url));
    follow(selection, EntryList{}, "");
    EXPECT_EQ(selection.count(), 0U) << "the list fills anew";
    follow(selection, both, "");
    EXPECT_EQ(selection.count(), 1U);
    EXPECT_TRUE(selection.isPartlyChecked(0) && !selection.isPartlyChecked(1));
    const Entry grown = fileEntry("/r/photos/2023/b", 50);
    const Entry other = fileEntry("/r/photos/2022/c", 7);
    selection.toggle(other);
    selection.renewDeeper({deep, other}, {other, grown});
    EXPECT_EQ(selection.bytes(), 57);
    selection.renewDeeper({grown, other}, {});
    EXPECT_FALSE(selection.isPartlyChecked(0)) << "it is gone";
    selection.toggle(deep);
    follow(selection, EntryList{{fileEntry("/r/film", 700)}}, "");
    selection.forgetAbsent();
    EXPECT_FALSE(selection.containsDeeper(deep.url)) << "went with its folder";
    selection.clear();

    follow(selection, both, "");
    selection.toggle(deep);
    selection.setAll();
    EXPECT_EQ(selection.count(), 2U);
    EXPECT_EQ(selection.bytes(), 1600);
}

TEST(Selection, ALongListThatIsScannedAgainHasItsChecksAgain)
{
    EntryTable table{EntryTableStyle{.firstColumnTitle = QStringLiteral("Nom")}};
    table.show();
    constexpr std::size_t count = 12'000;
    std::vector<Entry> entries;
    while (entries.size() < count) {
        entries.push_back(fileEntry("/f" + std::to_string(entries.size()), std::ssize(entries)));
    }
    QSignalSpy changed{&table, &EntryTable::rowsChanged};
    const auto show = [&](std::vector<Entry> shown) {
        table.setEntries(EntryList{std::move(shown)});
        while (!table.isUpToDate()) {
            ASSERT_TRUE(changed.wait());
        }
    };
    show(entries);
    table.selection().setAll();
    table.selection().toggle(FileUrl{"/f7"});
    show({});
    entries.push_back(fileEntry("/new", 1));
    show(entries);
    EXPECT_EQ(table.selection().count(), count - 1);
    EXPECT_FALSE(table.selection().urls().contains(FileUrl{"/f7"}));
}

} // namespace

} // namespace tallyroom

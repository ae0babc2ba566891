#pragma once

#include "App/OutlineMaker.h"
#include "Rows/EntryArrangement.h"
#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include <QTest>

#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace tallyroom {

/// A map with checks of its own, and what it said.
class TreemapViewScene : public testing::Test {
protected:
    /// An item of the folder that the map shows.
    static FileUrl urlOf(const std::string& name) { return FileUrl{"/home/moi/" + name}; }

    using Sizes = std::vector<std::pair<std::string, std::int64_t>>;

    /// As a scan sends it: in the order of arrival, ranked when read.
    static EntryList listOf(const Sizes& sizes)
    {
        EntryList::Builder builder;
        for (const auto& [name, size] : sizes) {
            builder.append({urlOf(name), name, size, false});
        }
        return builder.snapshot();
    }

    /// In a square-ish view: a to the left, to its right b and c above d, e and f.
    static EntryList sixEntries()
    {
        return listOf({{"a", 60}, {"b", 30}, {"c", 30}, {"d", 10}, {"e", 10}, {"f", 10}});
    }

    TreemapViewScene()
    {
        QObject::connect(&view, &TreemapView::selectionToggled, &view, [this](const Entry& entry) {
            log.push_back("check " + entry.name);
            selection.toggle(entry);
        });
        QObject::connect(&view, &TreemapView::activated, &view,
                         [this](const Entry& entry) { log.push_back("open " + entry.name); });
        QObject::connect(&view, &TreemapView::currentChanged, &view, [this] {
            const auto current = view.currentEntry();
            log.push_back("at " + (current ? current->name : "nothing"));
        });
        view.resize(604, 404);
        view.show();
    }

    /// Shows the list at once, whatever came before.
    void show(const EntryList& entries)
    {
        give({});
        replace(entries);
    }

    /// Shows the list at once in place of the one before.
    void replace(const EntryList& entries)
    {
        view.hide();
        give(entries);
        view.show();
    }

    QPoint centre(const std::string& name) { return view.tileRect(tile(name)).center().toPoint(); }

    /// Gives the list to the map and to the checks, as a screen does.
    void give(const EntryList& entries)
    {
        const EntryArrangement all{{entries, {}, {}, {}, {}}};
        selection.follow(entries, all.shown(), all.shownBytes());
        std::vector<std::uint32_t> positions(entries.size());
        std::iota(positions.begin(), positions.end(), 0U);
        view.setEntries(entries, std::move(positions));
    }

    /// Shows a folder with a folder in it at once.
    void showTree()
    {
        const SharedOutline outline = outlineOf(tree, "/home/moi");
        view.setOutlines({outline});
        show(listingOf(outline));
    }

    std::size_t tile(const std::string& path)
    {
        const auto found = view.scene().find(urlOf(path));
        EXPECT_TRUE(found) << path;
        return found.value_or(0);
    }

    QPoint boxOf(const std::string& name)
    {
        const auto box = view.boxOf(tile(name));
        EXPECT_TRUE(box) << name;
        return box.value_or(QRectF{}).center().toPoint();
    }

    void click(const std::string& name) { QTest::mouseClick(&view, Qt::LeftButton, {}, centre(name)); }

    std::vector<std::string> drawn() const
    {
        std::vector<std::string> names;
        for (std::size_t tile = 0; tile < view.scene().tiles().size(); ++tile) {
            names.push_back(view.scene().entry(tile).name);
        }
        return names;
    }

    DrawnTree tree{
        "moi",
        0,
        {{"photos", 0, {{"2023", 0, {{"a.jpg", 500}, {"b.jpg", 300}}}, {"c.jpg", 90}, {"d.jpg", 80}}},
         {"film.mov", 700}}};
    Selection selection;
    TreemapView view{selection};
    std::vector<std::string> log;
};

} // namespace tallyroom

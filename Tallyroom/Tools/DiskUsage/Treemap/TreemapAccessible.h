#pragma once

#include "Model/FileUrl.h"

#include <QAccessibleWidget>

#include <unordered_map>

namespace tallyroom {

class TreemapCanvas;

/// The treemap as assistive technology sees it: a tree with one item a tile that is drawn. Items are
/// made when asked for, and stay the same objects while their entries are in the list. Main thread.
class TreemapAccessible : public QAccessibleWidget {
public:
    explicit TreemapAccessible(TreemapCanvas& view);
    TreemapAccessible(const TreemapAccessible&) = delete;
    TreemapAccessible& operator=(const TreemapAccessible&) = delete;
    ~TreemapAccessible() override;

    /// Makes the toolkit use this class for treemaps. Any number of times.
    static void install();

    // What assistive technology should hear about; free of charge while none listens.
    static void announceTiles(TreemapCanvas& view);
    static void announceFocus(TreemapCanvas& view);
    static void announceCheck(TreemapCanvas& view, std::size_t tile);

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;

    /// A tile's item, and the innermost one at a place of the screen.
    [[nodiscard]] QAccessibleInterface* of(std::size_t tile) const;
    [[nodiscard]] QAccessibleInterface* innermostAt(int x, int y) const;

private:
    void forgetVanished();

    TreemapCanvas& m_view;
    mutable std::unordered_map<FileUrl, QAccessible::Id> m_tiles;
};

} // namespace tallyroom

#pragma once

#include "App/ToolScene.h"
#include "Rows/EntryTable.h"
#include "Shell/ContentView.h"
#include "Shell/ToolRegistry.h"
#include "Tools/Frame/ToolScreen.h"

#include <QAbstractItemView>
#include <QTest>

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace tallyroom {

/// The whole window on real trees, with settings and a trash of its own, and what a person does with it.
class WindowScene : public ToolScene {
protected:
    WindowScene() { open(); }

    using ToolScene::scan;
    using ToolScene::waitForRemoval;

    /// In place of the window before; `operations` remove and restore.
    void open(RemovalOperations operations = RemovalOperations::real())
    {
        window = std::make_unique<ContentView>(std::move(operations));
        window->show();
        activate(*window);
    }

    [[nodiscard]] SessionStore& store() const { return window->store(); }

    /// Goes to a tool and scans a folder with it.
    void scan(const char* toolID, const FileUrl& folder) const
    {
        window->selectTool(QString::fromUtf8(toolID));
        scan(ToolRegistry::find(window->selectedToolID())->tool(store()), folder);
    }

    /// Waits until the tool has read this folder.
    template <class Tool>
    [[nodiscard]] static bool hasScanned(Tool& tool, const FileUrl& folder)
    {
        return waitUntil(&tool, &FolderTool::stateChanged,
                         [&] { return tool.rootURL() == folder && !tool.isScanning(); });
    }

    void waitForRemoval() const
    {
        DeletionRunner& runner = store().deletions;
        ASSERT_TRUE(
            waitUntil(&runner, &DeletionRunner::isRunningChanged, [&] { return !runner.isRunning(); }));
    }

    void remove(ScanToolViewModel& tool, const UrlSet& urls, bool permanently = false) const
    {
        tool.deleteSelected(urls, permanently);
        waitForRemoval();
    }

    /// Takes what was removed back, and waits for it.
    void undo(ScanToolViewModel& tool) const
    {
        tool.undoDeletion();
        waitForRemoval();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(window->focusWidget(), key, modifiers);
    }

    [[nodiscard]] QAbstractButton* button(const QString& text) const { return visibleButton(*window, text); }

    void click(const char* text) const
    {
        QAbstractButton* const found = button(QString::fromUtf8(text));
        ASSERT_NE(found, nullptr) << text;
        QTest::mouseClick(found, Qt::LeftButton);
    }

    [[nodiscard]] bool shows(const char* words) const
    {
        return visibleTexts(*window).contains(QString::fromUtf8(words));
    }

    /// The one of its type that is on show.
    template <class Widget>
    [[nodiscard]] Widget& shown() const
    {
        for (Widget* const one : window->findChildren<Widget*>()) {
            if (one->isVisible()) {
                return *one;
            }
        }
        throw std::runtime_error{"it is not on show"};
    }

    /// What the rows on show are called, from the top.
    [[nodiscard]] std::vector<std::string> rows() const
    {
        std::vector<std::string> names;
        const QAbstractItemModel* const model = shown<EntryTable>().model();
        for (int row = 0; row < model->rowCount(); ++row) {
            names.push_back(model->index(row, EntryRowsModel::nameColumn).data().toString().toStdString());
        }
        return names;
    }

    template <class Dialog>
    [[nodiscard]] Dialog* dialog() const
    {
        const auto isShown = [this] { return window->findChild<Dialog*>() != nullptr; };
        return QTest::qWaitFor(isShown, 20'000) ? window->findChild<Dialog*>() : nullptr;
    }

    /// Presses a button of the dialog on show, and waits until that is gone.
    template <class Dialog>
    void answer(const char* text) const
    {
        const Dialog* const asking = dialog<Dialog>();
        ASSERT_NE(asking, nullptr);
        QTest::mouseClick(visibleButton(*asking, QString::fromUtf8(text)), Qt::LeftButton);
        ASSERT_TRUE(QTest::qWaitFor([this] { return window->findChild<Dialog*>() == nullptr; }));
    }

    std::unique_ptr<ContentView> window;
};

} // namespace tallyroom

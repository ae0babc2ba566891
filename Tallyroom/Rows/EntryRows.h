#pragma once

#include "Controls/OwnKeys.h"
#include "Model/Entry.h"

#include <QElapsedTimer>
#include <QTableView>

#include <memory>
#include <optional>

class QMenu;

namespace tallyroom {

class EntryRowsModel;
class Selection;

/// A list of entries to check and enter. Keys: arrows move, letters go to the row of that name, Enter
/// activates, Space and a click on a box check, with Shift the range since the last one, Ctrl+A checks all,
/// Ctrl+C copies the path. Main thread.
class EntryRows : public QTableView {
    Q_OBJECT

public:
    /// What its keys do.
    [[nodiscard]] static std::vector<ToldKeys> keys();

    [[nodiscard]] Selection& selection() const;

    /// Whether any entry passes the filter.
    [[nodiscard]] bool hasRows() const;

    /// False while rows are being made that show the newest list.
    [[nodiscard]] bool isUpToDate() const;

    /// The entry that the keyboard acts on; nothing before a row is chosen.
    [[nodiscard]] std::optional<Entry> currentEntry() const;

    /// Makes the row of `url` the current one and scrolls to it; false when no row shows it.
    bool setCurrentEntry(const FileUrl& url);

    /// Forgets the current row and goes to the top: another folder is about to be shown. For someone who has
    /// just pressed Enter the first row is the current one from then on, until the next key or click.
    void resetView();

    /// Whether rows offer "Mettre à la corbeille". Off at first.
    void setDeletionEnabled(bool isEnabled) { m_isDeletionEnabled = isEnabled; }

    /// The menu of an entry, as a right click or the menu key opens it.
    [[nodiscard]] std::unique_ptr<QMenu> makeContextMenu(const Entry& entry);

    /// The free space to the right of what the last column shows, without the scroll bar.
    [[nodiscard]] int trailingMargin() const;

    /// Nothing while the list is hidden: its rows do not pass for visible ones (assistive technology).
    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;

    /// The row under the mouse, -1 for none.
    [[nodiscard]] int hoveredRow() const { return m_hoveredRow; }

    /// The row that the keyboard is on, -1 for none.
    [[nodiscard]] int currentRow() const { return currentIndex().row(); }

Q_SIGNALS:
    /// Other rows are shown than before.
    void rowsChanged();
    /// Enter, a double click, or "Entrer". Entries go out as copies: whoever receives one may replace the
    /// list.
    void activated(const tallyroom::Entry& entry);
    void deleteRequested(const tallyroom::Entry& entry);
    void openRequested(const tallyroom::Entry& entry);
    void revealRequested(const tallyroom::Entry& entry);
    void terminalRequested(const tallyroom::Entry& entry);
    void copyPathRequested(const tallyroom::Entry& entry);
    void propertiesRequested(const tallyroom::Entry& entry);
    /// An entry's menu was made: receivers that know more about the entry add to it at once.
    void menuMade(QMenu* menu, const tallyroom::Entry& entry);
    /// Space on a row that shows no entry.
    void sectionToggled(int row);

protected:
    /// Takes the model over.
    EntryRows(EntryRowsModel* model, int rowHeight, QWidget* parent);

    /// What an entry's menu begins with.
    virtual void addActions(QMenu& menu, const Entry& entry);

    /// The menu of a row that shows no entry; none where nothing is added.
    virtual void addSectionActions(QMenu& /*menu*/, int /*row*/) {}

    /// Rows have changed, or what they show.
    void showChangedRows();

    /// Called around every change of the rows; they keep the reader's place.
    virtual void rememberPlace() = 0;
    virtual void restorePlace() = 0;

    /// Without scrolling.
    void makeCurrent(int row);

    /// What stays free in any case to the right of the rows, without the scroll bar.
    [[nodiscard]] int endMargin() const;

    /// Gives the name the width that is left, and `lastWidth` to what the last column shows. What the name
    /// does not need lies to the right of that: in a wide window sizes stay near their names.
    void setNameWidth(int left, int last, int lastWidth);

    /// Whether the first row is the current one, whichever it is.
    [[nodiscard]] bool staysAtFirst() const { return m_staysAtFirst; }

    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    /// A press on a box, which counts once it is released there.
    struct Press {
        FileUrl url;
        QPoint position;
    };

    enum class Act { enter, check, checkRange };

    [[nodiscard]] static const OwnKeys<Act>& ownKeys();
    void setUp(int rowHeight);
    void hover(const QPoint& position);
    void hoverAgain();
    void goTo(int row);
    void goToFirstOnScreen();
    void activateRow(int row);
    void take(Act act, bool isRepeated);
    void announceCheck();
    void toggle(int row, bool isRange);
    [[nodiscard]] std::optional<FileUrl> urlAt(int row) const;

    EntryRowsModel& m_rows;
    int m_spareWidth = 0; // to the right of the last column
    bool m_isDeletionEnabled = false;
    std::optional<Press> m_press;
    std::optional<FileUrl> m_rangeStart;
    QElapsedTimer m_typed; // since the last letter that was looked for
    bool m_isEntering = false;
    bool m_staysAtFirst = false;
    int m_hoveredRow = -1;
};

} // namespace tallyroom

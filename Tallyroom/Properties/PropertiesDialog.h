#pragma once

#include "Bridge/StreamPump.h"
#include "Controls/TellingDialog.h"
#include "Model/Entry.h"
#include "Properties/ContentFigures.h"
#include "Properties/ItemFacts.h"

#include <memory>
#include <optional>
#include <vector>

class QFormLayout;
class QLabel;
class QLineEdit;

namespace tallyroom {

class Spinner;

/// What is known of some entries: place, type, sizes, what they hold, names and rights, dates, and what
/// deleting them would give back. All of it is looked up anew off the main thread; the figures grow
/// meanwhile, and closing the dialog ends the count. Main thread.
class PropertiesDialog : public TellingDialog {
    Q_OBJECT

public:
    /// About at least one entry; of several, their sum.
    explicit PropertiesDialog(std::vector<Entry> entries, QWidget* parent = nullptr);

    /// Shows one that goes when it is closed.
    static void open(std::vector<Entry> entries, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// The figures are complete.
    void counted();

private:
    using Facts = SystemResult<ItemFacts>;

    void addIdentity();
    void addFigures();
    void addFacts();
    void askFacts();
    void count();
    void showFacts(const Facts& facts);
    void showFigures(const ContentFigures& figures);
    void endCount();

    /// Writes a fact into its line; one that nobody expected gets a line of its own.
    void setFact(const QString& name, const QString& text);

    /// A line of text that can be selected, with its name before it.
    QLineEdit* addLine(const QString& name, const QString& text);

    std::vector<Entry> m_entries;
    QFormLayout* m_lines;
    Spinner* m_spinner;
    QLineEdit* m_onDisk = nullptr;
    QLineEdit* m_logical = nullptr;
    QLineEdit* m_content = nullptr;  // none for one that is no folder
    std::vector<QLineEdit*> m_facts; // there from the start: nothing moves when the answers come
    QLabel* m_unread;
    std::unique_ptr<StreamPump<ContentFigures>> m_pump;
};

} // namespace tallyroom

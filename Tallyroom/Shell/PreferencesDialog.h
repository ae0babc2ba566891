#pragma once

#include "Controls/TellingDialog.h"

class QFormLayout;
class QTabWidget;

namespace tallyroom {

class CheckBox;
class FolderListEditor;
class ScanToolViewModel;
struct SessionStore;

/// What the user decides once: which folders scans leave out, which ones nothing is removed from, and the
/// options that tools keep, with the tools themselves. Choices count at once and are kept. Main thread.
class PreferencesDialog : public TellingDialog {
    Q_OBJECT

public:
    /// On the tools in `store`, which must outlive it.
    PreferencesDialog(SessionStore& store, QWidget* parent);

private:
    /// A page of one column.
    QVBoxLayout& addPage(const QString& name);
    void addToolPage(SessionStore& store);
    static void addOptions(QFormLayout& form, const QString& name, ScanToolViewModel& tool);
    void showRules();
    void storeRules();

    QTabWidget* m_pages;
    FolderListEditor* m_excluded;
    FolderListEditor* m_protected;
    CheckBox* m_oneFileSystem;
    CheckBox* m_animations;
};

} // namespace tallyroom

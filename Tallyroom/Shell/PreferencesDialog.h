#pragma once

#include <QDialog>

namespace tallyroom {

class CheckBox;
class FolderListEditor;

/// What the user decides for all tools: which folders scans leave out, which ones nothing is removed from,
/// whether the map moves. Choices count at once and are kept. Main thread.
class PreferencesDialog : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget* parent);

private:
    void makeLayout();
    void showRules();
    void storeRules();

    FolderListEditor* m_excluded;
    FolderListEditor* m_protected;
    CheckBox* m_oneFileSystem;
    CheckBox* m_animations;
};

} // namespace tallyroom

#pragma once

#include "Model/FileUrl.h"

#include <QWidget>

#include <vector>

class QLineEdit;
class QListWidget;
class QPushButton;

namespace tallyroom {

/// A list of folders that the user adds to and takes from; where it takes names too, also of names that
/// stand for all folders called so. Main thread.
class FolderListEditor : public QWidget {
    Q_OBJECT

public:
    enum class Takes : bool { folders, foldersAndNames };

    FolderListEditor(const QString& title, const QString& explanation, Takes takes,
                     QWidget* parent = nullptr);

    void setContent(const std::vector<FileUrl>& folders, const std::vector<std::string>& names = {});

    [[nodiscard]] const std::vector<FileUrl>& folders() const { return m_folders; }

    [[nodiscard]] const std::vector<std::string>& names() const { return m_names; }

Q_SIGNALS:
    /// The user has added or taken something.
    void edited();

private:
    void makeLayout(const QString& title, const QString& explanation, Takes takes);
    void showRows(int current);
    void addFolder(const FileUrl& folder);
    void addTyped();
    void removeCurrent();

    std::vector<FileUrl> m_folders;
    std::vector<std::string> m_names;
    QListWidget* m_list;
    QLineEdit* m_name;
    QPushButton* m_remove;
};

} // namespace tallyroom

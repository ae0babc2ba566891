#pragma once

#include "Controls/TellingDialog.h"
#include "FileSystem/UnreadPlaces.h"

#include <vector>

class QLabel;
class QTreeWidget;

namespace tallyroom {

/// What a scan could not read: each place with the reason. Places can be copied and shown in the file
/// manager. Main thread.
class UnreadList : public TellingDialog {
    Q_OBJECT

public:
    /// `unread` is not null.
    UnreadList(SharedUnreadPlaces unread, QWidget* parent);

    /// Opens the list over `parent`; it deletes itself.
    static void open(const SharedUnreadPlaces& unread, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

private:
    void fillList();
    void addButtons();
    [[nodiscard]] std::vector<FileUrl> chosen() const;
    void copyPaths() const;
    void reveal() const;

    SharedUnreadPlaces m_unread;
    QTreeWidget* m_list;
    QLabel* m_refusal;
};

} // namespace tallyroom

#pragma once

#include "Controls/CheckBox.h"
#include "Model/UrlSet.h"

namespace tallyroom {

/// A check box that is on exactly when the selection that it was last shown holds its location; a click
/// asks the selection's owner for the change. Main thread.
class SelectionCheckbox : public CheckBox {
    Q_OBJECT

public:
    explicit SelectionCheckbox(FileUrl url, QWidget* parent = nullptr);

    [[nodiscard]] const FileUrl& url() const { return m_url; }

    void showSelection(const UrlSet& selection);

Q_SIGNALS:
    /// The user switched the box: `url` belongs into the selection, or out of it.
    void checkRequested(const tallyroom::FileUrl& url, bool isChecked);

private:
    FileUrl m_url;
};

} // namespace tallyroom

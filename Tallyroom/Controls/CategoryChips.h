#pragma once

#include "Model/Category.h"

#include <QWidget>

#include <map>
#include <optional>
#include <string>
#include <vector>

class QPushButton;

namespace tallyroom {

/// A button for each category that a list has entries of, with their number: one of them narrows the list
/// down to its own, and lets go of it again. Main thread.
class CategoryChips : public QWidget {
    Q_OBJECT

public:
    /// A category as it is drawn.
    struct Chip {
        std::string category; ///< the key
        QString label;
        std::string symbol;
    };

    explicit CategoryChips(const std::vector<Chip>& chips, QWidget* parent = nullptr);

    /// Shows how many entries there are of each. Which chips are offered changes with `isFinal` counts only,
    /// so that none comes and goes while a scan runs: those of more than no entry, and the chosen one.
    void showCounts(const CategoryCounts& counts, bool isFinal);

    void showChoice(const std::optional<std::string>& category);

Q_SIGNALS:
    /// The user chose a category, or let go of the chosen one.
    void chosen(const std::optional<std::string>& category);

private:
    struct Shown {
        QPushButton* button = nullptr;
        QString label;
        std::size_t count = 0;
        bool isOffered = false;
    };

    void showButtons();

    std::map<std::string, Shown, std::less<>> m_chips;
    std::optional<std::string> m_choice;
};

} // namespace tallyroom

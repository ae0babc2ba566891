#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace tallyroom {

/// A choice that somebody has, as a menu shows it. Main thread.
struct Option {
    struct Choice {
        QString name;
        std::function<bool()> isOn;
        std::function<void(bool isOn)> take; ///< called when the user takes it, or, of many, leaves it
    };

    std::function<QString()> title; ///< what is chosen: "Ancien après : 1 mois"
    std::vector<Choice> choices;
    bool isOfMany = false; ///< one choice leaves the others as they are
    bool isKept = false;   ///< lasts when the program ends
};

} // namespace tallyroom

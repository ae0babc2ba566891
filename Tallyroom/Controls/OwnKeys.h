#pragma once

#include "Text/KeyText.h"

#include <QKeyEvent>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace tallyroom {

/// What keys do, and the keys, in words.
struct ToldKeys {
    QString name;
    QString keys;
};

/// The keys that a widget with the focus takes for itself, which are no shortcuts. The widget finds here what
/// a key does, and the list of all keys what to tell of it.
template <class Act>
class OwnKeys {
public:
    struct Key {
        QKeyCombination pressed;
        Act act;
    };

    /// Keys for what goes by one name.
    struct Line {
        QString name;
        std::vector<Key> keys;
    };

    OwnKeys(std::initializer_list<Line> lines) : m_lines(lines) {}

    /// What the key does; nothing for one that the widget leaves to others. The keypad's keys are like the
    /// others.
    [[nodiscard]] std::optional<Act> find(const QKeyEvent& event) const
    {
        const QKeyCombination pressed{event.modifiers() & ~Qt::KeypadModifier,
                                      static_cast<Qt::Key>(event.key())};
        for (const Line& line : m_lines) {
            const auto found = std::ranges::find(line.keys, pressed, &Key::pressed);
            if (found != line.keys.end()) {
                return found->act;
            }
        }
        return std::nullopt;
    }

    /// Of several keys for one act the first one is told.
    [[nodiscard]] std::vector<ToldKeys> told() const
    {
        std::vector<ToldKeys> told;
        for (const Line& line : m_lines) {
            QStringList keys;
            for (auto key = line.keys.begin(); key != line.keys.end(); ++key) {
                if (std::find_if(line.keys.begin(), key,
                                 [act = key->act](const Key& one) { return one.act == act; }) == key) {
                    keys += KeyText::name(key->pressed);
                }
            }
            told.push_back({line.name, keys.join(QStringLiteral(", "))});
        }
        return told;
    }

private:
    std::vector<Line> m_lines;
};

} // namespace tallyroom

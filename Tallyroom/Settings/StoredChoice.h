#pragma once

#include "Settings/Settings.h"
#include "Text/PlainText.h"

#include <algorithm>
#include <concepts>
#include <iterator>
#include <set>
#include <utility>

namespace tallyroom {

/// A value as the settings had it, and the key that keeps it; an empty key keeps nothing.
template <class Value>
struct StoredChoice {
    QString key{};
    Value value{};
    bool isAlwaysWritten = false; ///< also when chosen again: the settings may hold an unknown one
};

/// Choices among the cases of closed sets, which the settings keep by their raw values. Main thread.
namespace Settings {

/// The case stored under `key`; `otherwise` when absent or unknown.
template <class Case>
[[nodiscard]] StoredChoice<Case> storedCase(const QString& key, Case otherwise)
{
    return {key, Case::fromRawValue(text(key).value_or(QString{}).toStdString()).value_or(otherwise), true};
}

/// Those of the cases stored under `key` that are known; all cases when none is.
template <class Case>
[[nodiscard]] StoredChoice<std::set<Case>> storedCases(const QString& key)
{
    std::set<Case> cases;
    for (const QString& one : textList(key).value_or(QStringList{})) {
        if (const auto known = Case::fromRawValue(one.toStdString())) {
            cases.insert(*known);
        }
    }
    return {key, cases.empty() ? std::set<Case>{Case::all.begin(), Case::all.end()} : std::move(cases)};
}

/// How the settings keep a number, a case, one that may be missing, or a set of them.
template <class Value>
[[nodiscard]] QVariant stored(const Value& value)
{
    if constexpr (std::integral<Value>) {
        return QVariant::fromValue<qlonglong>(value);
    } else if constexpr (requires { value.rawValue(); }) {
        return toText(value.rawValue());
    } else if constexpr (requires { value.has_value(); }) {
        return value ? stored(*value) : QVariant{};
    } else {
        QStringList texts;
        std::ranges::transform(value, std::back_inserter(texts),
                               [](const auto& one) { return toText(one.rawValue()); });
        return texts;
    }
}

} // namespace Settings

} // namespace tallyroom

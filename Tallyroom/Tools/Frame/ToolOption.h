#pragma once

#include "Controls/Option.h"
#include "Settings/StoredChoice.h"
#include "Tools/Frame/ScanToolViewModel.h"

#include <functional>
#include <set>
#include <utility>
#include <vector>

namespace tallyroom {

/// How a value is offered.
template <class Value, class Choice = Value>
struct OptionPlan {
    std::function<QString(const Value&)> title{};
    std::vector<Choice> choices{};
    std::function<QString(const Choice&)> name{};
};

/// A value of a tool that its screen offers as a menu: one of some choices, or a set of them. Another value
/// is kept at once, and the tool's remarks change with it. Main thread.
template <class Value, class Choice = Value>
class ToolOption {
public:
    /// `tool`, which usually owns it, must outlive it; `changed` is called after the tool's signal.
    ToolOption(
        ScanToolViewModel& tool, StoredChoice<Value> stored, const OptionPlan<Value, Choice>& plan,
        std::function<void()> changed = [] {})
        : m_tool(tool), m_stored(std::move(stored)), m_changed(std::move(changed))
    {
        Option option{
            [this, title = plan.title] { return title(value()); }, {}, isOfMany, !m_stored.key.isEmpty()};
        for (const Choice& choice : plan.choices) {
            option.choices.push_back({plan.name(choice), [this, choice] { return isOn(choice); },
                                      [this, choice](bool isOn) { take(choice, isOn); }});
        }
        tool.addOption(std::move(option));
    }

    ToolOption(const ToolOption&) = delete;
    ToolOption& operator=(const ToolOption&) = delete;

    [[nodiscard]] const Value& value() const { return m_stored.value; }

    void set(const Value& value)
    {
        const bool isOther = assignIfChanged(m_stored.value, value);
        if (isOther || m_stored.isAlwaysWritten) {
            keep();
        }
        if (isOther) {
            Q_EMIT m_tool.remarksChanged();
            m_changed();
        }
    }

    /// The same as a part of a larger step, which does what follows.
    void set(const Value& value, PropertyUpdate& update)
    {
        update.assign(m_stored.value, value, &ScanToolViewModel::remarksChanged);
    }

private:
    static constexpr bool isOfMany = !std::is_same_v<Choice, Value>;

    void keep() const
    {
        if (!m_stored.key.isEmpty()) {
            Settings::write(m_stored.key, Settings::stored(value()));
        }
    }

    [[nodiscard]] bool isOn(const Choice& choice) const
    {
        if constexpr (isOfMany) {
            return value().contains(choice);
        } else {
            return value() == choice;
        }
    }

    void take(const Choice& choice, bool isOn)
    {
        if constexpr (isOfMany) {
            Value others = value();
            isOn ? void(others.insert(choice)) : void(others.erase(choice));
            set(others);
        } else {
            set(choice);
        }
    }

    ScanToolViewModel& m_tool;
    StoredChoice<Value> m_stored;
    std::function<void()> m_changed;
};

/// A choice among the cases of a closed set, which `name` tells, `title` before the chosen one.
template <class Case>
[[nodiscard]] OptionPlan<Case> oneCase(const QString& title, QString (*name)(Case))
{
    return {[=](Case one) { return title + name(one); }, {Case::all.begin(), Case::all.end()}, name};
}

/// Any of the cases of a closed set, "%1" in `title` for their number.
template <class Case>
[[nodiscard]] OptionPlan<std::set<Case>, Case> someCases(const QString& title)
{
    return {[=](const std::set<Case>& on) { return title.arg(on.size()); },
            {Case::all.begin(), Case::all.end()},
            [](Case one) { return toText(one.displayName()); }};
}

} // namespace tallyroom

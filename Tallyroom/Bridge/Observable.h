#pragma once

#include <QObject>
#include <QPointer>

#include <algorithm>
#include <utility>
#include <vector>

namespace tallyroom {

/// Writes `value` when it differs from what `member` holds; true when it was written.
template <class Member, class Value>
[[nodiscard]] bool assignIfChanged(Member& member, Value&& value)
{
    if (member == value) {
        return false;
    }
    member = std::forward<Value>(value);
    return true;
}

/// One step that writes several properties of `object`: every value is in place before the first observer
/// hears of any. The signals go out in the order of the assignments when the step ends, each once, and only
/// for what changed. Main thread.
class PropertyUpdate {
public:
    explicit PropertyUpdate(QObject* object) : m_object(object) {}

    PropertyUpdate(const PropertyUpdate&) = delete;
    PropertyUpdate& operator=(const PropertyUpdate&) = delete;

    ~PropertyUpdate()
    {
        for (const auto signal : m_changed) {
            // An observer may have thrown the object away.
            if (m_object != nullptr) {
                (m_object.data()->*signal)();
            }
        }
    }

    template <class Member, class Value, class Owner>
    void assign(Member& member, Value&& value, void (Owner::*changed)())
    {
        if (assignIfChanged(member, std::forward<Value>(value))) {
            announce(changed);
        }
    }

    /// Sends `changed` with the others: for a property that depends on the written ones.
    template <class Owner>
    void announce(void (Owner::*changed)())
    {
        const auto signal = static_cast<void (QObject::*)()>(changed);
        if (std::ranges::find(m_changed, signal) == m_changed.end()) {
            m_changed.push_back(signal);
        }
    }

private:
    QPointer<QObject> m_object;
    std::vector<void (QObject::*)()> m_changed;
};

} // namespace tallyroom

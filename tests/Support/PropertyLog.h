#pragma once

#include <QMetaMethod>
#include <QMetaProperty>
#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tallyroom {

/// Connects `observe(its properties)` to every NOTIFY of `object`'s properties of its own classes, as long as
/// this lives.
class PropertyObserver : public QObject {
    Q_OBJECT

public:
    PropertyObserver(QObject* object, std::function<void(const std::vector<QMetaProperty>&)> observe)
        : m_object(object), m_observe(std::move(observe))
    {
        const QMetaObject* const meta = object->metaObject();
        const QMetaMethod slot = staticMetaObject.method(staticMetaObject.indexOfSlot("notified()"));
        for (int index = QObject::staticMetaObject.propertyCount(); index < meta->propertyCount(); ++index) {
            if (meta->property(index).hasNotifySignal()) {
                connect(object, meta->property(index).notifySignal(), this, slot, Qt::UniqueConnection);
            }
        }
    }

private Q_SLOTS:

    void notified()
    {
        const QMetaObject* const meta = m_object->metaObject();
        std::vector<QMetaProperty> notified;
        for (int index = 0; index < meta->propertyCount(); ++index) {
            if (meta->property(index).notifySignalIndex() == senderSignalIndex()) {
                notified.push_back(meta->property(index));
            }
        }
        m_observe(notified);
    }

private:
    QObject* m_object;
    std::function<void(const std::vector<QMetaProperty>&)> m_observe;
};

/// Writes down what the notifications of `object`'s properties say, as "name=value", in order: of properties
/// that share a signal those that changed. `describe` renders the values that QVariant cannot turn into a
/// text by itself.
class PropertyLog {
public:
    using Describe = std::function<std::string(const QVariant& value)>;

    PropertyLog(QObject* object, Describe describe)
        : m_object(object), m_describe(std::move(describe)),
          m_observer(object, [this](const std::vector<QMetaProperty>& notified) { write(notified); })
    {
        const QMetaObject* const meta = object->metaObject();
        for (int index = 0; index < meta->propertyCount(); ++index) {
            m_last[meta->property(index).name()] = value(meta->property(index));
        }
    }

    /// The lines written since the last call.
    [[nodiscard]] std::vector<std::string> take() { return std::exchange(m_lines, {}); }

private:
    [[nodiscard]] std::string value(const QMetaProperty& property) const
    {
        return m_describe(property.read(m_object));
    }

    void write(const std::vector<QMetaProperty>& notified)
    {
        bool isNews = false;
        for (const QMetaProperty& property : notified) {
            const std::string now = value(property);
            if (std::exchange(m_last[property.name()], now) != now) {
                m_lines.push_back(std::string{property.name()} + "=" + now);
                isNews = true;
            }
        }
        if (!isNews) {
            m_lines.push_back(std::string{notified.front().name()} + " is no news");
        }
    }

    QObject* m_object;
    Describe m_describe;
    std::map<std::string, std::string> m_last;
    std::vector<std::string> m_lines;
    PropertyObserver m_observer;
};

} // namespace tallyroom

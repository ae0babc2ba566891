#pragma once

#include <QMetaMethod>
#include <QMetaProperty>
#include <QObject>
#include <QString>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tallyroom {

/// Connects `observe(name of the property)` to every NOTIFY of `object`'s properties of its own classes, as
/// long as the returned context lives.
class PropertyObserver : public QObject {
    Q_OBJECT

public:
    PropertyObserver(QObject* object, std::function<void(const QMetaProperty&)> observe)
        : m_object(object), m_observe(std::move(observe))
    {
        const QMetaObject* const meta = object->metaObject();
        const QMetaMethod slot = staticMetaObject.method(staticMetaObject.indexOfSlot("notified()"));
        for (int index = QObject::staticMetaObject.propertyCount(); index < meta->propertyCount(); ++index) {
            if (meta->property(index).hasNotifySignal()) {
                connect(object, meta->property(index).notifySignal(), this, slot);
            }
        }
    }

private Q_SLOTS:

    void notified()
    {
        const QMetaObject* const meta = m_object->metaObject();
        for (int index = 0; index < meta->propertyCount(); ++index) {
            if (meta->property(index).notifySignalIndex() == senderSignalIndex()) {
                m_observe(meta->property(index));
            }
        }
    }

private:
    QObject* m_object;
    std::function<void(const QMetaProperty&)> m_observe;
};

/// Writes down every notification of `object`'s properties as "name=value", in order. `describe` renders the
/// values that QVariant cannot turn into a text by itself.
class PropertyLog {
public:
    using Describe = std::function<std::string(const QVariant& value)>;

    PropertyLog(QObject* object, Describe describe)
        : m_observer(object, [this, object, describe = std::move(describe)](const QMetaProperty& property) {
              m_lines.push_back(std::string{property.name()} + "=" + describe(property.read(object)));
          })
    {}

    /// The lines written since the last call.
    [[nodiscard]] std::vector<std::string> take() { return std::exchange(m_lines, {}); }

private:
    std::vector<std::string> m_lines;
    PropertyObserver m_observer;
};

} // namespace tallyroom

#pragma once

#include "Rows/EntryArrangement.h"

#include <QObject>

#include <optional>
#include <thread>

namespace tallyroom {

/// Makes the rows of a table: at once when that is quick, else on a thread of its own. Of the requests that
/// come meanwhile the last one counts. Main thread.
class EntryArranger : public QObject {
    Q_OBJECT

public:
    /// What a new request means for one that is being worked on: rows of a list that has grown since are
    /// still worth showing, rows of another filter or order are not.
    enum class IfBusy { letFinish, cancel };

    using QObject::QObject;
    EntryArranger(const EntryArranger&) = delete;
    EntryArranger& operator=(const EntryArranger&) = delete;
    ~EntryArranger() override;

    void arrange(EntryArrangement::Request request, IfBusy ifBusy);

Q_SIGNALS:
    void arranged(const tallyroom::EntryArrangement& arrangement);

private:
    void start(EntryArrangement::Request request);
    void finish(const EntryArrangement& arrangement);

    std::optional<EntryArrangement::Request> m_waiting;
    bool m_isRunning = false; // until the thread's report has arrived, stopped or not
    std::jthread m_thread;
};

} // namespace tallyroom

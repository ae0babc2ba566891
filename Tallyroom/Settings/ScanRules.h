#pragma once

#include "FileSystem/ScanScope.h"

#include <QObject>

namespace tallyroom {

/// What the user wants scans to leave out, kept across restarts, and handed to the core. Main thread.
class ScanRules : public QObject {
    Q_OBJECT

public:
    /// The one set of rules of the process; applied when it is first asked for.
    static ScanRules& shared();

    [[nodiscard]] const ScanScope::Rules& rules() const { return m_rules; }

    /// Stores other rules and applies them to the scans that begin from now on; what older scans have left in
    /// the caches is forgotten.
    void setRules(ScanScope::Rules rules);

    /// Leaves a folder out too.
    void exclude(const FileUrl& folder);

Q_SIGNALS:
    void changed();

private:
    ScanRules();

    ScanScope::Rules m_rules;
};

} // namespace tallyroom

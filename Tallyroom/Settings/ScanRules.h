#pragma once

#include "FileSystem/ScanScope.h"

#include <QObject>

#include <string>
#include <string_view>

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

    /// Leaves a folder out too, once another thread has found where it really lies.
    void exclude(const FileUrl& folder);

    /// Whether folders of that name are left out, wherever they lie.
    [[nodiscard]] bool isNameExcluded(const std::string& name) const { return m_rules.names.contains(name); }

    /// Whether a folder of that name is left out by its place.
    [[nodiscard]] bool isFolderExcluded(std::string_view name) const;

    /// No longer leaves the folders of a name out.
    void includeName(const std::string& name);

    /// No longer leaves a folder out; found like that of `exclude`.
    void include(const FileUrl& folder);

Q_SIGNALS:
    void changed();

private:
    ScanRules();

    ScanScope::Rules m_rules;
};

} // namespace tallyroom

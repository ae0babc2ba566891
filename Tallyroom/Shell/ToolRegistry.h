#pragma once

#include "Shell/ToolDescriptor.h"

#include <vector>

namespace tallyroom {

/// The tools, in the order of the sidebar. Main thread.
namespace ToolRegistry {

/// Made on first use, never changed.
[[nodiscard]] const std::vector<ToolDescriptor>& all();

/// The tool of that id; null when there is none.
[[nodiscard]] const ToolDescriptor* find(const QString& id);

/// Those whose finds the dashboard gathers for somebody who wants room, the fastest first.
[[nodiscard]] std::vector<RecoveryTool> recoveryTools(SessionStore& store);

/// The tool that a new window shows: the dashboard, or the first one.
[[nodiscard]] const ToolDescriptor& initial();

} // namespace ToolRegistry

} // namespace tallyroom

#pragma once

#include "Model/Ecosystem.h"

#include <optional>
#include <string_view>

namespace tallyroom {

/// Whose cache a folder is by its name, and whether more than the name says so.
struct CacheProof {
    /// The ecosystem whose marker or trace was found; else the first one that looks for the name.
    std::optional<Ecosystem> ecosystem;
    bool isProven = false;
};

/// Looks for a project's marker beside the folder `name` in the open folder `parent`, and in it for what only
/// tools make, a signed CACHEDIR.TAG among them. Reads attributes, one small file, and names where a pattern
/// asks for them. Any thread.
[[nodiscard]] CacheProof proveCache(int parent, std::string_view name);

} // namespace tallyroom

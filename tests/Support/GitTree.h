#pragma once

#include "Support/TemporaryTree.h"

#include <cstdlib>
#include <string>

namespace tallyroom {

/// Real repositories, made by Git itself.
class GitTree : public TemporaryTree {
public:
    GitTree() : m_isMade(std::system((std::string{TALLYROOM_GIT_TREE} + " " + path()).c_str()) == 0) {}

    [[nodiscard]] bool isMade() const { return m_isMade; }

private:
    bool m_isMade;
};

} // namespace tallyroom

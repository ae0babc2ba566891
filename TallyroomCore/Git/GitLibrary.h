#pragma once

#include <git2.h>
#include <memory>

namespace tallyroom {

/// Frees an object of libgit2 by its own function.
template <auto release>
struct GitRelease {
    template <class Object>
    void operator()(Object* object) const
    {
        release(object);
    }
};

using OpenRepository = std::unique_ptr<git_repository, GitRelease<git_repository_free>>;

/// Makes libgit2 ready; to be called before any use of it. Any thread.
void startGitLibrary();

} // namespace tallyroom

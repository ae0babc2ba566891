#include "Git/GitLibrary.h"

#include <openssl/crypto.h>

namespace tallyroom {

void startGitLibrary()
{
    // For the life of the program: workers may still use the library while it ends.
    [[maybe_unused]] static const int users = [] {
        const int count = ::git_libgit2_init();
        ::OPENSSL_thread_stop(); // frees what that keeps for this worker, which may not end before the
                                 // program
        return count;
    }();
}

} // namespace tallyroom

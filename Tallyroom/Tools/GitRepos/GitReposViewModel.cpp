#include "Tools/GitRepos/GitReposViewModel.h"

namespace tallyroom {

GitReposViewModel::GitReposViewModel(DeletionRunner& deletions)
    : ListToolViewModel(FilterSubject::path, ScanBeginning::discovering, deletions)
{}

FileScanner::ScanStream GitReposViewModel::startStream()
{
    return FileScanner::findDirectoriesStream({".git"}, *rootURL());
}

} // namespace tallyroom

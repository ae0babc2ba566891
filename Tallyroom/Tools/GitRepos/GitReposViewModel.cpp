#include "Tools/GitRepos/GitReposViewModel.h"

namespace tallyroom {

GitReposViewModel::GitReposViewModel(DeletionRunner& deletions)
    : ListToolViewModel(FilterSubject::path, ScanBeginning::discovering, deletions)
{}

FileScanner::ScanStream GitReposViewModel::startScan()
{
    return FileScanner::findDirectoriesStream({".git"}, *rootURL());
}

} // namespace tallyroom

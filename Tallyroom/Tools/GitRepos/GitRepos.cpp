#include "Tools/GitRepos/GitRepos.h"

#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

GitReposViewModel::GitReposViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions), m_states(*this, RepositoryState::read)
{}

Recovery GitReposViewModel::recovery() const
{
    Recovery recovery = m_states.recovery([](const Entry&, const State&) { return false; });
    recovery.words =
        RepositoryText::summary(entries(), [this](const Entry& entry) { return repositoryState(entry.url); });
    return recovery;
}

FileScanner::ScanStream GitReposViewModel::startStream()
{
    return FileScanner::findDirectoriesStream({".git"}, *rootURL());
}

ListToolScreen* makeGitReposScreen(GitReposViewModel& tool)
{
    ListToolStyle style = ToolStyles::projects(ToolTexts::gitRepos);
    const auto stateOf = [&tool](const Entry& entry) { return tool.repositoryState(entry.url); };
    style.warning = [stateOf](const auto& entries) { return RepositoryText::warning(entries, stateOf); };
    style.table.badges = [stateOf](const Entry& entry) {
        const auto* const state = stateOf(entry);
        return state == nullptr ? std::vector<EntryBadge>{}
                                : ToolStyles::badges(RepositoryText::losses(*state),
                                                     *state ? Theme::Colour::old : Theme::Colour::secondary);
    };
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom

#include "FileSystem/WalkMounts.h"

#include "Concurrency/Answers.h"
#include "Concurrency/PatientCalls.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/MountKinds.h"

#include <fcntl.h>
#include <memory>
#include <string>
#include <utility>

namespace tallyroom {

namespace {

/// More than a person mounts shares.
constexpr unsigned threads = 32;

/// Lists the beginning of a folder, for as long as it takes. A refusal is an answer.
void list(const std::string& folder)
{
    if (const auto opened = openAt(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW)) {
        NameBuffer{}.read(opened->get());
    }
}

bool answersInTime(const Mount& mount, const std::stop_token& stop)
{
    static PatientCalls calls{threads, WalkMounts::patience};
    const auto answers = std::make_shared<Answers<bool>>(1);
    const bool isAsked =
        calls.ask(mount.mountPoint, [path = mount.mountPoint, asker = std::weak_ptr{answers}] {
            if (asker.expired()) {
                return;
            }
            list(path);
            if (const auto waiting = asker.lock()) {
                waiting->put(0, true);
            }
        });
    const auto end = std::chrono::steady_clock::now() + WalkMounts::patience;
    return isAsked && answers->waitUntil(0, end, stop).answers.front().has_value();
}

} // namespace

WalkMounts::WalkMounts(std::stop_token stop) : m_stop(std::move(stop)) {}

MountPlaces::Position WalkMounts::find(std::string_view path)
{
    std::call_once(m_read, [this] { m_places.emplace(MountTable::reachable(MountTable::read())); });
    return m_places->find(path);
}

bool WalkMounts::isUncertain(const Mount& mount) const
{
    const std::scoped_lock lock{m_mutex};
    return isServed(mount) && !m_answers.contains(mount.id);
}

bool WalkMounts::isAnswering(const Mount& mount)
{
    if (isUncertain(mount)) {
        const bool answers = answersInTime(mount, m_stop);
        const std::scoped_lock lock{m_mutex};
        m_answers.emplace(mount.id, answers);
    }
    const std::scoped_lock lock{m_mutex};
    const auto known = m_answers.find(mount.id);
    return known == m_answers.end() || known->second;
}

} // namespace tallyroom

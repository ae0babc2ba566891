#include "Volumes/VolumeInfo.h"

#include "Concurrency/Answers.h"
#include "Concurrency/Thread.h"
#include "FileSystem/MountKinds.h"
#include "Volumes/VolumeMounts.h"

#include <algorithm>
#include <stop_token>
#include <unordered_set>

namespace tallyroom {

namespace {

using Clock = std::chrono::steady_clock;

/// How long a first report waits for the first answer.
constexpr std::chrono::milliseconds firstReportLimit{100};

/// How long finding the home folder may take before its path is taken as it is written.
constexpr std::chrono::milliseconds homeLimit{50};

std::string nameOf(const Mount& mount, const DeviceTraits& traits)
{
    if (traits.label) {
        return *traits.label;
    }
    return mount.mountPoint == "/" ? "Système" : std::string{FileUrl{mount.mountPoint}.lastPathComponent()};
}

bool isInternal(const Mount& mount, const DeviceTraits& traits)
{
    // The system's own volume counts as internal wherever it is.
    if (mount.mountPoint == "/") {
        return true;
    }
    return VolumeMounts::classOf(mount) != MountClass::networkShare && traits.isInternal.value_or(true);
}

/// Asks a mount, for as long as it takes.
std::optional<VolumeUsage> usageOf(const Mount& mount, const VolumeSources& sources)
{
    const VolumeFigures figures = sources.figures(mount);
    if (!figures.total) {
        return std::nullopt;
    }
    const DeviceTraits traits = sources.traits(mount);
    return VolumeUsage{nameOf(mount, traits), FileUrl{mount.mountPoint}, *figures.total,
                       figures.available.value_or(0), isInternal(mount, traits)};
}

/// The home folder, its links resolved if that is quick.
FileUrl homeOf(const VolumeSources& sources)
{
    FileUrl home = sources.home();
    const auto answers = std::make_shared<Answers<FileUrl>>(1);
    const bool isAsked = sources.networkCalls->ask(
        "home", [resolved = sources.resolved, home, asker = std::weak_ptr{answers}] {
            FileUrl url = resolved(home);
            if (const auto waiting = asker.lock()) {
                waiting->put(0, std::move(url));
            }
        });
    if (!isAsked) {
        return home;
    }
    return answers->waitUntil(0, Clock::now() + homeLimit).answers.front().value_or(std::move(home));
}

/// One look at all volumes, or at the main one alone.
class Survey {
public:
    enum class Scope : unsigned char { listed, main, both };

    /// Asks. Waits for nothing but the home folder's real path.
    Survey(const VolumeSources& sources, Scope scope)
    {
        const std::vector<Mount> mounts = MountTable::reachable(sources.mounts());
        m_mounts = VolumeMounts::listed(mounts);
        m_listed = m_mounts.size();
        if (scope != Scope::listed) {
            findMain(homeOf(sources), mounts);
        }
        if (scope == Scope::main) {
            m_mounts = m_main ? std::vector{m_mounts[*m_main]} : std::vector<Mount>{};
            m_main = m_main ? std::optional<std::size_t>{0} : std::nullopt;
            m_listed = 0;
        }
        m_answers = std::make_shared<Answers<VolumeUsage>>(m_mounts.size());
        for (std::size_t place = 0; place < m_mounts.size(); ++place) {
            ask(place, sources);
        }
    }

    [[nodiscard]] std::size_t size() const noexcept { return m_mounts.size(); }

    [[nodiscard]] Answers<VolumeUsage>& answers() const noexcept { return *m_answers; }

    [[nodiscard]] VolumeReport report(const Answers<VolumeUsage>::Look& look) const
    {
        VolumeReport report;
        std::unordered_set<FileUrl> seen;
        for (std::size_t place = 0; place < m_listed; ++place) {
            const auto& usage = look.answers[place];
            if (usage && usage->totalBytes >= 1 && seen.insert(usage->url).second) {
                report.volumes.push_back(*usage);
            }
        }
        std::ranges::stable_sort(report.volumes, &VolumeUsage::isListedBefore);
        if (m_main) {
            report.mainVolume = look.answers[*m_main];
        }
        report.unanswered = static_cast<std::int64_t>(look.open + look.refused);
        return report;
    }

private:
    /// The volume that holds the home folder: as it is listed, or else its own mount.
    void findMain(const FileUrl& home, const std::vector<Mount>& mounts)
    {
        const auto holder = MountTable::holding(home, mounts);
        if (!holder) {
            return;
        }
        const auto listed = std::ranges::find_if(
            m_mounts, [&holder](const Mount& mount) { return VolumeMounts::isSameVolume(mount, *holder); });
        m_main = static_cast<std::size_t>(listed - m_mounts.begin());
        if (listed == m_mounts.end()) {
            m_mounts.push_back(*holder);
        }
    }

    void ask(std::size_t place, const VolumeSources& sources)
    {
        const Mount& mount = m_mounts[place];
        PatientCalls& calls = isServed(mount) ? *sources.networkCalls : *sources.diskCalls;
        const bool isAsked =
            calls.ask(mount.mountPoint, [place, mount, sources, asker = std::weak_ptr{m_answers}] {
                if (asker.expired()) {
                    return; // the asker has given up while an earlier question hung
                }
                auto usage = usageOf(mount, sources);
                if (const auto waiting = asker.lock()) {
                    waiting->put(place, std::move(usage));
                }
            });
        if (!isAsked) {
            m_answers->refuse();
        }
    }

    std::vector<Mount> m_mounts; // the listed ones, then a main one that is not listed
    std::size_t m_listed = 0;
    std::optional<std::size_t> m_main;
    std::shared_ptr<Answers<VolumeUsage>> m_answers;
};

void sendReports(const VolumeSources& sources, Clock::time_point limit,
                 const ProgressSender<VolumeReport>& sender)
{
    const Survey survey{sources, Survey::Scope::both};
    const std::stop_token stop = sender.stopToken();
    const auto next = [&](std::size_t open, Clock::time_point until) {
        return survey.answers().waitUntil(open == 0 ? 0 : open - 1, until, stop);
    };
    auto look = next(survey.size(), std::min(limit, Clock::now() + firstReportLimit));
    sender.send(survey.report(look));
    while (look.open > 0 && !stop.stop_requested() && Clock::now() < limit) {
        auto later = next(look.open, limit);
        if (later.open < look.open) {
            sender.send(survey.report(later));
        }
        look = std::move(later);
    }
}

} // namespace

std::optional<VolumeUsage> VolumeInfo::main(std::chrono::milliseconds limit, const VolumeSources& sources)
{
    const auto end = Clock::now() + limit;
    const Survey survey{sources, Survey::Scope::main};
    return survey.report(survey.answers().waitUntil(0, end)).mainVolume;
}

std::vector<VolumeUsage> VolumeInfo::current(std::chrono::milliseconds limit, const VolumeSources& sources)
{
    const auto end = Clock::now() + limit;
    const Survey survey{sources, Survey::Scope::listed};
    return survey.report(survey.answers().waitUntil(0, end)).volumes;
}

ProgressStream<VolumeReport> VolumeInfo::stream(std::chrono::milliseconds limit, const VolumeSources& sources)
{
    auto [sender, stream] = makeProgressStream<VolumeReport>();
    // On its own thread: the pool's workers must not wait.
    auto thread = runOnThread([sources, end = Clock::now() + limit, sender = std::move(sender)](
                                  const std::stop_token& /*stop*/) { sendReports(sources, end, sender); });
    if (thread.joinable()) {
        thread.detach();
    }
    return std::move(stream);
}

} // namespace tallyroom

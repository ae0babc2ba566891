#include "Concurrency/PatientCalls.h"

#include "Concurrency/Thread.h"

#include <deque>
#include <map>
#include <mutex>

namespace tallyroom {

class PatientCalls::Threads {
public:
    Threads(unsigned limit, std::chrono::milliseconds patience) : m_limit(limit), m_patience(patience) {}

    static bool ask(const std::shared_ptr<Threads>& self, const std::string& subject,
                    std::function<void()> question)
    {
        const bool isAsked = self->put(subject, std::move(question));
        if (self->wantsThread()) {
            if (auto thread = tryThread([self] { self->run(); }); thread.joinable()) {
                thread.detach();
            } else {
                self->missThread();
            }
        }
        return isAsked;
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Subject {
        Clock::time_point since; ///< of the question that is being asked
        std::deque<std::function<void()>> waiting;
    };

    bool put(const std::string& subject, std::function<void()> question)
    {
        const std::scoped_lock lock{m_mutex};
        const auto [place, isNew] = m_subjects.try_emplace(subject);
        if (isNew) {
            place->second.since = Clock::now();
            m_ready.push_back(subject);
        } else if (Clock::now() - place->second.since > m_patience) {
            return false;
        }
        place->second.waiting.push_back(std::move(question));
        return true;
    }

    bool wantsThread()
    {
        const std::scoped_lock lock{m_mutex};
        const bool wanted = !m_ready.empty() && m_count < m_limit;
        m_count += wanted ? 1 : 0;
        return wanted;
    }

    /// No thread is to be had: the others answer, or the caller's when there is no other one.
    void missThread()
    {
        {
            const std::scoped_lock lock{m_mutex};
            if (m_count > 1) {
                --m_count;
                return;
            }
        }
        run();
    }

    void run()
    {
        std::unique_lock lock{m_mutex};
        while (!m_ready.empty()) {
            const auto subject = m_subjects.find(m_ready.front());
            m_ready.pop_front();
            while (!subject->second.waiting.empty()) {
                const auto question = std::move(subject->second.waiting.front());
                subject->second.waiting.pop_front();
                subject->second.since = Clock::now();
                lock.unlock();
                question();
                lock.lock();
            }
            m_subjects.erase(subject);
        }
        --m_count;
    }

    const unsigned m_limit;
    const std::chrono::milliseconds m_patience;
    std::mutex m_mutex;
    std::map<std::string, Subject> m_subjects; // guarded by m_mutex, as what follows
    std::deque<std::string> m_ready;           // subjects that no thread has taken up
    unsigned m_count = 0;
};

PatientCalls::PatientCalls(unsigned threads, std::chrono::milliseconds patience)
    : m_threads(std::make_shared<Threads>(threads, patience))
{}

bool PatientCalls::ask(const std::string& subject, std::function<void()> question)
{
    return Threads::ask(m_threads, subject, std::move(question));
}

} // namespace tallyroom

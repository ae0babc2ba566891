#pragma once

#include "Bridge/AskApart.h"
#include "Bridge/StreamPump.h"
#include "Concurrency/Locked.h"
#include "Concurrency/ParallelFor.h"
#include "Model/EntryList.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// Facts about the entries of a list that come after they are on screen: one answer an entry, asked on the
/// pool's workers and known by location. Main thread.
template <class Fact>
class EntryFacts {
public:
    /// Called on workers; must not own anything of the window.
    using Ask = std::function<Fact(const FileUrl&)>;

    /// `changed` is called when answers have come.
    EntryFacts(Ask ask, std::function<void()> changed) : m_ask(std::move(ask)), m_changed(std::move(changed))
    {}

    /// Asks about those of `entries` of which nothing is known; an empty list forgets everything. Meant to be
    /// called whenever the list changes. O(n).
    void follow(const EntryList& entries)
    {
        m_entries = entries;
        if (entries.empty()) {
            m_pump.reset();
            m_facts.clear();
            return;
        }
        if (m_pump == nullptr) {
            askForUnknown();
        }
    }

    /// The fact about the entry at `url`; null while it is not known.
    [[nodiscard]] const Fact* find(const FileUrl& url) const
    {
        const auto found = m_facts.find(url);
        return found != m_facts.end() ? &found->second : nullptr;
    }

private:
    using Facts = std::unordered_map<FileUrl, Fact>;

    void askForUnknown()
    {
        std::vector<FileUrl> unknown;
        for (const Entry& entry : m_entries) {
            if (!m_facts.contains(entry.url)) {
                unknown.push_back(entry.url);
            }
        }
        if (unknown.empty()) {
            return;
        }
        m_pump = std::make_unique<StreamPump<Facts>>(
            start(std::move(unknown), m_ask),
            [this](Facts facts) {
                m_facts.merge(facts);
                m_changed();
            },
            [this] {
                m_pump.reset();
                askForUnknown();
            });
    }

    static ProgressStream<Facts> start(std::vector<FileUrl> urls, const Ask& ask)
    {
        auto [sender, stream] = makeProgressStream<Facts>();
        runApart([urls = std::move(urls), ask,
                  sender = std::make_unique<ProgressSender<Facts>>(std::move(sender))]() mutable {
            Locked<Facts> known;
            WorkerPool& pool = WorkerPool::shared();
            ParallelForOptions options;
            options.lanes = std::max(pool.width() / 2, 1U);
            options.stop = sender->stopToken();
            options.whileWaiting = [&] { sender->send(known.get()); };
            const auto answer = [&](std::size_t number, unsigned) {
                Fact fact = ask(urls[number]);
                known.with([&](Facts& facts) { facts.emplace(urls[number], std::move(fact)); });
            };
            parallelFor(pool, urls.size(), answer, options);
            sender->send(known.get());
            sender.reset();
        });
        return std::move(stream);
    }

    Ask m_ask;
    std::function<void()> m_changed;
    EntryList m_entries;
    Facts m_facts;
    std::unique_ptr<StreamPump<Facts>> m_pump;
};

} // namespace tallyroom

#pragma once

#include "Bridge/AskApart.h"
#include "Bridge/StreamPump.h"
#include "Concurrency/Locked.h"
#include "Concurrency/ParallelFor.h"
#include "Tools/Frame/ListToolViewModel.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// Facts about the entries of a tool that come after they are on screen: one answer an entry, asked on the
/// pool's workers and known by location. The tool's remarks change with them. Main thread.
template <class Fact>
class EntryFacts {
public:
    /// Called on workers; must not own anything of the window.
    using Ask = std::function<Fact(const FileUrl&)>;

    /// `tool`, which usually owns it, must outlive it.
    EntryFacts(ListToolViewModel& tool, Ask ask) : m_tool(tool), m_ask(std::move(ask))
    {
        QObject::connect(&tool, &ScanToolViewModel::progressChanged, &m_context, [this] { follow(); });
    }

    /// The fact about the entry at `url`; null while it is not known.
    [[nodiscard]] const Fact* find(const FileUrl& url) const
    {
        const auto found = m_facts.find(url);
        return found != m_facts.end() ? &found->second : nullptr;
    }

    /// The fact about an entry; an empty one while it is not known.
    [[nodiscard]] Fact of(const Entry& entry) const
    {
        const Fact* const fact = find(entry.url);
        return fact != nullptr ? *fact : Fact{};
    }

    /// The tool's entries parted by `isSafe(entry, fact)`; an entry of which nothing is known is not safe.
    template <class Condition>
    [[nodiscard]] Recovery recovery(const Condition& isSafe) const
    {
        bool isKnown = true;
        Recovery recovery = Recovery::parted(m_tool.entries(), [&](const Entry& entry) {
            const Fact* const fact = find(entry.url);
            isKnown = isKnown && fact != nullptr;
            return fact != nullptr && isSafe(entry, *fact);
        });
        recovery.isKnown = isKnown;
        return recovery;
    }

private:
    using Facts = std::unordered_map<FileUrl, Fact>;

    /// Asks about entries of which nothing is known; an empty list forgets everything. O(n).
    void follow()
    {
        if (m_tool.entries().empty()) {
            m_pump.reset();
            m_facts.clear();
        } else if (m_pump == nullptr) {
            askForUnknown();
        }
    }

    void askForUnknown()
    {
        std::vector<FileUrl> unknown;
        for (const Entry& entry : m_tool.entries()) {
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
                Q_EMIT m_tool.remarksChanged();
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

    ListToolViewModel& m_tool;
    Ask m_ask;
    Facts m_facts;
    std::unique_ptr<StreamPump<Facts>> m_pump;
    QObject m_context; // its end cuts the connections
};

} // namespace tallyroom

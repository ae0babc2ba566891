// What the main thread spends on an action in the explorer, in a folder of 300 000 files (or as many as the
// first argument says): the longest turn of its event loop in milliseconds of processor time, as CSV. How
// long it takes until the rows are on screen, after the last key or click of the action, goes to the standard
// error stream; a deletion's own work on the disk is a part of that.
#include "Controls/SearchField.h"
#include "Controls/SelectionBar.h"
#include "Deletion/DeleteConfirmation.h"
#include "MainThread.h"
#include "Rows/EntryTable.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>

namespace tallyroom {

namespace {

constexpr std::size_t deletedCount = 10'000; // "file-00…"
constexpr std::chrono::seconds limit{30};

void fill(const QString& folder, std::size_t count)
{
    for (std::size_t serial = 0; serial < count; ++serial) {
        const QString name = QStringLiteral("/file-%1").arg(serial, 6, 10, QLatin1Char{'0'});
        std::ofstream file{(folder + name).toStdString()};
        if (serial % 10 == 0) {
            file << std::string(serial % 70 * 100 + 1, 'x');
        }
    }
    QDir{folder}.mkdir(QStringLiteral("folder"));
}

/// The explorer's screen, and what a user does in it.
class Bench {
public:
    explicit Bench(std::size_t count) : m_count(count + 1)
    {
        fill(m_folder.path(), count);
        m_view.resize(1180, 760);
        m_view.show();
        run(
            "open", [this] { m_navigator.open(FileUrl{m_folder.path().toStdString()}); },
            [this] { return !m_navigator.isScanning() && rows() == m_count; });
    }

    void measureAll()
    {
        measure(
            "filter-letter", [this] { filter("7"); }, [this] { return rows() < m_count; });
        unfilter();
        measure(
            "toggle-one", [this] { pressSpace(); }, [this] { return checked() == 1; });
        measure(
            "sort-by-name",
            [this] {
                m_table.setSortOrder({EntrySortOrder::Key::name, 0, true});
            },
            [this] { return m_table.arrangement().entry(0).name == "file-000000"; });
        run(
            "sort-by-size", [this] { m_table.setSortOrder({}); },
            [this] { return m_table.arrangement().entry(0).name != "file-000000"; });
        measure(
            "check-all", [this] { press("Tout sélectionner"); }, [this] { return checked() == m_count; });
        measure(
            "uncheck-one-of-all", [this] { pressSpace(); }, [this] { return checked() == m_count - 1; });
        measure(
            "toggle-one-all-checked", [this] { pressSpace(); }, [this] { return checked() == m_count; });
        measure(
            "filter-letter-all-checked", [this] { filter("7"); }, [this] { return rows() < m_count; });
        unfilter();
        const Entry folder = enclosedFolder();
        measure(
            "enter-and-back",
            [this, folder] {
                m_navigator.activate(folder);
                QTimer::singleShot(100, &m_navigator, [this] {
                    m_clock.start();
                    m_navigator.goBack();
                });
                m_wasElsewhere = false;
            },
            [this] {
                m_wasElsewhere = m_wasElsewhere || rows() == 0;
                return m_wasElsewhere && rows() == m_count;
            });
        measureDeletion();
    }

private:
    using Act = std::function<void()>;
    using Condition = std::function<bool()>;

    /// Acts, and waits until it is seen to be done. Nobody waits for ever for what never comes.
    void run(const char* action, const Act& act, const Condition& isDone)
    {
        QEventLoop loop;
        QTimer::singleShot(limit, &loop, [this, action] {
            std::fprintf(stderr, "%s: not done after %lld s; %zu rows, %zu checked\n", action,
                         static_cast<long long>(limit.count()), rows(), checked());
            std::_Exit(1); // a thread may be in the way of leaving
        });
        QTimer look;
        look.setInterval(1);
        QObject::connect(&look, &QTimer::timeout, &loop, [&] {
            if (isDone()) {
                look.stop();
                m_tookMilliseconds = m_clock.elapsed();
                QTimer::singleShot(100, &loop, &QEventLoop::quit); // what is still drawn counts too
            }
        });
        QTimer::singleShot(0, &loop, [&] {
            m_clock.start();
            act();
            look.start();
        });
        loop.exec();
    }

    void measure(const char* action, const Act& act, const Condition& isDone)
    {
        const TurnWatch watch;
        run(action, act, isDone);
        std::printf("%s,%.1f\n", action, watch.longestMilliseconds());
        std::fflush(stdout);
        std::fprintf(stderr, "%s: on screen after %lld ms\n", action,
                     static_cast<long long>(m_tookMilliseconds));
    }

    void measureDeletion()
    {
        run(
            "uncheck-all", [this] { press("Tout désélectionner"); }, [this] { return checked() == 0; });
        run(
            "filter-deleted", [this] { filter("file-00"); }, [this] { return rows() == deletedCount; });
        run(
            "check-deleted", [this] { press("Tout sélectionner"); },
            [this] { return checked() == deletedCount; });
        unfilter();
        measure(
            "delete-10000",
            [this] {
                press("Supprimer…");
                QTimer::singleShot(200, &m_view, [this] {
                    m_clock.start();
                    press("Supprimer définitivement");
                });
            },
            [this] { return rows() == m_count - deletedCount; });
    }

    [[nodiscard]] std::size_t rows() const { return m_table.arrangement().rowCount(); }

    /// What the selection bar says: asking must cost nothing.
    [[nodiscard]] std::size_t checked() const
    {
        for (const QLabel* const label : m_labels) {
            QString text = label->text();
            if (text.contains(QStringLiteral("sélectionné"))) {
                return text.removeIf([](QChar c) { return !c.isDigit(); }).toULongLong();
            }
        }
        return 0;
    }

    [[nodiscard]] Entry enclosedFolder() const
    {
        const EntryList& entries = m_navigator.entries();
        return *std::ranges::find_if(entries, &Entry::isDirectory);
    }

    void filter(const char* text) { m_search.setText(QString::fromUtf8(text)); }

    void unfilter()
    {
        run(
            "unfilter", [this] { filter(""); }, [this] { return rows() == m_count; });
    }

    void press(const char* button)
    {
        for (QPushButton* const one : m_view.findChildren<QPushButton*>()) {
            if (one->text() == QString::fromUtf8(button)) {
                one->click();
                return;
            }
        }
        std::fprintf(stderr, "no button %s\n", button);
        std::exit(1);
    }

    void pressSpace()
    {
        m_table.setCurrentEntry(m_table.arrangement().entry(3).url);
        QKeyEvent key{QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier};
        QApplication::sendEvent(&m_table, &key);
    }

    const QTemporaryDir m_folder;
    std::size_t m_count; // files and the folder
    DeletionRunner m_deletions;
    FolderNavigatorViewModel m_navigator{m_deletions};
    DiskUsageView m_view{m_navigator};
    EntryTable& m_table = *m_view.findChild<EntryTable*>();
    SearchField& m_search = *m_view.findChild<SearchField*>();
    QList<QLabel*> m_labels = m_view.findChild<SelectionBar*>()->findChildren<QLabel*>();
    QElapsedTimer m_clock;
    qint64 m_tookMilliseconds = 0;
    bool m_wasElsewhere = false;
};

} // namespace

} // namespace tallyroom

int main(int count, char** arguments)
{
    tallyroom::startApplication();
    tallyroom::Bench{count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 300'000}.measureAll();
}

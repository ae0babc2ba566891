// A restless user: changes tools during scans, types, clicks, checks, deletes and undoes at random, while
// the tree changes: window-soak [SECONDS [SEED]]
#include "Bridge/Desktop.h"
#include "Settings/Settings.h"
#include "Shell/ContentView.h"
#include "Shell/ToolRegistry.h"
#include "Soak/Soak.h"
#include "Soak/TreeChurn.h"
#include "Support/TemporaryTree.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QKeySequence>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <atomic>
#include <cstdio>
#include <random>

namespace tallyroom {

namespace {

/// Far above what the window takes with the sanitizers' own share, below what hours of a leak would.
constexpr std::int64_t mostResidentBytes = 1'500_MiB;

/// Only what lies in `folder` may be removed, whatever is asked for; `removed` is counted.
RemovalOperations confinedTo(const FileUrl& folder, std::atomic<int>& removed)
{
    RemovalOperations operations = RemovalOperations::real();
    operations.remove = [folder, &removed, remove = operations.remove](std::span<const Entry> entries,
                                                                       bool permanently,
                                                                       FileRemover::BatchOptions options) {
        options.screening = [folder, &removed, asked = options.screening](const Entry& entry,
                                                                          const std::stop_token& stop) {
            if (!entry.url.isInside(folder)) {
                return FileRemover::Screened{"not in the tree", {}};
            }
            auto screened = asked ? asked(entry, stop) : FileRemover::Screened{};
            removed += screened.refusal ? 0 : 1;
            return screened;
        };
        return remove(entries, permanently, options);
    };
    operations.empty = [folder](TrashContents contents, const FileRemover::BatchOptions& options) {
        const auto isOutside = [&folder](const Entry& entry) { return !entry.url.isInside(folder); };
        std::erase_if(contents.items, [&](const TrashContents::Item& item) { return isOutside(item.entry); });
        std::erase_if(contents.leftRecords, isOutside);
        return contents.empty(options);
    };
    return operations;
}

/// Some more than once, so that they are pressed more often.
QKeyCombination anyKeys(std::mt19937_64& random)
{
    static const QStringList keys =
        QStringLiteral(
            "Down Up Left Right PgDown PgUp Home End Space Space Return Return Tab Tab Esc Del Menu F5 A "
            "Backspace Shift+Down Shift+Backtab Shift+Del Alt+Up Ctrl+A Ctrl+C Ctrl+F Ctrl+Z Ctrl++ Ctrl++ "
            "Ctrl+- Ctrl+0")
            .split(u' ');
    const auto which = std::uniform_int_distribution<qsizetype>{0, keys.size() - 1}(random);
    return QKeySequence{keys.at(which), QKeySequence::PortableText}[0];
}

class RestlessUser : public QObject {
public:
    RestlessUser(ContentView& window, std::filesystem::path folder, std::uint64_t seed)
        : m_window(window), m_folder(std::move(folder)), m_random(seed)
    {}

    void actUntil(std::chrono::steady_clock::time_point end)
    {
        if (std::chrono::steady_clock::now() >= end) {
            return leave();
        }
        // Asked for before anything is done: a menu may be waited for in what follows.
        const int pause = draw(3) == 0 ? draw(60) : 0;
        QTimer::singleShot(pause, this, [this, end] { actUntil(end); });
        ++m_acts;
        act();
        Soak::require(Soak::residentBytes() < mostResidentBytes, "memory is bounded");
    }

    [[nodiscard]] int acts() const noexcept { return m_acts; }

private:
    void act()
    {
        // A file dialog of the toolkit deletes too, and knows no limits.
        if (auto* const chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            return chooser->reject();
        }
        switch (draw(16)) {
        case 0:
            return m_window.selectTool(anyTool().id);
        case 1:
            return m_window.resize(m_window.minimumSize() + QSize{draw(900), draw(600)});
        case 2:
        case 3:
            return open();
        case 4:
        case 5:
            return click();
        case 6:
        case 7:
            return push();
        case 8:
        case 9:
            return turnWheel();
        default:
            return press(anyKeys(m_random));
        }
    }

    void open()
    {
        const FileUrl folder{TreeChurn::folderBelow(m_folder, m_random).string()};
        Desktop::examine(&m_window, folder,
                         [&tool = anyTool().tool(m_window.store())](const FolderChoice& choice) {
                             tool.handleImport(choice);
                         });
    }

    // Events as a display sends them. Nothing waits for their effect: more follow while a menu is open.

    void click()
    {
        const QPointer<QWindow> target = topmost();
        const QPointF place{draw(target->width() - 1) + 0.5, draw(target->height() - 1) + 0.5};
        const auto button = draw(7) == 0 ? Qt::RightButton : Qt::LeftButton;
        for (int clicks = draw(4) == 0 ? 2 : 1; clicks > 0 && target != nullptr; --clicks) {
            const QPointF onScreen = target->mapToGlobal(place);
            m_now += 10;
            qt_handleMouseEvent(target, place, onScreen, button, button, QEvent::MouseButtonPress, {}, m_now);
            if (target != nullptr) {
                qt_handleMouseEvent(target, place, onScreen, Qt::NoButton, button, QEvent::MouseButtonRelease,
                                    {}, m_now);
            }
        }
        m_now += 1000; // what comes next is another click
    }

    /// Over a map, most often, where it looks closer.
    void turnWheel()
    {
        QWindow* const target = topmost();
        const QPointF place{draw(target->width() - 1) + 0.5, draw(target->height() - 1) + 0.5};
        const QPoint way{0, (draw(5) - 2) * QWheelEvent::DefaultDeltasPerStep};
        QWheelEvent wheel{place, target->mapToGlobal(place), {}, way, {}, {}, Qt::NoScrollPhase, false};
        QCoreApplication::sendEvent(target, &wheel);
    }

    /// A button that can be seen; a click at random seldom meets one.
    void push()
    {
        QList<QAbstractButton*> buttons = topmostWidget()->findChildren<QAbstractButton*>();
        erase_if(buttons,
                 [](const QAbstractButton* button) { return !button->isVisible() || !button->isEnabled(); });
        if (!buttons.empty()) {
            buttons.at(draw(static_cast<int>(buttons.size()) - 1))->click();
        }
    }

    void press(QKeyCombination keys)
    {
        const QPointer<QWindow> target = topmost();
        const QString text = keys == QKeyCombination{Qt::Key_A} ? QStringLiteral("a") : QString{};
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            if (target != nullptr) {
                qt_handleKeyEvent(target, type, keys.key(), keys.keyboardModifiers(), text);
            }
        }
    }

    /// Closes the window, whatever it is at.
    void leave()
    {
        if (QWidget* const popup = QApplication::activePopupWidget()) {
            popup->close();
        } else if (QWidget* const dialog = QApplication::activeModalWidget()) {
            dialog->close();
        } else {
            m_window.close();
            return QCoreApplication::quit();
        }
        QTimer::singleShot(0, this, &RestlessUser::leave);
    }

    [[nodiscard]] const ToolDescriptor& anyTool()
    {
        const auto& tools = ToolRegistry::all();
        return tools[static_cast<std::size_t>(draw(static_cast<int>(tools.size()) - 1))];
    }

    [[nodiscard]] QWidget* topmostWidget() const
    {
        if (QWidget* const popup = QApplication::activePopupWidget()) {
            return popup;
        }
        QWidget* const dialog = QApplication::activeModalWidget();
        return dialog != nullptr ? dialog : &m_window;
    }

    [[nodiscard]] QWindow* topmost() const { return topmostWidget()->window()->windowHandle(); }

    int draw(int most) { return std::uniform_int_distribution{0, most}(m_random); }

    ContentView& m_window;
    std::filesystem::path m_folder;
    std::mt19937_64 m_random;
    int m_acts = 0;
    int m_now = 0; // as the clicks tell it, in milliseconds
};

void soak(const Soak::Run& run, const TemporaryTree& tree)
{
    const std::filesystem::path changing = tree.path("scanned");
    const std::ptrdiff_t descriptors = Soak::openDescriptors();
    std::atomic<int> removed = 0;
    int acts = 0;
    {
        const TreeChurn churn{{changing, tree.path("outside"), tree.path("forbidden")}, run.seed};
        ContentView window{confinedTo(FileUrl{changing.string()}, removed)};
        window.show();
        RestlessUser user{window, changing, run.seed + 1};
        const auto end = std::chrono::steady_clock::now() + run.duration;
        QTimer::singleShot(0, &user, [&user, end] { user.actUntil(end); });
        QApplication::exec();
        acts = user.acts();
    }
    Soak::waitForDescriptors(descriptors + 8); // the toolkit keeps some of its own
    Soak::require(tree.exists("forbidden/kept"), "no link is followed");
    Soak::require(acts > 0, "there was something to try");
    std::printf("%d acts, %d items removed, %jd MB resident\n", acts, removed.load(),
                std::intmax_t{Soak::residentBytes() / 1'000'000});
}

} // namespace

} // namespace tallyroom

int main(int argc, char** argv)
{
    const tallyroom::Soak::Run run = tallyroom::Soak::begin(argc, argv);
    const tallyroom::TemporaryTree tree{tallyroom::folder("scanned"), tallyroom::folder("outside"),
                                        tallyroom::file("forbidden/kept", 1000), tallyroom::folder("home")};
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(tree.path("home/config")));
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(tree.path("home/data")));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("PATH", QByteArray::fromStdString(tree.path("home"))); // no other program is started
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{argc, argv};
    QApplication::setQuitOnLastWindowClosed(false);
    tallyroom::soak(run, tree);
    tallyroom::Settings::store().sync(); // while its folder is there
}

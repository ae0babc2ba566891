#include "App/EventWait.h"
#include "Bridge/Desktop.h"
#include "Bridge/StreamPump.h"
#include "Bridge/Terminal.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <QTest>

#include <cstdio>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <thread>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// A pump of numbers that writes down what it hands over.
class Recorder : public QObject {
    Q_OBJECT

public:
    void pump(ProgressStream<int> stream)
    {
        m_pump = std::make_unique<StreamPump<int>>(
            std::move(stream), [this](int record) { write(std::to_string(record)); },
            [this] { write("end"); });
    }

    [[nodiscard]] bool waitForEnd()
    {
        return waitUntil(this, &Recorder::written, [this] { return !log.empty() && log.back() == "end"; });
    }

    std::vector<std::string> log;

Q_SIGNALS:
    void written();

private:
    void write(const std::string& line)
    {
        log.push_back(line);
        Q_EMIT written();
    }

    std::unique_ptr<StreamPump<int>> m_pump;
};

TEST(StreamPump, HandsOverTheNewestOfWhatArrivedAndThenTheEnd)
{
    Recorder recorder;
    recorder.pump(makeProgressStream<int>().second); // it was over before
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_THAT(std::exchange(recorder.log, {}), ElementsAre("end"));

    auto [sender, stream] = makeProgressStream<int>();
    recorder.pump(std::move(stream));
    std::jthread{[sender = std::move(sender)] {
        for (int record = 1; record <= 1000; ++record) {
            sender.send(record);
        }
    }}.join();
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_THAT(recorder.log, ElementsAre("1000", "end"));
}

TEST(StreamPump, NothingOfAReplacedStreamArrivesThoughItsWakeUpIsUnderWay)
{
    Recorder recorder;
    auto [lateSender, lateStream] = makeProgressStream<int>();
    recorder.pump(std::move(lateStream));
    lateSender.send(1); // its wake-up waits in the event queue
    auto [sender, stream] = makeProgressStream<int>();
    recorder.pump(std::move(stream));
    EXPECT_TRUE(lateSender.stopToken().stop_requested());
    lateSender.send(2);
    sender.send(3);
    {
        const auto gone = std::move(sender);
    }
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_THAT(recorder.log, ElementsAre("3", "end"));
}

TEST(Desktop, AnAnswerSaysWhatIsNoFolder)
{
    const TemporaryTree tree{folder("folder"), file("file", 1), link("to folder", "folder"),
                             link("lost", "x"), fifo("fifo")};
    const QString isNone = QStringLiteral("ce n’est pas un dossier.");
    for (const auto& [name, error] : {std::pair{"folder", QString{}},
                                      {"to folder", QString{}},
                                      {"file", isNone},
                                      {"fifo", isNone},
                                      {"lost", QStringLiteral("le dossier n’existe pas.")}}) {
        QObject context;
        std::optional<FolderChoice> choice;
        Desktop::examine(&context, tree.url(name), [&](const FolderChoice& answer) { choice = answer; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return choice.has_value(); }, 20'000));
        EXPECT_EQ(choice->has_value() ? QString{} : choice->error(), error) << name;
    }
}

TEST(Desktop, WithoutAFileManagerTheFolderIsOpenedAndARefusalIsSaid)
{
    TemporaryTree tree{file("Album é/photo.jpg", 1)};
    QStringList refusals;
    const QObject context;
    QObject::connect(&DesktopRefusals::shared(), &DesktopRefusals::refused, &context,
                     [&refusals](const QString& words) { refusals << words; });
    const ScopedVariable path{"PATH", tree.path("bin") + ":/usr/bin:/bin"};
    const std::string script = "#!/bin/sh\necho \"$1\" >>'" + tree.path("opened") + "'\n";
    tree.add(file("bin/xdg-open", script).withMode(0755));
    Desktop::reveal(tree.url("Album é/photo.jpg"));
    const std::string opened = tree.url("Album é").percentEncoded() + "\n";
    EXPECT_TRUE(QTest::qWaitFor([&] { return tree.content("opened") == opened; }, 20'000));
    EXPECT_TRUE(refusals.isEmpty());

    tree.add(file("other/xdg-open", script + "exit 3\n").withMode(0755));
    const ScopedVariable otherPath{"PATH", tree.path("other") + ":/usr/bin:/bin"};
    Desktop::reveal(tree.url("Album é/photo.jpg"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return refusals.size() == 1; }, 20'000));
    Desktop::open(tree.url("Album é/photo.jpg"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return refusals.size() == 2; }, 20'000));
    EXPECT_EQ(refusals, (QStringList{QStringLiteral("Aucun gestionnaire de fichiers n’a répondu."),
                                     QStringLiteral("Aucun programme ne peut ouvrir « photo.jpg ».")}));
}

TEST(Desktop, ATerminalOpensInTheFolderWhateverItsNameAndTheNextOneWhereItFails)
{
    const std::string odd = "-e $(touch pwned) 'é'\xff";
    TemporaryTree tree{folder(odd), folder("bin")};
    QStringList refusals;
    const QObject context;
    QObject::connect(&DesktopRefusals::shared(), &DesktopRefusals::refused, &context,
                     [&refusals](const QString& words) { refusals << words; });
    const std::string log = tree.path("log");
    const auto script = [&log](const char* name, const char* end) {
        return "#!/bin/sh\n{ printf '" + std::string{name} +
               "'; printf '<%s>' \"$@\" \"$(/bin/pwd -P)\"; } >>'" + log + "'\n" + end + "\n";
    };
    const ScopedVariable path{"PATH", tree.path("bin")};
    const ScopedVariable chosen{"TERMINAL", "mine --flag \"two words\""};
    const auto opens = [&](const std::string& expected) {
        std::remove(log.c_str());
        refusals.clear();
        Terminal::openIn(tree.url(odd));
        return QTest::qWaitFor([&] { return tree.content("log") == expected || !refusals.isEmpty(); },
                               20'000) &&
               refusals.isEmpty();
    };
    const std::string place = "<" + tree.path(odd) + ">";
    Terminal::openIn(tree.url(odd));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !refusals.isEmpty(); }, 20'000)) << "there is none";
    EXPECT_EQ(refusals, QStringList{QStringLiteral("Aucun terminal n’a pu être ouvert.")});
    tree.add(file("bin/xterm", script("xterm", "exit 0")).withMode(0755));
    EXPECT_TRUE(opens("xterm" + place));
    tree.add(file("bin/mine", script("mine", "exit 0")).withMode(0755));
    EXPECT_TRUE(opens("mine<--flag><two words>" + place));
    tree.add(file("bin/xdg-terminal-exec", script("xdg", "exit 1")).withMode(0755));
    EXPECT_TRUE(opens("xdg" + place + "mine<--flag><two words>" + place));
    EXPECT_EQ(tree.names(odd), std::vector<std::string>{}) << "no shell has read the name";
    Terminal::openIn(tree.url("gone"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !refusals.isEmpty(); }, 20'000));
    EXPECT_TRUE(refusals[0].endsWith(QStringLiteral("le dossier n’existe pas.")));
}

TEST(Desktop, AFolderOnADeadMountHoldsUpNothing)
{
    const TemporaryTree tree{folder("dead"), folder("local")};
    const TemporaryMount mount = TemporaryMount::silent(tree.path("dead"));
    if (!mount.isMounted()) {
        GTEST_SKIP() << mount.refusal();
    }
    QObject context;
    std::vector<std::string> answered;
    for (const char* const name : {"dead", "local"}) {
        Desktop::examine(&context, tree.url(name),
                         [&answered, name](const FolderChoice&) { answered.emplace_back(name); });
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !answered.empty(); }, 20'000));
    EXPECT_THAT(answered, testing::ElementsAre("local"));
}

} // namespace

} // namespace tallyroom

#include "BridgeTest.moc"

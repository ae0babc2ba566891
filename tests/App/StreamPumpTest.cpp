#include "Bridge/StreamPump.h"

#include "App/EventWait.h"

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

TEST(StreamPump, TellsOfTheEndOfAStreamThatWasOverBeforeIt)
{
    Recorder recorder;
    recorder.pump(makeProgressStream<int>().second);
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_THAT(recorder.log, ElementsAre("end"));
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

} // namespace

} // namespace tallyroom

#include "StreamPumpTest.moc"

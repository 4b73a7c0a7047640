// What every QTCaptureMovieFileOutput promises, in real and in virtual time.
#include "tests/session/SessionFixture.h"
#include "tests/support/FakeCapture.h"

namespace merro::test {
namespace {

using platform::MediaType;
using testing::ElementsAre;

template <typename World>
class MovieFileOutputContract : public SessionFixture<World> {
protected:
    /// Movies whose files are whole only when the test says so.
    void useSlowDisk() {
        this->framework = this->makeFramework(&this->recorders, platform::session::WhenFull::LoseFrame);
    }
};
TYPED_TEST_SUITE(MovieFileOutputContract, platform::Worlds, platform::WorldNames);

TYPED_TEST(MovieFileOutputContract, aRecordingStartedInTheCallbackBeginsWithTheSampleAtHand) {
    std::shared_ptr<platform::QTCaptureMovieFileOutput> output;
    output = this->addOutput("output", [&](int number) {
        if (number == 2)
            output->recordToOutputFileURL("A");
        if (number == 4)
            output->recordToOutputFileURL(std::nullopt);
    });
    this->start();
    for (int number = 1; number <= 4; ++number)
        this->device->send(number);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 1", "output 2", "start A", "A 2", "output 3",
                                                      "A 3", "output 4", "finish A", "finished A"));
}

TYPED_TEST(MovieFileOutputContract, theSampleAtASwitchIsInTheNewFileAndNotInTheOldOne) {
    std::shared_ptr<platform::QTCaptureMovieFileOutput> output;
    output = this->addOutput("output", [&](int number) {
        if (number == 1)
            output->recordToOutputFileURL("A");
        if (number == 2) {
            output->recordToOutputFileURL(std::nullopt); // as at a cut: end, then start
            output->recordToOutputFileURL("B");
        }
    });
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 1", "start A", "A 1", "output 2", "finish A",
                                                      "start B", "finished A", "B 2"));
}

TYPED_TEST(MovieFileOutputContract, aRecordingEndedBetweenSamplesIsToldWithTheNextSample) {
    const auto output = this->addOutput("output");
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    output->recordToOutputFileURL(std::nullopt);
    EXPECT_THAT(this->journal->entries(), ElementsAre("start A", "output 1", "A 1", "finish A"));
    this->journal->clear();
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("finished A", "output 2"));
}

TYPED_TEST(MovieFileOutputContract, aRecordingEndedBetweenSamplesIsToldWhenDeliveryStops) {
    const auto output = this->addOutput("output");
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    output->recordToOutputFileURL(std::nullopt);
    this->journal->clear();
    this->session->stopRunning();
    EXPECT_THAT(this->journal->entries(), ElementsAre("finished A"));
}

TYPED_TEST(MovieFileOutputContract, aCallbackThatEndsTheRecordingAndStopsTheSessionHearsOfTheFile) {
    std::shared_ptr<platform::QTCaptureMovieFileOutput> output;
    output = this->addOutput("output", [&, this](int number) {
        if (number == 2) {
            output->recordToOutputFileURL(std::nullopt);
            this->session->stopRunning();
        }
    });
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(),
                ElementsAre("start A", "output 1", "A 1", "output 2", "finish A", "finished A"));
}

TYPED_TEST(MovieFileOutputContract, aSwitchFromAnotherThreadDuringTheCallbackLeavesTheSampleInTheOldFile) {
    std::shared_ptr<platform::QTCaptureMovieFileOutput> output;
    output = this->addOutput("output", [&, this](int number) {
        if (number == 1)
            this->onOtherThread([&] { output->recordToOutputFileURL("B"); })();
    });
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("start A", "output 1", "A 1", "finish A", "start B",
                                                      "finished A", "output 2", "B 2"));
}

TYPED_TEST(MovieFileOutputContract, aRecordingEndedAfterTheSampleKeepsIt) {
    std::shared_ptr<platform::QTCaptureMovieFileOutput> output;
    output = this->addOutput("output", [&](int number) {
        if (number == 1) {
            output->recordToOutputFileURL("A");
            output->endRecordingAfterSample();
        }
    });
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(),
                ElementsAre("output 1", "start A", "A 1", "finish A", "finished A", "output 2"));
}

TYPED_TEST(MovieFileOutputContract,
           anEndThatAnotherThreadAskedForBeforeDoesNotHitTheFileThatTheCallbackStarts) {
    std::shared_ptr<platform::QTCaptureMovieFileOutput> output;
    output = this->addOutput("output", [&, this](int number) {
        if (number == 1) {
            this->onOtherThread([&] { output->endRecordingAfterSample(); })();
            output->recordToOutputFileURL("A");
        }
    });
    this->start();
    this->device->send(1);
    this->device->send(2);
    EXPECT_THAT(this->journal->entries(), ElementsAre("output 1", "start A", "A 1", "output 2", "A 2"));
}

TYPED_TEST(MovieFileOutputContract, betweenSamplesARecordingIsEndedAtOnce) {
    const auto output = this->addOutput("output");
    this->start();
    output->recordToOutputFileURL("A");
    output->endRecordingAfterSample();
    EXPECT_THAT(this->journal->entries(), ElementsAre("start A", "finish A"));
}

TYPED_TEST(MovieFileOutputContract, withASlowDiskTheFileIsToldWithTheFirstSampleAfterItIsWhole) {
    this->useSlowDisk();
    this->session = this->framework->makeSession();
    const auto output = this->addOutput("output");
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    output->recordToOutputFileURL("B");
    this->device->send(2);
    this->recorders.recorder("A")->end();
    this->device->send(3);
    EXPECT_THAT(this->journal->entries(), ElementsAre("start A", "output 1", "A 1", "finish A", "start B",
                                                      "output 2", "B 2", "finished A", "output 3", "B 3"));
}

TYPED_TEST(MovieFileOutputContract, aFileThatCannotGoOnAsksForAnotherOnce) {
    const auto output = this->framework->makeMovieFileOutput();
    auto delegate = this->journalDelegate("output");
    delegate.mustChangeOutputFile = [this](auto& asking, const std::string& path, const auto& error) {
        this->journal->add("change " + path + ": " + error->message);
        asking.recordToOutputFileURL("B");
    };
    output->setDelegate(delegate);
    this->session->addOutput(output);
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    this->recorders.recorder("A")->end(platform::Error{"disk full", {}});
    this->device->send(2);
    this->device->send(3);
    EXPECT_THAT(this->journal->entries(),
                ElementsAre("start A", "output 1", "A 1", "change A: disk full", "finish A", "start B",
                            "finished A: disk full", "output 2", "B 2", "output 3", "B 3"));
}

TYPED_TEST(MovieFileOutputContract, aBrokenFileThatNobodyChangesGoesOnCountingWhatIsLost) {
    const auto output = this->addOutput("output");
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    this->recorders.recorder("A")->end(platform::Error{"disk full", {}});
    this->device->send(2);
    this->device->send(3);
    EXPECT_EQ(this->recorders.recorder("A")->result().framesLost, 2);
}

TYPED_TEST(MovieFileOutputContract, aFileThatNeverTookAFrameAsksForNoOther) {
    const auto output = this->framework->makeMovieFileOutput();
    auto delegate = this->journalDelegate("output");
    delegate.mustChangeOutputFile = [this](auto&, const std::string&, const auto&) {
        this->journal->add("change");
    };
    output->setDelegate(delegate);
    this->session->addOutput(output);
    this->start();
    output->recordToOutputFileURL("A");
    this->recorders.recorder("A")->end(platform::Error{"no permission", {}});
    this->device->send(1);
    EXPECT_THAT(this->journal->entries(), ElementsAre("start A", "output 1", "A 1"));
}

TYPED_TEST(MovieFileOutputContract, withoutRecordersTheFirstRecordingTellsOneProblem) {
    this->framework = this->makeFramework(nullptr, platform::session::WhenFull::Wait);
    this->session = this->framework->makeSession();
    const auto output = this->addOutput("output");
    this->start();
    output->recordToOutputFileURL("A");
    this->device->send(1);
    output->recordToOutputFileURL("B");
    EXPECT_THAT(this->journal->entries(),
                ElementsAre("problem: \"A\" cannot be recorded because this program was built without movies",
                            "output 1"));
}

TYPED_TEST(MovieFileOutputContract, whatTheRecorderTellsReachesTheHost) {
    const auto output = this->addOutput("output");
    output->recordToOutputFileURL("A");
    const auto recorder = this->recorders.recorder("A");
    recorder->events.problem({"too slow", {}});
    recorder->events.framesLost(5);
    recorder->events.finished(recorder->result());
    EXPECT_THAT(this->journal->entries(),
                ElementsAre("start A", "problem: too slow", "lost 5", "recorded A"));
    EXPECT_EQ(this->framework->framesLost(), 5);
}

TYPED_TEST(MovieFileOutputContract, aRecordingIsFinishedWhenItsOutputGoes) {
    this->framework->makeMovieFileOutput()->recordToOutputFileURL("A");
    EXPECT_THAT(this->journal->entries(), ElementsAre("start A", "finish A"));
}

TYPED_TEST(MovieFileOutputContract, eachMovieTakesTheOptionsThatTheVideoConnectionHasThen) {
    const auto output = this->framework->makeMovieFileOutput();
    const auto connections = output->connections();
    ASSERT_EQ(connections.size(), 2U);
    EXPECT_EQ(connections[0]->mediaType(), MediaType::Video);
    EXPECT_EQ(connections[1]->mediaType(), MediaType::Sound);
    const auto picture = std::make_shared<NamedCompressionOptions>("picture");
    const auto sound = std::make_shared<NamedCompressionOptions>("sound");
    output->recordToOutputFileURL("A");
    EXPECT_EQ(this->recorders.lastOptions(), nullptr);
    output->setCompressionOptionsForConnection(picture, output->connections()[0]);
    output->setCompressionOptionsForConnection(sound, output->connections()[1]);
    output->recordToOutputFileURL("B");
    EXPECT_EQ(this->recorders.lastOptions(), picture);
}

} // namespace
} // namespace merro::test

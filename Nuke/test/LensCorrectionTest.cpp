#include "LensCorrection.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/lexical_cast.hpp>

#include "DDImage/Substitute/Graph.h"
#include "Exception/Exception.h"
#include "LensDistortionCorrection.h"
#include "Support/JsonRecord.h"
#include "Support/ShotFolder.h"
#include "Support/TestClip.h"
#include "Support/TestNode.h"
#include "Support/TextOfFile.h"

using namespace DD::Image;

namespace {

const char* const c_missingData = "There is some clip and correction file related data missing.";
const char* const c_noBrief =
    "An issue did occur, but the issue description could not be retrieved. Please contact the developer.";
const char* const c_noDetails =
    "An issue did occur, but the detailed issue description could not be retrieved. Please contact the developer.";

// A sanitizer sees two threads meet, and need not catch the moment at which that does harm.
#ifdef ORVEX_SANITIZED
constexpr int renders = 10000;
#else
constexpr int renders = 200000;
#endif

std::size_t count(const std::string& text, const std::string& piece) {
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + piece.size())) ++count;
    return count;
}

class LensCorrectionTest : public testing::Test {
protected:
    LensCorrectionTest() { graph.connect(node, 0, read); }

    bool validate(int width, int height, const Box& box) {
        clip->format = Format(width, height);
        clip->box = box;
        read->setSource(clip);
        return graph.validate(node);
    }
    bool validate() { return validate(64, 36, Box(0, 0, 64, 36)); }
    std::vector<int> box() const { return {node->x(), node->y(), node->r(), node->t()}; }
    std::vector<unsigned int> frame() const { return {node->frameWidth(), node->frameHeight()}; }
    ImagePlane plane() const { return ImagePlane(node->info().box(), true, Mask_RGBA); }
    std::string log() const { return Support::textOfFile(folder.path("log")); }

    ShotFolder folder;
    Graph graph;
    std::shared_ptr<TestClip> clip = std::make_shared<TestClip>(64, 36);
    Read* read = graph.createRead();
    TestNode* node = TestNode::create(graph, folder.path("log"));
};

} // namespace

// --- Inputs and what the node tells the host ---

TEST_F(LensCorrectionTest, HasTwoLabelledInputs) {
    EXPECT_EQ(node->inputs(), 2);
    EXPECT_STREQ(node->input_label(0, nullptr), "src");
    EXPECT_STREQ(node->input_label(1, nullptr), "plate");
    EXPECT_EQ(node->input_label(2, nullptr), nullptr);
}

TEST_F(LensCorrectionTest, TakesTheHostsPlaceholderForUnconnected) {
    EXPECT_TRUE(node->isImageInputConnected());
    EXPECT_FALSE(node->isMetadataInputConnected());
    EXPECT_EQ(node->imageInput(), read);
    EXPECT_EQ(node->metadataInput(), static_cast<const Op*>(node)->default_input(1));
    graph.connect(node, 1, read);
    graph.connect(node, 0, nullptr);
    EXPECT_FALSE(node->isImageInputConnected());
    EXPECT_TRUE(node->isMetadataInputConnected());
}

TEST_F(LensCorrectionTest, WantsWholePackedPlanes) {
    EXPECT_EQ(static_cast<int>(node->packedPreference()), 1);
    EXPECT_TRUE(node->renderFullPlanes());
}

TEST_F(LensCorrectionTest, RequestsTheSameFromTheImage) {
    RequestOutput requests;
    node->getRequests(Box(1, 2, 3, 4), Mask_RGB, 5, requests);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].op, read);
    EXPECT_EQ(requests[0].box, Box(1, 2, 3, 4));
    EXPECT_EQ(requests[0].channels, ChannelSet(Mask_RGB));
    EXPECT_EQ(requests[0].count, 5);
}

TEST_F(LensCorrectionTest, HasAnotherHashOnEveryEvaluation) {
    validate();
    const U64 first = node->hash().value();
    graph.validate(node);
    EXPECT_NE(node->hash().value(), first);
}

TEST_F(LensCorrectionTest, HashesTheLocalTimeInMicrosecondsWithItsTerminatingZero) {
    using namespace boost::posix_time;
    const auto now = [] {
        return (microsec_clock::local_time() - ptime(boost::gregorian::date(1970, 1, 1))).total_microseconds();
    };
    const std::int64_t before = now();
    Hash hash;
    node->append(hash);
    const std::int64_t after = now();
    bool isFound = false;
    for (std::int64_t time = before; time <= after + 1 && !isFound; ++time) {
        const std::string text = std::to_string(time);
        Hash expected;
        expected.append(text.c_str(), text.length() + 1);
        isFound = hash == expected;
    }
    EXPECT_TRUE(isFound);
}

// --- Frame size and box ---

TEST_F(LensCorrectionTest, KeepsTheFormatWithoutOverhang) {
    EXPECT_TRUE(validate(2048, 1152, Box(0, 0, 2048, 1152)));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{2048, 1152}));
    EXPECT_EQ(box(), (std::vector<int>{0, 0, 2048, 1152}));
}

TEST_F(LensCorrectionTest, GrowsWithTheFormatsAspectRatioToHoldTheBox) {
    EXPECT_TRUE(validate(2048, 1152, Box(-64, 0, 2112, 1152)));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{2176, 1224}));
    EXPECT_EQ(box(), (std::vector<int>{-64, -36, 2112, 1188}));
}

TEST_F(LensCorrectionTest, GrowsOnBothSidesForAnOverhangOnOne) {
    EXPECT_TRUE(validate(2048, 1152, Box(0, 0, 2048, 1192)));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{2190, 1232})) << "1152 + 2 * 40 rows, 1232 * 2048 / 1152 columns";
    EXPECT_EQ(box(), (std::vector<int>{-71, -40, 2119, 1192}));
}

TEST_F(LensCorrectionTest, RoundsHalfPixelsOfTheBoxAwayFromZero) {
    EXPECT_TRUE(validate(2048, 1152, Box(0, 0, 2048, 1190)));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{2183, 1228}));
    EXPECT_EQ(box(), (std::vector<int>{-68, -38, 2116, 1190})) << "67.5 columns on each side";
}

TEST_F(LensCorrectionTest, MeasuresTheOverhangFromTheEdgesOfAFormatWithinItsFile) {
    clip->format = Format(2048, 1152, 0, 16, 2048, 1136);
    clip->box = Box(0, 16, 2048, 1136);
    read->setSource(clip);
    EXPECT_TRUE(graph.validate(node));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{2048, 1120}));
    EXPECT_EQ(box(), (std::vector<int>{0, 0, 2048, 1120}));
    clip->box = Box(-64, 16, 2112, 1136);
    read->setSource(clip);
    EXPECT_TRUE(graph.validate(node));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{2176, 1190})) << "2176 * 1120 / 2048 rows";
    EXPECT_EQ(box(), (std::vector<int>{-64, -35, 2112, 1155}));
}

TEST_F(LensCorrectionTest, KeepsTheFormatsHeightForABoxThatIsOnlyNarrower) {
    EXPECT_TRUE(validate(100, 100, Box(10, 0, 90, 100)));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{100, 100}));
}

TEST_F(LensCorrectionTest, ShrinksToABoxInsideTheFormat) {
    EXPECT_TRUE(validate(100, 100, Box(10, 20, 90, 80)));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{80, 80}));
    EXPECT_EQ(box(), (std::vector<int>{10, 10, 90, 90}));
}

TEST_F(LensCorrectionTest, SurvivesABoxFarOutsideTheFormat) {
    EXPECT_FALSE(validate(100, 100, Box(-2147483647, 0, 2147483647, 100)));
    EXPECT_NE(graph.errorText(node).find("Validating the frame failed: Error in function boost::math::round"),
              std::string::npos)
        << graph.errorText(node);
}

TEST_F(LensCorrectionTest, TakesOverTheImagesInfo) {
    clip->channels = Mask_RGB;
    validate();
    EXPECT_EQ(node->channels(), ChannelSet(Mask_RGB));
    EXPECT_EQ(node->format().w(), 64);
    EXPECT_EQ(node->info().last_frame(), 100);
}

// --- Aborting ---

TEST_F(LensCorrectionTest, AbortsValidationSilentlyWithoutAnImage) {
    graph.connect(node, 0, nullptr);
    EXPECT_FALSE(graph.validate(node));
    EXPECT_TRUE(node->aborted());
    EXPECT_EQ(graph.errorText(node), "");
}

TEST_F(LensCorrectionTest, AbortsRenderingSilentlyWithoutAnImage) {
    validate();
    graph.connect(node, 0, nullptr);
    ImagePlane plane = this->plane();
    node->renderStripe(plane);
    EXPECT_TRUE(node->aborted());
    EXPECT_EQ(plane.usage(), 0u);
    EXPECT_EQ(graph.errorText(node), "");
}

TEST_F(LensCorrectionTest, ShowsNoErrorOfACoreThatFailsAfterAnAbort) {
    node->dataSource().wantsDistortion = true;
    node->dataSource().onQuestion = [this] { node->abort(); };
    EXPECT_FALSE(validate());
    EXPECT_EQ(graph.errorText(node), "");
    EXPECT_EQ(log(), "");
}

TEST_F(LensCorrectionTest, AsksNothingBehindAnInputInError) {
    int questions = 0;
    node->dataSource().onQuestion = [&] { ++questions; };
    read->setSource(nullptr);
    EXPECT_FALSE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node), graph.errorText(read));
    EXPECT_EQ(frame(), (std::vector<unsigned int>{0, 0}));
    EXPECT_EQ(questions, 0);
    EXPECT_EQ(log(), "");
}

TEST_F(LensCorrectionTest, AsksNothingWhenAbortedWhileTheImageIsFetched) {
    validate();
    ImagePlane plane = this->plane();
    int questions = 0;
    node->dataSource().onQuestion = [&] { ++questions; };
    clip->pixel = [this](int, int, Channel) {
        node->abort();
        return 0.5f;
    };
    node->renderStripe(plane);
    EXPECT_EQ(clip->fetchCount, 1);
    EXPECT_EQ(questions, 0);
}

TEST_F(LensCorrectionTest, LeavesAPlaneThatNothingFilledAsItIs) {
    class EmptyClip : public TestClip {
    public:
        EmptyClip() : TestClip(64, 36) {}
        void fillPlane(double, ImagePlane& plane) override {
            RefCountedFloatBuffer none;
            plane.setMemory(none);
        }
    };
    clip = std::make_shared<EmptyClip>();
    validate();
    ImagePlane plane = this->plane();
    node->renderStripe(plane);
    EXPECT_EQ(plane.usage(), 0u);
    EXPECT_EQ(graph.errorText(node), "");
}

TEST_F(LensCorrectionTest, FetchesNothingOnceAborted) {
    validate();
    ImagePlane plane = this->plane();
    node->abort();
    node->renderStripe(plane);
    EXPECT_EQ(clip->fetchCount, 0);
}

TEST_F(LensCorrectionTest, KeepsTheFetchedPlaneWhenAbortedWhileRendering) {
    validate();
    ImagePlane plane = this->plane();
    node->dataSource().wantsDistortion = true;
    node->dataSource().onQuestion = [this] { node->abort(); };
    node->renderStripe(plane);
    EXPECT_EQ(graph.errorText(node), "");
    EXPECT_EQ(plane.at(0, 0, 0), 0.5f);
}

// --- Errors ---

TEST_F(LensCorrectionTest, ShowsTheCoresBriefTextWhenValidationFails) {
    node->dataSource().wantsDistortion = true;
    EXPECT_FALSE(validate());
    EXPECT_EQ(graph.errorText(node), c_missingData);
}

TEST_F(LensCorrectionTest, LogsTheCoresDetailedText) {
    node->dataSource().wantsDistortion = true;
    validate();
    const std::string text = log();
    ASSERT_GT(text.length(), 28u);
    EXPECT_EQ(text.substr(26), std::string(": ") + c_missingData + "\n\n") << "behind the time stamp";
}

TEST_F(LensCorrectionTest, LogsNothingWhileNothingFails) {
    EXPECT_TRUE(validate());
    EXPECT_EQ(log(), "");
}

TEST_F(LensCorrectionTest, KeepsTheFramesBoxWhenTheCoreFails) {
    node->dataSource().wantsDistortion = true;
    validate(2048, 1152, Box(-64, 0, 2112, 1152));
    EXPECT_EQ(box(), (std::vector<int>{-64, -36, 2112, 1188}));
}

TEST_F(LensCorrectionTest, RendersNothingAfterAFailedValidation) {
    node->dataSource().wantsDistortion = true;
    validate();
    ImagePlane plane = this->plane();
    EXPECT_FALSE(graph.fetch(node, plane));
    EXPECT_EQ(clip->fetchCount, 0);
}

TEST_F(LensCorrectionTest, RendersAPlaneInSpiteOfAnErrorShownSinceValidation) {
    validate();
    node->reportCoreError();
    int questions = 0;
    node->dataSource().onQuestion = [&] { ++questions; };
    ImagePlane plane = this->plane();
    node->renderStripe(plane);
    EXPECT_GT(questions, 0);
}

TEST_F(LensCorrectionTest, ShowsTheCoresBriefTextWhenRenderingFails) {
    validate();
    node->dataSource().wantsDistortion = true;
    ImagePlane plane = this->plane();
    EXPECT_FALSE(graph.fetch(node, plane));
    EXPECT_EQ(graph.errorText(node), c_missingData);
    EXPECT_EQ(plane.at(0, 0, 0), 0.5f) << "the image as fetched";
}

TEST_F(LensCorrectionTest, ValidatesAgainOnceTheCauseIsGone) {
    node->dataSource().wantsDistortion = true;
    validate();
    node->dataSource().wantsDistortion = false;
    EXPECT_TRUE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node), "");
}

TEST_F(LensCorrectionTest, SaysSoWhenTheCoreHasNoErrorText) {
    validate();
    node->reportCoreError();
    EXPECT_EQ(graph.errorText(node), c_noBrief);
    EXPECT_NE(log().find(std::string(": ") + c_noDetails + "\n"), std::string::npos);
}

TEST_F(LensCorrectionTest, ShowsABriefTextOfUpTo4095Characters) {
    std::string text(4095, 'x');
    node->dataSource().onQuestion = [&] { throw Exception(text); };
    validate();
    EXPECT_EQ(graph.errorText(node), text);
    text += 'x';
    validate();
    EXPECT_EQ(graph.errorText(node), c_noBrief);
    EXPECT_EQ(node->lastErrorDetails(), text + "\n");
}

TEST_F(LensCorrectionTest, LogsADetailedTextOfUpTo16383Characters) {
    std::string details(16383 - std::string("brief\n\n").length(), 'x');
    node->dataSource().onQuestion = [&] { throw Exception("brief", details); };
    validate();
    EXPECT_EQ(node->lastErrorDetails(), "brief\n" + details + "\n");
    details += 'x';
    validate();
    EXPECT_EQ(node->lastErrorDetails(), c_noDetails);
    EXPECT_EQ(graph.errorText(node), "brief");
}

TEST_F(LensCorrectionTest, RetrievesTheCoresTexts) {
    node->dataSource().wantsDistortion = true;
    validate();
    std::string brief;
    std::string detailed;
    node->retrieveCoreErrorDescription(brief, detailed);
    EXPECT_EQ(brief, c_missingData);
    EXPECT_EQ(detailed, std::string(c_missingData) + "\n");
}

TEST_F(LensCorrectionTest, TellsEveryFailureOfAFrameWhileThePanelIsUpdated) {
    const std::string failure = "There is some frame related data missing.\n\n";
    const std::string failureOfPanel = "Metadata for the frame is not available.\nJSON String: \"{]\"\n\n";
    const std::thread::id panelsThread = std::this_thread::get_id();
    std::size_t panelFailures = 0;
    bool isPanelToFail = false;
    node->dataSource().record = [&] {
        return std::string(std::this_thread::get_id() == panelsThread && isPanelToFail ? "{]" : Support::jsonRecord);
    };
    node->dataSource().wantsDistortion = true;
    graph.connect(node, 1, read);
    graph.openPanel(node);
    validate(2, 2, Box(0, 0, 2, 2));
    std::atomic<bool> isDone{false};
    std::thread rendering([&] {
        ImagePlane plane = this->plane();
        for (int i = 0; i < renders; ++i) node->renderStripe(plane);
        isDone = true;
    });
    for (int updates = 0; !isDone; ++updates) {
        isPanelToFail = updates % 100 == 99;
        if (isPanelToFail) ++panelFailures;
        graph.updateUI(node);
    }
    rendering.join();
    const std::string text = log();
    EXPECT_EQ(count(text, failure), renders + 1u) << "and one of validation";
    EXPECT_EQ(count(text, failureOfPanel), panelFailures);
    EXPECT_EQ(count(text, ": "), renders + 1u + 2u * panelFailures) << "something else was logged";
}

namespace {

struct Failure {
    const char* name;
    std::function<void()> fail;
    std::string text;
};

void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.name; }

class LensCorrectionFailure : public LensCorrectionTest, public testing::WithParamInterface<Failure> {};

std::string fileSystemErrorText() {
    return boost::filesystem::filesystem_error(
               "listing", "/a", boost::system::errc::make_error_code(boost::system::errc::permission_denied))
        .what();
}

} // namespace

TEST_P(LensCorrectionFailure, OfAnotherKindIsShownAndLoggedWithWhatWasBeingDone) {
    node->dataSource().onQuestion = GetParam().fail;
    EXPECT_FALSE(validate());
    EXPECT_EQ(graph.errorText(node), "Validating the frame failed: " + GetParam().text);
    EXPECT_NE(log().find(": Validating the frame failed: " + GetParam().text + "\n"), std::string::npos);
}

TEST_P(LensCorrectionFailure, OfAnotherKindIsShownWhileRendering) {
    validate();
    node->dataSource().onQuestion = GetParam().fail;
    ImagePlane plane = this->plane();
    EXPECT_FALSE(graph.fetch(node, plane));
    EXPECT_EQ(graph.errorText(node), "Rendering the frame failed: " + GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, LensCorrectionFailure,
    testing::Values(Failure{"BadCast", [] { boost::lexical_cast<int>("x"); },
                            "bad lexical cast: source type value could not be interpreted as target"},
                    Failure{"FileSystem",
                            [] {
                                throw boost::filesystem::filesystem_error(
                                    "listing", "/a",
                                    boost::system::errc::make_error_code(boost::system::errc::permission_denied));
                            },
                            fileSystemErrorText()},
                    Failure{"Memory", [] { throw std::bad_alloc(); }, "std::bad_alloc"},
                    Failure{"Percent", [] { throw std::runtime_error("100 %s of %n"); }, "100 %s of %n"},
                    Failure{"Unknown", [] { throw 1; }, "Unknown exception."}),
    [](const testing::TestParamInfo<Failure>& failure) { return std::string(failure.param.name); });

TEST_F(LensCorrectionTest, HasNoDetailsOfAFailureAtFirst) {
    validate();
    EXPECT_EQ(node->lastErrorDetails(), "");
}

TEST_F(LensCorrectionTest, KeepsTheDetailsOfTheCoresFailure) {
    node->dataSource().wantsDistortion = true;
    EXPECT_FALSE(validate());
    EXPECT_EQ(node->lastErrorDetails(), std::string(c_missingData) + "\n");
}

TEST_F(LensCorrectionTest, KeepsTheDetailsOfAnException) {
    node->dataSource().onQuestion = [] { throw std::runtime_error("disk on fire"); };
    EXPECT_FALSE(validate());
    EXPECT_EQ(node->lastErrorDetails(), graph.errorText(node) + "\n");
}

TEST_F(LensCorrectionTest, KeepsTheDetailsOfTheLastFailureAfterASuccess) {
    node->dataSource().wantsDistortion = true;
    EXPECT_FALSE(validate());
    node->dataSource().wantsDistortion = false;
    EXPECT_TRUE(validate());
    EXPECT_EQ(node->lastErrorDetails(), std::string(c_missingData) + "\n");
}

// What the facade does once a device is there. CoreTest.cpp holds what comes before.

#include <gmock/gmock.h>

#include <atomic>
#include <boost/algorithm/string/replace.hpp>
#include <limits>
#include <list>
#include <random>
#include <thread>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
#include "Core/Image.h"
#include "Support/CorrectionFileText.h"
#include "Support/JsonRecord.h"
#include "Support/OpenCLDevice.h"
#include "Support/TemporaryFolder.h"

using Support::bytes;
using Support::frameOf;
using Support::Image;
using Support::noise;
using testing::Each;
using testing::HasSubstr;

namespace {

constexpr std::uint32_t imageWidth = 64;
constexpr std::uint32_t imageHeight = 34; // of 4096 × 2160

constexpr Core::ShadingCorrectionParameter image{false, false};
constexpr Core::ShadingCorrectionParameter shadingMap{false, true};
constexpr Core::DistortionCorrectionParameter undistort{false, false};
constexpr Core::DistortionCorrectionParameter distortionMap{false, true};

class CoreRenderTest : public OnOpenCLDevice {
protected:
    Support::HostFrame m_host;
    Core::Core m_core{std::make_unique<Support::FakeCoreDataSource>(m_host)};
    const Image m_input = noise(imageWidth, imageHeight, 1);

    CoreRenderTest() {
        m_host.frameMetadata = Support::jsonRecord;
        m_host.frameData = frameOf(imageWidth, imageHeight);
    }

    std::string brief() const { return Support::briefErrorOf(m_core); }
    std::string detailed() const { return Support::detailedErrorOf(m_core); }

    void given(std::optional<Core::ShadingCorrectionParameter> shading,
               std::optional<Core::DistortionCorrectionParameter> distortion) {
        m_host.shading = shading;
        m_host.distortion = distortion;
    }

    void givenRecordWith(const std::string& part, const std::string& replacement) {
        m_host.frameMetadata = boost::replace_first_copy(Support::jsonRecord, part, replacement);
    }

    Image rendered(const float* input) {
        Image output(m_input.size(), -1.0f);
        EXPECT_TRUE(m_core.render(input, output.data(), bytes(output))) << detailed();
        return output;
    }

    void expectRenderFails(const float* input) {
        Image output(m_input.size(), -1.0f);
        EXPECT_FALSE(m_core.render(input, output.data(), bytes(output)));
        EXPECT_THAT(output, Each(-1.0f)) << "the output is untouched";
    }
};

} // namespace

TEST_F(CoreRenderTest, AcceptsAFrameOnePixelOffTheRecordingFormatsAspectRatio) {
    given({}, undistort);
    m_host.recordingFormat = {24.0f, 13.5f, 1920, 1080, 13.77f};
    for (const std::uint32_t height : {1079u, 1080u, 1081u}) {
        m_host.frameData = frameOf(1920, height);
        unsigned int width = 0;
        unsigned int grown = 0;
        EXPECT_TRUE(m_core.frameSize(width, grown)) << detailed();
    }
}

TEST_F(CoreRenderTest, ShadingKeepsTheFramesSize) {
    given(image, {});
    unsigned int width = 0;
    unsigned int height = 0;
    ASSERT_TRUE(m_core.frameSize(width, height)) << detailed();
    EXPECT_EQ(width, imageWidth);
    EXPECT_EQ(height, imageHeight);
}

TEST_F(CoreRenderTest, HasNoFrameSizeForBothCorrections) {
    given(image, undistort);
    unsigned int width = 7;
    unsigned int height = 8;
    EXPECT_FALSE(m_core.frameSize(width, height));
    EXPECT_EQ(detailed(),
              "It is not possible to calculate the frame size for both shading and distortion correction.\n");
    EXPECT_EQ(width, 7u);
    EXPECT_EQ(height, 8u);
}

TEST_F(CoreRenderTest, RendersShadingFirstAndDistortionSecond) {
    given(image, {});
    const Image shaded = rendered(m_input.data());
    given({}, undistort);
    const Image expected = rendered(shaded.data());
    given(image, undistort);
    EXPECT_EQ(rendered(m_input.data()), expected);
    EXPECT_NE(expected, shaded);
}

TEST_F(CoreRenderTest, DistortsAShadingMap) {
    given(shadingMap, {});
    const Image map = rendered(nullptr);
    given({}, undistort);
    const Image expected = rendered(map.data());
    given(shadingMap, undistort);
    EXPECT_EQ(rendered(nullptr), expected);
}

TEST_F(CoreRenderTest, GeneratesNoSingleMapForBothCorrections) {
    given(shadingMap, distortionMap);
    for (const float* input : {static_cast<const float*>(nullptr), m_input.data()}) {
        expectRenderFails(input);
        EXPECT_EQ(detailed(),
                  "It is not possible to generate a single map for both shading and distortion correction.\n");
    }
}

TEST_F(CoreRenderTest, GeneratesNoDisplacementMapFromAShadedImage) {
    given(image, distortionMap);
    expectRenderFails(nullptr);
    EXPECT_EQ(detailed(), "It is not possible to generate a single map for both shading and distortion correction.\n");
}

TEST_F(CoreRenderTest, RejectsAnInputForAMap) {
    for (const bool isShading : {true, false}) {
        if (isShading) {
            given(shadingMap, {});
        } else {
            given({}, distortionMap);
        }
        expectRenderFails(m_input.data());
        EXPECT_EQ(detailed(), "Input buffer is required to be set to nullptr whenever map rendering is requested.\n");
    }
}

TEST_F(CoreRenderTest, RejectsAnInputForADisplacementMapBesideAShadedImage) {
    given(image, distortionMap);
    expectRenderFails(m_input.data());
    EXPECT_EQ(detailed(), "Input buffer is required to be set to nullptr whenever map rendering is requested.\n");
}

TEST_F(CoreRenderTest, GivesTheDisplacementMapOfTheFrame) {
    given({}, distortionMap);
    const Image map = rendered(nullptr);
    const std::size_t last = map.size() - 4;
    EXPECT_EQ(map[last], 63.0f / 64.0f);
    EXPECT_EQ(map[last + 1], 33.0f / 34.0f);
    EXPECT_EQ(map[last + 2], 0.0f);
    EXPECT_EQ(map[last + 3], 1.0f);
}

TEST_F(CoreRenderTest, RejectsABufferThatIsSmallerThanTheFrame) {
    given(image, {});
    Image output(m_input.size() - 1, -1.0f);
    EXPECT_FALSE(m_core.render(m_input.data(), output.data(), bytes(output)));
    EXPECT_EQ(detailed(), "Image buffer is smaller than the current frame.\nData Size: 34812 bytes\n");
}

TEST_F(CoreRenderTest, AddingTheShadingThatWasRemovedGivesTheImageBack) {
    given(image, {});
    const Image removed = rendered(m_input.data());
    m_host.shading->addShading = true;
    const Image added = rendered(removed.data());
    for (std::size_t i = 0; i < added.size(); ++i) {
        ASSERT_NEAR(added[i], m_input[i], 1e-6f) << "a few roundings of values up to 1.3";
    }
}

TEST_F(CoreRenderTest, PrefersTheUsersRecordingFormat) {
    given(shadingMap, {});
    const Image implied = rendered(nullptr);
    m_host.recordingFormat = {48.0f, 25.3125f, 4096, 2160, 7.5f};
    const Image chosen = rendered(nullptr);
    // Half the radius sees only the lens's inner half: its corner is what was half-way out before.
    EXPECT_LT(chosen[0], implied[0]);
    EXPECT_NEAR(chosen[0], 100.0f / 95.5f, 5e-3f) << "7.5 mm, half a pixel inside the corner";
}

TEST_F(CoreRenderTest, OverscanReachesFurtherOut) {
    given(shadingMap, {});
    m_host.recordingFormat = {24.0f, 12.65625f, 4096, 2160, 10.0f};
    const Image plain = rendered(nullptr);
    m_host.frameData->overscan = 50.0f;
    const Image overscan = rendered(nullptr);
    EXPECT_NEAR(plain[0], 100.0f / 92.0f, 1e-2f) << "10 mm, half a pixel inside the corner";
    EXPECT_NEAR(overscan[0], 100.0f / 82.0f, 1e-2f) << "15 mm";
}

TEST_F(CoreRenderTest, RejectsAnOverscanThatIsNotFinite) {
    given(image, {});
    m_host.frameData->overscan = std::numeric_limits<float>::infinity();
    expectRenderFails(m_input.data());
    EXPECT_EQ(
        detailed(),
        "There is no valid image radius available for the current frame.\nImage Radius: inf mm\nOverscan: inf %\n");
}

TEST_F(CoreRenderTest, RejectsAnOverscanThatLeavesNoRadius) {
    given({}, undistort);
    m_host.frameData->overscan = -100.0f;
    unsigned int width = 0;
    unsigned int height = 0;
    EXPECT_FALSE(m_core.frameSize(width, height));
    EXPECT_THAT(brief(), HasSubstr("are invalid and need to be greater than zero."));
}

TEST_F(CoreRenderTest, ReportsHeightsThatOutnumberTheShadingsWithBothLists) {
    given(image, {});
    givenRecordWith("100, 99.5, ", "99.5, ");
    expectRenderFails(m_input.data());
    EXPECT_EQ(detailed(),
              "Calculation of the polynomial coefficients did fail.\nX Vector: 0 2.5 5 7.5 10 12.5 15\n"
              "Y Vector: 99.5 98 95.5 92 87.5 82\n");
}

TEST_F(CoreRenderTest, ReportsDistortionsThatOutnumberTheHeightsWithBothLists) {
    given({}, undistort);
    givenRecordWith("[0, 2.5, 5,", "[0, 5,");
    expectRenderFails(m_input.data());
    EXPECT_EQ(detailed(),
              "Calculation of the polynomial coefficients did fail.\nX Vector: 0 5 7.5 10 12.5 15\n"
              "Y Vector: 0 -0.5 -2 -4.5 -8 -12.5 -18\n");
}

TEST_F(CoreRenderTest, ReportsEqualHeights) {
    given(image, {});
    givenRecordWith("7.5, 10", "10, 10");
    expectRenderFails(m_input.data());
    EXPECT_EQ(brief(), "Calculation of the polynomial coefficients did fail.");
}

TEST_F(CoreRenderTest, SurvivesAnAbsurdLens) {
    given(image, undistort);
    for (const char* heights : {"[0, 1, 2, 3, 4, 5, 5.0000005]", "[1e-30, 2e-30, 3e-30, 4e-30, 5e-30, 6e-30, 7e-30]",
                                "[1e30, 2e30, 3e30, 4e30, 5e30, 6e30, 7e30]", "[-1, -2, -3, -4, -5, -6, -7]"}) {
        givenRecordWith("[0, 2.5, 5, 7.5, 10, 12.5, 15]", heights);
        Image output(m_input.size());
        const bool isRendered = m_core.render(m_input.data(), output.data(), bytes(output));
        EXPECT_EQ(isRendered, brief() == "no error") << heights;
        m_host.shading.reset();
        unsigned int width = 0;
        unsigned int height = 0;
        const bool isSized = m_core.frameSize(width, height);
        EXPECT_EQ(isSized, brief() == "no error") << heights;
    }
}

TEST_F(CoreRenderTest, RendersAgainAfterAFailure) {
    given(image, {});
    const Image expected = rendered(m_input.data());
    m_host.frameMetadata.reset();
    expectRenderFails(m_input.data());
    m_host.frameMetadata = Support::jsonRecord;
    EXPECT_EQ(rendered(m_input.data()), expected);
}

TEST_F(CoreRenderTest, TakesEveryFramesOwnRecord) {
    const Support::TemporaryFolder folder;
    m_host.correctionFilePath = folder.write(
        "A.olcf", Support::CorrectionFileText()
                      .withFrameLine("0;0,3,6,9,12,15,30;100,100,100,100,100,100,100;0,0,0,0,0,0,0;;;;;;01.00.00.00")
                      .withFrameLine("5;0,3,6,9,12,15,30;50,50,50,50,50,50,50;0,0,0,0,0,0,0;;;;;;01.00.00.05")
                      .string());
    m_host.clipFileName = "A001C002.mov";
    given(shadingMap, {});
    for (const std::uint32_t frameNumber : {0u, 4u, 5u, 99u}) {
        m_host.frameData->frameNumber = frameNumber;
        EXPECT_NEAR(rendered(nullptr)[0], frameNumber < 5 ? 1.0f : 2.0f, 1e-5f)
            << frameNumber << ": rounding of a fit through constant values";
    }
}

namespace {

/// A node: its host's answers, its facade, what it is to render and what comes of it when it is alone.
struct Node {
    Support::HostFrame host;
    std::unique_ptr<Core::Core> core =
        std::make_unique<Core::Core>(std::make_unique<Support::FakeCoreDataSource>(host));
    Image input;
    Image expected;
    std::string expectedError;

    bool succeeds() const { return expectedError == "no error"; }

    Image renderedNow(bool& succeeded) {
        Image output(input.size(), -1.0f);
        succeeded = core->render(input.data(), output.data(), bytes(output));
        return output;
    }
};

class CoreThreadsTest : public OnOpenCLDevice {
protected:
    const Support::TemporaryFolder m_folder;
    std::list<Node> m_nodes;

    static constexpr int threadCount = 6;
    static constexpr int rounds = 200; // what can slip between two locks does so rarely

    /// Different clips, sizes and corrections; every fifth node fails.
    void givenNodes(int count) {
        for (int i = 0; i < count; ++i) {
            Node& node = m_nodes.emplace_back();
            const auto width = static_cast<std::uint32_t>(48 + 16 * i);
            const std::uint32_t height = i % 5 == 4 ? width / 2 + 9 : width / 2;
            node.host.frameData = frameOf(width, height);
            node.host.recordingFormat = {24.0f, 12.0f, 2000, 1000, 10.0f + static_cast<float>(i)};
            if (i % 2 == 0) {
                node.host.frameMetadata =
                    boost::replace_first_copy(Support::jsonRecord, "-18", std::to_string(-i - 18));
            } else {
                node.host.clipFileName = "A001C002.mov";
                node.host.correctionFilePath = m_folder.write(
                    std::to_string(i) + ".olcf", Support::CorrectionFileText().withFrame(0, "01.00.00.00").string());
            }
            if (i % 3 != 0) node.host.shading = Core::ShadingCorrectionParameter{i % 4 == 0, false};
            if (i % 3 != 1) node.host.distortion = Core::DistortionCorrectionParameter{i % 4 == 1, false};
            node.input = noise(width, height, static_cast<std::uint32_t>(i));
            bool succeeded = false;
            node.expected = node.renderedNow(succeeded);
            node.expectedError = Support::briefErrorOf(*node.core);
        }
    }

    /// Lets every thread render nodes of its choice; answers how many frames were not as they are alone.
    template <typename Choice>
    int wrongFrames(Choice choice) {
        std::atomic<int> wrong{0};
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([this, thread, choice, &wrong] {
                for (int round = 0; round < rounds; ++round) {
                    Node& node = choice(m_nodes, thread, round);
                    bool succeeded = false;
                    const Image output = node.renderedNow(succeeded);
                    if (succeeded != node.succeeds() || output != node.expected) ++wrong;
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        return wrong;
    }
};

} // namespace

TEST_F(CoreThreadsTest, EachNodeRendersItsOwnFrameWhenManyRenderAtOnce) {
    givenNodes(12);
    ASSERT_TRUE(m_nodes.front().succeeds()) << m_nodes.front().expectedError;
    EXPECT_EQ(wrongFrames([](std::list<Node>& nodes, int thread, int round) -> Node& {
                  return *std::next(nodes.begin(), (thread * 2 + round % 2) % 12);
              }),
              0);
    for (const Node& node : m_nodes) EXPECT_EQ(Support::briefErrorOf(*node.core), node.expectedError);
}

TEST_F(CoreThreadsTest, SeveralThreadsUseTheSameNodes) {
    givenNodes(6);
    EXPECT_EQ(wrongFrames([](std::list<Node>& nodes, int thread, int round) -> Node& {
                  return *std::next(nodes.begin(), (thread + round * 5) % 6);
              }),
              0);
}

TEST_F(CoreThreadsTest, AllThreadsUseOneNode) {
    givenNodes(3);
    EXPECT_EQ(wrongFrames([](std::list<Node>& nodes, int, int) -> Node& { return nodes.back(); }), 0);
}

TEST_F(CoreThreadsTest, SizesAreRightWhileOthersRender) {
    givenNodes(12);
    std::atomic<bool> done{false};
    Node& sized = *std::next(m_nodes.begin(), 6); // distortion only
    unsigned int expectedWidth = 0;
    unsigned int expectedHeight = 0;
    ASSERT_TRUE(sized.core->frameSize(expectedWidth, expectedHeight)) << Support::detailedErrorOf(*sized.core);
    int wrong = 0;
    std::thread sizing([&] {
        do {
            unsigned int width = 0;
            unsigned int height = 0;
            if (!sized.core->frameSize(width, height) || width != expectedWidth || height != expectedHeight) ++wrong;
        } while (!done);
    });
    wrongFrames([](std::list<Node>& nodes, int thread, int) -> Node& { return *std::next(nodes.begin(), thread); });
    done = true;
    sizing.join();
    EXPECT_EQ(wrong, 0);
}

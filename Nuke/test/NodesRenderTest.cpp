#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "LensDistortionCorrection.h"
#include "LensShadingCorrection.h"
#include "Support/CorrectionFile.h"
#include "Support/ShotFolder.h"
#include "Support/TestClip.h"
#include "Support/TextOfFile.h"

using namespace DD::Image;

namespace {

/// Single precision over a fit, a polynomial and a division.
constexpr float c_tolerance = 1e-4f;

class NodesRender : public testing::Test {
protected:
    NodesRender() {
        clip->metaData.setData("input/frame", std::int64_t{1});
        read->setFilename(folder.path("A001.0001.exr"));
        file.videoFileName = "A001";
    }

    LensCorrection* make(const char* className) {
        LensCorrection* const node = static_cast<LensCorrection*>(graph.create(className));
        graph.connect(node, 0, read);
        graph.connect(node, 1, read);
        return node;
    }
    LensCorrection* makeDistortion() { return make("OrvexLensDistortionCorrection"); }
    LensCorrection* makeShading() { return make("OrvexLensShadingCorrection"); }

    bool validate(Op* node) {
        folder.write("A001.olcf", file.text());
        read->setSource(clip);
        const bool isValid = graph.validate(node);
        EXPECT_EQ(graph.errorText(node), "");
        return isValid;
    }
    /// A plane of the node's for the layer with the channel.
    ImagePlane render(Op* node, Channel channel = Chan_Red) {
        validate(node);
        for (ImagePlane& plane : graph.planes(node)) {
            if (!plane.channels().contains(channel)) continue;
            EXPECT_TRUE(graph.fetch(node, plane)) << graph.errorText(node);
            return plane;
        }
        ADD_FAILURE() << "no such layer";
        return ImagePlane();
    }
    std::vector<float> pixels(const ImagePlane& plane) const {
        return std::vector<float>(plane.readable(), plane.readable() + plane.usage() / sizeof(float));
    }
    /// What the clip itself holds over the plane's box, packed like it.
    std::vector<float> unchanged(const ImagePlane& like) const {
        ImagePlane plane(like.bounds(), true, like.channels());
        plane.makeWritable();
        clip->fillPlane(0, plane);
        return pixels(plane);
    }

    ShotFolder folder;
    Graph graph;
    CorrectionFile file;
    std::shared_ptr<TestClip> clip = std::make_shared<TestClip>(64, 36);
    Read* read = graph.createRead();
};

float checker(int x, int y, Channel channel) {
    return static_cast<float>((x * 7 + y * 13 + static_cast<int>(channel) * 5) % 32) / 32.0f;
}

} // namespace

TEST_F(NodesRender, LeavesTheImageAsItIsWithoutDistortion) {
    file.radialDistortion = "0,0,0,0,0,0,0";
    clip->pixel = [](int x, int y, Channel) { return static_cast<float>(x + y); };
    const ImagePlane plane = render(makeDistortion());
    double largest = 0.0;
    for (int y = 2; y < 34; ++y) {
        for (int x = 2; x < 62; ++x) {
            largest = std::max(largest, static_cast<double>(std::abs(plane.at(x, y, 0) - clip->pixel(x, y, Chan_Red))));
        }
    }
    // The fitted identity is off by rounding only; on this ramp an error in px is one in value.
    EXPECT_LT(largest, 1e-3);
}

TEST_F(NodesRender, GrowsTheBoxToHoldTheCorrectedFrame) {
    LensCorrection* const node = makeDistortion();
    graph.userChange(node, "correctionMode", "Distort");
    validate(node);
    const int width = node->w();
    const int height = node->h();
    EXPECT_GT(width, 64);
    EXPECT_GT(height, 36);
    EXPECT_EQ(node->x(), -(width - 64) / 2) << "centred";
    EXPECT_EQ(node->y(), -(height - 36) / 2);
    EXPECT_EQ(node->frameWidth(), 64u) << "the remembered frame is that of the input";
    EXPECT_EQ(node->frameHeight(), 36u);
}

TEST_F(NodesRender, KeepsTheInputsBoxWhenTheCorrectedFrameIsSmaller) {
    clip->box = Box(-32, 0, 96, 36);
    file.radialDistortion = "0,0,0,0,0,0,0";
    LensCorrection* const node = makeDistortion();
    validate(node);
    EXPECT_LE(node->x(), -32);
    EXPECT_GE(node->r(), 96);
    EXPECT_EQ(node->frameWidth(), 128u);
    EXPECT_EQ(node->frameHeight(), 72u);
}

TEST_F(NodesRender, RemovesShadingFromColorAndKeepsAlpha) {
    file.shading = "50,50,50,50,50,50,50";
    clip->pixel = [](int x, int, Channel) { return static_cast<float>(x) / 64.0f; };
    const ImagePlane plane = render(makeShading());
    EXPECT_EQ(plane.bounds(), Box(0, 0, 64, 36));
    for (int x = 0; x < 64; ++x) {
        EXPECT_NEAR(plane.at(x, 7, 0), static_cast<float>(x) / 32.0f, c_tolerance);
        EXPECT_EQ(plane.at(x, 7, 3), static_cast<float>(x) / 64.0f);
    }
}

TEST_F(NodesRender, AddsShading) {
    file.shading = "50,50,50,50,50,50,50";
    LensCorrection* const node = makeShading();
    graph.userChange(node, "correctionMode", "Add Shading");
    EXPECT_NEAR(render(node).at(30, 20, 1), 0.25f, c_tolerance);
}

TEST_F(NodesRender, RendersAMapThatDoesNotDependOnThePixels) {
    file.shading = "50,50,50,50,50,50,50";
    clip->pixel = [](int, int, Channel) { return -7.0f; };
    LensCorrection* const node = makeShading();
    graph.userChange(node, "outputType", "Map");
    const ImagePlane plane = render(node);
    for (int channel = 0; channel < 3; ++channel) EXPECT_NEAR(plane.at(5, 5, channel), 2.0f, c_tolerance);
    EXPECT_EQ(plane.at(5, 5, 3), 1.0f);
}

TEST_F(NodesRender, RendersTheHiddenDisplacementMap) {
    LensCorrection* const node = makeDistortion();
    graph.userChange(node, "outputType", "STMap");
    const ImagePlane plane = render(node);
    const Box box = plane.bounds();
    EXPECT_NEAR(plane.at(box.x() + 3, box.y() + 5, 0), 3.0f / static_cast<float>(box.w()), c_tolerance);
    EXPECT_NEAR(plane.at(box.x() + 3, box.y() + 5, 1), 5.0f / static_cast<float>(box.h()), c_tolerance);
    EXPECT_EQ(plane.at(box.x() + 3, box.y() + 5, 2), 0.0f);
    EXPECT_EQ(plane.at(box.x() + 3, box.y() + 5, 3), 1.0f);
}

TEST_F(NodesRender, DoesNotWriteIntoAPlaneSharedWithTheInput) {
    file.shading = "50,50,50,50,50,50,50";
    class SharingClip : public TestClip {
    public:
        SharingClip() : TestClip(64, 36), shared(Box(0, 0, 64, 36), true, Mask_RGBA) {
            shared.makeWritable();
            for (int y = 0; y < 36; ++y) {
                for (int x = 0; x < 64; ++x) {
                    for (int component = 0; component < 4; ++component) shared.writableAt(x, y, component) = 0.25f;
                }
            }
        }
        void fillPlane(double, ImagePlane& plane) override {
            RefCountedFloatBuffer memory = shared.memory();
            plane.setMemory(memory);
        }
        ImagePlane shared;
    };
    const auto sharing = std::make_shared<SharingClip>();
    sharing->metaData = clip->metaData;
    clip = sharing;
    EXPECT_NEAR(render(makeShading()).at(1, 1, 0), 0.5f, c_tolerance);
    EXPECT_EQ(sharing->shared.at(1, 1, 0), 0.25f);
}

// --- Layers ---

TEST_F(NodesRender, MovesEveryLayerAlike) {
    ChannelSet channels = Mask_RGBA;
    const Channel more[] = {Chan_Z,
                            channel("forward.u"),
                            channel("forward.v"),
                            channel("spec.red"),
                            channel("spec.green"),
                            channel("spec.blue")};
    for (const Channel each : more) channels += each;
    clip->channels = channels;
    clip->pixel = [](int x, int y, Channel) { return checker(x, y, Chan_Red); };
    LensCorrection* const node = makeDistortion();
    graph.userChange(node, "correctionMode", "Distort");
    const ImagePlane color = render(node);
    for (const Channel each : more) {
        const ImagePlane plane = render(node, each);
        ASSERT_EQ(plane.bounds(), color.bounds());
        bool isEqual = true;
        for (int y = color.bounds().y(); y < color.bounds().t(); ++y) {
            for (int x = color.bounds().x(); x < color.bounds().r(); ++x) {
                isEqual = isEqual && plane.at(x, y, plane.chanNo(each)) == color.at(x, y, 0);
            }
        }
        EXPECT_TRUE(isEqual) << getName(each);
    }
}

TEST_F(NodesRender, RemovesShadingFromOtherColorLayers) {
    file.shading = "50,50,50,50,50,50,50";
    ChannelSet channels = Mask_RGBA;
    for (const char* const name : {"spec.alpha", "spec.blue", "spec.green", "spec.red"}) channels += channel(name);
    clip->channels = channels;
    const ImagePlane plane = render(makeShading(), channel("spec.red"));
    EXPECT_NEAR(plane.at(3, 3, plane.chanNo(channel("spec.red"))), 1.0f, c_tolerance);
    EXPECT_NEAR(plane.at(3, 3, plane.chanNo(channel("spec.blue"))), 1.0f, c_tolerance);
    EXPECT_EQ(plane.at(3, 3, plane.chanNo(channel("spec.alpha"))), 0.5f);
}

TEST_F(NodesRender, RemovesShadingFromEveryChannelOfALayerWhateverItsName) {
    file.shading = "50,50,50,50,50,50,50";
    ChannelSet channels = Mask_RGBA;
    const Channel more[] = {Chan_Z,
                            channel("crypto00.red"),
                            channel("object.id"),
                            channel("motion4.u"),
                            channel("motion4.v"),
                            channel("motion4.x"),
                            channel("motion4.y")};
    for (const Channel each : more) channels += each;
    clip->channels = channels;
    for (const Channel each : more) {
        const ImagePlane plane = render(makeShading(), each);
        EXPECT_NEAR(plane.at(3, 3, plane.chanNo(each)), 1.0f, c_tolerance) << getName(each);
    }
}

TEST_F(NodesRender, TakesAPlaneThatIsNotPacked) {
    clip->pixel = checker;
    LensCorrection* const node = makeDistortion();
    const ImagePlane packed = render(node);
    ImagePlane plane(packed.bounds(), false, Mask_RGBA);
    node->renderStripe(plane);
    bool isEqual = true;
    for (int y = packed.bounds().y(); y < packed.bounds().t(); ++y) {
        for (int x = packed.bounds().x(); x < packed.bounds().r(); ++x) {
            for (int component = 0; component < 4; ++component) {
                isEqual = isEqual && plane.at(x, y, component) == packed.at(x, y, component);
            }
        }
    }
    EXPECT_TRUE(isEqual);
}

TEST_F(NodesRender, TakesAPlaneOverAPartOfTheBox) {
    clip->pixel = checker;
    LensCorrection* const node = makeShading();
    const ImagePlane whole = render(node);
    ImagePlane plane(Box(10, 10, 30, 20), true, Mask_RGB);
    clip->box = Box(10, 10, 30, 20);
    node->renderStripe(plane);
    for (int x = 10; x < 30; ++x) EXPECT_EQ(plane.at(x, 15, 1), whole.at(x, 15, 1));
}

// --- Several at once ---

TEST_F(NodesRender, RendersSeveralPlanesOfOneNodeAtOnce) {
    clip->pixel = checker;
    LensCorrection* const node = makeDistortion();
    const std::vector<float> expected = pixels(render(node));
    std::vector<ImagePlane> planes(4, ImagePlane(node->info().box(), true, Mask_RGBA));
    std::vector<std::thread> threads;
    for (ImagePlane& plane : planes) threads.emplace_back([node, &plane] { node->fetchPlane(plane); });
    for (std::thread& thread : threads) thread.join();
    for (const ImagePlane& plane : planes) EXPECT_EQ(pixels(plane), expected);
}

TEST_F(NodesRender, RendersChainedNodesThatShareOneReader) {
    file.shading = "50,50,50,50,50,50,50";
    file.radialDistortion = "0,0,0,0,0,0,0";
    LensCorrection* const shading = makeShading();
    LensCorrection* const distortion = makeDistortion();
    graph.connect(distortion, 0, shading);
    graph.connect(distortion, 1, shading);
    EXPECT_NEAR(render(distortion).at(32, 18, 0), 1.0f, 1e-3f);
}

// --- Errors of the core ---

TEST_F(NodesRender, ShowsTheRecommendedResolutionForAnotherAspectRatio) {
    file.clipHeight = "40";
    folder.write("A001.olcf", file.text());
    read->setSource(clip);
    LensCorrection* const node = makeDistortion();
    EXPECT_FALSE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node),
              "Aspect ratio of the current frame is not as expected. Recommended resolution is 64x40 px.");
}

TEST_F(NodesRender, ShowsABadNumberInTheCorrectionFileWithWhatWasBeingDone) {
    file.shading = "a,50,50,50,50,50,50";
    folder.write("A001.olcf", file.text());
    read->setSource(clip);
    LensCorrection* const node = makeShading();
    EXPECT_FALSE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node).find("Validating the frame failed: bad lexical cast"), 0u) << graph.errorText(node);
}

TEST_F(NodesRender, WritesTheDetailsToTheLogFileOfTheNodesKind) {
    read->setSource(clip);
    const std::string details = "Correction file could not be found.\nClip File Path: \"" + folder.path("A001") + "\"";
    const auto isIn = [&](const char* logFilePath) {
        return Support::textOfFile(logFilePath).find(details) != std::string::npos;
    };
    EXPECT_FALSE(graph.validate(makeShading()));
    EXPECT_TRUE(isIn(LensShadingCorrection::logFilePath));
    EXPECT_FALSE(isIn(LensDistortionCorrection::logFilePath));
    EXPECT_FALSE(graph.validate(makeDistortion()));
    EXPECT_TRUE(isIn(LensDistortionCorrection::logFilePath));
}

TEST_F(NodesRender, TakesTheRecordingFormatEnteredByHand) {
    file.sensorWidth = "0";
    LensCorrection* const node = makeShading();
    folder.write("A001.olcf", file.text());
    read->setSource(clip);
    EXPECT_FALSE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node), "There is no valid data available for the recording format.");
    graph.userChange(node, "recordingFormat::manualSelection", 1);
    graph.userChange(node, "recordingFormat::imageAreaSize::width", 24);
    graph.userChange(node, "recordingFormat::imageAreaSize::height", 13.5);
    graph.userChange(node, "recordingFormat::clipResolution::width", 64);
    graph.userChange(node, "recordingFormat::clipResolution::height", 36);
    graph.openPanel(node);
    EXPECT_TRUE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node), "");
}

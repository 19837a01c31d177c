#include "DataSourceHelper.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "LensDistortionCorrection.h"
#include "Support/TestClip.h"

using namespace DD::Image;

namespace {

/// An image op that passes its first input on.
class PassThrough : public Iop {
public:
    explicit PassThrough(Node* node) : Iop(node) { inputs(2); }
    const char* Class() const override { return "PassThrough"; }
    const char* node_help() const override { return ""; }
    static Op* make(Node* node) { return new PassThrough(node); }
    static const Op::Description d;
};
const Op::Description PassThrough::d("PassThrough", PassThrough::make);

/// The host's reader of a whole timeline: derived from the plain reader, but not one.
class TimelineRead : public Read {
public:
    explicit TimelineRead(Node* node) : Read(node) {}
    const char* Class() const override { return "TimelineRead"; }
    static Op* make(Node* node) { return new TimelineRead(node); }
    static const Op::Description d;
};
const Op::Description TimelineRead::d("TimelineRead", TimelineRead::make);

class DataSourceHelperTest : public testing::Test {
public:
    DataSourceHelperTest() { graph.connect(node, 1, read); }

    DataSourceHelperTest& givenClip(const std::string& path) {
        read->setFilename(path);
        return *this;
    }
    DataSourceHelperTest& with(const std::string& key, MetaData::Property value) {
        clip->metaData.setData(key, std::move(value));
        read->setSource(clip);
        graph.validate(read);
        return *this;
    }

    std::string extension() const {
        std::string text = "none";
        DataSourceHelper::clipFileExtension(read->filename() ? read->filename() : "", text);
        return text;
    }
    std::string manufacturer() const {
        std::string text = "none";
        DataSourceHelper::cameraManufacturer(read, extension(), text);
        return text;
    }
    std::string clipPath() const {
        std::string text = "none";
        DataSourceHelper::clipFilePath(node, text);
        return text;
    }
    /// "frame number|timecode", or "none".
    std::string frame() const {
        unsigned int number = 77;
        std::string timecode = "untouched";
        if (DataSourceHelper::frameNumberAndTimecode(node, number, timecode)) {
            return std::to_string(number) + "|" + timecode;
        }
        EXPECT_EQ(number, 77u);
        EXPECT_EQ(timecode, "untouched");
        return "none";
    }
    std::string json() const {
        std::string text = "none";
        DataSourceHelper::jsonMetadataString(node, text);
        return text;
    }

    Graph graph;
    Read* read = graph.createRead();
    std::shared_ptr<TestClip> clip = std::make_shared<TestClip>(64, 36);
    LensDistortionCorrection* node =
        static_cast<LensDistortionCorrection*>(graph.create("OrvexLensDistortionCorrection"));
};

} // namespace

// --- The reader ---

TEST_F(DataSourceHelperTest, FindsTheReaderOnThePlateInput) { EXPECT_EQ(DataSourceHelper::readNode(node), read); }

TEST_F(DataSourceHelperTest, FindsNoReaderOnAnUnconnectedPlateInput) {
    graph.connect(node, 1, nullptr);
    EXPECT_EQ(DataSourceHelper::readNode(node), nullptr);
}

TEST_F(DataSourceHelperTest, DoesNotLookForTheReaderOnTheImageInput) {
    graph.connect(node, 1, nullptr);
    graph.connect(node, 0, read);
    EXPECT_EQ(DataSourceHelper::readNode(node), nullptr);
}

TEST_F(DataSourceHelperTest, StepsOverOtherNodesByTheirFirstInput) {
    Op* const between = graph.create("PassThrough");
    graph.connect(between, 0, read);
    graph.connect(between, 1, graph.createRead());
    graph.connect(node, 1, between);
    EXPECT_EQ(DataSourceHelper::readNode(node), read);
}

TEST_F(DataSourceHelperTest, EndsWithoutAReaderWhereAChainEnds) {
    graph.connect(node, 1, graph.create("PassThrough"));
    EXPECT_EQ(DataSourceHelper::readNode(node), nullptr);
}

TEST_F(DataSourceHelperTest, SharesTheReaderOfAChainOfCorrectionNodes) {
    Op* const shading = graph.create("OrvexLensShadingCorrection");
    Op* const distortion = graph.create("OrvexLensDistortionCorrection");
    graph.connect(distortion, 0, graph.createRead());
    graph.connect(distortion, 1, read);
    graph.connect(shading, 0, distortion);
    graph.connect(shading, 1, distortion);
    graph.connect(node, 0, shading);
    graph.connect(node, 1, shading);
    EXPECT_EQ(DataSourceHelper::readNode(node), read);
}

TEST_F(DataSourceHelperTest, FindsNoReaderBehindACorrectionNodeWithoutAPlate) {
    Op* const shading = graph.create("OrvexLensShadingCorrection");
    graph.connect(shading, 0, read);
    graph.connect(node, 1, shading);
    EXPECT_EQ(DataSourceHelper::readNode(node), nullptr);
}

TEST_F(DataSourceHelperTest, SkipsReadersOfADerivedClass) {
    graph.connect(node, 1, graph.create("TimelineRead"));
    EXPECT_EQ(DataSourceHelper::readNode(node), nullptr);
}

TEST_F(DataSourceHelperTest, HasNoClipPathForAReaderWithoutAFile) {
    boost::filesystem::path path = "untouched";
    EXPECT_FALSE(DataSourceHelper::clipFilePath(read, path));
    EXPECT_EQ(path, "untouched");
}

TEST_F(DataSourceHelperTest, LeavesTheReaderUntouchedWithoutAFile) {
    Read* found = nullptr;
    boost::filesystem::path path;
    EXPECT_FALSE(DataSourceHelper::readNodeAndClipFilePath(node, &found, path));
    EXPECT_EQ(found, nullptr);
}

using DataSourceHelperDeathTest = DataSourceHelperTest;

TEST_F(DataSourceHelperDeathTest, StopsOnAMissingReader) {
    const char* const message = "Assertion failed: readNode\n$";
    boost::filesystem::path path = "/a.exr";
    std::string text;
    bool isUnknown = false;
    unsigned int number = 0;
    float framerate = 0.0f;
    EXPECT_DEATH(DataSourceHelper::clipFilePath(nullptr, path), message);
    EXPECT_DEATH(DataSourceHelper::cameraManufacturer(nullptr, "exr", text), message);
    EXPECT_DEATH(DataSourceHelper::originalClipFileName(nullptr, path, isUnknown, text), message);
    EXPECT_DEATH(DataSourceHelper::timecode(nullptr, "exr", isUnknown, text), message);
    EXPECT_DEATH(DataSourceHelper::r3dFramerate(nullptr, framerate), message);
    EXPECT_DEATH(DataSourceHelper::modifyR3dTimecodeIfNeeded(nullptr, text), message);
    EXPECT_DEATH(DataSourceHelper::frameNumber(nullptr, number), message);
}

TEST_F(DataSourceHelperDeathTest, StopsOnAMissingNode) {
    EXPECT_DEATH(DataSourceHelper::readNode(nullptr), "Assertion failed: op\n$");
}

// --- Extension and maker ---

TEST_F(DataSourceHelperTest, NormalizesTheExtension) {
    EXPECT_EQ(givenClip("/shots/A001.MOV").extension(), "mov");
    EXPECT_EQ(givenClip("/shots/A001.0001.exr").extension(), "exr");
    EXPECT_EQ(givenClip("/shots.d/A001").extension(), "none");
    EXPECT_EQ(givenClip("/shots/A001.").extension(), "none");
}

namespace {

struct Maker {
    const char* path;
    const char* key;
    const char* expected;
};

void PrintTo(const Maker& row, std::ostream* stream) { *stream << row.path << " with " << row.key; }

class DataSourceHelperMaker : public DataSourceHelperTest, public testing::WithParamInterface<Maker> {};

} // namespace

TEST_P(DataSourceHelperMaker, IsToldByTheKeyThatIsPresent) {
    EXPECT_EQ(givenClip(GetParam().path).with(GetParam().key, "x").manufacturer(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, DataSourceHelperMaker,
                         testing::Values(Maker{"/a.mov", "quicktime/arri/camera/CameraClipName", "ARRI"},
                                         Maker{"/a.mov", "quicktime/red/camera/ClipFilename", "RED"},
                                         Maker{"/a.mov", "quicktime/sony/bprl/mxf/umid", "Sony"},
                                         Maker{"/a.exr", "exr/com.arri.camera.ArriUuid", "ARRI"},
                                         Maker{"/a.r3d", "r3d/reel_id_full", "RED"},
                                         Maker{"/a.mxf", "arri/camera/CameraClipName", "ARRI"},
                                         Maker{"/a.ari", "arri/camera/CameraClipName", "ARRI"},
                                         Maker{"/a.dpx", "arri/camera/CameraClipName", "none"},
                                         Maker{"/a.mxf", "quicktime/sony/bprl/mxf/umid", "none"},
                                         Maker{"/a.exr", "quicktime/red/camera/ClipFilename", "none"}));

TEST_F(DataSourceHelperTest, IdentifiesAMovWithKeysOfTwoMakersByTheFirstInKeyOrder) {
    givenClip("/shots/A001.mov");
    with("quicktime/red/camera/ClipFilename", "R").with("quicktime/arri/camera/CameraClipName", "A001C002");
    EXPECT_EQ(manufacturer(), "ARRI");
    EXPECT_EQ(clipPath(), "/shots/A001C002");
}

// --- Clip path ---

TEST_F(DataSourceHelperTest, ReplacesTheFileNameByTheCamerasClipName) {
    givenClip("/shots/A001_C002.R3D").with("r3d/reel_id_full", "A001_C002_0101XY");
    EXPECT_EQ(clipPath(), "/shots/A001_C002_0101XY");
}

namespace {

struct ClipName {
    const char* path;
    const char* makerKey;
    const char* nameKey;
};

void PrintTo(const ClipName& row, std::ostream* stream) { *stream << row.nameKey << " of " << row.path; }

class DataSourceHelperClipName : public DataSourceHelperTest, public testing::WithParamInterface<ClipName> {};

} // namespace

TEST_P(DataSourceHelperClipName, ComesFromTheKeyOfMakerAndContainer) {
    givenClip(GetParam().path).with(GetParam().makerKey, "maker").with(GetParam().nameKey, "CLIP");
    EXPECT_EQ(clipPath(), "/shots/CLIP");
}

INSTANTIATE_TEST_SUITE_P(
    Table, DataSourceHelperClipName,
    testing::Values(ClipName{"/shots/a.R3D", "r3d/reel_id_full", "r3d/reel_id_full"},
                    ClipName{"/shots/a.mov", "quicktime/red/camera/ClipFilename", "quicktime/red/camera/ClipFilename"},
                    ClipName{"/shots/a.mxf", "arri/camera/CameraClipName", "arri/camera/CameraClipName"},
                    ClipName{"/shots/a.1.exr", "exr/com.arri.camera.ArriUuid", "exr/interim.clip.cameraClipName"},
                    ClipName{"/shots/a.mov", "quicktime/arri/camera/CameraClipName",
                             "quicktime/arri/camera/CameraClipName"},
                    ClipName{"/shots/a.ari", "arri/camera/CameraClipName", "arri/camera/CameraClipName"},
                    ClipName{"/shots/a.mov", "quicktime/sony/bprl/mxf/umid", "quicktime/apple/proapps/reel"}));

TEST_F(DataSourceHelperTest, HasNoClipPathWhenAKnownFormatLacksTheName) {
    EXPECT_EQ(givenClip("/shots/A001.0001.exr").with("exr/com.arri.camera.ArriUuid", "u").clipPath(), "none");
}

TEST_F(DataSourceHelperTest, HasNoClipPathWhenTheCamerasClipNameIsEmpty) {
    givenClip("/shots/A001.mov").with("quicktime/arri/camera/CameraClipName", "");
    EXPECT_EQ(clipPath(), "none");
}

TEST_F(DataSourceHelperTest, HasNoClipPathWhenTheCamerasClipNameIsNotAText) {
    givenClip("/shots/A001.mov").with("quicktime/arri/camera/CameraClipName", std::int64_t{1});
    EXPECT_EQ(clipPath(), "none");
}

TEST_F(DataSourceHelperTest, LeavesTheNameUntouchedWhenItIsEmpty) {
    with("quicktime/arri/camera/CameraClipName", "");
    bool isFormatUnknown = true;
    std::string name = "untouched";
    EXPECT_FALSE(DataSourceHelper::originalClipFileName(read, "/shots/A001.mov", isFormatUnknown, name));
    EXPECT_FALSE(isFormatUnknown);
    EXPECT_EQ(name, "untouched");
}

TEST_F(DataSourceHelperTest, CutsTheNameOfAnExrSequenceAtItsFirstDot) {
    EXPECT_EQ(givenClip("/shots/A003C012_200101_R1AB.0001234.exr").clipPath(), "/shots/A003C012_200101_R1AB");
}

TEST_F(DataSourceHelperTest, CutsTheNameOfADpxSequenceAtItsFirstDot) {
    EXPECT_EQ(givenClip("/shots.v2/A003.graded.0001.DPX").clipPath(), "/shots.v2/A003");
}

TEST_F(DataSourceHelperTest, KeepsThePathOfOtherFormatsWithoutAMaker) {
    EXPECT_EQ(givenClip("/shots/A003.0001.tif").clipPath(), "/shots/A003.0001.tif");
}

TEST_F(DataSourceHelperTest, TreatsASonyMxfAsUnknownFormat) {
    givenClip("/shots/A003.mxf").with("quicktime/sony/bprl/mxf/umid", "u").with("input/frame", std::int64_t{4});
    EXPECT_EQ(clipPath(), "/shots/A003.mxf");
    EXPECT_EQ(frame(), "3|");
}

TEST_F(DataSourceHelperTest, HasNoClipPathForAFileWithoutExtension) {
    EXPECT_EQ(givenClip("/shots/A003").clipPath(), "none");
}

TEST_F(DataSourceHelperTest, TellsAFormatThatIsUnknownFromANameThatIsNotThere) {
    std::string name = "untouched";
    const auto isUnknown = [&](const char* path) {
        bool isFormatUnknown = std::string(path) != "/shots/A001.dpx"; // set in any case
        EXPECT_FALSE(DataSourceHelper::originalClipFileName(read, path, isFormatUnknown, name));
        return isFormatUnknown;
    };
    with("exr/com.arri.camera.ArriUuid", "u");
    EXPECT_FALSE(isUnknown("/shots/A001")) << "no extension";
    EXPECT_FALSE(isUnknown("/shots/A001.exr"));
    EXPECT_TRUE(isUnknown("/shots/A001.dpx"));
    EXPECT_EQ(name, "untouched");
}

TEST_F(DataSourceHelperTest, TellsAFormatThatIsUnknownFromATimecodeThatIsNotThere) {
    std::string timecode = "untouched";
    bool isFormatUnknown = true;
    with("quicktime/arri/camera/CameraClipName", "A001");
    EXPECT_FALSE(DataSourceHelper::timecode(read, "mov", isFormatUnknown, timecode));
    EXPECT_FALSE(isFormatUnknown);
    EXPECT_FALSE(DataSourceHelper::timecode(read, "dpx", isFormatUnknown, timecode));
    EXPECT_TRUE(isFormatUnknown);
    EXPECT_EQ(timecode, "untouched");
}

// --- Frame number and timecode ---

TEST_F(DataSourceHelperTest, KeepsFrameNumberAndTimecodeOfR3d) {
    givenClip("/shots/A001_C002.R3D")
        .with("r3d/reel_id_full", "A001_C002_0101XY")
        .with("r3d/start_absolute_timecode", "10:00:00:07")
        .with("input/frame", std::int64_t{5});
    EXPECT_EQ(frame(), "4|10:00:00:07");
}

TEST_F(DataSourceHelperTest, KeepsOnlyTheTimecodeOfOtherContainers) {
    givenClip("/shots/A001.mov")
        .with("quicktime/arri/camera/CameraClipName", "A001")
        .with("input/timecode", "01:00:00:10")
        .with("input/frame", std::int64_t{11});
    EXPECT_EQ(frame(), "0|01:00:00:10");
}

TEST_F(DataSourceHelperTest, HasNoFrameWhenAKnownFormatLacksTheTimecode) {
    givenClip("/shots/A001.mov")
        .with("quicktime/arri/camera/CameraClipName", "A001")
        .with("input/frame", std::int64_t{11});
    EXPECT_EQ(frame(), "none");
}

TEST_F(DataSourceHelperTest, HasNoFrameWithoutAFrameNumberInSpiteOfATimecode) {
    givenClip("/shots/A001.1.exr").with("input/timecode", "01:00:00:10");
    EXPECT_EQ(frame(), "none");
}

TEST_F(DataSourceHelperTest, TakesTheTimecodeOfAnExrSequenceWithoutAMaker) {
    givenClip("/shots/A001.11.exr").with("input/timecode", "01:00:00:10").with("input/frame", std::int64_t{11});
    EXPECT_EQ(frame(), "0|01:00:00:10");
}

TEST_F(DataSourceHelperTest, TakesTheFrameNumberOfAnExrSequenceWithoutATimecode) {
    EXPECT_EQ(givenClip("/shots/A001.11.exr").with("input/frame", std::int64_t{11}).frame(), "10|");
    EXPECT_EQ(with("input/timecode", "").frame(), "10|") << "an empty timecode is none";
}

TEST_F(DataSourceHelperTest, TakesTheTimecodeOfADpxSequence) {
    givenClip("/shots/A001.11.dpx").with("input/timecode", "01:00:00:10").with("input/frame", 11.0);
    EXPECT_EQ(frame(), "0|01:00:00:10");
    clip->metaData.erase("input/timecode");
    EXPECT_EQ(with("input/frame", 11.0).frame(), "10|");
}

TEST_F(DataSourceHelperTest, TakesOnlyTheFrameNumberOfOtherFormatsWithoutAMaker) {
    givenClip("/shots/A001.11.tif").with("input/timecode", "01:00:00:10").with("input/frame", std::int64_t{11});
    EXPECT_EQ(frame(), "10|");
}

TEST_F(DataSourceHelperTest, CountsFramesFromTheReadersFirst) {
    clip->firstFrame = 1001;
    unsigned int number = 0;
    givenClip("/shots/A001.exr").with("input/frame", 1010.9);
    EXPECT_TRUE(DataSourceHelper::frameNumber(read, number));
    EXPECT_EQ(number, 9u) << "the fraction is dropped";
    with("input/frame", 1001.0);
    EXPECT_TRUE(DataSourceHelper::frameNumber(read, number));
    EXPECT_EQ(number, 0u);
}

TEST_F(DataSourceHelperTest, HasNoFrameNumberBelowTheReadersFirst) {
    clip->firstFrame = 1001;
    unsigned int number = 0;
    EXPECT_FALSE(DataSourceHelper::frameNumber(read, number)) << "absent";
    for (const double frame : {1000.0, 1000.5}) {
        with("input/frame", frame);
        EXPECT_FALSE(DataSourceHelper::frameNumber(read, number)) << frame;
    }
}

TEST_F(DataSourceHelperTest, HasNoFrameNumberBelowZero) {
    clip->firstFrame = -10;
    unsigned int number = 0;
    with("input/frame", -1.0);
    EXPECT_FALSE(DataSourceHelper::frameNumber(read, number));
    with("input/frame", std::nan(""));
    EXPECT_FALSE(DataSourceHelper::frameNumber(read, number));
    with("input/frame", 5.0);
    EXPECT_TRUE(DataSourceHelper::frameNumber(read, number));
    EXPECT_EQ(number, 15u);
}

namespace {

struct R3dTimecode {
    double framerate;
    const char* text;
    const char* expected;
};

void PrintTo(const R3dTimecode& row, std::ostream* stream) { *stream << row.text << " at " << row.framerate; }

class DataSourceHelperR3dTimecode : public DataSourceHelperTest, public testing::WithParamInterface<R3dTimecode> {};

} // namespace

TEST_P(DataSourceHelperR3dTimecode, CountsFramesInsteadOfPairsAtHighRates) {
    with("r3d/framerate", GetParam().framerate);
    std::string text = GetParam().text;
    DataSourceHelper::modifyR3dTimecodeIfNeeded(read, text);
    EXPECT_EQ(text, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, DataSourceHelperR3dTimecode,
    testing::Values(R3dTimecode{48.0, "10:00:00.07", "10:00:00:14"}, R3dTimecode{48.0, "10:00:00:07", "10:00:00:15"},
                    R3dTimecode{59.94, "01:00:00:29", "01:00:00:59"}, R3dTimecode{60.0, "01.00.00.10", "01:00:00:20"},
                    R3dTimecode{30.0, "01:00:00.29", "01:00:00.29"}, R3dTimecode{60.01, "01:00:00.29", "01:00:00.29"},
                    R3dTimecode{-48.0, "01:00:00.29", "01:00:00.29"}, R3dTimecode{48.0, ":07", ":15"},
                    R3dTimecode{48.0, "07", "07"}, R3dTimecode{48.0, "10:00:00.x7", "10:00:00.x7"}));

TEST_F(DataSourceHelperTest, LeavesR3dTimecodesAloneWithoutARate) {
    std::string text = "10:00:00.07";
    DataSourceHelper::modifyR3dTimecodeIfNeeded(read, text);
    EXPECT_EQ(text, "10:00:00.07");
}

TEST_F(DataSourceHelperTest, RewritesTheTimecodeOfAFastR3dClip) {
    givenClip("/shots/A001_C002.R3D")
        .with("r3d/reel_id_full", "A001_C002_0101XY")
        .with("r3d/start_absolute_timecode", "10:00:00.07")
        .with("r3d/framerate", 48.0)
        .with("input/frame", std::int64_t{5});
    EXPECT_EQ(frame(), "4|10:00:00:14");
}

TEST_F(DataSourceHelperTest, DoesNotRewriteTimecodesOfOtherContainers) {
    givenClip("/shots/A001.mov")
        .with("quicktime/red/camera/ClipFilename", "A001")
        .with("input/timecode", "10:00:00:07")
        .with("r3d/framerate", 48.0)
        .with("input/frame", std::int64_t{5});
    EXPECT_EQ(frame(), "0|10:00:00:07");
}

// --- The embedded record ---

TEST_F(DataSourceHelperTest, TakesTheEmbeddedRecordOfAnExrFile) {
    EXPECT_EQ(givenClip("/shots/A001.1.EXR").with("exr/com.orvex.LensCorrection", "{}").json(), "{}");
}

TEST_F(DataSourceHelperTest, HasNoEmbeddedRecordWithoutTheAttribute) {
    EXPECT_EQ(givenClip("/shots/A001.1.exr").with("exr/owner", "me").json(), "none");
}

TEST_F(DataSourceHelperTest, TakesNoEmbeddedRecordFromOtherFiles) {
    EXPECT_EQ(givenClip("/shots/A001.mov").with("exr/com.orvex.LensCorrection", "{}").json(), "none");
}

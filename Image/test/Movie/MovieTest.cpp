#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "FrameReader.h"
#include "FrameWriter.h"
#include "HostMetadata.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Image;

class Movie : public testing::Test {
protected:
    /// Makes a ProRes movie of `frames` frames from an ffmpeg source, at 24 frames a second unless the source says
    /// other.
    void make(const std::string& source, const std::string& options, const std::string& codec = "-c:v prores_ks") {
        ASSERT_EQ(outputOf("ffmpeg -v error -f lavfi -i \"" + source + "\" " + codec + " " + options + " " + path), "");
    }
    /// A grey that rises by 8 of 255 per frame, so that frames tell themselves apart.
    void makeRising(const std::string& options = "") {
        make("color=black:s=64x48:r=24:d=1,geq=lum='16+N*8':cb=128:cr=128", options + " -frames:v 20");
    }
    /// R, G, B of the picture's middle.
    std::vector<float> middle(FrameReader& reader, std::int64_t index) {
        Frame frame;
        reader.readPixels(frame, 1, index);
        const Plane& plane = frame.parts[0].planes[0];
        std::vector<float> row(plane.width * plane.components);
        plane.rowToFloat(plane.height / 2, row.data());
        const std::size_t at = plane.width / 2 * plane.components;
        return {row[at], row[at + 1], row[at + 2]};
    }
    std::string timecode(FrameReader& reader, std::int64_t index) {
        const Metadata keys = hostMetadata(reader.readHeader(index), path, index);
        const auto found = keys.find("input/timecode");
        return found == keys.end() ? "(none)" : metadataText(found->second);
    }
    /// Which frame of makeRising this grey belongs to: 8 of the 219 steps of the video range a frame.
    int risingFrame(const std::vector<float>& colour) { return static_cast<int>(std::lround(colour[1] * 219 / 8)); }

    Support::TemporaryFolder folder;
    const std::string path = folder.path("a.mov");
};

TEST_F(Movie, GivesTheFrameThatIsAskedForInAnyOrder) {
    makeRising();
    const std::unique_ptr<FrameReader> reader = openReader(path);
    EXPECT_EQ(reader->frameCount(), 20);
    for (const int index : {0, 1, 2, 17, 3, 19, 0, 10, 11, 9}) EXPECT_EQ(risingFrame(middle(*reader, index)), index);
}

TEST_F(Movie, OfEveryUsualKindGivesItsFrames) {
    for (const auto& [name, codec] : {std::pair{"a.mxf", "mpeg2video -q:v 1"},
                                      {"b.mxf", "dnxhd -profile:v dnxhr_hq -pix_fmt yuv422p -s 256x120"},
                                      {"a.mov", "prores_ks -profile:v 3"},
                                      {"b.mov", "prores_ks -profile:v 4444 -pix_fmt yuv444p10le"},
                                      {"a.mp4", "libx264 -qp 1 -pix_fmt yuv420p"},
                                      {"a.m4v", "libx264 -qp 1 -pix_fmt yuv420p"},
                                      {"a.mkv", "ffv1"},
                                      {"a.avi", "mjpeg -q:v 1 -pix_fmt yuvj422p"}}) {
        SCOPED_TRACE(name);
        const std::string movie = folder.path(name);
        // 24 frames a second would be a matter of rounding in some of the containers.
        ASSERT_EQ(
            outputOf("ffmpeg -v error -f lavfi -i \"color=black:s=64x48:r=25:d=1,geq=lum='16+N*8':cb=128:cr=128\" "
                     "-frames:v 20 -c:v " +
                     std::string(codec) + " " + movie),
            "");
        const std::unique_ptr<FrameReader> reader = openReader(movie);
        EXPECT_EQ(reader->frameCount(), 20);
        for (const int index : {0, 7, 3, 19}) EXPECT_EQ(risingFrame(middle(*reader, index)), index);
    }
}

TEST_F(Movie, ThatStartsLateCountsFromItsFirstFrame) {
    makeRising("-output_ts_offset 2");
    const std::unique_ptr<FrameReader> reader = openReader(path);
    for (const int index : {0, 19, 5}) EXPECT_EQ(risingFrame(middle(*reader, index)), index);
}

// A red converted by one matrix and read by the other is off by a tenth. ProRes is lossy and has 10 bits: a step is
// 0.001.
TEST_F(Movie, OfBt709RedComesOutRed) {
    make("color=red:s=64x48:r=24:d=0.2,format=gbrp,scale=out_color_matrix=bt709:out_range=tv,format=yuv422p10le",
         "-vf setparams=colorspace=bt709:color_primaries=bt709:color_trc=bt709");
    EXPECT_THAT(middle(*openReader(path), 0),
                testing::ElementsAre(testing::FloatNear(1, 0.006f), testing::FloatNear(0, 0.006f),
                                     testing::FloatNear(0, 0.006f)));
}

TEST_F(Movie, OfBt601RedComesOutRed) {
    make("color=red:s=1280x720:r=24:d=0.1,format=gbrp,scale=out_color_matrix=bt601:out_range=tv,format=yuv422p10le",
         "-vf setparams=colorspace=smpte170m:color_primaries=smpte170m:color_trc=smpte170m");
    EXPECT_THAT(middle(*openReader(path), 0),
                testing::ElementsAre(testing::FloatNear(1, 0.006f), testing::FloatNear(0, 0.006f),
                                     testing::FloatNear(0, 0.006f)));
}

TEST_F(Movie, ThatDoesNotStateItsMatrixIsTakenAsBt709FromSevenHundredAndTwentyLinesOn) {
    make("color=red:s=1280x720:r=24:d=0.1,format=gbrp,scale=out_color_matrix=bt709:out_range=tv,format=yuv422p10le",
         "");
    EXPECT_NEAR(middle(*openReader(path), 0)[0], 1.0f, 0.006f);
}

TEST_F(Movie, HasBlackAndWhiteAtTheEndsOfTheRange) {
    make("color=white:s=64x48:r=24:d=0.1", "-frames:v 1");
    for (const float each : middle(*openReader(path), 0)) EXPECT_NEAR(each, 1.0f, 0.004f);
}

TEST_F(Movie, WithAnAlphaChannelKeepsIt) {
    make("color=red@0.5:s=64x48:r=24:d=0.1,format=yuva444p10le", "-profile:v 4444 -frames:v 1");
    Frame frame;
    openReader(path)->readPixels(frame);
    ASSERT_EQ(frame.parts[0].channels.size(), 4u);
    std::vector<float> row(64 * 4);
    frame.parts[0].planes[0].rowToFloat(10, row.data());
    EXPECT_NEAR(row[3], 0.5f, 0.01f);
}

TEST_F(Movie, CountsItsTimecodeOnFromTheFirstFrame) {
    makeRising("-timecode 10:00:00:20");
    const std::unique_ptr<FrameReader> reader = openReader(path);
    EXPECT_EQ(timecode(*reader, 0), "10:00:00:20");
    EXPECT_EQ(timecode(*reader, 3), "10:00:00:23");
    EXPECT_EQ(timecode(*reader, 4), "10:00:01:00");
}

TEST_F(Movie, LeavesOutNumbersInADropFrameTimecode) {
    make("color=black:s=64x48:r=30000/1001:d=1", "-timecode '10:00:59;28' -frames:v 5");
    const std::unique_ptr<FrameReader> reader = openReader(path);
    EXPECT_EQ(timecode(*reader, 1), "10:00:59:29");
    EXPECT_EQ(timecode(*reader, 2), "10:01:00:02");
}

TEST_F(Movie, CountsFramesBeyondTheRoomOfAPackedTimecode) {
    make("color=black:s=64x48:r=60:d=1", "-timecode 10:00:00:38 -frames:v 5");
    const std::unique_ptr<FrameReader> reader = openReader(path);
    EXPECT_EQ(timecode(*reader, 1), "10:00:00:39");
    EXPECT_EQ(timecode(*reader, 3), "10:00:00:41");
}

TEST_F(Movie, KeepsADropFrameTimecodeBeyondTheRoomOfAPackedOne) {
    make("color=black:s=64x48:r=60000/1001:d=1", "-timecode '10:00:59;58' -frames:v 5");
    const std::unique_ptr<FrameReader> reader = openReader(path);
    EXPECT_EQ(reader->readHeader(1).parts[0].text("input/timecode"), "10:00:59;59");
    EXPECT_EQ(timecode(*reader, 1), "10:00:59:59");
    EXPECT_EQ(timecode(*reader, 2), "10:01:00:04");
}

TEST_F(Movie, WithoutATimecodeShowsNone) {
    makeRising();
    EXPECT_EQ(timecode(*openReader(path), 0), "(none)");
}

TEST_F(Movie, ShowsItsKeysAsAHostDoes) {
    makeRising("-movflags use_metadata_tags -metadata com.apple.proapps.reel=A001");
    const std::unique_ptr<FrameReader> reader = openReader(path);
    const Metadata keys = hostMetadata(reader->readHeader(3), path, 4);
    EXPECT_EQ(metadataText(keys.at("quicktime/com/apple/proapps/reel")), "A001");
    EXPECT_EQ(metadataText(keys.at("quicktime/codec_name")), "prores");
    EXPECT_EQ(metadataText(keys.at("input/frame_rate")), "24");
    EXPECT_EQ(metadataText(keys.at("input/filereader")), "mov");
    EXPECT_EQ(metadataText(keys.at("input/bitsperchannel")), "16-bit fixed");
    EXPECT_EQ(metadataText(keys.at("input/frame")), "4");
}

TEST_F(Movie, HandsItsTimecodeToAnExr) {
    makeRising("-timecode 10:00:00:20");
    Frame frame;
    openReader(path)->readPixels(frame, 1, 4);
    writeFrame(folder.path("a.exr"), frame);
    const std::unique_ptr<FrameReader> exr = openReader(folder.path("a.exr"));
    EXPECT_EQ(metadataText(hostMetadata(exr->readHeader(), path, 1).at("input/timecode")), "10:00:01:00");
}

TEST_F(Movie, RefusesAFrameItDoesNotHave) {
    makeRising();
    try {
        Frame frame;
        openReader(path)->readPixels(frame, 1, 20);
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(error.what(), path + ": has no frame 20 (it has 20, counted from 0)");
    }
}

TEST_F(Movie, ThatIsNoMovieIsRefused) {
    writeBytes(path, std::string(100000, 'x'));
    try {
        openReader(path);
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(path + ": cannot be read as a movie ("));
    }
}

TEST_F(Movie, ThatIsCutGivesTheFramesItHas) {
    makeRising();
    // The index lies at the end; put first, a cut file still opens.
    ASSERT_EQ(outputOf("ffmpeg -v error -i " + path + " -c copy -movflags +faststart " + folder.path("fast.mov")), "");
    std::filesystem::resize_file(folder.path("fast.mov"), std::filesystem::file_size(folder.path("fast.mov")) * 2 / 3);
    const std::unique_ptr<FrameReader> reader = openReader(folder.path("fast.mov"));
    EXPECT_EQ(risingFrame(middle(*reader, 2)), 2);
    EXPECT_THROW(middle(*reader, 19), ImageError);
    EXPECT_EQ(risingFrame(middle(*reader, 3)), 3) << "a failure leaves the reader in order";
}

TEST_F(Movie, IsNotWritten) {
    EXPECT_THROW(writeFrame(path, Frame()), ImageError);
    EXPECT_TRUE(isMovie("A001.MOV"));
    EXPECT_FALSE(isMovie("A001.exr"));
}

} // namespace

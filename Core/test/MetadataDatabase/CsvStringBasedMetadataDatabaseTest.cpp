#include "MetadataDatabase/CsvStringBasedMetadataDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "MetadataDatabase/MetadataDatabase.h"

using MetadataDatabase::CameraManufacturerContainerFormatMismatchException;
using MetadataDatabase::CsvStringBasedMetadataDatabase;
using MetadataDatabase::MetadataKind;

namespace {

std::string keyFor(MetadataKind kind, const std::string& maker, const std::string& container) {
    std::string key;
    CsvStringBasedMetadataDatabase::sharedInstance().keyForKind(kind, maker, container, key);
    return key;
}

} // namespace

TEST(MetadataKeyTable, HoldsTheFifteenRowsInOrder) {
    EXPECT_THAT(
        MetadataDatabase::metadataKeysCsvStringArray,
        testing::ElementsAre(
            testing::StrEq("ClipFileName;RED;R3D;r3d/reel_id_full"),
            testing::StrEq("ClipFileName;RED;MOV;quicktime/red/camera/ClipFilename"),
            testing::StrEq("ClipFileName;ARRI;MXF;arri/camera/CameraClipName"),
            testing::StrEq("ClipFileName;ARRI;EXR;exr/interim.clip.cameraClipName"),
            testing::StrEq("ClipFileName;ARRI;MOV;quicktime/arri/camera/CameraClipName"),
            testing::StrEq("ClipFileName;ARRI;ARI;arri/camera/CameraClipName"),
            testing::StrEq("ClipFileName;Sony;MOV;quicktime/apple/proapps/reel"),
            testing::StrEq("Timecode;RED;R3D;r3d/start_absolute_timecode"),
            testing::StrEq("Timecode;RED;EXR;input/timecode"), testing::StrEq("Timecode;RED;MOV;input/timecode"),
            testing::StrEq("Timecode;ARRI;MXF;input/timecode"), testing::StrEq("Timecode;ARRI;EXR;input/timecode"),
            testing::StrEq("Timecode;ARRI;MOV;input/timecode"), testing::StrEq("Timecode;ARRI;ARI;input/timecode"),
            testing::StrEq("Timecode;Sony;MOV;input/timecode")));
}

TEST(CsvStringBasedMetadataDatabase, FindsTheKeyOfAKindMakerAndContainer) {
    EXPECT_EQ(keyFor(MetadataKind::Timecode, "RED", "R3D"), "r3d/start_absolute_timecode");
}

TEST(CsvStringBasedMetadataDatabase, IgnoresTheCaseOfMakerAndContainer) {
    EXPECT_EQ(keyFor(MetadataKind::ClipFileName, "red", "r3d"), "r3d/reel_id_full");
}

TEST(CsvStringBasedMetadataDatabase, NamesKindMakerAndContainerOfAMissingKeyAndLeavesTheOutputUntouched) {
    std::string key = "untouched";
    try {
        CsvStringBasedMetadataDatabase::sharedInstance().keyForKind(MetadataKind::ClipFileName, "RED", "EXR", key);
        FAIL();
    } catch (const CameraManufacturerContainerFormatMismatchException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Camera manufacturer and container format could not be found in the recording format database.\n"
                  "Metadata Kind: \"ClipFileName\"\nCamera Manufacturer: \"RED\"\nContainer Format: \"EXR\"\n");
    }
    EXPECT_EQ(key, "untouched");
}

TEST(CsvStringBasedMetadataDatabase, KnowsSonyForMovOnly) {
    EXPECT_THROW(keyFor(MetadataKind::Timecode, "Sony", "MXF"), CameraManufacturerContainerFormatMismatchException);
}

TEST(CsvStringBasedMetadataDatabase, FindsNothingForAnEmptyMaker) {
    EXPECT_THROW(keyFor(MetadataKind::Timecode, "", "MOV"), CameraManufacturerContainerFormatMismatchException);
}

TEST(CsvStringBasedMetadataDatabase, FindsNothingForAnEmptyContainer) {
    EXPECT_THROW(keyFor(MetadataKind::Timecode, "RED", ""), CameraManufacturerContainerFormatMismatchException);
}

TEST(CsvStringBasedMetadataDatabase, MatchesKindNamesExactly) {
    const char* const rows[] = {"timecode;RED;MOV;a/key"};
    const CsvStringBasedMetadataDatabase database(rows, 1);
    std::string key;
    EXPECT_DEATH(database.keyForKind(MetadataKind::Timecode, "RED", "MOV", key), "kindExists");
}

TEST(CsvStringBasedMetadataDatabase, KeepsTheLaterOfTwoRowsWithOneKey) {
    const char* const rows[] = {"Timecode;RED;MOV;first", "Timecode;red;mov;second"};
    const CsvStringBasedMetadataDatabase database(rows, 2);
    std::string key;
    database.keyForKind(MetadataKind::Timecode, "RED", "MOV", key);
    EXPECT_EQ(key, "second");
}

TEST(CsvStringBasedMetadataDatabase, IsOneObjectForAllThreads) {
    std::vector<const void*> seen(8);
    std::vector<std::thread> threads;
    for (const void*& address : seen) {
        threads.emplace_back([&address] { address = &CsvStringBasedMetadataDatabase::sharedInstance(); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(seen, testing::Each(&CsvStringBasedMetadataDatabase::sharedInstance()));
}

TEST(CsvStringBasedMetadataDatabaseDeathTest, StopsOnAKindThatIsNone) {
    for (const int kind : {2, -1, 1000000}) {
        EXPECT_DEATH(keyFor(static_cast<MetadataKind>(kind), "RED", "MOV"), "Assertion failed: kindExists\n") << kind;
    }
}

TEST(CsvStringBasedMetadataDatabaseDeathTest, StopsOnARowWithoutFourFields) {
    const char* const rows[] = {"Timecode;RED;MOV"};
    EXPECT_DEATH(CsvStringBasedMetadataDatabase(rows, 1), "parts.size\\(\\) == 4");
}

#include "Lens/CorrectionFileData.h"

#include <gtest/gtest.h>

#include "Support/CorrectionFileText.h"
#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Support::CorrectionFileText;
using Tools::CorrectionFileData;

TEST(CorrectionFileData, carriesTheRecordingFormatOfTheHeader) {
    const Support::TemporaryFolder folder;
    const std::string text = CorrectionFileText().with("sensorWidth", "24").string();
    EXPECT_FLOAT_EQ(13.566324f, CorrectionFileData::read(folder.write("a.olcf", text)).recordingFormat.imageRadius);
}

TEST(CorrectionFileData, namesAFileThatCannotBeRead) {
    EXPECT_EQ(
        "wrong use: /nowhere/a.olcf: the correction file could not be read; it must be a regular file with read "
        "permission.",
        failureOf([] { CorrectionFileData::read("/nowhere/a.olcf"); }));
}

TEST(CorrectionFileData, namesTheBadLineAndTheCommandThatFindsTheOthers) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("a.olcf", CorrectionFileText().withFrameLine("1;").string());
    EXPECT_EQ("wrong use: " + path +
                  ": Correction file could not be parsed due to an invalid format.\nLine Number: 24\nLine Content: "
                  "\"1;\"\nRun \"lenscorrect check\" on it to list every defect.",
              failureOf([&] { CorrectionFileData::read(path); }));
}

TEST(CorrectionFileData, refusesTextInThePlaceOfANumber) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("a.olcf", CorrectionFileText().withFrameLine("x;;;;;;;;;").string());
    EXPECT_EQ(
        "wrong use: " + path +
            ": a frame line has text where a number belongs. Run \"lenscorrect check\" on it to list every defect.",
        failureOf([&] { CorrectionFileData::read(path); }));
}

#include "RecordingFormatDatabase/CsvStringBasedRecordingFormatDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/lexical_cast.hpp>
#include <cmath>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "RecordingFormatDatabase/RecordingFormatDatabase.h"
#include "Support/CommaLocale.h"

using RecordingFormatDatabase::CameraManufacturerModelMismatchException;
using RecordingFormatDatabase::CameraManufacturerNotFoundException;
using RecordingFormatDatabase::CsvStringBasedRecordingFormatDatabase;
using RecordingFormatDatabase::RecordingFormat;
using RecordingFormatDatabase::recordingFormatsCsvStringArray;
using testing::ElementsAre;

namespace {

const RecordingFormatDatabase::RecordingFormatDatabase& database() {
    return CsvStringBasedRecordingFormatDatabase::sharedInstance();
}

std::map<std::string, RecordingFormat> formatsOf(const std::string& maker, const std::string& model) {
    std::map<std::string, RecordingFormat> formats;
    database().recordingFormats(maker, model, formats);
    return formats;
}

std::vector<std::string> modelsOf(const std::string& maker) {
    std::vector<std::string> models;
    database().cameraModels(maker, models);
    return models;
}

std::string text(const RecordingFormat& format) {
    std::ostringstream stream;
    stream << format.imageAreaWidth << " x " << format.imageAreaHeight << " mm, " << format.clipResolutionWidth << " x "
           << format.clipResolutionHeight << " px";
    return stream.str();
}

template <std::size_t count>
CsvStringBasedRecordingFormatDatabase databaseOf(const char* const (&rows)[count]) {
    return CsvStringBasedRecordingFormatDatabase(rows, count);
}

struct ModelCount {
    const char* maker;
    const char* model;
    std::size_t rows;
};

// In the order of the table.
const ModelCount modelCounts[] = {
    {"ARRI", "AMIRA", 5},
    {"ARRI", "ALEXA Classic", 3},
    {"ARRI", "ALEXA XT", 8},
    {"ARRI", "ALEXA SXT", 12},
    {"ARRI", "ALEXA Mini", 9},
    {"ARRI", "ALEXA 65", 3},
    {"ARRI", "ALEXA LF", 5},
    {"ARRI", "ALEXA Mini LF", 5},
    {"BlackMagic", "BlackMagic URSA Mini 4.6K", 8},
    {"RED", "WEAPON 8K VV", 108},
    {"RED", "WEAPON 8K S35 HELIUM", 108},
    {"RED", "EPIC-W HELIUM", 108},
    {"RED", "WEAPON 6K DRAGON MC", 76},
    {"RED", "WEAPON 6K DRAGON CF", 76},
    {"RED", "EPIC 6K DRAGON", 76},
    {"RED", "SCARLET-W 5K DRAGON", 62},
    {"RED", "SCARLET 5K DRAGON", 27},
    {"RED", "RAVEN 4.5K DRAGON", 25},
    {"RED", "EPIC MYSTERIUM-X 5K", 16},
    {"RED", "SCARLET-X MYSTERIUM-X 5K", 16},
    {"RED", "EPIC-X MONOCHROME", 16},
    {"RED", "EPIC-X", 16},
    {"RED", "SCARLET-X", 16},
    {"RED", "EPIC-M DRAGON MONOCHROME", 76},
    {"RED", "EPIC-M DRAGON", 76},
    {"RED", "EPIC-X DRAGON MONOCHROME", 76},
    {"RED", "EPIC-X DRAGON", 76},
    {"RED", "SCARLET-X DRAGON", 27},
    {"RED", "DSMC2 DRAGON 6K S35 (CF)", 76},
    {"RED", "DSMC2 DRAGON 6K S35 MONOCHROME (CF)", 76},
    {"RED", "DSMC2 DRAGON 8K VV", 108},
    {"RED", "DSMC2 HELIUM 8K S35", 109},
    {"RED", "DSMC2 HELIUM 8K S35 MONOCHROME", 109},
    {"RED", "DSMC2 GEMINI 5K S35", 62},
    {"RED", "DSMC2 MONSTRO 8K VV", 109},
    {"RED", "DSMC2 MONSTRO 8K VV MONOCHROME", 109},
    {"RED", "DSMC2 DRAGON 6K S35 MONOCHROME (Mg)", 76},
    {"RED", "DSMC2 DRAGON 6K S35 (Mg)", 76},
    {"RED", "RED RAVEN 4.5K", 25},
    {"RED", "SCARLET-W 5K MONOCHROME", 62},
    {"RED", "SCARLET-W 5K", 62},
    {"RED", "RED EPIC-W 8K S35", 109},
    {"RED", "RED EPIC-W 8K S35 MONOCHROME", 109},
    {"RED", "RED EPIC-W 5K S35", 62},
    {"RED", "RANGER MONSTRO 8K VV", 109},
    {"RED", "RANGER HELIUM 8K S35", 109},
    {"RED", "RANGER GEMINI 5K S35", 62},
    {"Panavision", "Panavision DXL", 37},
    {"Sony", "MPC-3610", 13},
};

} // namespace

TEST(RecordingFormatTable, IsTheCommittedFileRowByRow) {
    std::ifstream file(ORVEX_SOURCE_DIR "/Core/src/RecordingFormatDatabase/RecordingFormats.csv");
    std::string line;
    std::size_t row = 0;
    for (; std::getline(file, line); ++row) {
        ASSERT_LT(row, std::size(recordingFormatsCsvStringArray));
        ASSERT_EQ(recordingFormatsCsvStringArray[row], line);
    }
    EXPECT_EQ(row, std::size(recordingFormatsCsvStringArray));
}

TEST(RecordingFormatTable, HasTheGivenNumberOfRowsForEveryMakerAndModelInThisOrder) {
    std::size_t row = 0;
    for (const ModelCount& expected : modelCounts) {
        const std::string prefix = std::string(expected.maker) + ";" + expected.model + ";";
        std::size_t count = 0;
        while (row < std::size(recordingFormatsCsvStringArray) &&
               std::string(recordingFormatsCsvStringArray[row]).rfind(prefix, 0) == 0) {
            ++row;
            ++count;
        }
        EXPECT_EQ(count, expected.rows) << prefix;
    }
    EXPECT_EQ(row, 2804u);
}

TEST(RecordingFormatTable, RepeatsNoMakerModelAndFormat) {
    std::size_t stored = 0;
    for (const ModelCount& expected : modelCounts) {
        const auto formats = formatsOf(expected.maker, expected.model);
        EXPECT_EQ(formats.size(), expected.rows) << expected.model;
        stored += formats.size();
    }
    EXPECT_EQ(stored, 2804u);
}

TEST(RecordingFormatTable, BeginsWithTheAmirasSuper16Format) {
    EXPECT_STREQ(recordingFormatsCsvStringArray[0], "ARRI;AMIRA;ALEV III;16:9 S16 HD;13.2;7.43;1920;1080");
}

TEST(RecordingFormatTable, HoldsTheFixedRows) {
    const std::set<std::string> rows(std::begin(recordingFormatsCsvStringArray),
                                     std::end(recordingFormatsCsvStringArray));
    for (const char* row : {
             "ARRI;AMIRA;ALEV III;16:9 S16 HD;13.2;7.43;1920;1080",
             "ARRI;ALEXA 65;A3X;RAW Open Gate 6.5K;54.12;25.58;6560;3100",
             "RED;WEAPON 8K VV;VV Dragon;8K FF;40.96;21.6;8192;4320",
             "Panavision;Panavision DXL;MONSTRO 8K VV;8K 2:1 (2.0:1);40.96;20.48;8192;4096",
             "Sony;MPC-3610;Full-Frame CMOS;4K 2.39:1;24.30;10.3;4096;1716",
             "BlackMagic;BlackMagic URSA Mini 4.6K;;4.6k (16:9);25.34;14.25;4608;2592",
         }) {
        EXPECT_EQ(rows.count(row), 1u) << row;
    }
}

TEST(RecordingFormatTable, HasPositiveSizesAndFormatNamesOfAtMost27Characters) {
    for (const ModelCount& model : modelCounts) {
        for (const auto& [name, format] : formatsOf(model.maker, model.model)) {
            EXPECT_LE(name.size(), 27u) << name;
            EXPECT_TRUE(format.imageAreaWidth > 0.0f && format.imageAreaHeight > 0.0f) << name;
            EXPECT_TRUE(format.clipResolutionWidth > 0 && format.clipResolutionHeight > 0) << name;
        }
    }
}

TEST(CsvStringBasedRecordingFormatDatabase, ListsTheMakersAlphabeticallyWithoutRegardToCase) {
    std::vector<std::string> makers = {"left over"};
    database().cameraManufacturers(makers);
    EXPECT_THAT(makers, ElementsAre("ARRI", "BlackMagic", "Panavision", "RED", "Sony"));
}

TEST(CsvStringBasedRecordingFormatDatabase, FindsAMakersModelsWhateverTheCase) {
    EXPECT_THAT(modelsOf("arri"), ElementsAre("ALEXA 65", "ALEXA Classic", "ALEXA LF", "ALEXA Mini", "ALEXA Mini LF",
                                              "ALEXA SXT", "ALEXA XT", "AMIRA"));
}

TEST(CsvStringBasedRecordingFormatDatabase, FindsAModelsFormatsWhateverTheCase) {
    EXPECT_EQ(text(formatsOf("red", "weapon 8k vv").at("8K FF")), "40.96 x 21.6 mm, 8192 x 4320 px");
}

TEST(CsvStringBasedRecordingFormatDatabase, KeepsFormatNamesCaseSensitive) {
    EXPECT_EQ(formatsOf("RED", "WEAPON 8K VV").count("8k ff"), 0u);
}

TEST(CsvStringBasedRecordingFormatDatabase, LoadsRowsWithoutASensorName) {
    EXPECT_EQ(text(formatsOf("BlackMagic", "BlackMagic URSA Mini 4.6K").at("4.6k (16:9)")),
              "25.34 x 14.25 mm, 4608 x 2592 px");
}

TEST(CsvStringBasedRecordingFormatDatabase, WorksOutTheImageRadiusInDoublePrecision) {
    const RecordingFormat format = formatsOf("ARRI", "AMIRA").at("16:9 S16 HD");
    const double halfWidth = static_cast<double>(13.2f) / 2;
    const double halfHeight = static_cast<double>(7.43f) / 2;
    EXPECT_EQ(format.imageRadius, static_cast<float>(std::sqrt(halfWidth * halfWidth + halfHeight * halfHeight)));
    EXPECT_NEAR(format.imageRadius, 7.5737f, 5e-5f) << "rounded to four decimals";
}

TEST(CsvStringBasedRecordingFormatDatabase, ReplacesWhatTheOutputsHeld) {
    std::vector<std::string> models = {"left over"};
    std::map<std::string, RecordingFormat> formats = {{"left over", {}}};
    database().cameraModels("Sony", models);
    database().recordingFormats("Sony", "MPC-3610", formats);
    EXPECT_THAT(models, ElementsAre("MPC-3610"));
    EXPECT_EQ(formats.count("left over"), 0u);
}

TEST(CsvStringBasedRecordingFormatDatabase, NamesAnUnknownMakerAsItWasPassed) {
    std::vector<std::string> models = {"untouched"};
    try {
        database().cameraModels("aRRi ", models);
        FAIL();
    } catch (const CameraManufacturerNotFoundException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Camera manufacturer could not be found in the recording format database.\n"
                  "Camera Manufacturer: \"aRRi \"\n");
    }
    EXPECT_THAT(models, ElementsAre("untouched"));
}

TEST(CsvStringBasedRecordingFormatDatabase, NamesMakerAndModelWhenTheMakerHasNoSuchModel) {
    std::map<std::string, RecordingFormat> formats = {{"untouched", {}}};
    try {
        database().recordingFormats("RED", "AMIRA", formats);
        FAIL();
    } catch (const CameraManufacturerModelMismatchException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Camera manufacturer and model could not be found in the recording format database.\n"
                  "Camera Manufacturer: \"RED\"\nCamera Model: \"AMIRA\"\n");
    }
    EXPECT_EQ(formats.count("untouched"), 1u);
}

TEST(CsvStringBasedRecordingFormatDatabase, ReportsAnUnknownMakerAsSuchEvenForAKnownModel) {
    EXPECT_THROW(formatsOf("Canon", "AMIRA"), CameraManufacturerNotFoundException);
}

TEST(CsvStringBasedRecordingFormatDatabase, KeepsTheLaterOfTwoRowsWithOneKey) {
    const auto twice = databaseOf({"Maker;Model;;Name;1.5;2;10;20", "maker;MODEL;;Name;3;4;30;40"});
    std::map<std::string, RecordingFormat> formats;
    twice.recordingFormats("MAKER", "model", formats);
    EXPECT_EQ(text(formats.at("Name")), "3 x 4 mm, 30 x 40 px");
}

TEST(CsvStringBasedRecordingFormatDatabase, RejectsNumbersThatDoNotConvertAsAWhole) {
    for (const char* row : {"A;B;C;D;1.5x;2;10;20", "A;B;C;D;1.5; 2;10;20", "A;B;C;D;1.5;;10;20",
                            "A;B;C;D;1.5;2;10.5;20", "A;B;C;D;1.5;2;10;4294967296"}) {
        EXPECT_THROW(CsvStringBasedRecordingFormatDatabase(&row, 1), boost::bad_lexical_cast) << row;
    }
}

TEST(CsvStringBasedRecordingFormatDatabase, ReadsItsNumbersWhateverTheGlobalLocale) {
    const Support::CommaLocale comma;
    const auto parsed = databaseOf({"A;B;C;D;13.2;7.43;1920;1080"});
    std::map<std::string, RecordingFormat> formats;
    parsed.recordingFormats("A", "B", formats);
    EXPECT_EQ(formats.at("D").imageAreaWidth, 13.2f);
    EXPECT_EQ(formats.at("D").clipResolutionWidth, 1920u);
}

TEST(CsvStringBasedRecordingFormatDatabase, IsOneObjectForAllThreads) {
    std::vector<const void*> seen(8);
    std::vector<std::thread> threads;
    for (const void*& address : seen) threads.emplace_back([&address] { address = &database(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(seen, testing::Each(&database()));
}

TEST(CsvStringBasedRecordingFormatDatabaseDeathTest, StopsOnARowWithoutEightFields) {
    EXPECT_DEATH(databaseOf({"A;B;C;D;1;2;3"}), "parts.size\\(\\) == 8");
    EXPECT_DEATH(databaseOf({"A;B;C;D;1;2;3;4;5"}), "parts.size\\(\\) == 8");
}

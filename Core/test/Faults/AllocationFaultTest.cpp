// Every allocation of the readers and of a render fails once: nothing but std::bad_alloc or a told failure comes of it,
// outputs stay untouched, and the same call is right when it is made again.

#include "Faults/AllocationFault.h"

#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>
#include <boost/filesystem/exception.hpp>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "Core/CorrectionPolynomials.h"
#include "Core/ExtendedManagedContainer.h"
#include "CorrectionData/ContainerManager/ContainerManagerContentCache.h"
#include "CorrectionData/Parser/JsonParser.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Faults/FaultyFacade.h"
#include "MetadataDatabase/CsvStringBasedMetadataDatabase.h"
#include "RecordingFormatDatabase/CsvStringBasedRecordingFormatDatabase.h"
#include "Support/CorrectionFileText.h"
#include "Support/OpenCLDevice.h"
#include "Support/TemporaryFolder.h"

using MetadataDatabase::CsvStringBasedMetadataDatabase;
using MetadataDatabase::MetadataKind;
using RecordingFormatDatabase::CsvStringBasedRecordingFormatDatabase;
using Support::FaultyFacade;

namespace {

enum class Outcome { Succeeded, OutOfMemory };

/// Runs the operation with the number-th allocation failing; `fault` tells whether there was such an allocation.
Outcome runWithFault(long number, const std::function<void()>& operation, bool& fault) {
    Outcome outcome = Outcome::Succeeded;
    AllocationFault::arm(number);
    try {
        operation();
    } catch (const std::bad_alloc&) {
        outcome = Outcome::OutOfMemory;
    } catch (const boost::filesystem::filesystem_error& error) {
        // The library's own word for it.
        if (error.code() == boost::system::errc::not_enough_memory) outcome = Outcome::OutOfMemory;
    }
    fault = AllocationFault::disarm();
    return outcome;
}

/// Fails every allocation once and expects nothing but std::bad_alloc of it; calls `check` after each.
/// Answers the number of allocations.
long failEveryAllocation(
    const std::function<void()>& operation, const std::function<void()>& check = [] {}) {
    for (long number = 1;; ++number) {
        bool fault = false;
        const Outcome outcome = runWithFault(number, operation, fault);
        if (!fault) {
            EXPECT_EQ(outcome, Outcome::Succeeded);
            return number - 1;
        }
        EXPECT_EQ(outcome, Outcome::OutOfMemory) << "allocation " << number;
        check();
        if (testing::Test::HasFailure()) return number;
    }
}

std::string correctionFileText() {
    return Support::CorrectionFileText()
        .withFrame(0, "01:00:00:00")
        .withFrame(1, "01:00:00:01")
        .withFrame(2, "01:00:00:02")
        .string();
}

class AllocationFaultInRender : public OnOpenCLDevice {};

} // namespace

TEST(AllocationFault, InTheParserLeavesTheContentUntouched) {
    const std::string text = correctionFileText();
    CorrectionData::Content content;
    EXPECT_GT(failEveryAllocation([&] { CorrectionFile::Parser().parse(text, content); },
                                  [&] { EXPECT_TRUE(content.frames.empty() && content.header.videoFileName.empty()); }),
              10);
    EXPECT_EQ(content.frames.size(), 3u);
}

TEST(AllocationFault, InTheReaderLeavesTheTextUntouched) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("A.olcf", correctionFileText());
    std::string text = "untouched";
    failEveryAllocation([&] { CorrectionFile::Reader().readFile(path, text); }, [&] { EXPECT_EQ(text, "untouched"); });
    EXPECT_EQ(text, correctionFileText());
}

TEST(AllocationFault, InTheRecordOfAFrameLeavesHeaderAndFrameUntouched) {
    CorrectionData::Header header;
    CorrectionData::Frame frame;
    EXPECT_GT(failEveryAllocation([&] { CorrectionData::JsonParser::parse(Support::jsonRecord, header, frame); },
                                  [&] { EXPECT_TRUE(header.cameraModel.empty() && frame.heights.empty()); }),
              10);
    EXPECT_EQ(frame.heights.size(), 7u);
}

TEST(AllocationFault, InTheFinderLeavesThePathUntouched) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("1/2/A001C002.olcf", Support::CorrectionFileText().withFrame(0, "").string());
    const CorrectionFile::ClipFilePathBasedFinder finder(folder.path("1/2/3/A001C002.mov"), {1, 2, 1});
    folder.makeFolder("1/2/3");
    std::string found = "untouched";
    failEveryAllocation([&] { finder.find(found); }, [&] { EXPECT_EQ(found, "untouched"); });
    EXPECT_EQ(found, path);
}

TEST(AllocationFault, InTheRecordingFormatDatabaseLeavesTheMakersUntouched) {
    const auto& database = CsvStringBasedRecordingFormatDatabase::sharedInstance();
    const std::vector<std::string> before = {"untouched"};
    std::vector<std::string> makers = before;
    EXPECT_GT(failEveryAllocation([&] { database.cameraManufacturers(makers); }, [&] { EXPECT_EQ(makers, before); }),
              0);
    EXPECT_EQ(makers.size(), 5u);
}

TEST(AllocationFault, InTheRecordingFormatDatabaseLeavesTheModelsUntouched) {
    const auto& database = CsvStringBasedRecordingFormatDatabase::sharedInstance();
    const std::vector<std::string> before = {"untouched"};
    std::vector<std::string> models = before;
    EXPECT_GT(failEveryAllocation([&] { database.cameraModels("RED", models); }, [&] { EXPECT_EQ(models, before); }),
              1);
    EXPECT_EQ(models.size(), 38u);
}

TEST(AllocationFault, InTheRecordingFormatDatabaseLeavesTheFormatsUntouched) {
    const auto& database = CsvStringBasedRecordingFormatDatabase::sharedInstance();
    std::map<std::string, RecordingFormatDatabase::RecordingFormat> formats = {{"untouched", {}}};
    EXPECT_GT(failEveryAllocation([&] { database.recordingFormats("ARRI", "AMIRA", formats); },
                                  [&] { EXPECT_TRUE(formats.size() == 1 && formats.count("untouched") == 1); }),
              1);
    EXPECT_EQ(formats.size(), 5u);
}

TEST(AllocationFault, InTheMetadataDatabaseLeavesTheKeyUntouched) {
    const auto& database = CsvStringBasedMetadataDatabase::sharedInstance();
    std::string key = "untouched";
    EXPECT_GT(failEveryAllocation([&] { database.keyForKind(MetadataKind::ClipFileName, "ARRI", "EXR", key); },
                                  [&] { EXPECT_EQ(key, "untouched"); }),
              0);
    EXPECT_EQ(key, "exr/interim.clip.cameraClipName");
}

TEST(AllocationFault, InAContainerLeavesHeaderAndFrameUntouched) {
    CorrectionData::ManagedContainer container(Support::jsonRecord);
    CorrectionData::Header header;
    CorrectionData::Frame frame;
    failEveryAllocation([&] { container.headerData(header); },
                        [&] { EXPECT_TRUE(header.cameraManufacturer.empty() && header.cameraModel.empty()); });
    failEveryAllocation([&] { container.frameData(0u, frame); },
                        [&] { EXPECT_TRUE(frame.heights.empty() && frame.shading.empty()); });
    EXPECT_EQ(frame.radialDistortion.size(), 7u);
}

TEST(AllocationFault, InTheContentCacheLeavesNothingOfTheNewEntryAndAllOfTheOldOne) {
    // Texts that are too long to lie within their string.
    const std::string clip(100, 'c'), file(100, 'f'), oldFile(100, 'o'), otherClip(100, 'd');
    const auto content = std::make_shared<CorrectionData::Content>();
    long number = 1;
    for (bool fault = true; fault; ++number) {
        CorrectionData::ContainerManagerContentCache cache(2);
        cache.cacheContent(oldFile, content);
        const Outcome outcome = runWithFault(
            number, [&] { cache.cacheContent(clip, file, content); }, fault);
        EXPECT_EQ(outcome, fault ? Outcome::OutOfMemory : Outcome::Succeeded) << "allocation " << number;
        if (!fault) break;
        std::shared_ptr<CorrectionData::Content> found;
        EXPECT_FALSE(cache.cachedContentForCorrectionFilePath(file, found)) << "allocation " << number;
        cache.cacheContent(otherClip, file, content);
        EXPECT_FALSE(cache.cachedContentForClipFilePath(clip, found)) << "allocation " << number;
        EXPECT_TRUE(cache.cachedContentForCorrectionFilePath(oldFile, found)) << "allocation " << number;
    }
    EXPECT_GT(number, 4);
}

TEST(AllocationFault, InAFitIsNoFailureOfTheFit) {
    CorrectionData::Header header;
    CorrectionData::Frame frame;
    CorrectionData::JsonParser::parse(Support::jsonRecord, header, frame);
    EXPECT_GT(failEveryAllocation([&] { Core::distortionPolynomials(frame); }), 3);
}

TEST(AllocationFault, InTheFacadeLeavesTheCacheOfCorrectionFilesUsable) {
    const Support::TemporaryFolder folder;
    Support::HostFrame host;
    Core::Core core(std::make_unique<Support::FakeCoreDataSource>(host));
    host.clipFileName = "A001C002.mov";
    RecordingFormatDatabase::RecordingFormat format;
    // A file of its own for each fault, so that it is read and cached each time.
    long number = 1;
    for (bool fault = true; fault; ++number) {
        host.correctionFilePath = folder.write(std::to_string(number) + ".olcf", correctionFileText());
        format = {};
        const Outcome outcome = runWithFault(
            number, [&] { EXPECT_TRUE(core.recordingFormat(format)); }, fault);
        EXPECT_EQ(outcome, fault ? Outcome::OutOfMemory : Outcome::Succeeded) << "allocation " << number;
        ASSERT_TRUE(core.recordingFormat(format)) << "after allocation " << number;
        ASSERT_EQ(format.clipResolutionWidth, 4096u);
    }
    EXPECT_GT(number, 20);
}

TEST(AllocationFault, WhileTheAnswersChangeNeverGivesAFrameAnothersData) {
    // Longer, so that it does not fit into the memory of the first.
    const std::string other =
        boost::replace_first_copy(std::string(Support::jsonRecord), "4096", "2048") + std::string(1000, ' ');
    RecordingFormatDatabase::RecordingFormat format;
    long number = 1;
    for (bool fault = true; fault; ++number) {
        Support::HostFrame host;
        Core::Core core(std::make_unique<Support::FakeCoreDataSource>(host));
        host.frameMetadata = Support::jsonRecord;
        ASSERT_TRUE(core.recordingFormat(format));
        host.frameMetadata = other;
        runWithFault(
            number, [&] { core.recordingFormat(format); }, fault);
        host.frameMetadata = Support::jsonRecord;
        ASSERT_TRUE(core.recordingFormat(format));
        ASSERT_EQ(format.clipResolutionWidth, 4096u) << "allocation " << number;
        host.frameMetadata = other;
        ASSERT_TRUE(core.recordingFormat(format));
        ASSERT_EQ(format.clipResolutionWidth, 2048u) << "allocation " << number;
    }
    EXPECT_GT(number, 10);
}

TEST_F(AllocationFaultInRender, FailsThatFrameAndNotTheNext) {
    FaultyFacade facade;
    facade.host.shading.emplace();
    facade.host.distortion.emplace();
    ASSERT_TRUE(facade.render()) << facade.detailed(); // what is made once is made here
    const Support::Image expected = facade.output;
    long number = 1;
    for (;; ++number) {
        // Another text, so that it is parsed again.
        facade.host.frameMetadata = Support::jsonRecord + std::string(static_cast<std::size_t>(number), ' ');
        facade.output.assign(facade.input.size(), -1.0f);
        bool isRendered = false;
        bool fault = false;
        const Outcome outcome = runWithFault(
            number,
            [&] {
                isRendered =
                    facade.core.render(facade.input.data(), facade.output.data(), Support::bytes(facade.output));
            },
            fault);
        if (!fault) break;
        ASSERT_FALSE(isRendered) << "allocation " << number;
        const bool isTold = facade.detailed().find("Reason: std::bad_alloc") != std::string::npos;
        ASSERT_EQ(isTold, outcome == Outcome::Succeeded) << facade.detailed();
        ASSERT_TRUE(facade.render()) << "after allocation " << number << ": " << facade.detailed();
        ASSERT_EQ(facade.output, expected) << "after allocation " << number;
    }
    std::printf("%ld allocations failed\n", number - 1);
    EXPECT_GT(number, 50);
}

// The sanitizers' allocators end the process at a size beyond any machine unless told otherwise.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

TEST_F(AllocationFaultInRender, OfTheImageBetweenTheCorrectionsFailsThatFrameAndNotTheNext) {
    FaultyFacade facade;
    facade.host.shading.emplace();
    facade.host.distortion.emplace();
    facade.output = facade.input;
    constexpr unsigned long moreThanThereIs = 1ul << 60;
    EXPECT_THROW(facade.core.render(facade.input.data(), facade.output.data(), moreThanThereIs), std::bad_alloc);
    EXPECT_EQ(facade.output, facade.input) << "the output is untouched";
    EXPECT_TRUE(facade.render()) << facade.detailed();
}

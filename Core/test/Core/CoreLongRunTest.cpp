// A long job in one process: thousands of frames take no more memory and no more open files than the first few.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
#include "Core/Image.h"
#include "Support/CorrectionFileText.h"
#include "Support/OpenCLDevice.h"
#include "Support/TemporaryFolder.h"

namespace {

constexpr int warmUpFrames = 200;
constexpr int frames = 2000;
// What is in use may differ by a text or a queue of the driver; a leak of the frames' records would be 300 KB.
constexpr long allowedGrowth = 64 << 10;
// Of the process; fragments of the allocator too. A leak of one frame's pixels would be 290 MB.
constexpr long allowedResidentGrowth = 1 << 20;

#ifdef ORVEX_SANITIZED
constexpr bool isMemoryCounted = false; // a sanitizer keeps what is freed
#else
constexpr bool isMemoryCounted = true;
#endif

long residentBytes() {
    long pages = 0;
    std::ifstream stream("/proc/self/statm");
    stream >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

/// What has been allocated and not been freed.
long allocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>(info.uordblks + info.hblkhd);
}

long openFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

class CoreLongRunTest : public OnOpenCLDevice {};

} // namespace

TEST_F(CoreLongRunTest, TakesNoMoreMemoryAndOpenFilesThanItsFirstFrames) {
    const Support::TemporaryFolder folder;
    Support::CorrectionFileText text;
    for (int frame = 0; frame < frames; ++frame) {
        text.withFrameLine(std::to_string(frame) + ";0,3,6,9,12,15,18;100,99.5,98,96,93,89," +
                           std::to_string(50 + frame % 40) + ";0,-0.1,-0.4,-0.9,-1.6,-2.5,-3." + std::to_string(frame) +
                           ";;;;;;");
    }
    Support::HostFrame host;
    Core::Core core(std::make_unique<Support::FakeCoreDataSource>(host));
    host.clipFileName = "A001C002.mov";
    host.correctionFilePath = folder.write("A.olcf", text.string());
    host.shading.emplace();
    host.distortion.emplace();
    const Support::Image input = Support::noise(64, 36, 1);
    Support::Image output(input.size());

    long resident = 0;
    long allocated = 0;
    long files = 0;
    for (int frame = 0; frame < frames; ++frame) {
        if (frame == warmUpFrames) {
            resident = residentBytes();
            allocated = allocatedBytes();
            files = openFiles();
        }
        // Every tenth frame fails: the aspect ratio is wrong.
        const bool isGood = frame % 10 != 9;
        host.frameData = Support::frameOf(64, isGood ? 34 : 30, static_cast<std::uint32_t>(frame));
        host.questions.clear();
        ASSERT_EQ(core.render(input.data(), output.data(), Support::bytes(output)), isGood)
            << frame << Support::detailedErrorOf(core);
    }
    const long growth = allocatedBytes() - allocated;
    const long residentGrowth = residentBytes() - resident;
    std::printf(
        "%d frames: %ld bytes more allocated after the first %d, %ld KiB more of %ld KiB resident, "
        "%ld more open files\n",
        frames, growth, warmUpFrames, residentGrowth / 1024, resident / 1024, openFiles() - files);
    EXPECT_LE(isMemoryCounted ? growth : 0, allowedGrowth);
    EXPECT_LE(isMemoryCounted ? residentGrowth : 0, allowedResidentGrowth);
    EXPECT_EQ(openFiles(), files);
}

// A correction file on a storage that takes its time holds up the frames that need it, and no others.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>

#include "Core/FakeCoreDataSource.h"
#include "Core/FramePreparation.h"
#include "Support/CorrectionFileText.h"
#include "Support/JsonRecord.h"
#include "Support/TemporaryFolder.h"

namespace {

/// Runs at the beginning of each read of the thread that sets it.
thread_local std::function<void()> onRead;

} // namespace

// Stands in for the C library's, which the core calls.
extern "C" ssize_t read(int descriptor, void* bytes, size_t count) {
    if (onRead) onRead();
    return syscall(SYS_read, descriptor, bytes, count);
}

TEST(SlowFile, HoldsUpNoFrameThatCarriesItsRecord) {
    const Support::TemporaryFolder folder;
    Support::HostFrame clip;
    clip.clipFilePath = folder.path("1/2/3/4/5/A001C002.mov");
    folder.write("1/2/3/4/5/A001C002.olcf", Support::CorrectionFileText().string());
    Core::FramePreparation clipPreparation(std::make_unique<Support::FakeCoreDataSource>(clip));

    std::promise<void> reached, released;
    std::thread search([&] {
        bool isFirst = true;
        onRead = [&] {
            if (!isFirst) return;
            isFirst = false;
            reached.set_value();
            released.get_future().wait();
        };
        clipPreparation.recordingFormat();
        onRead = nullptr;
    });
    reached.get_future().wait();

    Support::HostFrame record;
    record.distortion.emplace();
    record.frameMetadata = Support::jsonRecord;
    record.frameData = Support::frameOf(4096, 2160);
    Core::FramePreparation recordPreparation(std::make_unique<Support::FakeCoreDataSource>(record));
    auto frame = std::async(std::launch::async, [&] {
        recordPreparation.recordingFormat();
        return recordPreparation.retrieveFrameToCorrect().value().recordingFormat.clipResolutionWidth;
    });
    // Far more than it takes; only a frame that waits for the file uses it up.
    const bool isReady = frame.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    released.set_value();
    search.join();
    EXPECT_TRUE(isReady);
    EXPECT_EQ(frame.get(), 4096u);
}

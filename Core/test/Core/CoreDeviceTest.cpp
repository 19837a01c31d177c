// The facade on a system whose OpenCL devices come and go.

#include <gtest/gtest.h>

#include <atomic>
#include <boost/algorithm/string/replace.hpp>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
#include "Core/Image.h"
#include "Support/FakeOpenCL.h"
#include "Support/JsonRecord.h"

namespace {

class CoreDeviceTest : public testing::Test {
protected:
    Support::HostFrame m_host;
    Core::Core m_core{std::make_unique<Support::FakeCoreDataSource>(m_host)};

    CoreDeviceTest() {
        m_host.frameMetadata = Support::jsonRecord;
        m_host.frameData = Support::frameOf(64, 34);
        m_host.shading.emplace();
    }

    bool frameSize() {
        unsigned int width = 0;
        unsigned int height = 0;
        return m_core.frameSize(width, height);
    }

    std::string failureOfFrameSize() {
        EXPECT_FALSE(frameSize());
        return Support::briefErrorOf(m_core);
    }
};

} // namespace

TEST_F(CoreDeviceTest, IsMissedBeforeAFitThatFails) {
    fakeOpenCL.platforms.clear();
    m_host.frameMetadata = boost::replace_first_copy(Support::jsonRecord, "7.5, 10", "10, 10");
    EXPECT_EQ(failureOfFrameSize(), "No devices were found!");
}

TEST_F(CoreDeviceTest, IsLookedForAgainAfterNoneWasThere) {
    const auto platforms = fakeOpenCL.platforms;
    fakeOpenCL.platforms.clear();
    EXPECT_EQ(failureOfFrameSize(), "No devices were found!");
    fakeOpenCL.platforms = platforms;
    EXPECT_TRUE(frameSize());
}

TEST_F(CoreDeviceTest, IsNotTouchedUntilACorrectionIsWanted) {
    m_host.shading.reset();
    EXPECT_TRUE(frameSize());
    EXPECT_TRUE(fakeOpenCL.calls.empty());
}

TEST_F(CoreDeviceTest, IsNotTouchedForAFrameThatDoesNotFitItsRecordingFormat) {
    m_host.frameData = Support::frameOf(64, 64);
    EXPECT_EQ(failureOfFrameSize(),
              "Aspect ratio of the current frame is not as expected. Recommended resolution is 64x34 px.");
    EXPECT_TRUE(fakeOpenCL.calls.empty());
}

TEST_F(CoreDeviceTest, RendersNothingOnceItsCallerHasGivenUp) {
    Support::Image output(64 * 34 * 4, -1.0f);
    const Support::Image untouched = output;
    EXPECT_TRUE(m_core.render(output.data(), output.data(), Support::bytes(output), [] { return true; }));
    EXPECT_TRUE(fakeOpenCL.callsOf("clEnqueueNDRangeKernel").empty());
    EXPECT_EQ(output, untouched);
    EXPECT_EQ(Support::briefErrorOf(m_core), "no error");
}

TEST_F(CoreDeviceTest, AsksWhetherItsCallerHasGivenUpOnceItIsFree) {
    Support::Image output(64 * 34 * 4);
    std::promise<void> isBusy, mayGoOn;
    // Waits in its own question, and keeps the renderers meanwhile.
    std::thread first([&] {
        Support::Image ownOutput(output.size());
        m_core.render(output.data(), ownOutput.data(), Support::bytes(output), [&] {
            isBusy.set_value();
            mayGoOn.get_future().wait();
            return false;
        });
    });
    isBusy.get_future().wait();
    std::atomic<bool> hasFirstGoneOn{false};
    bool wasAskedInTime = false;
    Core::Core other(std::make_unique<Support::FakeCoreDataSource>(m_host));
    std::thread second([&] {
        Support::Image ownOutput(output.size());
        other.render(output.data(), ownOutput.data(), Support::bytes(output), [&] {
            wasAskedInTime = hasFirstGoneOn;
            return true;
        });
    });
    // Time for the second to ask too early.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    hasFirstGoneOn = true;
    mayGoOn.set_value();
    first.join();
    second.join();
    EXPECT_TRUE(wasAskedInTime);
    EXPECT_EQ(fakeOpenCL.callsOf("clEnqueueNDRangeKernel").size(), 1u);
}

TEST_F(CoreDeviceTest, IsPreparedOnceForAllFramesCorrectionsAndFacades) {
    ASSERT_TRUE(frameSize());
    const std::size_t calls = fakeOpenCL.calls.size();
    EXPECT_TRUE(frameSize());
    m_host.shading.reset();
    m_host.distortion.emplace();
    EXPECT_TRUE(frameSize());
    Core::Core other(std::make_unique<Support::FakeCoreDataSource>(m_host));
    unsigned int width = 0;
    unsigned int height = 0;
    EXPECT_TRUE(other.frameSize(width, height));
    EXPECT_EQ(fakeOpenCL.calls.size(), calls);
}

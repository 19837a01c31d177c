// The facade on a system whose OpenCL devices come and go.

#include <gtest/gtest.h>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
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
};

} // namespace

TEST_F(CoreDeviceTest, IsLookedForAgainAfterNoneWasThere) {
    const auto platforms = fakeOpenCL.platforms;
    fakeOpenCL.platforms.clear();
    EXPECT_FALSE(frameSize());
    char text[4096];
    EXPECT_TRUE(m_core.briefErrorDescription(text, sizeof(text)));
    fakeOpenCL.platforms = platforms;
    EXPECT_TRUE(frameSize());
}

TEST_F(CoreDeviceTest, IsNotTouchedUntilACorrectionIsWanted) {
    m_host.shading.reset();
    EXPECT_TRUE(frameSize());
    EXPECT_TRUE(fakeOpenCL.calls.empty());
}

TEST_F(CoreDeviceTest, IsPreparedOnceForAllFrames) {
    ASSERT_TRUE(frameSize());
    const std::size_t calls = fakeOpenCL.calls.size();
    EXPECT_TRUE(frameSize());
    EXPECT_EQ(fakeOpenCL.calls.size(), calls);
}

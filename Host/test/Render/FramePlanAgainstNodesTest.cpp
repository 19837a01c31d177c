#include <gtest/gtest.h>

#include "Render/CorrectionChain.h"
#include "Render/PlaneTransfer.h"
#include "Render/Support/RandomPicture.h"
#include "Support/FloatPicture.h"
#include "Support/OpenCLDevice.h"

using DD::Image::Box;

namespace {

HostImage::Frame frameOf(const RandomPicture& picture) {
    HostImage::Frame frame;
    const HostImage::Window format{0, 0, static_cast<std::int32_t>(picture.shape.format.width) - 1,
                                   static_cast<std::int32_t>(picture.shape.format.height) - 1};
    frame.parts.push_back(floatPicture(Host::fileWindow(picture.shape.data, format), format));
    return frame;
}

Host::ChainSettings optionsOf(const RandomPicture& picture) {
    Host::ChainSettings options;
    options.overscan = picture.shape.overscan;
    if (picture.wantsDistortion())
        options.distortion =
            picture.isInverse ? Host::ChainSettings::Distortion::Distort : Host::ChainSettings::Distortion::Undistort;
    if (picture.wantsShading())
        options.shading = picture.isInverse ? Host::ChainSettings::Shading::Add : Host::ChainSettings::Shading::Remove;
    return options;
}

} // namespace

TEST(FramePlanAgainstNodes, TellsTheBoxOfTheNodesWhichRenderIt) {
    if (!openCLDeviceExists()) GTEST_SKIP() << "no OpenCL device here";
    std::mt19937 random(23);
    for (int i = 0; i < 300; ++i) {
        const RandomPicture picture(random, 200);
        SCOPED_TRACE(picture.string());
        const HostImage::Frame frame = frameOf(picture);
        const HostImage::Metadata metadata{{"input/frame", std::int64_t{1}},
                                           {"exr/com.orvex.LensCorrection", picture.record}};
        const Host::ClipFrame shown{&frame, &metadata, "/clip.1.exr", {1, 1}};
        const Host::ChainSettings options = optionsOf(picture);
        Host::CorrectionChain chain(options, 1);
        chain.setFrame(1, shown, 0, shown);
        try {
            const Box expected = chain.plan().box;
            const Host::FramePlan plan = chain.validate();
            ASSERT_EQ(plan.box, expected);
            ASSERT_TRUE(plan.box.contains(plan.kept));
            chain.render([](const DD::Image::ImagePlane&, const std::vector<DD::Image::Channel>&) {});
        } catch (const std::exception& error) {
            FAIL() << error.what();
        }
    }
}

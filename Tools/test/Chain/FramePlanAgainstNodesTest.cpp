#include <gtest/gtest.h>

#include "Chain/CorrectionChain.h"
#include "Chain/PlaneTransfer.h"
#include "Chain/Support/RandomPicture.h"
#include "Support/FloatPicture.h"
#include "Support/OpenCLDevice.h"

using DD::Image::Box;

namespace {

Image::Frame frameOf(const RandomPicture& picture) {
    Image::Frame frame;
    const Image::Window format{0, 0, static_cast<std::int32_t>(picture.shape.format.width) - 1,
                               static_cast<std::int32_t>(picture.shape.format.height) - 1};
    frame.parts.push_back(floatPicture(Tools::fileWindow(picture.shape.data, format), format));
    return frame;
}

Tools::ChainSettings optionsOf(const RandomPicture& picture) {
    Tools::ChainSettings options;
    options.overscan = picture.shape.overscan;
    if (picture.wantsDistortion())
        options.distortion =
            picture.isInverse ? Tools::ChainSettings::Distortion::Distort : Tools::ChainSettings::Distortion::Undistort;
    if (picture.wantsShading())
        options.shading =
            picture.isInverse ? Tools::ChainSettings::Shading::Add : Tools::ChainSettings::Shading::Remove;
    return options;
}

} // namespace

TEST(FramePlanAgainstNodes, TellsTheBoxOfTheNodesWhichRenderIt) {
    if (!openCLDeviceExists()) GTEST_SKIP() << "no OpenCL device here";
    std::mt19937 random(23);
    for (int i = 0; i < 300; ++i) {
        const RandomPicture picture(random, 200);
        SCOPED_TRACE(picture.string());
        const Image::Frame frame = frameOf(picture);
        const Image::Metadata metadata{{"input/frame", std::int64_t{1}},
                                       {"exr/com.orvex.LensCorrection", picture.record}};
        const Tools::ClipFrame shown{&frame, &metadata, "/clip.1.exr", {1, 1}};
        const Tools::ChainSettings options = optionsOf(picture);
        Tools::CorrectionChain chain(options, 1);
        chain.setFrame(1, shown, 0, shown);
        try {
            const Box expected = chain.plan().box;
            const Tools::FramePlan plan = chain.validate();
            ASSERT_EQ(plan.box, expected);
            ASSERT_TRUE(plan.box.contains(plan.kept));
            chain.render([](const DD::Image::ImagePlane&, const std::vector<DD::Image::Channel>&) {});
        } catch (const std::exception& error) {
            FAIL() << error.what();
        }
    }
}

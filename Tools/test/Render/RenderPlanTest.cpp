#include "Render/RenderPlan.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Render/RenderSource.h"

using Tools::FrameJob;
using Tools::RenderPlan;
using State = Tools::RenderPlan::State;

namespace {

RenderPlan planOf(std::vector<RenderPlan::Frame> frames) {
    RenderPlan plan;
    plan.clip = "p.%04d.exr";
    plan.output = "o.%04d.exr";
    plan.correctionFile = "p.olcf";
    plan.frames = std::move(frames);
    plan.threads = 2;
    plan.slots = 4;
    plan.bytesPerSlot = 1 << 20;
    plan.bytesToRender = 5 << 20;
    return plan;
}

RenderPlan::Frame frame(std::int32_t number, State state, const std::string& reason,
                        std::vector<Image::Window> windows = {}) {
    const std::string name = std::to_string(number) + ".exr";
    return {FrameJob{number, state == State::Missing ? "" : "p." + name, "o." + name}, state, reason,
            std::move(windows)};
}

} // namespace

TEST(RenderPlan, SaysOfFramesThatAreAlikeInOneLineWhatBecomesOfThem) {
    const Image::Window window{-8, -4, 71, 39};
    const RenderPlan plan =
        planOf({frame(1, State::Render, "no file yet", {window}),
                frame(2, State::Finished, "made from the same inputs with the same options"),
                frame(3, State::Render, "no file yet", {window}), frame(4, State::Render, "no file yet", {window}),
                frame(5, State::Missing, "The clip \"p.%04d.exr\" has no such frame.")});
    EXPECT_EQ(plan.text(),
              "Clip:             p.%04d.exr\n"
              "Correction file:  p.olcf\n"
              "Output:           o.%04d.exr\n"
              "Frames:           3 render, 1 finished, 1 missing\n"
              "Memory:           9 MiB: 4 frames at once, 1 MiB each; 5 MiB to render\n"
              "Threads:          2\n"
              "\n"
              "1,3-4  render  80 x 44 px from -8,-4  no file yet\n"
              "2  finished  made from the same inputs with the same options\n"
              "5  missing  The clip \"p.%04d.exr\" has no such frame.\n");
}

TEST(RenderPlan, SaysThatThereIsNoCorrectionFile) {
    RenderPlan plan = planOf({frame(1, State::Refused, "There is no record.")});
    plan.correctionFile.clear();
    EXPECT_EQ(plan.text(),
              "Clip:             p.%04d.exr\n"
              "Correction file:  none found; frames need records of their own\n"
              "Output:           o.%04d.exr\n"
              "Frames:           1 refused\n"
              "Memory:           9 MiB: 4 frames at once, 1 MiB each; 5 MiB to render\n"
              "Threads:          2\n"
              "\n"
              "1  refused  There is no record.\n");
    EXPECT_EQ(plan.json()["correctionFile"], nullptr);
}

TEST(RenderPlan, TellsAProgramEveryFrame) {
    const RenderPlan plan = planOf({frame(1, State::Render, "no file yet", {{-8, -4, 71, 39}, {0, 0, 1, 0}}),
                                    frame(2, State::Missing, "The clip has no such frame.")});
    EXPECT_EQ(plan.json().dump(),
              R"({"version":1,"clip":"p.%04d.exr","correctionFile":"p.olcf","output":"o.%04d.exr","threads":2,)"
              R"("framesAtOnce":4,"bytes":9437184,"frames":[{"frame":1,"state":"render","reason":"no file yet",)"
              R"("input":"p.1.exr","output":"o.1.exr","dataWindows":[{"x":-8,"y":-4,"width":80,"height":44},)"
              R"({"x":0,"y":0,"width":2,"height":1}]},{"frame":2,"state":"missing",)"
              R"("reason":"The clip has no such frame.","output":"o.2.exr"}]})");
}

TEST(RenderPlan, RendersWhatIsNeitherFinishedNorMissing) {
    const std::vector<FrameJob> remaining = planOf({frame(1, State::Finished, ""), frame(2, State::Render, ""),
                                                    frame(3, State::Missing, ""), frame(4, State::Render, "")})
                                                .remaining();
    EXPECT_EQ(Tools::numbersOf(remaining), (std::vector<std::int32_t>{2, 4}));
}

TEST(RenderPlan, GrowsABoxToThatOfAllFrames) {
    RenderPlan plan;
    plan.constantBoxes[1] = {-8, -4, 72, 40};
    EXPECT_EQ(plan.fileBox(1, {-2, -6, 60, 30}), DD::Image::Box(-8, -6, 72, 40));
    EXPECT_EQ(plan.fileBox(0, {-2, -6, 60, 30}), DD::Image::Box(-2, -6, 60, 30));
}

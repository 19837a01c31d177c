#include "Render/FrameJob.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Tools::FilePattern;
using Tools::FrameJob;
using Tools::frameJobs;
using Tools::FrameRange;
using Tools::RenderOptions;

namespace {

struct Job : Support::TemporaryFolder {
    RenderOptions options;
    std::map<std::int32_t, std::string> available{{1, "in.1.exr"}, {2, "in.2.exr"}, {4, "in.4.exr"}};

    Job() {
        options.clip = "in.%d.exr";
        options.output = FilePattern::parse(path("out.%04d.exr"), FilePattern::Use::Output);
    }

    /// "1 in.1.exr, 3 missing, …"; the outputs are checked on the way.
    std::string listed() const {
        std::string text;
        for (const FrameJob& job : frameJobs(options, available)) {
            EXPECT_EQ(job.output, options.output.path(job.frame));
            text += (text.empty() ? "" : ", ") + std::to_string(job.frame) + ' ' +
                    (job.input.empty() ? "missing" : job.input);
        }
        return text;
    }

    std::string failure() const {
        return failureOf([&] { frameJobs(options, available); });
    }
};

} // namespace

TEST(FrameJob, TakesWhatExistsWhenNothingIsAskedFor) {
    EXPECT_EQ(Job().listed(), "1 in.1.exr, 2 in.2.exr, 4 in.4.exr");
}

TEST(FrameJob, TakesWhatIsAskedForInItsOrderWithGapsMarked) {
    Job job;
    job.options.frames = FrameRange::parse("4,1-3");
    EXPECT_EQ(job.listed(), "4 in.4.exr, 1 in.1.exr, 2 in.2.exr, 3 missing");
}

TEST(FrameJob, RefusesARangeWithoutAnyFrame) {
    Job job;
    job.options.frames = FrameRange::parse("10-20");
    EXPECT_EQ(job.failure(),
              "wrong use: None of the frames 10-20 exists; the clip \"in.%d.exr\" has the frames 1-2,4.");
}

TEST(FrameJob, RefusesSeveralFramesForOneFile) {
    Job job;
    job.options.output = FilePattern::parse(job.path("out.exr"), FilePattern::Use::Output);
    EXPECT_EQ(job.failure(), "wrong use: 3 frames cannot be written to one file, \"" + job.path("out.exr") +
                                 "\"; put %04d in its name.");
    job.options.frames = FrameRange::parse("2");
    EXPECT_EQ(job.listed(), "2 in.2.exr");
}

TEST(FrameJob, NeverReplacesItsOwnInput) {
    Job job;
    job.options.overwrite = true;
    job.available = {{1, job.write("out.0001.exr")}};
    EXPECT_EQ(job.failure(), "wrong use: Frame 1 would replace its own input, \"" + job.path("out.0001.exr") +
                                 "\"; choose another output.");
}

TEST(FrameJob, AsksBeforeItReplacesAFile) {
    Job job;
    job.write("out.0002.exr");
    EXPECT_EQ(job.failure(), "wrong use: \"" + job.path("out.0002.exr") +
                                 "\" already exists. Give --overwrite to replace existing files, or --skip-existing to "
                                 "keep finished frames.");
    job.options.overwrite = true;
    EXPECT_EQ(job.failure(), "no failure");
    job.options.overwrite = false;
    job.options.skipExisting = true;
    EXPECT_EQ(job.failure(), "no failure");
}

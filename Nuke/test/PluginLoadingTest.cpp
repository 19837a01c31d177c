#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DDImage/Op.h"
#include "DDImage/Substitute/Graph.h"
#include "Support/SampleFrame.h"
#include "Support/ShotFolder.h"
#include "Support/TextOfFile.h"

using namespace DD::Image;

namespace {

// The variable names a plug-in that was built elsewhere.
const char* const c_otherFolder = std::getenv("ORVEX_PLUGIN_FOLDER");
const char* const c_pluginFolder = c_otherFolder != nullptr ? c_otherFolder : ORVEX_PLUGIN_FOLDER;

std::string outputOf(const std::string& command) {
    std::string text;
    FILE* const pipe = popen(command.c_str(), "r");
    if (!pipe) throw std::runtime_error("popen failed");
    char buffer[4096];
    for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, count);
    if (pclose(pipe) != 0) throw std::runtime_error(command + " failed");
    return text;
}

class PluginLoading : public testing::TestWithParam<const char*> {};

} // namespace

TEST(PluginLibrary, ExportsNothing) {
    EXPECT_EQ(outputOf(std::string("nm -D --defined-only ") + c_pluginFolder + "/OrvexLensDistortionCorrection.so"),
              "");
}

TEST(PluginLibrary, LeavesNothingOfOursToTheHostToResolve) {
    const std::string symbols =
        outputOf(std::string("nm -D -C --undefined-only ") + c_pluginFolder + "/OrvexLensDistortionCorrection.so");
    EXPECT_EQ(symbols.find("Core::"), std::string::npos);
    EXPECT_EQ(symbols.find("LensCorrection"), std::string::npos);
    EXPECT_NE(symbols.find("DD::Image::PlanarIop"), std::string::npos) << "what the host has";
}

TEST(PluginLibrary, IsReachedByThePointerFile) {
    EXPECT_EQ(Support::textOfFile(std::string(c_pluginFolder) + "/OrvexLensShadingCorrection.tcl"),
              "load OrvexLensDistortionCorrection\n");
}

TEST_P(PluginLoading, CreatesTheClassByItsName) {
    Graph graph;
    graph.addPluginPath(c_pluginFolder);
    EXPECT_STREQ(graph.create(GetParam())->Class(), GetParam());
    Dl_info library;
    ASSERT_NE(dladdr(Op::Description::find(GetParam()), &library), 0);
    EXPECT_EQ(std::string(library.dli_fname), std::string(c_pluginFolder) + "/OrvexLensDistortionCorrection.so");
}

TEST_P(PluginLoading, RendersWhatTheNodesLinkedInRender) {
    const ShotFolder folder;
    folder.write("A001.olcf", sampleCorrectionFile("A001"));
    const std::string clipPath = folder.path("A001.0001.exr");
    std::string error;
    const std::vector<float> loaded = renderSampleFrame(c_pluginFolder, GetParam(), clipPath, error);
    ASSERT_FALSE(loaded.empty()) << error;

    const std::string outputPath = folder.path("frame");
    outputOf(std::string(ORVEX_RENDER_IN_PROCESS) + " " + GetParam() + " " + clipPath + " " + outputPath);
    const std::string bytes = Support::textOfFile(outputPath);
    std::vector<float> linkedIn(bytes.size() / sizeof(float));
    std::memcpy(linkedIn.data(), bytes.data(), linkedIn.size() * sizeof(float));
    EXPECT_EQ(loaded, linkedIn);
}

INSTANTIATE_TEST_SUITE_P(Classes, PluginLoading,
                         testing::Values("OrvexLensDistortionCorrection", "OrvexLensShadingCorrection"));

// Aborting a node whose planes are on their way to the device. The program defines the OpenCL functions itself.

#include <cstddef>
#include <memory>

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "Support/FakeOpenCL.h"
#include "Support/JsonRecord.h"
#include "Support/TestClip.h"
#include "Support/TestNode.h"

using namespace DD::Image;

namespace {

class NodesAbort : public testing::Test {
protected:
    NodesAbort() {
        graph.connect(node, 0, read);
        read->setSource(std::make_shared<TestClip>(64, 34));
        node->dataSource().wantsDistortion = true;
        node->dataSource().record = [] { return Support::jsonRecord; };
        node->dataSource().frame.emplace();
        node->dataSource().frame->width = 64;
        node->dataSource().frame->height = 34;
    }

    /// Renders one plane of the node after a validation that must succeed.
    ImagePlane rendered() {
        EXPECT_TRUE(graph.validate(node)) << graph.errorText(node);
        ImagePlane plane(node->info().box(), true, Mask_RGBA);
        node->renderStripe(plane);
        return plane;
    }

    static std::size_t startedRenders() { return fakeOpenCL.callsOf("clEnqueueNDRangeKernel").size(); }

    Graph graph;
    Read* read = graph.createRead();
    TestNode* node = TestNode::create(graph);
};

} // namespace

TEST_F(NodesAbort, StartsNoRenderOnceThePlanesTurnComes) {
    int questions = 0;
    // The validation asks once, the plane then once more.
    node->dataSource().onQuestion = [&] {
        if (++questions == 2) node->abort();
    };
    const ImagePlane plane = rendered();
    EXPECT_EQ(questions, 2);
    EXPECT_EQ(startedRenders(), 0u);
    EXPECT_EQ(graph.errorText(node), "");
    EXPECT_EQ(plane.at(0, 0, 0), 0.5f) << "as it was fetched";
}

TEST_F(NodesAbort, RendersThePlanesOfTheNextEvaluation) {
    int questions = 0;
    node->dataSource().onQuestion = [&] {
        if (++questions == 2) node->abort();
    };
    rendered();
    rendered();
    EXPECT_EQ(startedRenders(), 1u);
}

#pragma once

#include "DDImage/Substitute/Graph.h"
#include "TestOps.h"

/// A reader with a test op behind it, at frame 1001.
struct TestChain {
    std::shared_ptr<TestSource> source = std::make_shared<TestSource>();
    DD::Image::Graph graph;
    DD::Image::Read* read = graph.createRead();
    TestOp* op = dynamic_cast<TestOp*>(graph.create("TestOp"));

    TestChain() {
        read->setSource(source);
        read->setFilename("/clips/A001.0001001.exr");
        graph.connect(op, 0, read);
        graph.setFrame(1001);
    }

    ~TestChain() { TestOp::onKnobs = nullptr; }
};

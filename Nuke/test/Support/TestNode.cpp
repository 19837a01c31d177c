#include "Support/TestNode.h"

namespace {

std::string nextLogFilePath;

} // namespace

const DD::Image::Op::Description TestNode::s_description("TestLensCorrection", TestNode::make);

TestNode* TestNode::create(DD::Image::Graph& graph, const std::string& logFilePath) {
    nextLogFilePath = logFilePath;
    return static_cast<TestNode*>(graph.create("TestLensCorrection"));
}

DD::Image::Op* TestNode::make(DD::Image::Node* node) { return new TestNode(node, new TestDataSource, nextLogFilePath); }

TestNode::TestNode(DD::Image::Node* node, TestDataSource* dataSource, const std::string& logFilePath)
    : LensCorrection(node, std::unique_ptr<Core::CoreDataSource>(dataSource), logFilePath), m_dataSource(dataSource) {}

const char* const* TestNode::correctionModeEntries() const {
    static const char* const entries[] = {"One", "Other", nullptr};
    return entries;
}

#include "DDImage/Substitute/Graph.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace DD::Image;

namespace {

std::string failure(Graph& graph, const std::string& className) {
    try {
        graph.create(className);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no failure";
}

} // namespace

TEST(PluginLoading, FindsAClassInTheLibraryOfItsName) {
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    EXPECT_STREQ(graph.create("TestPluginFirst")->Class(), "TestPluginFirst");
}

TEST(PluginLoading, FindsAClassThroughItsPointerFile) {
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    EXPECT_STREQ(graph.create("TestPluginSecond")->Class(), "TestPluginSecond");
    EXPECT_STREQ(graph.create("TestPluginFirst")->Class(), "TestPluginFirst");
}

TEST(PluginLoading, SearchesTheFoldersOfTheEnvironment) {
    setenv("ORVEX_PLUGIN_PATH", "/nowhere:" TEST_PLUGIN_FOLDER, 1);
    Graph graph;
    unsetenv("ORVEX_PLUGIN_PATH");
    EXPECT_STREQ(graph.create("TestPluginFirst")->Class(), "TestPluginFirst");
}

TEST(PluginLoading, LeavesOnePlaceholderForProgramAndPlugin) {
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    Op* op = graph.create("TestPluginFirst");
    graph.validate(op);
    EXPECT_EQ(graph.errorText(op), "placeholder");
}

TEST(PluginLoading, LeavesOneReaderClassForProgramAndPlugin) {
    struct EmptySource : ReadSource {
        void fillInfo(double, IopInfo&) override {}
        void fillMetaData(double, MetaData::Bundle&) override {}
        void fillPlane(double, ImagePlane&) override {}
    };
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    Op* op = graph.create("TestPluginFirst");
    Read* read = graph.createRead();
    read->setSource(std::make_shared<EmptySource>());
    graph.connect(op, 0, read);
    graph.validate(op);
    EXPECT_EQ(graph.errorText(op), "reader");
}

TEST(PluginLoading, NamesThePathOfAClassThatIsNotThere) {
    Graph graph;
    graph.addPluginPath("/a");
    graph.addPluginPath("/b");
    EXPECT_EQ(failure(graph, "Nothing"),
              "The node class \"Nothing\" is not known: neither Nothing.so nor Nothing.tcl is on the plug-in path "
              "\"/a:/b\".");
}

TEST(PluginLoading, NamesTheLibraryThatAPointerFileMisses) {
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    EXPECT_EQ(failure(graph, "TestPluginDangling"), TEST_PLUGIN_FOLDER
              "/TestPluginDangling.tcl names the plug-in \"TestPluginNowhere\", which is not on the "
              "plug-in path.");
}

TEST(PluginLoading, NamesAPointerFileThatPointsNowhere) {
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    EXPECT_EQ(failure(graph, "TestPluginEmpty"),
              TEST_PLUGIN_FOLDER "/TestPluginEmpty.tcl has no line \"load <Library>\".");
}

TEST(PluginLoading, TellsWhyALibraryDoesNotLoad) {
    Graph graph;
    graph.addPluginPath(TEST_PLUGIN_FOLDER);
    EXPECT_EQ(failure(graph, "TestPluginBroken"),
              "The plug-in could not be loaded: " TEST_PLUGIN_FOLDER "/TestPluginBroken.so: file too short");
}

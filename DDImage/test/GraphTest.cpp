#include "DDImage/Substitute/Graph.h"

#include "TestChain.h"

#include <gtest/gtest.h>

using namespace DD::Image;

TEST(Graph, StoresAUsersChangeBeforeKnobChanged) {
    TestChain chain;
    float seen = 0;
    chain.op->onKnobChanged = [&](Knob*) {
        seen = chain.op->amount;
        return 1;
    };
    chain.graph.userChange(chain.op, "amount", 8);
    EXPECT_EQ(seen, 8);
    EXPECT_EQ(chain.op->changed, (std::vector<Knob*>{chain.op->knob("amount")}));
}

TEST(Graph, DoesNotCallKnobChangedForChangesMadeInIt) {
    TestChain chain;
    chain.op->onKnobChanged = [&](Knob*) {
        chain.op->knob("count")->set_value(3);
        chain.graph.userChange(chain.op, "isOn", false);
        return 1;
    };
    chain.graph.userChange(chain.op, "amount", 8);
    EXPECT_EQ(chain.op->changed.size(), 1u);
    EXPECT_FALSE(chain.op->isOn);
}

TEST(Graph, DoesNotCallKnobChangedForTheProgramsChanges) {
    TestChain chain;
    chain.op->knob("amount")->set_value(3);
    chain.graph.validate(chain.op);
    EXPECT_TRUE(chain.op->changed.empty());
}

TEST(Graph, CallsKnobChangedNoMoreForAKnobThatAnsweredZero) {
    TestChain chain;
    chain.op->onKnobChanged = [](Knob*) { return 0; };
    chain.graph.userChange(chain.op, "amount", 8);
    chain.graph.userChange(chain.op, "amount", 9);
    chain.graph.userChange(chain.op, "count", 1);
    EXPECT_EQ(chain.op->changed, (std::vector<Knob*>{chain.op->knob("amount"), chain.op->knob("count")}));
    EXPECT_TRUE(chain.op->knob("amount")->flag(Knob::NO_KNOB_CHANGED));
    EXPECT_EQ(chain.op->amount, 9);
}

TEST(Graph, TakesAMenuEntryByItsText) {
    TestChain chain;
    chain.graph.userChange(chain.op, "mode", "Add");
    EXPECT_EQ(chain.op->mode, 1);
}

TEST(Graph, RefusesAnUnknownControl) {
    TestChain chain;
    try {
        chain.graph.userChange(chain.op, "nothing", 1);
        FAIL() << "no exception";
    } catch (const std::invalid_argument& exception) {
        EXPECT_STREQ(exception.what(), "There is no control \"nothing\".");
    }
}

TEST(Graph, RefusesATextThatTheControlCannotTake) {
    TestChain chain;
    try {
        chain.graph.userChange(chain.op, "mode", "Multiply");
        FAIL() << "no exception";
    } catch (const std::invalid_argument& exception) {
        EXPECT_STREQ(exception.what(), "The control \"mode\" cannot be set to \"Multiply\".");
    }
    EXPECT_EQ(chain.op->mode, 0);
}

TEST(Graph, TellsThePanelsOpening) {
    TestChain chain;
    chain.graph.openPanel(chain.op);
    EXPECT_EQ(chain.op->changed, (std::vector<Knob*>{&Knob::showPanel}));
    EXPECT_EQ(chain.op->updates, 1);
}

TEST(Graph, UpdatesOnlyAnOpenPanel) {
    TestChain chain;
    chain.graph.updateUI(chain.op);
    EXPECT_EQ(chain.op->updates, 0);
    chain.graph.openPanel(chain.op);
    chain.graph.closePanel(chain.op);
    chain.graph.updateUI(chain.op);
    EXPECT_EQ(chain.op->updates, 1);
}

TEST(Graph, UpdatesNoMoreAPanelThatAnsweredFalse) {
    TestChain chain;
    chain.op->wantsUpdates = false;
    chain.graph.openPanel(chain.op);
    chain.graph.updateUI(chain.op);
    EXPECT_EQ(chain.op->updates, 1);
}

TEST(Graph, RefusesAnInputThatTheOpDoesNotHave) {
    TestChain chain;
    EXPECT_FALSE(chain.graph.connect(chain.op, 2, chain.read));
    EXPECT_FALSE(chain.graph.connect(chain.read, 0, chain.op));
}

TEST(Graph, UnwiresAnInput) {
    TestChain chain;
    EXPECT_TRUE(chain.graph.connect(chain.op, 0, nullptr));
    EXPECT_EQ(chain.op->input(0), chain.op->default_input(0));
}

TEST(Graph, SetsTheFrameOfAllOps) {
    TestChain chain;
    chain.graph.setFrame(1005);
    EXPECT_EQ(chain.op->outputContext().frame(), 1005);
    ImagePlane plane(Box(0, 0, 1, 1), true, Mask_Red);
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(plane.at(0, 0, 0), TestSource::value(1005, Chan_Red));
}

TEST(Graph, TellsTheCauseBeforeItsConsequences) {
    TestChain chain;
    chain.op->error("could not correct");
    chain.read->error("could not read");
    EXPECT_EQ(chain.graph.errorText(chain.op), "could not read");
}

TEST(Graph, OffersOnePlaneForEachLayer) {
    TestChain chain;
    chain.source->channels += Chan_Z;
    chain.source->box = Box(-1, -1, 5, 3);
    chain.graph.validate(chain.op);
    const std::vector<ImagePlane> planes = chain.graph.planes(chain.op);
    ASSERT_EQ(planes.size(), 2u);
    EXPECT_EQ(planes[0].channels(), ChannelSet(Mask_RGBA));
    EXPECT_EQ(planes[1].channels(), ChannelSet(Chan_Z));
    EXPECT_EQ(planes[1].bounds(), Box(-1, -1, 5, 3));
}

TEST(Graph, AbortedRendersNothingUntilTheNextValidation) {
    TestChain chain;
    chain.graph.validate(chain.op);
    chain.graph.abort();
    ImagePlane plane(chain.source->box, true, Mask_RGBA);
    EXPECT_FALSE(chain.graph.fetch(chain.op, plane));
    EXPECT_TRUE(chain.graph.render(chain.op, plane));
}

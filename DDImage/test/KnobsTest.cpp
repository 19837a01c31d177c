#include "DDImage/Knobs.h"

#include "TestChain.h"

#include <gtest/gtest.h>

using namespace DD::Image;

TEST(Knobs, TakeTheirDefaultsFromTheMembers) {
    TestChain chain;
    EXPECT_EQ(chain.op->knob("amount")->get_value(), 5);
    EXPECT_EQ(chain.op->knob("isOn")->get_value(), 1);
}

TEST(Knobs, AreNotThereUnderAnotherName) {
    TestChain chain;
    EXPECT_EQ(chain.op->knob("nothing"), nullptr);
}

TEST(Knobs, ReachTheMembersAtTheNextStoreOnly) {
    TestChain chain;
    chain.op->knob("amount")->set_value(7);
    EXPECT_EQ(chain.op->knob("amount")->get_value(), 7);
    EXPECT_EQ(chain.op->amount, 5);
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->amount, 7);
}

TEST(Knobs, WithForcedRangeAreClampedWhenStored) {
    TestChain chain;
    chain.op->knob("amount")->set_value(25);
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->amount, 20);
    EXPECT_EQ(chain.op->knob("amount")->get_value(), 25) << "the knob itself keeps what was set";
}

TEST(Knobs, WithoutForcedRangeAreStoredAsTheyAre) {
    float value = 0;
    TestOp::onKnobs = [&](Knob_Callback f, TestOp&) { Float_knob(f, &value, IRange(0, 20), "extra", "Extra"); };
    TestChain chain;
    chain.graph.userChange(chain.op, "extra", 25);
    EXPECT_EQ(value, 25);
}

TEST(Knobs, TakeFlagsRangeAndTooltipFromTheCallsAfterThem) {
    TestChain chain;
    const Knob* amount = chain.op->knob("amount");
    EXPECT_TRUE(amount->flag(Knob::FORCE_RANGE));
    EXPECT_EQ(amount->maximum(), 20);
    EXPECT_EQ(amount->tooltip(), "How much.");
    EXPECT_FALSE(chain.op->knob("count")->flag(Knob::FORCE_RANGE));
}

TEST(Knobs, KeepTheirFlagsThroughAStore) {
    TestChain chain;
    chain.op->knob("amount")->show();
    chain.graph.validate(chain.op);
    EXPECT_TRUE(chain.op->knob("amount")->isVisible());
}

TEST(Knobs, LoseFlagsByClearFlags) {
    TestOp::onKnobs = [](Knob_Callback f, TestOp& op) {
        Int_knob(f, &op.salt, IRange(0, 9), "extra", "Extra");
        ClearFlags(f, Knob::STARTLINE);
        SetRange(f, 1, 2);
    };
    TestChain chain;
    EXPECT_FALSE(chain.op->knob("extra")->flag(Knob::STARTLINE));
    EXPECT_EQ(chain.op->knob("extra")->maximum(), 2);
}

TEST(Knobs, StartALineUnlessTheyHaveNoLabelOrAreCheckBoxes) {
    TestChain chain;
    EXPECT_TRUE(chain.op->knob("amount")->flag(Knob::STARTLINE));
    EXPECT_FALSE(chain.op->knob("count")->flag(Knob::STARTLINE));
    EXPECT_FALSE(chain.op->knob("isOn")->flag(Knob::STARTLINE));
}

TEST(Knobs, WithoutTextAnswerNull) {
    TestChain chain;
    EXPECT_EQ(chain.op->knob("path")->get_text(), nullptr);
    EXPECT_EQ(chain.op->path, nullptr);
}

TEST(Knobs, HoldTheTextThatTheMemberPointsTo) {
    TestChain chain;
    chain.graph.userChange(chain.op, "path", "/a.olcf");
    EXPECT_STREQ(chain.op->path, "/a.olcf");
}

TEST(Knobs, KnowTheirGroupAndEntries) {
    TestChain chain;
    EXPECT_EQ(chain.op->knob("path")->group(), chain.op->knob("group"));
    EXPECT_EQ(chain.op->knob("group")->group(), nullptr);
    EXPECT_EQ(chain.op->knob("mode")->entries(), (std::vector<std::string>{"Remove", "Add"}));
}

TEST(Knobs, StayHiddenWhenTheyHaveNoWidget) {
    Knob knob(Knob::Float, "x", "X");
    knob.set_flag(Knob::INVISIBLE);
    knob.show();
    EXPECT_FALSE(knob.isVisible());
}

TEST(Knobs, HaveSixtyFourFlags) {
    Knob knob(Knob::Float, "x", "X");
    const Knob::FlagMask highest = Knob::FlagMask{1} << 63;
    knob.set_flag(highest);
    EXPECT_TRUE(knob.flag(highest));
    EXPECT_TRUE(knob.flag(Knob::STARTLINE));
}

TEST(Knobs, AreGreyWhileDisabled) {
    Knob knob(Knob::Float, "x", "X");
    knob.disable();
    EXPECT_TRUE(knob.flag(0x80));
    knob.enable();
    EXPECT_TRUE(knob.isEnabled());
}

TEST(Knobs, OfWholeNumbersRoundHalvesAwayFromZero) {
    Knob knob(Knob::Int, "x", "X");
    knob.set_value(2.5);
    EXPECT_EQ(knob.get_value(), 3);
    knob.set_value(-2.5);
    EXPECT_EQ(knob.get_value(), -3);
}

TEST(Knobs, OfWholeNumbersStoreTheNearestThatFits) {
    TestChain chain;
    chain.graph.userChange(chain.op, "count", 1e20);
    EXPECT_EQ(chain.op->count, std::numeric_limits<int>::max());
}

TEST(Knobs, RefuseAWrittenValueThatIsNone) {
    Knob knob(Knob::Float, "x", "X");
    EXPECT_FALSE(knob.from_script("1,5"));
    EXPECT_FALSE(knob.from_script(""));
    EXPECT_TRUE(knob.from_script("1.5"));
    EXPECT_EQ(knob.get_value(), 1.5);
}

TEST(Knobs, CanBeReachedWhileTheyAreStored) {
    const Knob* seen = nullptr;
    TestChain chain;
    TestOp::onKnobs = [&](Knob_Callback f, TestOp& op) {
        if (!f.makeKnobs()) seen = op.knob("isOn");
    };
    chain.graph.validate(chain.op);
    EXPECT_EQ(seen, chain.graph.knob(chain.op, "isOn"));
}

TEST(Knobs, AreTheSameForEveryOpOfANode) {
    TestChain chain;
    TestOp* copy = dynamic_cast<TestOp*>(chain.graph.createCopy(chain.op));
    EXPECT_EQ(copy->knob("amount"), chain.op->knob("amount"));
    EXPECT_EQ(copy->firstOp(), chain.op);
    chain.graph.userChange(chain.op, "amount", 9);
    EXPECT_EQ(copy->amount, 9);
}

TEST(KnobsDeathTest, StopsOnStoringAKnobThatWasNeverMade) {
    TestChain chain;
    TestOp::onKnobs = [](Knob_Callback f, TestOp& op) { Int_knob(f, &op.salt, "late"); };
    EXPECT_DEATH(chain.graph.validate(chain.op), "a knob is stored that was never made: late");
}

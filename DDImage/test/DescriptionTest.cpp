#include "DDImage/Op.h"
#include "TestOps.h"

#include <gtest/gtest.h>

using namespace DD::Image;

namespace {

Op* buildAsOp(Node* node) { return new TestOp(node); }
void buildNode(Node*) {}

} // namespace

TEST(Description, IsRegisteredByItsConstruction) {
    static const Op::Description made("MadeHere", nullptr, buildAsOp);
    EXPECT_EQ(Op::Description::find("MadeHere"), &made);
}

TEST(Description, IsStampedWithDateAndHostVersion) { EXPECT_STREQ(TestOp::d.compiled, "Jul 31 2020 for 11.2v4"); }

TEST(Description, MakesOpsOfItsClass) {
    const std::unique_ptr<Op> op(TestOp::d.constructor(nullptr));
    EXPECT_STREQ(op->Class(), "TestOp");
}

TEST(Description, TakesEveryFormOfConstructor) {
    static const Op::Description plain("Plain", buildAsOp);
    static const Op::Description withNode("WithNode", buildAsOp, buildNode);
    static const Op::Description withMenu("WithMenu", "Menu", buildAsOp);
    static const Op::Description ofImage("OfImage", "Menu", buildTestOp);
    for (const Op::Description* each : {&plain, &withNode, &withMenu, &ofImage}) {
        const std::unique_ptr<Op> op(each->constructor(nullptr));
        EXPECT_NE(dynamic_cast<TestOp*>(op.get()), nullptr) << each->name;
    }
}

TEST(Description, ListsAllClassesAndThenNull) {
    int count = 0;
    while (Op::Description::find(count)) ++count;
    EXPECT_GE(count, 2) << "the reader and the test op";
    EXPECT_EQ(Op::Description::find(-1), nullptr);
}

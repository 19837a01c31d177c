#include "Core/ErrorTexts.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

using Core::ErrorTexts;

namespace {

std::string briefOf(const ErrorTexts& errors) { return errors.texts() ? errors.texts()->brief : "none"; }

/// What another thread sees, which runs `before` first.
template <typename Operation>
std::string briefInAnotherThread(ErrorTexts& errors, Operation before) {
    std::string brief;
    std::thread([&] {
        before();
        brief = briefOf(errors);
    }).join();
    return brief;
}

} // namespace

TEST(ErrorTexts, AreNoneAtFirst) {
    const ErrorTexts errors;
    EXPECT_EQ(briefOf(errors), "none");
}

TEST(ErrorTexts, AreThoseThatWereKeptLast) {
    ErrorTexts errors;
    errors.keep({"first", "first\n"});
    errors.keep({"second", "second\n"});
    EXPECT_EQ(briefOf(errors), "second");
    EXPECT_EQ(errors.texts()->detailed, "second\n");
}

TEST(ErrorTexts, AreForgotten) {
    ErrorTexts errors;
    errors.keep({"failed", "failed\n"});
    errors.forget();
    EXPECT_EQ(briefOf(errors), "none");
}

TEST(ErrorTexts, AreNotSeenByAnotherThread) {
    ErrorTexts errors;
    errors.keep({"failed", "failed\n"});
    EXPECT_EQ(briefInAnotherThread(errors, [] {}), "none");
}

TEST(ErrorTexts, AreNotTouchedByAnotherThread) {
    ErrorTexts errors;
    errors.keep({"mine", "mine\n"});
    EXPECT_EQ(briefInAnotherThread(errors, [&] { errors.keep({"the other's", ""}); }), "the other's");
    briefInAnotherThread(errors, [&] { errors.forget(); });
    EXPECT_EQ(briefOf(errors), "mine");
}

TEST(ErrorTexts, AreNotTouchedByAnotherFacade) {
    ErrorTexts errors;
    ErrorTexts others;
    errors.keep({"mine", "mine\n"});
    EXPECT_EQ(briefOf(others), "none");
    others.forget();
    EXPECT_EQ(briefOf(errors), "mine");
}

TEST(ErrorTexts, AreNotPassedOnToAFacadeInTheSamePlace) {
    std::optional<ErrorTexts> errors(std::in_place);
    std::string brief;
    std::thread([&] {
        errors->keep({"of the old facade", ""});
        std::thread([&] { errors.emplace(); }).join();
        brief = briefOf(*errors);
    }).join();
    EXPECT_EQ(brief, "none");
}

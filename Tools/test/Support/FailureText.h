#pragma once

#include <string>

#include "Report/Failure.h"

/// Kind and text of the Failure that a call ends with: "wrong use: Frame range …"; "no failure" if there is none.
template <typename Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (const Tools::Failure& failure) {
        static constexpr const char* kinds[] = {"wrong use", "environment", "output", "correction"};
        return std::string(kinds[static_cast<int>(failure.kind())]) + ": " + failure.what();
    }
    return "no failure";
}

#pragma once

#include <string>

#include "Report/Failure.h"

/// Text of the Failure that a call ends with, after its exit status: "2: Frame range …"; "no failure" if there is none.
template <typename Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (const Tools::Failure& failure) {
        return std::to_string(static_cast<int>(failure.exitCode())) + ": " + failure.what();
    }
    return "no failure";
}

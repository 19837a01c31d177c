#pragma once

#include "DDImage/Op.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace DD {
namespace Image {

/// What the ops of one node share; opaque to plug-ins.
class Node {
public:
    Knob* knob(const std::string& name) const {
        for (const auto& knob : knobs)
            if (knob->name() == name) return knob.get();
        return nullptr;
    }

    const Op::Description* description = nullptr;
    std::vector<std::unique_ptr<Knob>> knobs;
    // After the knobs, so that ops go first and may use their knobs until then.
    std::vector<std::unique_ptr<Op>> ops;
    bool panelIsOpen = false;
    bool wantsUpdateUI = false;
    bool isInKnobChanged = false;
};

} // namespace Image
} // namespace DD

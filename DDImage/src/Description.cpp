#include "DDImage/Iop.h"

#include <cstring>

namespace DD {
namespace Image {

namespace {

struct Registry {
    std::mutex access;
    std::vector<const Op::Description*> classes;
};

// Filled by static objects of any library, hence made on first use, and never destroyed before them.
Registry& registry() {
    static Registry& instance = *new Registry;
    return instance;
}

} // namespace

Op* Op::Description::constructor(Node* node) const { return m_op ? m_op(node) : m_iop(node); }

const Op::Description* Op::Description::find(int i) {
    const std::lock_guard<std::mutex> lock(registry().access);
    const auto& classes = registry().classes;
    return i >= 0 && static_cast<std::size_t>(i) < classes.size() ? classes[static_cast<std::size_t>(i)] : nullptr;
}

const Op::Description* Op::Description::find(const char* className) {
    const std::lock_guard<std::mutex> lock(registry().access);
    for (const Op::Description* description : registry().classes)
        if (std::strcmp(description->name, className) == 0) return description;
    return nullptr;
}

void Op::Description::add(DD::Image::Description* description) {
    const std::lock_guard<std::mutex> lock(registry().access);
    registry().classes.push_back(static_cast<Op::Description*>(description));
}

} // namespace Image
} // namespace DD

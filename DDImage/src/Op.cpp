#include "DDImage/Op.h"

#include "Node.h"

#include <cstdarg>
#include <cstdio>

namespace DD {
namespace Image {

Op::Op(Node* node) : m_ownNode(node ? nullptr : std::make_unique<Node>()), m_node(node ? node : m_ownNode.get()) {}

Op::~Op() = default;

void Op::inputs(int count) { m_inputs.resize(static_cast<std::size_t>(count)); }

const char* Op::input_label(int, char*) const { return nullptr; }

bool Op::test_input(int, Op*) const { return true; }

Op* Op::default_input(int) const { return nullptr; }

Op* Op::input(int n) const {
    if (n < 0 || n >= inputs()) return nullptr;
    Op* wired = node_input(n);
    return wired ? wired : default_input(n);
}

Op* Op::node_input(int n) const { return n < 0 || n >= inputs() ? nullptr : m_inputs[static_cast<std::size_t>(n)]; }

void Op::set_input(int n, Op* op) {
    if (n < 0 || n >= inputs()) return;
    m_inputs[static_cast<std::size_t>(n)] = op;
    invalidate();
}

void Op::validate(bool for_real) {
    const std::lock_guard<std::recursive_mutex> lock(m_validation);
    if (m_valid || m_validating) return;
    m_validating = true;
    _validate(for_real);
    m_validating = false;
    m_valid = for_real;
}

void Op::force_validate(bool for_real) {
    invalidate();
    validate(for_real);
}

const MetaData::Bundle& Op::_fetchMetaData(const char* key) {
    static const MetaData::Bundle none;
    Op* op = input(0);
    return op ? op->fetchMetaData(key) : none;
}

bool Op::aborted() const {
    if (m_aborted) return true;
    for (const Op* op : m_inputs)
        if (op && (op->aborted() || op->hasError())) return true;
    return false;
}

void Op::error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    const std::lock_guard<std::mutex> lock(m_errorAccess);
    m_error = text;
    m_failed = true;
}

bool Op::hasError() const {
    if (m_failed) return true;
    for (const Op* op : m_inputs)
        if (op && op->hasError()) return true;
    return false;
}

Knob* Op::knob(const char* name) const { return m_node->knob(name); }

Op* Op::firstOp() { return m_node->ops.empty() ? this : m_node->ops.front().get(); }

void Op::_validate(bool for_real) {
    for (Op* op : m_inputs)
        if (op) op->validate(for_real);
}

} // namespace Image
} // namespace DD

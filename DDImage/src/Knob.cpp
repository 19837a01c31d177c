#include "DDImage/Knob.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace DD {
namespace Image {

Knob Knob::showPanel(Knob::Special, "showPanel", nullptr);
Knob Knob::inputChange(Knob::Special, "inputChange", nullptr);

Knob::Knob(Type type, const char* name, const char* label) : m_type(type), m_name(name), m_label(label ? label : name) {
    if (!m_label.empty() && type != Bool) m_flags |= STARTLINE;
    if (type == Float) m_flags |= SLIDER;
    if (type == Int || type == Enumeration) m_flags |= STORE_INTEGER;
}

double Knob::get_value(int) const { return m_value; }

void Knob::set_value(double value, int) { m_value = flag(STORE_INTEGER) ? std::round(value) : value; }

double Knob::storedValue() const {
    return flag(FORCE_RANGE) && m_minimum < m_maximum ? std::clamp(m_value, m_minimum, m_maximum) : m_value;
}

bool Knob::from_script(const char* script) {
    if (!script) script = "";
    if (m_type == File) {
        set_text(script);
        return true;
    }
    const auto entry = std::find(m_entries.begin(), m_entries.end(), script);
    if (entry != m_entries.end()) {
        set_value(static_cast<double>(entry - m_entries.begin()));
        return true;
    }
    if (m_type == Bool && (std::strcmp(script, "true") == 0 || std::strcmp(script, "false") == 0)) {
        set_value(*script == 't');
        return true;
    }
    double value = 0;
    const char* const end = script + std::strlen(script);
    const auto [stopped, status] = std::from_chars(script, end, value);
    if (status != std::errc() || stopped != end) return false;
    set_value(value);
    return true;
}

void Knob::reset_to_default() {
    m_value = m_default;
    m_text = m_defaultText;
}

void Knob::set_range(double minimum, double maximum) {
    m_minimum = minimum;
    m_maximum = maximum;
}

} // namespace Image
} // namespace DD

#include "DDImage/Knobs.h"

#include "Node.h"
#include "Stop.h"

#include <cmath>
#include <limits>

namespace DD {
namespace Image {

Knob* Knob_Closure::declare(Knob::Type type, const char* name, const char* label) {
    if (!m_makeKnobs) {
        m_last = m_node.knob(name);
        if (!m_last) stop("a knob is stored that was never made: ", name);
        return m_last;
    }
    m_node.knobs.push_back(std::make_unique<Knob>(type, name, label));
    m_last = m_node.knobs.back().get();
    m_last->m_group = m_groups.empty() ? nullptr : m_groups.back();
    return m_last;
}

void Knob_Closure::setDefault(Knob* knob, double value) {
    knob->m_default = value;
    knob->reset_to_default();
}

void Knob_Closure::setDefault(Knob* knob, const char* text) {
    knob->m_defaultText = text ? text : "";
    knob->reset_to_default();
}

void Knob_Closure::setEntries(Knob* knob, const char* const* entries) {
    for (; *entries; ++entries) knob->m_entries.emplace_back(*entries);
}

void Knob_Closure::endGroup() {
    if (m_groups.empty()) stop("EndGroup() without BeginGroup()");
    m_groups.pop_back();
}

namespace {

// A member is written only in the store pass; until then it holds the default.
template <class Number>
Knob* numberKnob(Knob_Callback f, Knob::Type type, Number* value, const char* name, const char* label) {
    Knob* knob = f.declare(type, name, label);
    if (f.makeKnobs()) {
        f.setDefault(knob, static_cast<double>(*value));
    } else if constexpr (std::is_same_v<Number, int>) {
        // An int knob takes any number; what does not fit becomes the nearest that does, and nan becomes 0.
        const double stored = knob->storedValue();
        constexpr double least = std::numeric_limits<int>::min();
        constexpr double most = std::numeric_limits<int>::max();
        *value = std::isnan(stored) ? 0 : static_cast<int>(std::round(std::fmin(std::fmax(stored, least), most)));
    } else if constexpr (std::is_same_v<Number, bool>) {
        *value = knob->storedValue() != 0;
    } else {
        *value = static_cast<Number>(knob->storedValue());
    }
    return knob;
}

template <class Number>
Knob* rangedKnob(Knob_Callback f, Knob::Type type, Number* value, IRange range, const char* name, const char* label) {
    Knob* knob = numberKnob(f, type, value, name, label);
    SetRange(f, range.minimum, range.maximum);
    return knob;
}

Knob* group(Knob_Callback f, const char* name, const char* label) {
    Knob* knob = f.declare(Knob::Group, name, label);
    f.beginGroup(knob);
    return knob;
}

} // namespace

Knob* Enumeration_knob(Knob_Callback f, int* value, const char* const* entries, const char* name, const char* label) {
    Knob* knob = numberKnob(f, Knob::Enumeration, value, name, label);
    if (f.makeKnobs()) f.setEntries(knob, entries);
    return knob;
}

Knob* Float_knob(Knob_Callback f, float* value, const char* name, const char* label) {
    return Float_knob(f, value, IRange(0, 1), name, label);
}

Knob* Float_knob(Knob_Callback f, float* value, IRange range, const char* name, const char* label) {
    return rangedKnob(f, Knob::Float, value, range, name, label);
}

Knob* Float_knob(Knob_Callback f, double* value, const char* name, const char* label) {
    return Float_knob(f, value, IRange(0, 1), name, label);
}

Knob* Float_knob(Knob_Callback f, double* value, IRange range, const char* name, const char* label) {
    return rangedKnob(f, Knob::Float, value, range, name, label);
}

Knob* Int_knob(Knob_Callback f, int* value, const char* name, const char* label) {
    return numberKnob(f, Knob::Int, value, name, label);
}

Knob* Int_knob(Knob_Callback f, int* value, IRange range, const char* name, const char* label) {
    return rangedKnob(f, Knob::Int, value, range, name, label);
}

Knob* Bool_knob(Knob_Callback f, bool* value, const char* name, const char* label) {
    return numberKnob(f, Knob::Bool, value, name, label);
}

Knob* File_knob(Knob_Callback f, const char** text, const char* name, const char* label) {
    Knob* knob = f.declare(Knob::File, name, label);
    if (f.makeKnobs())
        f.setDefault(knob, *text);
    else
        *text = knob->get_text();
    return knob;
}

Knob* BeginGroup(Knob_Callback f, const char* name, const char* label) { return group(f, name, label); }

Knob* BeginClosedGroup(Knob_Callback f, const char* name, const char* label) {
    Knob* knob = group(f, name, label);
    SetFlags(f, Knob::CLOSED);
    return knob;
}

Knob* EndGroup(Knob_Callback f) {
    f.endGroup();
    return nullptr;
}

void Tooltip(Knob_Callback f, const char* text) {
    if (Knob* knob = f.madeLast()) knob->tooltip(text);
}

void Tooltip(Knob_Callback f, const std::string& text) { Tooltip(f, text.c_str()); }

void SetFlags(Knob_Callback f, Knob::FlagMask mask) {
    if (Knob* knob = f.madeLast()) knob->set_flag(mask);
}

void ClearFlags(Knob_Callback f, Knob::FlagMask mask) {
    if (Knob* knob = f.madeLast()) knob->clear_flag(mask);
}

void SetRange(Knob_Callback f, double minimum, double maximum) {
    if (Knob* knob = f.madeLast()) knob->set_range(minimum, maximum);
}

} // namespace Image
} // namespace DD

#pragma once

#include "DDImage/Knob.h"

#include <string>
#include <vector>

namespace DD {
namespace Image {

class Node;

/// The limits of a slider.
struct IRange {
    IRange(double first, double last) : minimum(first), maximum(last) {}
    double minimum;
    double maximum;
};

/// One pass through an op's knobs(): creating the node's knobs from the members, or storing the knobs into the members.
class Knob_Closure {
public:
    Knob_Closure(Node& node, bool makeKnobs) : m_node(node), m_makeKnobs(makeKnobs) {}

    bool makeKnobs() const { return m_makeKnobs; }

    /// When creating, adds a knob to the node; when storing, finds the knob of that name. Plug-ins call the functions
    /// below, which are built on this. Declaring a knob that was never created prints its name and aborts.
    Knob* declare(Knob::Type, const char* name, const char* label);
    void setDefault(Knob*, double value);
    void setDefault(Knob*, const char* text);
    void setEntries(Knob*, const char* const* entries);
    void beginGroup(const Knob* group) { m_groups.push_back(group); }
    void endGroup();
    /// The knob declared last, while knobs are created; null afterwards, when flags and ranges belong to the knob.
    Knob* madeLast() const { return m_makeKnobs ? m_last : nullptr; }

private:
    Node& m_node;
    bool m_makeKnobs;
    Knob* m_last = nullptr;
    std::vector<const Knob*> m_groups;
};

typedef Knob_Closure& Knob_Callback;

/// Each declares one knob, with the member's value as its default, or stores the knob's value into the member. A float
/// has the range 0 to 1 and a slider by default; an integer has neither.
Knob* Enumeration_knob(Knob_Callback, int* value, const char* const* entries, const char* name,
                       const char* label = nullptr);
Knob* Float_knob(Knob_Callback, float* value, const char* name, const char* label = nullptr);
Knob* Float_knob(Knob_Callback, float* value, IRange, const char* name, const char* label = nullptr);
Knob* Float_knob(Knob_Callback, double* value, const char* name, const char* label = nullptr);
Knob* Float_knob(Knob_Callback, double* value, IRange, const char* name, const char* label = nullptr);
Knob* Int_knob(Knob_Callback, int* value, const char* name, const char* label = nullptr);
Knob* Int_knob(Knob_Callback, int* value, IRange, const char* name, const char* label = nullptr);
Knob* Bool_knob(Knob_Callback, bool* value, const char* name, const char* label = nullptr);
/// The text belongs to the knob and is valid until the knob changes; null if there is none.
Knob* File_knob(Knob_Callback, const char** text, const char* name, const char* label = nullptr);
Knob* BeginGroup(Knob_Callback, const char* name, const char* label = nullptr);
Knob* BeginClosedGroup(Knob_Callback, const char* name, const char* label = nullptr);
Knob* EndGroup(Knob_Callback);

/// These act on the knob declared last, while knobs are created.
void Tooltip(Knob_Callback, const char* text);
void Tooltip(Knob_Callback, const std::string& text);
void SetFlags(Knob_Callback, Knob::FlagMask);
void ClearFlags(Knob_Callback, Knob::FlagMask);
void SetRange(Knob_Callback, double minimum, double maximum);

} // namespace Image
} // namespace DD

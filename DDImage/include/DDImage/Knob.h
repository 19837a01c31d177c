#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace DD {
namespace Image {

/// One control of a node. It owns its value; the op's member supplies the default and receives the value at the next
/// store pass. So set_value and set_text do not change the op at once: read back with get_value and get_text.
///
/// Main thread only. Flags and their values are the host's; those without a remark are stored but have no effect.
class Knob {
public:
    typedef std::uint64_t FlagMask;

    static const FlagMask CLOSED = 0x1; ///< of a group: shown closed
    static const FlagMask SLIDER = 0x2;
    static const FlagMask LOG_SLIDER = 0x4;
    static const FlagMask STORE_INTEGER = 0x8; ///< set_value rounds to a whole number, halves away from zero
    static const FlagMask FORCE_RANGE = 0x10;  ///< the stored value is clamped to the range; the knob's is not
    static const FlagMask DISABLED = 0x80;     ///< greyed out; disable() and enable()
    static const FlagMask NO_ANIMATION = 0x100;
    static const FlagMask DO_NOT_WRITE = 0x200;
    static const FlagMask INVISIBLE = 0x400; ///< no widget at all; show() does not undo it
    static const FlagMask STARTLINE = 0x1000;
    static const FlagMask ENDLINE = 0x2000;
    static const FlagMask NO_RERENDER = 0x4000;      ///< not part of the op's hash
    static const FlagMask NO_KNOB_CHANGED = 0x20000; ///< set when knob_changed returned 0
    static const FlagMask HIDDEN = 0x40000;          ///< hide() and show()
    static const FlagMask READ_ONLY = 0x10000000;

    /// What the control is; the host has a class for each.
    enum Type { Special, Enumeration, Float, Int, Bool, File, Group, EndOfGroup };

    /// Passed to knob_changed when the panel opens and when an input changes; never a knob of an op.
    static Knob showPanel;
    static Knob inputChange;

    /// A null label defaults to the name. STARTLINE is set unless the label is empty or the knob is a check box.
    Knob(Type, const char* name, const char* label);

    Type type() const { return m_type; }
    const std::string& name() const { return m_name; }
    bool is(const char* name) const { return m_name == name; }
    const std::string& label() const { return m_label; }
    void label(const char* label) { m_label = label; }
    const std::string& tooltip() const { return m_tooltip; }
    void tooltip(const char* tooltip) { m_tooltip = tooltip; }
    /// The group that contains the knob, or null.
    const Knob* group() const { return m_group; }
    /// The entries of a menu; empty for any other knob.
    const std::vector<std::string>& entries() const { return m_entries; }

    double get_value(int index = 0) const;
    /// The index must be 0: no knob here has more than one value.
    void set_value(double value, int index = 0);
    /// The value that a store pass writes to the op: clamped under FORCE_RANGE.
    double storedValue() const;
    /// Null if the knob has no text or an empty one.
    const char* get_text() const { return m_text.empty() ? nullptr : m_text.c_str(); }
    void set_text(const char* text) { m_text = text ? text : ""; }
    /// Sets the value from its written form: a text, a menu entry, "true"/"false", or a number with a decimal point.
    /// Returns false, leaving the value untouched, if the knob cannot take that.
    bool from_script(const char* script);
    void reset_to_default();

    FlagMask flags() const { return m_flags; }
    bool flag(FlagMask mask) const { return (m_flags & mask) != 0; }
    void set_flag(FlagMask mask, bool on = true) { m_flags = on ? m_flags | mask : m_flags & ~mask; }
    void clear_flag(FlagMask mask) { set_flag(mask, false); }
    void enable(bool on) { set_flag(DISABLED, !on); }
    void enable() { enable(true); }
    void disable() { enable(false); }
    bool isEnabled() const { return !flag(DISABLED); }
    void visible(bool on) { set_flag(HIDDEN, !on); }
    void show() { visible(true); }
    void hide() { visible(false); }
    bool isVisible() const { return !flag(HIDDEN | INVISIBLE); }

    /// Equal limits mean that there is no range.
    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }
    void set_range(double minimum, double maximum);

private:
    friend class Knob_Closure;

    Type m_type;
    std::string m_name;
    std::string m_label;
    std::string m_tooltip;
    const Knob* m_group = nullptr;
    std::vector<std::string> m_entries;
    FlagMask m_flags = 0;
    double m_value = 0;
    double m_default = 0;
    std::string m_text;
    std::string m_defaultText;
    double m_minimum = 0;
    double m_maximum = 0;
};

} // namespace Image
} // namespace DD

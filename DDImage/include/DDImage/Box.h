#pragma once

namespace DD {
namespace Image {

/// A rectangle of pixels: left x, bottom y, and exclusive right r and top t; y grows upward.
///
/// Never smaller than 1 × 1: an operation that would empty it keeps x and y and moves r or t. So call `intersects`
/// before `intersect` where an empty intersection matters.
class Box {
public:
    Box() = default;
    Box(int x, int y, int r, int t) { set(x, y, r, t); }

    int x() const { return m_x; }
    int y() const { return m_y; }
    int r() const { return m_r; }
    int t() const { return m_t; }
    int w() const { return m_r - m_x; }
    int h() const { return m_t - m_y; }

    void x(int value) { set(value, m_y, m_r, m_t); }
    void y(int value) { set(m_x, value, m_r, m_t); }
    void r(int value) { set(m_x, m_y, value, m_t); }
    void t(int value) { set(m_x, m_y, m_r, value); }
    void set(int x, int y, int r, int t) {
        m_x = x;
        m_y = y;
        m_r = r > x ? r : x + 1;
        m_t = t > y ? t : y + 1;
    }
    void set(const Box& box) { *this = box; }
    void clear() { *this = Box(); }

    void move(int dx, int dy) { set(m_x + dx, m_y + dy, m_r + dx, m_t + dy); }
    /// Grows by that many pixels on every side, or left and right by dx and below and above by dy.
    void pad(int n) { pad(n, n); }
    void pad(int dx, int dy) { set(m_x - dx, m_y - dy, m_r + dx, m_t + dy); }
    void expand(int n) { pad(n); }
    /// Grows to contain the other box.
    void merge(const Box& other);
    /// Shrinks to the intersection with the other box.
    void intersect(const Box& other);
    /// Substitute only: whether the boxes have a pixel in common.
    bool intersects(const Box& other) const;

    bool contains(int px, int py) const { return px >= m_x && px < m_r && py >= m_y && py < m_t; }
    bool contains(const Box& o) const { return o.m_x >= m_x && o.m_r <= m_r && o.m_y >= m_y && o.m_t <= m_t; }
    long area() const { return static_cast<long>(w()) * h(); }
    /// The nearest column or row inside the box.
    int clampx(int px) const { return px < m_x ? m_x : (px >= m_r ? m_r - 1 : px); }
    int clampy(int py) const { return py < m_y ? m_y : (py >= m_t ? m_t - 1 : py); }

    bool operator==(const Box& o) const { return m_x == o.m_x && m_y == o.m_y && m_r == o.m_r && m_t == o.m_t; }
    bool operator!=(const Box& other) const { return !(*this == other); }

private:
    int m_x = 0;
    int m_y = 0;
    int m_r = 1;
    int m_t = 1;
};

} // namespace Image
} // namespace DD

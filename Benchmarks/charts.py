"""Plain SVG charts that read on paper and in the dark: bars with their ranges, and lines over logarithmic axes."""
import html
import math

COLOURS = ["#2563a8", "#c05621", "#2f855a", "#805ad5", "#b7791f", "#4a5568"]
STYLE = ("text{font:13px sans-serif;fill:#333}.small{font-size:11px}.title{font-size:15px;font-weight:bold}"
         ".grid{stroke:#ddd;stroke-width:1}.range{stroke:#333;stroke-width:1.5}")


def text(x, y, value, anchor="start", kind=""):
    kind = f' class="{kind}"' if kind else ""
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{kind}>{html.escape(value)}</text>'


def document(width, height, parts):
    size = f'width="{width}" height="{height}"'
    return "\n".join([f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" {size}>',
                      f"<style>{STYLE}</style>", f'<rect {size} fill="#fff"/>', *parts, "</svg>", ""])


def bars(title, unit, groups):
    """groups: [(heading, [(name, median, least, most, is_ours)])]; one bar each, with its range."""
    left, width, row = 330, 860, 21
    longest = max(median for _, rows in groups for _, median, *_ in rows) * 1.15
    scale = (width - left - 70) / longest
    parts, y = [text(12, 24, title, kind="title")], 46
    for heading, rows in groups:
        parts.append(text(12, y + 14, heading))
        y += row
        for name, median, least, most, is_ours in rows:
            colour = COLOURS[0] if is_ours else "#a0aec0"
            parts.append(text(left - 8, y + 14, name, "end"))
            parts.append(f'<rect x="{left}" y="{y + 3}" width="{median * scale:.1f}" height="{row - 7}" '
                         f'fill="{colour}"/>')
            end, middle = min(most, longest) * scale, y + row / 2 - .5
            parts.append(f'<line class="range" x1="{left + least * scale:.1f}" x2="{left + end:.1f}" '
                         f'y1="{middle:.1f}" y2="{middle:.1f}"/>')
            parts.append(text(left + max(median * scale, end) + 6, y + 14, f"{median:.3g} {unit}", kind="small"))
            y += row
        y += 8
    return document(width, y + 8, parts)


def decades(least, most):
    low, high = math.floor(math.log10(least)), math.ceil(math.log10(most))
    return low, max(high, low + 1)


def lines(title, x_label, y_label, series):
    """series: [(name, [(x, y)])], all positive; both axes are logarithmic.

    A dashed line of exact proportion starts at the first point of the first series.
    """
    left, top, right, bottom, width, height = 70, 44, 190, 50, 860, 420
    xs = [x for _, points in series for x, _ in points]
    ys = [y for _, points in series for _, y in points]
    x0, x1 = math.log10(min(xs)), math.log10(max(xs))
    if x1 - x0 < 1e-9:
        x1 = x0 + 1
    y0, y1 = decades(min(ys), max(ys))
    px = lambda x: left + (math.log10(x) - x0) / (x1 - x0) * (width - left - right)
    py = lambda y: height - bottom - (math.log10(y) - y0) / (y1 - y0) * (height - top - bottom)
    parts = [text(12, 24, title, kind="title")]
    for decade in range(y0, y1 + 1):
        y = py(10 ** decade)
        parts.append(f'<line class="grid" x1="{left}" x2="{width - right}" y1="{y:.1f}" y2="{y:.1f}"/>')
        parts.append(text(left - 6, y + 4, f"{10 ** decade:g}", "end", "small"))
    for x in sorted(set(xs)):
        parts.append(text(px(x), height - bottom + 18, f"{x:.3g}" if x < 1000 else f"{x:g}", "middle", "small"))
    parts.append(text((left + width - right) / 2, height - 10, x_label, "middle"))
    parts.append(text(12, top - 6, y_label, kind="small"))
    x, y = series[0][1][0]
    x_end = min(max(xs), x * 10 ** y1 / y)
    parts.append(f'<line x1="{px(x):.1f}" y1="{py(y):.1f}" x2="{px(x_end):.1f}" y2="{py(y * x_end / x):.1f}" '
                 'stroke="#999" stroke-dasharray="5 4"/>')
    for index, (name, points) in enumerate(series):
        colour = COLOURS[index % len(COLOURS)]
        path = " ".join(f"{px(x):.1f},{py(y):.1f}" for x, y in points)
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [f'<circle cx="{px(x):.1f}" cy="{py(y):.1f}" r="3" fill="{colour}"/>' for x, y in points]
        parts.append(f'<rect x="{width - right + 12}" y="{top + index * 20}" width="12" height="12" fill="{colour}"/>')
        parts.append(text(width - right + 30, top + 11 + index * 20, name, kind="small"))
    y = top + 6 + len(series) * 20
    parts.append(f'<line x1="{width - right + 12}" x2="{width - right + 24}" y1="{y}" y2="{y}" '
                 'stroke="#999" stroke-dasharray="4 3"/>')
    parts.append(text(width - right + 30, y + 5, "exact proportion", kind="small"))
    return document(width, height, parts)

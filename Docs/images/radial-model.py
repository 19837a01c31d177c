#!/usr/bin/env python3
"""Draws radial-model.svg on the standard output: a frame as recorded and undistorted, with the names of Mathematics.md."""
import math

WIDTH, HEIGHT = 320, 180  # of the format, px of the drawing
HALF_DIAGONAL = math.hypot(WIDTH, HEIGHT) / 2
STRENGTH = 0.13  # far more than a real lens, so that it can be seen


def p(h):
    """Recorded distance to the undistorted one; both in half-diagonals of the format."""
    return h * (1 + STRENGTH * h * h)


def q(h):
    """The reverse, by Newton's rule."""
    x = h
    for _ in range(30):
        x -= (p(x) - h) / (1 + 3 * STRENGTH * x * x)
    return x


def moved(curve, x, y):
    distance = math.hypot(x, y) / HALF_DIAGONAL
    factor = curve(distance) / distance if distance else 1
    return x * factor, y * factor


def path(points, style):
    return f'<path class="{style}" d="M' + " L".join(f"{x:.1f} {y:.1f}" for x, y in points) + '"/>'


def line(x0, y0, x1, y1):
    return [(x0 + (x1 - x0) * i / 24, y0 + (y1 - y0) * i / 24) for i in range(25)]


def grid(curve, reach_x, reach_y):
    """A straight grid of the scene, as the curve shows it."""
    lines = [line(x, -reach_y, x, reach_y) for x in range(-200, 201, 40) if abs(x) <= reach_x]
    lines += [line(-reach_x, y, reach_x, y) for y in range(-120, 121, 40) if abs(y) <= reach_y]
    return "\n".join(path([moved(curve, *point) for point in one], "grid") for one in lines)


def border(curve):
    corners = [(-WIDTH / 2, -HEIGHT / 2), (WIDTH / 2, -HEIGHT / 2), (WIDTH / 2, HEIGHT / 2), (-WIDTH / 2, HEIGHT / 2)]
    points = []
    for start, end in zip(corners, corners[1:] + corners[:1]):
        points += [moved(curve, *point) for point in line(*start, *end)]
    return points


def arrow(x, y, label, dx, dy):
    return (f'<line class="arrow" x1="0" y1="0" x2="{x:.1f}" y2="{y:.1f}" marker-end="url(#tip)"/>'
            f'<text class="name" x="{x * 0.5 + dx:.1f}" y="{y * 0.5 + dy:.1f}">{label}</text>')


grown = p(1.0)
box_x, box_y = WIDTH / 2 * grown, HEIGHT / 2 * grown
point = (-96, 54)  # recorded
ideal = moved(p, *point)
print(f"""<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 820 345" font-family="sans-serif" font-size="13">
<title>A frame as recorded and undistorted</title>
<style>
.grid {{ fill: none; stroke: #9ab; stroke-width: 1 }}
.format {{ fill: none; stroke: #222; stroke-width: 2 }}
.box {{ fill: none; stroke: #c40; stroke-width: 2; stroke-dasharray: 6 4 }}
.black {{ fill: #444 }}
.plate {{ fill: #eef3f8; stroke: #222; stroke-width: 1 }}
.arrow {{ stroke: #06c; stroke-width: 1.5 }}
.name {{ fill: #06c; font-style: italic }}
.dot {{ fill: #06c }}
.dashed {{ stroke: #06c; stroke-width: 1; stroke-dasharray: 3 3 }}
text {{ fill: #222 }}
</style>
<defs><marker id="tip" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="7" markerHeight="7" orient="auto"><path d="M0 0 L8 4 L0 8 z" fill="#06c"/></marker>
<clipPath id="frame"><rect x="{-WIDTH / 2}" y="{-HEIGHT / 2}" width="{WIDTH}" height="{HEIGHT}"/></clipPath>
<clipPath id="picture">{path(border(p), "plain")}</clipPath></defs>
<rect width="820" height="345" fill="#fff"/>
<g transform="translate(200 160)">
<text x="-160" y="-125" font-weight="bold">Recorded (barrel lens)</text>
<rect class="plate" x="{-WIDTH / 2}" y="{-HEIGHT / 2}" width="{WIDTH}" height="{HEIGHT}"/>
<g clip-path="url(#frame)">
{grid(q, 220, 140)}
</g>
<rect class="format" x="{-WIDTH / 2}" y="{-HEIGHT / 2}" width="{WIDTH}" height="{HEIGHT}"/>
{arrow(WIDTH / 2, -HEIGHT / 2, "R", 4, 18)}
{arrow(point[0], point[1], "h", 2, 20)}
<circle class="dot" cx="{point[0]}" cy="{point[1]}" r="3"/>
<text x="-160" y="112">the format; R in mm stands for its half-diagonal</text>
</g>
<g transform="translate(595 160)">
<text x="{-box_x:.1f}" y="-125" font-weight="bold">Undistorted</text>
<rect class="black" x="{-box_x:.1f}" y="{-box_y:.1f}" width="{2 * box_x:.1f}" height="{2 * box_y:.1f}"/>
{path(border(p), "plate")}
<g clip-path="url(#picture)">
{grid(lambda h: h, 200, 120)}
</g>
<rect class="format" x="{-WIDTH / 2}" y="{-HEIGHT / 2}" width="{WIDTH}" height="{HEIGHT}"/>
<rect class="box" x="{-box_x:.1f}" y="{-box_y:.1f}" width="{2 * box_x:.1f}" height="{2 * box_y:.1f}"/>
{arrow(box_x, -box_y, "P(R)", 4, 18)}
{arrow(ideal[0], ideal[1], "P(h)", 2, 22)}
<circle class="dot" cx="{ideal[0]:.1f}" cy="{ideal[1]:.1f}" r="3"/>
<text x="{-box_x:.1f}" y="{box_y + 20:.1f}">dashed: the box that holds the whole picture</text>
<text x="{-box_x:.1f}" y="{box_y + 37:.1f}">dark: outside the plate, rendered as 0, 0, 0, 0</text>
</g>
<text x="40" y="335">Distances are measured from the centre. P leads from the recorded to the undistorted distance, Q back.</text>
</svg>""")

"""Usage: draw_starts.py FIGURES > docs/images/starts.svg

Draws the distribution of starts: a row for each application and way to start it, a dot a start, and a
line at the median. FIGURES is what compare_application_start.sh and compare_start.sh have written: a
line a start, of application, way and milliseconds. Each application has a scale of its own, which
begins at 0.
"""
import statistics
import sys

WIDTH, LEFT, RIGHT, ROW, TITLE = 760, 170, 90, 26, 34
WAYS = {
    "launcher": ("launcher", "#1b6ca8"),
    "list": ("without its own archive", "#5aa9d6"),
    "java": ("java", "#8a8a8a"),
    "jpackage": ("jpackage", "#b9a27a"),
}
WITHOUT = {"jEdit", "JOSM"}  # They are compared with a java that has no archives.


def read(path):
    """{application: {way: [milliseconds]}}, in the order of the file."""
    starts = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            application, way, millis = line.split()[:3]
            starts.setdefault(application, {}).setdefault(way, []).append(float(millis))
    return starts


def scale_of(most):
    """A round length of the scale, and its step."""
    step = next(s for s in (10, 20, 50, 100, 200, 500, 1000, 2000, 5000) if most / s <= 6)
    return step * (int(most // step) + 1), step


def row(y, label, colour, values, x_of):
    yield f'<text x="{LEFT - 12}" y="{y + 4}" text-anchor="end">{label}</text>'
    for number, value in enumerate(values):
        offset = (number * 7 % 11 - 5) * 1.2  # Dots of equal value lie beside each other.
        yield (f'<circle cx="{x_of(value):.1f}" cy="{y + offset:.1f}" r="2.6" fill="{colour}" '
               'fill-opacity="0.55"/>')
    middle = statistics.median(values)
    yield (f'<line x1="{x_of(middle):.1f}" x2="{x_of(middle):.1f}" y1="{y - 10}" y2="{y + 10}" '
           f'stroke="{colour}" stroke-width="2.5"/>')
    yield (f'<text x="{WIDTH - RIGHT + 14}" y="{y + 4}" fill="{colour}">{middle:.0f} ms</text>')


def draw(starts):
    y = 8
    for application, ways in starts.items():
        y += TITLE
        yield f'<text x="{LEFT}" y="{y - 12}" font-weight="bold">{application}</text>'
        end, step = scale_of(max(max(values) for values in ways.values()))

        def x_of(value, end=end):
            return LEFT + (WIDTH - LEFT - RIGHT) * value / end

        bottom = y + ROW * len(ways)
        for mark in range(0, end + 1, step):
            yield (f'<line x1="{x_of(mark):.1f}" x2="{x_of(mark):.1f}" y1="{y - 4}" y2="{bottom}" '
                   'stroke="#ddd"/>')
            yield (f'<text x="{x_of(mark):.1f}" y="{bottom + 14}" text-anchor="middle" '
                   f'fill="#777" font-size="11">{mark}</text>')
        for way, values in ways.items():
            name, colour = WAYS[way]
            if way == "java" and application in WITHOUT:
                name = "java without archives"
            y += ROW
            yield from row(y - ROW // 2, name, colour, values, x_of)
        y = bottom + 22
    yield y + 4


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    *body, height = draw(read(sys.argv[1]))
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
          f'viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" font-size="13" fill="#333">')
    print(f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>')
    print("\n".join(body))
    print("</svg>")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Draws what bench_compare wrote as JSON: values a second, a panel for each work and delay.

usage: plot.py RESULTS.json PLOT.svg
"""

import json
import math
import sys
from html import escape

NAME_WIDTH = 190
PANEL_WIDTH = 250
PANEL_GAP = 20
BAR_HEIGHT = 14
BAR_GAP = 4
TITLE_HEIGHT = 26
HEAD_HEIGHT = 56
FOOT_HEIGHT = 30
VALUE_WIDTH = 46
FONT = "font-family='sans-serif' font-size='11'"

COLORS = {"plc": "#1f5fa8", "libmodbus": "#c8641a", "Qt Modbus": "#4f8a3c"}


def color_of(peer):
    return next(color for name, color in COLORS.items() if peer.startswith(name))


def shown(number):
    """Two digits or more."""
    for unit, size in (("M", 1e6), ("k", 1e3)):
        if number >= size:
            scaled = number / size
            return f"{scaled:.0f} {unit}" if scaled >= 10 else f"{scaled:.1f} {unit}"
    return f"{number:.0f}"


def power_shown(power):
    """The power of ten, 100 k for 5."""
    unit = ("", " k", " M", " G")[power // 3]
    return "1" + "0" * (power % 3) + unit


class Scale:
    """Powers of ten that hold all results, over the width of a bar."""

    def __init__(self, numbers):
        self.low = math.floor(math.log10(min(numbers)))
        self.high = math.ceil(math.log10(max(numbers)))

    def __call__(self, number):
        share = (math.log10(number) - self.low) / max(1, self.high - self.low)
        return share * (PANEL_WIDTH - VALUE_WIDTH)

    def powers(self):
        return range(self.low, self.high + 1)


def text(x, y, content, anchor="start", fill="#222", weight="normal"):
    return (
        f"<text x='{x:.1f}' y='{y:.1f}' text-anchor='{anchor}' fill='{fill}' "
        f"font-weight='{weight}' {FONT}>{escape(content)}</text>"
    )


def panel(results, scale, x, y):
    """The bars of one work at one delay."""
    height = len(results) * (BAR_HEIGHT + BAR_GAP)
    lines = []
    for power in scale.powers():
        at = x + scale(10.0**power)
        lines.append(
            f"<line x1='{at:.1f}' y1='{y:.1f}' x2='{at:.1f}' y2='{y + height:.1f}' stroke='#ddd'/>"
        )
    for row, result in enumerate(results):
        top = y + row * (BAR_HEIGHT + BAR_GAP)
        width = max(1.0, scale(result["valuesPerSecond"]))
        lines.append(
            f"<rect x='{x:.1f}' y='{top:.1f}' width='{width:.1f}' height='{BAR_HEIGHT}' "
            f"fill='{color_of(result['peer'])}'/>"
        )
        lines.append(text(x + width + 4, top + 11, shown(result["valuesPerSecond"])))
    return lines


def draw(document):
    results = document["results"]
    works = sorted({result["work"] for result in results})
    delays = sorted({result["addedRoundTrip"] for result in results})
    scale = Scale([result["valuesPerSecond"] for result in results])
    columns = [NAME_WIDTH + i * (PANEL_WIDTH + PANEL_GAP) for i in range(len(delays))]
    width = columns[-1] + PANEL_WIDTH + PANEL_GAP

    lines = [text(10, 22, "Values a second (logarithmic)", weight="bold")]
    for x, delay in zip(columns, delays):
        lines.append(text(x, 44, f"{delay} ms added round-trip time", weight="bold"))
    y = HEAD_HEIGHT
    for work in works:
        rows = [result for result in results if result["work"] == work]
        lines.append(text(10, y + 15, f"({work}) {rows[0]['title']}", weight="bold"))
        y += TITLE_HEIGHT
        panels = [[row for row in rows if row["addedRoundTrip"] == delay] for delay in delays]
        for row, result in enumerate(panels[0]):
            at = y + row * (BAR_HEIGHT + BAR_GAP) + 11
            lines.append(text(NAME_WIDTH - 8, at, result["peer"], anchor="end"))
        for x, bars in zip(columns, panels):
            lines += panel(bars, scale, x, y)
        y += len(panels[0]) * (BAR_HEIGHT + BAR_GAP)
    for x in columns:
        for power in scale.powers()[::2]:
            at = x + scale(10.0**power)
            lines.append(text(at, y + 14, power_shown(power), "middle", fill="#666"))
    height = y + FOOT_HEIGHT
    return "\n".join(
        [
            f"<svg xmlns='http://www.w3.org/2000/svg' width='{width}' height='{height}' "
            f"viewBox='0 0 {width} {height}'>",
            f"<rect width='{width}' height='{height}' fill='white'/>",
            *lines,
            "</svg>",
            "",
        ]
    )


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    with open(sys.argv[1], encoding="utf-8") as file:
        document = json.load(file)
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(draw(document))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes docs/performance.md and its plots.

page.py BUILD [--costs FILE]

Everything is counted anew, or taken from what count.py --output has kept. The page's words about what
the figures mean stand here; the figures come from the counts."""
import argparse
import concurrent.futures
import datetime
import json
import os
import pathlib
import platform
import subprocess
import tempfile

import count

DOCS = count.HERE.parent / "docs"
ELEMENTS = [19, 100, 1000, 10000]


def card(elements, folder):
    """A card table: the driver's elements, and others before them in the list."""
    path = folder / f"card{elements}.json"
    rows = [{"name": "Sndout Connect", "type": "integer", "count": 3, "min": -2**31, "max": 2**31 - 1}]
    rows += [{"name": f"Other {i}", "type": "integer", "min": 0, "max": 100} for i in range(elements - 1)]
    path.write_text(json.dumps({"card": "many", "elements": rows}))
    return path


def count_elements(build, folder, elements):
    os.environ["KEP_COUNT_TIMES"] = "1"
    out = folder / f"elements{elements}"
    count.callgrind(out, [], [build / "bench/kep_count", "write.tv"],
                    {"KEP_VIRTUALTV_CARD": str(card(elements, folder))})
    return elements, count.costs_in(folder, out.name)


WRITES = [("Sndout Open", "1"), ("Sndout Connect", "1,1,0"), ("Mute Output", "1,0"), ("Gain Output", "1,8388608")]


def count_evening(build, folder):
    """The same writes by other means: instructions of the whole processes."""
    sets = [["cset", f"name='{name}'", values] for name, values in WRITES]
    environment = {}
    for line in subprocess.run([build / "bin/kepctl", "env"], stdout=subprocess.PIPE, text=True,
                               check=True).stdout.splitlines():
        name, value = line.removeprefix("export ").split("=", 1)
        environment[name] = value.strip("'")
    environment["KEP_VIRTUALTV_STATE"] = str(folder / "evening.state")
    amixer = ["amixer", "-q", "-D", "hw:0"]
    costs = 0
    for number, words in enumerate(sets):
        count.callgrind(folder / f"amixer{number}", [], amixer + words, environment)
        costs += count.total(folder / f"amixer{number}")
    script = folder / "sets"
    script.write_text("".join(" ".join(words[:1]) + f' {words[1]} {words[2]}\n' for words in sets))
    with script.open() as file:
        count.callgrind(folder / "amixer-s", [], amixer + ["-s"], environment, stdin=file)
    return {"amixer": costs, "amixer -s": count.total(folder / "amixer-s")}


def plot(path, title, unit, series, log=True):
    """Lines over a logarithmic axis: (name, [(x, y)], dashed)."""
    import math
    width, height, left, bottom, top = 640, 320, 70, 50, 40
    points = [p for _, line, _ in series for p in line]
    scale = math.log10 if log else float
    xs, ys = [math.log10(max(x, 1)) for x, _ in points], [scale(y) for _, y in points]
    low_x, high_x, low_y, high_y = min(xs), max(xs), min(ys), max(ys)
    if not log:
        low_y = min(0.0, low_y)
    if high_y == low_y:
        high_y += 1

    def at(x, y):
        return (left + (math.log10(max(x, 1)) - low_x) / (high_x - low_x or 1) * (width - left - 150),
                height - bottom - (scale(y) - low_y) / (high_y - low_y) * (height - bottom - top))

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
           'font-family="sans-serif" font-size="12">',
           '<!-- SPDX-License-Identifier: Apache-2.0; written by bench/page.py -->',
           f'<rect width="{width}" height="{height}" fill="white"/>',
           f'<text x="{left}" y="20" font-size="14">{title}</text>']
    colours = ["#0b6", "#06b", "#b33", "#888"]
    for number, (name, line, dashed) in enumerate(series):
        colour = colours[number % len(colours)]
        path_text = " ".join(f"{'M' if i == 0 else 'L'}{at(x, y)[0]:.1f} {at(x, y)[1]:.1f}"
                             for i, (x, y) in enumerate(line))
        dash = ' stroke-dasharray="6 4"' if dashed else ""
        out.append(f'<path d="{path_text}" fill="none" stroke="{colour}" stroke-width="2"{dash}/>')
        out.append(f'<text x="{width - 140}" y="{60 + 18 * number}" fill="{colour}">{name}</text>')
    for x in sorted({x for x, _ in points}):
        out.append(f'<text x="{at(x, points[0][1])[0]:.1f}" y="{height - bottom + 18}" '
                   f'text-anchor="middle" font-size="10">{x}</text>')
    for y in (min(y for _, y in points), max(y for _, y in points)):
        label = f"{y:,.0f}" if y >= 10 else f"{y:.2f}"
        out.append(f'<text x="{left - 6}" y="{at(1, y)[1] + 4:.1f}" text-anchor="end" font-size="10">{label}</text>')
    out.append(f'<text x="{(width - 150 + left) / 2}" y="{height - 12}" text-anchor="middle">{unit}</text>')
    out.append("</svg>")
    path.write_text("\n".join(out) + "\n")


def series_of(costs, pattern, sizes, divide=1.0):
    return [(n, costs[pattern.format(n)] / divide) for n in sizes if pattern.format(n) in costs]


def table(costs):
    lines = []
    for row in count.rows():
        if isinstance(row, str):
            heading = row.removeprefix("# --- ")
            if heading != row:
                lines += ["", f"### {heading}", "", "| question | library | by hand | figure | limit | aim |",
                          "|---|---:|---:|---:|---:|---:|"]
            continue
        question, formula, aim, _, limit = row
        words = [word for word in formula.split() if word in costs]
        sides = [f"{costs[word]:,.0f}" for word in words[:2]] if " / " in formula and len(words) == 2 else ["", ""]
        figure = count.figure_of(formula, costs)
        missed = " (missed)" if figure > float(aim) else ""
        lines.append(f"| {question} | {sides[0]} | {sides[1]} | {count.shown(figure)} | {limit} | {aim}{missed} |")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--costs", type=pathlib.Path)
    parser.add_argument("--quick", action="store_true", help="without other cards and amixer, and what is said of them")
    options = parser.parse_args()
    build = options.build.resolve()
    costs = json.loads(options.costs.read_text()) if options.costs else count.count_all(build)
    by_elements, evening = {19: costs}, {}
    if not options.quick:
        with tempfile.TemporaryDirectory() as name, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            folder = pathlib.Path(name)
            by_elements = dict(pool.map(lambda n: count_elements(build, folder, n), ELEMENTS))
            evening = count_evening(build, folder)
    library = [(n, by_elements[n]["write.tv"]) for n in by_elements]
    hand = [(n, by_elements[n]["write.tv.byHand"]) for n in by_elements]
    kept = [(n, by_elements[n]["write.tv.open"]) for n in by_elements]
    if not options.quick:
        plot(DOCS / "performance-elements.svg", "A driver write: instructions by elements of the card",
         "elements of the card", [("library", library, False), ("limit: by hand x 1.01",
         [(n, y * 1.01) for n, y in hand], True), ("a handle kept open", kept, False)])
    inputs = [0, 8, 100]
    names = {0: "setSoundOutput", 8: "setSoundOutput.8", 100: "setSoundOutput.100"}
    plot(DOCS / "performance-inputs.svg", "setSoundOutput there and back: instructions by connected inputs",
         "connected inputs (0 stands at 1)",
         [("library", [(n, costs[names[n] + "@error"]) for n in inputs], False),
          ("limit: by hand x 1.02", [(n, costs[names[n] + ".byHand"] * 1.02) for n in inputs], True)])
    pipelines = [10, 100, 1000, 10000]
    reports = series_of(costs, "quality.last.{}", pipelines)
    plot(DOCS / "performance-pipelines.svg", "A quality report: instructions by known pipelines", "known pipelines",
         [("of a known one", reports, False), ("of a new one", series_of(costs, "quality.new.{}", pipelines), False),
          ("limit: 40 a pipeline", [(n, reports[0][1] + 40 * n) for n in pipelines], True)])
    keys = [1, 10, 100, 1000, 10000]
    plot(DOCS / "performance-settings.svg", "Settings: instructions by keys", "keys",
         [("stored", series_of(costs, "settings.dimension.{}", keys), False),
          ("parameters", series_of(costs, "settings.smartSoundMode.{}", keys), False),
          ("limit: json-c's parsing", series_of(costs, "settings.parse.{}.byHand", keys), True)])
    ratio = dict(hand)[19] / dict(kept)[19]
    largest = library[-1][1]
    text = (count.HERE / "performance.md.in").read_text()
    if options.quick:
        text = "\n\n".join(part for part in text.split("\n\n")
                           if not any(word in part for word in ("@MANY", "@AMIXER", "Four writes", "The two with",
                                                                "## The same by", "performance-elements")))
    for key, value in {
        "TABLE": table(costs), "DATE": datetime.date.today().isoformat(),
        "MACHINE": f"{platform.machine()}, Debian {pathlib.Path('/etc/debian_version').read_text().strip()}, "
                   "callgrind (the count does not depend on the speed of the machine)",
        "KEPT": f"{ratio:.0f}", "OPEN": f"{dict(kept)[19]:,.0f}", "WRITE": f"{dict(library)[19]:,.0f}",
        "MANY": f"{largest / library[0][1]:.0f}", "MANYWRITE": f"{largest:,.0f}",
        "AMIXER": f"{evening.get('amixer', 0):,}", "AMIXERS": f"{evening.get('amixer -s', 0):,}",
        "USECASES": f"{costs['start.useCases.byHand']:,.0f}", "LIBRARY": f"{4 * dict(library)[19]:,.0f}",
    }.items():
        text = text.replace(f"@{key}@", value)
    (DOCS / "performance.md").write_text(text)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes docs/performance.md and its plots.

page.py BUILD [--costs FILE]

Everything is counted anew, but what a file has that count.py --output wrote. The page's words about
what the figures mean stand in performance.md.in; the figures come from the counts."""
import argparse
import concurrent.futures
import datetime
import json
import math
import os
import pathlib
import platform
import shutil

import count

ROOT = count.HERE.parent
DOCS = ROOT / "docs"
ELEMENTS = [19, 100, 333, 1000, 3333, 10000]  # of the television's card and of larger ones
INPUTS = [1, 3, 8, 17, 100, 333]
PIPELINES = [1, 3, 10, 17, 100, 333, 1000, 10000]
KEYS = [1, 3, 10, 17, 100, 333, 1000, 10000, 100000]

# --- The same write on cards with other elements before it in the list


def write_card(elements, folder):
    path = folder / f"card{elements}.json"
    rows = [{"name": "Sndout Connect", "type": "integer", "count": 3, "min": -2**31, "max": 2**31 - 1}]
    rows += [{"name": f"Other {i}", "type": "integer", "count": 1, "min": 0, "max": 100} for i in range(elements - 1)]
    path.write_text(json.dumps({"card": "many", "elements": rows}))
    return path


def count_elements(folder, elements):
    costs = count.count_cases(folder, f"elements{elements}", ["write.tv"],
                              {"KEP_VIRTUALTV_CARD": str(write_card(elements, folder)), "KEP_COUNT_TIMES": "1"})
    return elements, costs

# --- The writes of an evening, made by others


def evening_writes():
    events = [json.loads(line) for line in (ROOT / "demo/evening.expected").read_text().splitlines()]
    return [(event["element"], ",".join(map(str, event["values"])))
            for event in events if event.get("event") == "control"]


def write_profile(folder, writes):
    """The evening as a use case of ALSA's manager."""
    profile = folder / "evening-ucm"
    count.copy_use_cases(profile)
    sets = "".join(f'\t\tcset "name=\'{name}\' {values}"\n' for name, values in writes)
    (profile / "virtualtv/HiFi.conf").write_text(
        f'SectionVerb {{\n\tEnableSequence [\n\t\tcdev "television:0"\n{sets}\t]\n}}\n'
        'SectionDevice."Speaker" {\n\tComment "Speaker"\n}\n')
    return profile


def count_evening(folder):
    """Instructions of whole processes, or of the calls in one that is there."""
    writes = evening_writes()
    amixer = ["amixer", "-q", "-D", "hw:0"]

    def whole(name, command, environment=None, stdin=None):
        count.callgrind(folder, name, [], command, environment, stdin)
        return count.total(folder / name)

    each = {write: whole(f"amixer{number}", amixer + ["cset", f"name='{write[0]}'", write[1]])
            for number, write in enumerate(dict.fromkeys(writes))}
    script = folder / "sets"
    script.write_text("".join(f"cset name='{name}' {values}\n" for name, values in writes))
    profile = {"ALSA_CONFIG_UCM2": str(write_profile(folder, writes))}
    with script.open() as commands:
        costs = {"amixer -s": whole("amixer-s", amixer + ["-s"], stdin=commands)}
    costs |= {
        "amixer": sum(each[write] for write in writes),
        "alsaucm": whole("alsaucm", ["alsaucm", "-c", "virtualtv", "set", "_verb", "HiFi"], profile),
        "useCases": count.count_cases(folder, "useCases", ["start.useCases.byHand"], profile)["start.useCases.byHand"],
        "kepctl": whole("evening-kepctl", [folder / "bin/kepctl", "run", "--format", "jsonl", "--log-level", "3",
                                           ROOT / "demo/evening.jsonl"]),
    }
    return costs

# --- Plots


def decades(low, high):
    return [10.0 ** power for power in range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)]


def in_words(number):
    for unit, size in (("G", 1e9), ("M", 1e6), ("k", 1e3)):
        if number >= size:
            return f"{number / size:g} {unit}"
    return f"{number:g}"


class Plot:
    """Two logarithmic axes; lines with a mark at each counted size, named above the axes."""
    WIDTH, HEIGHT, LEFT, RIGHT, BOTTOM, TOP = 720, 420, 84, 40, 64, 84
    COLOURS = ["#0072b2", "#009e73", "#cc79a7", "#555555"]

    def __init__(self, title, x_name, y_name):
        self.title, self.x_name, self.y_name = title, x_name, y_name
        self.lines = []

    def add(self, name, points, limit=False):
        self.lines.append((name, [(x, max(y, 1.0)) for x, y in points], limit))
        return self

    def axes(self):
        points = [point for _, line, _ in self.lines for point in line]
        xs, ys = decades(*self.ends(x for x, _ in points)), decades(*self.ends(y for _, y in points))
        self.low, self.high = (xs[0], ys[0]), (xs[-1], ys[-1])
        return xs, ys

    @staticmethod
    def ends(values):
        values = list(values)
        return min(values), max(max(values), min(values) * 10)

    def at(self, x, y):
        def share(axis, value):
            low, high = math.log10(self.low[axis]), math.log10(self.high[axis])
            return (math.log10(value) - low) / (high - low)
        return (self.LEFT + share(0, x) * (self.WIDTH - self.LEFT - self.RIGHT),
                self.HEIGHT - self.BOTTOM - share(1, y) * (self.HEIGHT - self.BOTTOM - self.TOP))

    def line(self, number, name, points, limit):
        colour = "#d55e00" if limit else self.COLOURS[number]
        dash = ' stroke-dasharray="7 5"' if limit else ""
        places = [self.at(x, y) for x, y in points]
        yield (f'<polyline points="{" ".join(f"{x:.1f},{y:.1f}" for x, y in places)}" fill="none" '
               f'stroke="{colour}" stroke-width="2"{dash}/>')
        if not limit:
            yield from (f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3.5" fill="{colour}"/>' for x, y in places)
        left, top = self.LEFT + number % 2 * 300, 46 + number // 2 * 20
        yield f'<line x1="{left}" y1="{top - 4}" x2="{left + 30}" y2="{top - 4}" stroke="{colour}" stroke-width="2"{dash}/>'
        yield f'<text x="{left + 38}" y="{top}" fill="{colour}">{name}</text>'

    def text(self):
        xs, ys = self.axes()
        right, bottom = self.WIDTH - self.RIGHT, self.HEIGHT - self.BOTTOM
        yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.WIDTH} {self.HEIGHT}" '
               'font-family="sans-serif" font-size="13">')
        yield "<!-- SPDX-License-Identifier: Apache-2.0; written by bench/page.py -->"
        yield f'<rect width="{self.WIDTH}" height="{self.HEIGHT}" fill="white"/>'
        yield f'<text x="{self.LEFT}" y="22" font-size="16" font-weight="bold">{self.title}</text>'
        for x in xs:
            place = self.at(x, ys[0])[0]
            yield f'<line x1="{place:.1f}" y1="{self.TOP}" x2="{place:.1f}" y2="{bottom}" stroke="#ddd"/>'
            yield f'<text x="{place:.1f}" y="{bottom + 18}" text-anchor="middle">{x:,.0f}</text>'
        for y in ys:
            place = self.at(xs[0], y)[1]
            yield f'<line x1="{self.LEFT}" y1="{place:.1f}" x2="{right}" y2="{place:.1f}" stroke="#ddd"/>'
            yield f'<text x="{self.LEFT - 8}" y="{place + 4:.1f}" text-anchor="end">{in_words(y)}</text>'
        for number, line in enumerate(self.lines):
            yield from self.line(number, *line)
        middle = (self.TOP + bottom) / 2
        yield f'<text x="{(self.LEFT + right) / 2}" y="{self.HEIGHT - 14}" text-anchor="middle">{self.x_name}</text>'
        yield (f'<text x="20" y="{middle}" text-anchor="middle" transform="rotate(-90 20 {middle})">'
               f'{self.y_name}</text>')
        yield "</svg>"

    def write(self, name):
        (DOCS / f"performance-{name}.svg").write_text("\n".join(self.text()) + "\n")


def draw_all(costs, by_elements):
    def over(sizes, pattern, factor=1.0):
        return [(n, costs[pattern.format(n)] * factor) for n in sizes]

    def elements(case, factor=1.0):
        return [(n, by_elements[n][case] * factor) for n in ELEMENTS]

    (Plot("A driver write, by elements of the card", "elements of the card", "instructions of a write")
     .add("the library", elements("write.tv"))
     .add("limit: 1.01 of the same calls by hand", elements("write.tv.byHand", 1.01), limit=True)
     .add("on a handle kept open (not allowed)", elements("write.tv.open"))
     .write("elements"))
    (Plot("setSoundOutput there and back, by connected inputs", "connected inputs", "instructions of both requests")
     .add("the library", over(INPUTS, "setSoundOutput.{}@error"))
     .add("limit: 1.02 of the same calls by hand", over(INPUTS, "setSoundOutput.{}.byHand", 1.02), limit=True)
     .write("inputs"))
    first = costs["quality.last.1"]
    (Plot("A quality report, by known pipelines", "known pipelines", "instructions of a report")
     .add("of a known pipeline", over(PIPELINES, "quality.last.{}"))
     .add("limit: 40 instructions a pipeline", [(n, first + 40 * n) for n in PIPELINES], limit=True)
     .add("of a new one, with its removal", over(PIPELINES, "quality.new.{}"))
     .write("pipelines"))
    (Plot("Settings, by keys", "keys of the payload", "instructions of setSettings")
     .add("stored", over(KEYS, "settings.dimension.{}"))
     .add("limit: json-c parsing the same text", over(KEYS, "settings.parse.{}.byHand"), limit=True)
     .add("stored, and a parameter of each key", over(KEYS, "settings.smartSoundMode.{}"))
     .write("settings"))

# --- The page


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
        cases = count.cases_of(formula)
        sides = [f"{costs[name]:,.0f}" for name in cases] if len(cases) == 2 and "byHand" in cases[1] else ["", ""]
        figure = count.figure_of(formula, costs)
        missed = " (missed)" if figure > float(aim) else ""
        lines.append(f"| {question} | {sides[0]} | {sides[1]} | {count.shown(figure)} | {limit} | {aim}{missed} |")
    return "\n".join(lines)


def names_to_count():
    plotted = {f"setSoundOutput.{n}{end}" for n in INPUTS for end in ("@error", ".byHand")}
    plotted |= {f"quality.{kind}.{n}" for n in PIPELINES for kind in ("last", "new")}
    return count.all_cases() | plotted | {"write.tv.open"}


def words_for(costs, by_elements, evening):
    largest = max(ELEMENTS)
    write, kept = costs["write.tv"], costs["write.tv.open"]
    request = (costs["kepctl.text.120"] - costs["kepctl.text.20"]) / 100
    words = {
        "TABLE": table(costs), "DATE": datetime.date.today().isoformat(),
        "MACHINE": f"{platform.machine()}, Debian {pathlib.Path('/etc/debian_version').read_text().strip()}, "
                   "callgrind (the count does not depend on the speed of the machine)",
        "KEPT": f"{write / kept:.0f}", "OPEN": f"{kept:,.0f}", "WRITE": f"{write:,.0f}",
        "LARGEST": f"{largest:,}", "LARGESTWRITE": f"{by_elements[largest]['write.tv']:,.0f}",
        "LARGESTTIMES": f"{by_elements[largest]['write.tv'] / write:,.0f}",
        "EACHELEMENT": f"{(by_elements[largest]['write.tv'] - write) / (largest - ELEMENTS[0]):,.0f}",
        "ELEMENTS": "\n".join(
            "| " + " | ".join([f"{n:,}"] + [f"{by_elements[n][case]:,.0f}" for case in
                                            ("write.tv", "write.tv.byHand", "write.tv.open")]
                              + [f"{by_elements[n]['write.tv'] / by_elements[n]['write.tv.byHand']:.4f}"]) + " |"
            for n in ELEMENTS),
        "WRITES": str(len(evening_writes())), "LIBRARY": f"{len(evening_writes()) * write:,.0f}",
        "KEPCTLTHOUSAND": f"{costs['kepctl.text.20'] + 980 * request:,.0f}",
        "AMIXERTHOUSAND": f"{1000 * costs['amixer']:,.0f}",
        "THOUSAND": f"{1000 * costs['amixer'] / (costs['kepctl.text.20'] + 980 * request):.0f}",
    }
    for name, key in (("amixer", "AMIXER"), ("amixer -s", "AMIXERS"), ("alsaucm", "ALSAUCM"),
                      ("useCases", "USECASES"), ("kepctl", "KEPCTL")):
        words[key] = f"{evening[name]:,.0f}"
    return words


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--costs", type=pathlib.Path)
    options = parser.parse_args()
    build = options.build.resolve()
    costs = json.loads(options.costs.read_text()) if options.costs else {}
    missing = {name for name in names_to_count() if name not in costs}
    with count.work_folder(build) as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        evening = pool.submit(count_evening, folder)
        by_elements = dict(pool.map(lambda n: count_elements(folder, n), sorted(ELEMENTS, reverse=True)))
        evening = evening.result()
    costs |= count.count_all(build, missing)
    draw_all(costs, by_elements)
    text = (count.HERE / "performance.md.in").read_text()
    for key, value in words_for(costs, by_elements, evening).items():
        text = text.replace(f"@{key}@", value)
    (DOCS / "performance.md").write_text(text)


if __name__ == "__main__":
    main()

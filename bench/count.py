#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts instructions and allocations, and holds them against the budgets.

count.py BUILD [--record] [--output FILE]

BUILD is a release build tree. Every row of budgets.tsv is a figure made of the costs of named cases;
it fails when the figure is more than 2 % above the one recorded. --record writes down what is found.
--output keeps the costs of all cases, for other scripts."""
import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
BUDGETS = HERE / "budgets.tsv"
TOLERANCE = 1.02

# Cases of kep_count that share a process; cold ones have one of their own.
GROUPS = [
    ["quality."],
    ["settings."],
    ["write.", "json.", "log.", "setM", "setI", "setO", "setS", "connectInput"],
    ["start.tv"],
    ["start.mixer"],
    ["start.useCases.byHand"],
    ["--journal", "setMute@info", "connectInput@info", "setSoundOutput@info"],
]
# Whole programs: name, arguments of valgrind, command.
SCRIPT = '{"call": "setMute", "args": ["ADEC0", "MAIN", true]}\n'
INITIALIZE = '{"call": "initialize", "args": []}\n'
STATIC_INITIALISERS = ["--demangle=no", "--toggle-collect=_GLOBAL__sub_I_*"]


def programs(build, folder):
    for requests in (20, 120):
        (folder / f"{requests}.jsonl").write_text(INITIALIZE + SCRIPT * requests)
    kepctl = [build / "bin/kepctl", "run", "--log-level", "3"]
    return [
        ("load", [], [build / "bench/kep_loads"]),
        ("load.byHand", [], [build / "bench/kep_loads_by_hand"]),
        ("load.static", STATIC_INITIALISERS, [build / "bench/kep_loads"]),
    ] + [
        (f"kepctl.{form}.{requests}", [], kepctl + ["--format", form, folder / f"{requests}.jsonl"])
        for form in ("text", "jsonl")
        for requests in (20, 120)
    ]


def of_its_own(place):
    """The environment of a process that shares neither configuration nor card with others: what they
    write takes other ways through libasound."""
    folder = pathlib.Path(f"{place}.tmp")
    folder.mkdir()
    return os.environ | {"TMPDIR": str(folder), "KEP_VIRTUALTV_STATE": str(folder / "cards.state")}


def callgrind(out, options, command, environment=None, stdin=None):
    """Runs a command under callgrind; what it printed to standard output."""
    done = subprocess.run(
        ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}"] + options + list(map(str, command)),
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False,
        stdin=stdin,
        env=of_its_own(out) | (environment or {}))
    if done.returncode != 0:
        sys.exit(f"count: {command}: {done.stdout[-300:]}{done.stderr[-1000:]}")
    return done.stdout


def total(path):
    return int(re.search(r"^(?:totals|summary): (\d+)", path.read_text(), re.M).group(1))


def count_group(build, folder, number, names):
    out = folder / f"group{number}"
    callgrind(out, [], [build / "bench/kep_count"] + names)
    costs = costs_in(folder, out.name)
    if "--journal" in names:
        costs = {name.replace("@info", "@journal"): cost for name, cost in costs.items()}
    return costs


def costs_in(folder, start):
    """What the dumps say whose names start like this."""
    costs = {}
    for dump in folder.glob(f"{start}.[0-9]*"):
        title = re.search(r"Client Request: (\S+) (\d+)$", dump.read_text(), re.M)
        if title:
            costs[title[1]] = total(dump) / int(title[2])
    return costs


def count_program(folder, name, options, command):
    callgrind(folder / name, options, command)
    return {name: total(folder / name)}


def count_allocations(build, folder):
    costs = {}
    for number, names in enumerate(GROUPS):
        if "--journal" in names:
            continue
        done = subprocess.run([build / "bench/kep_count"] + names, stdout=subprocess.PIPE, text=True, check=True,
                              env=of_its_own(folder / f"allocations{number}"))
        for line in done.stdout.splitlines():
            name, own, libasound, card, bytes_kept = line.split("\t")
            costs["allocations:" + name] = float(own)
            costs["allocations.libasound:" + name] = float(libasound)
            costs["allocations.card:" + name] = float(card)
            costs["bytes:" + name] = float(bytes_kept)
    return costs


def count_all(build):
    with tempfile.TemporaryDirectory() as name, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        folder = pathlib.Path(name)
        os.environ.update(
            LC_ALL="C",
            # Freed memory is found again in the same way, however much has been freed before.
            GLIBC_TUNABLES="glibc.malloc.tcache_count=2000")
        jobs = [pool.submit(count_group, build, folder, n, names) for n, names in enumerate(GROUPS)]
        jobs += [pool.submit(count_program, folder, *program) for program in programs(build, folder)]
        jobs.append(pool.submit(count_allocations, build, folder))
        costs = {}
        for job in jobs:
            costs.update(job.result())
        return costs


def figure_of(formula, costs):
    """A formula's words are numbers, signs, and names of cases."""
    return eval(" ".join(repr(costs[word]) if word in costs else word for word in formula.split()),
                {"__builtins__": {}})


def shown(value):
    return f"{value:.4f}" if abs(value) < 10 else f"{value:.1f}"


def rows():
    """Title lines as they are; rows as lists of question, formula, aim, recorded, limit."""
    for line in BUDGETS.read_text().splitlines():
        yield line if line.startswith("#") or not line else line.split("\t")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--record", action="store_true")
    parser.add_argument("--output", type=pathlib.Path)
    options = parser.parse_args()
    costs = count_all(options.build.resolve())
    if options.output:
        options.output.write_text(json.dumps(costs, indent=1, sort_keys=True))
    written, bad = [], 0
    for row in rows():
        if isinstance(row, str):
            written.append(row)
            continue
        question, formula, aim, _, limit = row
        figure = figure_of(formula, costs)
        too_much = figure > float(limit) + 5e-5
        bad += too_much
        over_aim = "" if figure <= float(aim) else "  (above the aim)"
        print(f"{'ABOVE THE LIMIT ' if too_much else ''}{question}: {shown(figure)}"
              f"  limit {limit}  aim {aim}{over_aim}")
        written.append("\t".join([question, formula, aim, shown(figure),
                                  shown(max(figure * TOLERANCE, figure + 0.0001))]))
    if options.record:
        BUDGETS.write_text("\n".join(written) + "\n")
        print(f"count: recorded in {BUDGETS.name}")
        return 0
    print(f"count: {bad} above the limit" if bad else "count: all within their limits")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())

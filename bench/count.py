#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts instructions and allocations, and holds them against the budgets.

count.py BUILD [QUESTIONS] [--record] [--output FILE]

BUILD is a release build tree. Every row of budgets.tsv is a figure made of the costs of named cases;
it fails when the figure is more than 2 % above the one recorded. QUESTIONS, a regular expression,
chooses rows. --record writes down what is found. --output keeps the costs of all cases, for other
scripts.

The figures do not depend on place and surroundings: the programs run from a copy in a folder whose
name is always of the same length, with an environment of their own."""
import argparse
import concurrent.futures
import contextlib
import json
import math
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
BUDGETS = HERE / "budgets.tsv"
TOLERANCE = 1.02
SLACK = 80  # instructions; of a difference, 2 % may be less than one
VALGRIND = shutil.which("valgrind")
UCM = pathlib.Path("/usr/share/alsa/ucm2")

# Cases of kep_count that share a process, those that take longest first; cold ones have one of their own.
GROUPS = [
    ["setSoundOutput.333", "setSoundOutput.100"],
    ["settings."],
    ["quality."],
    ["write.", "json.", "log.", "setM", "setI", "setOutput", "connectInput"],
    ["setSoundOutput@", "setSoundOutput.byHand", "setSoundOutput.arc."] + [f"setSoundOutput.{n}{end}"
                                                    for n in (1, 3, 8, 17) for end in ("@", ".byHand")],
    ["start.tv"],
    ["start.mixer"],
    ["start.useCases.byHand"],
]
JOURNAL = "--journal"  # cases at level info, which write to a journal then
# What kepctl plays, over and over; a line of what it prints in each round; what of it is counted.
SCRIPTS = {
    "kepctl": ('{"call": "setMute", "args": ["ADEC0", "MAIN", true]}\n', "Mute Input", []),
    "trace": ('{"call": "setSoundOutput", "args": ["tv_speaker_optical_arc"]}\n'
              '{"call": "setSoundOutput", "args": ["tv_speaker"]}\n', r"LightOnOff( = 1|.*\[1])",
              ["--toggle-collect=Trace::add*"]),
}
INITIALIZE = '{"call": "initialize", "args": []}\n'
STATIC_INITIALISERS = ["--demangle=no", "--toggle-collect=_GLOBAL__sub_I_*"]


def copy_use_cases(folder):
    """The distribution's entry to the profiles of all cards, and one for the virtual card."""
    shutil.copytree(HERE / "count/ucm", folder)
    shutil.copytree(UCM / "lib", folder / "lib")
    shutil.copy(UCM / "ucm.conf", folder)


@contextlib.contextmanager
def work_folder(build):
    """A folder with a copy of what is counted; its name is of the same length for every build tree."""
    with tempfile.TemporaryDirectory(prefix="kep-count-", dir="/tmp") as name:
        folder = pathlib.Path(name)
        for kept in ("lib", "share/kep"):
            shutil.copytree(build / kept, folder / kept, symlinks=True)
        copy_use_cases(folder / "ucm")
        for kind in ("bench", "bin"):
            (folder / kind).mkdir()
        for program in ["bin/kepctl"] + [f"bench/{name}" for name in (
                "kep_count", "kep_loads", "kep_loads_by_hand", "kep_steady.so")]:
            shutil.copy(build / program, folder / program)
        yield folder


def environment_of(place, folder):
    """Nothing of the caller's; and neither configuration nor card are shared with other processes: what
    they write takes other ways through libasound."""
    own = pathlib.Path(f"{place}.tmp")
    own.mkdir()
    return {
        "PATH": "/usr/bin:/bin", "HOME": str(own), "TMPDIR": str(own), "XDG_RUNTIME_DIR": str(own),
        "LC_ALL": "C", "TZ": "UTC0",
        "KEP_VIRTUALTV_STATE": str(own / "cards.state"),
        "ALSA_CONFIG_UCM2": str(folder / "ucm"),
        "ALSA_CONFIG_PATH": str(folder / "lib/kep/virtualtv.conf"),
        "ALSA_PLUGIN_DIR": str(folder / "lib/kep"),
    }


def callgrind(folder, name, options, command, environment=None, stdin=None):
    """Runs a command under callgrind; what it costs stands in folder/name. Returns what it printed."""
    out = folder / name
    done = subprocess.run(
        [VALGRIND, "--tool=callgrind", f"--callgrind-out-file={out}"] + options + list(map(str, command)),
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False, stdin=stdin, cwd=folder,
        env=environment_of(out, folder) | (environment or {}))
    if done.returncode != 0:
        sys.exit(f"count: {' '.join(map(str, command))} failed:\n{done.stdout[-300:]}{done.stderr[-1000:]}")
    return done.stdout


def total(path):
    return int(re.search(r"^(?:totals|summary): (\d+)", path.read_text(), re.M).group(1))


def costs_in(folder, start):
    """What the dumps say whose names start like this; of several for a case, the cheapest."""
    costs = {}
    for dump in folder.glob(f"{start}.[0-9]*"):
        title = re.search(r"Client Request: (\S+) (\d+)$", dump.read_text(), re.M)
        if title:
            costs[title[1]] = min(total(dump) / int(title[2]), costs.get(title[1], math.inf))
    return costs


def count_cases(folder, name, cases, environment=None):
    callgrind(folder, name, ["--instr-atstart=no"], [folder / "bench/kep_count"] + cases, environment)
    return costs_in(folder, name)


def count_journal(folder, cases):
    costs = count_cases(folder, "journal", [JOURNAL] + [name.replace("@journal", "@info") for name in cases])
    return {name.replace("@info", "@journal"): cost for name, cost in costs.items()}


def count_program(folder, name, options, command):
    callgrind(folder, name, options, command)
    return {name: total(folder / name)}


def count_kepctl(folder, name, played, form, rounds):
    script = folder / f"{name}.jsonl"
    requests, printed_line, options = SCRIPTS[played]
    script.write_text(INITIALIZE + requests * rounds)
    printed = callgrind(folder, name, options, [folder / "bin/kepctl", "run", "--log-level", "3", "--format", form, script],
                        {"LD_PRELOAD": str(folder / "bench/kep_steady.so")})
    if len(re.findall(printed_line, printed)) != rounds:
        sys.exit(f"count: kepctl did not make {rounds} rounds of requests:\n{printed[-300:]}")
    return {name: total(folder / name)}


def count_allocations(folder, number, cases):
    costs = {}
    done = subprocess.run([folder / "bench/kep_count"] + cases, stdout=subprocess.PIPE, text=True, check=True,
                          cwd=folder, env=environment_of(folder / f"allocations{number}", folder))
    for line in done.stdout.splitlines():
        name, own, libasound, card, bytes_kept = line.split("\t")
        costs["allocations:" + name] = float(own)
        costs["allocations.libasound:" + name] = float(libasound)
        costs["allocations.card:" + name] = float(card)
        costs["bytes:" + name] = float(bytes_kept)
    return costs


def jobs_of_programs(folder):
    """Name of the case, function, arguments after folder and name."""
    yield "load", count_program, [], [folder / "bench/kep_loads"]
    yield "load.byHand", count_program, [], [folder / "bench/kep_loads_by_hand"]
    yield "load.static", count_program, STATIC_INITIALISERS, [folder / "bench/kep_loads"]
    yield "amixer", count_program, [], ["amixer", "-q", "-D", "hw:0", "cset", "name='Mute Output'", "1,0"]
    for played, rounds in (("kepctl", (20, 120)), ("trace", (5, 25))):
        for form in ("text", "jsonl"):
            for number in rounds:
                yield f"{played}.{form}.{number}", count_kepctl, played, form, number


def of_group(group, names):
    """Those of the group, and then all that the budgets have of it: what a case costs depends a little on
    what its process has run before."""
    def belong(all_names):
        return {name for name in all_names if any(name.startswith(start) for start in group)}
    known = {name for name in all_cases() if ":" not in name and "@journal" not in name}
    return sorted(belong(names) | belong(known)) if belong(names) else []


def jobs_for(folder, names):
    """Functions and their arguments, which together give the costs of these cases."""
    counted = {name for name in names if ":" not in name}
    allocated = {name.split(":")[1] for name in names if ":" in name}
    for number, group in enumerate(GROUPS):
        cases = of_group(group, {name for name in counted if "@journal" not in name})
        if cases:
            yield count_cases, folder, f"group{number}", cases
    journal = sorted(name for name in counted if "@journal" in name)
    if journal:
        yield count_journal, folder, journal
    for name, function, *arguments in jobs_of_programs(folder):
        if name in counted:
            yield function, folder, name, *arguments
    for number, group in enumerate(GROUPS):
        cases = of_group(group, allocated)
        if cases:
            yield count_allocations, folder, number, cases


def count_all(build, names):
    """The costs of the cases of these names, and of those whose names start like them."""
    with work_folder(build) as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        costs = {}
        for job in [pool.submit(*job) for job in jobs_for(folder, names)]:
            costs.update(job.result())
        return costs


def cases_of(formula):
    return [word for word in formula.split() if re.match("[a-z]", word)]


def figure_of(formula, costs):
    """A formula's words are numbers, signs, and names of cases."""
    return eval(" ".join(repr(costs[word]) if word in costs else word for word in formula.split()),
                {"__builtins__": {}})


def limit_of(formula, figure):
    """2 % above; of a difference of instructions, some more."""
    instructions = re.fullmatch(r"[a-z]\S* - \S+", formula) and ":" not in formula
    return max(figure * TOLERANCE, figure + (SLACK if instructions else 0.0001))


def shown(value):
    return f"{value:.4f}" if abs(value) < 10 else f"{value:.1f}"


def rows():
    """Title lines as they are; rows as lists of question, formula, aim, recorded, limit."""
    for line in BUDGETS.read_text().splitlines():
        yield line if line.startswith("#") or not line else line.split("\t")


def all_cases():
    return {name for row in rows() if not isinstance(row, str) for name in cases_of(row[1])}


def sentence(row, figure, costs):
    question, formula, _, recorded, limit = row
    made_of = formula
    for name in cases_of(formula):
        made_of = made_of.replace(name, f"{name} {costs[name]:,.0f}", 1)
    return f'"{question}" is {shown(figure)}, above its limit {limit} (recorded: {recorded}; {made_of})'


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("questions", nargs="?", default="")
    parser.add_argument("--record", action="store_true")
    parser.add_argument("--output", type=pathlib.Path)
    options = parser.parse_args()
    table = list(rows())
    chosen = [row for row in table if not isinstance(row, str) and re.search(options.questions, row[0])]
    if not chosen:
        sys.exit(f"count: no question matches \"{options.questions}\"")
    costs = count_all(options.build.resolve(), {name for row in chosen for name in cases_of(row[1])})
    if options.output:
        options.output.write_text(json.dumps(costs, indent=1, sort_keys=True))
    bad = []
    for row in chosen:
        question, formula, aim, _, limit = row
        figure = figure_of(formula, costs)
        if figure > float(limit or "inf") + 5e-5:
            bad.append(sentence(row, figure, costs))
        over_aim = "" if figure <= float(aim) else "  (above the aim)"
        print(f"{question}: {shown(figure)}  limit {limit}  aim {aim}{over_aim}")
        row[3:] = [shown(figure), shown(limit_of(formula, figure))]
    if options.record:
        BUDGETS.write_text("".join((row if isinstance(row, str) else "\t".join(row)) + "\n" for row in table))
        print(f"count: recorded in {BUDGETS.name}")
        return 0
    for line in bad:
        print(f"count: {line}", file=sys.stderr)
    print(f"count: {len(bad)} of {len(chosen)} above the limit" if bad else "count: all within their limits")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())

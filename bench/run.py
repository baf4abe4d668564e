#!/usr/bin/env python3
"""Runs the programs of bench/peers side by side, and reports what an event costs in each.

Called by bench.sh, which builds the programs. Every case runs in several rounds; in each round the
programs run one after the other, so that all of them meet the same disturbances. A ratio is that of
one round, to the floor of that round; the median of the rounds is reported, with the smallest and
the largest.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

import report

HERE = pathlib.Path(__file__).resolve().parent
FLOOR = "Floor"
OURS = "Liblogger"
PEERS = ["Spdlog", "Log4cplus", "Log4cxx", "Glog", "BoostLog", "Poco"]
PACKAGES = {
    "Spdlog": "libspdlog-dev",
    "Log4cplus": "liblog4cplus-dev",
    "Log4cxx": "liblog4cxx-dev",
    "Glog": "libgoogle-glog-dev",
    "BoostLog": "libboost-log-dev",
    "Poco": "libpoco-dev",
}
WARM_UP = 500  # As in peers/Driver.h.
LONGEST_RUN = 120  # Seconds.
STARTS = 25


class Case:
    """A row of the table: what the programs are asked for, and how many events."""

    def __init__(self, name, title, task, events, extra=None, floor=None, one_core=False, files=0):
        self.name = name
        self.title = title
        self.task = task
        self.events = events
        self.extra = extra
        self.floor = floor or task  # What the floor is asked for.
        self.one_core = one_core
        self.files = files  # That get each event in one write; 0 where nothing is counted.

    def arguments(self, program, folder, events=None):
        task = self.floor if program == FLOOR else self.task
        extra = [] if self.extra is None else [str(self.extra)]
        return [task, str(folder), str(events or self.events)] + extra


CASES = [
    Case("file-1", "file, 1 thread", "file", 60000, extra=1, files=1),
    Case("file-2", "file, 2 threads on one handler", "file", 60000, extra=2, files=1),
    Case("file-4", "file, 4 threads on one handler", "file", 60000, extra=4, files=1),
    Case("three", "one event to three files", "three", 20000, files=3),
    Case("rolling", "rolling file (1 MB, 5 backups)", "rolling", 100000, files=1),
    Case("tree", "tree, three handlers deep", "tree", 60000, files=1),
    Case("rejected", "rejected call", "rejected", 4000000),
    Case("rejected-macro", "rejected call through the macro", "rejected-macro", 4000000,
         floor="rejected"),
    Case("socket", "socket, synchronous, decoded", "socket", 30000, one_core=True),
    Case("socket-queued", "socket, queued", "socket-queued", 30000, floor="socket", one_core=True),
    Case("socket-wait", "SendToServer(true), one event", "socket-wait", 4000, one_core=True),
    Case("xml-1000", "XML file with 1,000 entries", "xml", 2000, extra=1000),
    Case("xml-10000", "XML file with 10,000 entries", "xml", 2000, extra=10000),
    Case("xml-100000", "XML file with 100,000 entries", "xml", 2000, extra=100000),
    Case("start", "start, configuration, one line, end", "start", STARTS),
    Case("instructions", "user instructions of a file event", "instructions", 4000),
]


def fail(text):
    sys.exit(f"bench: {text}")


class Bench:
    """Runs the programs of one build in folders of its own."""

    def __init__(self, programs, folder):
        self.programs = programs
        self.folder = folder

    def fresh_folder(self):
        work = self.folder / "work"
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir()
        return work

    def run(self, case, program):
        """The time of an event as {"wall": .., "cpu": ..}, or {"cannot": why}."""
        if case.name == "start":
            return self.start(case, program)
        if case.name == "instructions":
            return self.instructions(case, program)
        pinned = ["taskset", "-c", str(max(os.sched_getaffinity(0)))] if case.one_core else []
        work = self.fresh_folder()
        command = pinned + [self.programs / program] + case.arguments(program, work)
        return json.loads(self.output(case, program, command))

    def output(self, case, program, command, errors=False):
        try:
            done = subprocess.run(command, capture_output=True, text=True, timeout=LONGEST_RUN,
                                  check=False)
        except subprocess.TimeoutExpired:
            fail(f"{program} takes more than {LONGEST_RUN} s for the case {case.name}")
        if done.returncode != 0:
            fail(f"{program} fails in the case {case.name}: {done.stderr.strip()}")
        return done.stderr if errors else done.stdout

    def start(self, case, program):
        reader = OURS if program == FLOOR else program
        configuration = next((HERE / "peers" / "start").glob(f"{reader}.*"), None)
        work = self.fresh_folder()
        if configuration is None:  # The program knows why.
            return json.loads(self.output(case, program, [self.programs / program, "start", work,
                                                          "0"]))
        command = [self.programs / "Launch", str(STARTS), work, self.programs / program,
                   configuration]
        result = json.loads(self.output(case, program, command))
        numbers = re.findall(r"^\S{19} \|INFO\| request (\d+) from .*$",
                             (work / "app.log").read_text(), flags=re.MULTILINE)
        if numbers != [str(number) for number in range(STARTS + 1)]:
            fail(f"{program} has not logged one line for each start")
        return result

    def instructions(self, case, program):
        """User instructions of an event: what a longer run takes more than a shorter one."""
        counts = []
        for events in (1000, 1000 + case.events):
            command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                       self.programs / program] + case.arguments(program, self.fresh_folder(), events)
            counted = re.search(r"Collected\s*:\s*(\d+)",
                                self.output(case, program, command, errors=True))
            if counted is None:
                fail(f"valgrind prints no count for {program}")
            counts.append(int(counted[1]))
        return {"instructions": (counts[1] - counts[0]) / case.events}

    def check_flushes(self, case, program):
        """Fails unless each event goes to each file in exactly one write to the kernel.

        When several threads log, a write may have an event of each of them: some libraries write
        and flush in two steps, between which another thread can write. What a call has logged is
        with the kernel all the same when it returns.
        """
        work = self.fresh_folder()
        trace = self.folder / "trace"
        events = 14000 if case.name == "rolling" else 500  # Enough to roll over once.
        threads = case.extra or 1
        command = ["strace", "-f", "-y", "-s", "1000", "-o", trace,
                   "-e", "trace=write,writev,pwrite64,pwritev,pwritev2",
                   self.programs / program] + case.arguments(program, work, events)
        if "cannot" in json.loads(self.output(case, program, command)):
            return
        written = 0
        for line in trace.read_text().splitlines():
            if f"<{work}/" not in line:
                continue
            inside = len(re.findall(r"request \d+ from \S+ took \d+ us, status \w\\n", line))
            if inside == 0 and written == 0:
                continue  # A heading.
            if not 1 <= inside <= threads or inside != line.count("request "):
                fail(f"{program} does not write each event at once in the case {case.name}: {line}")
            written += inside
        expected = case.files * (WARM_UP + events)
        if written != expected:
            fail(f"{program} writes {written} events instead of {expected} in the case {case.name}")


def summary(values):
    return {"median": statistics.median(values), "min": min(values), "max": max(values)}


def measure(bench, case, rounds):
    """Runs a case and returns {program: {"wall": .., "wall_ratio": .., ..}}."""
    programs = [FLOOR, OURS] + PEERS
    able, results = list(programs), {}
    measured = {program: [] for program in programs}
    if case.name == "instructions":
        rounds = 1  # The count does not depend on what else the machine does.
    for number in range(rounds):
        turn = number % len(able)
        for program in able[turn:] + able[:turn]:
            result = bench.run(case, program)
            if "cannot" in result:
                results[program] = result
                able = [other for other in able if other != program]
            else:
                measured[program].append(result)
    for program in able:
        results[program] = {}
        for what in measured[program][0]:
            values = [result[what] for result in measured[program]]
            ratios = [value / floor[what] for value, floor in zip(values, measured[FLOOR])]
            results[program][what] = summary(values)
            results[program][what + "_ratio"] = summary(ratios)
    return results


def output_line(command, index=0):
    """A line of the command's output, by default the first."""
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    return done.stdout.splitlines()[index].strip()


def conditions(folder, rounds):
    """The machine and the versions that the figures depend on."""
    model = re.search(r"model name\s*:\s*(.*)", pathlib.Path("/proc/cpuinfo").read_text())
    versions = {program: output_line(["dpkg-query", "-W", "-f", "${Version}", package])
                for program, package in PACKAGES.items()}
    return {
        "date": datetime.date.today().isoformat(),
        "rounds": rounds,
        "processor": model[1] if model else platform.machine(),
        "cores": len(os.sched_getaffinity(0)),
        "kernel": re.match(r"[\d.]+", platform.release())[0],
        "file_system": output_line(["df", "--output=fstype", folder], index=-1),
        "compiler": output_line(["c++", "--version"]),
        "versions": versions,
    }


def chosen_cases(names):
    def is_chosen(case, name):
        return case.name == name or case.name.startswith(name + "-")

    for name in names:
        if not any(is_chosen(case, name) for case in CASES):
            fail(f"there is no case {name}; there are: " + ", ".join(case.name for case in CASES))
    return [case for case in CASES if not names or any(is_chosen(case, name) for name in names)]


def main():
    parser = argparse.ArgumentParser(description="Compares the library with others, event by event.")
    parser.add_argument("cases", metavar="CASE", nargs="*",
                        help="such as file-1, or file for all that begin so; all without it")
    parser.add_argument("--build", type=pathlib.Path, required=True, help="build folder")
    parser.add_argument("--rounds", type=int, default=15, help="at least 5; 15 without it")
    parser.add_argument("--publish", action="store_true",
                        help="replace table, chart and JSON in docs with this run's")
    options = parser.parse_args()
    cases = chosen_cases(options.cases)
    if options.rounds < 5:
        fail("fewer than 5 rounds give no usable median")
    if options.publish and options.cases:
        fail("only a run of all cases is published")

    with tempfile.TemporaryDirectory(prefix="liblogger-bench-") as folder:
        bench = Bench(options.build.resolve() / "bench", pathlib.Path(folder))
        results = {"conditions": conditions(folder, options.rounds), "cases": []}
        for case in cases:
            print(f"{case.title} ...", file=sys.stderr, flush=True)
            if case.files > 0:
                for program in [FLOOR, OURS] + PEERS:
                    bench.check_flushes(case, program)
            results["cases"].append({"name": case.name, "title": case.title,
                                     "results": measure(bench, case, options.rounds)})

    print(report.tables(results))
    kept = HERE / "results"
    kept.mkdir(exist_ok=True)
    path = kept / datetime.datetime.now().strftime("%Y-%m-%dT%H%M%S.json")
    report.write_json(results, path)
    report.write_chart(results, path.with_suffix(".svg"))
    if options.publish:
        report.publish(results, HERE.parent / "docs")


if __name__ == "__main__":
    main()

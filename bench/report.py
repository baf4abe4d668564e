"""Prints the results of bench/run.py as tables, as JSON and as a chart."""

import json
import math
import re

FLOOR = "Floor"
OURS = "Liblogger"
NAMES = {"Floor": "floor", "Liblogger": "liblogger", "Spdlog": "spdlog", "Log4cplus": "log4cplus",
         "Log4cxx": "log4cxx", "Glog": "glog", "BoostLog": "Boost.Log", "Poco": "Poco"}
PEERS = [program for program in NAMES if program not in (FLOOR, OURS)]


def unit(result):
    """The figure of a result: ("instructions" or "wall", as text, with its ratio)."""
    return "instructions" if "instructions" in result else "wall"


def number(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def ratio(value):
    return f"{value:.2f}" if value < 100 else f"{value:,.0f}"


def spread(result, what):
    if what not in result:
        return "–"
    value = result[what]
    if value["min"] == value["max"]:
        return ratio(value["median"])
    return f"{ratio(value['median'])} ({ratio(value['min'])}–{ratio(value['max'])})"


def best_peer(results):
    ratios = [(results[peer][unit(results[peer]) + "_ratio"]["median"], NAMES[peer])
              for peer in PEERS if "cannot" not in results[peer]]
    if not ratios:
        return "none"
    value, name = min(ratios)
    return f"{ratio(value)} {name}"


def markdown(heading, rows):
    """A table whose columns line up also where it is read as text."""
    table = [heading] + rows
    widths = [max(len(row[column]) for row in table) for column in range(len(heading))]

    def line(cells, fill=" "):
        return "|" + "|".join(f" {cell.ljust(width, fill)} " for cell, width in zip(cells, widths)) + "|"

    separator = line(["-" * 3] * len(heading), "-")
    return "\n".join([line(heading), separator] + [line(row) for row in rows])


def own_table(results):
    rows = []
    for case in results["cases"]:
        programs = case["results"]
        ours, floor = programs[OURS], programs[FLOOR]
        if "cannot" in ours:
            rows.append([case["title"], number(floor[unit(floor)]["median"]), "–", ours["cannot"],
                         "–", best_peer(programs)])
            continue
        what = unit(ours)
        rows.append([case["title"], number(floor[what]["median"]), number(ours[what]["median"]),
                     spread(ours, what + "_ratio"), spread(ours, "cpu_ratio"), best_peer(programs)])
    return markdown(["case", "floor", "liblogger", "ratio, wall time", "ratio, processor time",
                     "best peer"], rows)


def peer_table(results):
    rows = []
    for case in results["cases"]:
        cells = [case["title"]]
        for peer in PEERS:
            result = case["results"][peer]
            if "cannot" in result:
                cells.append("–")
            elif "cpu" in result:
                cells.append(f"{ratio(result['wall_ratio']['median'])}, "
                             f"{ratio(result['cpu_ratio']['median'])}")
            else:
                cells.append(ratio(result["instructions_ratio"]["median"]))
        if any(cell != "–" for cell in cells[1:]):
            rows.append(cells)
    return markdown(["case"] + [NAMES[peer] for peer in PEERS], rows)


def reasons(results):
    """Why a peer takes no part in a case that others of them take part in."""
    lines = []
    for case in results["cases"]:
        programs = case["results"]
        unable = [peer for peer in PEERS if "cannot" in programs[peer]]
        if not unable:
            continue
        if len(unable) == len(PEERS):
            lines.append(f"- {case['title']}: no peer has such a feature.")
        else:
            lines.append(f"- {case['title']}: " + "; ".join(
                f"{NAMES[peer]} {programs[peer]['cannot']}" for peer in unable) + ".")
    return "\n".join(lines)


def versions(results):
    conditions = results["conditions"]
    peers = ", ".join(f"{NAMES[peer]} {version}" for peer, version in conditions["versions"].items())
    return (f"Run of {conditions['date']}, {conditions['rounds']} rounds: {conditions['processor']}, "
            f"{conditions['cores']} cores, Linux {conditions['kernel']}, file system "
            f"{conditions['file_system']}, {conditions['compiler']}. {peers}.")


def tables(results):
    parts = [versions(results),
             "Nanoseconds of an event (of a process for the start; instructions in the last case), "
             "medians; ratios to the floor of the same round, median (smallest–largest):",
             own_table(results)]
    if "–" in peer_table(results) or peer_table(results).count("\n") > 1:
        parts += ["The peers' ratios to the floor, wall time and processor time:",
                  peer_table(results)]
    if reasons(results):
        parts += ["Libraries that take no part in a case:", reasons(results)]
    return "\n\n".join(parts)


def write_json(results, path):
    def rounded(value):
        if isinstance(value, dict):
            return {key: rounded(item) for key, item in value.items()}
        if isinstance(value, list):
            return [rounded(item) for item in value]
        return round(value, 3) if isinstance(value, float) else value

    path.write_text(json.dumps(rounded(results), indent=1, ensure_ascii=False) + "\n")


def publish(results, docs):
    """Replaces the figures in docs/performance.md, its chart and the JSON beside them."""
    page = docs / "performance.md"
    text, count = re.subn(r"(<!-- figures -->\n).*(<!-- end of figures -->)",
                          lambda found: f"{found[1]}\n{tables(results)}\n\n{found[2]}",
                          page.read_text(), flags=re.DOTALL)
    if count != 1:
        raise SystemExit(f"bench: {page.name} has no place for the figures")
    page.write_text(text)
    write_json(results, docs / "performance.json")
    write_chart(results, docs / "performance.svg")


# The chart: a row for each case, the ratio to the floor from left to right, on a logarithmic scale.

LEFT, RIGHT, TOP, ROW, BOTTOM, WIDTH = 250, 30, 74, 30, 56, 960
STYLE = """
    text { font: 13px sans-serif; fill: #1f2328; }
    .title { font-size: 16px; font-weight: bold; }
    .tick { fill: #59636e; font-size: 12px; }
    .grid { stroke: #d1d9e0; }
    .floor { stroke: #1f2328; stroke-width: 1.5; stroke-dasharray: 5 3; }
    .background { fill: #ffffff; }
    .Liblogger { color: #cf222e; } .Spdlog { color: #0969da; } .Log4cplus { color: #1a7f37; }
    .Log4cxx { color: #9a6700; } .Glog { color: #8250df; } .BoostLog { color: #bc4c00; }
    .Poco { color: #57606a; }
    .mark { fill: currentColor; stroke: currentColor; }
    .hollow { fill: none; stroke: currentColor; stroke-width: 1.6; }
    @media (prefers-color-scheme: dark) {
      text { fill: #f0f6fc; }
      .tick { fill: #9198a1; }
      .grid { stroke: #3d444d; }
      .floor { stroke: #f0f6fc; }
      .background { fill: #0d1117; }
      .Liblogger { color: #ff7b72; } .Spdlog { color: #79c0ff; } .Log4cplus { color: #56d364; }
      .Log4cxx { color: #e3b341; } .Glog { color: #d2a8ff; } .BoostLog { color: #ffa657; }
      .Poco { color: #b1bac4; }
    }"""


def mark(program, x, y):
    """A shape of its own for each library, so that the chart does without colours too."""
    r = 5
    shapes = {
        "Liblogger": f'<circle class="mark" cx="{x:.1f}" cy="{y}" r="6.5"/>',
        "Spdlog": f'<circle class="hollow" cx="{x:.1f}" cy="{y}" r="{r}"/>',
        "Log4cplus": f'<rect class="hollow" x="{x - r:.1f}" y="{y - r}" width="{2 * r}" height="{2 * r}"/>',
        "Log4cxx": f'<path class="hollow" d="M{x:.1f} {y - 6} l6 11 h-12 z"/>',
        "Glog": f'<path class="hollow" d="M{x:.1f} {y - 6} l6 6 l-6 6 l-6 -6 z"/>',
        "BoostLog": f'<path class="hollow" d="M{x - r:.1f} {y - r} l10 10 m0 -10 l-10 10"/>',
        "Poco": f'<path class="hollow" d="M{x:.1f} {y - 6} v12 m-6 -6 h12"/>',
    }
    return f'<g class="{program}">{shapes[program]}</g>'


def chart_rows(results):
    """Per case its title and {program: (median, min, max) of the ratio}."""
    for case in results["cases"]:
        values = {}
        for program in [*PEERS, OURS]:  # The library's own mark is drawn over the others.
            result = case["results"][program]
            if "cannot" not in result:
                value = result[unit(result) + "_ratio"]
                values[program] = (value["median"], value["min"], value["max"])
        yield case["title"], values


def write_chart(results, path):
    rows = list(chart_rows(results))
    every = [value for _, values in rows for triple in values.values() for value in triple] + [1]
    ticks = [tick for tick in (0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000,
                               2000, 5000, 10000, 20000)]
    low = max([tick for tick in ticks if tick <= min(every)], default=ticks[0])
    high = min([tick for tick in ticks if tick >= max(every)], default=ticks[-1])
    height = TOP + ROW * len(rows) + BOTTOM
    bottom = TOP + ROW * len(rows)

    def x_of(value):
        share = math.log(min(max(value, low), high) / low) / math.log(high / low)
        return LEFT + share * (WIDTH - LEFT - RIGHT)

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" '
           f'width="{WIDTH}" height="{height}" role="img">',
           "  <title>Time of an event as a ratio to the floor, for liblogger and its peers</title>",
           f"  <style>{STYLE}\n  </style>",
           f'  <rect class="background" width="{WIDTH}" height="{height}"/>',
           '  <text class="title" x="16" y="26">Time of an event, as a ratio to a program without '
           "any library</text>"]
    x = 16
    for program in [OURS, *PEERS]:
        out.append(f"  {mark(program, x + 6, 50)}")
        out.append(f'  <text x="{x + 18}" y="54">{NAMES[program]}</text>')
        x += 46 + 7.6 * len(NAMES[program])
    out.append(f'  <path class="floor" d="M{x:.0f} 50 h24"/>')
    out.append(f'  <text x="{x + 30:.0f}" y="54">floor</text>')
    for tick in (tick for tick in ticks if low <= tick <= high):
        kind = "floor" if tick == 1 else "grid"
        out.append(f'  <path class="{kind}" d="M{x_of(tick):.1f} {TOP} V{bottom}"/>')
        out.append(f'  <text class="tick" text-anchor="middle" x="{x_of(tick):.1f}" '
                   f'y="{bottom + 18}">{tick:g}</text>')
    out.append(f'  <text class="tick" text-anchor="middle" x="{(LEFT + WIDTH - RIGHT) / 2:.0f}" '
               f'y="{bottom + 42}">ratio to the floor, wall time (last row: instructions), '
               "logarithmic; lines from the smallest to the largest round</text>")
    for index, (title, values) in enumerate(rows):
        y = TOP + ROW * index + ROW // 2
        out.append(f'  <text text-anchor="end" x="{LEFT - 12}" y="{y + 4}">{title}</text>')
        for program, (median, smallest, largest) in values.items():
            out.append(f'  <path class="{program}" stroke="currentColor" stroke-opacity="0.5" '
                       f'd="M{x_of(smallest):.1f} {y} H{x_of(largest):.1f}"/>')
        for program, (median, _, _) in values.items():
            out.append(f"  {mark(program, x_of(median), y)}")
    out.append("</svg>")
    path.write_text("\n".join(out) + "\n")

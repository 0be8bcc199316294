#!/usr/bin/env python3
"""Turns a recorded run into tables and plots.

    report.py RESULTS.csv [--before OTHER.csv] [--readme README.md] [--plots FOLDER]

Without --readme the tables go to standard output; with it they replace what lies between the
README's result marks. --before adds a comparison with an older run. --plots needs gnuplot.
"""
import argparse
import csv
import pathlib
import statistics
import subprocess

BEGIN = "<!-- results: written by report.py -->"
END = "<!-- end of results -->"
SIZES = [0, 1, 4, 12, 24]  # megapixels of the stage benchmarks, 0 for 320 x 240
MOVERS = {  # stages that only move bytes, and the copy that each is held against
    "photo in": "photo memcpy",
    "photo out": "photo memcpy",
    "history write": "history write memcpy",
    "history read": "history read memcpy",
    "mask out": "mask memcpy",
}
WHOLE = "doSegmentationBB"


class Run:
    """One file: values by program, subject, size and statistic, in the order of the file; of
    several values for one thing their median."""

    def __init__(self, path):
        all_values = {}
        with open(path, newline="") as lines:
            for row in csv.DictReader(lines):
                key = (row["program"], row["subject"], float(row["megapixels"]), row["statistic"])
                all_values.setdefault(key, []).append(float(row["value"]))
                self.date, self.processor = row["date"], row["processor"]
                self.commit = row["commit"]
        self.values = {key: statistics.median(values) for key, values in all_values.items()}

    def get(self, *key):
        return self.values.get(key)

    def subjects(self, program, size=None):
        """(subject, size) pairs of a program in order of appearance."""
        found = {(k[1], k[2]): None for k in self.values if k[0] == program}
        return [pair for pair in found if size is None or pair[1] == size]

    def profile_sizes(self):
        return sorted({size for _, size in self.subjects("profile")})


def number(value):
    if value is None:
        return ""
    return f"{value:.0f}" if abs(value) >= 100 else f"{value:.3g}"


def table(heads, rows):
    lines = ["| " + " | ".join(heads) + " |", "|---|" + "---:|" * (len(heads) - 1)]
    return lines + ["| " + " | ".join(row) + " |" for row in rows] + [""]


def size_name(size):
    return "320 x 240" if size < 0.1 else f"{size:.3g} MP"


def request_tables(run, before):
    lines = []
    for size in run.profile_sizes():
        whole = run.get("profile", WHOLE, size, "median")
        lines += [f"### One box request, {size_name(size)}", ""]
        heads = ["stage", "ms", "processor ms", "share"] + (["ms before", "faster"] if before else [])
        rows = []
        for subject, _ in run.subjects("profile", size):
            wall = run.get("profile", subject, size, "median")
            row = [subject, number(wall), number(run.get("profile", subject, size, "processor")),
                   f"{100 * wall / whole:.0f} %"]
            if before:
                old = before.get("profile", subject, size, "median")
                row += [number(old), f"{old / wall:.2f}" if old and wall else ""]
            rows.append(row)
        lines += table(heads, rows)
        peak = run.get("profile", WHOLE, size, "peak memory")
        each = run.get("profile", WHOLE, size, "peak memory a pixel")
        text = f"Peak memory {number(peak)} MB, {number(each)} bytes a pixel"
        if before:
            text += f"; before {number(before.get('profile', WHOLE, size, 'peak memory'))} MB"
        lines += [text + ".", ""]
    return lines


def stage_table(run):
    names = dict.fromkeys(subject for subject, _ in run.subjects("stages"))
    rows = [[name] + [number(run.get("stages", name, float(s), "processor")) for s in SIZES]
            for name in names if "memcpy" not in name]
    return ["### Each stage by itself, processor milliseconds", ""] + table(
        ["stage"] + [size_name(s) for s in SIZES], rows)


def mover_table(run, size=12.0):
    rows = []
    for name, copy in MOVERS.items():
        times = [run.get("stages", subject, size, "processor") for subject in (name, copy)]
        if None not in times:
            rows.append([name, number(times[0]), number(times[1]), f"{times[0] / times[1]:.2f}"])
    fresh = run.get("stages", "photo memcpy to fresh memory", size, "processor")
    note = (f"The photograph's copy into memory that the system hands out first takes "
            f"{number(fresh)} ms.") if fresh else ""
    return ["### Moving bytes, 12 megapixels, processor milliseconds", ""] + table(
        ["stage", "engine", "memcpy of the same traffic", "times memcpy"], rows) + [note, ""]


def session_table(run):
    rows = []
    for subject, size in run.subjects("sessions"):
        value = lambda statistic: number(run.get("sessions", subject, size, statistic))
        rows.append([subject, value("p50"), value("p95"), value("peak memory"),
                     value("peak memory a pixel"), value("requests")])
    return ["### Sessions", ""] + table(
        ["request", "p50 ms", "p95 ms", "peak MB", "bytes a pixel", "requests"], rows)


def correction_table(run):
    rows = []
    for subject, size in run.subjects("corrections"):
        value = lambda statistic: number(run.get("corrections", subject, size, statistic))
        rows.append([subject, size_name(size), value("p50"), value("p95"), value("processor p50"),
                     value("processor p95"), value("peak memory"), value("ratio")])
    heads = ["step", "photograph", "p50 ms", "p95 ms", "processor p50", "processor p95", "peak MB",
             "times the single request"]
    return ["### Corrections", ""] + table(heads, rows) if rows else []


def peer_table(run):
    rows = []
    for subject, size in run.subjects("peers"):
        value = lambda statistic: number(run.get("peers", subject, size, statistic))
        if run.get("peers", subject, size, "ratio") is not None:
            rows.append([subject, value("engine"), value("peer"), value("ratio"), value("runs")])
    return ["### Beside the peers, medians", ""] + table(
        ["against", "engine ms", "peer ms", "times faster", "runs"], rows)


def instruction_table(run, before):
    rows = []
    for subject, size in run.subjects("instructions"):
        now = run.get("instructions", subject, size, "instructions")
        row = [f"{subject}, {size_name(size)}", f"{now / 1e6:.1f}"]
        if before:
            old = before.get("instructions", subject, size, "instructions")
            row += [f"{old / 1e6:.1f}" if old else "", f"{now / old:.2f}" if old else ""]
        rows.append(row)
    heads = ["function, with what it calls", "million"] + (["before", "ratio"] if before else [])
    return ["### Instructions of a box request", ""] + table(heads, rows)


def tables(run, before):
    title = f"Run of {run.date}, {run.processor}, commit {run.commit}"
    if before:
        title += f"; before: commit {before.commit}"
    lines = [title + ".", ""]
    lines += request_tables(run, before) + stage_table(run) + mover_table(run)
    lines += session_table(run) + correction_table(run)
    return lines + peer_table(run) + instruction_table(run, before)


def write_readme(path, lines):
    text = path.read_text()
    head, rest = text.split(BEGIN)
    path.write_text("\n".join([head + BEGIN, ""] + lines) + END + rest.split(END)[1])


def gnuplot(file, body):
    head = f"set terminal svg size 900,480 background '#ffffff'\nset output '{file}'\n"
    subprocess.run(["gnuplot"], input=head + body, text=True, check=True)


def plot_request(run, size, file):
    """Bars of a request's stages, largest first."""
    stages = [(run.get("profile", s, size, "median"), s)
              for s, _ in run.subjects("profile", size) if s != WHOLE]
    stages = sorted(stages, reverse=True)[:12]
    data = "\n".join(f'"{name}" {value}' for value, name in stages)
    gnuplot(file, f"""$data << EOD
{data}
EOD
set title "Box request, {size_name(size)}: milliseconds a stage"
set style fill solid 0.8
set boxwidth 0.7
set yrange [0:*]
set grid ytics
set xtics rotate by -35
unset key
plot $data using 0:2:xtic(1) with boxes lc rgb '#4477aa'
""")


def plot_sizes(run, file):
    """Stages that walk the photograph, over its size."""
    names = [s for s, _ in run.subjects("stages", 12.0) if "memcpy" not in s]
    blocks = []
    for name in names:
        points = [(s, run.get("stages", name, float(s), "processor")) for s in SIZES[1:]]
        blocks.append("\n".join(f"{s} {v}" for s, v in points if v))
    curves = ", ".join(f"$data index {i} with linespoints lw 2 title '{name}'"
                       for i, name in enumerate(names))
    data = "\n\n\n".join(blocks)
    gnuplot(file, f"""$data << EOD
{data}
EOD
set title "Processor milliseconds over megapixels"
set logscale xy
set xtics ({", ".join(str(s) for s in SIZES[1:])})
set grid
set key outside right
plot {curves}
""")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("results", type=pathlib.Path)
    parser.add_argument("--before", type=pathlib.Path)
    parser.add_argument("--readme", type=pathlib.Path)
    parser.add_argument("--plots", type=pathlib.Path)
    options = parser.parse_args()
    run = Run(options.results)
    lines = tables(run, Run(options.before) if options.before else None)
    if options.plots:
        for size in run.profile_sizes():
            name = "request-working.svg" if size < 0.1 else f"request-{size:.0f}mp.svg"
            plot_request(run, size, options.plots / name)
        plot_sizes(run, options.plots / "sizes.svg")
    if options.readme:
        write_readme(options.readme, lines)
    else:
        print("\n".join(lines))


if __name__ == "__main__":
    main()

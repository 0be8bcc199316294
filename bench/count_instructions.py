#!/usr/bin/env python3
"""Counts the instructions of one box request with valgrind and adds them to a recorded run.

    count_instructions.py PROFILE_PROGRAM RESULTS.csv [options of the program]

The program makes the one request, with the clock stopped so that it is not cut short at its time
limit, and nothing else is counted. Worker threads of the clustering run
outside the counted call. Date, processor and commit are those of the file's last line.
"""
import csv
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ENTRY = "doSegmentationBB"
# What is listed, by a part of the symbol's name; the first match counts.
FUNCTIONS = {
    "doSegmentationBB": "whole call",
    "storePhoto(": "photo in",
    "VORNSEHybrid::intializer(": "preparation",
    "VORNSEHybrid::labelMarks(": "label image",
    "VORNSEHybrid::parallelLamdaSwtich(": "smoothness choice",
    "VORNSEHybrid::constructGraphVORN_Whole_Image(": "graph build",
    "VORNSEHybrid::intelligentUpscaling(": "upscaling",
    "VORNSEHybrid::constructGraphTrimapVORN(": "upscaling graph",
    "VORNSEGraph::maxFlow(": "max-flow, both graphs",
    "VORNSEHybrid::postProcess(": "post-processing",
    "VORNSEManageUndoRedo::record(": "history write",
    "traceOutline(": "outline",
    "writeMask(": "mask out",
}


def inclusive_counts(callgrind_file):
    command = ["callgrind_annotate", "--inclusive=yes", "--threshold=100", callgrind_file]
    text = subprocess.run(command, check=True, text=True, capture_output=True).stdout
    counts = {}
    for line in text.splitlines():
        match = re.match(r"\s*([\d,]+)\s+\([^)]*\)\s+\S*?:(.*)", line)
        for part, name in FUNCTIONS.items() if match else ():
            if match.group(2).startswith(part):
                counts.setdefault(name, int(match.group(1).replace(",", "")))
    return {name: counts[name] for name in FUNCTIONS.values() if name in counts}


def main():
    program, results, options = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
    megapixels = 12.0 if "--megapixels" in options else 0.0768
    clock = pathlib.Path(program).resolve().parent / "libsegcore_bench_stopped_clock.so"
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder) / "callgrind.out"
        subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}",
                        "--collect-atstart=no", f"--toggle-collect={ENTRY}", program, "--once",
                        *options], check=True, stderr=subprocess.DEVNULL,
                       env={**os.environ, "LD_PRELOAD": str(clock)})
        counts = inclusive_counts(out)
    with open(results, newline="") as lines:
        start = list(csv.reader(lines))[-1][:3]
    with open(results, "a", newline="") as lines:
        writer = csv.writer(lines, lineterminator="\n")
        for name, count in counts.items():
            writer.writerow([*start, "instructions", name, megapixels, "instructions", count,
                             "instructions"])


if __name__ == "__main__":
    main()

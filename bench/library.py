"""The library's operations, by Google Benchmark."""

import json
import os
import statistics
import subprocess
import sys


def library(bench):
    bench.say("the library's operations")
    report = bench.work / "library.json"
    subprocess.run(
        [
            bench.program("library_bench"),
            f"--benchmark_out={report}",
            "--benchmark_out_format=json",
            f"--benchmark_repetitions={bench.rounds}",
            "--benchmark_enable_random_interleaving=true",
        ],
        env={**os.environ, "TESSEL_BENCH_PICTURES": str(bench.folder)},
        stdout=bench.log,
        stderr=bench.log,
        check=True,
    )
    times = {}
    for run in json.loads(report.read_text(encoding="utf-8"))["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"compare: {run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            unit = {"ns": 1e-9, "ms": 1e-3}[run["time_unit"]]
            name = run["run_name"].removesuffix("/iterations:1")
            times.setdefault(name, []).append(run["cpu_time"] * unit)
    times = {name: statistics.median(runs) for name, runs in times.items()}
    scaler_rows(bench, times)
    operations = [name.removeprefix("copy/") for name in times if name.startswith("copy/")]
    pairs = {name: (times["operation/" + name], times["copy/" + name]) for name in operations}
    for name, (time, copy) in sorted(pairs.items(), key=lambda item: -item[1][0] / item[1][1]):
        bench.row(name, time, "copying its source", copy)
    for name in "read", "write":
        cost = times["database/" + name] / 100_000
        bench.rows.append((f"database, {name} a line", f"{1e6 * cost:.2f} µs", "", "", "", ""))


def scaler_rows(bench, times):
    peers = {
        "opencv": ("OpenCV's INTER_AREA, one thread", {"192": "1 : 8", "1024": "1 : 3"}),
        "definition": ("its definition, pixel by pixel", {"enlarge": "1 : 1"}),
    }
    for size, what in ("192", "to 192"), ("1024", "to 1024"), ("enlarge", "1.5 times larger"):
        time = times["scaler/" + size]
        if size != "enlarge":
            goal = "1.6 : 1" if size == "192" else ""
            bench.row("scaler " + what, time, "reading every byte", times["read"], goal=goal)
        for peer, (other, goals) in peers.items():
            if f"{peer}/{size}" in times:
                theirs = times[f"{peer}/{size}"]
                bench.row("scaler " + what, time, other, theirs, goal=goals.get(size, ""))
    bars = [("reading every byte", times["read"])]
    for size in "192", "1024":
        labels = {"scaler": "tessel", "opencv": "OpenCV", "definition": "definition"}
        for name, label in labels.items():
            if f"{name}/{size}" in times:
                bars.append((f"{label} to {size}", times[f"{name}/{size}"]))
    bench.panels.append(("The scaler alone, seconds for all pictures", bars))

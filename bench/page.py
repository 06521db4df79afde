#!/usr/bin/env python3
"""Measures how cost grows and writes the tables and pictures of docs/benchmarks.md.

Use: bench/page.py PROGRAM [--rounds N] [--others FILE.csv]
PROGRAM   tarn_bench of an optimised build
--rounds  how often everything is measured (5); the median counts
--others  what other programs take for the same work, measured in turns with tarn_bench. Its heading is
          item,case,value,who,median,least,count; lines before it are skipped. `who` is "project" for tarn_bench,
          "limit:..." for the bare work, "info:..." for what is not ranked. Without it the comparison stays as it is.

scripts/bench --plot builds the program and calls this.
"""
import argparse
import collections
import csv
import datetime
import itertools
import json
import pathlib
import platform
import re
import statistics
import subprocess
import tempfile

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plot  # noqa: E402
import matplotlib.ticker  # noqa: E402

TOP = pathlib.Path(__file__).resolve().parent.parent
PAGE = TOP / "docs" / "benchmarks.md"
PICTURES = TOP / "docs" / "benchmarks"

# Each has a process of its own, because what another one leaves in the heap must not count.
GROUPS = ["ReplyDecode", "ReplyMemory", "BlockDelivery/type3/process", "BlockDelivery/picture", "MemoryCopy"]
MODIFIERS = re.compile(r"^(real_time|process_time|manual_time|iterations:\d+)$")
BLUE, ORANGE, GREY = "#0072b2", "#d55e00", "#999999"

WORK = {
    "ReplyDecode": "a reply to cameras", "ListFoundCameras": "`ListFoundCameras`", "ReplyMemory": "memory of a reply",
    "RecordsWrite": "records to bytes", "RecordsRead": "bytes to records", "ValueListBuild": "a value list, built",
    "ValueListWrite": "a value list, written", "ValueListRead": "a value list, read",
    "ValueListGet": "a value list to a record", "CommandEncode": "a command", "Base64Encode": "base64, encoded",
    "Base64Decode": "base64, decoded", "TextEncode": "base64 in UTF-16, encoded",
    "TextDecode": "base64 in UTF-16, decoded", "HandOff": "a hand-over to a worker", "BlockDelivery": "a block, delivered",
    "BufferPoolCycle": "a pooled buffer", "Utf8ToWide": "UTF-8 to UTF-16", "WideToUtf8": "UTF-16 to UTF-8",
    "TextFormat": "a text with two arguments", "DateTimeParse": "a time, parsed", "DateTimeFormat": "a time, formatted",
    "GuidParse": "a GUID, parsed", "GuidFormat": "a GUID, formatted", "DebugLine": "a debug line",
}


def measure(program, rounds):
    """The median of each value, by benchmark name: real_time and cpu_time in ns, and the counters."""
    values = collections.defaultdict(lambda: collections.defaultdict(list))
    with tempfile.TemporaryDirectory() as folder:
        for number in range(rounds):
            for group in GROUPS:
                out = pathlib.Path(folder) / "out.json"
                subprocess.run([program, f"--benchmark_filter=^{group}", "--benchmark_min_time=0.1",
                                f"--benchmark_out={out}", "--benchmark_out_format=json"],
                               check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                for result in json.loads(out.read_text())["benchmarks"]:
                    name = "/".join(part for part in result["name"].split("/") if not MODIFIERS.match(part))
                    for key in ("real_time", "cpu_time", "peak", "kept", "extra"):
                        if key in result:
                            values[name][key].append(result[key])
            print(f"round {number + 1} of {rounds}")
    return {name: {key: statistics.median(seen) for key, seen in keys.items()} for name, keys in values.items()}


def series(figures, prefix, key):
    """The points (number in the name, value) of one benchmark."""
    points = [(int(name[len(prefix):]), keys[key]) for name, keys in figures.items() if name.startswith(prefix)]
    return sorted(points)


def streams(figures, key):
    return [(1, figures["BlockDelivery/type3"][key])] + series(figures, "BlockDelivery/type3/threads:", key)


def spread(points, smallest):
    """The largest value divided by the least one, of the points from `smallest` on."""
    values = [value for number, value in points if number >= smallest]
    return max(values) / min(values)


# Tables

def table(head, rows):
    lines = [head, ["---"] + ["--:"] * (len(head) - 1)] + rows
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def reply_table(figures):
    times, peaks = series(figures, "ReplyDecode/cameras:", "cpu_time"), series(figures, "ReplyMemory/cameras:", "peak")
    kept = dict(series(figures, "ReplyMemory/cameras:", "kept"))
    rows = [[f"{n:,}", f"{time / n:,.0f} ns", f"{peak:,.0f} bytes", f"{peak - kept[n]:,.1f} bytes"]
            for (n, time), (_, peak) in zip(times, peaks)]
    factor = spread([(n, time / n) for n, time in times], 1)
    return table(["cameras", "time a camera", "memory a camera", "of it beside the records"], rows) + (
        f"\n\nThe slowest size takes {factor:.2f} times as long a camera as the fastest.")


def stream_table(figures):
    elapsed, processor = streams(figures, "real_time"), streams(figures, "cpu_time")
    rows = [[str(n), f"{time / 1000:.2f} µs", f"{work / 1000:.2f} µs", f"{1e6 / time:,.0f}"]
            for (n, time), (_, work) in zip(elapsed, processor)]
    return table(["streams", "time a block", "processor time a block", "blocks a millisecond"], rows)


def block_table(figures):
    copies = dict(series(figures, "MemoryCopy/bytes:", "real_time"))
    rows = [[f"{n:,}", f"{time / 1000:,.2f} µs", f"{copies[n] / 1000:,.3f} µs", f"{n / time:,.2f} GB/s"]
            for n, time in series(figures, "BlockDelivery/picture:", "real_time")]
    return table(["bytes", "delivered", "one copy of the bytes", "throughput"], rows)


def read_others(path):
    """By item and case: our median, the best other program with its median, the least limit."""
    groups = collections.defaultdict(dict)
    lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
    for row in csv.DictReader(itertools.dropwhile(lambda line: not line.startswith("item,"), lines)):
        if row["value"] != "processor":
            case = row["case"] + (f" ({row['value']})" if row["value"] != "ns" else "")
            groups[row["item"], case][row["who"]] = float(row["median"])
    compared = []
    for (item, case), who in sorted(groups.items()):
        ranked = {name: time for name, time in who.items() if not name.startswith(("project", "limit:", "info:"))}
        limits = [time for name, time in who.items() if name.startswith("limit:")]
        if "project" in who and ranked:
            best = min(ranked, key=ranked.get)
            compared.append((item, case, who["project"], best, ranked[best], min(limits, default=None)))
    return compared


def comparison_table(compared):
    rows = []
    for item, case, ours, best, theirs, limit in compared:
        what = WORK.get(item, item) + (f", `{case}`" if case else "")
        number = f"{ours:,.0f}" if ours >= 100 else f"{ours:,.1f}"
        rows.append([what, number, f"{ours / theirs:.2f}", f"{ours / limit:.2f}" if limit else "", best])
    faster = sum(ours <= theirs for _, _, ours, _, theirs, _ in compared)
    return table(["work", "ns, or bytes", "to the best other", "to the limit", "the best other program"], rows) + (
        f"\n\n{faster} of {len(compared)} cases are at least as fast as the best other program.")


# Pictures

def axes(title, x, y, count=1, size=(6.4, 3.6)):
    figure, panels = plot.subplots(1, count, figsize=size, layout="constrained", squeeze=False)
    for panel, heading, label in zip(panels[0], title, y):
        panel.set_title(heading, loc="left", fontsize=10)
        panel.set_xlabel(x)
        panel.set_ylabel(label)
        panel.grid(True, color="#e5e5e5", linewidth=0.8)
        panel.set_axisbelow(True)
        for side in ("top", "right"):
            panel.spines[side].set_visible(False)
    return figure, panels[0]


PLAIN = matplotlib.ticker.FuncFormatter(lambda value, _: f"{value:,g}" if value < 1e6 else f"{value / 1e6:,g} M")


def draw(panel, points, label, color):
    panel.plot(*zip(*points), "o-", label=label, color=color, markersize=4, linewidth=1.6)


def save(figure, name):
    figure.savefig(PICTURES / name, metadata={"Date": None})
    plot.close(figure)


def draw_replies(figures):
    figure, (time, memory) = axes(["Time a camera", "Memory a camera"], "cameras in the reply", ["ns", "bytes"], 2, (9, 3.4))
    draw(time, [(n, t / n) for n, t in series(figures, "ReplyDecode/cameras:", "cpu_time")], "decoded", BLUE)
    draw(memory, series(figures, "ReplyMemory/cameras:", "peak"), "at its peak", ORANGE)
    draw(memory, series(figures, "ReplyMemory/cameras:", "kept"), "the records", BLUE)
    for panel in (time, memory):
        panel.set_xscale("log")
        panel.xaxis.set_major_formatter(PLAIN)
    time.set_ylim(bottom=0)
    memory.set_yscale("log")
    memory.yaxis.set_major_formatter(PLAIN)
    memory.legend(frameon=False)
    save(figure, "replies.svg")


def draw_streams(figures):
    figure, (panel,) = axes(["Streams that deliver camera blocks at once"], "streams", ["µs a block"])
    draw(panel, [(n, t / 1000) for n, t in streams(figures, "real_time")], "elapsed, all streams together", BLUE)
    draw(panel, [(n, t / 1000) for n, t in streams(figures, "cpu_time")], "processor time", ORANGE)
    panel.set_xscale("log", base=2)
    panel.set_xticks([n for n, _ in streams(figures, "real_time")], [str(n) for n, _ in streams(figures, "real_time")])
    panel.set_ylim(bottom=0)
    panel.legend(frameon=False)
    save(figure, "streams.svg")


def draw_blocks(figures):
    figure, (panel,) = axes(["A picture, delivered"], "bytes", ["µs"])
    for prefix, label, color in (("BlockDelivery/picture:", "delivered to the wizard", BLUE),
                                 ("MemoryCopy/bytes:", "one copy of the bytes", GREY)):
        draw(panel, [(n, t / 1000) for n, t in series(figures, prefix, "real_time")], label, color)
    panel.set_xscale("log")
    panel.set_yscale("log")
    panel.xaxis.set_major_formatter(PLAIN)
    panel.yaxis.set_major_formatter(PLAIN)
    panel.legend(frameon=False)
    save(figure, "blocks.svg")


def draw_comparison(compared):
    ratios = collections.defaultdict(list)
    for item, _, ours, _, theirs, _ in compared:
        ratios[item].append(ours / theirs)
    items = sorted(ratios, key=lambda item: -statistics.median(ratios[item]))
    figure, (panel,) = axes(["Our time, as a multiple of the best other program's"], "below 1 we are faster", [""],
                            size=(8, 0.28 * len(items) + 1.2))
    for row, item in enumerate(items):
        for ratio in ratios[item]:
            panel.plot(ratio, row, "o", color=BLUE if ratio <= 1 else ORANGE, alpha=0.75)
    panel.axvline(1, color="black", linewidth=1)
    panel.set_xscale("log", base=2)
    panel.xaxis.set_major_formatter(PLAIN)
    panel.set_yticks(range(len(items)), [WORK.get(item, item).replace("`", "") for item in items])
    save(figure, "comparison.svg")


# The page

def machine():
    model = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                  if line.startswith("model name")), platform.machine())
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]
    commit = subprocess.run(["git", "rev-parse", "--short", "HEAD"], capture_output=True, text=True, check=True,
                            cwd=TOP).stdout.strip()
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        processors = file.read().count("processor\t")
    return f"{datetime.date.today()}, commit {commit}: {processors} processors ({model}), {compiler}, preset `release`"


def replace(page, name, text):
    """Puts the text between the marks of that name."""
    pattern = re.compile(rf"(<!-- {name} -->\n).*?(<!-- end of {name} -->)", re.DOTALL)
    if not pattern.search(page):
        raise SystemExit(f"{PAGE}: no place for {name}")
    return pattern.sub(lambda match: f"{match[1]}{text}\n{match[2]}", page)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--others")
    options = parser.parse_args()

    matplotlib.rcParams.update({"svg.hashsalt": "benchmarks", "svg.fonttype": "none", "font.size": 9, "savefig.facecolor": "white"})
    PICTURES.mkdir(exist_ok=True)
    figures = measure(options.program, options.rounds)
    page = PAGE.read_text(encoding="utf-8")
    page = replace(page, "machine", f"{machine()}; the median of {options.rounds}.")
    page = replace(page, "replies", reply_table(figures))
    page = replace(page, "streams", stream_table(figures))
    page = replace(page, "blocks", block_table(figures))
    draw_replies(figures)
    draw_streams(figures)
    draw_blocks(figures)
    if options.others:
        compared = read_others(options.others)
        page = replace(page, "comparison", f"{machine()}.\n\n{comparison_table(compared)}")
        draw_comparison(compared)
    PAGE.write_text(page, encoding="utf-8")


main()

#!/usr/bin/env python3
"""Draws the figures of scripts/bench: report.py RESULTS_FOLDER PAGE PICTURE.svg

Reads the JSON files of Google Benchmark in the folder, writes the tables between the markers of
the page, and the picture. A figure is the median of its repetitions. A ratio is that of two
medians; the range behind it combines the quartiles of both: the least and the most that the middle
halves of the repetitions give.
"""

import json
import re
import statistics
import sys
from pathlib import Path

BEGIN, END = "<!-- figures: written by scripts/bench -->\n", "<!-- end of figures -->"
WORKS = ["Linear", "Linear + curves", "Linear + gamma + curves", "EXR display + curves"]
SETS = {"Baseline": "baseline x86-64", "Avx2": "AVX2", "Avx512": "AVX-512"}
COPIES = {"copy of the frame": "memcpy", "copy past the caches": "streamed copy"}
DEPTHS = ["float", "half"]
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
QUIET_LOAD = 1.2
# What the names say about the way of measuring.
MODIFIERS = re.compile(r"/(iterations:\d+|repeats:\d+|process_time|real_time|manual_time)")


class Figure:
    """One quantity of one benchmark, over all repetitions."""

    def __init__(self, values):
        self.median = statistics.median(values)
        several = values if len(values) > 1 else values * 2
        self.low, _, self.high = statistics.quantiles(several, n=4, method="inclusive")

    def over(self, other):
        """This one divided by another one, with the range."""
        ratio, low = self.median / other.median, self.low / other.high
        return f"{ratio:.2f} ({low:.2f}–{self.high / other.low:.2f})"


class Results:
    def __init__(self, folder):
        self.runs, self.loads = {}, []
        for file in sorted(Path(folder).glob("*.json")):
            content = json.loads(file.read_text())
            self.context = content["context"]
            self.loads.append(self.context["load_avg"][0])
            for run in content["benchmarks"]:
                if run["run_type"] == "iteration" and not run.get("error_occurred"):
                    self.runs.setdefault(MODIFIERS.sub("", run["name"]), []).append(run)

    def names(self, start):
        """What follows `start` in the names: ours first, then by alphabet."""
        ours = ["plain loop", *SETS]
        rest = [name[len(start):] for name in self.runs if name.startswith(start)]
        return sorted(sorted(rest), key=lambda name: [*ours, name].index(name))

    def figure(self, name, quantity):
        return Figure([quantity(run) for run in self.runs[name]])

    def seconds(self, name, clock):
        return self.figure(name, lambda run: run[clock] * SECONDS[run["time_unit"]])

    def pixel(self, name, clock="cpu_time"):
        """Nanoseconds per pixel."""
        scale = 1e9 / self.runs[name][0]["pixels"]
        return self.figure(name, lambda run: run[clock] * SECONDS[run["time_unit"]] * scale)

    def copies(self):
        return {name: self.pixel(key) for name, key in COPIES.items() if key in self.runs}


def table(heads, rows):
    lines = ["| " + " | ".join(cells) + " |" for cells in [heads, *rows]]
    lines.insert(1, "|" + "---|" * len(heads))
    return "\n".join(lines) + "\n"


def label(name):
    return SETS.get(name, name)


def intro(results):
    processor = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    name = processor.group(1) if processor else "unknown processor"
    load = max(results.loads)
    shared = "; **the machine was shared with other work**" if load > QUIET_LOAD else ""
    yield (f"`scripts/bench`, {results.context['date'][:10]}: {name}, "
           f"{results.context['num_cpus']} cores, load average up to {load:.1f} when a program "
           f"started{shared}.\n")


def kernel_tables(results):
    sets = [name for name in SETS if f"Linear/{name}" in results.runs]
    copies = results.copies()
    copy = copies["copy of the frame"]
    times, ratios, peers = [], [], []
    for work in WORKS:
        plain = results.pixel(f"{work}/plain loop")
        own = [results.pixel(f"{work}/{name}") for name in sets]
        times.append([work, *(f"{figure.median:.2f}" for figure in [plain, *own])])
        ratios.append([work, *(plain.over(figure) for figure in own), own[-1].over(copy)])
        for name in results.names(f"{work}/"):
            if name not in sets and name != "plain loop":
                peer = results.pixel(f"{work}/{name}")
                peers.append([work, name, f"{peer.median:.2f}", peer.over(own[-1])])
    names, fastest = [label(name) for name in sets], label(sets[-1])
    taken = ", ".join(f"a {name} takes {figure.median:.2f}" for name, figure in copies.items())
    yield (f"Nanoseconds per pixel, one thread, processor time; {taken}:\n\n"
           + table(["work", "plain loop", *names], times))
    yield (f"Times faster than the plain loop; and {fastest}'s time in copies of the frame:\n\n"
           + table(["work", *names, "copies"], ratios))
    yield (f"Peers, and how many times as long as {fastest} they take:\n\n"
           + table(["work", "peer", "ns per pixel", "times"], peers))


def strip_table(results):
    rows, columns = [], [f"{depth}, {workers}" for depth in DEPTHS
                         for workers in results.names(f"chain/Linear/{depth}/")]
    for work in WORKS:
        chain = f"chain/{work}"
        pixels = results.runs[f"{chain}/float/1"][0]["strip_pixels"]
        strip = results.pixel(f"{chain}/float/1").median * 1e-9 * pixels
        set_up = results.seconds(f"set-up/{work}", "cpu_time").median
        cells = [work, f"{set_up * 1e6:.1f}", f"{set_up / strip * 100:.1f} %"]
        for column in columns:
            name = f"{chain}/{column.replace(', ', '/')}"
            cells.append(f"{results.pixel(name, 'real_time').median:.2f}")
        rows.append(cells)
    stage = results.seconds("set-up/three curves and tables", "cpu_time").median
    yield ("Strips through the whole chain: set-up of a strip in µs (three curves and tables: "
           f"{stage * 1e6:.1f}), its share of a float strip, then ns per pixel on the clock by "
           "depth and workers:\n\n" + table(["work", "set-up", "share", *columns], rows))


def conversion_table(results):
    names = results.names("conversion/")
    figures = [f"{results.pixel('conversion/' + name).median:.2f}" for name in names]
    yield "Rows of RGBA between depths, ns per pixel:\n\n" + table(names, [figures])


def bundle_table(results):
    rows = []
    for name in sorted({run.split("/")[1] for run in results.runs if run.startswith("bundle/")}):
        kernel, frame = (results.seconds(f"bundle/{name}/{way}", "cpu_time")
                         for way in ["kernel", "frame"])
        rows.append([name, *(f"{figure.median * 1e3:.1f}" for figure in [kernel, frame]),
                     frame.over(kernel)])
    load = results.seconds("bundle load", "real_time").median
    yield ("A float frame through the OpenFX bundle in one render call, ms, one thread, beside the "
           f"row kernel alone; the bundle is loaded and described in {load * 1e3:.1f} ms:\n\n"
           + table(["work", "kernel", "frame", "times"], rows))


def editor_table(results):
    def counter(name, key):
        return f"{results.figure('editor/' + name, lambda run: run[key]).median:.0f}"

    whole = results.seconds("editor/whole frame", "real_time").median * 1e3
    rows = [["key of a curve moved, until the picture follows", counter("follow", "median_ms") + ", "
             + counter("follow", "most_ms")],
            ["hand at rest, until all pixels in view count", counter("rest", "median_ms") + ", "
             + counter("rest", "most_ms")],
            ["the whole frame rendered from memory, not shown", f"{whole:.0f}"],
            ["program started, until there is the window", counter("start", "window_ms")],
            ["the same, until there is the picture", counter("start", "picture_ms")]]
    yield ("The editor offscreen, a 1920 x 1080 view of a 3840 x 2160 half RGBA ZIP picture, EXR "
           "display + curves, two workers: ms at the median, and at 99 of 100 moves or the most of "
           "20 rests:\n\n" + table(["from, to", "ms"], rows))
    yield (f"It has then taken {counter('start', 'memory_mb')} MB at most, and takes "
           f"{counter('start', 'idle_ms')} ms of processor time in two idle seconds.\n")


def file_table(results):
    def cells(run, program):
        time, bare = (results.figure(run + name, lambda run: run["real_time"])
                      for name in [program, "OpenEXR copy"])
        busy, bare_busy = (results.figure(run + name, lambda run: run["cpu_seconds"])
                           for name in [program, "OpenEXR copy"])
        peak = results.figure(run + program, lambda run: run["peak_megabytes"])
        size = results.figure(run + program, lambda run: run["output_megabytes"])
        return [f"{time.median:.2f}", time.over(bare), busy.over(bare_busy), f"{peak.median:.0f}",
                f"{size.median:.0f}"]

    rows = []
    for name in results.names("file/"):
        size, threads, program = name.split("/", 2)
        rows.append([size, threads, program, *cells(f"file/{size}/{threads}/", program)])
    rows.sort(key=lambda row: len(row[0]))
    yield ("Whole files, half RGBA, ZIP: seconds on the clock, the same and the processor time in "
           "bare copies by the OpenEXR library, peak memory and the output's size in MB:\n\n"
           + table(["size", "threads", "program", "s", "copies", "processor", "memory", "output"],
                   rows))


def floor_table(results):
    names = list(dict.fromkeys(name.split("/")[1] for name in results.runs
                               if name.startswith("floor/")))
    rows = []
    for name in names:
        cells = [name]
        for threads in [1, 2]:
            render, library = (results.seconds(f"floor/{name}/{threads}/{program}", "real_time")
                               for program in ["render", "library"])
            cells += [f"{library.median:.3f}", f"{render.median:.3f}", render.over(library)]
        rows.append(cells)
    yield ("Each compression, 3840 x 2160 half RGBA, EXR display + curves, one and two threads: "
           "seconds that the bare OpenEXR library takes to read the picture and to write the "
           "result's pixels, seconds of a render, and their ratio:\n\n"
           + table(["compression", "library, 1", "render, 1", "times", "library, 2", "render, 2",
                    "times"], rows))


def whole_runs(results):
    def median(name):
        return results.seconds(name, "real_time").median

    start = median("start") * 1e3
    lines = [f"- a render of 1 x 1 pixels, which is what a start costs: {start:.1f} ms"]
    kinds = {"png": "PNG", "tif": "TIFF"}
    lines += [f"- 3840 x 2160 from ZIP to 16-bit {kind}: {median(f'other/{name}/1'):.2f} s with "
              f"one thread, {median(f'other/{name}/2'):.2f} s with two"
              for name, kind in kinds.items()]
    if "sequence/render" in results.runs:
        render, library = (results.seconds(f"sequence/{program}", "real_time")
                           for program in ["render", "library"])
        lines.append(f"- 48 frames of ZIP on two threads: {render.median:.1f} s, "
                     f"{render.over(library)} of what the library takes for them in processes of "
                     f"one thread, two at a time ({library.median:.1f} s)")
    yield "Whole runs:\n\n" + "\n".join(lines) + "\n"


def draw(results):
    """A panel for each work: a bar for each contender, as long as its time."""
    colours = {"plain loop": "#9aa0a6", "Baseline": "#8ab4f8", "Avx2": "#4285f4",
               "Avx512": "#174ea6"}
    title = "Nanoseconds per pixel, one thread, 3840 x 2160 (times faster than the plain loop)"
    parts, y = [f'<text x="20" y="18">{title}</text>'], 48
    for work in WORKS:
        times = {name: results.pixel(f"{work}/{name}").median for name in results.names(f"{work}/")}
        times |= {name: copy.median for name, copy in results.copies().items()}
        parts.append(f'<text x="20" y="{y}" font-weight="bold">{work}</text>')
        for name, time in times.items():
            y += 21
            width = 420 * time / max(times.values())
            parts.append(
                f'<text x="265" y="{y}" text-anchor="end">{label(name)}</text>'
                f'<rect x="275" y="{y - 12}" width="{width:.1f}" height="15" '
                f'fill="{colours.get(name, "#e8a33d")}"/><text x="{281 + width:.1f}" y="{y}">'
                f'{time:.2f} ({times["plain loop"] / time:.1f})</text>')
        y += 42
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="800" height="{y - 20}" '
            'font-family="sans-serif" font-size="13"><rect width="100%" height="100%" '
            f'fill="white"/>{"".join(parts)}</svg>\n')


def main():
    folder, page, picture = map(Path, sys.argv[1:])
    results = Results(folder)
    sections = [intro, kernel_tables, strip_table, conversion_table, bundle_table,
                editor_table, file_table, floor_table, whole_runs]
    figures = "\n".join(text for section in sections for text in section(results))
    before, rest = page.read_text().split(BEGIN)
    page.write_text(before + BEGIN + "\n" + figures + "\n" + END + rest.split(END)[1])
    picture.write_text(draw(results))


if __name__ == "__main__":
    main()

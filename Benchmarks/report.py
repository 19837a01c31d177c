#!/usr/bin/env python3
"""Writes the page of measured results, with its plots and goals: Benchmarks/report.py RESULTS.json PAGE.md

Benchmarks/compare measures and then calls this; on its own, it writes the page of stored results again.
"""
import json
import pathlib
import statistics
import sys

sys.dont_write_bytecode = True
import charts

# Names in the results.
OURS = "lenscorrect, distortion"
WITH_START = ", with its start"
CODEC = "stock codec: processor time ÷ cores"
FLOOR = "floor: processor time ÷ cores"
FFMPEG = "ffmpeg lenscorrection (16-bit integers)"
ST_WARP = "oiiotool --st_warp"

LAUNCH_SIZES = [(2048, 1152), (4096, 2160)] # of the goals for the launch of a kernel
CODEC_LIMITS = {"zip": 0.32, "piz": 1.14, "dwaa": 1.01} # of a job against the stock codec


def medians(series):
    return {name: statistics.median(values) for name, values in series.items()}


def spread(values, digits=3):
    return f"{statistics.median(values):.{digits}g} [{min(values):.{digits}g}–{max(values):.{digits}g}]"


def table(head, rows):
    return ["| " + " | ".join(head) + " |", "|" + "---|" * len(head),
            *("| " + " | ".join(row) + " |" for row in rows), ""]


def bar(name, values, is_ours):
    return name, statistics.median(values), min(values), max(values), is_ours


def count(number, noun):
    return f"{number} {noun}{'s' if number > 1 else ''}"


def size_of(run):
    return f"{run['width']} × {run['height']}"


def of_machine(part):
    m = part["machine"]
    return (f"{m['date']}, {m['cores']} cores of {m['processor']}, Linux {m['kernel']}; "
            f"load at the end {m['load']}.")


class Report:
    def __init__(self, results, page):
        self.results, self.page = results, page
        self.goals, self.lines, self.plots = [], [], {}

    def paragraph(self, text):
        self.lines += [text, ""]

    def goal(self, what, value, limit):
        self.goals.append((what, f"{value:.2f}", f"{limit:g}", "yes" if value <= limit else "**no**"))

    def plot(self, name, picture):
        self.plots[name] = picture
        self.paragraph(f"![{name.replace('-', ' ')}](Performance/{name}.svg)")

    def frames(self, part):
        runs = part["runs"]
        prepared = [run for run in runs if run["prepared"]]
        most = max(run["threads"] for run in prepared)
        main = [run for run in prepared if run["threads"] == most]
        names = list(main[0]["milliseconds"])
        shading = [name for name in names if "shading" in name or "vignetting" in name]
        names_of = {"distortion": [name for name in names if name not in shading], "shading": shading}
        self.paragraph("## One frame")
        self.paragraph(
            f"RGBA float frames in memory, milliseconds. {of_machine(part)} OpenCL device: {main[0]['device']}. "
            "The native loops do the same arithmetic in plain vectorised C++. “Through the core” means write, launch "
            "and read in a process with the allocator of `lenscorrect`.")
        for run in prepared:
            self.paragraph(f"### {size_of(run)}, {count(run['threads'], 'thread')}")
            m = medians(run["milliseconds"])
            self.lines += table(["what", "ms", "× memcpy", "× native loop"], [
                (name, spread(run["milliseconds"][name]), f"{m[name] / m['memcpy']:.2f}",
                 f"{m[name] / m['native ' + kind]:.2f}") for kind in names_of for name in names_of[kind]])
        for run in runs:
            if not run["prepared"]:
                m = medians(run["milliseconds"])
                distortion, shading = m["distortion through the core"], m["shading through the core"]
                self.paragraph(
                    f"With the C library's allocator, as in a host, {size_of(run)}: distortion through the core "
                    f"{distortion:.0f} ms ({distortion / m['memcpy']:.1f} × memcpy), shading {shading:.0f} ms "
                    f"({shading / m['memcpy']:.1f} ×).")
        worst = {kind: max(run["differences"][kind] for run in prepared) for kind in names_of}
        self.paragraph(f"Largest difference from the native loop: distortion {worst['distortion']:.2g} "
                       f"(values 0 to 1), shading {worst['shading']:.2g} relative.")
        self.lines += table(
            ["size", "distortion kernel, GB/s", "shading kernel, GB/s", "write, GB/s", "read, GB/s"],
            [self.throughput(run) for run in main])
        self.plot("one-frame", charts.bars(f"One frame, {most} threads (median, and range of the rounds)", "ms", [
            (size_of(run), [bar(name, run["milliseconds"][name], "kernel" in name or "core" in name)
                            for kind in names_of for name in names_of[kind] if "item per pixel" not in name])
            for run in main if run["width"] != 3840]))
        for run in main:
            self.frame_goals(run)

    @staticmethod
    def throughput(run):
        megabytes = run["width"] * run["height"] * 16 / 1e6
        m = medians(run["milliseconds"])
        # A kernel reads and writes each byte.
        return size_of(run), *(f"{passes * megabytes / m[name]:.1f}" for name, passes in (
            ("distortion kernel", 2), ("shading kernel", 2), ("write to the device", 1), ("read from the device", 1)))

    def frame_goals(self, run):
        m = medians(run["milliseconds"])
        if (run["width"], run["height"]) in LAUNCH_SIZES:
            for kind in ("distortion", "shading"):
                self.goal(f"{kind} kernel against a launch of one item per pixel, {size_of(run)}",
                          m[f"{kind} kernel"] / m[f"{kind} kernel, an item per pixel"], 1.05)
        if run["width"] == 4096:
            self.goal(f"distortion kernel against the native loop, {size_of(run)}",
                      m["distortion kernel"] / m["native distortion"], 1.3)
            remap = "OpenCV remap, maps built by the native loop"
            if remap in m:
                self.goal("distortion kernel against OpenCV `remap` with its maps built",
                          m["distortion kernel"] / m[remap], 1.0)
            self.goal("shading kernel against the native loop", m["shading kernel"] / m["native shading"], 2.2)
            self.goal("distortion through the core against memcpy",
                      m["distortion through the core"] / m["memcpy"], 4.8)
            self.goal("shading through the core against memcpy", m["shading through the core"] / m["memcpy"], 3.6)

    def jobs(self, part):
        runs = part["runs"]
        first = runs[0]
        most = max(run["cores"] for run in runs)
        self.paragraph("## The whole job")
        self.paragraph(
            f"Half-float RGBA frames of {size_of(first)}, EXR in and EXR out in memory files, seconds per frame. "
            f"`lenscorrect`: {first['frames']} frames after {first['warmUp']} that do not count (a job of all of them "
            "less a job of the first), and a whole job “with its start”; the other programs: whole jobs of fewer "
            "frames. “Stock codec” is the processor time in which a program decodes the same frames into floats and "
            "encodes them again as half floats, each into a file of its own, with OpenEXR as it comes, divided by the "
            "cores: what no job on that codec can beat. “Floor” is the processor time of inflating and deflating a "
            "frame's blocks with the libraries of `lenscorrect`, and of reading and writing the pixels once in every "
            "stage: out of the file, as half floats, as floats for the node, to the device, through the kernel and "
            "back, as half floats, split for the encoder, into the file.")
        on_one_core = {}
        for run in runs:
            compression, cores, sizes = run["compression"], run["cores"], run["sizes"]
            m, processor = medians(run["seconds"]), medians(run["processor"])
            ours, whole, codec = m[OURS], m[OURS + WITH_START], m[CODEC]
            if cores == 1:
                on_one_core[compression] = ours
            self.paragraph(f"### {compression}, {count(cores, 'core')}")
            self.lines += table(
                ["what", "s per frame", "processor s", "× stock codec", "lenscorrect, with its start, takes"],
                [(name, spread(values), f"{processor[name]:.3g}", f"{m[name] / codec:.2f}", f"{whole / m[name]:.2f} ×")
                 for name, values in run["seconds"].items()])
            peaks = ", ".join(f"{spread(values, 4)} MB ({name})" for name, values in run["peaks"].items())
            self.paragraph(f"{of_machine(run)} Peak memory: {peaks}. A frame: {sizes['input'] / 1e6:.1f} MB in, "
                           f"{sizes['output'] / 1e6:.1f} MB out.")
            if cores < most:
                continue
            if compression in CODEC_LIMITS:
                self.goal(f"`lenscorrect render`, {compression}, against the stock codec's processor time ÷ cores",
                          ours / codec, CODEC_LIMITS[compression])
            if compression == "zip":
                self.goal("peak memory of that job, GB", statistics.median(run["peaks"][OURS]) / 1e3, 1.0)
                for name, limit in ((FFMPEG, 0.14), (ST_WARP, 0.04)):
                    if name in m:
                        self.goal(f"the same with its start, zip, against {name}", whole / m[name], limit)
            if most > 1 and compression in on_one_core:
                self.goal(f"{most} cores against 1, {compression}", ours / on_one_core[compression], 1 / 1.7)
        self.plot("whole-job", charts.bars(
            f"Whole job, {most} cores, per frame (median, and range of the rounds)", "s", [
                (run["compression"], [bar(name, values, name.startswith("lenscorrect"))
                                      for name, values in run["seconds"].items()])
                for run in runs if run["cores"] == most]))

    def sizes(self, part):
        self.paragraph("## ZIP's files")
        self.paragraph(
            f"Pictures of {size_of(part)}, each written on one thread. {of_machine(part)} “Stock” is OpenEXR as it "
            "comes, zlib at level 4; “fast” is what `render` does, “small” is `--zip small`.")
        self.lines += table(["picture", "stock, MB", "fast, × its size", "small, × its size", "stock, ms",
                             "fast, × its time", "small, × its time"],
                            [self.sizes_of(kind) for kind in part["kinds"]])
        self.goal("size of ZIP files, the largest of all kinds of pictures, against the stock codec's",
                  max(kind["fast"]["bytes"] / kind["stock"]["bytes"] for kind in part["kinds"]), 1.03)

    @staticmethod
    def sizes_of(kind):
        stock = kind["stock"]
        time = {name: statistics.median(kind[name]["milliseconds"]) for name in ("stock", "fast", "small")}
        return (kind["kind"], f"{stock['bytes'] / 1e6:.2f}",
                *(f"{kind[name]['bytes'] / stock['bytes']:.3f}" for name in ("fast", "small")),
                spread(stock["milliseconds"], 4), *(f"{time[name] / time['stock']:.2f}" for name in ("fast", "small")))

    def growth(self, part):
        records = part["records"]
        self.paragraph("## Cost as the work grows")
        self.paragraph(
            f"{of_machine(part)} “Growth” is the cost per unit at the end of the row over that at its second step, "
            "where fixed costs weigh less: 1 is proportional, more is worse than linear. By pixels and by frames: "
            "whole jobs including start-up; by layers: one frame of a job with the same number of pixels, after 6 "
            "that are not counted.")
        rows = []

        def row(what, points, amount, digits, growth_digits=2):
            (x0, y0), (x1, y1) = points[min(1, len(points) - 2)], points[-1]
            rows.append((what, ", ".join(f"{x:{amount}}: {y:{digits}}" for x, y in points),
                         f"{(y1 / x1) / (y0 / x0):.{growth_digits}f}"))

        for group, unit in (("pixels", "million pixels"), ("frames", "frames"), ("layers", "layers")):
            for key, what in (("wall", "time (s)"), ("peak", "memory (MB)")):
                row(f"{what} by {unit}", [(step["amount"], step[key]) for step in part[group]], ".3g", ".3g")
        by_frames = lambda key, scale=1: [(step["frames"], step[key] / scale) for step in records]
        for key, what, scale in (("milliseconds", "ms to read and parse", 1), ("peakBytes", "MB of peak memory", 1e6)):
            row(f"{what} by frames in the correction file", by_frames(key, scale), "g", ".3g")
        for key, what in (("lookUpByNumberMicroseconds", "number"), ("lookUpByTimecodeMicroseconds", "timecode")):
            row(f"µs of a look-up by {what}, by frames in the correction file", by_frames(key), "g", ".2g", 3)
        self.lines += table(["what", "values", "growth"], rows)
        longest = records[-1]
        self.paragraph(f"Peak memory of reading {longest['frames']:g} frames: "
                       f"{longest['peakBytes'] / longest['bytes']:.2f} × the file's {longest['bytes'] / 1e6:.0f} MB.")
        for group, job, unit in (("pixels", "whole", "million pixels a frame"),
                                 ("frames", "whole", "frames of 2048 × 1152"),
                                 ("layers", "frame of a", "RGBA layers of 4096 × 2160")):
            steps = part[group]
            self.plot(f"growth-by-{group}", charts.lines(f"A {job} ZIP job by {unit}", unit, "s, and GB", [
                ("seconds", [(step["amount"], step["wall"]) for step in steps]),
                ("processor seconds", [(step["amount"], step["cpu"]) for step in steps]),
                ("peak memory, GB", [(step["amount"], step["peak"] / 1e3) for step in steps])]))
        self.plot("growth-by-records", charts.lines(
            "A correction file by its frames", "frames in the file", "ms, MB, µs", [
                ("ms to read and parse", by_frames("milliseconds")),
                ("peak memory, MB", by_frames("peakBytes", 1e6)),
                ("µs, look-up by number", by_frames("lookUpByNumberMicroseconds")),
                ("µs, by timecode", by_frames("lookUpByTimecodeMicroseconds"))]))
        start, first = part["startUp"], part["firstFrame"]
        self.paragraph("## Start-up")
        self.paragraph(f"Recording formats {start['recordingFormats']:.1f} ms, metadata keys "
                       f"{start['metadataKeys']:.2f} ms, a correction file of 1000 frames "
                       f"{start['correctionFile']:.1f} ms; each once per process.")
        keys = ("firstDistortion", "firstShading", "nextDistortion", "nextShading")
        self.lines += table(
            ["ms", "first distortion", "first shading", "next distortion", "next shading"],
            [(f"{name} kernel cache", *(f"{first[name][key]:.0f}" for key in keys)) for name in ("cold", "warm")])
        self.goal("databases and the parser of a usual file, of 10 ms", sum(start.values()) / 10, 1)
        self.goal("first frame of a warm start, of 0.4 s", first["warm"]["firstDistortion"] / 400, 1)
        self.goal("first frame of a cold start, of 2 s", first["cold"]["firstDistortion"] / 2000, 1)
        wall = {step["amount"]: step["wall"] for step in part["layers"]}
        if 8 in wall:
            self.goal("8 layers against 1", wall[8] / wall[1], 7.9)
        for step in records:
            if step["frames"] == 10000:
                self.goal("a correction file of 10,000 frames, of 60 ms", step["milliseconds"] / 60, 1)
            if step["frames"] == 1000000:
                self.goal("peak memory of reading 1,000,000 frames, × the file's size",
                          step["peakBytes"] / step["bytes"], 3)

    def measured_by_hand(self):
        """The section of the page that is not measured here."""
        text = self.page.read_text() if self.page.exists() else ""
        start = text.find("## Decoding in a process of its own")
        return [text[start:].rstrip("\n")] if start >= 0 else []

    def write(self):
        for name in ("frames", "jobs", "sizes", "growth"):
            if name in self.results:
                getattr(self, name)(self.results[name])
        page = "\n".join([
            "# Performance", "",
            "Measured by `Benchmarks/compare`, which also wrote this page (`--help` explains how to repeat it; "
            "`scripts/setup-benchmarks` installs the other programs).",
            "Figures are medians with [minimum–maximum] of interleaved rounds. Shared machines are noisy: single "
            "values vary by a factor of two, so only ratios within one run are meaningful, and a wide range means "
            "that the ratio next to it is unreliable.", "",
            "## Against the goals", "", *table(["what", "value", "at most", "met"], self.goals), *self.lines])
        self.page.parent.mkdir(parents=True, exist_ok=True)
        self.page.write_text("\n\n".join([page.rstrip(), *self.measured_by_hand()]) + "\n")
        folder = self.page.parent / "Performance"
        folder.mkdir(exist_ok=True)
        for name, picture in self.plots.items():
            (folder / f"{name}.svg").write_text(picture)
        print(page)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    Report(json.loads(pathlib.Path(sys.argv[1]).read_text()), pathlib.Path(sys.argv[2])).write()

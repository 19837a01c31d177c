"""lenscorrect render over many frames: the process takes no more memory and no more open files than at first, and maps no
fresh memory for later frames."""
import json
import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test

WARM_UP, COUNT = 400, 2000
# KiB. One leaked picture a frame would be 14,000 at least; the threads' order of work and fragments make the rest.
ALLOWED_GROWTH = 2048
# Of large pages a single one would be that growth, or hide five hundred small ones from a count.
SMALL_PAGES = {"MALLOC_CONF": "thp:never"}


class Long(render_test.RenderTest):
    def use(self, job):
        """Resident memory in KiB, and the number of open files."""
        with open(f"/proc/{job.pid}/status", encoding="utf-8") as file:
            memory = next(int(line.split()[1]) for line in file if line.startswith("VmRSS:"))
        return memory, len(os.listdir(f"/proc/{job.pid}/fd"))

    def test_takes_no_more_memory_and_open_files_than_its_first_frames(self):
        self.write_lens()
        self.write_plate(self.part("RGB", exr.HALF))
        for frame in range(1002, 1001 + COUNT):
            os.link(self.path("plate.1001.exr"), self.path(f"plate.{frame}.exr"))
        # A file that cannot be read every now and then: its failure must leave nothing behind either.
        broken = [frame for frame in range(1001, 1001 + COUNT) if frame % 10 == 9]
        with open(self.path("plate.1001.exr"), "rb") as file:
            content = file.read()
        for frame in broken:
            os.remove(self.path(f"plate.{frame}.exr"))
            with open(self.path(f"plate.{frame}.exr"), "wb") as file:
                file.write(content[:len(content) // 2])

        job = subprocess.Popen(
            [program.PROGRAM, "render", "plate.%04d.exr", "--distortion", "undistort", "--shading", "remove", "--progress",
             "json", "-o", "out/f.%04d.exr"], cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            encoding="utf-8", env={**os.environ, **SMALL_PAGES})
        frames, uses = 0, {}
        for line in job.stdout:
            frames += json.loads(line)["event"] == "frame"
            if frames in (WARM_UP, COUNT - 20) and frames not in uses:
                uses[frames] = self.use(job)
        job.stdout.close()
        self.assertEqual(job.wait(timeout=300), 1)
        self.assertEqual((frames, len(self.names())), (COUNT, COUNT - len(broken)))
        (memory, files), (last_memory, last_files) = uses[WARM_UP], uses[COUNT - 20]
        print(f"{COUNT} frames: {last_memory - memory} KiB more resident after the first {WARM_UP} (of {memory} KiB), "
              f"{last_files - files} more open files")
        if "ORVEX_SANITIZED" not in os.environ: # a sanitizer keeps what is freed
            self.assertLessEqual(last_memory - memory, ALLOWED_GROWTH)
        # What the threads have open at a moment differs; a leak would be hundreds.
        self.assertLessEqual(abs(last_files - files), 10)

    def pages_mapped(self, frames, clip="plate", options=()):
        """How many fresh pages a job of so many frames touches, once the kernels are compiled."""
        command = [program.PROGRAM, "render", f"{clip}.%04d.exr", "--distortion", "undistort", "--progress", "none", *options]
        subprocess.run([*command, "--frames", "1001", "-o", f"{clip}-first/f.%04d.exr", "--overwrite"], cwd=self.folder,
                       check=True)
        job = subprocess.Popen(
            [*command, "--frames", f"1001-{1000 + frames}", "-o", f"{clip}-{frames}/f.%04d.exr"], cwd=self.folder,
            env={**os.environ, **SMALL_PAGES})
        _, status, usage = os.wait4(job.pid, 0)
        job.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(job.returncode, 0)
        return usage.ru_minflt

    @unittest.skipIf("ORVEX_SANITIZED" in os.environ, "a sanitizer does not hand freed memory out again")
    def test_renders_later_frames_in_the_memory_of_earlier_ones(self):
        width, height, few, many = 1024, 576, 12, 36
        self.write_lens(width=width, height=height)
        display = (0, 0, width - 1, height - 1)
        self.write_plate(self.part("RGBA", exr.HALF, display=display, function=lambda x, y: 0.5))
        for frame in range(1002, 1001 + many):
            os.link(self.path("plate.1001.exr"), self.path(f"plate.{frame}.exr"))
        more = self.pages_mapped(many) - self.pages_mapped(few)
        buffer = width * height * 4 * 4 // os.sysconf("SC_PAGE_SIZE")
        print(f"{more} fresh pages in {many - few} frames; one buffer of a frame has {buffer}")
        # Each frame takes at least four of them: the plane, what the node renders it into, and the two of the driver.
        self.assertLess(more, buffer)

    @unittest.skipIf("ORVEX_SANITIZED" in os.environ, "a sanitizer does not hand freed memory out again")
    def test_holds_the_layers_of_a_frame_in_memory_once(self):
        width, height, layers = 512, 288, 4
        display = (0, 0, width - 1, height - 1)
        one_at_a_time = ["--memory", "1M", "--threads", "1"]
        pages = {}
        for count in (1, layers):
            clip = f"plate{count}"
            self.write_lens(width=width, height=height, name=clip)
            channels = [layer + channel for layer in ["", *(f"layer{i}." for i in range(1, count))] for channel in "RGBA"]
            self.write_plate(self.part(channels, exr.HALF, display=display, function=lambda x, y: 0.5), name=clip)
            pages[count] = self.pages_mapped(1, clip, one_at_a_time)
        layer = width * height * 4 * 2 // os.sysconf("SC_PAGE_SIZE")
        more = (pages[layers] - pages[1]) / (layers - 1) / layer
        print(f"a further layer takes {more:.2f} times the memory of its pixels")
        # The picture before the correction, then larger after it, and some lines on their way to the file. All layers of
        # both at once would be 3.8.
        self.assertLess(more, 2.5)


program.main()

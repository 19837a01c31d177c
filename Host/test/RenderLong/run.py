"""lenscorrect render over 2,000 frames: the process takes no more memory and no more open files than at first."""
import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test

WARM_UP, COUNT = 400, 2000
# KiB. One leaked picture a frame would be 14,000 at least; the threads' order of work and fragments make the rest.
ALLOWED_GROWTH = 2048


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
            encoding="utf-8")
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


program.main()

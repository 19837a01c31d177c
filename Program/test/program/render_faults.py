"""lenscorrect render when its output cannot be written: each file call fails once, the disk is full, a name is taken.

Whatever fails: no partial file stands under a final name, no temporary file is left, the exit status is 4, and the other
frames are written where that makes sense.
"""
import errno
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test
import unittest

FAULTS = os.environ.get("ORVEX_FAULTS")
UNDISTORT = ("--distortion", "undistort")
FRAMES = (1001, 1002)


class Faults(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens(count=2)
        self.write_plate(self.part("RGB", exr.HALF), frames=FRAMES)

    def reference(self, ending="exr"):
        """The bytes of the frames when nothing fails."""
        # One thread, since ThreadSanitizer does not see the locks inside the library that writes other stills.
        self.expect(self.render(*UNDISTORT, "--threads", "1", out="good/f.%04d." + ending), 0, "", "")
        return {name: self.content("good", name) for name in self.names("good")}

    def content(self, *names):
        with open(self.path(*names), "rb") as file:
            return file.read()

    def expect_only_whole_frames(self, reference, folder="out"):
        self.assertEqual(self.temporaries(folder), [])
        for name in self.names(folder) if os.path.isdir(self.path(folder)) else []:
            self.assertTrue(self.content(folder, name) == reference[name], name + " is not whole")


@unittest.skipUnless(FAULTS, "needs the library that lets calls fail")
class EveryCallFailsOnce(Faults):
    def fail_each(self, function, error, ending="exr", can_be_ignored=False):
        """Renders with call N failing for N = 1, 2, … until a run makes fewer calls."""
        reference = self.reference(ending)
        number, failures = 0, 0
        while True:
            number += 1
            shutil.rmtree(self.path("out"), ignore_errors=True)
            result = self.render(*UNDISTORT, "--threads", "1", out="out/f.%04d." + ending, environment={
                "LD_PRELOAD": FAULTS, "OUTPUT_FAULT": f"{function}:{number}:{error}",
                "OUTPUT_FAULT_FOLDER": os.path.realpath(self.path("out")), "OUTPUT_FAULT_COUNT": self.path("count")})
            with open(self.path("count"), encoding="utf-8") as file:
                calls = int(file.read())
            self.expect_only_whole_frames(reference)
            if calls < number:
                self.expect(result, 0, "", "")
                self.assertEqual(self.names(), sorted(reference))
                self.assertGreater(number, 1, "the job makes no such call")
                return failures
            if can_be_ignored and result.returncode == 0:
                self.assertEqual(self.names(), sorted(reference))
                continue
            failures += 1
            with self.subTest(function=function, number=number):
                self.expect(result, 4, "")
                self.assertIn(os.strerror(error), result.stderr)
                self.assertNotIn(".tmp", result.stderr)
                # One frame failed; the others went on.
                self.assertRegex(result.stderr, r"lenscorrect: 1 of 2 frames failed: 100[12]\n")
                self.assertGreaterEqual(len(self.names()), 1)

    def test_open(self):
        self.assertGreaterEqual(self.fail_each("open", errno.EIO), 2)

    def test_write(self):
        self.assertGreaterEqual(self.fail_each("write", errno.ENOSPC), 2)

    def test_close(self):
        # A file that was flushed before is whole whatever close says.
        self.assertGreaterEqual(self.fail_each("close", errno.EIO, can_be_ignored=True), 2)

    def test_flush(self):
        self.assertGreaterEqual(self.fail_each("fsync", errno.EIO), 2)

    def test_rename(self):
        self.assertEqual(self.fail_each("rename", errno.EIO), 2)

    def test_a_frame_reaches_the_disk_then_its_name_then_the_list_of_finished_frames(self):
        folder = os.path.realpath(self.path("out"))
        self.expect(self.render(*UNDISTORT, "--frames", "1001", environment={
            "LD_PRELOAD": FAULTS, "OUTPUT_FAULT_FOLDER": folder, "OUTPUT_FAULT_LOG": self.path("log")}), 0, "", "")
        with open(self.path("log"), encoding="utf-8") as file:
            calls = file.read().replace(folder, "out").replace(os.uname().nodename, "HOST")
        calls = re.sub(r"\.\d+\.tmp\.", ".PID.tmp.", calls)
        self.assertEqual(re.sub(r"(?m)(^.*\n)\1+", r"\1", calls), """\
mkdir out
open out/.f.1001.HOST.PID.tmp.exr
close out/.f.1001.HOST.PID.tmp.exr
open out/.f.1001.HOST.PID.tmp.exr
write out/.f.1001.HOST.PID.tmp.exr
close out/.f.1001.HOST.PID.tmp.exr
fsync out/.f.1001.HOST.PID.tmp.exr
rename out/f.1001.exr
fsync out
open out/.f.%04d.exr.HOST.frames
write out/.f.%04d.exr.HOST.frames
close out/.f.%04d.exr.HOST.frames
""")

    def test_making_the_folder(self):
        # It is made once, before the first frame.
        result = self.render(*UNDISTORT, environment={
            "LD_PRELOAD": FAULTS, "OUTPUT_FAULT": f"mkdir:1:{errno.ENOSPC}",
            "OUTPUT_FAULT_FOLDER": os.path.realpath(self.path("out")), "OUTPUT_FAULT_COUNT": self.path("count")})
        self.expect(result, 4, "", 'lenscorrect: Folder "out" could not be created: No space left on device.\n')
        self.assertFalse(os.path.exists(self.path("out")))

    def test_close_of_a_dpx_file(self):
        self.assertGreaterEqual(self.fail_each("close", errno.ENOSPC, "dpx", can_be_ignored=True), 1)

    def test_write_of_a_dpx_file(self):
        self.assertGreaterEqual(self.fail_each("write", errno.ENOSPC, "dpx"), 2)

    def test_write_of_a_tiff_file(self):
        self.assertGreaterEqual(self.fail_each("write", errno.ENOSPC, "tif"), 2)


class RealFaults(Faults):
    def fill_disk(self, ending):
        reference = self.reference(ending)
        size = max(len(content) for content in reference.values())
        # Room for one frame and a half.
        self.small_disk("disk", max(8, (size * 3 // 2 + 1023) // 1024))
        result = self.render(*UNDISTORT, "--threads", "1", out="disk/f.%04d." + ending)
        self.expect(result, 4, "")
        self.assertIn("No space left on device", result.stderr)
        self.assertNotIn(".tmp", result.stderr)
        self.expect_only_whole_frames(reference, "disk")
        self.assertLess(len(self.names("disk")), len(FRAMES))

    def test_a_full_disk_with_exr_files(self):
        self.fill_disk("exr")

    def test_a_full_disk_with_dpx_files(self):
        self.fill_disk("dpx")

    def test_a_full_disk_with_tiff_files(self):
        self.fill_disk("tif")

    def test_a_limit_of_the_file_size(self):
        # Larger than what the driver's kernel cache holds.
        large = self.part("RGB", display=(0, 0, 639, 359), function=lambda x, y: x / 640)
        self.write_plate(large, frames=FRAMES)
        reference = self.reference()
        result = subprocess.run(
            ["bash", "-c", 'ulimit -f 2400; exec "$0" "$@"', program.PROGRAM, "render", "plate.%04d.exr", "--progress",
             "none", "--compression", "none", *UNDISTORT, "-o", "out/f.%04d.exr"], cwd=self.folder, capture_output=True, encoding="utf-8",
            timeout=300)
        self.expect(result, 4, "")
        self.assertIn("File too large", result.stderr)
        self.expect_only_whole_frames(reference)
        self.assertEqual(self.names(), [])

    def test_a_device_that_cannot_write_its_kernels_is_the_environments_fault(self):
        result = subprocess.run(
            ["bash", "-c", 'ulimit -f 4; exec "$0" "$@"', program.PROGRAM, "render", "plate.%04d.exr", "--progress",
             "none", *UNDISTORT, "-o", "out/f.%04d.exr"], cwd=self.folder, capture_output=True, encoding="utf-8",
            timeout=300, env={**os.environ, "POCL_CACHE_DIR": self.path("cache")})
        self.expect(result, 3, "")
        self.assertIn("lenscorrect: The OpenCL device does not render: ", result.stderr)

    def test_a_folder_has_the_name_of_a_frame(self):
        reference = self.reference()
        os.makedirs(self.path("out", "f.1002.exr", "inside"))
        result = self.render(*UNDISTORT, "--overwrite")
        self.expect(result, 4, "", """\
Frame 1002: "out/f.1002.exr" is a folder; name a file to write.
lenscorrect: 1 of 2 frames failed: 1002
""")
        os.rmdir(self.path("out", "f.1002.exr", "inside"))
        os.rmdir(self.path("out", "f.1002.exr"))
        self.assertEqual(self.names(), ["f.1001.exr"])
        self.expect_only_whole_frames(reference)

    def test_a_file_has_the_name_of_the_output_folder(self):
        with open(self.path("out"), "w", encoding="utf-8"):
            pass
        result = self.render(*UNDISTORT)
        self.expect(result, 4, "", 'lenscorrect: Folder "out" could not be created: Not a directory.\n')

    def test_a_disk_without_room_for_a_frame_is_told_before_the_first_one(self):
        self.small_disk("disk", 4)
        result = self.render(*UNDISTORT, out="disk/f.%04d.exr")
        self.expect(result, 4, "")
        self.assertRegex(result.stderr, r'^lenscorrect: The disk of folder "disk" has \d kB left, too little for a frame\. '
                                        r"Free space, or choose another folder\.\n$")

    @unittest.skipIf(os.geteuid() == 0 and not shutil.which("setpriv"), "needs an ordinary user")
    def test_a_folder_that_may_not_be_written(self):
        outside = tempfile.mkdtemp(prefix="orvex-readonly-")
        self.addCleanup(shutil.rmtree, outside, ignore_errors=True)
        os.chmod(outside, 0o555)
        command = [program.PROGRAM, "render", self.path("plate.%04d.exr"), "--progress", "none", *UNDISTORT, "-o",
                   outside + "/f.%04d.exr"]
        if os.geteuid() == 0:
            # Root may write everywhere unless it gives that right away.
            command = ["setpriv", "--bounding-set=-dac_override,-dac_read_search", "--inh-caps=-dac_override",
                       *command]
        result = subprocess.run(command, capture_output=True, encoding="utf-8", timeout=300)
        self.expect(result, 4, "", f'lenscorrect: Folder "{outside}" cannot be written: Permission denied.\n')
        self.assertEqual(os.listdir(outside), [])

    def test_the_folder_vanishes_during_the_job(self):
        self.write_lens(count=40)
        self.write_plate(self.part("RGB", exr.HALF), frames=range(1001, 1041))
        job = subprocess.Popen(
            [program.PROGRAM, "render", "plate.%04d.exr", "--progress", "json", *UNDISTORT, "-o", "out/f.%04d.exr"],
            cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
        while '"done"' not in job.stdout.readline():
            pass
        os.rename(self.path("out"), self.path("gone"))
        job.communicate(timeout=300)
        # Frames on their way fail or, where the folder was made again, go on; nothing is cut.
        self.assertIn(job.returncode, (0, 4))
        for folder in ("out", "gone"):
            if not os.path.isdir(self.path(folder)):
                continue
            for name in self.names(folder):
                exr.read(self.path(folder, name))
        self.assertEqual(self.temporaries("out"), [])


program.main()

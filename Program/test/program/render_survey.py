"""lenscorrect render: what it says about the clip before the first frame."""
import os
import struct
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test

UNDISTORT = ("--distortion", "undistort")
FAULTS = os.environ.get("ORVEX_FAULTS")
REPAIR = "Repair the clip, name the frames with --frames, or omit --strict.\n"


class Sequence(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens(count=10)

    def expect_told(self, text, *arguments, clip="plate.%04d.exr", status=0):
        """The job says the text and goes on; with --strict it ends there, with nothing written."""
        strict = self.render(*UNDISTORT, "--strict", *arguments, clip=clip, out="strict/f.%04d.exr")
        self.expect(strict, 2, "", f"lenscorrect: {text}\n{REPAIR}")
        self.assertFalse(os.path.exists(self.path("strict", "f.1001.exr")))
        result = self.render(*UNDISTORT, *arguments, clip=clip)
        self.expect(result, status, "")
        self.assertEqual(result.stderr.splitlines()[0], "lenscorrect: " + text)

    def test_of_frames_that_follow_each_other_in_one_size_is_not_spoken_of(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1002, 1003))
        self.rendered(*UNDISTORT, "--strict")

    def test_with_gaps_is_told(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1003, 1006))
        self.expect_told('Frames are missing in the clip "plate.%04d.exr": 1002, 1004-1005.')

    def test_lacks_only_frames_that_were_asked_for(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1003, 1006))
        self.rendered(*UNDISTORT, "--strict", "--frames", "1001,1003", out="asked/f.%04d.exr")
        self.expect_told('Frames are missing in the clip "plate.%04d.exr": 1002,1007.', "--frames", "1001-1003,1007",
                         status=1)

    def test_with_gaps_in_its_plate_is_told(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1003, 1006, 1008))
        self.write_plate(self.part("RGB"), frames=(1001, 1002, 1003, 1004), name="cg")
        arguments = ("--distortion", "distort", "--plate", "plate.%04d.exr")
        told = 'Frames are missing in the clip "plate.%04d.exr": 1002,1004.'
        strict = self.render(*arguments, "--strict", clip="cg.%04d.exr", out="strict/f.%04d.exr")
        self.expect(strict, 2, "", f"lenscorrect: {told}\n{REPAIR}")
        result = self.render(*arguments, clip="cg.%04d.exr")
        self.expect(result, 1, "")
        self.assertEqual(result.stderr.splitlines()[0], "lenscorrect: " + told)
        self.assertEqual(self.names(), ["f.1001.exr", "f.1003.exr"])

    def test_whose_plate_has_all_frames_of_the_job_is_not_spoken_of(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1002, 1005))
        self.write_plate(self.part("RGB"), frames=(1001, 1002), name="cg")
        self.expect(self.render("--distortion", "distort", "--plate", "plate.%04d.exr", "--strict", clip="cg.%04d.exr"), 0, "", "")

    def test_whose_size_changes_is_told(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1002))
        self.write_plate(self.part("RGB", display=(0, 0, 31, 17)), frames=(1003,))
        self.expect_told('Size or channels change within the clip "plate.%04d.exr": 1001-1002: 64 x 36 px; '
                         '1003: 32 x 18 px.')

    def test_whose_channels_change_is_told(self):
        self.write_plate(self.part("RGB"), frames=(1001,))
        self.write_plate(self.part("RGBA"), frames=(1002, 1003))
        self.expect_told('Size or channels change within the clip "plate.%04d.exr": 1001: B G R; 1002-1003: A B G R.')

    def test_whose_data_window_moves_is_not_spoken_of(self):
        self.write_plate(self.part("RGB"), frames=(1001,))
        self.write_plate(self.part("RGB", data=(-16, -9, 79, 44)), frames=(1002,))
        self.rendered(*UNDISTORT, "--strict")

    def test_with_a_frame_that_cannot_be_read_is_told_of_that_frame_only(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1002))
        with open(self.path("plate.1002.exr"), "wb") as file:
            file.write(b"broken")
        result = self.render(*UNDISTORT, "--strict")
        self.expect(result, 1, "")
        self.assertEqual(len(result.stderr.splitlines()), 2, result.stderr)

    def test_is_told_of_to_programs(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1003))
        result = self.run_program("render", "plate.%04d.exr", *UNDISTORT, "--progress", "json", "-o", "out/f.%04d.exr")
        self.expect(result, 0, errors="")
        self.assertEqual([event["message"] for event in program.progress_events(result.stdout) if event["event"] == "note"],
                         ['Frames are missing in the clip "plate.%04d.exr": 1002.'])


class DroppedPictures(render_test.RenderTest):
    """What else a file holds is told once, and is no reason for --strict to end a job."""

    def setUp(self):
        super().setUp()
        self.write_lens(count=2)

    def write(self, ending, *arguments):
        exr.write(self.path("one.exr"), self.part("RGB"))
        for frame in (1001, 1002):
            subprocess.run(["oiiotool", "one.exr", *arguments, self.path(f"plate.{frame}.{ending}")], cwd=self.folder,
                           check=True, capture_output=True)

    def expect_told(self, ending, what):
        clip = "plate.%04d." + ending
        self.expect(self.render(*UNDISTORT, "--strict", clip=clip), 0, "",
                    f'lenscorrect: Only the first picture of each file of the clip "{clip}" is read; dropped: {what} '
                    "(frames 1001-1002).\n")
        reader = exr.Reader(self.path("out/f.1001.exr"))
        reader.take("II")
        self.assertEqual([name for name in reader.header() if "dropped" in name.lower()], [])

    def test_mip_levels_of_exr(self):
        self.write("exr", "-otex")
        self.expect_told("exr", "mip levels")

    def test_mip_levels_of_tiff(self):
        self.write("tif", "-otex")
        self.expect_told("tif", "mip levels")

    def test_further_pages_of_tiff(self):
        self.write("tif", "--dup", "--siappend", "-o")
        self.expect_told("tif", "further pages")

    def test_the_second_picture_of_a_stereo_dpx(self):
        self.write("dpx", "--dup", "--siappend", "-d", "uint16", "-o")
        self.expect_told("dpx", "a second picture")


@unittest.skipUnless(FAULTS, "calls of the program cannot be counted in this build")
class Headers(render_test.RenderTest):
    """Opening a file is slow over a network, and costs a process where it is decoded in one."""

    FRAMES = (1001, 1002, 1003, 1004)

    def setUp(self):
        super().setUp()
        self.write_lens(count=len(self.FRAMES))

    def opened(self, *arguments, of="plate.1", once_a_process=False, status=0, **options):
        """How often files whose path holds the text are opened, or how many processes open one."""
        count = self.path("count")
        with open(count, "wb") as file:
            file.write(bytes(4))
        result = self.render(*arguments, "--overwrite", environment={
            "LD_PRELOAD": FAULTS, "OPEN_COUNT": count, "OPEN_COUNT_OF": of,
            "OPEN_COUNT_ONCE_A_PROCESS": "1" if once_a_process else None}, **options)
        self.expect(result, status)
        with open(count, "rb") as file:
            return struct.unpack("i", file.read())[0]

    def expect_opened_twice(self, *arguments, of="plate.1", **options):
        """Every frame's file: for its header before the first frame, and when the frame is decoded."""
        self.assertEqual(self.opened(*arguments, of=of, **options), 2 * len(self.FRAMES))

    def test_are_read_once(self):
        self.write_plate(self.part("RGB"), frames=self.FRAMES)
        self.expect_opened_twice(*UNDISTORT)

    def test_are_read_once_for_a_box_of_the_whole_clip(self):
        self.write_plate(self.part("RGB"), frames=self.FRAMES)
        self.expect_opened_twice(*UNDISTORT, "--size", "constant")

    def test_of_a_plate_are_read_once_for_a_box_of_the_whole_clip(self):
        self.write_plate(self.part("RGB"), frames=self.FRAMES)
        self.write_plate(self.part("RGB"), frames=self.FRAMES, name="cg")
        arguments = ("--distortion", "distort", "--plate", "plate.%04d.exr", "--size", "constant")
        for name in ("plate.1", "cg.1"):
            self.expect_opened_twice(*arguments, of=name, clip="cg.%04d.exr")

    def test_of_pictures_that_are_never_read_are_read_once(self):
        self.write_plate(self.part("RGB"), frames=self.FRAMES)
        for frame in self.FRAMES:
            with open(self.path(f"plate.{frame}.exr"), "r+b") as file:
                file.seek(5)
                file.write(b"\x08") # the mark of deep pictures
        self.assertEqual(self.opened(*UNDISTORT, "--size", "constant", status=2), len(self.FRAMES))

    def test_of_lens_data_that_serve_no_frame_are_read_once(self):
        self.write_plate(self.part("RGB"), frames=self.FRAMES)
        self.write_lens(count=1, sensorWidth="0")
        # Meanwhile, one frame may be decoded.
        self.assertLessEqual(self.opened(*UNDISTORT, "--memory", "1K", status=2), len(self.FRAMES) + 1)

    def test_of_other_stills_are_read_by_one_process_each(self):
        self.write_plate(self.part("RGB"), frames=self.FRAMES)
        for frame in self.FRAMES:
            subprocess.run(["oiiotool", f"plate.{frame}.exr", "-d", "uint16", "-o", f"plate.{frame}.tif"],
                           cwd=self.folder, check=True)
        for out in ("out/f.%04d.exr", "out/f.%04d.tif"):
            self.expect_opened_twice(*UNDISTORT, out=out, clip="plate.%04d.tif", once_a_process=True)

    def test_of_a_movie_are_read_by_one_process(self):
        self.write_lens(count=4, videoFileName="plate.mov")
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc=s={render_test.WIDTH}x{render_test.HEIGHT}:r=24",
                        "-frames:v", "4", "-timecode", "00:00:00:00", "-c:v", "prores_ks", self.path("plate.mov")],
                       check=True)
        for out in ("out/f.%04d.exr", "out/f.%04d.tif"):
            self.assertEqual(self.opened(*UNDISTORT, of="plate.mov", clip="plate.mov", out=out, once_a_process=True),
                             1 + 4)


program.main()

"""lenscorrect stmap on the sample clip: what the maps are, and that another program warps with them as the node renders."""
import os
import re
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import exr
import program


class StMap(program.ProgramTest):
    def setUp(self):
        super().setUp()
        # Deep enough that the search for correction files never leaves the case's own folders.
        self.folder = self.path("a", "b", "c", "d", "e", "f")
        os.makedirs(self.folder)

    def sample(self, size="320x180", frames="2"):
        self.expect(self.run_program("sample", "clip", "--size", size, "--frames", frames, "--progress", "none"), 0)

    def stmap(self, *arguments, clip="clip/plate.%04d.exr", status=0, **texts):
        self.expect(self.run_program("stmap", clip, "--progress", "none", *arguments), status, **texts)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def oiiotool(self, *arguments):
        result = subprocess.run(["oiiotool", *arguments], cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout

    def info(self, name):
        return self.oiiotool("--info", "-v", name)

    def warp_and_compare(self, direction, mode, clip="clip/plate.1001.exr"):
        """oiiotool warps the clip with the map into the box that the node renders; both must be the same picture."""
        self.stmap("--direction", direction, "-o", "map.exr", clip=clip)
        self.expect(self.run_program("render", clip, "--distortion", mode, "--type", "float", "-o", "node.exr",
                                     "--progress", "none"), 0)
        self.assertEqual(self.window("map.exr"), self.window("node.exr"))
        # The warped picture gets the source's data window, so that is made as large first; and black all around, since
        # beyond the window oiiotool repeats the border.
        width, height, x, y = self.window("node.exr")
        self.oiiotool(clip, "-d", "float", "--crop", f"{width + 4}x{height + 4}{x - 2:+}{y - 2:+}", "map.exr",
                      "--st_warp:filter=triangle:flip_t=1", "--crop", f"{width}x{height}{x:+}{y:+}", "-o", "warped.exr")
        # 0.001: some 1e-4 px of single precision in both programs, at borders where a pixel is a step of 1.
        self.oiiotool("--fail", "0.001", "--diff", "node.exr", "warped.exr")

    def window(self, name):
        """Data window: width, height, left, top."""
        text = self.info(name)
        origin = re.search(r"pixel data origin: x=(-?\d+), y=(-?\d+)", text)
        return tuple(map(int, re.search(r"(\d+) x +(\d+), ", text).groups() + (origin.groups() if origin else (0, 0))))

    def test_undistorts_in_another_program_as_the_node_does(self):
        self.sample()
        self.warp_and_compare("undistort", "undistort")

    def test_redistorts_in_another_program_as_the_node_does(self):
        self.sample()
        self.warp_and_compare("redistort", "distort")

    def test_serves_odd_sizes(self):
        self.sample(size="333x251")
        self.warp_and_compare("undistort", "undistort")

    def test_takes_the_data_window_for_overscan(self):
        self.sample(frames="1")
        self.expect(self.run_program("render", "clip/plate.1001.exr", "--distortion", "undistort", "--type", "float",
                                     "-o", "clip/flat/plate.1001.exr", "--progress", "none"), 0)
        self.warp_and_compare("redistort", "distort", clip="clip/flat/plate.1001.exr")

    def test_writes_lossless_float_with_its_convention(self):
        self.sample(frames="1")
        self.stmap("--direction", "undistort", "-o", "map.exr", output="", errors="")
        text = self.info("map.exr")
        for line in ("4 channel, float openexr", "channel list: R, G, B, A", "full/display size: 320 x 180",
                     'compression: "zip"', 'com.orvex.lenscorrect.map.direction: "undistort"',
                     'com.orvex.lenscorrect.map.formula: "R = (sx + 0.5) / 320, G = 1 - (sy + 0.5) / 180, B = 0, A = 1"'):
            self.assertIn(line, text)

    def test_writes_a_map_for_each_frame(self):
        self.sample(frames="2")
        self.stmap("--direction", "undistort", "-o", "maps/m.%04d.exr")
        self.assertEqual(sorted(os.listdir(self.path("maps"))), ["m.1001.exr", "m.1002.exr"])

    IDENTITY = ("timeCode", "reelName", "framesPerSecond")

    def identity(self, name):
        attributes = exr.read(self.path(name))[0].attributes
        return [attributes.get(key) for key in self.IDENTITY]

    def test_says_of_which_frame_the_map_is(self):
        self.sample(frames="2")
        self.stmap("--direction", "undistort", "-o", "maps/m.%04d.exr")
        self.stmap("--direction", "undistort", "-o", "one.exr", "--frame", "1002")
        plate = self.identity("clip/plate.1002.exr")
        self.assertNotIn(None, plate)
        self.assertEqual(self.identity("maps/m.1002.exr"), plate)
        self.assertEqual(self.identity("one.exr"), plate)

    def test_says_no_frame_of_a_map_that_serves_all(self):
        self.sample(frames="1")
        shutil.copy(self.path("clip", "plate.1001.exr"), self.path("clip", "plate.1002.exr"))
        self.stmap("--direction", "undistort", "-o", "map.exr")
        self.assertEqual(self.identity("map.exr"), [None] * 3)

    def test_writes_one_map_for_a_range_that_shares_it(self):
        self.write("a.olcf", correction_file.one_frame() + correction_file.LINE.replace("0;", "1;", 1) + "\n")
        self.stmap("--size", "1920x1080", "--direction", "redistort", "-o", "map.exr", clip="a.olcf")
        self.stmap("--size", "1920x1080", "--direction", "redistort", "-o", "m.%d.exr", clip="a.olcf")
        self.oiiotool("--diff", "map.exr", "m.1.exr")

    def test_refuses_one_map_for_frames_that_differ(self):
        self.sample(frames="2")
        self.stmap("--direction", "undistort", "-o", "map.exr", status=2, output="",
                   errors="lenscorrect: The maps of frames 1001 and 1002 differ, so one file cannot serve all; put %04d in "
                          "its name for a map per frame, or choose a frame with --frame.\n")
        self.assertFalse(os.path.exists(self.path("map.exr")))

    def test_writes_the_map_of_a_chosen_frame(self):
        self.sample(frames="2")
        self.stmap("--direction", "undistort", "-o", "one.exr", "--frame", "1002")
        self.stmap("--direction", "undistort", "-o", "all.%d.exr")
        self.oiiotool("--diff", "one.exr", "all.1002.exr")

    def test_is_ideal_on_request(self):
        # A pincushion lens: the node keeps the frame but not the scale.
        self.write("a.olcf", correction_file.one_frame())
        for geometry in ("node", "ideal"):
            self.stmap("--size", "1920x1080", "--direction", "undistort", "--geometry", geometry, "-o", geometry + ".exr",
                       clip="a.olcf")
        result = subprocess.run(["oiiotool", "--fail", "0.0004", "--diff", "node.exr", "ideal.exr"], cwd=self.folder,
                                capture_output=True, text=True)
        self.assertNotEqual(result.returncode, 0, "0.0004 of 1920 px are 0.8 px")

    def test_keeps_existing_files_unless_told_otherwise(self):
        self.sample(frames="1")
        self.write("map.exr", "mine")
        self.stmap("--direction", "undistort", "-o", "map.exr", status=2, output="",
                   errors='lenscorrect: "map.exr" already exists. Give --overwrite to replace existing files.\n')
        self.stmap("--direction", "undistort", "-o", "map.exr", "--overwrite")

    def test_says_that_a_correction_file_needs_a_size(self):
        self.stmap("--direction", "undistort", "-o", "map.exr", clip="a.olcf", status=2, output="",
                   errors="lenscorrect: a.olcf: a correction file does not contain the frame size; give --size WxH.\n")

    def test_says_that_maps_are_openexr_files(self):
        self.stmap("--direction", "undistort", "-o", "map.tif", status=2, output="",
                   errors="lenscorrect: map.tif: maps are written as OpenEXR files; the name must end in .exr.\n")

    def test_tells_the_size_that_the_lens_data_are_for(self):
        self.write("a.olcf", correction_file.one_frame())
        self.stmap("--size", "1920x800", "--direction", "undistort", "-o", "map.exr", clip="a.olcf", status=2, output="",
                   errors="lenscorrect: Frame 0: Aspect ratio of the current frame is not as expected. Recommended "
                          "resolution is 1920x1080 px.\nCurrent Frame Resolution: 1920x800 px\n"
                          "Recording Format Resolution: 1920x1080 px\n")

    def test_says_where_a_missing_correction_file_is_searched(self):
        self.sample(frames="1")
        os.remove(self.path("clip", "plate.olcf"))
        self.stmap("--direction", "undistort", "-o", "map.exr", status=2, output="",
                   errors="lenscorrect: Frame 1001 (clip/plate.1001.exr): "
                          "Correction file could not be found.\nClip File Path: \"{}/clip/plate\"\n"
                          "\"lenscorrect find\" lists the folders searched for the clip's correction file; --correction-file "
                          "selects a file.\n".format(os.path.realpath(self.folder)))

    def test_writes_the_others_when_a_frame_has_no_record(self):
        self.write("a.olcf", correction_file.one_frame() + correction_file.LINE.replace("0;0,3,6", "1;0,6,6", 1) + "\n")
        self.stmap("--size", "1920x1080", "--direction", "undistort", "-o", "m.%d.exr", clip="a.olcf", status=1, output="",
                   errors="Frame 1: Calculation of the polynomial coefficients did fail.\n"
                          "X Vector: 0 6 6 9 11 13 15\nY Vector: 0 5.994 5.976 8.919 10.857 12.766 14.64\n"
                          "lenscorrect: 1 of 2 frames failed: 1\n")
        self.assertTrue(os.path.exists(self.path("m.0.exr")))

    def test_leaves_nothing_where_it_cannot_write(self):
        self.sample(frames="1")
        self.write("file", "")
        self.stmap("--direction", "undistort", "-o", "file/map.exr", status=4)
        self.assertEqual(sorted(os.listdir(self.folder)), ["clip", "file"])


program.main()

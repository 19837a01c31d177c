"""lenscorrect render on the sample clip: what is written, what it carries, and how it says that something is wrong."""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program


class Render(program.ProgramTest):
    def setUp(self):
        super().setUp()
        # Deep enough that the search for correction files never leaves the case's own folders.
        self.folder = self.path("a", "b", "c", "d", "e", "f")
        os.makedirs(self.folder)

    def sample(self, *arguments):
        self.expect(self.run_program("sample", "clip", "--progress", "none", *arguments), 0)

    def render(self, *arguments, **options):
        return self.run_program("render", "clip/plate.%04d.exr", "--progress", "none", *arguments, **options)

    def frames(self, folder):
        return sorted(name for name in os.listdir(self.path(folder)) if not name.startswith("."))

    def test_writes_every_frame_without_a_word(self):
        self.sample("--size", "128x96", "--frames", "3")
        self.expect(self.render("--distortion", "undistort", "--shading", "remove", "-o", "out/f.%04d.exr"), 0, "", "")
        self.assertEqual(self.frames("out"), ["f.1001.exr", "f.1002.exr", "f.1003.exr"])

    def test_renders_formats_whose_box_the_core_refuses_for_a_rounding(self):
        self.sample("--size", "511x413", "--frames", "12")
        self.expect(self.render("--distortion", "undistort", "-o", "out/f.%04d.exr"), 0, "", "")
        self.assertEqual(len(self.frames("out")), 12)

    def test_says_once_that_there_is_no_correction_file_and_what_to_do(self):
        self.sample("--size", "128x96", "--frames", "30")  # more than wait decoded when it is said
        os.remove(self.path("clip", "plate.olcf"))
        self.expect(self.render("--distortion", "undistort", "-o", "out/f.%04d.exr"), 2, "", """\
lenscorrect: No correction file was found for the clip "clip/plate.%04d.exr": place the one that names this clip next to it, \
or give its path with --correction-file. "lenscorrect find" lists the folders searched.
Correction file could not be found.
Clip File Path: "{}/clip/plate"
""".format(os.path.realpath(self.folder)))

    def test_names_the_clip_whose_name_is_not_that_of_its_files(self):
        self.sample("--size", "128x96", "--frames", "2")
        with open(self.path("clip", "plate.metadata.json"), "w", encoding="utf-8") as file:
            file.write('{"input/filename": "A001_C002.R3D", "r3d/reel_id_full": "A001_C002"}')
        result = self.render("--distortion", "undistort", "-o", "out/f.%04d.exr")
        self.expect(result, 2, "", """\
lenscorrect: No correction file was found for the clip "clip/plate.%04d.exr": place the one that names this clip next to it, \
or give its path with --correction-file. "lenscorrect find" lists the folders searched.
Correction file could not be found.
Clip File Path: "{}/clip/A001_C002"
The clip's name, "A001_C002", is from its metadata; its files are "clip/plate.%04d.exr".
""".format(os.path.realpath(self.folder)))

    def test_says_where_the_frames_are(self):
        self.sample("--size", "128x96", "--frames", "2")
        arguments = ("render", "clip/plate.%04d.exr", "--distortion", "undistort", "-o", "out/f.%04d.exr")
        for more in ([], ["--skip-existing"]):
            result = self.run_program(*arguments, *more)
            self.expect(result, 0, "")
            self.assertEqual(result.stderr.splitlines()[-1], "Frames: out/f.%04d.exr")

    def test_corrects_frames_with_negative_numbers_like_those_of_any_clip(self):
        self.sample("--size", "128x96", "--frames", "3")
        self.expect(self.render("--distortion", "undistort", "--shading", "remove", "-o", "out/f.%04d.exr"), 0, "", "")
        os.makedirs(self.path("below"))
        for number in (1, 2, 3):
            os.rename(self.path("clip", f"plate.{1000 + number}.exr"), self.path("below", f"plate.{number - 3:05}.exr"))
        os.rename(self.path("clip", "plate.olcf"), self.path("below", "plate.olcf"))
        self.assertEqual(self.frames("below"), ["plate.-0001.exr", "plate.-0002.exr", "plate.00000.exr", "plate.olcf"])
        for clip in ("below/plate.%05d.exr", "below"):
            with self.subTest(clip):
                self.expect(self.run_program("render", clip, "--progress", "none", "--distortion", "undistort", "--shading",
                                             "remove", "-o", "again/f.%05d.exr", "--overwrite"), 0, "", "")
                self.assertEqual(self.frames("again"), ["f.-0001.exr", "f.-0002.exr", "f.00000.exr"])
                for number in (1, 2, 3):
                    with open(self.path("out", f"f.{1000 + number}.exr"), "rb") as first, \
                            open(self.path("again", f"f.{number - 3:05}.exr"), "rb") as second:
                        marks = (b"clip/plate.olcf", b"below/plate.olcf")
                        self.assertEqual(len(first.read()) - len(marks[0]), len(second.read()) - len(marks[1]))
        result = self.run_program("render", "below", "--frames", "-2--1", "--shading", "remove", "-o", "two/f.%05d.exr")
        self.expect(result, 0)
        self.assertEqual(self.frames("two"), ["f.-0001.exr", "f.-0002.exr"])

    def test_names_an_output_that_no_picture_can_be_before_the_first_frame(self):
        self.sample("--size", "128x96", "--frames", "2")
        for output, problem in (
                ("f.%04d.xyz", '".xyz" is not a supported output format; choose .exr, .dpx, .tif, .png or .jpg'),
                ("folder", "its name has no extension; choose .exr, .dpx, .tif, .png or .jpg"),
                ("f.mov", "movies are only read; choose an image sequence such as name.%04d.exr")):
            with self.subTest(output):
                self.expect(self.render("--distortion", "undistort", "-o", output), 2, "",
                            f"lenscorrect: {output}: cannot be written: {problem}\n")

    def test_writes_the_others_when_a_frame_in_the_middle_is_cut_short(self):
        self.sample("--size", "128x96", "--frames", "3")
        os.truncate(self.path("clip", "plate.1002.exr"), 3000)
        result = self.render("--distortion", "undistort", "-o", "out/f.%04d.exr")
        self.expect(result, 1)
        self.assertEqual(self.frames("out"), ["f.1001.exr", "f.1003.exr"])
        self.assertIn("plate.1002.exr", result.stderr)
        self.assertIn("lenscorrect: 1 of 3 frames failed: 1002\n", result.stderr)

    def test_refuses_to_take_the_distortion_out_twice(self):
        self.sample("--size", "128x96", "--frames", "1")
        self.expect(self.render("--distortion", "undistort", "-o", "clip/again/plate.%04d.exr"), 0)
        result = self.run_program("render", "clip/again/plate.%04d.exr", "--distortion", "undistort", "-o",
                                  "out/f.%04d.exr", "--progress", "none")
        self.expect(result, 1)
        self.assertIn("It is already marked with this correction", result.stderr)

    def test_tells_what_to_install_when_there_is_no_device(self):
        self.sample("--size", "128x96", "--frames", "1")
        result = self.render("--distortion", "undistort", "-o", "out/f.%04d.exr",
                             environment={"OCL_ICD_VENDORS": self.folder})
        self.expect(result, 3, "", """\
lenscorrect: There is no OpenCL device to render on: Failed to query number of all available platforms! (-1001) \
Install a driver (without a GPU: apt-get install pocl-opencl-icd); "lenscorrect devices" lists what is installed.
""")

    def test_renders_from_a_private_kernel_cache_when_the_home_cannot_be_written(self):
        self.sample("--size", "128x96", "--frames", "1")
        result = self.render("--distortion", "undistort", "-o", "out/f.%04d.exr",
                             environment={"HOME": "/proc", "XDG_CACHE_HOME": None, "POCL_CACHE_DIR": None})
        self.expect(result, 0, "")
        self.assertIn("/proc/.cache/pocl", result.stderr)


program.main()

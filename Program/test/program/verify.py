"""lenscorrect verify: what it measures, and what it answers."""
import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import program

POINTS = "0,3,6,9,11,13,15"
IDENTITY = f"0;{POINTS};100,99,96,92,88,84,80;0,0,0,0,0,0,0;;;;;;01:00:00:00\n"


class Verify(program.ProgramTest):
    def setUp(self):
        super().setUp()
        # Deep enough that the search for correction files never leaves the case's own folders.
        self.folder = self.path("a", "b", "c", "d", "e", "f")
        os.makedirs(self.folder)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def verify(self, *arguments, status=0):
        result = self.run_program("verify", *arguments, "--json")
        self.expect(result, status, errors="")
        return program.validated(json.loads(result.stdout), "verify")

    def errors(self, *arguments):
        return self.verify(*arguments)["frames"][0]["errors"]

    def test_finds_nothing_wrong_with_a_lens_that_distorts_nothing(self):
        self.write("a.olcf", correction_file.one_frame().replace(correction_file.LINE + "\n", IDENTITY))
        for name, error in self.errors("a.olcf", "--size", "1920x1080", "--render").items():
            # Single precision of places up to 1920 px.
            self.assertLess(error, 2e-3, name)

    def test_measures_the_deviation_of_a_pincushion_lens(self):
        self.write("a.olcf", correction_file.one_frame())
        self.assertGreater(self.errors("a.olcf", "--size", "1920x1080")["deviation"], 0.5)

    def test_measures_the_same_by_maps_and_by_pixels(self):
        self.expect(self.run_program("sample", "clip", "--size", "640x360", "--frames", "2", "--progress", "none"), 0)
        for frame in self.verify("clip/plate.%04d.exr", "--render")["frames"]:
            # Interpolation bends the places by their curvature, and the picture's faded border is left out.
            self.assertAlmostEqual(frame["errors"]["maps"], frame["errors"]["rendered"], delta=0.01)

    def info_deviations(self, *arguments):
        result = self.run_program("info", *arguments, "--frames", "--json")
        self.expect(result, 0, errors="")
        return [frame["undistortion"]["deviation"] for frame in json.loads(result.stdout)["frames"]]

    def deviations(self, *arguments):
        return [frame["errors"]["deviation"] for frame in self.verify(*arguments)["frames"]]

    def test_agrees_with_info_about_the_deviation_for_a_correction_file(self):
        self.write("a.olcf", correction_file.one_frame())
        self.assertEqual(self.info_deviations("a.olcf"), self.deviations("a.olcf", "--size", "1920x1080"))

    def test_agrees_with_info_about_the_deviation_of_a_clip(self):
        self.expect(self.run_program("sample", "clip", "--size", "640x360", "--frames", "2", "--progress", "none"), 0)
        self.assertEqual(self.info_deviations("clip/plate.%04d.exr"), self.deviations("clip/plate.%04d.exr"))

    def test_agrees_with_info_about_the_deviation_of_a_clip_with_overscan_beyond_its_format(self):
        self.expect(self.run_program("sample", "clip", "--size", "640x360", "--frames", "1", "--progress", "none"), 0)
        subprocess.run(["oiiotool", self.path("clip", "plate.1001.exr"), "--crop", "700x390-30-15",
                        "-o", self.path("clip", "plate.1001.exr")], check=True, capture_output=True)
        self.assertEqual(self.info_deviations("clip/plate.%04d.exr"), self.deviations("clip/plate.%04d.exr"))

    def test_agrees_with_info_about_the_deviation_of_a_clip_with_overscan_inside_its_format(self):
        self.expect(self.run_program("sample", "clip", "--size", "640x360", "--frames", "1", "--progress", "none"), 0)
        self.assertEqual(self.info_deviations("clip/plate.%04d.exr", "--overscan", "10"),
                         self.deviations("clip/plate.%04d.exr", "--overscan", "10"))

    def test_refuses_a_recording_format_beyond_the_nodes_controls(self):
        self.write("a.olcf", correction_file.one_frame())
        self.expect(self.run_program("verify", "a.olcf", "--size", "1920x1080", "--image-area", "40x22.5",
                                     "--clip-resolution", "1920x1080"), 2, "",
                    "lenscorrect: --image-area 40x22.5 is larger than 36x24 mm, the largest supported sensor.\n")

    def test_knows_the_sizes_of_both_steps(self):
        self.write("a.olcf", correction_file.one_frame())
        frame = self.verify("a.olcf", "--size", "1920x1080")["frames"][0]
        self.assertEqual(frame["undistorted"], {"width": 1920, "height": 1080})

    def test_answers_1_beyond_the_tolerance(self):
        self.write("a.olcf", correction_file.one_frame())
        report = self.verify("a.olcf", "--size", "1920x1080", "--tolerance", "0.0000001", status=1)
        self.assertEqual(report["exceededCount"], 1)

    def test_answers_0_within_the_tolerance(self):
        self.write("a.olcf", correction_file.one_frame())
        result = self.run_program("verify", "a.olcf", "--size", "1920x1080", "--tolerance", "1")
        self.expect(result, 0, errors="")
        self.assertTrue(result.stdout.endswith("1 of 1 frames are within 1 px.\n"), result.stdout)

    def test_refuses_a_tolerance_that_is_no_length(self):
        for tolerance in ("-1", "nan"):
            self.expect(self.run_program("verify", "a.olcf", "--size", "1920x1080", "--tolerance", tolerance), 2, "",
                        f"lenscorrect: --tolerance {tolerance}: give a length in px, 0 or more.\n")

    def test_gives_no_advice_about_lens_data_for_a_frame_that_does_not_exist(self):
        self.expect(self.run_program("sample", "clip", "--size", "640x360", "--frames", "1", "--progress", "none"), 0)
        self.expect(self.run_program("verify", "clip/plate.%04d.exr", "--frames", "2000"), 1,
                    errors="lenscorrect: Frame 2000: clip/plate.%04d.exr: The clip has no frame 2000.\n")

    def test_lists_the_frames_on_request(self):
        self.write("a.olcf", correction_file.one_frame().replace(correction_file.LINE + "\n", IDENTITY))
        result = self.run_program("verify", "a.olcf", "--size", "1920x1080", "--list")
        self.assertRegex(result.stdout, r"\n +Frame +Curves +Maps +Rendered +Deviation\n +0 +0\.0000 +0\.000. +- +0\.000.\n$")

    def test_answers_in_json_what_keeps_a_frame_from_being_corrected(self):
        self.write("a.olcf", correction_file.one_frame().replace(f"0;{POINTS}", "0;0,6,6,9,11,13,15"))
        result = self.run_program("verify", "a.olcf", "--size", "1920x1080", "--json")
        self.expect(result, 1)
        report = program.validated(json.loads(result.stdout), "verify")
        self.assertEqual((report["frameCount"], report["failedCount"], report["frames"][0]["ok"]), (1, 1, False))
        self.assertEqual("lenscorrect: " + report["frames"][0]["error"] + "\n", result.stderr)

    def test_names_the_frame_that_cannot_be_corrected(self):
        self.write("a.olcf", correction_file.one_frame().replace(f"0;{POINTS}", "0;0,6,6,9,11,13,15"))
        self.expect(self.run_program("verify", "a.olcf", "--size", "1920x1080"), 1, "",
                    "lenscorrect: Frame 0: Calculation of the polynomial coefficients did fail.\n"
                    "X Vector: 0 6 6 9 11 13 15\nY Vector: 0 5.994 5.976 8.919 10.857 12.766 14.64\n")


program.main()

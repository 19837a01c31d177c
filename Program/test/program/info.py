"""What info tells about correction files."""
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import program

BAD_HEIGHTS = "0,5,5,10,15,18,20"


class Info(program.ProgramTest):
    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def info(self, *arguments, status=0):
        result = self.run_program("info", *arguments, "--json")
        self.expect(result, status, errors="")
        return program.validated(json.loads(result.stdout), "info")

    def test_tells_header_records_and_format(self):
        self.write("a.olcf", correction_file.text(frames=range(1001, 1004)))
        self.expect(self.run_program("info", "a.olcf"), 0,
                    "Correction file   a.olcf\n"
                    "Lens              Lens Maker Prime 40, serial number 0815, 40 mm\n"
                    "Camera            Camera Maker Model One\n"
                    "Clip              A001C002.mov (A001C002), 4096 x 2160 px, 3 frames\n"
                    "Timecode rate     25\n"
                    "Records           3, frames 1001-1003, timecodes 00:00:40:01 to 00:00:40:03\n"
                    "Recording format  36 x 18.984375 mm for 4096 x 2160 px, radius 20.349 mm, from the file's header\n"
                    "Undistorted size  4096 x 2160 px, 0.00 % overscan (frame 1001)\n"
                    "Deviation         up to 2.08 px from the ideal undistorted picture, whose corner is inside the frame\n"
                    "Frames            3 of 3 can be corrected\n", "")

    def test_lets_no_header_steer_the_terminal(self):
        self.write("a.olcf", correction_file.text(frames=[1001]).replace("Prime 40", "Prime\x1b]0;40\x07\u009b1m"))
        self.assertIn("Lens              Lens Maker Prime\\x1B]0;40\\x07\\xC2\\x9B1m, serial number 0815, 40 mm\n",
                      self.run_program("info", "a.olcf").stdout)
        missing = self.run_program("info", "no\x1b[1mfile.olcf")
        self.expect(missing, 2, "")
        self.assertIn('no\\x1B[1mfile.olcf', missing.stderr)
        self.assertNotIn("\x1b", missing.stderr)

    def test_tells_every_frame_on_request(self):
        self.write("a.olcf", correction_file.text(frames=[1001]))
        self.assertTrue(self.run_program("info", "a.olcf", "--frames").stdout.endswith(
            "   Frame    Record  Found by        Output [px]     Overscan  Deviation [px]\n"
            "    1001      1001  number 1001     4096 x 2160       0.00 %            2.08\n"))

    def test_lists_frames_in_json_only_on_request(self):
        self.write("a.olcf", correction_file.text(frames=range(1001, 1004)))
        self.assertNotIn("frames", self.info("a.olcf"))
        self.assertEqual([frame["record"]["frame"] for frame in self.info("a.olcf", "--frames")["frames"]], [1001, 1002, 1003])

    def test_tells_only_the_frames_of_a_range(self):
        self.write("a.olcf", correction_file.text(frames=range(1001, 1011)))
        report = self.info("a.olcf", "--range", "1001-1009x4,1002", "--frames")
        self.assertEqual(report["frameCount"], 4)
        self.assertEqual([frame["frame"] for frame in report["frames"]], [1001, 1005, 1009, 1002])

    def test_takes_the_record_before_a_frame_of_the_range_and_fails_without_one(self):
        self.write("a.olcf", correction_file.text(frames=[1001, 1005]))
        frames = self.info("a.olcf", "--range", "1000,1003", "--frames", status=1)["frames"]
        self.assertEqual([frame["ok"] for frame in frames], [False, True])
        self.assertEqual(frames[1]["record"]["frame"], 1001)

    def test_refuses_a_negative_frame_of_a_correction_file(self):
        self.write("a.olcf", correction_file.text(frames=[1001]))
        self.expect(self.run_program("info", "a.olcf", "--range=-3"), 2, "",
                    "lenscorrect: Frame -3 is negative; the frames of a correction file count from 0.\n")

    def test_gives_the_polynomials_that_the_kernels_get(self):
        self.write("a.olcf", correction_file.text(frames=[1001]))
        frame = self.info("a.olcf", "--frames")["frames"][0]
        corner = frame["undistortion"]["imageRadius"]
        corrected = sum(c * corner ** power for power, c in enumerate(frame["toCorrected"]))
        self.assertAlmostEqual(corrected, frame["undistortion"]["correctedRadius"], 4)

    def test_gives_both_texts_for_a_frame_that_fails(self):
        self.write("a.olcf", correction_file.text(frames=[1001]) + correction_file.frame_line(1002, heights=BAD_HEIGHTS) + "\n")
        report = self.info("a.olcf", "--frames", status=1)
        self.assertEqual((report["frameCount"], report["failedCount"]), (2, 1))
        failed = report["frames"][1]
        self.assertEqual(failed["error"], "Calculation of the polynomial coefficients did fail.")
        self.assertEqual(failed["details"], "X Vector: 0 5 5 10 15 18 20\nY Vector: 100 98 93 86 79.5 74.5 68\n")

    def test_names_the_tables_format(self):
        self.write("a.olcf", correction_file.text(frames=[1], sensorWidth="0", cameraManufacturer="ARRI",
                                                  cameraModel="ALEXA Mini", clipWidth="2880", clipHeight="1620"))
        self.assertEqual(self.info("a.olcf")["recordingFormat"]["name"], "RAW 16:9 2.8K")

    def test_takes_a_format_by_hand(self):
        self.write("a.olcf", correction_file.text(frames=[1], sensorWidth="0"))
        self.info("a.olcf", status=1)
        report = self.info("a.olcf", "--image-area", "36x18.984375", "--clip-resolution", "4096x2160")
        self.assertEqual(report["recordingFormat"]["origin"], "manual")

    def test_sends_to_the_check_for_a_file_with_defects(self):
        self.write("a.olcf", "")
        self.expect(self.run_program("info", "a.olcf"), 2, "",
                    "lenscorrect: a.olcf: Correction file could not be parsed due to an invalid format.\n"
                    "Reason: Header start could not be found.\n"
                    'Run "lenscorrect check" on it to list every defect.\n')


program.main()

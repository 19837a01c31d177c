"""Lens data for other programs, held against what the plug-in computes itself."""
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import program

HEIGHTS = [0, 5, 10, 14, 17, 19, 21.4]


def brown_conrady(radial, r):
    """The place that the model gives a distance from the centre."""
    k1, k2, k3, k4, k5, k6 = radial
    return r * (1 + k1 * r**2 + k3 * r**4 + k5 * r**6) / (1 + k2 * r**2 + k4 * r**4 + k6 * r**6)


def polynomial(coefficients, x):
    return sum(c * x**power for power, c in enumerate(coefficients))


class Export(program.ProgramTest):
    def write(self, text):
        with open(self.path("a.olcf"), "w", encoding="utf-8") as file:
            file.write(text)

    def export(self, status=0):
        result = self.run_program("export", "--opentrackio", "a.olcf", "-o", "a.json")
        self.expect(result, status)
        with open(self.path("a.json"), encoding="utf-8") as file:
            return program.validated(json.load(file), "opentrackio-export"), result

    def smooth_lens(self, sign=1, **header):
        """A lens whose distortion and fall-off have exactly the form of the exported model."""
        line = correction_file.frame_line(90000, shading=",".join(f"{100 - 0.05 * h * h - 2e-5 * h**4}" for h in HEIGHTS),
                                          distortion=",".join(f"{sign * 0.04 * h * h}" for h in HEIGHTS))
        self.write(correction_file.text(frames=[], **header) + line + "\n")

    def test_gives_back_a_lens_of_the_models_form(self):
        self.smooth_lens()
        document, _ = self.export()
        lens = document["samples"][0]["lens"]
        radial = lens["distortion"][0]["radial"]
        self.assertAlmostEqual(radial[0], -0.04e-3, 7)  # single precision of the curves it is laid through
        self.assertAlmostEqual(lens["exposureFalloff"]["a1"], 0.05e-2, 6)
        for model in lens["distortion"]:
            self.assertEqual(model["radial"][1::2], [0, 0, 0])

    def test_stays_within_the_stated_residual_in_both_directions(self):
        self.write(correction_file.text(frames=[1001]))
        document, _ = self.export()
        info = json.loads(self.run_program("info", "a.olcf", "--frames", "--json").stdout)["frames"][0]
        residual = document["residuals"][0]
        ends = info["undistortion"]
        for model, curve, end, stated in zip(document["samples"][0]["lens"]["distortion"], ("toCorrected", "toRecorded"),
                                             (ends["imageRadius"], ends["correctedRadius"]),
                                             (residual["distortedToUndistorted"], residual["undistortedToDistorted"])):
            places = [end * i / 100 for i in range(1, 101)]
            missed = max(abs(brown_conrady(model["radial"], r) - polynomial(info[curve], r)) for r in places)
            self.assertLess(missed, stated + 1e-5)  # single precision, and other places than those that were sampled
            self.assertGreater(missed, 0.9 * stated)

    def test_prints_the_largest_residuals(self):
        self.write(correction_file.text(frames=[1001, 1002]))
        document, result = self.export()
        millimetres = document["largestResidual"]["distortedToUndistorted"]
        self.assertIn(f"Largest residual, distorted to undistorted: {millimetres:.2g} mm (", result.stdout)

    def test_carries_timecode_and_rate(self):
        self.smooth_lens(tcFps="23.976", tcDrop="0")
        document, _ = self.export()
        self.assertEqual(document["samples"][0]["timing"], {
            "sampleRate": {"num": 24000, "denom": 1001},
            "timecode": {"hours": 1, "minutes": 0, "seconds": 0, "frames": 0, "frameRate": {"num": 24000, "denom": 1001},
                         "subFrame": 0, "dropFrame": False}})

    def test_carries_a_timecode_of_its_rate_and_of_one_day_only(self):
        def frames_field(timecode, **header):
            line = correction_file.frame_line(1).rsplit(";", 1)[0] + ";" + timecode
            self.write(correction_file.text(frames=[], **header) + line + "\n")
            timing = self.export()[0]["samples"][0]["timing"]
            return timing["timecode"]["frames"] if "timecode" in timing else None

        self.assertEqual(frames_field("01:00:00:23", tcFps="23.976"), 23)
        self.assertEqual(frames_field("01:00:00:119", tcFps="120"), 119)
        self.assertIsNone(frames_field("01:00:00:24", tcFps="23.976"))
        self.assertIsNone(frames_field("24:00:00:00"))

    def test_gives_the_overscan_of_each_direction(self):
        # Pincushion: the corrected picture is smaller, the way back enlarges; barrel the other way round.
        for sign in (1, -1):
            self.smooth_lens(sign=sign)
            document, _ = self.export()
            corrected, recorded = (model["overscan"] for model in document["samples"][0]["lens"]["distortion"])
            self.assertEqual((corrected > 1, recorded > 1), (sign < 0, sign > 0))
            lens = document["samples"][0]["static"]["lens"]
            self.assertEqual((lens["undistortionOverscanMax"], lens["distortionOverscanMax"]), (corrected, recorded))

    def test_leaves_out_frames_without_curves_and_says_so(self):
        self.write(correction_file.text(frames=[1]) + correction_file.frame_line(2, heights="0,5,5,10,15,18,20") + "\n")
        document, result = self.export(status=1)
        self.assertEqual((document["failedFrames"], len(document["samples"])), ([2], 1))
        self.assertEqual(result.stderr, "lenscorrect: a.olcf: 1 of the frames have no curves and no sample; run \"lenscorrect "
                                        "check\" on it.\n")

    def test_leaves_the_correction_file_alone_when_it_is_named_as_the_output(self):
        self.smooth_lens()
        with open(self.path("a.olcf"), encoding="utf-8") as file:
            text = file.read()
        self.expect(self.run_program("export", "--opentrackio", "a.olcf", "-o", "./a.olcf"), 2, "",
                    'lenscorrect: The output would replace its own input, "./a.olcf"; choose another output.\n')
        with open(self.path("a.olcf"), encoding="utf-8") as file:
            self.assertEqual(file.read(), text)

    def test_works_without_a_recording_format(self):
        self.smooth_lens(sensorWidth="0")
        document, result = self.export()
        self.assertNotIn("px", result.stdout)
        self.assertNotIn("activeSensorResolution", document["samples"][0]["static"]["camera"])


program.main()

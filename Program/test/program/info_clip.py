"""What info tells about clips: the same as the nodes do."""
import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import exr
import program


class InfoClip(program.ProgramTest):
    def setUp(self):
        super().setUp()
        # Five folders down, so that a search up the ancestors stays in the test's folder.
        self.clip_folder = self.path("1", "2", "3", "4", "5", "clip")
        os.makedirs(self.clip_folder)

    def clip(self, *names):
        return os.path.join(self.clip_folder, *names)

    def write_frame(self, frame, timecode=None, size="64x36"):
        attributes = ["--attrib:type=timecode", "smpte:TimeCode", timecode] if timecode else []
        subprocess.run(["oiiotool", "--create", size, "4", "-d", "half", *attributes, "-o", self.clip(f"A001C002.{frame}.exr")],
                       check=True, capture_output=True)

    def write_correction(self, frames):
        with open(self.clip("A001C002.olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=frames, videoFileName="A001C002", clipWidth="64", clipHeight="36"))

    def info(self, *arguments, status=0, environment=None):
        result = self.run_program("info", self.clip("A001C002.%04d.exr"), "--json", "--frames", *arguments, environment=environment)
        self.expect(result, status, errors="")
        return program.validated(json.loads(result.stdout), "info")

    def test_finds_file_and_record_by_frame_number(self):
        self.write_correction([0, 1])
        for frame in (1001, 1002):
            self.write_frame(frame)
        report = self.info()
        self.assertEqual(report["correctionFile"], self.clip("A001C002.olcf"))
        self.assertEqual([(frame["frame"], frame["record"]["key"], frame["record"]["frame"]) for frame in report["frames"]],
                         [(1001, "frameNumber", 0), (1002, "frameNumber", 1)])

    def test_finds_the_record_by_timecode(self):
        self.write_correction([0, 1, 2])
        self.write_frame(1001, "00:00:00:02")
        record = self.info()["frames"][0]["record"]
        self.assertEqual((record["key"], record["lookedUp"], record["frame"]), ("timecode", "00:00:00:02", 2))

    def test_tells_why_a_clip_without_a_correction_file_fails(self):
        self.write_frame(1001)
        report = self.info(status=1)
        self.assertEqual(report["correctionFile"], None)
        self.assertIn(self.clip_folder, report["searchedFolders"])
        self.assertEqual(report["passedOverFiles"], [])
        self.assertEqual(report["frames"][0]["error"],
                         "Correction file could not be found.")

    def test_tells_which_correction_files_are_not_the_clips(self):
        self.write_frame(1001)
        with open(self.clip("A001C002.olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=[0], videoFileName="A001C001", clipName=""))
        reason = 'its header names the clip "A001C001", not "A001C002"'
        self.assertEqual(self.info(status=1)["passedOverFiles"], [{"path": self.clip("A001C002.olcf"), "reason": reason}])
        text = self.run_program("info", self.clip("A001C002.%04d.exr")).stdout
        self.assertIn(f"Rejected          {self.clip('A001C002.olcf')}: {reason}\n", text)

    def test_searches_under_the_name_in_the_metadata_as_render_does(self):
        self.write_frame(1001)
        self.write_correction([0])
        with open(self.clip("A001C002.metadata.json"), "w", encoding="utf-8") as file:
            file.write('{"input/filename": "A007_C008.R3D", "r3d/reel_id_full": "A007_C008", '
                       '"r3d/framerate": 24, "r3d/start_absolute_timecode": "00:00:00:00"}')
        text = self.run_program("info", self.clip("A001C002.%04d.exr")).stdout
        self.assertIn("Correction file   none found. The clip's name, \"A007_C008\", is from its metadata; its files are "
                      f'"{self.clip("A001C002.%04d.exr")}". Folders searched:\n', text)
        self.assertIn(f"Rejected          {self.clip('A001C002.olcf')}: its name does not contain \"A007_C008\"\n", text)
        named = self.clip("A007_C008.olcf")
        with open(named, "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=[0], videoFileName="A007_C008", clipWidth="64", clipHeight="36"))
        self.assertEqual(self.info()["correctionFile"], named)

    def test_tells_only_the_frames_of_a_range(self):
        self.write_correction([0, 1])
        for frame in (1001, 1002):
            self.write_frame(frame)
        report = self.info("--range", "1002-1003", status=1)
        self.assertEqual([(frame["frame"], frame["ok"]) for frame in report["frames"]], [(1002, True), (1003, False)])

    def test_goes_on_after_a_frame_that_cannot_be_read(self):
        self.write_correction([0, 1])
        self.write_frame(1001)
        with open(self.clip("A001C002.1002.exr"), "w", encoding="utf-8") as file:
            file.write("no picture")
        report = self.info(status=1)
        self.assertEqual([frame["ok"] for frame in report["frames"]], [True, False])

    def test_tells_of_a_frame_of_another_shape(self):
        self.write_correction([0])
        self.write_frame(1001, size="64x48")
        frame = self.info(status=1)["frames"][0]
        self.assertEqual(frame["error"], "Aspect ratio of the current frame is not as expected. Recommended resolution is 64x36 px.")
        self.assertEqual(frame["details"], "Current Frame Resolution: 64x48 px\nRecording Format Resolution: 64x36 px\n")

    def test_takes_a_correction_file_by_hand(self):
        self.write_frame(1001)
        other = self.path("other.olcf")
        with open(other, "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=[0], videoFileName="A001C002", clipWidth="64", clipHeight="36"))
        report = self.info("--correction-file", other)
        self.assertEqual((report["correctionFile"], report["frames"][0]["record"]["frame"]), (other, 0))

    RECORD = """{"recordingFormat": {"camera": {"manufacturer": "", "model": ""},
        "clipResolution": {"width": 64, "height": 36}, "imageRadius": 18.357559750685822},
        "frameData": {"interpolationPoints": {"heights": [0, 5, 10, 14, 17, 19, 21.4],
        "shading": [100, 98, 93, 86, 79.5, 74.5, 68], "radialDistortion": [0, 1.2, 4.8, 9.4, 13.9, 17.3, 22]}}}"""

    def write_frame_with_record(self):
        exr.write(self.clip("A001C002.1001.exr"), exr.Part(
            (0, 0, 63, 35), attributes={"com.orvex.LensCorrection": exr.text(self.RECORD)})
            .fill("R", exr.HALF, lambda x, y: 0.5))

    def test_names_the_frames_record_as_the_source_of_the_recording_format(self):
        self.write_frame_with_record()
        report = self.info()
        self.assertEqual(report["recordingFormat"]["origin"], "record")
        self.assertEqual(report["frames"][0]["record"]["key"], "ownRecord")

    def test_misses_no_correction_file_where_the_frames_carry_records(self):
        self.write_frame_with_record()
        clip = self.clip("A001C002.%04d.exr")
        lines = self.run_program("info", clip).stdout.splitlines()
        self.assertEqual(lines[:3], [
            f"Picture files     {clip}",
            "Correction file   none; the frames carry their own records",
            "Recording format  32 x 18 mm for 64 x 36 px, radius 18.358 mm, from the frame's own record"])

    def test_knows_all_but_the_nodes_result_without_a_device(self):
        self.write_correction([0])
        self.write_frame(1001)
        frame = self.info(status=1, environment={"OCL_ICD_VENDORS": "/nonexistent"})["frames"][0]
        self.assertEqual(frame["error"], "Failed to query number of all available platforms! (-1001)")
        self.assertEqual(frame["record"]["frame"], 0)


program.main()

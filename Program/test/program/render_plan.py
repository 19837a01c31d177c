"""lenscorrect render --dry-run: what a job would do, told without doing it."""
import json
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test

UNDISTORT = ("--distortion", "undistort")


class RenderPlan(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens(count=3)
        self.write_plate(self.part("RGB", exr.HALF), frames=(1001, 1002, 1003))

    def plan(self, *arguments, status=0, clip="plate.%04d.exr", out="out/f.%04d.exr", errors=""):
        """Frame → (state, reason)."""
        result = self.run_program("render", clip, *UNDISTORT, "-o", out, "--dry-run", "--json", *arguments)
        self.expect(result, status, errors=errors)
        return program.validated(json.loads(result.stdout), "render")

    def states(self, *arguments, **options):
        return {frame["frame"]: (frame["state"], frame["reason"])
                for frame in self.plan(*arguments, **options)["frames"]}

    def test_says_in_text_what_becomes_of_each_frame(self):
        result = self.run_program("render", "plate.%04d.exr", *UNDISTORT, "-o", "out/f.%04d.exr", "--dry-run",
                                  "--threads", "2", "--frames", "1001-1004")
        self.expect(result, 1, errors='lenscorrect: Frames are missing in the clip "plate.%04d.exr": 1004.\n')
        text = re.sub(r"\d+ x \d+ px from -?\d+,-?\d+", "WINDOW", result.stdout)
        text = re.sub(r"Memory:.*", "Memory: M", text)
        self.assertEqual(text, f"""\
Clip:             plate.%04d.exr
Correction file:  {self.path("plate.olcf")}
Output:           out/f.%04d.exr
Frames:           3 render, 1 missing
Memory: M
Threads:          2

1001-1003  render  WINDOW  no file yet
1004  missing  The clip "plate.%04d.exr" has no such frame.
""")

    def test_tells_the_data_windows_that_the_job_writes(self):
        planned = self.plan("--frames", "1002")["frames"][0]["dataWindows"]
        self.expect(self.render(*UNDISTORT, "--frames", "1002"), 0, "", "")
        x_min, y_min, x_max, y_max = exr.read(self.path("out", "f.1002.exr"))[0].data
        self.assertEqual(planned, [{"x": x_min, "y": y_min, "width": x_max - x_min + 1, "height": y_max - y_min + 1}])

    def test_writes_nothing(self):
        before = sorted(os.listdir(self.folder))
        self.plan()
        self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_needs_no_device(self):
        result = self.run_program("render", "plate.%04d.exr", *UNDISTORT, "-o", "out/f.%04d.exr", "--dry-run",
                                  environment={"OCL_ICD_VENDORS": self.folder})
        self.expect(result, 0, errors="")

    def test_says_why_a_frame_is_rendered_again(self):
        self.expect(self.render(*UNDISTORT, "--frames", "1001-1002"), 0, "", "")
        with open(self.path("out", "f.1002.exr"), "ab") as file:
            file.write(b"more")
        self.assertEqual(self.states("--skip-existing"), {
            1001: ("finished", "made from the same inputs with the same options"),
            1002: ("render", "the file was changed, or not written by such a job"),
            1003: ("render", "no file yet")})
        self.assertEqual(self.states("--skip-existing", "--type", "float")[1001],
                         ("render", "the file was made from other inputs or with other options"))
        self.assertEqual(self.states("--overwrite")[1001], ("render", "replaces the file"))

    def test_says_which_frames_cannot_be_corrected(self):
        marked = self.part("RGB", exr.HALF, attributes={"com.orvex.lenscorrect.distortion": exr.text("undistort")})
        self.write_plate(marked, frames=(1003,))
        states = self.states(status=1)
        self.assertEqual([states[frame][0] for frame in (1001, 1002, 1003)], ["render", "render", "refused"])
        self.expect(self.render(*UNDISTORT), 1, "",
                    f"Frame 1003 (plate.1003.exr): {states[1003][1]}\nlenscorrect: 1 of 3 frames failed: 1003\n")
        self.assertEqual(self.states("--force", "--overwrite")[1003][0], "render")

    def test_tells_what_the_user_should_know_of_the_clip(self):
        os.remove(self.path("plate.1002.exr"))
        self.states(errors='lenscorrect: Frames are missing in the clip "plate.%04d.exr": 1002.\n')

    def test_ends_like_the_job_where_no_frame_can_be_rendered(self):
        for arguments, clip in ((("--frames", "7"), "plate.%04d.exr"), ((), "nothing.%04d.exr")):
            planned = self.run_program("render", clip, *UNDISTORT, "-o", "out/f.%04d.exr", *arguments, "--dry-run")
            done = self.run_program("render", clip, *UNDISTORT, "-o", "out/f.%04d.exr", *arguments)
            self.assertEqual(done.returncode, 2)
            self.expect(planned, 2, "", done.stderr)

    def test_json_is_for_the_plan_alone(self):
        result = self.run_program("render", "plate.%04d.exr", *UNDISTORT, "-o", "out/f.%04d.exr", "--json")
        self.expect(result, 2, "", 'lenscorrect: --json requires --dry-run\n'
                                   'Run "lenscorrect render --help" for the options and an example.\n')


program.main()

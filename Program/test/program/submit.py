"""The folder of a farm job: its steps as an engine runs them, with a stub for the renderer that writes down how it was
started; the summary of what it reported; and OpenCue's job description. Slurm/run.py runs a job on a real farm."""
import json
import os
import re
import signal
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program

HERE = os.path.dirname(os.path.abspath(__file__))

STUB = """#!/bin/bash
printf '%s\\n' "$@" >arguments
echo "$POCL_MAX_PTHREAD_COUNT" >cores
"""


class Submit(program.ProgramTest):
    def submit(self, *options):
        return self.run_program("submit", "pl'ate.%04d.exr", "-o", "out/plate.%04d.exr", "--distortion", "undistort",
                                "--engine", "opencue", "--show", "show", "--shot", "shot", "--program", self.path("stub"),
                                *options, environment={"USER": "artist"})

    def given_job(self, *options, stub=""):
        """A job of frames 1001 to 1025 in chunks of 10."""
        with open(self.path("stub"), "w", encoding="utf-8") as file:
            file.write(STUB + stub)
        os.chmod(self.path("stub"), 0o755)
        self.expect(self.submit("--frames", "1001-1025", *options), 0, errors="")
        self.job = self.path("lenscorrect-job-1")

    def step(self, *arguments, status=0, **environment):
        result = subprocess.run(["bash", os.path.join(self.job, "job.sh"), *arguments], capture_output=True,
                                encoding="utf-8", cwd="/", env={**os.environ, **environment})
        self.expect(result, status, "", "")

    def text(self, *names):
        with open(self.path(*names), encoding="utf-8") as file:
            return file.read()

    def report(self, frames, state, **event):
        """Lines of a stub that reports frames; the files of those that did not fail are made."""
        lines = ["mkdir -p out"]
        for frame in frames:
            file = f"out/plate.{frame}.exr"
            if state != "failed":
                lines.append(f"touch {file}")
            lines.append("echo '" + json.dumps({"event": "frame", "frame": frame, "state": state, "file": file, **event})
                         + "'")
        return "\n".join(lines) + "\n"

    def summary(self, status):
        result = self.run_program("summary", self.job)
        self.expect(result, status, errors="")
        return result.stdout

    # The steps of a job.

    def test_a_chunk_renders_its_frames_with_the_options_that_were_submitted(self):
        self.given_job("--map", "--overscan", "5", "--type", "half")
        self.step("chunk", SLURM_ARRAY_TASK_ID="2")
        self.assertEqual(self.text("arguments").splitlines(),
                         ["render", "pl'ate.%04d.exr", "--output=out/plate.%04d.exr", "--distortion=undistort", "--map",
                          "--overscan=5", "--type=half", "--frames=1021-1025", "--skip-existing", "--keep-going",
                          "--progress", "json"])

    def test_a_list_of_frames_is_a_step_too(self):
        self.given_job()
        self.step("frames", "1003-1004")
        self.assertIn("--frames=1003-1004", self.text("arguments").splitlines())

    def test_a_task_uses_the_cores_that_the_scheduler_gives(self):
        for name in ("SLURM_CPUS_ON_NODE", "CUE_THREADS"):
            with self.subTest(name):
                self.given_job("--folder", name)
                self.job = self.path(name)
                self.step("chunk", "0", **{name: "3"})
                self.assertEqual(self.text("arguments").splitlines()[-2:], ["--threads", "3"])
                self.assertEqual(self.text("cores"), "3\n")

    def test_the_first_step_renders_a_test_picture(self):
        self.given_job()
        self.step("warm")
        self.assertEqual(self.text("arguments").splitlines(), ["devices", "--json"])

    def test_the_first_step_renders_it_on_the_device_of_the_job(self):
        self.given_job("--device", "Tesla T4")
        self.step("warm")
        self.assertEqual(self.text("arguments").splitlines(), ["devices", "--json", "--device=Tesla T4"])
        self.step("chunk", "0")
        self.assertIn("--device=Tesla T4", self.text("arguments").splitlines())

    def test_a_step_ends_with_the_status_of_the_renderer(self):
        self.given_job(stub="echo no >&2; exit 3\n")
        self.step("chunk", "1", status=3)
        self.assertEqual(self.text(self.job, "report", "1.status"), "3\n")
        self.assertEqual(self.text(self.job, "log", "1.log"), "no\n")

    def test_sigterm_reaches_the_renderer_and_its_status_is_kept(self):
        self.given_job(stub="trap 'echo stopped; exit 143' TERM\necho running >state\nwhile :; do read -t 1 <>pipe; done\n")
        os.mkfifo(self.path("pipe"))
        os.mkfifo(self.path("state"))
        step = subprocess.Popen(["bash", os.path.join(self.job, "job.sh"), "chunk", "0"])
        self.assertEqual(self.text("state"), "running\n")  # waits until it runs
        step.send_signal(signal.SIGTERM)
        self.assertEqual(step.wait(60), 143)
        self.assertEqual(self.text(self.job, "report", "0.status"), "143\n")
        self.assertEqual(self.text(self.job, "report", "0.0.jsonl"), "stopped\n")

    def test_without_frames_those_on_disk_are_submitted(self):
        for frame in (7, 8, 9, 12):
            with open(self.path(f"pl'ate.{frame:04}.exr"), "w", encoding="utf-8"):
                pass
        self.expect(self.submit(), 0, errors="")
        self.assertEqual(self.text("lenscorrect-job-1", "frames.txt"), "7-9,12\n")

    def test_frames_are_shared_out_in_chunks(self):
        self.given_job()
        self.assertEqual(self.text(self.job, "chunks.txt"), "1001-1010\n1011-1020\n1021-1025\n")

    # The summary.

    def test_the_summary_of_a_finished_job_is_good(self):
        self.given_job(stub=self.report(range(1001, 1026), "done"))
        self.step("chunk", "0")
        self.assertEqual(self.summary(0), "25 frames: 25 done, 0 failed, 0 without a result.\n")

    def test_the_summary_names_failed_frames_and_those_without_a_result(self):
        self.given_job(stub=self.report([1001, 1003], "done") + self.report([1002], "failed", message="plate.1002.exr: broken")
                       + "exit 1\n")
        self.step("chunk", "0", status=1)
        self.assertEqual(self.summary(1),
                         "25 frames: 2 done, 1 failed, 22 without a result.\n"
                         "Failed:\n  1002: plate.1002.exr: broken\n"
                         "Without a result: 1004-1025\n"
                         "Chunk 0 ended with status 1; see log/0.log.\n"
                         "To render these frames again, submit the job again: finished frames are skipped.\n")

    def test_the_summary_as_json_follows_its_schema(self):
        self.given_job(stub=self.report([1002], "failed", message="broken") + "exit 1\n")
        self.step("chunk", "0", status=1)
        result = self.run_program("summary", self.job, "--json")
        self.expect(result, 1, errors="")
        self.assertEqual(program.validated(json.loads(result.stdout), "summary"),
                         {"version": 1, "total": 25, "done": 0, "failed": [{"frame": 1002, "message": "broken"}],
                          "withoutResult": "1001,1003-1025", "failedSteps": {"0": 1}, "exitCode": 1})

    def test_a_step_that_was_started_again_counts_with_both_its_reports(self):
        self.given_job(stub="if [ ! -e again ]; then touch again\n" + self.report([1001], "done")
                       + self.report([1002], "failed", message="busy") + "echo '{\"event\": \"fra'\nexit 143; fi\n"
                       + self.report([1001], "skipped") + self.report(range(1002, 1026), "done"))
        self.step("chunk", "0", status=143)
        self.step("chunk", "0")
        self.assertEqual(self.summary(0), "25 frames: 25 done, 0 failed, 0 without a result.\n")

    def test_a_frame_whose_file_has_gone_is_not_done(self):
        self.given_job(stub=self.report(range(1001, 1026), "done"))
        self.step("chunk", "0")
        os.remove(self.path("out", "plate.1004.exr"))
        self.assertIn("\nWithout a result: 1004\n", self.summary(1))

    def test_a_job_that_never_began_for_lack_of_a_device_ends_with_that_status(self):
        self.given_job(stub="exit 3\n")
        self.step("warm", status=3)
        self.assertIn("The first use of the OpenCL device ended with status 3; see log/warm.log.\n", self.summary(3))

    def test_another_folder_is_refused(self):
        self.expect(self.run_program("summary", "."), 2, "", 'lenscorrect: .: this is not a job folder. Give the one printed by '
                                                             '"lenscorrect submit".\n')

    # What is refused.

    def test_options_that_do_not_go_with_a_farm_are_refused(self):
        for options, reason in (
                (["--overwrite"], "--overwrite cannot be used on a farm: tasks resume where they stopped and get their "
                                  "cores from the farm. Omit it."),
                (["--wait"], "--wait, --limit and --engine-option are for Slurm.")):
            with self.subTest(options):
                self.expect(self.submit("--frames", "1", *options), 2, "", f"lenscorrect: {reason}\n")
                self.assertFalse(os.path.exists(self.path("lenscorrect-job-1")))

    def test_what_render_refuses_is_refused_at_once(self):
        self.expect(self.run_program("submit", "a.%04d.exr", "-o", "b.%04d.exr", "--frames", "1"), 2, "",
                    "lenscorrect: No correction is requested: give --distortion undistort|distort, --shading remove|add, or "
                    "both.\n")

    def test_outputs_that_every_task_would_refuse_are_refused_at_once(self):
        with open(self.path("a.0002.exr"), "w", encoding="utf-8"):
            pass
        for output, reason in (
                ("a.%04d.exr", 'Frame 2 would replace its own input, "a.0002.exr"; choose another output.'),
                ("b.exr", '3 frames cannot be written to one file, "b.exr"; put %04d in its name.')):
            with self.subTest(output):
                self.expect(self.run_program("submit", "a.%04d.exr", "-o", output, "--frames", "1-3", "--shading", "remove",
                                             "--engine", "opencue", "--show", "show", "--shot", "shot"), 2, "",
                            f"lenscorrect: {reason}\n")
                self.assertFalse(os.path.exists(self.path("lenscorrect-job-1")))

    def test_a_folder_that_exists_is_refused(self):
        os.mkdir(self.path("job"))
        self.expect(self.submit("--frames", "1", "--folder", "job"), 2, "",
                    f"lenscorrect: {self.path('job')}: the job folder already exists. Give another --folder.\n")

    def test_a_machine_without_slurm_is_told(self):
        result = self.run_program("submit", "a.%04d.exr", "-o", "b.%04d.exr", "--shading", "remove", "--frames", "1",
                                  environment={"PATH": "/usr/bin:/bin"})
        self.assertEqual(result.returncode, 3)
        self.assertEqual(result.stderr,
                         "lenscorrect: sbatch was not found. Submit from a machine that has Slurm's programs.\n")
        self.assertFalse(os.path.exists(self.path("lenscorrect-job-1")))

    def test_an_option_for_slurm_may_be_one_of_submit_too(self):
        result = self.run_program("submit", "a.%04d.exr", "-o", "b.%04d.exr", "--shading", "remove", "--frames", "1",
                                  "--engine-option=--wait", environment={"PATH": "/usr/bin:/bin"})
        self.assertEqual(result.returncode, 3, result.stderr)

    def test_the_documented_commands_work(self):
        self.given_job(stub='if [ "$1" = summary ]; then echo "the summary"; fi\n')
        for step in ("warm", "chunk 0", "frames 1003-1004", "summary"):
            command = program.documented("Farm", "bash lenscorrect-job-1/job.sh " + step)
            result = subprocess.run(command, cwd=self.folder, capture_output=True, encoding="utf-8")
            self.expect(result, 0, "the summary\n" if step == "summary" else "", "")
        for command in ("lenscorrect summary lenscorrect-job-1", "lenscorrect summary lenscorrect-job-1 --json"):
            self.expect(self.run_program(*program.documented("Farm", command)[1:]), 1, errors="")
        command = program.documented("Farm", "lenscorrect submit plate.%04d.exr -o out/plate.%04d.exr --distortion undistort "
                                             "--frames 1001-1025 --engine opencue --show show --shot shot")
        self.expect(self.run_program(*command[1:]), 0, errors="")
        self.assertTrue(os.path.isfile(self.path("lenscorrect-job-2", "opencue.xml")))

    # OpenCue.

    def test_the_opencue_job_follows_its_layout(self):
        self.given_job("--cores", "4", "--name", "a & b")
        declaration, body = self.text(self.job, "opencue.xml").split("<spec>", 1)
        self.assertEqual(declaration, '<?xml version="1.0"?>\n<!DOCTYPE spec SYSTEM '
                                      '"http://localhost:8080/spcue/dtd/cjsl-1.15.dtd">\n')
        result = subprocess.run(["xmllint", "--noout", "--nonet", "--dtdvalid", os.path.join(HERE, "opencue.dtd"), "-"],
                                input="<spec>" + body, capture_output=True, encoding="utf-8")
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_the_opencue_job_renders_frames_in_chunks_after_the_cache_is_filled(self):
        self.given_job("--cores", "4")
        xml = self.text(self.job, "opencue.xml")
        script = self.job + "/job.sh"
        self.assertIn(f"<cmd>bash '{script}' frames #FRAMESPEC#</cmd>\n        <range>1001-1025</range>\n"
                      "        <chunk>10</chunk>\n        <cores>4</cores>\n", xml)
        self.assertEqual(re.findall(r'<layer name="(\w+)" type="(\w+)">', xml),
                         [("warm", "Util"), ("render", "Render"), ("summary", "Post")])
        self.assertIn("<deplayer>render</deplayer>\n      <onjob>plate</onjob>\n      <onlayer>warm</onlayer>", xml)
        self.assertIn("<show>show</show>\n  <shot>shot</shot>\n  <user>artist</user>", xml)

    def test_opencue_needs_show_and_shot(self):
        self.expect(self.run_program("submit", "a.%04d.exr", "-o", "b.%04d.exr", "--shading", "remove", "--frames", "1",
                                     "--engine", "opencue"), 2, "", "lenscorrect: OpenCue needs --show and --shot.\n")


program.main()

"""Jobs on a real farm: Slurm's own daemons on this machine. Arguments: the program, and a folder that keeps Slurm's packages
between runs. Ends with 77, which counts as skipped, where they can neither be found there nor downloaded."""
import json
import os
import re
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
CACHE = sys.argv.pop(2)
import program
import slurm

# The renderer; but the first start of chunk 7 renders three frames only and then waits for the end that a farm sets.
INTERRUPTED = """#!/bin/bash
if [ "$1" = render ] && [ "$SLURM_ARRAY_TASK_ID" = 7 ] && [ -z "$SLURM_RESTART_COUNT" ]; then
    {program} "${{@/#--frames=*/--frames=1071-1073}}"
    trap 'exit 143' TERM
    echo waiting >state
    while :; do read -t 1 <>gate; done
fi
exec {program} "$@"
"""


class Slurm(program.ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.farm_folder = tempfile.mkdtemp(prefix="orvex-slurm-")
        cls.addClassCleanup(program.shutil.rmtree, cls.farm_folder, ignore_errors=True)
        try:
            cls.farm = slurm.Farm(CACHE, cls.farm_folder, cores=2)
        except subprocess.CalledProcessError as error:
            print(f"Slurm's packages could not be had: {error}")
            sys.exit(77)
        cls.addClassCleanup(cls.farm.stop)

    def given_program(self, text):
        with open(self.path("program"), "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(self.path("program"), 0o755)

    def start(self, *arguments):
        """Starts the program in the case's folder, on the farm."""
        return subprocess.Popen([program.PROGRAM, *arguments], cwd=self.folder, env=self.farm.environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")

    def submit(self, *options):
        return self.start("submit", "clip/plate.%04d.exr", "-o", "out/f.%04d.exr", "--distortion", "undistort", "--wait",
                          "--program", self.path("program"), *options)

    def until(self, is_reached, what):
        for _ in range(3000):
            if is_reached():
                return
            time.sleep(0.1)
        self.fail("It never came to this: " + what + "\n" + self.farm.run("squeue", "--array"))

    def render_again_at_once(self, task):
        """Puts a running task back into the queue, from where Slurm would start it after two minutes."""
        def state():
            return self.farm.run("squeue", "--noheader", "--jobs=" + task, "--format=%T %r", check=False).strip()
        self.farm.run("scontrol", "requeue", task)
        self.until(lambda: state() == "PENDING BeginTime", "the task waits to be started again")
        self.start_again_at_once(task)

    def start_again_at_once(self, task):
        """A second later: what the first start was given to begin with is void for the rest of the second it ended in."""
        self.farm.run("scontrol", "update", "jobid=" + task, "StartTime=now+1")

    def test_one_bad_frame_and_one_stopped_task_cost_one_frame(self):
        self.expect(self.run_program("sample", "clip", "--frames", "100", "--size", "64x64", "--progress", "none"), 0)
        os.truncate(self.path("clip", "plate.1042.exr"), 600)
        self.given_program(INTERRUPTED.format(program=program.PROGRAM))
        for name in ("state", "gate"):
            os.mkfifo(self.path(name))

        command = program.documented("Farm", "lenscorrect submit clip/plate.%04d.exr -o out/f.%04d.exr "
                                             "--distortion undistort --chunk 10 --cores 1 --wait")
        submission = self.start(*command[1:], "--program", self.path("program"))
        first_line = submission.stdout.readline()
        jobs = re.fullmatch(r"Slurm jobs: (\d+) \(kernel cache\), (\d+) \(100 frames in 10 chunks\), then the summary\n",
                            first_line)
        self.assertTrue(jobs, first_line)
        with open(self.path("state"), encoding="utf-8") as state:
            self.assertEqual(state.read(), "waiting\n")
        self.render_again_at_once(jobs[2] + "_7")
        output, errors = submission.communicate(timeout=300)

        self.assertEqual(errors, "")
        lines = output.splitlines()
        self.assertEqual(lines[:2], ["100 frames: 99 done, 1 failed, 0 without a result.", "Failed:"])
        self.assertRegex(lines[2], r"^  1042: .*plate\.1042\.exr")
        self.assertEqual(lines[3:], ["Chunk 4 ended with status 1; see log/4.log.",
                                     "To render these frames again, submit the job again: finished frames are skipped."])
        self.assertEqual(submission.returncode, 1)
        self.assertIn("ExitCode=1:0", self.farm.run("scontrol", "show", "job", jobs[2] + "_4"))
        # The second start of the stopped task left the three frames of the first as they were.
        with open(self.path("lenscorrect-job-1", "report", "7.1.jsonl"), encoding="utf-8") as file:
            self.assertEqual(file.read().count('"state":"skipped"'), 3)
        # One core was given, and one was used.
        self.assertIn("CPUs/Task=1", self.farm.run("scontrol", "show", "job", jobs[2] + "_4"))

        self.expect(self.run_program("render", "clip/plate.%04d.exr", "-o", "here/f.%04d.exr", "--distortion", "undistort",
                                     "--progress", "none"), 1)
        names = sorted(name for name in os.listdir(self.path("out")) if not name.startswith("."))
        self.assertEqual(names, [f"f.{frame}.exr" for frame in range(1001, 1101) if frame != 1042])
        self.assertFalse([name for name in os.listdir(self.path("out")) if ".tmp." in name])
        for name in names:
            with open(self.path("out", name), "rb") as ours, open(self.path("here", name), "rb") as theirs:
                self.assertEqual(ours.read(), theirs.read(), name)

    def test_a_cancelled_task_leaves_whole_frames_alone_and_is_completed_when_it_is_put_back(self):
        self.expect(self.run_program("sample", "clip", "--frames", "5", "--size", "960x540", "--progress", "none"), 0)
        for frame in range(1006, 1061):  # enough to be stopped amid them
            os.symlink("plate.1001.exr", self.path("clip", f"plate.{frame}.exr"))
        submission = self.start("submit", "clip/plate.%04d.exr", "-o", "out/f.%04d.exr", "--distortion", "undistort",
                                "--chunk", "60", "--cores", "1", "--wait", "--program", program.PROGRAM)
        task = re.search(r"(\d+) \(60 frames", submission.stdout.readline())[1] + "_0"
        self.until(lambda: len(self.events()) > 1, "a frame is done")
        self.farm.run("scancel", task)
        output, errors = submission.communicate(timeout=120)

        counts = re.match(r"60 frames: (\d+) done, 0 failed, (\d+) without a result\.\nWithout a result: ", output)
        self.assertTrue(counts, output)
        self.assertGreater(int(counts[2]), 0)
        self.assertIn("Chunk 0 ended with status 143; see log/0.log.\n", output)
        self.assertEqual((submission.returncode, errors), (1, ""))
        done = [event["file"] for event in self.events() if event["event"] == "frame"]
        self.assertEqual(len(done), int(counts[1]))
        self.assertEqual(self.pictures(), sorted(done))
        # The frames in flight were completed: the renderer came to its ordinary end.
        self.assertEqual(self.events()[-1]["event"], "end")

        self.farm.run("scontrol", "requeue", task)
        self.start_again_at_once(task)
        self.until(lambda: self.run_program("summary", "lenscorrect-job-1").returncode == 0, "all frames are done")
        self.assertEqual(len(self.pictures()), 60)

    def events(self):
        """What the first start of chunk 0 has reported."""
        try:
            with open(self.path("lenscorrect-job-1", "report", "0.0.jsonl"), encoding="utf-8") as file:
                return [json.loads(line) for line in file if line.endswith("\n")]
        except FileNotFoundError:
            return []

    def pictures(self):
        """Everything that lies where the frames are put, but for the list of what is finished."""
        return sorted(os.path.join("out", name) for name in os.listdir(self.path("out")) if not name.endswith(".frames"))

    def test_without_a_device_no_chunk_starts_and_the_status_tells_it(self):
        self.given_program(f'#!/bin/bash\nif [ "$1" = devices ]; then exit 3; fi\nexec {program.PROGRAM} "$@"\n')
        submission = self.submit("--frames", "1001-1030")
        output, _ = submission.communicate(timeout=120)
        self.assertIn("30 frames: 0 done, 0 failed, 30 without a result.\n", output)
        self.assertIn("The first use of the OpenCL device ended with status 3", output)
        self.assertEqual(submission.returncode, 3)

    def test_no_array_is_longer_than_the_farm_takes(self):
        self.given_program("#!/bin/bash\n")
        submission = self.start("submit", "clip/plate.%04d.exr", "-o", "out/f.%04d.exr", "--distortion", "undistort",
                                "--frames", "1-120", "--chunk", "1", "--limit", "2", "--engine-option=--time=5",
                                "--engine-option=--hold", "--program", self.path("program"))
        output, errors = submission.communicate(timeout=120)
        self.assertEqual(errors, "lenscorrect: Slurm allows 50 tasks at most; each renders 3 frames.\n")
        jobs = re.match(r"Slurm jobs: (\d+) \(kernel cache\), (\d+) \(120 frames in 40 chunks\), then the summary\n", output)
        self.assertTrue(jobs, output)
        array = self.farm.run("scontrol", "show", "job", jobs[2])
        for text in ("ArrayTaskId=0-39%2 ArrayTaskThrottle=2", "TimeLimit=00:05:00"):
            self.assertIn(text, array)
        self.farm.run("scancel", *jobs.groups())

    def test_what_slurm_refuses_is_told_and_taken_back(self):
        self.given_program("#!/bin/bash\n")
        submission = self.submit("--frames", "1-10", "--engine-option=--partition=nowhere")
        _, errors = submission.communicate(timeout=60)
        self.assertEqual(submission.returncode, 3)
        self.assertIn("invalid partition specified: nowhere", errors)
        self.assertIn("sbatch refused the job (status 1); its reason is shown above.", errors)


program.main()

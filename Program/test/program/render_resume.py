"""lenscorrect render stopped and taken up again: what is skipped, what is made again, and that the end is the same.

ORVEX_RESUME_ROUNDS: how often the long job is killed (default 6); ORVEX_RESUME_SEED: where the moments begin.
"""
import fcntl
import json
import os
import random
import shutil
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test

UNDISTORT = ("--distortion", "undistort")
ROUNDS = int(os.environ.get("ORVEX_RESUME_ROUNDS", "6"))
SEED = int(os.environ.get("ORVEX_RESUME_SEED", "1"))


class Resume(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens(count=3)
        self.write_plate(self.part("RGB", exr.HALF), frames=(1001, 1002, 1003))

    def states(self, *arguments, status=0, clip="plate.%04d.exr"):
        """What the job says about each frame: {1001: "done", …}."""
        result = self.run_program("render", clip, *UNDISTORT, "-o", "out/f.%04d.exr", "--progress", "json",
                                  *arguments)
        self.expect(result, status)
        events = program.progress_events(result.stdout)
        self.assertEqual([events[0]["event"], events[-1]["event"]], ["start", "end"])
        frames = {event["frame"]: event["state"] for event in events if event["event"] == "frame"}
        for state in ("done", "skipped", "failed"):
            self.assertEqual(events[-1][state], list(frames.values()).count(state))
        return frames

    def all_are(self, state):
        return dict.fromkeys((1001, 1002, 1003), state)

    def test_skips_what_is_finished(self):
        self.assertEqual(self.states(), self.all_are("done"))
        self.assertEqual(self.states("--skip-existing"), self.all_are("skipped"))

    def test_makes_a_frame_again_that_was_cut_changed_or_lost(self):
        self.states()
        os.truncate(self.path("out", "f.1001.exr"), 1000)
        os.remove(self.path("out", "f.1003.exr"))
        self.assertEqual(self.states("--skip-existing"), {1001: "done", 1002: "skipped", 1003: "done"})

    def test_makes_a_frame_again_whose_input_changed(self):
        self.states()
        self.write_plate(self.part("RGB", exr.FLOAT), frames=(1001,))
        self.assertEqual(self.states("--skip-existing"), {1001: "done", 1002: "skipped", 1003: "skipped"})

    def test_makes_all_frames_again_when_the_correction_file_changed(self):
        self.states()
        self.write_lens(count=3, lensTypeName="Another lens")
        self.assertEqual(self.states("--skip-existing"), self.all_are("done"))

    def test_makes_all_frames_again_when_an_option_changed(self):
        self.states()
        for changed in (("--type", "float"), ("--compression", "zips"), ("--zip", "small"), ("--window", "format"), ("--overscan", "10"),
                        ("--image-area", "32x18", "--clip-resolution", "64x36")):
            self.assertEqual(self.states("--skip-existing", *changed), self.all_are("done"), changed)

    def test_makes_all_frames_again_when_a_still_that_is_the_plate_changed(self):
        exr.write(self.path("still.exr"), self.part("RGB"))
        record = exr.text('{"recordingFormat": {"camera": {"manufacturer": "", "model": ""}, "clipResolution": {"width":'
                          ' 64, "height": 36}, "imageRadius": 18.36}, "frameData": {"interpolationPoints": {"heights":'
                          ' [0, 5, 10, 14, 17, 19, 21.4], "shading": [100, 98, 93, 86, 79.5, 74.5, 68],'
                          ' "radialDistortion": [0, 1.2, 4.8, 9.4, 13.9, 17.3, 22]}}}')
        still = self.part("RGB", attributes={"com.orvex.LensCorrection": record})
        exr.write(self.path("still.exr"), still)
        self.assertEqual(self.states("--plate", "still.exr"), self.all_are("done"))
        self.assertEqual(self.states("--plate", "still.exr", "--skip-existing"), self.all_are("skipped"))
        exr.write(self.path("still.exr"), self.part("RGBA", attributes={"com.orvex.LensCorrection": record}))
        self.assertEqual(self.states("--plate", "still.exr", "--skip-existing"), self.all_are("done"))

    def test_refuses_to_replace_files_without_being_told_to(self):
        self.states()
        self.expect(self.render(*UNDISTORT), 2, "", 'lenscorrect: "out/f.1001.exr" already exists. Give --overwrite to replace existing files, or --skip-existing to keep finished frames.\n')
        self.assertEqual(self.states("--overwrite"), self.all_are("done"))

    def test_frames_that_do_not_exist_fail_and_the_others_are_written(self):
        self.assertEqual(self.states("--frames", "1002-1005", status=1),
                         {1002: "done", 1003: "done", 1004: "failed", 1005: "failed"})

    def test_frames_none_of_which_exists_are_wrong_use(self):
        self.expect(self.render(*UNDISTORT, "--frames", "2000-2001"), 2, "",
                    'lenscorrect: None of the frames 2000-2001 exists; the clip "plate.%04d.exr" has the frames '
                    '1001-1003.\n')

    def test_takes_steps_and_several_ways_to_name_a_sequence(self):
        for number, clip in enumerate(("plate.####.exr", "plate.@@@@.exr", "plate.%04d.exr")):
            out = f"out{number}/f.####.exr"
            self.expect(self.render(*UNDISTORT, "--start", "1001", "--end", "1003", "--step", "2", clip=clip, out=out),
                        0, "", "")
            self.assertEqual(self.names(f"out{number}"), ["f.1001.exr", "f.1003.exr"])

    def test_stops_at_the_first_error_on_request(self):
        os.truncate(self.path("plate.1001.exr"), 600)
        states = self.states("--stop-on-error", "--threads", "1", status=1)
        self.assertEqual(states[1001], "failed")
        self.assertNotIn(1003, states)
        self.assertEqual(self.temporaries(), [])


class Interrupted(render_test.RenderTest):
    COUNT = 48

    def setUp(self):
        super().setUp()
        self.random = random.Random(SEED)
        self.write_lens(count=self.COUNT)
        self.write_plate(self.part("RGB", exr.HALF), frames=range(1001, 1001 + self.COUNT))

    def start(self, out, *arguments):
        return subprocess.Popen(
            [program.PROGRAM, "render", "plate.%04d.exr", *UNDISTORT, "--progress", "json", "-o", out + "/f.%04d.exr",
             *arguments], cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")

    def start_held(self):
        """A job that cannot end before its progress is read: the pipe has room for less than that of all frames."""
        job = self.start(self.path("out"))
        fcntl.fcntl(job.stdout, fcntl.F_SETPIPE_SZ, 4096)
        return job

    def line(self, job):
        """The next line of the progress; no byte more is taken out of the pipe."""
        line = b""
        while not line.endswith(b"\n"):
            byte = os.read(job.stdout.fileno(), 1)
            self.assertTrue(byte, "the job ended")
            line += byte
        return line.decode()

    def contents(self, folder):
        contents = {}
        for name in self.names(folder):
            with open(self.path(folder, name), "rb") as file:
                contents[name] = file.read()
        return contents

    def reference(self):
        self.expect(self.render(*UNDISTORT, out="good/f.%04d.exr"), 0, "", "")
        good = self.contents("good")
        self.assertEqual(len(good), self.COUNT)
        return good

    def expect_whole(self, folder, good):
        contents = self.contents(folder)
        for name, content in contents.items():
            self.assertTrue(content == good[name], f"{name} is not whole (seed {SEED})")
        return contents

    def stop_at_random(self, job, number):
        """Sends the signal between the job's first breath and the moment after some of its own frames are done."""
        frames = self.random.randrange(0, 12)
        while frames > 0:
            line = job.stdout.readline()
            if not line:
                break
            frames -= json.loads(line).get("state") == "done"
        time.sleep(self.random.random() * 0.02)
        job.send_signal(number)
        job.communicate(timeout=300)

    def test_a_job_that_is_killed_and_resumed_ends_like_one_that_was_not(self):
        good = self.reference()
        kills, ends = 0, 0
        while kills < ROUNDS:
            number = signal.SIGTERM if kills % 2 else signal.SIGKILL
            job = self.start("out", "--skip-existing")
            self.stop_at_random(job, number)
            written = self.expect_whole("out", good) if os.path.isdir(self.path("out")) else {}
            if number == signal.SIGTERM:
                self.assertEqual([name for name in self.temporaries() if f".{job.pid}." in name], [])
            if job.returncode == 0:
                # It ended before the signal came: another job from the beginning.
                self.assertEqual(len(written), self.COUNT)
                shutil.rmtree(self.path("out"))
                ends += 1
                self.assertLess(ends, 10 * ROUNDS, "the signals come too late")
                continue
            # SIGTERM may come so early that nobody listens yet.
            self.assertIn(job.returncode, (-number, 143) if number == signal.SIGTERM else (-number,))
            kills += 1
        result = self.render(*UNDISTORT, "--skip-existing")
        self.expect(result, 0, "", "")
        self.assertTrue(self.contents("out") == good, f"another end (seed {SEED})")
        print(f"{kills} kills of running jobs, {ends + 1} jobs of {self.COUNT} frames brought to their end")

    def expect_interrupted(self, number, status):
        good = self.reference()
        job = self.start_held()
        self.assertIn('"start"', self.line(job))
        self.assertIn('"done"', self.line(job))
        job.send_signal(number)
        errors = job.communicate(timeout=300)[1]
        self.assertEqual(job.returncode, status)
        left = self.COUNT - len(self.names())
        self.assertEqual(errors, f"lenscorrect: Stopped with {left} of {self.COUNT} frames left. Run the same command again "
                                 "with --skip-existing to continue.\n")
        self.assertLess(len(self.names()), self.COUNT)
        self.expect_whole("out", good)
        self.assertEqual(self.temporaries(), [])

    def test_ends_with_130_when_interrupted(self):
        self.expect_interrupted(signal.SIGINT, 130)

    def test_ends_with_143_when_terminated(self):
        self.expect_interrupted(signal.SIGTERM, 143)

    def test_completes_the_frames_in_flight_however_often_and_fast_a_farm_says_sigterm(self):
        good = self.reference()
        for _ in range(ROUNDS):
            shutil.rmtree(self.path("out"), ignore_errors=True)
            job = self.start_held()
            self.assertIn('"start"', self.line(job))
            self.assertIn('"done"', self.line(job))
            for _ in range(100):
                job.send_signal(signal.SIGTERM)
            output, _ = job.communicate(timeout=300)
            self.assertEqual(job.returncode, 143)
            self.assertEqual(json.loads(output.splitlines()[-1])["event"], "end")
            self.expect_whole("out", good)
            self.assertEqual(self.temporaries(), [])

    def test_a_second_signal_ends_at_once_and_leaves_no_temporary_file(self):
        good = self.reference()
        for _ in range(ROUNDS):
            shutil.rmtree(self.path("out"), ignore_errors=True)
            job = self.start_held()
            for _ in range(self.random.randrange(2, 8)):
                self.line(job)
            job.send_signal(signal.SIGTERM)
            job.send_signal(signal.SIGINT)
            job.communicate(timeout=300)
            # The kernel hands two signals over in an order of its own.
            self.assertIn(job.returncode, (130, 143))
            self.expect_whole("out", good)
            self.assertEqual(self.temporaries(), [])

    def test_two_jobs_that_write_the_same_frames_leave_whole_ones(self):
        good = self.reference()
        jobs = [self.start("out", "--overwrite") for _ in range(2)]
        for job in jobs:
            self.assertEqual((job.communicate(timeout=300)[1], job.returncode), ("", 0))
        self.assertTrue(self.contents("out") == good)
        self.assertEqual(self.temporaries(), [])
        self.expect(self.render(*UNDISTORT, "--skip-existing"), 0, "", "")


program.main()

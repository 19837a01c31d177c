"""lenscorrect --sandbox and --max-image: files that are not trusted, and encoders that crash, fail their own frame only."""
import contextlib
import os
import resource
import signal
import subprocess
import sys
import threading
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program

# Nor a word on linear pixels, which JPEG cannot state.
SILENT = ("--progress", "none", "--input-space", "raw")
FAULTS = os.environ.get("ORVEX_FAULTS")
KILLED = ("the sandboxed decoder was killed by signal 9 (Killed); the file is damaged or malicious, copy or render it "
          "again")
ENCODER_KILLED = ("cannot be written: the sandboxed encoder was killed by signal 9 (Killed); write this frame in another "
                  "format, such as EXR")


class Sandbox(program.ProgramTest):
    def setUp(self):
        super().setUp()
        # Deep enough that the search for correction files never leaves the case's own folders.
        self.folder = self.path("a", "b", "c", "d", "e", "f")
        os.makedirs(self.folder)
        self.expect(self.run_program("sample", "clip", "--progress", "none", "--size", "128x96", "--frames", "3"), 0)

    def render(self, output, *arguments):
        return self.run_program("render", "clip/plate.%04d.exr", "--distortion", "undistort", "--progress", "none", "-o",
                                output + "/f.%04d.exr", *arguments)

    def content(self, *names):
        with open(self.path(*names), "rb") as file:
            return file.read()

    def test_renders_the_same_bytes(self):
        self.expect(self.render("plain"), 0, "", "")
        self.expect(self.render("guarded", "--sandbox", "--plate", "clip/plate.%04d.exr"), 0, "", "")
        for frame in (1001, 1002, 1003):
            self.assertEqual(self.content("plain", f"f.{frame}.exr"), self.content("guarded", f"f.{frame}.exr"))

    def test_goes_on_after_a_frame_that_is_cut_short(self):
        os.truncate(self.path("clip", "plate.1002.exr"), 3000)
        result = self.render("out", "--sandbox")
        self.expect(result, 1, "")
        self.assertIn("plate.1002.exr: the file ends before its pixels do", result.stderr)
        self.assertEqual(sorted(name for name in os.listdir(self.path("out")) if not name.startswith(".")),
                         ["f.1001.exr", "f.1003.exr"])

    @contextlib.contextmanager
    def decoders_killed(self, name):
        """Meanwhile, processes that decode a file whose path holds the name are killed."""
        killed = []
        done = threading.Event()

        def kill_decoders():
            while not done.is_set():
                for process in filter(str.isdigit, os.listdir("/proc")):
                    try:
                        with open(f"/proc/{process}/cmdline", "rb") as file:
                            line = file.read()
                        if b"--start-codecs" not in line:
                            continue
                        # A decoder is a copy of its server, which opens no file.
                        files = [os.readlink(f"/proc/{process}/fd/{number}") for number in os.listdir(f"/proc/{process}/fd")]
                        if any(file.startswith(os.path.realpath(self.folder)) and name in file for file in files):
                            os.kill(int(process), signal.SIGKILL)
                            killed.append(process)
                    except OSError:
                        continue # it has ended already

        killer = threading.Thread(target=kill_decoders)
        killer.start()
        try:
            yield
        finally:
            done.set()
            killer.join()
        self.assertTrue(killed)

    def test_goes_on_after_decoders_that_are_killed(self):
        # A picture that takes long enough to be found.
        subprocess.run(["oiiotool", "--pattern", "noise", "4096x3072", "4", "-d", "half", "--compression", "piz", "-o",
                        self.path("clip", "plate.1002.exr")], check=True, capture_output=True)
        with self.decoders_killed("plate.1002."):
            result = self.render("out", "--sandbox")
        self.expect(result, 1, "")
        self.assertIn(f"plate.1002.exr: {KILLED}\n", result.stderr)
        self.assertIn("lenscorrect: 1 of 3 frames failed: 1002\n", result.stderr)

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_every_command_outlives_a_decoder_that_crashes(self):
        for name, arguments in (("still.1001.dpx", ()), ("still.1001.exr", ("--sandbox",))):
            subprocess.run(["oiiotool", "clip/plate.1001.exr", "-o", name], cwd=self.folder, check=True, capture_output=True)
            for command in (("info",), ("render", "--shading", "remove", "-o", "f.%04d.exr", "--progress", "none"),
                            ("stmap", "--direction", "undistort", "-o", "m.%04d.exr", "--progress", "none"),
                            ("verify",)):
                with self.subTest(command=command[0], name=name):
                    result = self.run_program(command[0], name, *command[1:], *arguments, "--correction-file",
                                              "clip/plate.olcf", environment={"LD_PRELOAD": FAULTS, "CRASH_ON_OPEN": name})
                    self.assertIn(KILLED, result.stdout + result.stderr)
                    # A map of no frame at all is wrong use.
                    self.assertEqual(result.returncode, 2 if command[0] == "stmap" else 1)

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_a_decoder_that_crashes_fails_its_own_frame_without_an_option(self):
        for frame in (1001, 1002, 1003):
            subprocess.run(["oiiotool", f"clip/plate.{frame}.exr", "-d", "float", "-o", f"clip/plate.{frame}.tif"],
                           cwd=self.folder, check=True, capture_output=True)
        arguments = ("render", "clip/plate.%04d.tif", "--distortion", "undistort", "--progress", "none")
        # Makes the kernels: the driver's linker is not for the library that is loaded below.
        self.run_program(*arguments, "-o", "kernels/f.%04d.exr")
        faults = {"LD_PRELOAD": FAULTS, "CRASH_ON_OPEN": "plate.1002.tif"}
        result = self.run_program(*arguments, "-o", "out/f.%04d.exr", environment=faults)
        self.expect(result, 1, "", f"Frame 1002: {self.path('clip', 'plate.1002.tif')}: {KILLED}\n"
                    "lenscorrect: 1 of 3 frames failed: 1002\n")
        self.assertEqual(sorted(name for name in os.listdir(self.path("out")) if not name.startswith(".")),
                         ["f.1001.exr", "f.1003.exr"])
        unguarded = self.run_program(*arguments, "-o", "none/f.%04d.exr", "--sandbox=off", environment=faults)
        self.assertEqual(unguarded.returncode, -signal.SIGKILL)

    def test_works_under_the_limits_of_a_farm(self):
        # Lower than what the sandbox grants.
        def limit():
            for kind, limit in ((resource.RLIMIT_CPU, 50), (resource.RLIMIT_CORE, 0)):
                resource.setrlimit(kind, (limit, limit))
        self.expect(self.run_program("info", "clip/plate.%04d.exr", "--sandbox", before=limit), 0, errors="")

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_tells_how_a_decoder_ended_where_a_daemon_has_ignored_its_children(self):
        result = self.run_program("info", "clip/plate.1001.exr", "--sandbox",
                                  environment={"LD_PRELOAD": FAULTS, "CRASH_ON_OPEN": "plate.1001"},
                                  before=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))
        self.assertIn(KILLED, result.stdout + result.stderr)

    def render_with_a_fault(self, output, fault, *arguments):
        """Frame 1002's own text meets the fault as soon as an encoder writes it."""
        subprocess.run(["oiiotool", "clip/plate.1002.exr", "--attrib:type=string", "owner", "fault of 1002", "-o",
                        "clip/plate.1002.exr"], cwd=self.folder, check=True, capture_output=True)
        # Makes the kernels: the driver's linker is not for the library that is loaded below.
        self.render("kernels")
        return self.run_program("render", "clip/plate.%04d.exr", "--distortion", "undistort", *SILENT, "-o", output,
                                *arguments, environment={"LD_PRELOAD": FAULTS, fault: "fault of 1002"})

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_an_encoder_that_crashes_fails_its_own_frame_without_an_option(self):
        for extension in ("dpx", "tif", "png", "jpg"):
            with self.subTest(extension=extension):
                result = self.render_with_a_fault(f"{extension}/f.%04d.{extension}", "CRASH_ON_WRITE")
                self.expect(result, 4, "", f"Frame 1002: {extension}/f.1002.{extension}: {ENCODER_KILLED}\n"
                            "lenscorrect: 1 of 3 frames failed: 1002\n")
                self.assertEqual(self.pictures_and_temporary_files(extension),
                                 [f"f.1001.{extension}", f"f.1003.{extension}"])

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_an_encoder_in_the_program_ends_it_with_its_crash(self):
        result = self.render_with_a_fault("out/f.%04d.tif", "CRASH_ON_WRITE", "--sandbox=off")
        self.assertEqual(result.returncode, -signal.SIGKILL)

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_an_encoder_that_hangs_fails_its_own_frame(self):
        result = self.render_with_a_fault("out/f.%04d.tif", "HANG_ON_WRITE", "--sandbox-time", "10")
        self.expect(result, 4, "", "Frame 1002: out/f.1002.tif: cannot be written: encoding took longer than the "
                    "sandbox's limit of 10 s; raise it with --sandbox-time\n"
                    "lenscorrect: 1 of 3 frames failed: 1002\n")
        self.assertEqual(self.pictures_and_temporary_files("out"), ["f.1001.tif", "f.1003.tif"])

    def pictures_and_temporary_files(self, folder):
        return sorted(name for name in os.listdir(self.path(folder)) if "f.100" in name)

    def test_encodes_the_same_bytes(self):
        for extension in ("dpx", "tif", "png", "jpg"):
            for folder, arguments in (("plain", ("--sandbox=off",)), ("default", ()), ("guarded", ("--sandbox",))):
                self.expect(self.run_program("render", "clip/plate.%04d.exr", "--distortion", "undistort", *SILENT, "-o",
                                             f"{folder}/f.%04d.{extension}", *arguments), 0, "", "")
            for frame in (1001, 1002, 1003):
                plain = self.content("plain", f"f.{frame}.{extension}")
                self.assertEqual(plain, self.content("default", f"f.{frame}.{extension}"))
                self.assertEqual(plain, self.content("guarded", f"f.{frame}.{extension}"))

    @unittest.skipUnless(FAULTS, "faults cannot be injected here")
    def test_leaves_no_process_behind(self):
        subprocess.run(["oiiotool", "clip/plate.1001.exr", "-d", "float", "-o", "clip/plate.1001.tif"], cwd=self.folder,
                       check=True, capture_output=True)
        before = self.codecs()
        self.run_program("info", "clip/plate.1001.tif")
        self.run_program("info", "clip/plate.1001.tif", "--sandbox=off", environment={"LD_PRELOAD": FAULTS,
                                                                                        "CRASH_ON_OPEN": "plate.1001"})
        for _ in range(200):
            if self.codecs() <= before:
                return
            time.sleep(0.05)
        self.fail(f"decoders are left: {self.codecs() - before}")

    @staticmethod
    def codecs():
        found = set()
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{process}/cmdline", "rb") as file:
                    if b"--start-codecs" in file.read():
                        found.add(process)
            except OSError:
                continue
        return found

    def test_refuses_pictures_larger_than_wanted(self):
        result = self.render("out", "--max-image", "100x100")
        self.expect(result, 1, "")
        self.assertIn("the data window of 128 x 96 pixels exceeds the limit of 100 pixels a side\n", result.stderr)

    def test_looks_at_headers_in_the_sandbox_too(self):
        result = self.run_program("info", "clip/plate.%04d.exr", "--sandbox")
        self.expect(result, 0, errors="")
        self.assertEqual(result.stdout, self.run_program("info", "clip/plate.%04d.exr").stdout)

    def stmap(self, output, *arguments):
        return self.run_program("stmap", "clip/plate.%04d.exr", "--direction", "undistort", "--progress", "none", "-o",
                                output + "/m.%04d.exr", *arguments)

    def test_makes_the_same_maps(self):
        self.expect(self.stmap("plain"), 0, "", "")
        self.expect(self.stmap("guarded", "--sandbox", "--plate", "clip/plate.%04d.exr"), 0, "", "")
        for frame in (1001, 1002, 1003):
            self.assertEqual(self.content("plain", f"m.{frame}.exr"), self.content("guarded", f"m.{frame}.exr"))

    def test_measures_the_same_round_trips(self):
        result = self.run_program("verify", "clip/plate.%04d.exr", "--sandbox", "--list")
        self.expect(result, 0, errors="")
        self.assertEqual(result.stdout, self.run_program("verify", "clip/plate.%04d.exr", "--list").stdout)

    def test_refuses_limits_of_a_sandbox_that_is_not_wanted(self):
        self.expect(self.render("out", "--sandbox=off", "--sandbox-time", "5"), 2, "",
                    "lenscorrect: --sandbox-memory and --sandbox-time cannot be combined with --sandbox=off.\n")


program.main()

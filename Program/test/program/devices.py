"""What a user learns about OpenCL devices and the kernel cache, with working and with broken installations."""
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program


class Devices(program.ProgramTest):
    def devices(self, *arguments, **environment):
        variables = {"POCL_CACHE_DIR": None, "XDG_CACHE_HOME": self.path("cache"), "TMPDIR": self.folder}
        variables.update(environment)
        return self.run_program("devices", *arguments, environment=variables)

    def setUp(self):
        super().setUp()
        # With the cache that the tests share: a fresh one takes seconds.
        if self.run_program("devices").returncode == 3:
            self.skipTest("no OpenCL device here")

    def test_tells_which_device_renders(self):
        result = self.devices()
        self.expect(result, 0, errors="")
        self.assertRegex(result.stdout, r"(?m)^\* .*: \d+ compute units, \d+ MHz, work-groups of \d+, score \d+$")
        self.assertRegex(result.stdout, r"The device marked \* renders: .*\.\n")
        self.assertTrue(result.stdout.endswith("A test picture was rendered.\n"), result.stdout)

    def test_tells_the_same_as_json(self):
        result = self.devices("--json")
        self.expect(result, 0, errors="")
        answer = program.validated(json.loads(result.stdout), "devices")
        self.assertTrue(answer["isRendering"])
        self.assertEqual(answer["problem"], "")
        self.assertEqual([device["isTaken"] for device in answer["devices"]],
                         [True] + [False] * (len(answer["devices"]) - 1))
        self.assertEqual(answer["kernelCache"],
                         {"folder": self.path("cache", "pocl", "kcache"), "isPrivate": False, "problem": ""})

    def test_says_what_to_install_when_there_is_no_driver(self):
        os.mkdir(self.path("no-drivers"))
        result = self.devices(OCL_ICD_VENDORS=self.path("no-drivers") + "/")
        self.expect(result, 3, "")
        self.assertEqual(result.stderr.splitlines()[0],
                         "lenscorrect: No OpenCL driver was found. Failed to query number of all available platforms! "
                         "(-1001)")
        self.assertIn("apt-get install pocl-opencl-icd", result.stderr)

    def test_tells_a_missing_driver_as_json_too(self):
        os.mkdir(self.path("no-drivers"))
        result = self.devices("--json", OCL_ICD_VENDORS=self.path("no-drivers") + "/")
        self.expect(result, 3, errors="")
        answer = program.validated(json.loads(result.stdout), "devices")
        self.assertEqual((answer["devices"], answer["isRendering"]), ([], False))
        self.assertEqual(answer["problem"], "No OpenCL driver was found. Failed to query number of all available "
                                            "platforms! (-1001)")

    def test_takes_no_other_device_than_the_one_asked_for(self):
        result = self.devices("--device", "no such card")
        self.assertEqual((result.returncode, result.stderr),
                         (3, 'lenscorrect: No device has "no such card" in its name! (ORVEX_OPENCL_DEVICE)\n'))
        self.assertRegex(result.stdout, r"\A(  .*: \d+ compute units, .*\n)+")

    def test_takes_the_device_that_the_environment_names(self):
        result = self.devices(ORVEX_OPENCL_DEVICE="no such card")
        self.assertEqual((result.returncode, result.stderr),
                         (3, 'lenscorrect: No device has "no such card" in its name! (ORVEX_OPENCL_DEVICE)\n'))

    def test_uses_a_private_cache_where_the_usual_one_cannot_be_written(self):
        with open(self.path("file"), "w", encoding="utf-8"):
            pass
        before = sorted(os.listdir(self.folder))
        result = self.devices(XDG_CACHE_HOME=self.path("file"))
        self.expect(result, 0, errors="")
        self.assertIn(f'Kernel cache "{self.path("file", "pocl", "kcache")}" is not usable: Not a directory. '
                      "This run uses a private one and takes longer to start.\n", result.stdout)
        self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_uses_a_private_cache_where_the_disk_of_the_usual_one_is_full(self):
        self.small_disk("disk", 4096)
        result = self.devices(XDG_CACHE_HOME=self.path("disk"))
        self.expect(result, 0, errors="")
        self.assertIn(f'Kernel cache "{self.path("disk", "pocl", "kcache")}" is not usable: its disk is full. '
                      "This run uses a private one and takes longer to start.\n", result.stdout)

    def test_says_how_to_mend_a_full_disk_under_a_cache_that_the_user_named(self):
        self.small_disk("disk", 64)
        result = self.devices(POCL_CACHE_DIR=self.path("disk"))
        self.assertEqual(result.returncode, 3, result.stdout + result.stderr)
        self.assertIn(f'Kernel cache "{self.path("disk")}" is not usable: its disk is full. Set POCL_CACHE_DIR to a '
                      "writable folder.\n", result.stdout)
        self.assertIn(f'lenscorrect: The kernel cache is broken. Clear it: rm -r "{self.path("disk")}"\n', result.stderr)

    def test_respects_a_cache_that_the_user_named(self):
        result = self.devices("--json", POCL_CACHE_DIR=self.path("mine"))
        self.expect(result, 0, errors="")
        self.assertEqual(json.loads(result.stdout)["kernelCache"]["folder"], self.path("mine"))
        self.assertTrue(os.listdir(self.path("mine")))

    def test_survives_a_corrupt_cache_and_says_how_to_clear_it(self):
        self.expect(self.devices(), 0)
        cut = 0
        for folder, _, names in os.walk(self.path("cache")):
            for name in names:
                if name.endswith(".so") or name == "program.bc":
                    os.truncate(os.path.join(folder, name), 100)
                    cut += 1
        if not cut:
            self.skipTest("this driver keeps no such cache")
        result = self.devices()
        self.assertEqual(result.returncode, 3, result.stdout + result.stderr)
        self.assertIn("The kernel cache is broken. Clear it: rm -r \"" + self.path("cache", "pocl", "kcache") + '"\n',
                      result.stderr)


program.main()

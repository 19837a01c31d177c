"""Another OpenCL driver than the usual one: Mesa's rusticl on the processor."""
import json
import os
import struct
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program

DRIVERS = "/etc/OpenCL/vendors"


def half_steps(a, b):
    """How many halves lie between two, both of one sign."""
    return abs(struct.unpack("<h", struct.pack("<e", a))[0] - struct.unpack("<h", struct.pack("<e", b))[0])


class Rusticl(program.ProgramTest):
    def run_with(self, *arguments, enabled="llvmpipe", **environment):
        return self.run_program(*arguments, environment={"RUSTICL_ENABLE": enabled, **environment})

    def test_renders_when_it_is_asked_for(self):
        result = self.run_with("devices", "--device", "rusticl", MESA_SHADER_CACHE_DIR=self.folder)
        self.expect(result, 0, errors="")
        lines = result.stdout.splitlines()
        self.assertRegex(lines[0], r"^\* llvmpipe ")
        self.assertIn("The device marked * renders: it is the one asked for.", lines)
        self.assertIn("Kernel cache: " + self.path("mesa_shader_cache"), lines)
        self.assertEqual(lines[-1], "A test picture was rendered.")

    def test_is_told_with_its_devices_as_json(self):
        result = self.run_with("devices", "--json", "--device", "rusticl")
        self.expect(result, 0, errors="")
        answer = program.validated(json.loads(result.stdout), "devices")
        self.assertEqual(answer["devices"][0]["driver"], "rusticl")
        self.assertEqual([(driver["deviceCount"], driver["problem"]) for driver in answer["drivers"]
                          if driver["name"] == "rusticl"], [(1, "")])

    def test_without_a_device_is_explained(self):
        os.mkdir(self.path("drivers"))
        os.symlink(os.path.join(DRIVERS, "rusticl.icd"), self.path("drivers", "rusticl.icd"))
        result = self.run_with("devices", enabled=None, OCL_ICD_VENDORS=self.path("drivers") + "/")
        self.expect(result, 3, "")
        self.assertEqual(result.stderr.splitlines()[:2], [
            "lenscorrect: No OpenCL device was found.",
            "The driver rusticl has no device. Set RUSTICL_ENABLE to the drivers that may be used: radeonsi (AMD GPUs), "
            "iris (Intel GPUs), llvmpipe (any CPU)."])

    def test_gives_the_usual_drivers_picture_within_one_half_float_step(self):
        self.expect(self.run_with("sample", self.path("clip"), "--frames", "1", "--size", "320x180"), 0)
        for name, device in (("usual", "Portable"), ("other", "rusticl")):
            self.expect(self.run_with("render", self.path("clip", "plate.%04d.exr"), "--distortion", "undistort",
                                      "--shading", "remove", "--type", "half", "--compression", "none",
                                      "--device", device, "-o", self.path(name, "f.%04d.exr")), 0)
        usual = exr.read(self.path("usual", "f.1001.exr"))[0]
        other = exr.read(self.path("other", "f.1001.exr"))[0]
        self.assertEqual(usual.data, other.data)
        self.assertEqual(sorted(usual.channels), sorted(other.channels))
        # The drivers place a sample some 1e-5 px apart, and the picture's contrast is up to 1 a pixel.
        displacement = 2e-5
        for channel in usual.channels:
            for y in range(usual.data[1], usual.data[3] + 1):
                for x in range(usual.data[0], usual.data[2] + 1):
                    a, b = usual.at(channel, x, y), other.at(channel, x, y)
                    if abs(a - b) > displacement: # each rounds its own float to a half
                        self.assertLessEqual(half_steps(a, b), 1, (channel, x, y, a, b))


program.main()

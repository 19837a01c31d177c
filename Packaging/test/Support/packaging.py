"""What the packaging tests share: the build folder under test, a folder per case, commands that must succeed."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = os.path.abspath(sys.argv.pop(1))
SOURCE = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", ".."))


class PackagingTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="orvex-packaging-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def run_command(self, *command, status=0, **options):
        """The output of a command that ends with `status`."""
        result = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                encoding="utf-8", timeout=900, **options)
        self.assertEqual(result.returncode, status, " ".join(command) + "\n" + result.stdout)
        return result.stdout

    def install(self, prefix, *components):
        for component in components:
            self.run_command("cmake", "--install", BUILD, "--prefix", prefix, "--component", component)

    def expect_working_program(self, root):
        """`root`/bin/lenscorrect starts, and corrects a clip to EXR and, by a module that it loads, to TIFF."""
        program = os.path.join(root, "bin", "lenscorrect")
        self.assertEqual(self.run_command(program, "--version"), "lenscorrect " + version() + "\n")
        clip = self.path("clip")
        self.run_command(program, "sample", clip, "--frames", "2", "--size", "64x64")
        for extension in ("exr", "tif"):
            self.run_command(program, "render", clip + "/plate.%04d.exr", "--distortion", "undistort",
                             "-o", self.path("frames", "f.%04d." + extension))
        self.assertEqual([name for name in files_below(self.path("frames")) if name.startswith("f.")],
                         ["f.1001.exr", "f.1001.tif", "f.1002.exr", "f.1002.tif"])

    def expect_loadable_plugin(self, root):
        """The plug-in library loads in a process that knows nothing of its place, and finds its libraries."""
        plugin = os.path.join(root, "lib/orvex/nuke/plugins/substitute/OrvexLensDistortionCorrection.so")
        maps = self.run_command(sys.executable, "-c",
                                "import ctypes, sys; ctypes.CDLL(sys.argv[1]); print(open('/proc/self/maps').read())", plugin)
        self.assertIn(os.path.join(root, "lib/orvex/libDDImage.so"), maps)

    def expect_closed_plugin(self, plugin):
        """The plug-in needs the documented libraries and no other, shows the host nothing, and names no folder."""
        dynamic = self.run_command("readelf", "--dynamic", "--wide", plugin)
        documented(" ".join(re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)))
        self.assertNotRegex(dynamic, "RPATH|RUNPATH|TEXTREL")
        self.assertEqual(self.run_command("nm", "--dynamic", "--defined-only", plugin), "")


def documented(command):
    """The words of a line, if it stands in Docs/Packages.md: the tests hold to what the document tells."""
    with open(os.path.join(SOURCE, "Docs", "Packages.md"), encoding="utf-8") as file:
        if command not in file.read().splitlines():
            raise AssertionError("Docs/Packages.md does not tell: " + command)
    return command.split()


def version():
    """The version of the build under test."""
    with open(os.path.join(BUILD, "CMakeCache.txt"), encoding="utf-8") as file:
        return re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.*)$", file.read(), re.M).group(1)


def make_debian_packages(folder):
    """Makes both packages of the build in `folder`, by the documented command."""
    words = {"build/release/CPackConfig.cmake": os.path.join(BUILD, "CPackConfig.cmake"), "packages": folder}
    command = documented("cpack --config build/release/CPackConfig.cmake -G DEB -B packages")
    result = subprocess.run([words.get(word, word) for word in command], stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8")
    if result.returncode:
        raise AssertionError(result.stdout)


def files_below(folder):
    return sorted(os.path.relpath(os.path.join(parent, name), folder)
                  for parent, _, names in os.walk(folder) for name in names)


def main():
    unittest.main(module="__main__", verbosity=2)

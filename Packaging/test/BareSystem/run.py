"""The users' Debian package on a bare Debian 12: a folder made by debootstrap, with the kernel's folders mounted into it.
That needs root, the right to mount and to make devices, and the network; ends with 77, which counts as skipped, for want of
the first three."""
import glob
import os
import subprocess
import sys
import tempfile

# All that the test and debootstrap do which a container may forbid, the latter in a folder that may be mounted "nodev".
PROBE = 'mkdir proc sys && mount -t proc -o ro proc proc && mount -t sysfs -o ro sysfs sys && mknod null c 1 3 && : >null'

# In a mount namespace of its own nothing stays mounted, however the test ends.
if "ORVEX_BARE_SYSTEM" not in os.environ:
    with tempfile.TemporaryDirectory(prefix="orvex-packaging-") as folder:
        allowed = subprocess.run(["unshare", "--mount", "sh", "-c", PROBE], cwd=folder, stderr=subprocess.PIPE,
                                 encoding="utf-8")
    if allowed.returncode:
        print("Skipped, for a bare system needs root and the right to mount and to make devices: " + allowed.stderr)
        sys.exit(77)
    os.environ["ORVEX_BARE_SYSTEM"] = "1"
    os.execvp("unshare", ["unshare", "--mount", sys.executable, *sys.argv])

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import packaging

# A system that is thrown away need not wait until each file is on the disk.
UNSAFE = {"DPKG_FORCE": "unsafe-io"}


class BareSystem(packaging.PackagingTest):
    def setUp(self):
        super().setUp()
        packaging.make_debian_packages(self.path("packages"))
        self.root = self.path("root")
        debootstrap = ["debootstrap", "--variant=minbase", "bookworm", self.root]
        for _ in range(3): # what a bad moment of the network left out; the rest is kept
            if not subprocess.run([debootstrap[0], "--download-only", *debootstrap[1:]]).returncode:
                break
        self.run_command(*debootstrap, env={**os.environ, **UNSAFE})
        # Where the OpenCL driver for processors looks for them.
        for kind, name in (("proc", "proc"), ("sysfs", "sys")):
            self.run_command("mount", "-t", kind, "-o", "ro", kind, os.path.join(self.root, name))
            self.addCleanup(subprocess.run, ["umount", os.path.join(self.root, name)], check=True)

    def run_inside(self, *command):
        proxies = {name: value for name, value in os.environ.items() if name.endswith("_proxy")}
        return self.run_command("chroot", self.root, *command,
                                env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LANG": "C",
                                     "DEBIAN_FRONTEND": "noninteractive", **UNSAFE, **proxies})

    def test_the_package_brings_all_that_correcting_frames_needs_and_leaves_nothing_behind(self):
        [package] = glob.glob(self.path("packages", "orvex-lens-correction_*.deb"))
        packaging.shutil.copy(package, os.path.join(self.root, "package.deb"))
        self.run_inside("apt-get", "install", "-y", "-qq", "--no-install-recommends", "-o", "Acquire::Retries=5",
                        "/package.deb")
        self.assertEqual(self.run_inside("lenscorrect", "--version"), "lenscorrect " + packaging.version() + "\n")
        self.assertIn("A test picture was rendered.\n", self.run_inside("lenscorrect", "devices"))
        self.run_inside("lenscorrect", "sample", "/clip", "--frames", "2", "--size", "640x360", "--progress", "none")
        for extension in ("exr", "tif"):
            self.run_inside("lenscorrect", "render", "/clip/plate.%04d.exr", "--distortion", "undistort",
                            "--shading", "remove", "-o", "/out/f.%04d." + extension)
        self.assertEqual([name for name in packaging.files_below(os.path.join(self.root, "out")) if name.startswith("f.")],
                         ["f.1001.exr", "f.1001.tif", "f.1002.exr", "f.1002.tif"])

        self.run_inside("apt-get", "remove", "-y", "-qq", "orvex-lens-correction")
        self.assertEqual(self.run_inside("find", "/usr", "-path", "*orvex*", "-o", "-name", "lenscorrect*"), "")


packaging.main()

"""The Debian packages name what they need and work once unpacked. BareSystem installs them on a bare system."""
import glob
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import packaging


class Debian(packaging.PackagingTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.packages = packaging.tempfile.mkdtemp(prefix="orvex-deb-")
        cls.addClassCleanup(packaging.shutil.rmtree, cls.packages, ignore_errors=True)
        packaging.make_debian_packages(cls.packages)

    def package(self, name):
        files = glob.glob(os.path.join(self.packages, name + "_*.deb"))
        self.assertEqual(len(files), 1, files)
        return files[0]

    def field(self, package, name):
        return self.run_command("dpkg-deb", "--field", self.package(package), name).strip()

    def test_there_is_one_package_for_users_and_one_for_developers(self):
        self.assertEqual(sorted(name.split("_")[0] for name in os.listdir(self.packages) if name.endswith(".deb")),
                         ["liborvex-lens-correction-dev", "orvex-lens-correction"])

    def test_the_users_package_depends_on_its_libraries_and_on_any_opencl_driver(self):
        depends = self.field("orvex-lens-correction", "Depends").split(", ")
        self.assertIn("pocl-opencl-icd | opencl-icd", depends)
        for library in ("libfmt9", "libc6", "libopenexr", "libopenimageio", "libavformat"):
            self.assertTrue(any(entry.startswith(library) for entry in depends), (library, depends))
        self.assertFalse([entry for entry in depends if "-dev" in entry or "boost" in entry])

    def test_the_developers_package_depends_on_what_its_cmake_package_looks_for(self):
        self.assertEqual(self.field("liborvex-lens-correction-dev", "Depends"),
                         "ocl-icd-opencl-dev, opencl-c-headers, libboost-filesystem-dev, libboost-system-dev, "
                         "libblas-dev, liblapack-dev")

    def test_the_unpacked_program_and_plugin_work(self):
        self.run_command("dpkg-deb", "--extract", self.package("orvex-lens-correction"), self.path("root"))
        self.expect_working_program(self.path("root", "usr"))
        self.expect_loadable_plugin(self.path("root", "usr"))

    def test_both_packages_share_no_file(self):
        contents = []
        for name in ("orvex-lens-correction", "liborvex-lens-correction-dev"):
            self.run_command("dpkg-deb", "--extract", self.package(name), self.path(name))
            contents.append(set(packaging.files_below(self.path(name))))
        self.assertTrue(contents[0] and contents[1])
        self.assertEqual(contents[0] & contents[1], set())


packaging.main()

"""What `cmake --install` puts below a prefix works from there, wherever the prefix is moved."""
import os
import re
import shutil
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import packaging


class Install(packaging.PackagingTest):
    def test_the_documented_command_installs_everything(self):
        command = packaging.documented("cmake --install build/release --prefix /opt/orvex")
        words = {"build/release": packaging.BUILD, "/opt/orvex": self.path("tree")}
        self.run_command(*[words.get(word, word) for word in command])
        names = packaging.files_below(self.path("tree"))
        for name in ("bin/lenscorrect", "lib/orvex/libDDImage.so", "lib/orvex/nuke/init.py", "lib/libOrvexCore.a",
                     "include/orvex/Core/Core.h", "lib/cmake/OrvexLensCorrection/OrvexLensCorrectionConfig.cmake",
                     "share/man/man1/lenscorrect.1", "share/doc/orvex-lens-correction/Docs/Packages.md"):
            self.assertIn(name, names)

    def test_the_program_and_the_plugin_run_from_a_moved_tree(self):
        self.install(self.path("first"), "program", "plugin")
        shutil.move(self.path("first"), self.path("second"))
        self.expect_working_program(self.path("second"))
        self.expect_loadable_plugin(self.path("second"))

    def test_the_manual_page_and_the_completion_are_those_of_the_program(self):
        self.install(self.path("tree"), "program")
        program = self.path("tree", "bin/lenscorrect")
        for option, name in (("--man", "share/man/man1/lenscorrect.1"),
                             ("--completion", "share/bash-completion/completions/lenscorrect")):
            with self.subTest(name), open(self.path("tree", name), encoding="utf-8") as file:
                self.assertEqual(file.read(), self.run_command(program, "help", option))

    def test_the_links_of_the_documents_lead_to_installed_files(self):
        self.install(self.path("tree"), "program")
        documents = os.path.join(packaging.SOURCE, "Docs", "test", "documents.py")
        self.run_command(sys.executable, documents, "links", self.path("tree", "share/doc/orvex-lens-correction"))
        with open(self.path("tree", "share/doc/orvex-lens-correction/Docs/Testing.md"), encoding="utf-8") as file:
            installed = file.read()
        # Of a link to what is not installed only the words stay.
        with open(os.path.join(packaging.SOURCE, "Docs/Testing.md"), encoding="utf-8") as file:
            text, count = re.subn(r"\[([^]]*)\]\(\.\./(?:Core|Image|Nuke|Program|Tools|cmake)/[^)]*\)", r"\1", file.read())
        self.assertGreater(count, 0)
        self.assertEqual(installed, text)

    def test_nothing_refers_to_the_build_tree(self):
        self.install(self.path("tree"), "program", "plugin", "development")
        for name in packaging.files_below(self.path("tree")):
            with self.subTest(name), open(self.path("tree", name), "rb") as file:
                self.assertNotIn(packaging.BUILD.encode(), file.read())

    def test_the_plugin_folder_holds_library_pointer_file_and_start_up_files(self):
        self.install(self.path("tree"), "plugin")
        folder = self.path("tree", "lib/orvex/nuke")
        names = packaging.files_below(folder)
        self.assertEqual([name for name in names if not re.match(r"plugins/\d", name)],
                         ["init.py", "menu.py", "plugins/substitute/OrvexLensDistortionCorrection.so",
                          "plugins/substitute/OrvexLensShadingCorrection.tcl"])
        with open(os.path.join(folder, "plugins/substitute/OrvexLensShadingCorrection.tcl"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "load OrvexLensDistortionCorrection\n")

    def test_the_substitute_library_lies_only_where_nobody_else_looks(self):
        self.install(self.path("tree"), "program", "plugin", "development")
        self.assertEqual([name for name in packaging.files_below(self.path("tree")) if "libDDImage" in name],
                         ["lib/orvex/libDDImage.so"])

    def test_another_project_finds_the_core_and_renders_with_it(self):
        self.install(self.path("tree"), "development")
        consumer = os.path.join(packaging.SOURCE, "Packaging", "test", "Consumer")
        with open(os.path.join(consumer, "CMakeLists.txt"), encoding="utf-8") as file:
            lines = file.read().splitlines()
        for command in ("find_package(OrvexLensCorrection REQUIRED)",
                        "target_link_libraries(consumer PRIVATE Orvex::Core)"):
            self.assertIn(" ".join(packaging.documented(command)), lines)
        self.run_command("cmake", "-S", consumer, "-B", self.path("consumer"), "-G", "Ninja",
                         "-DCMAKE_PREFIX_PATH=" + self.path("tree"))
        self.run_command("cmake", "--build", self.path("consumer"))
        self.assertEqual(self.run_command(self.path("consumer", "consumer")),
                         "A corner of the white frame is 2.00.\n")

    def configure_consumer_of(self, version, status):
        """What CMake prints for a project that needs this version of the installed core."""
        folder = self.path("consumer-of-" + version)
        os.mkdir(folder)
        with open(os.path.join(folder, "CMakeLists.txt"), "w", encoding="utf-8") as file:
            file.write("cmake_minimum_required(VERSION 3.25)\nproject(Other LANGUAGES CXX)\n"
                       "find_package(OrvexLensCorrection %s REQUIRED)\n" % version)
        return self.run_command("cmake", "-S", folder, "-B", os.path.join(folder, "build"), "-G", "Ninja",
                                "-DCMAKE_PREFIX_PATH=" + self.path("tree"), status=status)

    def test_a_project_gets_the_minor_version_that_it_needs_and_no_other(self):
        self.install(self.path("tree"), "development")
        major, minor, _ = map(int, packaging.version().split("."))
        self.configure_consumer_of("%d.%d" % (major, minor), status=0)
        for other in {max(minor - 1, 0), minor + 1} - {minor}:
            self.assertIn("compatible with", self.configure_consumer_of("%d.%d" % (major, other), status=1))


packaging.main()

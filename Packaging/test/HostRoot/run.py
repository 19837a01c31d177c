"""Building the plug-in against the folder of a host. No host is here: a folder of the same layout is made of the
substitute's headers, less what they mark as the substitute's own, and its library; its version is changed so that it
cannot be mistaken for the substitute."""
import json
import os
import re
import shutil
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import packaging


class HostRoot(packaging.PackagingTest):
    def setUp(self):
        super().setUp()
        self.root = self.path("Host99.7v1")
        headers = os.path.join(self.root, "include", "DDImage")
        shutil.copytree(os.path.join(packaging.SOURCE, "DDImage", "include", "DDImage"), headers,
                        ignore=shutil.ignore_patterns("Graph.h", "Layers.h"))  # Read.h needs the third of their folder
        for name in packaging.files_below(headers):
            self.rewrite(os.path.join(headers, name),
                         lambda text: re.sub(r" +/// Substitute only(?:.*\n)(?: +///.*\n)*(?: +[^ /].*\n)+", "", text))
        self.numbers = os.path.join(headers, "ddImageVersionNumbers.h")
        self.rewrite(self.numbers, lambda text: text.replace('"11.2v4"', '"99.7v1"'))
        self.library = os.path.join(self.root, "libDDImage.so")
        shutil.copy(os.path.join(packaging.BUILD, "lib", "libDDImage.so"), self.library)

    def run_documented(self, command, status=0):
        """The output of a command of the documents, with the folders of this test; its blanks do not count."""
        folders = {"build/host": self.path("build"), "/opt/orvex": self.path("tree"),
                   "-DDDIMAGE_ROOT=/usr/local/Host11.2v4": "-DDDIMAGE_ROOT=" + self.root}
        words = [folders.get(word, word) for word in packaging.documented(command)]
        return re.sub(r"\s+", " ", self.run_command(*words, status=status, cwd=packaging.SOURCE))

    def rewrite(self, path, change):
        with open(path, encoding="utf-8") as file:
            text = file.read()
        with open(path, "w", encoding="utf-8") as file:
            file.write(change(text))

    def configure(self, status=0):
        return self.run_documented("cmake -S . -B build/host -G Ninja -DCMAKE_BUILD_TYPE=Release -DORVEX_BUILD_TESTS=OFF "
                                   "-DDDIMAGE_ROOT=/usr/local/Host11.2v4", status)

    def test_the_documented_commands_make_a_plugin_of_the_hosts_version_that_renders(self):
        self.assertIn("Plug-in for version 99.7 of the host: host-plugins/99.7", self.configure())
        with open(self.path("build", "compile_commands.json"), encoding="utf-8") as file:
            entries = [entry for entry in json.load(file) if "HostPlugin.dir" in entry["command"]]
        self.assertIn("LensDistortionCorrection.cpp", [os.path.basename(entry["file"]) for entry in entries])
        for entry in entries:
            self.assertIn(self.root + "/include", entry["command"])
            self.assertNotIn(os.path.join(packaging.SOURCE, "DDImage"), entry["command"])
        self.run_documented("cmake --build build/host --target HostPlugin")
        self.run_documented("cmake --install build/host --component plugin --prefix /opt/orvex")

        folder = self.path("tree", "lib/orvex/nuke/plugins/99.7")
        self.expect_closed_plugin(os.path.join(folder, "OrvexLensDistortionCorrection.so"))
        self.run_command(os.path.join(packaging.BUILD, "bin", "PluginLoadingTest"),
                         env={**os.environ, "ORVEX_PLUGIN_FOLDER": folder})

    def test_names_the_header_that_a_wrong_folder_lacks(self):
        shutil.rmtree(os.path.join(self.root, "include"))
        self.assertIn(f'DDIMAGE_ROOT is "{self.root}", which has no include/DDImage/PlanarIop.h. Give the folder in which '
                      "the host is installed.", self.configure(status=1))

    def test_names_the_missing_library(self):
        os.remove(self.library)
        self.assertIn("which has no libDDImage.so.", self.configure(status=1))

    def test_says_when_the_version_cannot_be_read(self):
        with open(self.numbers, "w", encoding="utf-8"):
            pass
        self.assertIn("does not tell kDDImageVersion.", self.configure(status=1))


packaging.main()

"""init.py and menu.py as the host runs them, under each Python that a host may have; the module nuke is a stub that writes
down what it is told."""
import os
import shutil
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import packaging

OTHER_PYTHONS = sys.argv[1:]
del sys.argv[1:]

STUB = """
NUKE_VERSION_MAJOR, NUKE_VERSION_MINOR = %s
def pluginAddPath(folder):
    print("path " + folder)
class Menu(object):
    def __init__(self, name): self.name = name
    def addMenu(self, name): return Menu(self.name + "/" + name)
    def addCommand(self, name, command): print(self.name + "/" + name + ": " + command)
menu = Menu
"""


class Startup(packaging.PackagingTest):
    def setUp(self):
        super().setUp()
        self.plugins = self.path("nuke", "plugins")
        for version in ("11.2", "13.0", "substitute"):
            os.makedirs(os.path.join(self.plugins, version))
        for name in ("init.py", "menu.py"):
            shutil.copy(os.path.join(packaging.SOURCE, "Packaging", "nuke", name), self.path("nuke", name))

    def expect(self, name, version, expected):
        with open(self.path("nuke.py"), "w", encoding="utf-8") as file:
            file.write(STUB % (version,))
        for python in [sys.executable, *OTHER_PYTHONS]:
            with self.subTest(python):
                output = self.run_command(python, self.path("nuke", name),
                                          env={**os.environ, "PYTHONPATH": self.folder, "LC_ALL": "C"})
                self.assertEqual(output, expected)

    def test_the_plug_in_of_the_hosts_version_is_put_on_the_path(self):
        self.expect("init.py", (13, 0), f"path {self.plugins}/13.0\n")

    def test_another_version_is_told_what_there_is(self):
        self.expect("init.py", (11, 3), "Orvex Lens Correction: there is no plug-in for version 11.3 in "
                                        f"{self.plugins} (there is: 11.2, 13.0).\n")

    def test_a_folder_without_plug_ins_is_told(self):
        shutil.rmtree(self.plugins)
        self.expect("init.py", (11, 2), "Orvex Lens Correction: there is no plug-in for version 11.2 in "
                                        f"{self.plugins} (there is: none).\n")

    def test_the_toolbar_lists_both_nodes(self):
        self.expect("menu.py", (11, 2),
                    "Nodes/Orvex/OrvexLensDistortionCorrection: nuke.createNode('OrvexLensDistortionCorrection')\n"
                    "Nodes/Orvex/OrvexLensShadingCorrection: nuke.createNode('OrvexLensShadingCorrection')\n")

    def test_the_toolbar_of_another_version_lists_nothing(self):
        self.expect("menu.py", (11, 3), "")


packaging.main()

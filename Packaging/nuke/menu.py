"""Lists the two nodes in the host's toolbar, if init.py found a plug-in for this version. Runs under Python 2.7 and 3."""
import os

import nuke


def _orvex_add_menu():
    version = "%d.%d" % (nuke.NUKE_VERSION_MAJOR, nuke.NUKE_VERSION_MINOR)
    if not os.path.isdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), "plugins", version)):
        return
    menu = nuke.menu("Nodes").addMenu("Orvex")
    for node in ("OrvexLensDistortionCorrection", "OrvexLensShadingCorrection"):
        menu.addCommand(node, "nuke.createNode('%s')" % node)


_orvex_add_menu()

"""Leads the host to the plug-in library of its own version. Runs under Python 2.7 and 3.

A library is valid for one version X.Y of the host only, so each lies in plugins/X.Y beside this file.
"""
import os
import sys

import nuke


def _orvex_add_plugin_path():
    plugins = os.path.join(os.path.dirname(os.path.abspath(__file__)), "plugins")
    version = "%d.%d" % (nuke.NUKE_VERSION_MAJOR, nuke.NUKE_VERSION_MINOR)
    folder = os.path.join(plugins, version)
    if os.path.isdir(folder):
        nuke.pluginAddPath(folder)
        return
    there = sorted(name for name in os.listdir(plugins) if name[:1].isdigit()) if os.path.isdir(plugins) else []
    sys.stderr.write("Orvex Lens Correction: there is no plug-in for version %s in %s (there is: %s).\n"
                     % (version, plugins, ", ".join(there) or "none"))


_orvex_add_plugin_path()

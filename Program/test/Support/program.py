"""What the tests of the program's command line share: they run the real program and compare what a user sees."""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import jsonschema

PROGRAM = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else None


class ProgramTest(unittest.TestCase):
    """Each case has a folder of its own, `self.folder`, in which the program runs."""

    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="orvex-program-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def run_program(self, *arguments, environment=None, timeout=300, before=None):
        """Runs the program; `environment` adds variables, and removes those whose value is None. `before` is called in the
        program's process first."""
        variables = dict(os.environ)
        for name, value in (environment or {}).items():
            variables.pop(name, None)
            if value is not None:
                variables[name] = value
        return subprocess.run([PROGRAM, *arguments], cwd=self.folder, env=variables, stdin=subprocess.DEVNULL,
                              capture_output=True, encoding="utf-8", errors="surrogateescape", timeout=timeout,
                              preexec_fn=before)

    def small_disk(self, name, kilobytes):
        """A disk of its own, empty, as a folder of that name; skips the case where none can be mounted."""
        os.mkdir(self.path(name))
        mount = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={kilobytes}k", "tmpfs", self.path(name)],
                               capture_output=True)
        if mount.returncode:
            self.skipTest("a small disk cannot be mounted here")
        self.addCleanup(subprocess.run, ["umount", "-l", self.path(name)], check=True)

    def expect(self, result, status, output=None, errors=None):
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        if output is not None:
            self.assertEqual(result.stdout, output)
        if errors is not None:
            self.assertEqual(result.stderr, errors)


def documented(document, command):
    """The words of a command, which must be a line of Docs/<document>.md: the test runs what the document tells."""
    root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..")
    with open(os.path.join(root, "Docs", document + ".md"), encoding="utf-8") as file:
        if command not in file.read().splitlines():
            raise AssertionError(f"Docs/{document}.md does not tell: {command}")
    return command.split()


def schema(name):
    root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..")
    with open(os.path.join(root, "Docs", "schemas", name + ".json"), encoding="utf-8") as file:
        return json.load(file)


def validated(document, name):
    """The document itself, once it follows Docs/schemas/<name>.json."""
    jsonschema.Draft7Validator(schema(name)).validate(document)
    return document


def progress_events(output):
    """What `--progress json` has printed, once each line follows Docs/schemas/progress.json."""
    return [validated(json.loads(line), "progress") for line in output.splitlines()]


def main():
    unittest.main(module="__main__", verbosity=2)

"""The check of correction files as a user and a program see it."""
import json
import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import program


class Check(program.ProgramTest):
    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def test_passes_a_flawless_file(self):
        self.write("a.olcf", correction_file.text(frames=range(1001, 1004)))
        self.expect(self.run_program("check", "a.olcf"), 0, "a.olcf: ok, 0 warnings, 3 frames 1001-1003\n", "")

    def test_names_file_and_line_of_each_defect(self):
        self.write("a.olcf", correction_file.text(frames=range(1001, 1003)) + "1003;;\nx;;\n")
        result = self.run_program("check", "a.olcf")
        self.expect(result, 2, errors="")
        lines = result.stdout.splitlines()
        self.assertEqual([line.split(": ")[0] for line in lines if "defect: " in line], ["a.olcf:26", "a.olcf:27"])
        self.assertEqual(lines[-1], "a.olcf: 2 defects, 0 warnings, 2 frames 1001-1002")

    def test_goes_through_all_files(self):
        self.write("good.olcf", correction_file.text(frames=range(1001, 1004)))
        self.expect(self.run_program("check", "missing.olcf", "good.olcf"), 2,
                    "missing.olcf: defect: Correction file could not be read.\n"
                    "missing.olcf: 1 defect, 0 warnings, 0 frames\n"
                    "good.olcf: ok, 0 warnings, 3 frames 1001-1003\n", "")

    def test_prints_json_by_its_schema(self):
        self.write("good.olcf", correction_file.text(frames=range(1001, 1004)))
        with open(self.path("bad.olcf"), "wb") as file:
            file.write(correction_file.text(frames=range(1, 3)).encode() + b"\xff\x00;;\n")
        result = self.run_program("check", "--json", "good.olcf", "bad.olcf", "missing.olcf")
        self.expect(result, 2, errors="")
        report = program.validated(json.loads(result.stdout), "check")
        self.assertEqual([(file["ok"], file["defects"], file["frames"]["count"]) for file in report["files"]],
                         [(True, 0, 3), (False, 1, 2), (False, 1, 0)])

    @unittest.skipIf("ORVEX_SANITIZED" in os.environ, "a sanitizer keeps memory of its own")
    def test_checks_a_large_file_in_less_than_twice_its_size_of_memory(self):
        size = 60_000_000
        with open(self.path("large.olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=[]))
            number = 0
            while file.tell() < size:
                file.write("".join(correction_file.frame_line(number + i) + "\n" for i in range(10000)))
                number += 10000
        size = os.path.getsize(self.path("large.olcf"))
        with open(self.path("out.txt"), "w", encoding="utf-8") as output:
            child = subprocess.Popen([program.PROGRAM, "check", "large.olcf"], cwd=self.folder, stdout=output)
            _, status, usage = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(child.returncode, 0)
        self.assertLess(usage.ru_maxrss * 1024, 2 * size)


program.main()

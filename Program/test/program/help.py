"""The help texts as a person asks for them, as a manual page, and as what bash completes: one source, all the same."""
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program


class Help(program.ProgramTest):
    def commands(self):
        listing = self.run_program("--help").stdout.split("Subcommands:\n")[1]
        return [line.split()[0] for line in listing.splitlines() if line.startswith("  ")]

    def complete(self, *words):
        """What bash offers for the last of the words after the program's name."""
        with open(self.path("completion"), "w", encoding="utf-8") as file:
            file.write(self.run_program("help", "--completion").stdout)
        script = 'source ./completion; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _lenscorrect; printf "%s\\n" "${COMPREPLY[@]}"'
        result = subprocess.run(["bash", "-c", script, "bash", "lenscorrect", *words], cwd=self.folder, encoding="utf-8",
                                capture_output=True)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout.split("\n")[:-1]

    def test_help_is_what_the_option_help_prints(self):
        self.expect(self.run_program("help"), 0, self.run_program("--help").stdout, "")
        self.expect(self.run_program("help", "plot"), 0, self.run_program("plot", "--help").stdout, "")

    def test_an_unknown_command_is_named(self):
        self.expect(self.run_program("help", "plto"), 2, "",
                    'lenscorrect: There is no command "plto"; did you mean "plot"? Run "lenscorrect help" for the list.\n')

    def test_the_manual_page_is_well_formed_and_tells_every_command(self):
        page = self.run_program("help", "--man")
        self.expect(page, 0, errors="")
        result = subprocess.run(["groff", "-man", "-ww", "-rHY=0", "-Tascii", "-P-c"], input=page.stdout, encoding="utf-8",
                                capture_output=True)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for command in self.commands():
            with self.subTest(command):
                self.assertIn(f"\n.SS {command}\n", page.stdout)
        self.assertIn("\\fB\\-o, \\-\\-output\\fR \\fITEXT\\fR\nPage (.html) or picture (.svg) to write (required)\n",
                      page.stdout)
        self.assertNotIn("probe", page.stdout)  # hidden
        self.assertEqual(page.stdout.count("\\fB\\-h, \\-\\-help\\fR"), 1)  # every command has it

    def test_a_line_of_an_example_never_becomes_a_request(self):
        for line in self.run_program("help", "--man").stdout.splitlines():
            if line.startswith("."):
                self.assertIn(line.split()[0], (".TH", ".SH", ".SS", ".TP", ".PP", ".B", ".BR", ".nf", ".fi"))

    def test_bash_completes_commands(self):
        self.assertEqual(self.complete("pl"), ["plot"])
        self.assertEqual(self.complete("help", "pl"), ["plot"])
        self.assertEqual([word for word in self.complete("") if not word.startswith("-")], self.commands())

    def test_bash_completes_options_of_the_command(self):
        self.assertEqual(self.complete("plot", "--o"), ["--output"])
        self.assertEqual(self.complete("devices", "--"), ["--help", "--device", "--json"])

    def test_bash_completes_file_names_elsewhere(self):
        with open(self.path("my lens.olcf"), "w", encoding="utf-8"):
            pass
        self.assertEqual(self.complete("check", "my"), ["my lens.olcf"])
        self.assertEqual(self.complete("plot", "--output", "my"), ["my lens.olcf"])


program.main()

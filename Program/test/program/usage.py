"""Wrong use ends with status 2 and a sentence that says what to do; help with status 0 and an example."""
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program


class Usage(program.ProgramTest):
    def test_without_a_command_says_that_one_is_required(self):
        self.expect(self.run_program(), 2, "",
                    'lenscorrect: A subcommand is required\n'
                    'Run "lenscorrect --help" for the options and an example.\n')

    def test_names_an_unknown_option_and_where_help_is(self):
        self.expect(self.run_program("formats", "--bad"), 2, "",
                    'lenscorrect: The following argument was not expected: --bad\n'
                    'Run "lenscorrect formats --help" for the options and an example.\n')

    def test_names_an_unknown_option_rather_than_what_is_missing(self):
        self.expect(self.run_program("info", "--bad", "--worse"), 2, "",
                    'lenscorrect: The following arguments were not expected: --bad --worse\n'
                    'Run "lenscorrect info --help" for the options and an example.\n')

    def test_takes_no_option_for_the_value_of_another(self):
        for option, arguments in (("--distortion", ("--distortion", "-o", "b.%d.exr")),
                                  ("--plate", ("-o", "b.%d.exr", "--plate", "--map"))):
            with self.subTest(option):
                self.expect(self.run_program("render", "a.%d.exr", *arguments), 2, "",
                            f'lenscorrect: {option} has no value\n'
                            'Run "lenscorrect render --help" for the options and an example.\n')

    def test_explains_the_many_files_that_a_shell_makes_of_a_star(self):
        for command in ("render", "info"):
            with self.subTest(command):
                self.expect(self.run_program(command, "a.1.exr", "a.2.exr", "a.3.exr"), 2, "",
                            'lenscorrect: The following arguments were not expected: a.2.exr a.3.exr; a sequence is one '
                            'argument, such as plate.%04d.exr\n'
                            f'Run "lenscorrect {command} --help" for the options and an example.\n')

    def test_names_an_unknown_command(self):
        self.expect(self.run_program("inof", "a.olcf"), 2, "",
                    'lenscorrect: There is no command "inof"; did you mean "info"?\n'
                    'Run "lenscorrect --help" for the options and an example.\n')

    def test_names_the_option_that_a_misspelt_one_may_be(self):
        self.expect(self.run_program("render", "a.%d.exr", "-o", "b.%d.exr", "--shadng=remove"), 2, "",
                    'lenscorrect: The following argument was not expected: --shadng=remove; did you mean "--shading"?\n'
                    'Run "lenscorrect render --help" for the options and an example.\n')

    def test_takes_no_empty_text_for_a_file(self):
        self.expect(self.run_program("sample", ""), 2, "",
                    'lenscorrect: DIR is empty\nRun "lenscorrect sample --help" for the options and an example.\n')

    def test_takes_no_empty_text_for_an_option_as_if_it_were_not_given(self):
        self.expect(self.run_program("render", "a.%d.exr", "-o", "b.%d.exr", "--shading", "remove", "--frames", ""), 2, "",
                    'lenscorrect: --frames is empty\n'
                    'Run "lenscorrect render --help" for the options and an example.\n')

    def commands(self):
        help_text = self.run_program("--help")
        self.expect(help_text, 0, errors="")
        listing = help_text.stdout.split("Subcommands:\n")[1]
        return [line.split()[0] for line in listing.splitlines() if line.startswith("  ")]

    def test_every_command_with_json_names_the_schema_of_a_versioned_layout(self):
        with_json = [command for command in self.commands() if "--json" in self.run_program(command, "--help").stdout]
        self.assertIn("summary", with_json)
        for command in with_json:
            with self.subTest(command):
                self.assertIn(f"Docs/schemas/{command}.json", self.run_program(command, "--help").stdout)
                schema = program.schema(command)
                self.assertFalse(schema["additionalProperties"])
                self.assertIn("version", schema["required"])

    def test_every_command_has_help_with_an_example(self):
        commands = self.commands()
        self.assertIn("formats", commands)
        for command in commands:
            with self.subTest(command):
                result = self.run_program(command, "--help")
                self.expect(result, 0, errors="")
                self.assertIn("\nExample:\n  lenscorrect " + command, result.stdout)

    def test_tells_its_version(self):
        for arguments in (["--version"], ["-v"], ["version"]):
            with self.subTest(arguments):
                result = self.run_program(*arguments)
                self.expect(result, 0, errors="")
                self.assertRegex(result.stdout, r"^lenscorrect \d+\.\d+\.\d+\n$")


program.main()

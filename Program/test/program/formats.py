"""The built-in recording format table as a user sees it."""
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program


class Formats(program.ProgramTest):
    def formats(self, *arguments):
        result = self.run_program("formats", *arguments, "--json")
        self.expect(result, 0, errors="")
        return program.validated(json.loads(result.stdout), "formats")["makers"]

    def test_lists_makers(self):
        self.expect(self.run_program("formats"), 0,
                    "ARRI        8 models, 50 formats\n"
                    "BlackMagic  1 model, 8 formats\n"
                    "Panavision  1 model, 37 formats\n"
                    "RED         38 models, 2696 formats\n"
                    "Sony        1 model, 13 formats\n", "")

    def test_lists_the_models_of_a_maker_in_any_letter_case(self):
        self.expect(self.run_program("formats", "arri"), 0,
                    "ALEXA 65       3 formats\n"
                    "ALEXA Classic  3 formats\n"
                    "ALEXA LF       5 formats\n"
                    "ALEXA Mini     9 formats\n"
                    "ALEXA Mini LF  5 formats\n"
                    "ALEXA SXT      12 formats\n"
                    "ALEXA XT       8 formats\n"
                    "AMIRA          5 formats\n", "")

    def test_lists_the_formats_of_a_model(self):
        result = self.run_program("formats", "ARRI", "alexa 65")
        self.expect(result, 0, errors="")
        self.assertIn("RAW Open Gate 6.5K", result.stdout)
        self.assertIn("54.12 x 25.58      6560 x 3100        29.930\n", result.stdout)

    def test_prints_a_models_formats_as_json(self):
        formats = self.formats("ARRI", "AMIRA")["ARRI"]["AMIRA"]
        self.assertEqual(len(formats), 5)
        self.assertIn({"name": "16:9 S16 HD", "imageAreaWidth": 13.2, "imageAreaHeight": 7.43,
                       "clipResolutionWidth": 1920, "clipResolutionHeight": 1080, "imageRadius": 7.573719}, formats)

    def test_prints_the_whole_table_as_json(self):
        table = self.formats()
        self.assertEqual(sum(len(formats) for models in table.values() for formats in models.values()), 2804)

    def test_spells_maker_and_model_in_json_as_the_table_does(self):
        formats = self.formats("arri", "amira")
        self.assertEqual((list(formats), list(formats["ARRI"])), (["ARRI"], ["AMIRA"]))

    def test_prints_all_models_of_a_maker_as_json(self):
        formats = self.formats("arri")
        self.assertEqual(list(formats), ["ARRI"])
        self.assertEqual(len(formats["ARRI"]), 8)

    def test_names_the_known_makers_for_an_unknown_one(self):
        self.expect(self.run_program("formats", "Cinecam"), 2, "",
                    'lenscorrect: Camera maker "Cinecam" is not in the table; known are ARRI, BlackMagic, Panavision, '
                    "RED, Sony.\n")

    def test_names_the_known_models_for_an_unknown_one(self):
        self.expect(self.run_program("formats", "Sony", "X"), 2, "",
                    'lenscorrect: Camera model "X" of Sony is not in the table; known are MPC-3610.\n')


program.main()

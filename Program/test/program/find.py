"""Where the correction file of a clip is found, and what is said when there is none."""
import json
import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import exr
import program


class Find(program.ProgramTest):
    def give(self, *names, content="x"):
        path = self.path(*names)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(content)
        return path

    def setUp(self):
        super().setUp()
        # Deep enough that the search stays away from the machine's folder for temporary files, where folders of others
        # come and go.
        self.folder = self.path("a", "b", "c", "d", "e")
        os.makedirs(self.folder)
        for frame in (1, 2):
            self.give("deep", "shot", f"plate.{frame:04}.exr")

    def test_prints_the_file_beside_a_sequence(self):
        file = self.give("deep", "shot", "plate.olcf", content=correction_file.one_frame())
        self.expect(self.run_program("find", self.path("deep", "shot", "plate.%04d.exr")), 0, file + "\n", "")

    def test_finds_from_a_relative_folder_too(self):
        file = self.give("lens", "my plate.olcf", content=correction_file.one_frame())
        self.expect(self.run_program("find", "deep/shot"), 0, file + "\n", "")

    def test_finds_the_file_of_a_movie(self):
        self.give("A001.mov")
        file = self.give("A001.olcf", content=correction_file.one_frame(videoFileName="A001.mov"))
        self.expect(self.run_program("find", "A001.mov"), 0, file + "\n", "")

    def test_lists_the_searched_folders_in_order_when_there_is_none(self):
        self.give("deep", "shot", "other plate.olcf", content=correction_file.one_frame(videoFileName="other"))
        result = self.run_program("find", "deep/shot/plate.####.exr")
        self.expect(result, 2, "")
        lines = result.stderr.splitlines()
        self.assertEqual(lines[0], f'lenscorrect: No correction file for the clip "{self.path("deep", "shot", "plate")}" '
                                   "was found. Folders searched, in order:")
        self.assertEqual(lines[1:4], ["  " + self.path("deep", "shot"), "  " + self.path("deep"), "  " + self.folder])
        self.assertEqual(lines[-1],
                         "A match ends in .olcf, contains the clip's name, and names this clip in its header.")

    def give_twenty_folders(self):
        for number in range(20):
            os.makedirs(self.path("deep", "shot", f"folder {number}"))

    def test_lists_ten_folders_and_counts_the_others(self):
        self.give_twenty_folders()
        searched = json.loads(self.run_program("find", "deep/shot", "--json").stdout)["searchedFolders"]
        self.assertGreater(len(searched), 21)
        self.expect(self.run_program("find", "deep/shot"), 2, "", "\n".join([
            f'lenscorrect: No correction file for the clip "{self.path("deep", "shot", "plate")}" was found. Folders '
            "searched, in order:",
            *("  " + folder for folder in searched[:10]),
            f'  and {len(searched) - 10} more; "lenscorrect find --all" lists them',
            "A match ends in .olcf, contains the clip's name, and names this clip in its header.\n"]))

    def test_lists_all_folders_if_asked_to(self):
        self.give_twenty_folders()
        searched = json.loads(self.run_program("find", "deep/shot", "--json").stdout)["searchedFolders"]
        lines = self.run_program("find", "deep/shot", "--all").stderr.splitlines()
        self.assertEqual(lines[1:-1], ["  " + folder for folder in searched])

    def find_as_ordinary_user(self, *arguments):
        command = [program.PROGRAM, *arguments]
        if os.geteuid() == 0:
            # Root may read everything unless it gives that right away.
            command = ["setpriv", "--bounding-set=-dac_override,-dac_read_search", "--inh-caps=-dac_override", *command]
        return subprocess.run(command, cwd=self.folder, capture_output=True, encoding="utf-8", timeout=300)

    def lock(self, path):
        os.makedirs(path, exist_ok=True)
        os.chmod(path, 0)
        self.addCleanup(os.chmod, path, 0o755)

    @unittest.skipIf(os.geteuid() == 0 and not shutil.which("setpriv"), "needs an ordinary user")
    def test_finds_a_file_beyond_a_folder_that_is_locked(self):
        self.lock(self.path("deep", "shot", "locked"))
        self.lock(self.path("locked"))
        file = self.give("lens", "plate.olcf", content=correction_file.one_frame())
        self.expect(self.find_as_ordinary_user("find", "deep/shot"), 0, file + "\n", "")

    @unittest.skipIf(os.geteuid() == 0 and not shutil.which("setpriv"), "needs an ordinary user")
    def test_names_a_locked_folder_if_there_is_no_file(self):
        locked = self.path("deep", "shot", "locked")
        self.lock(locked)
        self.expect(self.find_as_ordinary_user("find", "deep/shot"), 2, "",
                    f'lenscorrect: No correction file for the clip "{self.path("deep", "shot", "plate")}" was found, but '
                    f'folder "{locked}" could not be searched: Permission denied. If the file is there, make the folder '
                    "readable, or place the file next to the clip.\n")

    @unittest.skipIf(os.geteuid() == 0 and not shutil.which("setpriv"), "needs an ordinary user")
    def test_tells_a_locked_folder_in_a_report_too(self):
        locked = self.path("deep", "shot", "locked")
        self.lock(locked)
        self.assertIn(f"none found, but {locked} could not be searched: Permission denied\n",
                      self.find_as_ordinary_user("info", "deep/shot").stdout)

    def test_tells_why_files_were_passed_over(self):
        near = [self.give("deep", "shot", name, content=content) for name, content in (
            ("lens.olcf", correction_file.one_frame()), ("plate.OLCF", correction_file.one_frame()), ("plate_bad.olcf", "no correction file"),
            ("plate_other.olcf", correction_file.one_frame(videoFileName="other.mov", clipName="other")))]
        os.mkdir(self.path("deep", "shot", "plate_folder.olcf"))
        far = self.give("lens", "plate.olcf", content=correction_file.one_frame(videoFileName="other", clipName=""))
        self.give("lens", "lens of another.olcf", content=correction_file.one_frame(videoFileName="another"))
        result = self.run_program("find", "deep/shot")
        self.expect(result, 2, "")
        lines = result.stderr.splitlines()
        self.assertEqual(lines[lines.index("Files rejected:") + 1:-1], [
            f'  {near[0]}: its name does not contain "plate"',
            f'  {near[1]}: its name does not end in ".olcf" in lower case',
            f'  {near[2]}: it cannot be parsed; "lenscorrect check" lists its defects',
            f'  {self.path("deep", "shot", "plate_folder.olcf")}: it cannot be read',
            f'  {near[3]}: its header names the clip "other.mov" or "other", not "plate"',
            f'  {far}: its header names the clip "other", not "plate"'])

    def test_tells_the_same_as_json(self):
        clip = self.path("deep", "shot", "plate")
        missing = self.run_program("find", "deep/shot", "--json")
        self.expect(missing, 2, errors="")
        answer = program.validated(json.loads(missing.stdout), "find")
        self.assertEqual((answer["clip"], answer["correctionFile"]), (clip, None))
        self.assertEqual(answer["searchedFolders"][0], self.path("deep", "shot"))
        self.assertEqual(answer["passedOverFiles"], [])
        file = self.give("deep", "shot", "plate.olcf", content=correction_file.one_frame())
        found = self.run_program("find", "deep/shot", "--json")
        self.expect(found, 0, errors="")
        self.assertEqual(program.validated(json.loads(found.stdout), "find"), {"version": 1, "clip": clip, "correctionFile": file})

    def give_named_clip(self):
        """Camera metadata beside the clip give it another name than its files."""
        exr.write(self.give("deep", "shot", "plate.0001.exr"), exr.Part((0, 0, 3, 3)).fill("R", exr.HALF, lambda x, y: 0.5))
        self.give("deep", "shot", "plate.metadata.json",
                  content='{"input/filename": "A001_C002.R3D", "r3d/reel_id_full": "A001_C002"}')
        self.give("deep", "shot", "plate.olcf", content=correction_file.one_frame())

    def test_searches_under_the_name_in_the_metadata_as_render_does(self):
        self.give_named_clip()
        file = self.give("lens", "A001_C002.olcf", content=correction_file.one_frame(videoFileName="A001_C002"))
        self.expect(self.run_program("find", "deep/shot/plate.%04d.exr"), 0, file + "\n", "")

    def test_tells_that_a_clip_has_its_name_from_the_metadata(self):
        self.give_named_clip()
        result = self.run_program("find", "deep/shot/plate.%04d.exr")
        self.expect(result, 2, "")
        lines = result.stderr.splitlines()
        self.assertEqual(lines[0], "lenscorrect: No correction file for the clip "
                                   f'"{self.path("deep", "shot", "A001_C002")}" was found. Folders searched, in order:')
        self.assertEqual(lines[-3:], [
            f'  {self.path("deep", "shot", "plate.olcf")}: its name does not contain "A001_C002"',
            "A match ends in .olcf, contains the clip's name, and names this clip in its header.",
            'The clip\'s name, "A001_C002", is from its metadata; its files are "deep/shot/plate.%04d.exr".'])

    def test_names_a_clip_that_does_not_exist(self):
        self.expect(self.run_program("find", "no.mov"), 2, "", 'lenscorrect: Clip "no.mov" does not exist.\n')

    def test_requires_a_clip(self):
        self.expect(self.run_program("find"), 2, "", 'lenscorrect: CLIP is required\nRun "lenscorrect find --help" for '
                                                     "the options and an example.\n")


program.main()

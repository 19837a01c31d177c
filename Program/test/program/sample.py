"""The sample clip as files: what is in them, and that no partial file is left when writing ends early."""
import json
import os
import resource
import signal
import struct
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import program


def attributes(path):
    """Attributes of an EXR header as {name: (type, bytes)}."""
    with open(path, "rb") as file:
        data = file.read(65536)
    assert data[:4] == b"\x76\x2f\x31\x01", path
    position, result = 8, {}
    while data[position]:
        name, rest = data[position:].split(b"\0", 1)
        kind = rest.split(b"\0", 1)[0]
        position += len(name) + len(kind) + 2
        size = struct.unpack_from("<i", data, position)[0]
        result[name.decode()] = (kind.decode(), data[position + 4:position + 4 + size])
        position += 4 + size
    return result


def is_whole(path):
    """Whether the file's last block ends where the file does."""
    header = attributes(path)
    with open(path, "rb") as file:
        data = file.read()
    min_y, max_y = struct.unpack("<4i", header["dataWindow"][1])[1::2]
    blocks = (max_y - min_y) // 16 + 1  # ZIP: 16 rows each
    # The table of offsets follows the header; its first offset points right behind the table.
    table = next(start for start in range(8, len(data) - 8)
                 if struct.unpack_from("<Q", data, start)[0] == start + 8 * blocks)
    last = max(struct.unpack_from(f"<{blocks}Q", data, table))
    return last + 8 + struct.unpack_from("<i", data, last + 4)[0] == len(data)


class Sample(program.ProgramTest):
    def sample(self, *arguments, **options):
        return self.run_program("sample", "clip", "--size", "128x96", *arguments, **options)

    def files(self):
        return sorted(os.listdir(self.path("clip")))

    def test_writes_plate_reference_correction_file_and_readme(self):
        self.expect(self.sample("--frames", "2", "--progress", "none"), 0, "", "")
        self.assertEqual(self.files(), ["README.md", "clean.1001.exr", "clean.1002.exr", "plate.1001.exr",
                                        "plate.1002.exr", "plate.olcf"])
        for name in self.files():
            if name.endswith(".exr"):
                self.assertTrue(is_whole(self.path("clip", name)), name)

    def test_gives_the_plate_a_cameras_metadata(self):
        self.expect(self.sample("--frames", "30", "--progress", "none"), 0)
        header = attributes(self.path("clip", "plate.1030.exr"))
        self.assertEqual(header["timeCode"], ("timecode", struct.pack("<II", 0x01000105, 0)))
        self.assertEqual(header["framesPerSecond"], ("rational", struct.pack("<iI", 24, 1)))
        self.assertEqual(header["reelName"], ("string", b"A001R1AB"))
        self.assertEqual(header["clipName"], ("string", b"plate"))
        self.assertEqual(header["effectiveFocalLength"], ("float", struct.pack("<f", 32.5)))
        self.assertEqual(header["channels"][1], b"".join(
            name + b"\0" + struct.pack("<iiii", 1, 0, 1, 1) for name in (b"B", b"G", b"R")) + b"\0")
        self.assertEqual(header["compression"][1], b"\x03")  # ZIP, 16 rows

    def test_has_a_correction_file_that_is_found_and_sound(self):
        self.expect(self.sample("--frames", "2", "--progress", "none"), 0)
        self.expect(self.run_program("find", "clip/plate.%04d.exr"), 0, self.path("clip", "plate.olcf") + "\n", "")
        self.expect(self.run_program("check", "clip/plate.olcf"), 0)

    def test_states_the_error_bound_where_programs_find_it(self):
        self.expect(self.sample("--frames", "1", "--progress", "none"), 0)
        with open(self.path("clip", "README.md"), encoding="utf-8") as file:
            bounds = [line.split(":")[1] for line in file if line.strip().startswith("error bound:")]
        self.assertEqual(len(bounds), 1)
        self.assertTrue(0.0 < float(bounds[0]) < 0.25, bounds)

    def test_gives_the_same_bytes_every_time(self):
        def contents():
            self.expect(self.sample("--frames", "2", "--progress", "none"), 0)
            return {name: open(self.path("clip", name), "rb").read() for name in self.files()}

        self.assertEqual(contents(), contents())

    def test_tells_its_progress_as_json(self):
        result = self.sample("--frames", "2", "--progress", "json")
        self.expect(result, 0, errors="")
        events = program.progress_events(result.stdout)
        self.assertEqual([event["event"] for event in events], ["start", "frame", "frame", "end"])

    def test_refuses_impossible_clips(self):
        self.expect(self.run_program("sample", "clip", "--size", "big"), 2, "",
                    'lenscorrect: --size "big" is not a size in pixels, such as 1920x1080.\n')
        self.expect(self.run_program("sample", "clip", "--frames", "0"), 2, "",
                    "lenscorrect: A sample cannot have 0 frames; give 1 to 100000.\n")

    def test_says_which_folder_cannot_be_made(self):
        with open(self.path("clip"), "w", encoding="utf-8"):
            pass
        self.expect(self.sample("--progress", "none"), 4, "",
                    'lenscorrect: Folder "clip" could not be created: Not a directory.\n')

    def test_leaves_no_partial_file_when_there_is_no_room(self):
        # The limit allows the text files, and ends every picture in the middle.
        result = subprocess.run([program.PROGRAM, "sample", "clip", "--size", "512x512", "--progress", "none"],
                                cwd=self.folder, capture_output=True, encoding="utf-8", timeout=300,
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (16384, 16384)))
        self.assertEqual(result.returncode, 4, result.stderr)
        self.assertIn("File too large", result.stderr)
        self.assertEqual(self.files(), ["README.md", "plate.olcf"])

    def interrupt(self, *signals):
        """Signals the program after its first frame; its exit status."""
        process = subprocess.Popen([program.PROGRAM, "sample", "clip", "--size", "128x96", "--frames", "100000",
                                    "--progress", "json"], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, encoding="utf-8")
        with process.stdout as events:
            for line in events:
                if json.loads(line)["event"] == "frame":
                    break
            for number in signals:
                process.send_signal(number)
            events.read()
        return process.wait(timeout=300)

    def test_stops_after_the_frame_in_flight_when_it_is_told_to(self):
        for number, status in ((signal.SIGTERM, 143), (signal.SIGINT, 130)):
            self.assertEqual(self.interrupt(number), status)
            plates = [name for name in self.files() if name.startswith("plate.1")]
            cleans = [name for name in self.files() if name.startswith("clean.1")]
            self.assertEqual(len(plates), len(cleans))
            self.assertLess(len(plates), 100000)
            self.assertEqual([name for name in self.files() if name.startswith(".")], [])

    def test_leaves_no_temporary_file_when_it_is_told_twice(self):
        self.assertIn(self.interrupt(signal.SIGTERM, signal.SIGINT), (130, 143))
        self.assertEqual([name for name in self.files() if name.startswith(".")], [])
        for name in self.files():
            if name.endswith(".exr"):
                self.assertTrue(is_whole(self.path("clip", name)), name)


program.main()

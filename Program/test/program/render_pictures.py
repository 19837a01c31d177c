"""lenscorrect render: what is in the pictures that it writes."""
import json
import os
import random
import re
import struct
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test
from render_test import HEIGHT, WIDTH, pattern

UNDISTORT = ("--distortion", "undistort")
DISTORT = ("--distortion", "distort")
BOTH = ("--distortion", "undistort", "--shading", "remove")
BOTH_BACK = ("--distortion", "distort", "--shading", "add")
HALF_ROUNDING = 2**-11  # of values below 1


def oiiotool(*arguments):
    subprocess.run(["oiiotool", *arguments], check=True, capture_output=True)


class Sample(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.expect(self.run_program("sample", "clip", "--size", "128x96", "--frames", "2", "--progress", "none"), 0)

    def test_differs_from_the_clean_reference_by_no_more_than_its_readme_derives(self):
        with open(self.path("clip", "README.md"), encoding="utf-8") as file:
            bound = float(re.search(r"error bound: ([0-9.]+)", file.read())[1])
        self.expect(self.render(*BOTH, clip="clip/plate.%04d.exr"), 0, "", "")
        for frame in (1001, 1002):
            got = exr.read(self.path(f"out/f.{frame}.exr"))[0]
            clean = exr.read(self.path(f"clip/clean.{frame}.exr"))[0]
            self.assertEqual(got.types(), dict.fromkeys("BGR", exr.HALF))
            self.expect_close(got, clean, bound, window=(2, 2, 125, 93))
            # Without a correction the plate is further away than that, so the comparison means something.
            with self.assertRaises(AssertionError):
                self.expect_close(exr.read(self.path(f"clip/plate.{frame}.exr"))[0], clean, bound)

    def test_carries_every_attribute_over_but_the_windows_and_adds_its_mark(self):
        got = self.rendered(*BOTH, clip="clip/plate.%04d.exr")[0].attributes
        plate = exr.read(self.path("clip/plate.1001.exr"))[0].attributes
        mark = {name: got.pop(name)[1].decode() for name in list(got) if name.startswith("com.orvex.lenscorrect.")}
        self.assertNotEqual(got.pop("dataWindow"), plate.pop("dataWindow"))
        self.assertEqual(got, plate)
        self.assertEqual(mark.pop("com.orvex.lenscorrect.correctionFile"),
                         os.path.join(os.path.realpath(self.folder), "clip", "plate.olcf"))
        self.assertRegex(mark.pop("com.orvex.lenscorrect.version"), r"^\d+\.\d+\.\d+$")
        self.assertEqual(mark, {"com.orvex.lenscorrect.distortion": "undistort",
                                "com.orvex.lenscorrect.shading": "remove"})

    def test_marks_its_frames_with_the_correction_file_of_the_clips_name_in_the_metadata(self):
        # The one that names the files must not be mistaken for it.
        os.rename(self.path("clip", "plate.olcf"), self.path("clip", "A001_C002.olcf"))
        with open(self.path("clip", "A001_C002.olcf"), encoding="utf-8") as file:
            text = file.read()
        with open(self.path("clip", "plate.olcf"), "w", encoding="utf-8") as file:
            file.write(text)
        with open(self.path("clip", "A001_C002.olcf"), "w", encoding="utf-8") as file:
            file.write(text.replace("videoFileName:=plate", "videoFileName:=A001_C002"))
        with open(self.path("clip", "plate.metadata.json"), "w", encoding="utf-8") as file:
            file.write('{"input/filename": "A001_C002.R3D", "r3d/reel_id_full": "A001_C002", "r3d/framerate": 24, '
                       '"frames": {"1001": {"r3d/start_absolute_timecode": "01:00:00:00"}}}')
        got = self.rendered(*BOTH, "--frames", "1001", clip="clip/plate.%04d.exr")[0].attributes
        self.assertEqual(got["com.orvex.lenscorrect.correctionFile"][1].decode(),
                         os.path.join(os.path.realpath(self.folder), "clip", "A001_C002.olcf"))


class Attributes(render_test.RenderTest):
    def test_of_any_kind_are_carried_over_byte_by_byte(self):
        self.write_lens()
        attributes = {
            "worldToCamera": ("m44f", struct.pack("<16f", *range(16))), "keyCode": ("keycode", struct.pack("<7i", *range(7))),
            "notes": ("stringvector", struct.pack("<i", 3) + b"one" + struct.pack("<i", 2) + b"zw"),
            "vendorBlob": ("vendorKind", bytes(range(256))), "empty": ("string", b""),
            "latin1": ("string", b"caf\xe9 \x00 inside"), "nan": ("float", struct.pack("<I", 0x7fc00123)),
            "double": ("double", struct.pack("<d", 0.1)), "owner": ("string", "Ünïcode".encode())}
        self.write_plate(self.part("RGB", attributes=attributes))
        got = self.rendered(*BOTH)[0].attributes
        for name, value in attributes.items():
            self.assertEqual(got[name], value, name)
        self.assertEqual(got["timeCode"], exr.timecode(0, 0, 0, 0))


class OtherFormats(render_test.RenderTest):
    def round_trip(self, ending, tolerance):
        """Out of the lens into another format, and from there back into the lens."""
        self.write_lens()
        self.write_plate(self.part("RGB"))
        middle = "middle/plate.%04d." + ending
        self.expect(self.render(*UNDISTORT, "--window", "format", out=middle), 0, "", "")
        back = self.rendered(*DISTORT, "--plate", "plate.%04d.exr", clip=middle, out="back/f.%04d.exr")[0]
        self.expect_close(back, self.part("RGB"), tolerance, window=(4, 4, WIDTH - 5, HEIGHT - 5))

    def test_a_round_trip_through_dpx(self):
        self.round_trip("dpx", 0.015)

    def test_a_round_trip_through_tiff(self):
        self.round_trip("tif", 0.015)

    def test_a_movie_whose_correction_file_names_it_with_its_extension(self):
        for name, codec in (("plate.mxf", ("mpeg2video", "-q:v", "1")), ("plate.mov", ("prores_ks",))):
            subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc=size={WIDTH}x{HEIGHT}:rate=25", "-frames:v",
                            "3", "-c:v", *codec, self.path(name)], check=True)
            self.write_lens(count=3, videoFileName=name, clipName=name)
            self.expect(self.render(*UNDISTORT, clip=name, out="out." + name + "/f.%04d.exr"), 0, "", "")
            self.assertEqual(self.names("out." + name), ["f.0001.exr", "f.0002.exr", "f.0003.exr"])
            self.write_lens(count=3, videoFileName="plate", clipName="plate")
            self.expect(self.render(*UNDISTORT, clip=name, out="none/f.%04d.exr"), 2)


class PictureSequences(render_test.RenderTest):
    """Sequences of every format are one clip, as EXR sequences are: the correction file names it without number."""

    def setUp(self):
        super().setUp()
        self.write_lens(count=2)
        self.write_plate(self.part("RGB"), frames=(1001, 1002))
        self.reference = self.rendered(*UNDISTORT, out="reference/f.%04d.exr", frame=1002)[0]

    def convert(self, pattern, *options):
        for frame in (1001, 1002):
            subprocess.run(["oiiotool", self.path(f"plate.{frame}.exr"), *options, "-o", self.path(pattern % frame)],
                           check=True, capture_output=True)
        for frame in (1001, 1002):
            os.rename(self.path(f"plate.{frame}.exr"), self.path(f"was.{frame}.exr"))

    def expect_like_exr(self, pattern, tolerance, *options):
        self.convert(pattern, *options)
        got = self.rendered(*UNDISTORT, clip=pattern, frame=1002)[0]
        self.expect_close(got, self.reference, tolerance)

    def test_of_tiff_are_corrected_like_exr(self):
        self.expect_like_exr("plate.%04d.tif", 0.0, "-d", "float")

    def test_of_png_are_corrected_like_exr(self):
        # Two roundings to 16 bits, and the interpolation between values that were rounded.
        self.expect_like_exr("plate.%04d.png", 3 / 65535, "-d", "uint16")

    def test_of_jpeg_are_corrected_like_exr(self):
        # What the compression costs a smooth picture at quality 100: two steps of 8 bits in each of its conversions.
        self.expect_like_exr("plate.%04d.jpg", 6 / 255, "--quality", "100", "--attrib", "jpeg:subsampling", "4:4:4")

    def test_are_one_clip_also_where_a_line_sets_the_number_apart(self):
        for frame in (1001, 1002):
            os.rename(self.path(f"plate.{frame}.exr"), self.path(f"plate_{frame}.exr"))
        self.expect_same(self.rendered(*UNDISTORT, clip="plate_%04d.exr", frame=1002)[0].channels["R"],
                         self.reference.channels["R"])

    def test_take_a_correction_file_by_hand(self):
        self.convert("plate.%04d.tif", "-d", "float")
        os.mkdir(self.path("lens"))
        os.rename(self.path("plate.olcf"), self.path("lens", "by hand.olcf"))
        got = self.rendered(*UNDISTORT, "--correction-file", "lens/by hand.olcf", clip="plate.%04d.tif", frame=1002)[0]
        self.expect_close(got, self.reference, 0.0)

    def test_are_the_same_clip_to_every_command(self):
        self.convert("plate.%04d.tif", "-d", "float")
        self.expect(self.run_program("find", "plate.%04d.tif"), 0, self.path("plate.olcf") + "\n", "")
        info = self.run_program("info", "plate.%04d.tif", "--frames", "--json")
        self.expect(info, 0, errors="")
        self.assertEqual([frame["record"]["frame"] for frame in json.loads(info.stdout)["frames"]], [0, 1])
        self.expect(self.run_program("verify", "plate.%04d.tif", "--tolerance", "0.5"), 0, errors="")
        self.expect(self.run_program("stmap", "plate.%04d.tif", "--direction", "undistort", "-o", "map/m.%04d.exr",
                                     "--progress", "none"), 0)
        self.expect(self.render("--distortion", "distort", "--plate", "plate.%04d.tif", clip="was.%04d.exr"), 0, "", "")


class Channels(render_test.RenderTest):
    """What holds for red, green and blue of a plain picture is where it must be in every channel of every layer."""

    def setUp(self):
        super().setUp()
        self.write_lens()
        self.write_plate(self.part("RGBA"))
        self.plain = self.rendered(*UNDISTORT, out="plain/f.%04d.exr")[0]

    def expect_like_plain(self, part, channel, tolerance=0.0):
        self.assertEqual(part.data, self.plain.data)
        for row, wanted in zip(part.channels[channel][1], self.plain.channels["R"][1]):
            for value, reference in zip(row, wanted):
                self.assertLessEqual(abs(value - reference), tolerance, channel)

    def test_moves_depth_and_layers_of_any_size_and_type_with_the_colour(self):
        part = self.part(["R", "G", "B", "A"], exr.HALF)
        floats = ["Z", "one.X", "two.X", "two.Y", "three.R", "three.G", "three.B", "four.R", "four.G", "four.B",
                  "four.A", "six.a", "six.b", "six.c", "six.d", "six.e", "six.f", "a.b.c"]
        halfs = ["mixed.x", "mixed.y"]
        for name in floats + ["mixed.z"]:
            part.fill(name, exr.FLOAT, pattern)
        for name in halfs:
            part.fill(name, exr.HALF, pattern)
        part.fill("id", exr.UINT, lambda x, y: 3000000)
        self.write_plate(part)
        got = self.rendered(*UNDISTORT)[0]
        self.assertEqual(got.types(), part.types())
        for name in floats + ["mixed.z"]:
            self.expect_like_plain(got, name)
        for name in ["R", "G", "B", "A"] + halfs:
            self.expect_like_plain(got, name, 2 * HALF_ROUNDING)
        self.assertEqual(got.at("id", WIDTH // 2, HEIGHT // 2), 3000000)

    def test_corrects_a_picture_without_alpha(self):
        self.write_plate(self.part("RGB"))
        got = self.rendered(*UNDISTORT)[0]
        self.assertEqual(list(got.channels), ["B", "G", "R"])
        self.expect_like_plain(got, "R")

    def test_corrects_a_picture_of_luminance_only(self):
        self.write_plate(self.part("Y"))
        got = self.rendered(*UNDISTORT)[0]
        self.assertEqual(list(got.channels), ["Y"])
        self.expect_like_plain(got, "Y")

    def test_corrects_a_picture_that_has_layers_only(self):
        self.write_plate(self.part(["beauty.R", "beauty.G", "beauty.B"]))
        got = self.rendered(*UNDISTORT)[0]
        self.assertEqual(list(got.channels), ["beauty.B", "beauty.G", "beauty.R"])
        self.expect_like_plain(got, "beauty.G")

    def test_shades_colour_but_not_alpha_depth_and_ids(self):
        part = self.part(["R", "G", "B", "A", "Z", "beauty.R", "beauty.G", "beauty.B"])
        part.fill("id", exr.UINT, lambda x, y: 1000 + x)
        self.write_plate(part)
        self.expect(self.render("--shading", "remove"), 0, "",
                    "Not corrected for shading: Z, id (use --shading-layers to choose layers)\n")
        self.expect_shaded(["R", "G", "B", "beauty.R", "beauty.G", "beauty.B"], ["A", "Z", "id"])

    def expect_shaded(self, shaded, unshaded):
        """Compares a rendered frame with the plate; in a corner, the lens took a fifth of the light at least."""
        x, y = self.plain.display[:2]
        plate, got = (exr.read(self.path(name))[0] for name in ("plate.1001.exr", "out/f.1001.exr"))
        for name in shaded:
            self.assertGreater(got.at(name, x, y), plate.at(name, x, y) * 1.2, name)
        for name in unshaded:
            self.expect_same(got.channels[name], plate.channels[name])

    def test_shades_the_colours_of_a_layer_beside_its_other_channels(self):
        colours = [layer + "." + colour for layer in ("GRID.RGB", "SOLID", "light_p.RGB", "beauty") for colour in "BGR"]
        rest = ["beauty.Z", "beauty.A", "beauty.id", "beauty.x", "beauty.y", "objectID.R", "N.X", "N.Y", "N.Z"]
        self.write_plate(self.part(colours + rest))
        for direction in ("remove", "add"):
            result = self.render("--shading", direction, "--overwrite", clip="plate.%04d.exr")
            self.expect(result, 0, "", "Not corrected for shading: N, beauty.Z, beauty.id, beauty.x, beauty.y, objectID (use --shading-layers to choose layers)\n")
            self.expect_shaded(colours if direction == "remove" else [], rest)
            self.assertEqual(exr.read(self.path("out/f.1001.exr"))[0].text("com.orvex.lenscorrect.unshaded"),
                             "N, beauty.Z, beauty.id, beauty.x, beauty.y, objectID")

    def test_moves_channels_that_stay_unshaded_with_those_that_are_shaded(self):
        part = self.part(["R", "G", "B", "Z", "beauty.R", "beauty.Z"])
        self.write_plate(part)
        for arguments in (BOTH, ("--distortion", "distort", "--shading", "add")):
            alone = self.rendered(*arguments[:2], "--overwrite", out="alone/f.%04d.exr")[0]
            self.expect(self.render(*arguments, "--overwrite"), 0, "",
                        "Not corrected for shading: Z, beauty.Z (use --shading-layers to choose layers)\n")
            got = exr.read(self.path("out/f.1001.exr"))[0]
            self.expect_close(got, alone, 0.0, channels=["Z", "beauty.Z"])
            self.assertNotEqual(got.channels["beauty.R"], alone.channels["beauty.R"])

    def test_shades_the_layers_that_patterns_name(self):
        self.write_plate(self.part(["R", "G", "B", "Z", "N.X", "N.Y", "N.Z", "crypto.R", "crypto.A"]))
        self.expect(self.render("--shading", "remove", "--shading-layers", "rgba,cry*,N.X"), 0, "",
                    "Not corrected for shading: N.Y, N.Z, Z (use --shading-layers to choose layers)\n")
        self.expect_shaded(["R", "G", "B", "crypto.R", "N.X"], ["N.Y", "N.Z", "Z", "crypto.A"])

    def test_makes_a_frame_again_when_other_layers_are_to_be_shaded(self):
        self.write_plate(self.part(["R", "G", "B", "Z"]))
        for patterns, last in (("rgba", "1 frames"), ("rgba", "1 skipped"), ("*", "1 frames")):
            events = program.progress_events(self.run_program(
                "render", "plate.%04d.exr", "--progress", "json", "-o", "out/f.%04d.exr", "--skip-existing", "--shading",
                "remove", "--shading-layers", patterns).stdout)
            self.assertEqual(events[-1]["skipped"], 1 if "skipped" in last else 0)

    def test_tells_programs_what_stayed_unshaded(self):
        self.write_plate(self.part(["R", "G", "B", "Z"]))
        events = program.progress_events(self.run_program(
            "render", "plate.%04d.exr", "--progress", "json", "-o", "out/f.%04d.exr", "--shading", "remove").stdout)
        self.assertEqual(events[-1]["unshaded"], ["Z"])

    def test_shades_luminance(self):
        self.write_plate(self.part("Y"))
        got = self.rendered("--shading", "remove")[0]
        self.assertGreater(got.at("Y", 0, 0), pattern(0, 0) * 1.2)

    def test_corrects_every_part_of_a_file_in_its_own_size(self):
        big = (0, 0, 2 * WIDTH - 1, 2 * HEIGHT - 1)
        self.write_plate(self.part("RGBA", name="beauty"), self.part("Z", name="depth"),
                         self.part("RGB", exr.HALF, display=big, name="large"))
        got = self.rendered(*UNDISTORT)
        self.assertEqual([part.name for part in got], ["beauty", "depth", "large"])
        self.expect_like_plain(got[0], "R")
        self.expect_like_plain(got[1], "Z")
        self.assertEqual(got[2].display, big)
        self.assertGreaterEqual(got[2].width, 2 * self.plain.width - 4)
        self.assertEqual(got[2].types(), dict.fromkeys("BGR", exr.HALF))


class Windows(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens()

    def render_part(self, name, part, *arguments):
        os.mkdir(self.path(name))
        exr.write(self.path(name, "plate.1001.exr"), part)
        return self.rendered(*(arguments or UNDISTORT), clip=name + "/plate.%04d.exr", out=name + "/f.%04d.exr")[0]

    def test_does_not_mind_where_the_display_window_begins(self):
        plain = self.render_part("plain", self.part())
        moved = self.render_part("moved", self.part(display=(100, -50, 100 + WIDTH - 1, -50 + HEIGHT - 1)))
        self.assertEqual(moved.display, (100, -50, 163, -15))
        self.assertEqual(moved.data, tuple(a + b for a, b in zip(plain.data, (100, -50, 100, -50))))
        self.expect_close(plain, moved, 0.0, shift=(100, -50))

    def test_keeps_a_pixel_where_it_is_when_the_data_window_is_larger_than_the_display_window(self):
        plain = self.render_part("plain", self.part())
        large = self.render_part("large", self.part(data=(-16, -9, WIDTH + 15, HEIGHT + 8)))
        self.assertTrue(large.data[0] < plain.data[0] and large.data[3] > plain.data[3])
        # The lens curve's fit covers more of the lens with overscan, so the pictures agree within a tenth of a pixel.
        self.expect_close(large, plain, 0.008, window=(4, 4, WIDTH - 5, HEIGHT - 5))

    def test_keeps_a_pixel_where_it_is_when_the_data_window_lies_inside_the_display_window(self):
        inner = (16, 9, 47, 26)
        plain = self.render_part("plain", self.part())
        small = self.render_part("small", self.part(data=inner))
        self.expect_close(small, plain, 0.008, window=(20, 13, 43, 22))

    def test_takes_a_data_window_that_reaches_out_on_one_side(self):
        plain = self.render_part("plain", self.part())
        shifted = self.render_part("shifted", self.part(data=(-16, 0, 47, HEIGHT - 1)))
        self.expect_close(shifted, plain, 0.008, window=(4, 4, 40, HEIGHT - 5))
        self.assertLess(shifted.data[2], WIDTH - 4, "black alone is not kept")

    def test_cuts_the_picture_to_the_format_on_request(self):
        box = self.render_part("box", self.part())
        cut = self.render_part("cut", self.part(), *UNDISTORT, "--window", "format")
        self.assertEqual(cut.data, cut.display)
        self.expect_close(cut, box, 0.0)

    def test_fills_the_format_with_black_where_a_picture_is_smaller(self):
        # Pincushion distortion is taken out by pulling the edges in.
        box = self.render_part("box", self.part(), *DISTORT)
        cut = self.render_part("cut", self.part(), *DISTORT, "--window", "format")
        self.assertEqual(cut.data, cut.display)
        self.expect_close(cut, box, 0.0)

    def test_overscan_in_the_format_shows_what_overscan_in_the_data_window_shows(self):
        around = self.render_part("around", self.part(data=(-16, -9, WIDTH + 15, HEIGHT + 8)))
        inside = self.render_part(
            "inside", self.part(display=(0, 0, WIDTH + 31, HEIGHT + 17), function=lambda x, y: pattern(x - 16, y - 9)),
            *UNDISTORT, "--overscan", "50")
        self.assertEqual(inside.display, (0, 0, WIDTH + 31, HEIGHT + 17))
        self.assertEqual(inside.data, tuple(a + b for a, b in zip(around.data, (16, 9, 16, 9))))
        self.expect_close(around, inside, 1e-5, shift=(16, 9))


class DataWindows(render_test.RenderTest):
    """A picture may come with any part of itself, as CG does."""

    ZOOM = "0,-4,-16,-31,-46,-57,-73"  # permille; a strong barrel

    def write_lens(self, distortion=None, **header):
        super().write_lens(**header)
        if distortion is None:
            return
        with open(self.path("plate.olcf"), encoding="utf-8") as file:
            text = file.read()
        with open(self.path("plate.olcf"), "w", encoding="utf-8") as file:
            file.write(text.replace("0,1.2,4.8,9.4,13.9,17.3,22", distortion))

    def opaque(self, data=None, kind=exr.FLOAT, **options):
        return self.part("RGB", kind, data=data, **options).fill("A", kind, lambda x, y: 1.0)

    def expect_the_whole_pictures_pixels(self, got, whole, least):
        """Exactly, wherever no pixel outside of the crop takes part, which alpha tells."""
        count = 0
        for y in range(got.data[1], got.data[3] + 1):
            for x in range(got.data[0], got.data[2] + 1):
                if got.at("A", x, y) != whole.at("A", x, y):
                    continue
                count += 1
                for channel in "RGB":
                    self.assertEqual(got.at(channel, x, y), whole.at(channel, x, y), (channel, x, y))
        self.assertGreaterEqual(count, least)

    def test_less_than_the_format_gives_the_pixels_that_the_whole_picture_gives(self):
        crops = ((16, 9, 47, 26), (0, 0, 20, 35), (31, 5, 63, 20), (7, 30, 25, 35))
        for distortion in (None, self.ZOOM):
            self.write_lens(distortion)
            for index, data in enumerate((None, *crops)):
                self.write_plate(self.opaque(data), frames=(1001 + index,))
            for mode in (UNDISTORT, DISTORT, BOTH, BOTH_BACK):
                self.expect(self.render(*mode, "--overwrite"), 0, "", "")
                whole = exr.read(self.path("out/f.1001.exr"))[0]
                for number, crop in enumerate(crops, 1002):
                    with self.subTest((distortion, mode, crop)):
                        got = exr.read(self.path(f"out/f.{number}.exr"))[0]
                        area = (crop[2] - crop[0] + 1) * (crop[3] - crop[1] + 1)
                        self.expect_the_whole_pictures_pixels(got, whole, area * 0.7)
                        self.assertLess(got.width * got.height, area * 1.4, "the file keeps what there is")

    def test_no_window_is_refused(self):
        chosen = random.Random(7)
        width, height, count = 480, 270, 24
        self.write_lens(self.ZOOM, count=count, width=width, height=height)
        for index in range(count):
            x, y = (chosen.randint(-60, size - 20) for size in (width, height))
            part = self.opaque((x, y, x + chosen.randint(4, 90), y + chosen.randint(4, 60)),
                               display=(0, 0, width - 1, height - 1))
            part.attributes["timeCode"] = exr.timecode(0, 0, 0, index)
            exr.write(self.path(f"plate.{1001 + index}.exr"), part)
        for number, mode in enumerate((UNDISTORT, BOTH_BACK)):
            self.expect(self.render(*mode, out=f"{number}/f.%04d.exr"), 0, "", "")
            self.assertEqual(len(self.names(str(number))), count)

    def test_a_lens_without_distortion_changes_no_pixel_and_no_window(self):
        self.write_lens("0,0,0,0,0,0,0")
        noise = random.Random(3)
        windows = ((0, 0, WIDTH - 1, HEIGHT - 1), (-5, 2, 40, HEIGHT + 6), (9, 9, 30, 20))
        for number, data in enumerate(windows, 1001):
            self.write_plate(self.opaque(data, function=lambda x, y: noise.random()), frames=(number,))
        for mode in (UNDISTORT, DISTORT):
            self.expect(self.render(*mode, "--overwrite"), 0, "", "")
            for number, data in enumerate(windows, 1001):
                got = exr.read(self.path(f"out/f.{number}.exr"))[0]
                self.assertEqual(got.data, data)
                self.expect_same(got.channels, exr.read(self.path(f"plate.{number}.exr"))[0].channels)

    def test_a_lens_without_distortion_changes_no_pixel_of_a_file_that_is_compressed_in_blocks(self):
        self.write_lens("0,0,0,0,0,0,0")
        noise = random.Random(3)
        self.write_plate(self.part("RGB", exr.HALF, function=lambda x, y: noise.random()))
        plate = self.path("plate.1001.exr")
        oiiotool(plate, "--compression", "b44", "-o", plate)
        self.expect(self.render(*UNDISTORT), 0, "", "")
        for source, name in ((plate, "before.exr"), (self.path("out", "f.1001.exr"), "after.exr")):
            oiiotool(source, "--compression", "zip", "-o", self.path(name))
        before, after = (exr.read(self.path(name))[0] for name in ("before.exr", "after.exr"))
        self.assertEqual(after.data, before.data)
        self.expect_same(after.channels, before.channels)

    def test_shading_alone_keeps_the_window(self):
        self.write_lens()
        for data in ((-5, 2, 40, HEIGHT + 6), (9, 9, 30, 20)):
            self.write_plate(self.opaque(data))
            self.assertEqual(self.rendered("--shading", "remove", "--overwrite")[0].data, data)

    def test_each_part_of_a_file_keeps_its_own(self):
        self.write_lens(self.ZOOM)
        crop = (16, 9, 47, 26)
        self.write_plate(self.opaque(name="all"), self.opaque(crop, name="some"))
        whole, part = self.rendered(*BOTH)
        self.expect_the_whole_pictures_pixels(part, whole, 32 * 18 * 0.7)
        self.assertLess(part.width, whole.width)

    def report(self, command, *arguments):
        result = self.run_program(command, *arguments, "--json")
        self.expect(result, 0, errors="")
        return json.loads(result.stdout)["frames"][0]

    def test_info_verify_stmap_and_render_agree(self):
        self.write_lens(self.ZOOM)
        for data in (None, (16, 9, 47, 26), (-4, -3, 66, 39)):
            with self.subTest(data):
                self.write_plate(self.opaque(data))
                got = self.rendered(*UNDISTORT, "--overwrite")[0]
                size = {"width": got.width, "height": got.height}
                undistortion = self.report("info", "plate.%04d.exr", "--frames")["undistortion"]
                self.assertEqual({key: undistortion[key] for key in size}, size)
                self.assertEqual(self.report("verify", "plate.%04d.exr")["undistorted"], size)
                self.expect(self.run_program("stmap", "plate.1001.exr", "--direction", "undistort", "-o", "map.exr",
                                             "--progress", "none", "--overwrite"), 0)
                box = exr.read(self.path("map.exr"))[0].data
                self.assertTrue(box[0] <= got.data[0] and box[1] <= got.data[1] and box[2] >= got.data[2] and
                                box[3] >= got.data[3], "the map serves the whole format")

    def sizes(self, folder):
        sizes = set()
        for name in self.names(folder):
            info = subprocess.run(["oiiotool", "--info", self.path(folder, name)], check=True, capture_output=True,
                                  text=True).stdout
            sizes.add(re.search(r"(\d+) x +(\d+)", info).groups())
        return sizes

    def test_a_clip_has_one_size_in_formats_without_a_data_window(self):
        count, display = 3, (0, 0, 639, 359)
        self.write_lens(count=count, width=640, height=360)
        with open(self.path("plate.olcf"), encoding="utf-8") as file:
            lines = file.read().rstrip("\n").split("\n")
        for index in range(count):  # the lens zooms; the first frame is the largest once it is straight
            curve = ",".join(str(-value * (count - index)) for value in (0, 1, 4, 8, 12, 15, 19))
            lines[index - count] = lines[index - count].replace("0,1.2,4.8,9.4,13.9,17.3,22", curve)
        with open(self.path("plate.olcf"), "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        frames = (1001, 1002, 1003)
        self.write_plate(self.part("RGB", exr.HALF, display=display, function=lambda x, y: 0.5), frames=frames)
        self.expect(self.render(*UNDISTORT, out="all/f.%04d.dpx"), 0, "", "")
        self.assertEqual(len(self.sizes("all")), 1)
        # Each of its frames alone, as a farm renders it, has the size of all.
        for frame in frames:
            with self.subTest(frame):
                self.expect(self.render(*UNDISTORT, "--frames", str(frame), out=f"{frame}/f.%04d.dpx"), 0, "", "")
                self.assertEqual(self.sizes(str(frame)), self.sizes("all"))
        self.expect(self.render(*UNDISTORT, "--size", "frame", out="own/f.%04d.dpx"), 0, "", "")
        self.assertEqual(len(self.sizes("own")), 3)
        # A crop does not become a picture of its own size.
        self.write_plate(self.part("RGB", exr.HALF, data=(100, 100, 110, 110), display=display), frames=frames)
        self.expect(self.render(*DISTORT, out="crop/f.%04d.dpx"), 0, "", "")
        self.assertEqual(self.sizes("crop"), {("640", "360")})


class Directions(render_test.RenderTest):
    def test_a_round_trip_ends_where_it_began(self):
        self.write_lens()
        self.write_plate(self.part())
        self.rendered(*BOTH, out="out/plate.%04d.exr")
        back = self.rendered("--distortion", "distort", "--shading", "add", clip="out/plate.%04d.exr",
                             out="back/f.%04d.exr")[0]
        # Two bilinear interpolations of a picture with second derivatives below 0.02, each off by an eighth of their
        # sum, and the two directions' own polynomials.
        self.expect_close(back, self.part(), 0.015, channels="RGBA", window=(3, 3, WIDTH - 4, HEIGHT - 4))
        marks = {name: value[1].decode() for name, value in back.attributes.items() if "lenscorrect" in name}
        self.assertEqual(marks["com.orvex.lenscorrect.distortion"], "distort")
        self.assertEqual(marks["com.orvex.lenscorrect.shading"], "add")

    def test_the_two_directions_move_pixels_in_opposite_directions(self):
        self.write_lens()
        self.write_plate(self.part(function=lambda x, y: x / WIDTH))
        at_start = (8 + 0.0) / WIDTH
        out = self.rendered(*UNDISTORT)[0].at("R", 8, HEIGHT // 2)
        back = self.rendered(*DISTORT, out="back/f.%04d.exr")[0].at("R", 8, HEIGHT // 2)
        self.assertLess((out - at_start) * (back - at_start), 0.0)
        self.assertAlmostEqual(out - at_start, -(back - at_start), delta=abs(out - at_start) * 0.3)


class Maps(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens()
        self.write_plate(self.part("RGB", exr.HALF))

    def test_the_distortion_map_holds_the_coordinates_of_its_own_box(self):
        got = self.rendered(*UNDISTORT, "--map")[0]
        self.assertEqual(got.types(), dict.fromkeys("ABGR", exr.FLOAT))
        for x in range(got.width):
            for y in range(got.height):  # upwards, as the nodes count
                pixel = [got.channels[name][1][got.height - 1 - y][x] for name in "RGBA"]
                for value, wanted in zip(pixel, [x / got.width, y / got.height, 0.0, 1.0]):
                    self.assertAlmostEqual(value, wanted, delta=1e-6)

    def test_the_shading_map_is_the_factor_that_the_picture_is_multiplied_with(self):
        map_part = self.rendered("--shading", "remove", "--map", out="map/f.%04d.exr")[0]
        self.write_plate(self.part("RGB"))
        got = self.rendered("--shading", "remove")[0]
        self.assertEqual(got.data, map_part.data)
        for x, y in ((0, 0), (WIDTH // 2, HEIGHT // 2), (WIDTH - 1, 3)):
            self.assertAlmostEqual(got.at("R", x, y) / pattern(x, y), map_part.at("R", x, y), delta=1e-4)

    def test_a_map_needs_no_colour_in_the_clip(self):
        self.write_plate(self.part("Z"))
        self.assertEqual(self.rendered("--shading", "remove", "--map")[0].types(), dict.fromkeys("ABGR", exr.FLOAT))


class Plate(render_test.RenderTest):
    def test_cg_of_another_size_with_more_layers_is_distorted_as_its_plate(self):
        self.write_lens()
        self.write_plate(self.part("RGB", exr.HALF))
        size = (0, 0, 2 * WIDTH - 1, 2 * HEIGHT - 1)
        cg = self.part(["R", "G", "B", "A", "Z", "normal.x", "normal.y", "normal.z"], display=size)
        cg.fill("id", exr.UINT, lambda x, y: 7)
        exr.write(self.path("cg.1001.exr"), cg)
        got = self.rendered(*DISTORT, "--plate", "plate.%04d.exr", clip="cg.%04d.exr")[0]
        self.assertEqual(got.types(), cg.types())
        self.assertEqual(got.display, size)
        for name in ["A", "Z", "normal.x", "normal.z"]:
            self.expect_same(got.channels[name], got.channels["R"])
        self.assertNotEqual(got.channels["R"][1][4][4:12], cg.channels["R"][1][4][4:12])
        self.assertEqual(got.at("id", WIDTH, HEIGHT), 7)
        # The same picture corrected as a clip with this lens.
        self.write_lens(name="cg", width=2 * WIDTH, height=2 * HEIGHT)
        cg.attributes["timeCode"] = exr.timecode(0, 0, 0, 0)
        exr.write(self.path("cg.1001.exr"), cg)
        alone = self.rendered(*DISTORT, clip="cg.%04d.exr", out="alone/f.%04d.exr")[0]
        self.expect_close(got, alone, 1e-5, channels=["R", "Z"])

    def test_a_plate_of_another_aspect_ratio_is_wrong_use(self):
        self.write_lens()
        self.write_plate(self.part("RGB"))
        exr.write(self.path("cg.1001.exr"), self.part("RGB", display=(0, 0, 63, 63)))
        result = self.render(*DISTORT, "--plate", "plate.%04d.exr", clip="cg.%04d.exr")
        self.expect(result, 2, "")
        self.assertIn("Aspect ratio of the current frame is not as expected. Recommended resolution is 64x36 px.",
                      result.stderr)
        self.assertFalse(os.path.exists(self.path("out")))

    def test_a_proxy_whose_rounded_format_is_off_where_its_overscan_ends_is_wrong_use(self):
        self.write_lens(width=198, height=119)
        self.write_plate(self.part("RGB", data=(-49, 0, 98, 58), display=(0, 0, 98, 58)))
        result = self.render(*BOTH)
        self.expect(result, 2, "", """\
lenscorrect: The picture's format of 99 x 59 px has the recording's aspect ratio (198 x 119 px) only roughly, and in the frame \
around its data window (197 x 117 px) the error is 2 px or more. Render the picture at the recording's size or an exact fraction \
of it, or crop its overscan.
No frame of the clip "plate.%04d.exr" can be corrected.
""")

    def test_a_plate_that_lacks_a_frame_fails_that_frame(self):
        self.write_lens(count=2)
        self.write_plate(self.part("RGB"), frames=(1001, 1003))
        for number in (1001, 1002, 1003):
            exr.write(self.path(f"cg.{number}.exr"), self.part("RGB"))
        result = self.render(*DISTORT, "--plate", "plate.%04d.exr", clip="cg.%04d.exr")
        self.expect(result, 1, "")
        self.assertEqual(self.names(), ["f.1001.exr", "f.1003.exr"])
        self.assertIn("plate.%04d.exr: The clip has no frame 1002.", result.stderr)

    def test_refuses_to_write_over_the_plate(self):
        self.write_lens()
        self.write_plate(self.part("RGB"))
        exr.write(self.path("cg.1001.exr"), self.part("RGB"))
        self.expect(self.render(*DISTORT, "--plate", "plate.%04d.exr", "--overwrite", clip="cg.%04d.exr",
                                out="plate.%04d.exr"), 2, "",
                    'lenscorrect: Frame 1001 would replace its plate, "plate.1001.exr"; choose another output.\n')


class Storage(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens(count=3)
        part = self.part("RGB", exr.HALF)
        part.fill("id", exr.UINT, lambda x, y: 5)
        self.write_plate(part, frames=(1001, 1002, 1003))

    def test_takes_another_type_for_colour_and_leaves_ids(self):
        got = self.rendered(*UNDISTORT, "--type", "float", "--frames", "1001")[0]
        self.assertEqual(got.types(), {"B": exr.FLOAT, "G": exr.FLOAT, "R": exr.FLOAT, "id": exr.UINT})

    def stored_compression(self, path):
        with open(self.path(path), "rb") as file:
            content = file.read()
        return exr.COMPRESSIONS[content[content.index(b"compression\0compression\0") + 28]]

    def test_takes_every_compression_and_keeps_that_of_the_picture_otherwise(self):
        pictures = {}
        for name in exr.COMPRESSIONS:
            out = name + "/f.%04d.exr"
            self.expect(self.render(*UNDISTORT, "--compression", name, "--frames", "1001", out=out), 0, "", "")
            self.assertEqual(self.stored_compression(out % 1001), name)
            self.expect(self.render(*DISTORT, "--plate", "plate.%04d.exr", clip=out, out="back/f.%04d.exr"), 0, "", "")
            self.assertEqual(self.stored_compression("back/f.1001.exr"), name)
            os.remove(self.path("back", "f.1001.exr"))
            if name in ("none", "zip", "zips"):
                pictures[name] = exr.read(self.path(out % 1001))[0].channels
        self.expect_same(pictures["none"], pictures["zip"])
        self.expect_same(pictures["none"], pictures["zips"])

    def test_zip_gives_the_same_pixels_to_every_reader_and_makes_small_files_on_request(self):
        # Large enough for several blocks; with and without noise, and samples of both sizes.
        plate = self.path("plate.1001.exr")
        corners = "topleft=0,0,0,1:topright=1,0,2,1:bottomleft=0,3,1,1:bottomright=1,2,3,0.5"
        for picture, kind in (("noise", "half"), ("fill:" + corners, "float")):
            oiiotool("--pattern", picture, "192x108", "4", "-d", kind, "--compression", "none", "-o", plate)
            self.expect(self.render(*UNDISTORT, "--frames", "1001", "--overwrite", out="none.%04d.exr"), 0, "", "")
            plain, sizes = self.path("none.1001.exr"), []
            for goal in ("fast", "small"):
                self.expect(self.render(*UNDISTORT, "--compression", "zip", "--zip", goal, "--frames", "1001",
                                        "--overwrite", out="zip.%04d.exr"), 0, "", "")
                zipped = self.path("zip.1001.exr")
                oiiotool(plain, zipped, "--fail", "0", "--warn", "0", "--diff")
                self.expect_same(exr.read(plain)[0].channels, exr.read(zipped)[0].channels)
                sizes.append(os.path.getsize(zipped))
            self.assertLess(sizes[1], sizes[0], picture)

    def test_gives_all_frames_one_box_on_request(self):
        self.write_lens(count=3, lensTypeName="Zoom")
        with open(self.path("plate.olcf"), encoding="utf-8") as file:
            lens = file.read()
        # The last frame's lens distorts more than the others.
        lines = lens.rstrip("\n").split("\n")
        lines[-1] = lines[-1].replace("0,1.2,4.8,9.4,13.9,17.3,22", "0,-4,-16,-31,-46,-57,-73")
        with open(self.path("plate.olcf"), "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        self.expect(self.render(*UNDISTORT, out="own/f.%04d.exr"), 0, "", "")
        self.expect(self.render(*UNDISTORT, "--size", "constant"), 0, "", "")
        own = [exr.read(self.path(f"own/f.{n}.exr"))[0] for n in (1001, 1002, 1003)]
        same = [exr.read(self.path(f"out/f.{n}.exr"))[0] for n in (1001, 1002, 1003)]
        self.assertNotEqual(own[0].data, own[2].data)
        self.assertEqual({part.data for part in same}, {own[2].data})
        for a, b in zip(own, same):
            self.expect_close(a, b, 0.0)
        self.assertEqual(same[0].at("R", same[0].data[0], same[0].data[1]), 0.0)
        # A job that is resumed gives the frames that are still to be made the same box.
        os.remove(self.path("out/f.1001.exr"))
        self.expect(self.render(*UNDISTORT, "--size", "constant", "--skip-existing"), 0, "", "")
        self.assertEqual(exr.read(self.path("out/f.1001.exr"))[0].data, own[2].data)

    def test_writes_the_file_format_by_its_ending_in_any_case(self):
        self.expect(self.render(*UNDISTORT, "--frames", "1001", out="out/f.%04d.EXR"), 0, "", "")
        got = exr.read(self.path("out/f.1001.EXR"))[0]
        self.assertEqual(got.display, (0, 0, WIDTH - 1, HEIGHT - 1))

    def test_says_before_the_first_frame_what_the_format_cannot_hold(self):
        self.write_lens()
        for name, channels, kind, arguments, problem in (
                ("dpx", ("R", "G", "B", "beauty.R", "beauty.G", "beauty.B"), exr.HALF, (),
                 "the frame has the channels R, G, B, beauty.B, beauty.G, beauty.R, but DPX holds only R, G, B; R, G, B, "
                 "A; choose .exr"),
                ("dpx", ("R", "G"), exr.HALF, (),
                 "the frame has the channels R, G, but DPX holds only R, G, B; R, G, B, A; choose .exr"),
                ("jpg", "RGBA", exr.HALF, (),
                 "the frame has the channels R, G, B, A, but JPEG holds only R, G, B; Y; choose .png, .tif or .exr"),
                ("png", "RGB", exr.HALF, ("--type", "float"),
                 "PNG cannot hold half or float pixels; omit --type, or choose .tif or .exr")):
            with self.subTest(name=name, channels=channels):
                self.write_plate(self.part(channels, kind), frames=(1001, 1002))
                self.expect(self.render(*UNDISTORT, *arguments, out="out/f.%04d." + name), 2, "",
                            f"lenscorrect: out/f.%04d.{name}: cannot be written: {problem}\n")
                self.assertFalse(os.path.exists(self.path("out")) and os.listdir(self.path("out")))

    def test_a_clip_of_deep_pictures_alone_is_not_usable(self):
        for number in (1001, 1002, 1003):
            with open(self.path(f"plate.{number}.exr"), "r+b") as file:
                file.seek(5)
                file.write(b"\x08") # the mark of deep pictures
            if number == 1001:
                self.expect(self.render(*UNDISTORT), 1)
        self.expect(self.render(*UNDISTORT, out="none/f.%04d.exr"), 2, "", "lenscorrect: " +
                    self.path("plate.1001.exr") + ": deep images are not supported; flatten the image first\n")


class LensData(render_test.RenderTest):
    RECORD = """{"recordingFormat": {"camera": {"manufacturer": "", "model": ""},
        "clipResolution": {"width": 64, "height": 36}, "imageRadius": 18.357559750685822},
        "frameData": {"interpolationPoints": {"heights": [0, 5, 10, 14, 17, 19, 21.4],
        "shading": [100, 98, 93, 86, 79.5, 74.5, 68], "radialDistortion": [0, 1.2, 4.8, 9.4, 13.9, 17.3, 22]}}}"""

    def variant(self, index):
        """A correction file's distortion for frame `index`, told apart by its strength."""
        return ",".join(str(round(value * (index + 1), 3)) for value in (0, 1.2, 4.8, 9.4, 13.9, 17.3, 22))

    def write_variants(self, count):
        self.write_lens(count=count)
        with open(self.path("plate.olcf"), encoding="utf-8") as file:
            lines = file.read().rstrip("\n").split("\n")
        for index in range(count):
            lines[index - count] = lines[index - count].replace("0,1.2,4.8,9.4,13.9,17.3,22", self.variant(index))
        with open(self.path("plate.olcf"), "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")

    def picture_with_variant(self, index):
        """What a clip whose only record is variant `index` becomes."""
        name = f"single{index}"
        self.write_lens(name=name)
        with open(self.path(name + ".olcf"), encoding="utf-8") as file:
            text = file.read().replace("0,1.2,4.8,9.4,13.9,17.3,22", self.variant(index))
        with open(self.path(name + ".olcf"), "w", encoding="utf-8") as file:
            file.write(text)
        exr.write(self.path(name + ".1.exr"), self.part())
        return self.rendered(*UNDISTORT, clip=name + ".%d.exr", out=name + "/f.%04d.exr", frame=1)[0].channels

    def test_a_record_in_the_frame_serves_instead_of_a_correction_file(self):
        self.write_lens()
        self.write_plate(self.part())
        from_file = self.rendered(*BOTH, out="file/f.%04d.exr")[0]
        os.remove(self.path("plate.olcf"))
        self.write_plate(self.part(attributes={"com.orvex.LensCorrection": exr.text(self.RECORD)}))
        got = self.rendered(*BOTH)[0]
        self.expect_close(got, from_file, 1e-5)
        self.assertNotIn("com.orvex.lenscorrect.correctionFile", got.attributes)
        self.assertEqual(got.attributes["com.orvex.LensCorrection"], exr.text(self.RECORD))

    def test_the_timecode_chooses_the_record(self):
        self.write_variants(3)
        part = self.part()
        part.attributes["timeCode"] = exr.timecode(0, 0, 0, 2)
        exr.write(self.path("plate.1001.exr"), part)
        self.expect_same(self.rendered(*UNDISTORT)[0].channels, self.picture_with_variant(2))

    def test_without_a_timecode_the_number_within_the_clip_chooses_the_record(self):
        self.write_variants(3)
        for number in (1001, 1002, 1003):
            exr.write(self.path(f"plate.{number}.exr"), self.part())
        self.expect_same(self.rendered(*UNDISTORT, "--frames", "1002", frame=1002)[0].channels,
                         self.picture_with_variant(1))

    def test_a_sidecar_tells_the_clip_name_and_the_timecode_of_a_transcoded_camera_clip(self):
        self.write_variants(3)
        os.rename(self.path("plate.olcf"), self.path("A001_C002.olcf"))
        with open(self.path("A001_C002.olcf"), encoding="utf-8") as file:
            text = file.read().replace("clipName:=plate", "clipName:=A001_C002").replace("videoFileName:=plate",
                                                                                          "videoFileName:=A001_C002")
        with open(self.path("A001_C002.olcf"), "w", encoding="utf-8") as file:
            file.write(text)
        exr.write(self.path("plate.1001.exr"), self.part())
        with open(self.path("plate.metadata.json"), "w", encoding="utf-8") as file:
            file.write('{"input/filename": "A001_C002.R3D", "r3d/reel_id_full": "A001_C002", "r3d/framerate": 25,'
                       '"r3d/start_absolute_timecode": "00:00:00:01"}')
        self.expect(self.render(*UNDISTORT), 0, "", "")
        self.expect_same(exr.read(self.path("out/f.1001.exr"))[0].channels, self.picture_with_variant(1))

    def test_a_correction_file_of_another_clip_is_wrong_use(self):
        self.write_lens(name="other")
        self.write_plate(self.part())
        self.expect(self.render(*UNDISTORT, "--correction-file", "other.olcf"), 2, "", """\
lenscorrect: Correction file does not belong to the clip.
Clip File Name: "plate"
Correction File Path: "other.olcf"
No frame of the clip "plate.%04d.exr" can be corrected.
""")
        self.assertFalse(os.path.exists(self.path("out")))

    def test_a_recording_format_by_hand_serves_where_the_correction_file_has_none(self):
        self.write_lens()
        self.write_plate(self.part())
        known = self.rendered(*BOTH, out="known/f.%04d.exr")[0]
        self.write_lens(sensorWidth="0", clipWidth="0", clipHeight="0", cameraManufacturer="", cameraModel="")
        self.expect(self.render(*BOTH, out="none/f.%04d.exr"), 2, "")
        by_hand = self.rendered(*BOTH, "--image-area", "32x18", "--clip-resolution", "64x36")[0]
        # The node keeps the image's diameter with two decimals.
        self.expect_close(by_hand, known, 1e-3)


program.main()

"""lenscorrect on pixels that are not linear light, or not square: what is refused, and what is done on request."""
import math
import os
import struct
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import exr
import program
import render_test
from render_test import HEIGHT, WIDTH, pattern

SHADING = ("--shading", "remove")
UNDISTORT = ("--distortion", "undistort")
NOT_LINEAR = """\
lenscorrect: Frame {frame} ({file}): The pixels are not linear ({statement}), but shading is a factor on linear light. Name \
their colour space with --input-space NAME, which converts them to linear light and back, or give --input-space raw to \
correct the values as they are.
"""
NOT_SQUARE = """\
The pixels are not square (pixel aspect ratio 2), but the lens model is radial in square pixels. Resample the picture to \
square pixels first, or give --pixel-aspect ignore to correct it as it is."""
NO_CONFIG = {"OCIO": None}


def cineon(light):
    """The code value, 0 to 1, of a film scan for light of the scene: black at 95, white at 685 of 1023."""
    offset = 10 ** ((95 - 685) * 0.002 / 0.6)
    return (685 + math.log10(light * (1 - offset) + offset) * 0.6 / 0.002) / 1023


def light(code):
    offset = 10 ** ((95 - 685) * 0.002 / 0.6)
    return (10 ** ((code * 1023 - 685) * 0.002 / 0.6) - offset) / (1 - offset)


class Colour(render_test.RenderTest):
    def setUp(self):
        super().setUp()
        self.write_lens(3)

    def write_marked(self, frames=(1001,), **attributes):
        """A plate that says what its pixels are, by attributes whose ":" is written "_"."""
        named = {name.replace("_", ":", 1): exr.text(value) for name, value in attributes.items()}
        self.write_plate(self.part("RGB", attributes=named), frames=frames)

    def convert(self, source, target, *options):
        subprocess.run(["oiiotool", self.path(source), *options, "-o", self.path(target)], check=True)

    def render(self, *arguments, **options):
        return super().render(*arguments, **{"environment": NO_CONFIG, **options})


class Refused(Colour):
    def test_is_shading_of_a_clip_of_printing_density_before_the_first_frame(self):
        self.write_marked(frames=(1001, 1002, 1003), dpx_Transfer="Printing density")
        self.expect(self.render(*SHADING), 2, "", NOT_LINEAR.format(
            frame=1001, file="plate.1001.exr", statement='dpx:Transfer is "Printing density"'))
        self.assertFalse(os.path.exists(self.path("out")))

    def refusal_of(self, ending, *options):
        self.write_plate(self.part("RGB"))
        os.makedirs(self.path("other"), exist_ok=True)
        self.convert("plate.1001.exr", f"other/plate.{ending}", *options)
        result = self.render(*SHADING, "--correction-file", "plate.olcf", clip=f"other/plate.{ending}", out="out/f.exr")
        self.expect(result, 2, "")
        return result.stderr

    def test_is_shading_of_what_each_format_says_that_its_pixels_are(self):
        for ending, options, statement in (
                ("dpx", ("-d", "uint10", "--eraseattrib", "oiio:ColorSpace", "--attrib", "dpx:Transfer", "Printing density"),
                 'dpx:Transfer is "Printing density"'),
                ("png", ("--eraseattrib", "oiio:ColorSpace"), 'oiio:ColorSpace is "sRGB"'), ("jpg", (), 'oiio:ColorSpace is "sRGB"')):
            with self.subTest(ending):
                self.assertEqual(self.refusal_of(ending, *options),
                                 NOT_LINEAR.format(frame=1, file=f"other/plate.{ending}", statement=statement))

    def test_is_shading_of_a_movie_that_does_not_say_that_it_is_linear(self):
        self.write_lens(3, name="movie", videoFileName="movie.mov")
        for transfer, statement in (("bt709", 'color_transfer is "bt709"'), (None, 'color_transfer is "unknown"')):
            with self.subTest(statement):
                # FFmpeg 7 writes all three or none.
                known = f"setparams=color_trc={transfer}:color_primaries=bt709:colorspace=bt709"
                named = ["-vf", "format=yuv422p10," + known] if transfer else []
                subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc=s={WIDTH}x{HEIGHT}:r=25:d=0.1",
                                "-c:v", "prores_ks", *named, self.path("movie.mov")], check=True)
                self.expect(self.render(*SHADING, clip="movie.mov"), 2, "",
                            NOT_LINEAR.format(frame=1, file="movie.mov", statement=statement))

    def test_is_a_single_frame_that_is_not_linear_among_others_that_are(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1002, 1003))
        part = self.part("RGB", attributes={"colorSpace": exr.text("ACEScct"), "timeCode": exr.timecode(0, 0, 0, 1)})
        exr.write(self.path("plate.1002.exr"), part)
        result = self.render(*SHADING)
        self.expect(result, 1, "")
        self.assertEqual(result.stderr, NOT_LINEAR.format(frame=1002, file="plate.1002.exr", statement='colorSpace is "ACEScct"')
                         .removeprefix("lenscorrect: ") + "lenscorrect: 1 of 3 frames failed: 1002\n")
        self.assertEqual(self.names(), ["f.1001.exr", "f.1003.exr"])

    def test_is_a_space_that_is_not_known_with_those_that_are(self):
        self.write_plate(self.part("RGB"))
        self.expect(self.render(*SHADING, "--input-space", "Printing"), 2, "", """\
lenscorrect: the built-in colour configuration: has no colour space "Printing"; it has linear, sRGB, Rec709, Cineon, ACEScct, \
LogC3, LogC4, S-Log3, V-Log, Log3G10
""")

    def test_is_not_distortion_alone(self):
        self.write_marked(oiio_ColorSpace="sRGB")
        self.rendered(*UNDISTORT)

    def test_is_not_the_map(self):
        self.write_marked(oiio_ColorSpace="sRGB")
        self.rendered(*SHADING, "--map")


class Stated(Colour):
    """What a file in another format says of pixels that come from OpenEXR."""

    def render_to(self, ending, *options, status=0, error="", **clip):
        self.expect(self.render(*UNDISTORT, *options, **clip, out=f"{ending}/plate.%04d.{ending}"), status, "", error)
        listing = subprocess.run(["oiiotool", "--info", "-v", self.path(f"{ending}/plate.1001.{ending}")], check=True,
                                 capture_output=True, encoding="utf-8").stdout
        return [line.strip() for line in listing.splitlines() if "oiio:ColorSpace" in line or "dpx:Transfer" in line]

    def test_is_linear_light_where_the_format_has_a_word_for_it(self):
        self.write_plate(self.part("RGB"))
        self.assertEqual(self.render_to("png"), ['oiio:ColorSpace: "Linear"'])
        self.assertEqual(self.render_to("dpx"), ['dpx:Transfer: "Linear"', 'oiio:ColorSpace: "Linear"'])

    def test_is_linear_for_a_map_whatever_the_clip_is(self):
        self.write_plate(self.part("RGB"))
        self.convert("plate.1001.exr", "plate.1001.png")
        self.assertEqual(self.render_to("dpx", "--map", "--correction-file", "plate.olcf",
                                        clip="plate.%04d.png"),
                         ['dpx:Transfer: "Linear"', 'oiio:ColorSpace: "Linear"'])

    def test_is_told_for_other_formats_that_state_linear_light(self):
        self.write_plate(self.part("RGB"))
        self.render_to("png")
        self.render_to("jpg", "--correction-file", "plate.olcf", "--force", clip="png/plate.%04d.png", error="""\
lenscorrect: The pixels of the clip "png/plate.%04d.png" are linear light, which JPEG files cannot state: viewers will show \
them too dark. Choose .png, .tif or .exr, or convert the frames to sRGB afterwards.
""")

    def test_lets_the_lens_be_applied_again(self):
        # A camera's entries make a TIFF's library take the picture as sRGB.
        self.write_plate(self.part("RGB", attributes={"aperture": ("float", struct.pack("<f", 2.8))}))
        for ending in ("png", "dpx", "tif"):
            with self.subTest(ending):
                self.expect(self.render(*SHADING, out=f"{ending}/plate.%04d.{ending}"), 0, "", "")
                self.expect(self.render("--shading", "add", "--correction-file", "plate.olcf",
                                        clip=f"{ending}/plate.%04d.{ending}", out=f"{ending}-back/f.%04d.exr"), 0, "", "")

    def test_is_told_once_where_the_format_has_none(self):
        self.write_plate(self.part("RGB"), frames=(1001, 1002))
        self.assertEqual(self.render_to("jpg", error="""\
lenscorrect: The pixels of the clip "plate.%04d.exr" are linear light, which JPEG files cannot state: viewers will show them \
too dark. Choose .png, .tif or .exr, or convert the frames to sRGB afterwards.
"""), ['oiio:ColorSpace: "sRGB"'])

    def test_is_nothing_where_the_pixels_space_was_named_or_is_stated_otherwise(self):
        self.write_plate(self.part("RGB"))
        self.assertEqual(self.render_to("png", "--input-space", "LogC3"), ['oiio:ColorSpace: "sRGB"'])
        self.assertEqual(self.render_to("jpg", "--input-space", "sRGB"), ['oiio:ColorSpace: "sRGB"'])
        self.write_marked(colorSpace="LogC3")
        self.assertEqual(self.render_to("png", "--overwrite"), ['oiio:ColorSpace: "sRGB"'])


class Values(Colour):
    """What becomes of the corrected values on their way into the file."""
    CLIPPED = """\
lenscorrect: Frame {frame} has values below 0 or above 1, which "{file}" cannot hold; they are clipped, here and in any other \
frame. To keep them, choose .exr, or .tif with --type float.
"""

    def bright_plate(self, frames=(1001,)):
        self.write_plate(self.part("RGB", function=lambda x, y: 4 * pattern(x, y)), frames=frames)

    def test_beyond_1_are_told_once_where_the_format_holds_integers(self):
        self.bright_plate(frames=(1001, 1002))
        for ending in ("png", "dpx"):
            self.expect(self.render(*UNDISTORT, out=f"{ending}/f.%04d.{ending}"), 0, "",
                        self.CLIPPED.format(frame=1001, file=f"{ending}/f.1001.{ending}"))

    def test_beyond_1_are_nothing_to_tell_where_the_format_holds_floats(self):
        self.bright_plate()
        self.expect(self.render(*UNDISTORT, out="tif/f.%04d.tif"), 0, "", "")

    def test_that_shading_lifts_beyond_1_are_kept_in_exr_made_of_integers(self):
        white = self.part("RGB", function=lambda x, y: 1.0)
        self.write_plate(white)
        wanted, = self.rendered(*SHADING)
        self.assertGreater(wanted.at("R", 0, 0), 1.01)
        for bits in ("uint8", "uint16"):
            with self.subTest(bits):
                os.makedirs(self.path(bits))
                self.convert("plate.1001.exr", f"{bits}/plate.1001.tif", "-d", bits)
                self.expect(self.render(*SHADING, "--input-space", "raw", "--correction-file", "plate.olcf", "--type",
                                        "float", clip=f"{bits}/plate.%04d.tif", out=f"{bits}/f.%04d.exr"), 0, "", "")
                self.expect_same(exr.read(self.path(bits, "f.1001.exr"))[0].channels, wanted.channels)

    def test_are_never_halves_on_their_way_to_floats(self):
        mixed = self.part("RB", kind=exr.HALF).fill("G", exr.FLOAT, pattern).fill("light.R", exr.HALF, pattern)
        self.write_plate(mixed)
        halfs, = exr.read(self.path("plate.1001.exr"))
        got, = self.rendered(*UNDISTORT, "--type", "float")
        channels = {name: (exr.FLOAT, rows) for name, (_, rows) in halfs.channels.items()}
        self.write_plate(exr.Part(halfs.data, halfs.display, channels))
        wanted, = self.rendered(*UNDISTORT, "--overwrite")
        self.expect_same(got.channels, wanted.channels)


class Converted(Colour):
    def test_is_what_was_shaded_in_linear_light(self):
        self.write_plate(self.part("RGB"))
        linear = self.rendered(*SHADING, *UNDISTORT, out="linear/f.%04d.exr")[0]
        part = self.part("RGB", function=lambda x, y: cineon(pattern(x, y)))
        part.attributes["dpx:Transfer"] = exr.text("Printing density")
        self.write_plate(part)
        got = self.rendered(*SHADING, *UNDISTORT, "--input-space", "Cineon")[0]
        self.assertEqual(got.data, linear.data)
        for name in "RGB":
            for row, wanted in zip(got.channels[name][1], linear.channels[name][1]):
                for value, reference in zip(row, wanted):
                    # Single precision of the code value, at 7 light per unit where the light is 1.
                    self.assertAlmostEqual(light(value), reference, delta=3e-6)
        self.assertEqual(got.text("dpx:Transfer"), "Printing density")

    def test_is_black_where_there_is_no_picture(self):
        self.write_plate(self.part("RGB", function=lambda x, y: cineon(pattern(x, y)), data=(8, 4, WIDTH - 9, HEIGHT - 5),
                                   display=(0, 0, WIDTH - 1, HEIGHT - 1)))
        got = self.rendered(*UNDISTORT, "--input-space", "Cineon", "--window", "format")[0]
        self.assertAlmostEqual(got.at("G", 0, 0), 95 / 1023, delta=1e-6)

    def identity(self, kind, spread, limit):
        """What becomes of every sample of a picture when nothing but the colour space changes and comes back."""
        with open(self.path("plate.olcf"), encoding="utf-8") as file:
            lens = file.read()
        with open(self.path("plate.olcf"), "w", encoding="utf-8") as file:
            file.write(lens.replace("100,98,93,86,79.5,74.5,68", "100,100,100,100,100,100,100"))
        self.write_plate(self.part("RGB", kind, function=spread))
        plate = exr.read(self.path("plate.1001.exr"))[0]
        for space in ("sRGB", "Rec709", "Cineon", "LogC3"):
            with self.subTest(space):
                got = self.rendered(*SHADING, "--input-space", space, "--overwrite")[0]
                self.expect_close(got, plate, limit, window=(0, 0, WIDTH - 1, HEIGHT - 1))

    def test_restores_half_floats_that_no_lens_changes(self):
        # 0.001 and more: below, a half's steps are finer than the conversion.
        self.identity(exr.HALF, lambda x, y: 0.001 + 0.998 * (y * WIDTH + x) / (WIDTH * HEIGHT), 0.0)

    def test_restores_floats_that_no_lens_changes_to_a_step_of_16_bit(self):
        self.identity(exr.FLOAT, lambda x, y: (y * WIDTH + x) / (WIDTH * HEIGHT), 0.5 / 65535)

    def test_takes_the_values_as_they_are_on_request(self):
        self.write_plate(self.part("RGB"))
        linear = self.rendered(*SHADING, out="linear/f.%04d.exr")[0]
        self.write_marked(oiio_ColorSpace="sRGB")
        got = self.rendered(*SHADING, "--input-space", "raw")[0]
        self.expect_same(got.channels, linear.channels)

    def test_is_said_in_the_output(self):
        for space in ("raw", "LogC3", None):
            with self.subTest(space):
                self.write_plate(self.part("RGB", attributes={"com.orvex.lenscorrect.inputSpace": exr.text("of before")}))
                named = ("--input-space", space) if space else ()
                got = self.rendered(*SHADING, *named, "--overwrite")[0]
                said = got.attributes.get("com.orvex.lenscorrect.inputSpace")
                self.assertEqual(said, exr.text(space) if space else None)

    def test_leaves_depth_alone(self):
        part = self.part("RGBZ", function=lambda x, y: -50)
        self.write_plate(part)
        self.expect(self.render(*SHADING, "--input-space", "Cineon"), 0, "",
                    "Not corrected for shading: Z (use --shading-layers to choose layers)\n")
        got = exr.read(self.path("out/f.1001.exr"))[0]
        self.assertEqual(got.at("Z", 5, 5), -50)

    def test_leaves_a_part_of_data_alone_whose_channels_are_named_as_colour(self):
        # Of these, only colour would survive a conversion there and back: Cineon has no code for them.
        data = (8, 4, WIDTH - 9, HEIGHT - 5)
        self.write_plate(self.part("RGB", data=data, name="beauty"),
                         self.part("RGB", data=data, name="normal", function=lambda x, y: -50))
        result = self.render(*SHADING, "--input-space", "Cineon", "--window", "format")
        self.expect(result, 0, "", "Not corrected for shading: normal (use --shading-layers to choose layers)\n")
        beauty, normal = exr.read(self.path("out/f.1001.exr"))
        self.assertAlmostEqual(beauty.at("G", 0, 0), 95 / 1023, delta=1e-6)
        self.assertEqual([normal.at("G", 0, 0), normal.at("G", 20, 20)], [0, -50])

    def test_gives_frames_of_one_size_the_space_s_black_around(self):
        self.write_lens(2)
        with open(self.path("plate.olcf"), encoding="utf-8") as file:
            lines = file.read().rstrip("\n").split("\n")
        lines[-1] = lines[-1].replace("0,1.2,4.8,9.4,13.9,17.3,22", "0,-4,-16,-31,-46,-57,-73")
        with open(self.path("plate.olcf"), "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        self.write_plate(self.part("RGB"), frames=(1001, 1002))
        got = self.rendered(*UNDISTORT, "--size", "constant", "--input-space", "Cineon")[0]
        self.assertAlmostEqual(got.at("R", *got.data[:2]), 95 / 1023, delta=1e-6)

    def test_is_by_a_configuration_of_the_user_s(self):
        with open(self.path("house.ocio"), "w", encoding="utf-8") as file:
            file.write("""\
ocio_profile_version: 2
roles: {default: lin, scene_linear: lin}
file_rules:
  - !<Rule> {name: Default, colorspace: default}
displays:
  d:
    - !<View> {name: v, colorspace: lin}
colorspaces:
  - !<ColorSpace>
    name: lin
  - !<ColorSpace>
    name: house
    to_scene_reference: !<MatrixTransform> {offset: [-0.25, -0.25, -0.25, 0]}
""")
        self.write_plate(self.part("RGB", function=lambda x, y: pattern(x, y) + 0.25))
        linear = self.rendered(*SHADING, "--input-space", "linear", out="linear/f.%04d.exr")[0]
        by_option = self.rendered(*SHADING, "--input-space", "house", "--ocio", "house.ocio")[0]
        by_environment = self.rendered(*SHADING, "--input-space", "house", out="by/f.%04d.exr",
                                       environment={"OCIO": self.path("house.ocio")})[0]
        self.expect_same(by_option.channels, by_environment.channels)
        gain = linear.at("R", 0, 0) / (pattern(0, 0) + 0.25)
        self.assertAlmostEqual(by_option.at("R", 0, 0), pattern(0, 0) * gain + 0.25, delta=1e-5)

    def test_again_when_the_space_or_its_configuration_changes(self):
        self.write_plate(self.part("RGB"))
        self.expect(self.render(*SHADING), 0)
        with open(self.path("a.ocio"), "w", encoding="utf-8") as file:
            file.write("ocio_profile_version: 2\nroles: {default: lin, scene_linear: lin}\n"
                       "file_rules:\n  - !<Rule> {name: Default, colorspace: default}\n"
                       "displays:\n  d:\n    - !<View> {name: v, colorspace: lin}\n"
                       "colorspaces:\n  - !<ColorSpace>\n    name: lin\n")
        jobs = [("--input-space", "raw"), ("--input-space", "sRGB"), ("--input-space", "lin", "--ocio", "a.ocio"),
                ("--input-space", "lin", "--ocio", "a.ocio", "--pixel-aspect", "ignore")]
        for options in jobs:
            for state in ("done", "skipped"):
                with self.subTest(options=options, state=state):
                    result = self.run_program("render", "plate.%04d.exr", *SHADING, *options, "--skip-existing", "-o",
                                              "out/f.%04d.exr", "--progress", "json", environment=NO_CONFIG)
                    self.expect(result, 0)
                    self.assertEqual(program.progress_events(result.stdout)[1]["state"], state)


class PixelAspect(Colour):
    def setUp(self):
        super().setUp()
        self.write_plate(self.part("RGB", attributes={"pixelAspectRatio": ("float", struct.pack("<f", 2))}),
                         frames=(1001, 1002))

    def test_other_than_1_is_refused_before_the_first_frame(self):
        self.expect(self.render(*UNDISTORT), 2, "", f"lenscorrect: Frame 1001 (plate.1001.exr): {NOT_SQUARE}\n")
        self.assertFalse(os.path.exists(self.path("out")))

    def test_is_ignored_on_request_and_kept(self):
        got = self.rendered(*UNDISTORT, "--pixel-aspect", "ignore")[0]
        self.assertEqual(got.attributes["pixelAspectRatio"], ("float", struct.pack("<f", 2)))

    def test_of_a_hair_more_than_1_is_square(self):
        self.write_plate(self.part("RGB", attributes={"pixelAspectRatio": ("float", struct.pack("<f", 1.00001))}),
                         frames=(1001, 1002))
        self.rendered(*UNDISTORT)

    def test_is_refused_in_stmap_too(self):
        arguments = ("stmap", "plate.%04d.exr", "--direction", "undistort", "--progress", "none", "-o", "map/m.%04d.exr")
        self.expect(self.run_program(*arguments), 2, "", f"lenscorrect: Frame 1001 (plate.1001.exr): {NOT_SQUARE}\n")
        self.expect(self.run_program(*arguments, "--pixel-aspect", "ignore"), 0)

    def test_is_refused_in_verify_too(self):
        result = self.run_program("verify", "plate.%04d.exr", "--frames", "1001")
        self.expect(result, 1, errors=f"lenscorrect: Frame 1001 (plate.1001.exr): {NOT_SQUARE}\n")
        self.expect(self.run_program("verify", "plate.%04d.exr", "--pixel-aspect", "ignore"), 0)

    def test_is_told_by_info_too(self):
        result = self.run_program("info", "plate.%04d.exr")
        self.expect(result, 1)
        self.assertIn(NOT_SQUARE, result.stdout)
        self.expect(self.run_program("info", "plate.%04d.exr", "--pixel-aspect", "ignore"), 0)


program.main()

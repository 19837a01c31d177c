"""What the tests of `lenscorrect render` share: tiny plates with a lens, and the pictures that come out."""
import math
import os

import correction_file
import exr
import program

WIDTH, HEIGHT = 64, 36


def pattern(x, y):
    """Smooth, between 0.2 and 0.8, different everywhere; (x, y) in px."""
    return 0.5 + 0.2 * math.sin(x * 0.21 + 0.3) * math.cos(y * 0.17) + 0.1 * math.sin(0.13 * (x + 2 * y))


class RenderTest(program.ProgramTest):
    def setUp(self):
        super().setUp()
        # Deep enough that the search for correction files never leaves the case's own folders.
        self.folder = self.path("a", "b", "c", "d", "e", "f")
        os.makedirs(self.folder)

    def write_lens(self, count=1, width=WIDTH, height=HEIGHT, name="plate", **header):
        values = {"clipWidth": str(width), "clipHeight": str(height), "sensorWidth": "32", "clipName": name,
                  "videoFileName": name, "shadingGamma": "1", **header}
        with open(self.path(name + ".olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(range(count), **values))

    def part(self, channels="RGBA", kind=exr.FLOAT, data=None, display=(0, 0, WIDTH - 1, HEIGHT - 1), attributes=None,
             function=pattern, name=None):
        """A picture whose channels all show `function` of the distance from the display window's corner."""
        part = exr.Part(data or display, display, {}, dict(attributes or {}), name)
        for channel in channels:
            part.fill(channel, kind, lambda x, y: function(x - display[0], y - display[1]))
        return part

    def write_plate(self, *parts, frames=(1001,), name="plate"):
        """The same picture in every frame, with timecodes from 00:00:00:00 at 25 frames per second."""
        for number in frames:
            index = number - frames[0]
            for part in parts:
                part.attributes["timeCode"] = exr.timecode(0, 0, index // 25, index % 25)
            exr.write(self.path(f"{name}.{number:04}.exr"), *parts)

    def render(self, *arguments, clip="plate.%04d.exr", out="out/f.%04d.exr", **options):
        return self.run_program("render", clip, "--progress", "none", "-o", out, *arguments, **options)

    def rendered(self, *arguments, frame=1001, out="out/f.%04d.exr", **options):
        """The parts of a frame after a render that must go well without a word."""
        self.expect(self.render(*arguments, out=out, **options), 0, "", "")
        return exr.read(self.path(out % frame))

    def names(self, folder="out"):
        """What lies in a folder for everyone to see."""
        return sorted(name for name in os.listdir(self.path(folder)) if not name.startswith("."))

    def temporaries(self, folder="out"):
        if not os.path.isdir(self.path(folder)):
            return []
        return sorted(name for name in os.listdir(self.path(folder)) if ".tmp" in name)

    def expect_close(self, got, wanted, tolerance, channels=None, shift=(0, 0), window=None):
        """Compares two parts where both have pixels, or in a window of the first; `shift` leads from a pixel of the
        first to the same one of the second."""
        x0, y0, x1, y1 = window or (
            max(got.data[0], wanted.data[0] - shift[0]), max(got.data[1], wanted.data[1] - shift[1]),
            min(got.data[2], wanted.data[2] - shift[0]), min(got.data[3], wanted.data[3] - shift[1]))
        self.assertTrue(x0 <= x1 and y0 <= y1, "the pictures do not overlap")
        for channel in channels or got.channels:
            worst = max((abs(got.at(channel, x, y) - wanted.at(channel, x + shift[0], y + shift[1])), x, y)
                        for x in range(x0, x1 + 1) for y in range(y0, y1 + 1))
            self.assertLessEqual(worst[0], tolerance, f"channel {channel} at {worst[1:]}")

    def expect_same(self, got, wanted):
        """Equality without the long comparison that assertEqual prints for thousands of numbers."""
        self.assertTrue(got == wanted, "the pictures differ")

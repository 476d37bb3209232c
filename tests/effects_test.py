#!/usr/bin/env python3
"""What turning, resizing and filtering do to real pictures, through the program."""
import unittest
from pathlib import Path

from commands import InFolder, ffmpeg, material, pivra, psnr, raw

PIVRA_TO_FFMPEG = {"90l": "transpose=2", "90r": "transpose=1", "180": "hflip,vflip",
                   "hmirror": "hflip", "vmirror": "vflip"}


def decode(name, *arguments):
    ffmpeg("-ss", "2", "-i", material("cockatoo"), "-frames:v", "6", *arguments, name)


class Effects(InFolder):
    def assert_same(self, one, other):
        self.assertEqual(Path(one).read_bytes(), Path(other).read_bytes())

    def test_turns_as_ffmpeg_does(self):
        decode("in.y4m", "-vf", "crop=502:302", "-pix_fmt", "yuv420p")
        for pixels in ("yuv420p", "nv12", "rgb565le", "rgb24"):
            ffmpeg("-i", "in.y4m", *raw(pixels, "in.raw"))
            for turn, video_filter in PIVRA_TO_FFMPEG.items():
                with self.subTest(f"{pixels} {turn}"):
                    pivra("convert", "in.raw", "ours.raw", "-f", pixels, "-t", pixels, "-s",
                          "502x302", "--rotate", turn)
                    ffmpeg(*raw(pixels, "in.raw", "502x302"), "-vf", video_filter,
                           *raw(pixels, "theirs.raw"))
                    self.assert_same("ours.raw", "theirs.raw")

    def test_size_and_turn_together_are_one_after_the_other(self):
        decode("in.y4m", "-pix_fmt", "yuv420p")
        for size, upright in (("360x640", "640x360"), ("1080x1920", "1920x1080")):
            pivra("convert", "in.y4m", "both.y4m", "--resize", size, "--rotate", "90r")
            pivra("convert", "in.y4m", "resized.y4m", "--resize", upright)
            pivra("convert", "resized.y4m", "turned.y4m", "--rotate", "90r")
            self.assert_same("both.y4m", "turned.y4m")

    def test_deblocking_brings_a_blocky_frame_nearer_to_the_original(self):
        decode("original.y4m", "-s", "704x576", "-pix_fmt", "yuv420p")
        ffmpeg("-i", "original.y4m", "-c:v", "h263p", "-qscale:v", "12", "blocky.avi")
        ffmpeg("-i", "blocky.avi", "-pix_fmt", "yuv420p", "blocky.y4m")
        pivra("convert", "blocky.y4m", "smooth.y4m", "--deblock", "12")
        smooth, blocky = (psnr(["-i", name], ["-i", "original.y4m"])["average"]
                          for name in ("smooth.y4m", "blocky.y4m"))
        self.assertGreater(smooth, blocky + 0.1)

    def test_a_dithered_sky_has_fewer_flat_runs(self):
        ffmpeg("-i", material("sky"), "-vf", "crop=640:426:0:0", "-pix_fmt", "yuv420p", "sky.y4m")

        def flat_pixels(*options):
            pivra("convert", "sky.y4m", "sky.raw", "--to", "rgb565", *options)
            words = memoryview(Path("sky.raw").read_bytes()).cast("H")
            rows = (words[640 * y + 210:640 * y + 300] for y in range(20, 200))
            return sum(a == b == c for row in rows for a, b, c in zip(row, row[1:], row[2:]))

        self.assertLess(flat_pixels("--dither"), flat_pixels() / 2)

    def test_saturation_is_a_gain_of_chroma(self):
        decode("in.raw", "-f", "rawvideo", "-pix_fmt", "yuv420p", "-frames:v", "1")
        size = ["-f", "yuv420", "-t", "yuv420", "-s", "1280x720"]
        for gain in (0, 1, 1.5, 30):
            pivra("convert", "in.raw", "out.raw", *size, "--saturation", str(gain))
            before, after = (Path(name).read_bytes() for name in ("in.raw", "out.raw"))
            luma = 1280 * 720
            self.assertEqual(before[:luma], after[:luma])
            expected = bytes(min(max(int((x - 128) * gain * 1024 // 1024) + 128, 0), 255)
                             for x in range(256))
            self.assertEqual(before[luma:].translate(expected), after[luma:], gain)

    def test_an_anaglyph_has_red_of_one_view_and_the_rest_of_the_other(self):
        ffmpeg("-i", material("left"), "-i", material("right"), "-filter_complex",
               "hstack,crop=1480:500", "views.png")
        ffmpeg("-i", "views.png", *raw("rgb24", "views.raw"))
        views = Path("views.raw").read_bytes()
        for options, red, rest in (([], 0, 1), (["--swap"], 1, 0)):
            pivra("anaglyph", "views.png", "glasses.raw", "--to", "rgb888", *options)
            glasses = Path("glasses.raw").read_bytes()
            for y in (0, 250, 499):
                row, left = glasses[2220 * y:2220 * (y + 1)], 4440 * y
                halves = [views[left:left + 2220], views[left + 2220:left + 4440]]
                for colour, half in enumerate((red, rest, rest)):
                    self.assertEqual(row[colour::3], halves[half][colour::3])


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""Frames of a real clip, beside what swscale makes of them: a reading of a layout or of
the matrix that the models of the other tests share with the library would show here."""
import itertools
import math
import shutil
import unittest
from pathlib import Path

from commands import InFolder, ffmpeg, material, pivra, psnr, raw

SIZE, FRAMES = "1280x720", 3

# What swscale makes of the same frames: a filter of the frames, limits of the PSNR in dB,
# and sources and destinations by our names and by FFmpeg's.
BESIDE_SWSCALE = [
    ("null", {"average": 40}, [
        ("yuv420", "yuv420p", "rgb888", "rgb24"),
        ("yuv420", "yuv420p", "bgra8888", "bgra"),
        ("yuv422n", "yuv422p", "abgr8888", "abgr"),
        ("yuv444", "yuv444p", "rgba8888", "rgba"),
        ("nv12", "nv12", "rgb888", "rgb24"),
        ("nv21", "nv21", "argb8888", "argb"),
        ("uyvy", "uyvy422", "bgr888", "bgr24"),
        ("yuyv", "yuyv422", "rgb888", "rgb24"),
    ]),
    # Luma is truncated where swscale rounds. Chroma is one pixel's where swscale averages
    # several, which a blur makes alike.
    ("gblur=sigma=8", {"y": 50, "u": 58, "v": 58}, [
        ("rgb888", "rgb24", "yuv420", "yuv420p"),
        ("bgr888", "bgr24", "nv12", "nv12"),
        ("bgra8888", "bgra", "nv12", "nv12"),
        ("abgr8888", "abgr", "nv21", "nv21"),
    ]),
    # 16-bit pixels are dithered, and neighbours differ after all.
    ("gblur=sigma=8", {"y": 49, "u": 36, "v": 36}, [
        ("rgb565", "rgb565le", "yuv420", "yuv420p"),
        ("bgr565", "bgr565le", "nv21", "nv21"),
    ]),
    # Every pixel has its own chroma, which both sides round.
    ("null", {"y": 50, "u": 80, "v": 80}, [("argb8888", "argb", "yuv444", "yuv444p")]),
]

# There and back: a format by our name and by FFmpeg's, the formats on the way, and the
# least PSNR of a colour or plane in dB. What only moves samples loses nothing.
ROUND_TRIPS = [
    ("yuv420", "yuv420p", ["t64x32"], math.inf),
    ("yuv420", "yuv420p", ["yuv422n"], math.inf),
    ("yuv420", "yuv420p", ["nv21", "nv12"], math.inf),
    ("nv12", "nv12", ["yuv420", "t64x32"], math.inf),
    # 220 levels of luma, truncated, for 256 of each colour.
    ("argb8888", "argb", ["yuv444"], 49),
    # And the chroma of one pixel in four.
    ("rgb888", "rgb24", ["yuv420"], 47),
    ("bgra8888", "bgra", ["nv12"], 47),
    # And often the next lower of 32 levels, for the way back truncates as well.
    ("rgb565", "rgb565le", ["nv21"], 28),
]


def decode(pixel_format, video_filter="null"):
    ffmpeg("-ss", "2", "-i", material("cockatoo"), "-frames:v", FRAMES, "-vf", video_filter,
           *raw(pixel_format, "source"))


def convert(source, target, from_name, to_name):
    pivra("convert", source, target, "-f", from_name, "-s", SIZE, "--to", to_name)


class Clip(InFolder):
    def compare(self, pixel_format, ours, theirs):
        self.assertEqual(Path(ours).stat().st_size, Path(theirs).stat().st_size)
        return psnr(raw(pixel_format, ours, SIZE), raw(pixel_format, theirs, SIZE))

    def test_frames_look_as_swscale_shows_them(self):
        for video_filter, limits, cases in BESIDE_SWSCALE:
            for name, pixel_format, target, target_format in cases:
                with self.subTest(f"{name} to {target}"):
                    decode(pixel_format, video_filter)
                    convert("source", "ours", name, target)
                    ffmpeg(*raw(pixel_format, "source", SIZE), "-sws_flags",
                           "neighbor+accurate_rnd", *raw(target_format, "theirs"))
                    measured = self.compare(target_format, "ours", "theirs")
                    for plane, limit in limits.items():
                        self.assertGreater(measured[plane], limit, plane)

    def test_frames_come_back(self):
        for name, pixel_format, way, limit in ROUND_TRIPS:
            with self.subTest(f"{name} by way of {way}"):
                decode(pixel_format)
                shutil.copy("source", "ours")
                for step in itertools.pairwise([name, *way, name]):
                    convert("ours", "next", *step)
                    shutil.move("next", "ours")
                measured = self.compare(pixel_format, "ours", "source")
                self.assertGreaterEqual(min(measured.values()), limit)


if __name__ == "__main__":
    unittest.main()

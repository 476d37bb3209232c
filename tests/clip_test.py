#!/usr/bin/env python3
"""Frames of a real clip, beside what swscale makes of them: a reading of a layout or of
the matrix that the models of the other tests share with the library would show here."""
import itertools
import math
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

TOOL = os.environ["PIVRA_TOOL"]
SCRIPTS = pathlib.Path(__file__).parent.parent / "scripts"
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


def ffmpeg(*arguments):
    command = ["ffmpeg", "-nostdin", "-loglevel", "info", "-y", *arguments]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}\n{done.stderr}")
    return done.stderr


def raw(pixel_format, path):
    return ["-f", "rawvideo", "-pix_fmt", pixel_format, "-video_size", SIZE, "-i", str(path)]


def psnr(pixel_format, ours, theirs):
    """In dB, by the letter of the plane or colour, and the average."""
    report = ffmpeg(*raw(pixel_format, ours), *raw(pixel_format, theirs),
                    "-lavfi", "psnr", "-f", "null", "-")
    planes = re.search(r"PSNR (.*average:\S+)", report).group(1)
    return {plane: float(value) for plane, value in re.findall(r"(\w+):(\S+)", planes)}


def convert(source, target, from_name, to_name):
    subprocess.run([TOOL, "convert", source, target, "-f", from_name, "-s", SIZE, "--to", to_name],
                   check=True)


class Clip(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.clip = subprocess.run([SCRIPTS / "material", "cockatoo"], capture_output=True, text=True,
                                  check=True).stdout.strip()

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source, self.ours, self.theirs = (
            pathlib.Path(folder.name, name) for name in ("source", "ours", "theirs"))

    def decode(self, pixel_format, video_filter="null"):
        ffmpeg("-ss", "2", "-i", self.clip, "-frames:v", str(FRAMES), "-vf", video_filter,
               "-pix_fmt", pixel_format, "-f", "rawvideo", str(self.source))

    def test_frames_look_as_swscale_shows_them(self):
        for video_filter, limits, cases in BESIDE_SWSCALE:
            for name, pixel_format, target, target_format in cases:
                with self.subTest(f"{name} to {target}"):
                    self.decode(pixel_format, video_filter)
                    convert(self.source, self.ours, name, target)
                    ffmpeg(*raw(pixel_format, self.source), "-sws_flags", "neighbor+accurate_rnd",
                           "-pix_fmt", target_format, "-f", "rawvideo", str(self.theirs))
                    self.assertEqual(self.ours.stat().st_size, self.theirs.stat().st_size)
                    measured = psnr(target_format, self.ours, self.theirs)
                    for plane, limit in limits.items():
                        self.assertGreater(measured[plane], limit, plane)

    def test_frames_come_back(self):
        for name, pixel_format, way, limit in ROUND_TRIPS:
            with self.subTest(f"{name} by way of {way}"):
                self.decode(pixel_format)
                shutil.copy(self.source, self.ours)
                for step in itertools.pairwise([name, *way, name]):
                    convert(self.ours, self.theirs, *step)
                    self.theirs.replace(self.ours)
                self.assertEqual(self.ours.stat().st_size, self.source.stat().st_size)
                self.assertGreaterEqual(min(psnr(pixel_format, self.ours, self.source).values()),
                                        limit)


if __name__ == "__main__":
    unittest.main()

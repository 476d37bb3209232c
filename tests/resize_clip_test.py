#!/usr/bin/env python3
"""A frame of a real clip resized, beside what swscale makes of it: planes or channels taken
for one another, rows or columns out of place, which the model of the other tests shares with
the library, would show here."""
import ctypes
import itertools
import os
import re
import struct
import tempfile
import unittest
from pathlib import Path

from commands import run

LIBRARY = ctypes.CDLL(os.environ["PIVRA_LIBRARY"])
SCRIPTS = Path(__file__).parent.parent / "scripts"
MODE1 = 0x6D6F6431

SIZE, HALF, DOUBLE, FOURFOLD = (640, 360), (320, 180), (1280, 720), (2560, 1440)
# An area of 2 x 2 is our filter but for rounding. Of pictures that grow we keep the first
# sample in its place, up to 3/8 of a sample from where swscale has it.
TARGETS = [(HALF, "area", 0), (DOUBLE, "bilinear", 0), (FOURFOLD, "bilinear", MODE1)]

# Our code and FFmpeg's name, how far the sizes of each plane are halved and the bytes of its
# samples, and by target the least PSNR of a plane or colour in dB: 2 to 9 above what a shift
# by one sample leaves.
FORMATS = [
    (1, "yuv420p", [(0, 1), (1, 1), (1, 1)], [50, 43, 40]),
    (6, "nv12", [(0, 1), (1, 2)], [50, 43, 40]),
    (200, "rgb565le", [(0, 2)], [34, 33, 32]),
    (400, "rgb24", [(0, 3)], [50, 42, 39]),
    (500, "rgba", [(0, 4)], [50, 42, 39]),
]


def describe(code, planes, size, data, mode=0):
    """An ImageDesc, which has four planes in any case."""
    columns, at = [], ctypes.addressof(data)
    for shift, sample in (planes + [(16, 0)] * 4)[:4]:
        width, height = (n >> shift for n in size)
        columns.append((width, height, width * sample, at))
        at += width * sample * height
    return struct.pack("@12i16x4P16xi12xI4x", *itertools.chain(*zip(*columns)), code, mode)


def ffmpeg(*arguments):
    return run("ffmpeg", "-nostdin", "-y", *arguments)


def raw(pixel_format, size, path):
    return "-f", "rawvideo", "-pix_fmt", pixel_format, "-video_size", "%dx%d" % size, "-i", path


class Resizing(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source, self.ours, self.theirs = (Path(folder.name, name) for name in "abc")

    def psnr(self, code, pixel_format, planes, target, flags, mode):
        """Of our frame beside that of swscale, the worst plane or colour."""
        frame = self.source.read_bytes()
        scaled = len(frame) * target[0] * target[1] // (SIZE[0] * SIZE[1])
        before = ctypes.create_string_buffer(frame, len(frame))
        after = ctypes.create_string_buffer(scaled)
        src = describe(code, planes, SIZE, before)
        dst = describe(code, planes, target, after, mode)
        self.assertEqual(LIBRARY.pivra_rsz(src, dst), 0)
        self.ours.write_bytes(after.raw)
        ffmpeg(*raw(pixel_format, SIZE, self.source), "-s", "%dx%d" % target, "-sws_flags",
               flags + "+accurate_rnd", "-pix_fmt", pixel_format, "-f", "rawvideo", self.theirs)
        report = ffmpeg(*raw(pixel_format, target, self.ours),
                        *raw(pixel_format, target, self.theirs), "-lavfi", "psnr", "-f", "null", "-")
        return min(float(value) for value in re.findall(r" [rgbyuv]:(\S+)", report))

    def test_frames_look_as_those_of_swscale(self):
        clip = run(SCRIPTS / "material", "cockatoo").strip()
        for *layout, limits in FORMATS:
            ffmpeg("-ss", "2", "-i", clip, "-frames:v", "1", "-s", "%dx%d" % SIZE,
                   "-pix_fmt", layout[1], "-f", "rawvideo", self.source)
            for target, limit in zip(TARGETS, limits):
                with self.subTest(f"{layout[1]} to {target}"):
                    self.assertGreater(self.psnr(*layout, *target), limit)


if __name__ == "__main__":
    unittest.main()

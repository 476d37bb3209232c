#!/usr/bin/env python3
"""Tiled frames beside GStreamer, whose NV12_64Z32 is t64x32: a reading of the layout
that the model of the other tests shares with the library would show here."""
import random
import shutil
import unittest
from pathlib import Path

from commands import InFolder, ffmpeg, material, pivra, raw, run

CLIP_SIZE = 1280, 720

# Multiples of 4, for GStreamer rounds the strides of NV12 up to them. The tiles of luma
# and of chroma have lone last rows and last groups cut short at sizes of their own.
SIZES = [(64, 32), (72, 34), (72, 40), (132, 66), (176, 144), (200, 96), (256, 128), (320, 68),
         (320, 240), (448, 160), (640, 352), (708, 290), (1280, 720), (1920, 1080)]


@unittest.skipUnless(shutil.which("gst-launch-1.0"), "needs gst-launch-1.0")
class Tiles(InFolder):
    source, target = Path("source"), Path("target")

    def gst(self, frame, size, source, target):
        """The frame in another format of GStreamer's."""
        self.source.write_bytes(frame)
        width, height = size
        run("gst-launch-1.0", "-q", "filesrc", "location=source", f"blocksize={len(frame)}",
            "!", f"video/x-raw,format={source},width={width},height={height},framerate=1/1",
            "!", "videoconvert", "!", f"video/x-raw,format={target}",
            "!", "filesink", "location=target")
        return self.target.read_bytes()

    def own(self, frame, size, source, target):
        """The frame in another format of ours."""
        self.source.write_bytes(frame)
        pivra("convert", "source", "target", "-f", source, "-t", target, "-s", "%dx%d" % size)
        return self.target.read_bytes()

    def check(self, frame, size):
        """Each reads the other's tiles. What lies in them outside the picture is free."""
        luma = size[0] * size[1]
        planar = frame[:luma] + frame[luma::2] + frame[luma + 1::2]
        with self.subTest(size=size):
            theirs = self.gst(frame, size, "NV12", "NV12_64Z32")
            # Said in few words, a difference of frames would fill pages.
            self.assertTrue(self.own(theirs, size, "t64x32", "nv12") == frame, "to nv12")
            self.assertTrue(self.own(theirs, size, "t64x32", "yuv420") == planar, "to yuv420")
            ours = self.own(planar, size, "yuv420", "t64x32")
            self.assertEqual(len(ours), len(theirs))
            self.assertTrue(self.gst(ours, size, "NV12_64Z32", "NV12") == frame, "to t64x32")

    def test_random_frames(self):
        for size in SIZES:
            self.check(random.Random(str(size)).randbytes(size[0] * size[1] * 3 // 2), size)

    def test_frame_of_the_clip(self):
        ffmpeg("-ss", "2", "-i", material("cockatoo"), "-frames:v", "1", *raw("nv12", "target"))
        self.check(self.target.read_bytes(), CLIP_SIZE)


if __name__ == "__main__":
    unittest.main()

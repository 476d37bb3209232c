#!/usr/bin/env python3
"""Frames of a real clip, beside what swscale makes of them: a reading of a layout or of
the matrix that the models of the other tests share with the library would show here."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

TOOL = os.environ["PIVRA_TOOL"]
SCRIPTS = pathlib.Path(__file__).parent.parent / "scripts"
SIZE, FRAMES = "1280x720", 3

# Source and destination by our names and by FFmpeg's.
CASES = [
    ("yuv420", "yuv420p", "rgb888", "rgb24"),
    ("yuv420", "yuv420p", "bgra8888", "bgra"),
    ("yuv422n", "yuv422p", "abgr8888", "abgr"),
    ("yuv444", "yuv444p", "rgba8888", "rgba"),
    ("nv12", "nv12", "rgb888", "rgb24"),
    ("nv21", "nv21", "argb8888", "argb"),
    ("uyvy", "uyvy422", "bgr888", "bgr24"),
    ("yuyv", "yuyv422", "rgb888", "rgb24"),
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
    report = ffmpeg(*raw(pixel_format, ours), *raw(pixel_format, theirs),
                    "-lavfi", "psnr", "-f", "null", "-")
    value = re.search(r"PSNR .*average:(\S+)", report).group(1)
    return float(value)


class Clip(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.clip = subprocess.run([SCRIPTS / "clip"], capture_output=True, text=True,
                                  check=True).stdout.strip()

    def test_frames_look_as_swscale_shows_them(self):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            source, ours, theirs = (folder / name for name in ("source", "ours", "theirs"))
            for name, pixel_format, target, target_format in CASES:
                with self.subTest(f"{name} to {target}"):
                    ffmpeg("-ss", "2", "-i", self.clip, "-frames:v", str(FRAMES), "-pix_fmt",
                           pixel_format, "-f", "rawvideo", str(source))
                    subprocess.run([TOOL, "convert", source, ours, "-f", name, "-s", SIZE,
                                    "--to", target], check=True)
                    ffmpeg(*raw(pixel_format, source), "-sws_flags", "neighbor+accurate_rnd",
                           "-pix_fmt", target_format, "-f", "rawvideo", str(theirs))
                    self.assertEqual(ours.stat().st_size, theirs.stat().st_size)
                    self.assertGreater(psnr(target_format, ours, theirs), 40)


if __name__ == "__main__":
    unittest.main()

"""Running the commands that the Python tests are made of."""
import contextlib
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).parent.parent / "scripts"


def run(*command, env=None, **options):
    """Runs a command with `env` on top of the environment; returns what it prints.

    Fails with all of it if the command does.
    """
    words = [str(word) for word in command]
    done = subprocess.run(words, env={**os.environ, **(env or {})}, text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    assert done.returncode == 0, f"{' '.join(words)}\n{done.stdout}"
    return done.stdout


def pivra(command, *arguments):
    run(os.environ["PIVRA_TOOL"], command, *arguments)


def material(name):
    return run(SCRIPTS / "material", name).strip()


def ffmpeg(*arguments):
    return run("ffmpeg", "-nostdin", "-y", *arguments)


def raw(pixel_format, path, size=None):
    """Raw frames as ffmpeg writes them or, with their size, as it reads them."""
    sized = ["-video_size", size, "-i"] if size else []
    return ["-f", "rawvideo", "-pix_fmt", pixel_format, *sized, path]


def psnr(ours, theirs):
    """Of two inputs of ffmpeg in dB, by the letter of the plane or colour, and the average."""
    report = ffmpeg(*ours, *theirs, "-lavfi", "psnr", "-f", "null", "-")
    planes = re.search(r"PSNR (.*average:\S+)", report)[1]
    return {plane: float(value) for plane, value in re.findall(r"(\w+):(\S+)", planes)}


class InFolder(unittest.TestCase):
    """Tests in a folder of their own."""

    def setUp(self):
        self.enterContext(contextlib.chdir(self.enterContext(tempfile.TemporaryDirectory())))

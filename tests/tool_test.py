#!/usr/bin/env python3
"""The pivra program from the outside: pictures, PNG files, messages, unfinished files."""
import itertools
import os
import pty
import random
import resource
import shutil
import signal
import struct
import subprocess
import tempfile
import time
import unittest
import zlib

TOOL = os.environ["PIVRA_TOOL"]
WIDTH, HEIGHT = 19, 11  # odd, so that chroma is rounded up
LUMA, CHROMA = WIDTH * HEIGHT, (WIDTH + 1) // 2 * ((HEIGHT + 1) // 2)
SIZE = f"{WIDTH}x{HEIGHT}"
ORDERS = {"rgb888": "RGB", "bgr888": "BGR", "rgba8888": "RGBA", "bgra8888": "BGRA",
          "argb8888": "ARGB", "abgr8888": "ABGR"}


def frame_bytes(seed, planes=(LUMA, CHROMA, CHROMA)):
    source = random.Random(seed)
    return [source.randbytes(size) for size in planes]


def matrix(luma, cb, cr):
    y, u, v = 298 * (luma - 16) + 128, cb - 128, cr - 128
    return [min(max(c >> 8, 0), 255) for c in (y + 409 * v, y - 100 * u - 208 * v, y + 516 * u)]


def model(planes, shift_x=1, shift_y=1):
    """The RGB bytes of a planar frame; chroma columns and rows are halved by the shifts."""
    luma, cb, cr = planes
    pitch = (WIDTH + shift_x) >> shift_x
    at = [(y >> shift_y) * pitch + (x >> shift_x) for y in range(HEIGHT) for x in range(WIDTH)]
    return bytes(itertools.chain.from_iterable(
        matrix(luma[i], cb[c], cr[c]) for i, c in enumerate(at)))


def y4m(frames, parameters="F25:1 Ip C420jpeg", line=b"FRAME\n"):
    header = f"YUV4MPEG2 W{WIDTH} H{HEIGHT} {parameters}".strip() + "\n"
    return header.encode() + b"".join(line + b"".join(planes) for planes in frames)


def decode_png(data):
    """Samples per pixel, the sBIT chunk and the rows of an 8-bit PNG file."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", data[:8]
    chunks, at = {}, 8
    while at < len(data):
        size, kind = struct.unpack_from(">I4s", data, at)
        body = data[at + 8:at + 8 + size]
        assert zlib.crc32(kind + body) == struct.unpack_from(">I", data, at + 8 + size)[0]
        chunks[kind] = chunks.get(kind, b"") + body
        at += 12 + size
    width, height, depth, colour = struct.unpack_from(">IIBB", chunks[b"IHDR"])
    assert (width, height, depth) == (WIDTH, HEIGHT, 8)
    samples = {2: 3, 6: 4}[colour]
    packed, pitch = zlib.decompress(chunks[b"IDAT"]), width * samples
    pixels, above = bytearray(), bytes(pitch)
    for y in range(height):
        start, row = y * (pitch + 1), bytearray()
        for i, value in enumerate(packed[start + 1:start + 1 + pitch]):
            left, corner = (row[i - samples], above[i - samples]) if i >= samples else (0, 0)
            paeth = min((left, above[i], corner), key=lambda n: abs(left + above[i] - corner - n))
            guess = (0, left, above[i], (left + above[i]) // 2, paeth)[packed[start]]
            row.append((value + guess) & 255)
        pixels += row
        above = row
    return samples, chunks.get(b"sBIT"), bytes(pixels)


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.old = os.getcwd()
        self.folder = tempfile.mkdtemp()
        os.chdir(self.folder)
        os.mkdir("out")
        self.frames = [frame_bytes(seed) for seed in range(4)]
        self.rgb = [model(frame) for frame in self.frames]
        self.write("clip.y4m", y4m(self.frames))
        self.write("clip.yuv", b"".join(map(b"".join, self.frames)))

    def tearDown(self):
        os.chdir(self.old)
        shutil.rmtree(self.folder)

    @staticmethod
    def write(name, data):
        with open(name, "wb") as file:
            file.write(data)

    @staticmethod
    def read(name):
        with open(name, "rb") as file:
            return file.read()

    @staticmethod
    def start(*args, **options):
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return subprocess.run([TOOL, *args], check=False, **options)

    def run_tool(self, *args, **options):
        """Runs a command that has to work, in silence; returns standard output."""
        done = self.start(*args, **options)
        self.assertEqual((done.returncode, done.stderr), (0, b""), args)
        return done.stdout

    def convert(self, *args, **options):
        return self.run_tool("convert", *args, **options)

    def assert_fails(self, sentence, *args, **options):
        """One line on standard error, and nothing new in the output folder."""
        before = sorted(os.listdir("out"))
        done = self.start(*args, **options)
        said = done.stderr.decode()
        self.assertRegex(said, rf"^pivra: .*{sentence}.*\n\Z", args)
        self.assertEqual(said.count("\n"), 1, said)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(sorted(os.listdir("out")), before, args)


class Pictures(ToolTest):
    def test_y4m_kinds(self):
        both = self.rgb[0] + self.rgb[1]
        for chroma in ("C420", "C420jpeg", "C420mpeg2", "C420paldv", ""):
            clip = y4m(self.frames[:2], f"{chroma} It A1:1 XANY", b"FRAME Xthis\n")
            self.assertEqual(self.convert("-", "-", input=clip), both)
        wide = frame_bytes(1, (LUMA, CHROMA * 11 // 6, CHROMA * 11 // 6))
        self.assertEqual(self.convert("-", "-", input=y4m([wide], "C422")), model(wide, 1, 0))
        full = frame_bytes(2, (LUMA, LUMA, LUMA))
        self.assertEqual(self.convert("-", "-", input=y4m([full], "C444")), model(full, 0, 0))
        grey = frame_bytes(3, (LUMA,))
        shown = self.convert("-", "-", input=y4m([grey], "Cmono XCOLORRANGE=FULL"))
        self.assertEqual(shown, bytes(y for y in grey[0] for _ in range(3)))

    def test_raw_layouts_of_one_picture(self):
        luma, cb, cr = self.frames[0]
        cb_cr, cr_cb = (bytes(itertools.chain(*zip(*pair))) for pair in ((cb, cr), (cr, cb)))
        for name, data in {"yuv420": luma + cb + cr, "I420": luma + cb + cr, "yv12": luma + cr + cb,
                           "nv12": luma + cb_cr, "NV21": luma + cr_cb}.items():
            shown = self.convert("-", "-", "-f", name, "-s", SIZE, "--to", "bgr24", input=data)
            swapped = b"".join(shown[i:i + 3][::-1] for i in range(0, len(shown), 3))
            self.assertEqual(swapped, self.rgb[0], name)

    def test_frames(self):
        for clip in (["clip.y4m"], ["clip.yuv", "-f", "yuv420p", "-s", SIZE]):
            for frames, chosen in {":": slice(4), "1:3": slice(1, 3), "2:": slice(2, 4),
                                   ":1": slice(1), "3": slice(3, 4), "2:9": slice(2, 4)}.items():
                self.convert(clip[0], "out/rgb", *clip[1:], "--frames", frames)
                self.assertEqual(self.read("out/rgb"), b"".join(self.rgb[chosen]), (clip, frames))
        self.convert("clip.y4m", "out/yuv", "--to", "yuv420", "--frames", "1:3")
        self.assertEqual(self.read("out/yuv"), b"".join(self.frames[1] + self.frames[2]))

    @unittest.skipUnless(shutil.which("ffmpeg"), "needs ffmpeg")
    def test_ffmpeg_pipes(self):
        source = ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=s=321x241:d=0.2:r=25",
                  "-pix_fmt", "yuv420p"]
        clip = subprocess.run([*source, "-f", "yuv4mpegpipe", "-"], check=True, capture_output=True)
        for layout in ("nv12", "nv21"):
            raw = subprocess.run([*source[:-2], "-vf", f"format=yuv420p,format={layout}",
                                  "-f", "rawvideo", "-"], check=True, capture_output=True)
            shown = self.convert("-", "-", "-t", "argb", input=clip.stdout)
            self.assertEqual(len(shown), 5 * 4 * 321 * 241)
            self.assertEqual(shown, self.convert("-", "-", "-t", "argb", "-f", layout, "-s",
                                                 "321x241", input=raw.stdout))

    def test_formats_version_and_stats(self):
        table = {line.split()[1]: line for line in self.run_tool("formats").decode().splitlines()
                 if line[:4].strip().isdigit()}
        self.assertEqual(len(table), 23)
        self.assertRegex(table["nv12"], r"^ +6 .* w\*h \+ w/2\*h/2\*2 .* NV12 +every RGB format$")
        self.assertRegex(table["yuv422w"], r"yuv440p( +-){3} +rgb565 bgr565$")
        self.assertRegex(self.run_tool("--version").decode(), r"^pivra \d+\.\d+\.\d+\n$")
        self.assertIn(b"convert", self.run_tool("--help"))
        said = self.start("convert", "clip.y4m", "/dev/null", "--stats").stderr.decode()
        self.assertRegex(said, rf"^4 frames of {SIZE}: [\d.]+ ms per frame, [\d.]+ Mpixel/s in")

    def test_progress_on_a_terminal(self):
        terminal, side = pty.openpty()
        command = [TOOL, "convert", "-", "out/rgb", "--stats", "--frames", ":4"]
        with subprocess.Popen(command, stdin=subprocess.PIPE, stderr=side) as tool:
            tool.stdin.write(y4m([]))
            for frame in self.frames:
                tool.stdin.write(y4m([frame]).partition(b"\n")[2])
                tool.stdin.flush()
                time.sleep(0.15)
        os.close(side)
        bar = r"\r\x1b\[K[2-4] frames, [\d.]+ frames/s(.*)\r\x1b\[K4 frames of [^\r]*\r\n$"
        self.assertRegex(os.read(terminal, 4096).decode(), bar)
        os.close(terminal)
        self.assertEqual(self.read("out/rgb"), b"".join(self.rgb))


class Png(ToolTest):
    def test_every_rgb_format_shows_the_same_picture(self):
        for name, order in ORDERS.items():
            self.convert("clip.y4m", "out/a.png", "--frames", "0", "--to", name)
            samples, precision, pixels = decode_png(self.read("out/a.png"))
            self.assertEqual((samples, precision), (len(order), None))
            self.assertEqual(bytes(c for i, c in enumerate(pixels) if i % samples < 3), self.rgb[0])
            # Alpha is shown as it is, so raw input with a different one comes through.
            raw = random.Random(name).randbytes(len(order) * LUMA)
            self.convert("-", "out/b.png", "-f", name, "-s", SIZE, input=raw)
            wanted = bytes(raw[i + order.index(c)] for i in range(0, len(raw), samples)
                           for c in "RGBA"[:samples])
            self.assertEqual(decode_png(self.read("out/b.png"))[2], wanted)

    def test_565_keeps_its_precision(self):
        wanted = bytes(c >> 3 << 3 | c >> 5 if i % 3 != 1 else c >> 2 << 2 | c >> 6
                       for i, c in enumerate(self.rgb[2]))
        for name in ("rgb565", "bgr565"):
            png = ["--frames", "2", "--to", name, "--output-format", "png"]
            self.assertEqual(decode_png(self.convert("clip.y4m", "-", *png)),
                             (3, b"\5\6\5", wanted))

    def test_names(self):
        for output, frames, names in (
                ("a.PNG", "1", {"a.PNG": 1}), ("a.png", "3:", {"a.png": 3}),
                ("a.png", "1:3", {"a-0001.png": 1, "a-0002.png": 2}),
                ("%03d.x.png", "2:", {"002.x.png": 2, "003.x.png": 3}),
                ("%d%.png", "3", {"3%.png": 3})):
            self.convert("clip.y4m", f"out/{output}", "--frames", frames)
            self.assertEqual(set(os.listdir("out")), set(names))
            for name, index in names.items():
                self.assertEqual(decode_png(self.read(f"out/{name}"))[2], self.rgb[index])
                os.remove(f"out/{name}")
        png = ["--output-format", "png", "--frames"]
        self.assertEqual(self.convert("clip.y4m", "-", *png, "1:3"), b"".join(
            self.convert("clip.y4m", "-", *png, frame) for frame in "12"))


class Failures(ToolTest):
    def test_sentences(self):
        raw = ["-f", "nv12", "-s", SIZE]
        size = LUMA + 2 * CHROMA
        self.write("long.nv12", bytes(size + 1))
        self.write("empty", b"")
        self.write("empty.y4m", y4m([]))
        self.write("huge.y4m", b"YUV4MPEG2 W99999 H99999\nFRAME\n")
        for sentence, *args in (
                ("cannot open none.y4m: No such file", "none.y4m"),
                ("cannot read out: Is a directory", "out"),
                ("clip.yuv is not Y4M; raw frames need --from and --size", "clip.yuv"),
                ("need both --from and --size", "clip.yuv", "-f", "nv12"),
                ("need both --from and --size", "clip.yuv", "-s", SIZE),
                (f"long.nv12 has {size + 1} bytes .*{SIZE} take {size} bytes", "long.nv12", *raw),
                (f"empty has 0 bytes .*{SIZE} take {size} bytes", "empty", *raw),
                ("huge.y4m has 6 bytes .* 99999x99999 take 14999800001 bytes", "huge.y4m"),
                ("empty.y4m has 0 frames", "empty.y4m"),
                ("clip.y4m has 4 frames, none of them selected", "clip.y4m", "--frames", "4:"),
                ("'3:2' are none", "clip.y4m", "--frames", "3:2"),
                ("'a:' are not of the form", "clip.y4m", "--frames", "a:"),
                ("'18' is not of the form", "clip.yuv", "-f", "nv12", "-s", "18"),
                ("'9999999999x8' is not of", "clip.yuv", "-f", "nv12", "-s", "9999999999x8"),
                ("the size 0x8 is below 1x1", "clip.yuv", "-f", "nv12", "-s", "0x8"),
                ("the size 4x4 is below 8x8", "-", "-f", "nv12", "-s", "4x4"),
                ("format 'nv13' is unknown", "clip.yuv", "-f", "nv13", "-s", SIZE),
                ("format 'nv13' is unknown", "clip.y4m", "-t", "nv13"),
                ("t64x32 is tiled", "clip.yuv", "-f", "t64x32", "-s", SIZE),
                ("yuv420 does not convert to nv12", "clip.y4m", "-t", "nv12"),
                ("PNG does not hold yuv420", "clip.y4m", "-t", "yuv420", "--output-format", "png"),
                ("bmp not in", "clip.y4m", "--output-format", "bmp"),
                ("--stats has nothing to measure", "clip.y4m", "--stats", "-t", "yuv420"),
                ("--nonsense", "clip.y4m", "--nonsense")):
            self.assert_fails(sentence, "convert", args[0], "out/a", *args[1:], input=bytes(size))
        self.assert_fails("output is required", "convert", "clip.y4m")
        self.assert_fails("subcommand is required")

    def test_damaged_clips(self):
        clip = y4m(self.frames[:2])
        size = LUMA + 2 * CHROMA
        for sentence, data in (
                (f"standard input is truncated: frame 1 has {size - 9} of {size} bytes", clip[:-9]),
                ("frame 2 does not start with FRAME", clip + b"FRAME"),
                ("frame 2 does not start with FRAME", clip + bytes(9000)),
                ("standard input is not Y4M", b""), ("standard input is not Y4M", b"YUV4MPEG2"),
                ("the size 'x' in its Y4M header", b"YUV4MPEG2 Wx H8\n"),
                ("the size '-8' in its Y4M header", b"YUV4MPEG2 W8 H-8\n"),
                ("has no size in its Y4M header", b"YUV4MPEG2 W8 C420\n"),
                ("Y4M chroma '420p10'; readable is 8-bit", y4m([], "C420p10")),
                ("Y4M chroma '411'", y4m([], "C411")),
                ("is full-range video", y4m([], "XCOLORRANGE=FULL"))):
            self.assert_fails(sentence, "convert", "-", "out/a", input=data)
        self.assert_fails(f"truncated: frame 0 has 5 of {size} bytes", "convert", "-", "out/a",
                          "-f", "nv12", "-s", SIZE, input=bytes(5))

    def test_unwritable_outputs(self):
        for output, reason in {"none/a": "No such file", "clip.y4m/a": "Not a directory",
                               "out": "Is a directory", "/dev/full": "No space left"}.items():
            self.assert_fails(f"cannot write {output}: {reason}", "convert", "clip.y4m", output)
        with open("/dev/full", "wb") as full:
            for args in (["convert", "clip.y4m", "-"], ["formats"]):
                self.assert_fails("cannot write standard output: No space left", *args, stdout=full)

    def test_permissions(self):
        os.chmod(self.folder, 0o755)
        self.write("secret.y4m", y4m(self.frames))
        os.chmod("secret.y4m", 0)
        os.chmod("out", 0o555)
        nobody = {"user": 65534} if os.geteuid() == 0 else {}  # root may do everything
        try:
            self.run_tool("--version", **nobody)
        except (OSError, AssertionError):
            self.skipTest("the build directory is closed to other users")
        self.assert_fails("cannot open secret.y4m: Permission denied",
                          "convert", "secret.y4m", "-", **nobody)
        self.assert_fails("cannot write out/a: Permission denied",
                          "convert", "clip.y4m", "out/a", **nobody)
        os.chmod("out", 0o777)
        self.write("out/b", b"kept")
        os.chmod("out/b", 0o444)
        self.assert_fails("cannot write out/b: Permission denied",
                          "convert", "clip.y4m", "out/b", **nobody)
        self.assertEqual(self.read("out/b"), b"kept")

    def test_a_failure_keeps_the_old_file(self):
        self.write("out/a", b"kept")
        self.assert_fails("truncated", "convert", "-", "out/a", input=y4m(self.frames)[:-1])
        limit = (len(self.rgb[0]) + 7,) * 2
        self.assert_fails("cannot write out/a: File too large", "convert", "clip.y4m", "out/a",
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, limit))
        self.assertEqual(self.read("out/a"), b"kept")

    def test_a_signal_leaves_nothing(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with subprocess.Popen([TOOL, "convert", "-", "out/a"], stdin=subprocess.PIPE) as tool:
                tool.stdin.write(y4m(self.frames[:2]))
                tool.stdin.flush()
                deadline = time.monotonic() + 10
                while not os.listdir("out") and time.monotonic() < deadline:
                    time.sleep(0.01)
                self.assertNotIn("a", os.listdir("out"))
                self.assertEqual(len(os.listdir("out")), 1)
                tool.send_signal(number)
                self.assertEqual(tool.wait(10), -number)
            self.assertEqual(os.listdir("out"), [])

    def test_a_success_keeps_link_and_mode(self):
        self.write("target", b"old")
        os.chmod("target", 0o640)
        os.symlink("../target", "out/a")
        self.convert("clip.y4m", "out/a", preexec_fn=lambda: os.umask(0o022))
        self.assertTrue(os.path.islink("out/a"))
        self.assertEqual(self.read("target"), b"".join(self.rgb))
        self.assertEqual(os.stat("target").st_mode & 0o777, 0o640)
        self.convert("clip.y4m", "out/b", preexec_fn=lambda: os.umask(0o022))
        self.assertEqual(os.stat("out/b").st_mode & 0o777, 0o644)


if __name__ == "__main__":
    unittest.main()

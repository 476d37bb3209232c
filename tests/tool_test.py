#!/usr/bin/env python3
"""The pivra program from the outside: pictures, PNG files, messages, unfinished files."""
import os
import pty
import random
import resource
import signal
import subprocess
import time
import unittest
from pathlib import Path

from commands import InFolder

TOOL = os.environ["PIVRA_TOOL"]
WIDTH, HEIGHT = 19, 11  # odd, so that chroma is rounded up
SIZE = f"{WIDTH}x{HEIGHT}"
LUMA, PITCH, CHROMA = WIDTH * HEIGHT, 10, 10 * 6
FRAME = LUMA + 2 * CHROMA
OUT = Path("out")

# What fails, and a part of what is said about it; standard input holds FRAME bytes.
COMMANDS = {
    "": "subcommand is required",
    "convert clip.y4m": "output is required",
    "convert none.y4m out/a": "cannot open none.y4m: No such file",
    "convert out out/a": "cannot read out: Is a directory",
    "convert clip.y4m none/a": "cannot write none/a: No such file",
    "convert clip.y4m out": "cannot write out: Is a directory",
    "convert clip.yuv out/a": "clip.yuv is neither Y4M nor PNG; raw frames need --from and --size",
    "convert clip.yuv out/a -f nv12": "need both --from and --size",
    "convert clip.yuv out/a -f nv12 -s 18": "'18' is not of the form",
    "convert clip.yuv out/a -f nv12 -s 9999999999x8": "'9999999999x8' is not of",
    "convert - out/a -f nv12 -s 4x4": "the size 4x4 is below 8x8",
    "convert clip.yuv out/a -f t64x32 -s 64x32": "clip.yuv has 1316 bytes .*64x32 take 8192 bytes",
    "convert - out/a -f t256x16 -s 2049x8": "2049x8 is too large for t256x16",
    "convert huge.y4m out/a": "huge.y4m has 6 bytes .* 99999x99999 take 14999800001 bytes",
    "convert empty.y4m out/a": "empty.y4m has 0 frames",
    "convert clip.y4m out/a --frames 4:": "clip.y4m has 4 frames, none of them selected",
    "convert clip.y4m out/a --frames 3:2": "'3:2' are none",
    "convert clip.y4m out/a -t nv13": "format 'nv13' is unknown",
    "convert clip.y4m out/a -t yv16": "yuv420 does not convert to yv16",
    "convert clip.y4m out/a.y4m -t nv12": "Y4M does not hold nv12",
    "convert clip.y4m out/a.png -t yuv420": "PNG does not hold yuv420",
    "convert clip.y4m out/a --output-format bmp": "bmp not in",
    "convert clip.y4m out/a -t yuv420 --stats": "--stats has nothing to measure",
    "convert clip.y4m out/a --rotate 90": "the turn '90' is none of",
    "convert clip.y4m out/a --deblock 16": "the strength '16' is not a number from 0 to 15",
    "convert clip.y4m out/a --saturation x": "the gain 'x' is not a number",
    "convert clip.y4m out/a --resize 0x10": "is below 1x1",
    "convert clip.y4m out/a --dither --to rgb888": "yuv420 is not dithered to rgb888",
    "convert clip.y4m out/a --dither --to yuyv": "is not dithered to yuyv",
}


def model(frame):
    """The RGB bytes of a planar 4:2:0 frame."""
    rgb = []
    for i in range(LUMA):
        at = LUMA + i // WIDTH // 2 * PITCH + i % WIDTH // 2
        y, u, v = 298 * (frame[i] - 16) + 128, frame[at] - 128, frame[at + CHROMA] - 128
        rgb += y + 409 * v, y - 100 * u - 208 * v, y + 516 * u
    return bytes(min(max(c >> 8, 0), 255) for c in rgb)


def y4m(frames, parameters="F25:1 Ip C420jpeg", line=b"FRAME\n"):
    header = f"YUV4MPEG2 W{WIDTH} H{HEIGHT} {parameters}\n"
    return b"".join([header.encode(), *(line + frame for frame in frames)])


def ffmpeg(arguments, data=b""):
    command = ["ffmpeg", "-v", "error", *arguments.split(), "-"]
    return subprocess.run(command, input=data, stdout=subprocess.PIPE, check=True).stdout


def decode_png(data):
    """The pixels of PNG files one behind the other, with as many channels as they have."""
    return ffmpeg("-f png_pipe -i - -fps_mode passthrough -f rawvideo", data)


class ToolTest(InFolder):
    def setUp(self):
        super().setUp()
        OUT.mkdir()
        self.frames = [random.Random(seed).randbytes(FRAME) for seed in range(4)]
        self.rgb = [model(frame) for frame in self.frames]
        Path("clip.y4m").write_bytes(y4m(self.frames))
        Path("clip.yuv").write_bytes(b"".join(self.frames))

    def run_tool(self, command, said="", status=0, under=(), **options):
        """Runs a command that says a pattern on standard error; returns standard output."""
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        done = subprocess.run([*under, TOOL, *command.split()], check=False, **options)
        self.assertRegex(done.stderr.decode(), rf"\A{said}\Z", command)
        self.assertEqual(done.returncode, status, command)
        return done.stdout

    def assert_fails(self, sentence, command, **options):
        """One line on standard error, and everything in the output folder as it was."""
        before = {path: path.read_bytes() for path in OUT.iterdir()}
        self.run_tool(command, rf"pivra: .*{sentence}.*\n", 1, **options)
        self.assertEqual({path: path.read_bytes() for path in OUT.iterdir()}, before, command)


class Pictures(ToolTest):
    def test_y4m_kinds(self):
        kinds = {"C422": ("Y42B", LUMA + 2 * PITCH * HEIGHT), "C444": ("Y444", 3 * LUMA),
                 "Cmono XCOLORRANGE=FULL": ("GRAY8", LUMA)}
        for chroma in ("C420", "C420jpeg", "C420mpeg2", "C420paldv", ""):
            kinds[f"{chroma} It A1:1 XANY"] = "I420", FRAME
        for parameters, (name, size) in kinds.items():
            frames = [random.Random(seed).randbytes(size) for seed in range(2)]
            clip = y4m(frames, parameters, b"FRAME Xthis\n")
            raw = self.run_tool(f"convert - - -f {name} -s {SIZE}", input=b"".join(frames))
            self.assertEqual(self.run_tool("convert - -", input=clip), raw, parameters)
        clip = ffmpeg(f"-f rawvideo -s {SIZE} -i clip.yuv -f yuv4mpegpipe")
        self.assertEqual(self.run_tool("convert - -", input=clip), b"".join(self.rgb))

    def test_raw_layouts(self):
        frame = self.frames[0]
        luma, cb, cr = frame[:LUMA], frame[LUMA:-CHROMA], frame[-CHROMA:]
        pairs = bytes(sample for pair in zip(cb, cr) for sample in pair)
        for name, chroma in {"yv12": cr + cb, "NV12": pairs}.items():
            shown = self.run_tool(f"convert - - -f {name} -s {SIZE}", input=luma + chroma)
            self.assertEqual(shown, self.rgb[0], name)

    def test_tiles(self):
        """4 tiles side by side and 2 on top of each other; of the luma the lower ones only half."""
        picture = random.Random(0).randbytes(200 * 48 * 3 // 2)
        tiled = self.run_tool("convert - - -f yuv420 -s 200x48 -t t64x32", input=picture)
        self.assertEqual(len(tiled), 256 * 64 + 256 * 32)
        # The order of tiles is a Z and then a mirrored one.
        self.assertEqual(tiled[6 * 2048:][:64], picture[128:192])
        back = self.run_tool("convert - - -f t64x32 -s 200x48 -t yuv420", input=tiled)
        self.assertEqual(back, picture)

    def test_y4m_output(self):
        self.run_tool("convert clip.y4m out/a.y4m --frames 1:3")
        written = (OUT / "a.y4m").read_bytes()
        self.assertEqual(written, y4m(self.frames[1:3], "F25:1 Ip C420"))
        for name, size in {"yuv422n": LUMA + 2 * PITCH * HEIGHT, "yuv444": 3 * LUMA,
                           "yuv400": LUMA}.items():
            raw = random.Random(name).randbytes(size)
            command = f"convert - - -f {name} -s {SIZE} -t {name} --output-format y4m"
            shown = ffmpeg("-i - -f rawvideo", self.run_tool(command, input=raw))
            self.assertEqual(shown, raw, name)

    def test_frames(self):
        for clip in ("clip.y4m out/a", f"clip.yuv out/a -f yuv420p -s {SIZE}"):
            for frames, chosen in {":": slice(4), "1:3": slice(1, 3), "2:": slice(2, 4),
                                   ":1": slice(1), "3": slice(3, 4), "2:9": slice(2, 4)}.items():
                for to, wanted in {"rgb24": self.rgb, "yuv420": self.frames}.items():
                    self.run_tool(f"convert {clip} --frames {frames} --to {to}")
                    self.assertEqual((OUT / "a").read_bytes(), b"".join(wanted[chosen]), frames)

    def test_formats_and_version(self):
        lines = self.run_tool("formats").decode().splitlines()
        table = {line.split()[1]: line for line in lines if line[:4].strip().isdigit()}
        self.assertEqual(len(table), 23)
        self.assertRegex(table["nv12"], r"^ +6 .* w\*h \+ w/2\*h/2\*2 .* NV12 +"
                                        r"every RGB format, yuv420, yv12$")
        self.assertRegex(table["yuv422w"], r"yuv440p( +-){3} +rgb565, bgr565$")
        self.assertRegex(table["t64x32"], r" w/128\*h/32\*4096 \+ w/128\*h/64\*4096 ")
        self.assertRegex(self.run_tool("--version").decode(), r"^pivra \d+\.\d+\.\d+\n$")

    def test_progress_and_stats(self):
        stats = rf"4 frames of {SIZE}: [\d.]+ ms per frame, [\d.]+ Mpixel/s in the library \(csc\)\r?\n" \
                r"[\d.]+ frames/s with reading and writing, \d+ % of the time outside the library"
        # No device by its own name, which a fault might replace by a file.
        os.symlink("/dev/stdout", "out/pipe")
        shown = self.run_tool("convert clip.y4m out/pipe --stats", rf"{stats}\n")
        self.assertEqual(shown, b"".join(self.rgb))
        terminal, side = pty.openpty()
        command = [TOOL, "convert", "-", "-", "--stats", "--frames", ":4"]
        with subprocess.Popen(command, bufsize=0, stdin=subprocess.PIPE,
                              stdout=subprocess.DEVNULL, stderr=side) as tool:
            tool.stdin.write(y4m([]))
            for frame in self.frames:
                tool.stdin.write(b"FRAME\n" + frame)
                time.sleep(0.15)
        os.close(side)
        bar = r"\r\x1b\[K[2-4] frames, [\d.]+ frames/s.*\r\x1b\[K"
        self.assertRegex(os.read(terminal, 4096).decode(), rf"{bar}{stats}\r\n$")
        os.close(terminal)


class Png(ToolTest):
    def test_order_of_the_channels(self):
        for order in ("RGB", "BGR", "RGBA", "BGRA", "ARGB", "ABGR"):
            raw = random.Random(order).randbytes(len(order) * LUMA)
            self.run_tool(f"convert - out/a.png -f {order} -s {SIZE}", input=raw)
            wanted = bytes(raw[i + order.index(channel)] for i in range(0, len(raw), len(order))
                           for channel in "RGBA"[:len(order)])
            self.assertEqual(decode_png((OUT / "a.png").read_bytes()), wanted, order)

    def test_565_keeps_its_precision(self):
        wanted = bytes(c >> 3 << 3 | c >> 5 if i % 3 != 1 else c >> 2 << 2 | c >> 6
                       for i, c in enumerate(self.rgb[2]))
        for name in ("rgb565", "bgr565"):
            png = self.run_tool(f"convert clip.y4m - --frames 2 --to {name} --output-format png")
            self.assertEqual(decode_png(png), wanted)
            self.assertIn(b"\0\0\0\3sBIT\5\6\5", png)

    def test_names(self):
        for output, frames, names in (
                ("a.PNG", "1", {"a.PNG": 1}), ("a.png", "3:", {"a.png": 3}),
                ("a.png", "1:3", {"a-0001.png": 1, "a-0002.png": 2}),
                ("%03d.x.png", "2:", {"002.x.png": 2, "003.x.png": 3}),
                ("%d%.png", "3", {"3%.png": 3})):
            self.run_tool(f"convert clip.y4m out/{output} --frames {frames}")
            self.assertEqual(set(os.listdir(OUT)), set(names))
            for name, index in names.items():
                self.assertEqual(decode_png((OUT / name).read_bytes()), self.rgb[index])
                (OUT / name).unlink()
        shown = decode_png(self.run_tool("convert clip.y4m - --output-format png"))
        self.assertEqual(shown, b"".join(self.rgb))

    def test_input(self):
        encode = f"-f rawvideo -s {SIZE} -pix_fmt rgb24 -i - -c png -f image2pipe -pix_fmt"
        for kind in ("rgb24", "rgba", "gray", "ya8", "monob", "pal8"):
            png = ffmpeg(f"{encode} {kind}", self.rgb[0])
            layout = "rgba" if kind in ("rgba", "ya8") else "rgb24"
            wanted = ffmpeg(f"-f png_pipe -i - -f rawvideo -pix_fmt {layout}", png)
            self.assertEqual(self.run_tool("convert - -", input=png), wanted, kind)
        deep = ffmpeg(f"{encode} rgb48be", self.rgb[0])
        self.assert_fails("PNG: samples have 16 bits, readable", "convert - out/a", input=deep)
        for damaged in (png[:40], png[:-30], png[:5] + png[6:]):
            self.assert_fails("cannot read standard input as PNG: ", "convert - out/a",
                              input=damaged)

    def test_to_y4m_and_back(self):
        Path("a.png").write_bytes(self.run_tool("convert clip.y4m - --output-format png "
                                                "--frames 0"))
        self.run_tool("convert a.png out/a.y4m")
        frame = (OUT / "a.y4m").read_bytes()[-FRAME:]
        y, u, v = (sum(k * c for k, c in zip(weights, self.rgb[0])) for weights in
                   ((66, 129, 25), (-38, -74, 112), (112, -94, -18)))
        self.assertEqual((frame[0], frame[LUMA], frame[LUMA + CHROMA]),
                         (16 + (y >> 8), 128 + (u + 128 >> 8), 128 + (v + 128 >> 8)))
        self.assertEqual(self.run_tool("convert out/a.y4m -"), model(frame))


class Failures(ToolTest):
    def test_sentences(self):
        for name, data in {"empty.y4m": y4m([]),
                           "huge.y4m": b"YUV4MPEG2 W99999 H99999\nFRAME\n"}.items():
            Path(name).write_bytes(data)
        for command, sentence in COMMANDS.items():
            self.assert_fails(sentence, command, input=bytes(FRAME))
        with open("/dev/full", "wb") as full:
            for command in ("convert clip.y4m -", "formats"):
                self.assert_fails("write standard output: No space left", command, stdout=full)

    def test_damaged_clips(self):
        clip = y4m(self.frames[:2])
        for data, sentence in {
                clip[:-9]: f"input is truncated: frame 1 has {FRAME - 9} of {FRAME} bytes",
                clip + b"FRAME": "frame 2 does not start with FRAME",
                b"YUV4MPEG2": "standard input is neither Y4M nor PNG",
                b"YUV4MPEG2 Wx H8\n": "the size 'x' in its Y4M header",
                b"YUV4MPEG2 W8 H-8\n": "the size '-8' in its Y4M header",
                b"YUV4MPEG2 W8 C420\n": "has no size in its Y4M header",
                y4m([], "C420p10"): "Y4M chroma '420p10'; readable is 8-bit",
                y4m([], "XCOLORRANGE=FULL"): "is full-range video"}.items():
            self.assert_fails(sentence, "convert - out/a", input=data)

    def test_permissions(self):
        # Without its capabilities root has to ask, too.
        under = ["setpriv", "--bounding-set=-all"] if os.geteuid() == 0 else []
        (OUT / "old").write_bytes(b"kept")
        for name, mode, act, command in (
                ("clip.yuv", 0, "open clip.yuv", "convert clip.yuv -"),
                ("out/old", 0o444, "write out/old", "convert clip.y4m out/old"),
                ("out", 0o555, "write out/a", "convert clip.y4m out/a")):
            os.chmod(name, mode)
            self.assert_fails(f"cannot {act}: Permission denied", command, under=under)

    def test_a_failure_keeps_the_old_file(self):
        (OUT / "a").write_bytes(b"kept")
        self.assert_fails("truncated", "convert - out/a", input=y4m(self.frames)[:-1])
        limit = (len(self.rgb[0]) + 7,) * 2
        self.assert_fails("cannot write out/a: File too large", "convert clip.y4m out/a",
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, limit))

    def test_a_signal_leaves_nothing(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            command = [TOOL, "convert", "-", "out/a"]
            with subprocess.Popen(command, bufsize=0, stdin=subprocess.PIPE) as tool:
                tool.stdin.write(y4m(self.frames[:2]))
                deadline = time.monotonic() + 10
                while not os.listdir(OUT) and time.monotonic() < deadline:
                    time.sleep(0.01)
                self.assertRegex(" ".join(os.listdir(OUT)), r"^\.pivra-\w+$")
                tool.send_signal(number)
                self.assertEqual(tool.wait(10), -number)
            self.assertEqual(os.listdir(OUT), [])

    def test_a_success_keeps_link_and_mode(self):
        Path("target").write_bytes(b"old")
        os.chmod("target", 0o640)
        os.symlink("../target", "out/a")
        for output, file, mode in (("out/a", "target", 0o640), ("out/b", "out/b", 0o644)):
            self.run_tool(f"convert clip.y4m {output}", umask=0o022)
            self.assertEqual(Path(file).read_bytes(), b"".join(self.rgb))
            self.assertEqual(os.stat(file).st_mode & 0o777, mode)
        self.assertTrue(os.path.islink("out/a"))


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""Makes thousands of damaged and hostile pictures, and holds tessimar-batch against them.

pictures.py make DIRECTORY          writes all pictures; needs ImageMagick. The same ones each time.
pictures.py pick DIRECTORY TARGET   copies those of the ordinary tests, some 200, into TARGET.
pictures.py run PROGRAM DIRECTORY   has one session load, describe and segment each of them, and then all as a database,
                                    and says how long the slowest step took and how much memory the session.
"""

import base64
import os
import random
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

# What ImageMagick writes: the name of the kind, its ending there, and options.
KINDS = [
    ("bmp", "bmp", ""), ("bmp2", "bmp2", ""), ("bmp8", "bmp3", "-colors 7 -type palette"),
    ("bmp1", "bmp3", "-monochrome"), ("bmprle", "bmp3", "-colors 7 -type palette -compress rle"),
    ("jpg", "jpg", ""), ("jpgprog", "jpg", "-interlace plane"), ("jpggray", "jpg", "-colorspace gray"),
    ("jpgcmyk", "jpg", "-colorspace cmyk"), ("jpg444", "jpg", "-sampling-factor 1x1"),
    ("png", "png24", ""), ("png8", "png8", ""), ("png32", "png32", "-alpha set"), ("png48", "png48", ""),
    ("png64", "png64", "-alpha set"), ("pnggray", "png", "-colorspace gray -depth 16"), ("png1", "png", "-monochrome"),
    ("pngadam7", "png24", "-interlace plane"),
    ("gif", "gif", ""), ("giflaced", "gif", "-interlace gif"), ("gifmoving", "gif", "-duplicate 2 -delay 5"),
    ("tif", "tiff", "-compress none"), ("tiflzw", "tiff", "-compress lzw"), ("tifzip", "tiff", "-compress zip"),
    ("tifjpeg", "tiff", "-compress jpeg"), ("tiffax", "tiff", "-monochrome -compress group4"),
    ("tiffax3", "tiff", "-monochrome -compress fax"), ("tifpack", "tiff", "-compress rle"),
    ("tifpalette", "tiff", "-colors 9 -type palette"), ("tifcmyk", "tiff", "-colorspace cmyk"),
    ("tif16", "tiff", "-depth 16"), ("tiffloat", "tiff", "-depth 32 -define quantum:format=floating-point"),
    ("tiftiled", "tiff", "-define tiff:tile-geometry=16x16"), ("tifalpha", "tiff", "-alpha set"),
    ("tifbig", "tiff64", ""), ("tiforder", "tiff", "-endian msb"),
    ("webp", "webp", ""), ("webpexact", "webp", "-define webp:lossless=true"), ("webpalpha", "webp", "-alpha set"),
    ("pbm", "pbm", ""), ("pgm", "pgm", ""), ("ppm", "ppm", ""), ("pbmtext", "pbm", "-compress none"),
    ("pgmtext", "pgm", "-compress none"), ("ppmtext", "ppm", "-compress none"), ("ppm16", "ppm", "-depth 16"),
    ("jp2", "jp2", ""), ("j2k", "j2k", ""), ("jp2gray", "jp2", "-colorspace gray -depth 16"),
    ("psd", "psd", "-compress none"), ("psdrle", "psd", "-compress rle"), ("psdzip", "psd", "-compress zip"),
    ("psdcmyk", "psd", "-colorspace cmyk"), ("psb", "psb", "-compress rle"), ("psd16", "psd", "-depth 16"),
    ("tga", "tga", "-compress none"), ("tgarle", "tga", "-compress rle"), ("tgapalette", "tga", "-colors 9 -type palette"),
    ("pcx", "pcx", ""), ("pcx8", "pcx", "-colors 9 -type palette"), ("pcx1", "pcx", "-monochrome"),
    ("ras", "ras", ""), ("xbm", "xbm", ""), ("xpm", "xpm", "-colors 9"), ("dds", "dds", ""),
    ("ddsraw", "dds", "-define dds:compression=none"), ("hdr", "hdr", ""), ("sgi", "sgi", ""),
    ("sgirle", "sgi", "-compress rle"), ("pfm", "pfm", ""), ("pict", "pict", ""), ("ico", "ico", ""), ("jng", "jng", ""),
    ("mng", "mng", ""), ("wbmp", "wbmp", ""), ("g3", "g3", ""), ("pcd", "pcd", ""), ("fits", "fits", ""),
    ("palm", "palm", "")]

# 24 x 18 pixels of JPEG XR, and 6 x 5 of OpenEXR, which ImageMagick does not write here.
JPEG_XR = "SUm8ASAAAAACAAAAAAAAACTD3W8DTv5LAAAAAAAAAAAIAAG8AQAQAAAACAAAAAK8BAABAAAAAAAAAIC8BAABAAAAGAAAAIG8BAABAAAAEgAAAIK8CwABAAAAAACQQoO8CwABAAAAAACQQsC8BAABAAAAhgAAAMG8BAABAAAAAAAAAAAAAAA="
OPEN_EXR = ("eNqFUD0LwjAQfREFceropv9AdHH0a3AUHOwcm5MexKQ0odbNf66pFYw6ePDg3bt3H1w1mYoOgCyXxpB2gWh2HvOgrSHQhnhh+6PsfxRk9lyU5Bxb88GbYldJL1M2yl5wtPWMkeAdvcYRoNgVWl7/+jQb2pWKyog9Tyi4Jr1yBWV+Lz1bnLSV/tkD3BYuK4lMO35Dxoe2anZCP1oRW1JWPv8agZV4m8cB9xEwjF7RPHXwyrvJYfkAy35D3Q==")

# What would keep the ordinary tests for the 20 seconds that a decoder has.
ENDLESS = ("iff-bit", "iff-byte", "iff-noise", "iff-size", "dds-size", "ddsraw-bit")

NUMBERS = [0, 1, 0x7FFF, 0x8000, 0xFFFF, 50000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF]


def iff():
    """Eight colors in three planes, packed."""
    def chunk(name, data):
        return name + struct.pack(">I", len(data)) + data + bytes(len(data) % 2)
    header = struct.pack(">HHhhBBBBHBBhh", 24, 18, 0, 0, 3, 0, 1, 0, 0, 10, 11, 24, 18)
    rows = b"".join(bytes([3, (y * 37) & 255, p * 85 & 255, 0x5A, 0]) for y in range(18) for p in range(3))
    body = chunk(b"BMHD", header) + chunk(b"CMAP", bytes(range(24))) + chunk(b"BODY", rows)
    return b"FORM" + struct.pack(">I", 4 + len(body)) + b"ILBM" + body


def tiff_of(tags, order="<"):
    """A TIFF file with one directory of (tag, type, values) and 24 x 18 gray pixels behind it."""
    head = {"<": b"II*\0", ">": b"MM\0*"}[order]
    entries, extra = b"", b""
    offset = 8 + 2 + 12 * len(tags) + 4
    for tag, kind, value in sorted(tags):
        data = value if isinstance(value, bytes) else b"".join(
            struct.pack(order + {3: "H", 4: "I"}[kind], v) for v in value)
        count = len(data) // {2: 1, 1: 1, 3: 2, 4: 4, 5: 8, 7: 1}[kind]
        if len(data) > 4:
            entries += struct.pack(order + "HHII", tag, kind, count, offset + len(extra))
            extra += data + bytes(len(data) % 2)
        else:
            entries += struct.pack(order + "HHI", tag, kind, count) + data.ljust(4, b"\0")
    body = struct.pack(order + "H", len(tags)) + entries + struct.pack(order + "I", 0) + extra
    return head + struct.pack(order + "I", 8) + body


def camera(make, model, order="<", more=()):
    """What a camera's raw file begins like."""
    tags = [(254, 4, [0]), (256, 4, [24]), (257, 4, [18]), (258, 3, [16]), (259, 3, [1]), (262, 3, [32803]),
            (271, 2, make + b"\0"), (272, 2, model + b"\0"), (273, 4, [900]), (277, 3, [1]), (278, 4, [18]),
            (279, 4, [864]), (33421, 3, [2, 2]), (33422, 1, bytes([0, 1, 1, 2]))] + list(more)
    return tiff_of(tags, order).ljust(900, b"\0") + bytes(i * 7 & 255 for i in range(864))


def seeds():
    """The sound pictures that are damaged, by the name of their kind."""
    found = {"jxr": base64.b64decode(JPEG_XR), "exr": zlib.decompress(base64.b64decode(OPEN_EXR)), "iff": iff(),
             "koala": struct.pack("<H", 0x6000) + bytes(i * 5 & 255 for i in range(10001)),
             "cut": struct.pack("<HHH", 24, 18, 0) + (struct.pack("<H", 3) + b"\x98\x07\0") * 18,
             "dng": camera(b"Adobe", b"None", "<", [(50706, 1, bytes([1, 4, 0, 0])), (50708, 2, b"Adobe None\0")])}
    makers = [(b"Canon", b"Canon EOS 5D"), (b"NIKON CORPORATION", b"NIKON D70"), (b"SONY", b"ILCE-7"),
              (b"PENTAX", b"PENTAX K10D"), (b"OLYMPUS", b"E-M1"), (b"Panasonic", b"DMC-GX7"), (b"Kodak", b"DCS620"),
              (b"Phase One", b"P 45"), (b"Leaf", b"Aptus"), (b"SAMSUNG", b"NX300"), (b"Hasselblad", b"H3D")]
    for i, (make, model) in enumerate(makers):
        found[f"raw{i}"] = camera(make, model, "<>"[i % 2])
    with tempfile.TemporaryDirectory() as folder:
        for name, ending, options in KINDS:
            path = Path(folder) / f"{name}.{ending}"
            command = ["convert", "-size", "24x18", "gradient:red-blue", "-rotate", "30", *options.split(),
                       "-strip", f"{ending}:{path}"]
            subprocess.run(command, capture_output=True, timeout=60, check=False)
            files = sorted(Path(folder).glob(f"{name}*"))
            if files and files[0].stat().st_size > 0:
                # A file of hundreds of kilobytes tells no more than its beginning.
                found[name] = files[0].read_bytes()[:60000]
            for file in files:
                file.unlink()
    return found


def damaged(name, sound, chance):
    """Pairs of what was done and the bytes."""
    size = len(sound)
    for i in range(16):
        yield f"cut{i}", sound[:size * i // 16]
    for i in range(24):
        spoilt = bytearray(sound)
        spoilt[chance.randrange(min(size, 128))] ^= 1 << chance.randrange(8)
        yield f"bit{i}", bytes(spoilt)
    for i in range(24):
        spoilt = bytearray(sound)
        spoilt[chance.randrange(min(size, 64))] = chance.choice([0, 0x7F, 0x80, 0xFF])
        yield f"byte{i}", bytes(spoilt)
    for i in range(36):
        spoilt = bytearray(sound)
        form = chance.choice(["<H", ">H", "<I", ">I"])
        at = chance.randrange(max(1, min(size, 80) - 3))
        limit = 0x10000 if form[1] == "H" else 0x100000000
        spoilt[at:at + struct.calcsize(form)] = struct.pack(form, chance.choice(NUMBERS) % limit)
        yield f"size{i}", bytes(spoilt)
    for i in range(24):
        spoilt = bytearray(sound)
        for _ in range(1 + i * size // 400):
            spoilt[chance.randrange(size)] = chance.randrange(256)
        yield f"noise{i}", bytes(spoilt)
    for i in range(6):
        at, length = chance.randrange(size), chance.randrange(1, 1 + size // 4)
        yield f"gap{i}", sound[:at] + sound[at + length:]
        yield f"twice{i}", sound[:at + length] + sound[at:]
    texts = list(re.finditer(rb"-?\b\d+\b", sound[:300]))
    if texts and sum(32 <= c < 127 or c in b"\r\n\t" for c in sound[:40]) > 30:
        for i in range(16):
            place = chance.choice(texts)
            number = chance.choice([b"0", b"-1", b"50000", b"2147483648", b"4294967295", b"99999999999999999999", b"x"])
            yield f"number{i}", sound[:place.start()] + number + sound[place.end():]
    if name == "png":
        # The checks at the ends of the chunks would stop all but the first of these faults.
        for i in range(60):
            spoilt = bytearray(sound)
            spoilt[chance.randrange(16, size)] = chance.choice([0, 1, 3, 0x7F, 0x80, 0xFF, chance.randrange(256)])
            yield f"checked{i}", with_checks(bytes(spoilt))


def with_checks(png):
    """The chunks of a PNG file with sums that are right."""
    out, at = png[:8], 8
    while at + 12 <= len(png):
        length = struct.unpack(">I", png[at:at + 4])[0]
        body = png[at + 4:at + 8 + length]
        out += png[at:at + 4] + body + struct.pack(">I", zlib.crc32(body))
        at += 12 + length
    return out


def bombs():
    """Small files that claim large pictures, or none."""
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))
    sizes = [(50000, 50000), (16384, 16384), (16384, 16385), (5000, 5000), (2**31 - 1, 2**31 - 1), (2**28, 1), (0, 0),
             (1, 2**28)]
    for width, height in sizes:
        size = f"{width}x{height}"
        for bits, color, laced in [(8, 2, 0), (16, 6, 1), (1, 0, 0), (8, 3, 0)]:
            yield f"png{bits}-{color}-{size}", b"\x89PNG\r\n\x1a\n" + chunk(
                b"IHDR", struct.pack(">IIBBBBB", width, height, bits, color, 0, 0, laced)) + chunk(
                    b"PLTE", bytes(9)) + chunk(b"IDAT", zlib.compress(bytes(4000))) + chunk(b"IEND", b"")
        for bits, packed in [(1, 0), (4, 0), (4, 2), (8, 0), (8, 1), (16, 0), (24, 0), (32, 3)]:
            for sign in (1, -1):
                yield f"bmp{bits}-{packed}-{sign}-{size}", b"BM" + struct.pack(
                    "<IHHIIiiHHIIiiII", 154, 0, 0, 54, 40, width, sign * height, 1, bits, packed, 100, 0, 0, 0xFFFFFFFF,
                    0) + bytes(100)
        for kind in range(1, 7):
            yield f"pnm{kind}-{size}", f"P{kind}\n{width} {height}\n255\n1 2 3 4".encode()
        yield f"pfm-{size}", f"PF\n{width} {height}\n-1.0\n".encode() + bytes(100)
        yield f"hdr-{size}", f"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y {height} +X {width}\n".encode() + bytes(100)
        yield f"xbm-{size}", f"#define a_width {width}\n#define a_height {height}\nstatic char a_bits[] = {{1}};".encode()
        yield f"xpm-{size}", (f'/* XPM */\nstatic char *a[] = {{\n"{width} {height} 1 1",\n". c #fff",\n"..."}};').encode()
        yield f"ras-{size}", struct.pack(">8I", 0x59A66A95, width, height, 24, 0, 1, 0, 0) + bytes(100)
        yield f"psd-{size}", b"8BPS" + struct.pack(">H6xHIIHH", 1, 3, height, width, 8, 3) + bytes(14) + bytes(100)
        yield f"iff-{size}", iff().replace(struct.pack(">HH", 24, 18), struct.pack(">HH", width % 65536, height % 65536))
        short = (min(width, 65535), min(height, 65535))
        yield f"gif-{size}", b"GIF89a" + struct.pack("<HHBBB", *short, 0x91, 0, 0) + bytes(12) + b"," + struct.pack(
            "<HHHHB", 0, 0, *short, 0) + b"\x02\x02\x4c\x01\x00;"
        yield f"tga-{size}", struct.pack("<BBBHHBHHHHBB", 0, 0, 10, 0, 0, 0, 0, 0, *short, 24, 0) + b"\xff\1\2\3" * 20
        yield f"pcx-{size}", struct.pack("<4B6H", 10, 5, 1, 8, 0, 0, *short, 72, 72).ljust(128, b"\1") + bytes(100)
        yield f"sgi-{size}", struct.pack(">HBBHHHHII", 474, 1, 1, 3, *short, 3, 0, 255).ljust(512, b"\0") + bytes(100)
        yield f"tif-{size}", tiff_of([(256, 4, [width]), (257, 4, [height]), (258, 3, [8]), (259, 3, [1]), (262, 3, [1]),
                                      (273, 4, [8]), (277, 3, [1]), (278, 4, [max(height, 1)]), (279, 4, [100])]) + bytes(100)


def make(target):
    target.mkdir(parents=True, exist_ok=True)
    count = 0
    def write(name, done, content):
        # A database takes up what has ".jpg" in its name, whatever comes behind.
        ending = [".jpg", ".jpg", ".jpg.png", ".jpg.tga", ".jpg.psd", ".jpg.xbm", ".jpg.tif", ".jpg.raf"][count % 8]
        (target / f"{name}-{done}{ending}").write_bytes(content)
    for name, sound in sorted(seeds().items()):
        chance = random.Random(name)
        write(name, "sound", sound)
        count += 1
        for done, content in damaged(name, sound, chance):
            write(name, done, content)
            count += 1
    for name, content in bombs():
        write("bomb", name, content)
        count += 1
    print(count, "pictures")


def pick(source, target):
    """Two or three of each kind, and more of the bombs."""
    target.mkdir(parents=True, exist_ok=True)
    kinds = {}
    for path in sorted(source.iterdir()):
        if path.stat().st_size <= 12000 and not path.name.startswith(ENDLESS):
            kinds.setdefault(path.name.split("-")[0], []).append(path)
    for kind, paths in sorted(kinds.items()):
        chance = random.Random("pick" + kind)
        for path in chance.sample(paths, min(len(paths), 20 if kind == "bomb" else 2)):
            shutil.copy(path, target / path.name)


def run(program, source):
    """Each line that the session is given comes back when the line before it is done."""
    class Session:
        def __init__(self):
            self.process = subprocess.Popen([program], cwd=source, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                            stderr=subprocess.DEVNULL)
            self.output = b""

        def used(self):
            """Seconds of processor time, those of the processes apart too: the machine may have other work."""
            fields = Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()
            return sum(map(int, fields[11:15])) / os.sysconf("SC_CLK_TCK")

        def step(self, line):
            begin = self.used()
            self.process.stdin.write(f"{line}\nhelp reset\n".encode())
            self.process.stdin.flush()
            answer = b""
            while not answer.endswith(b"Returns:     nothing\n"):
                block = os.read(self.process.stdout.fileno(), 65536)
                if not block:
                    return None, answer
                answer += block
            return self.used() - begin, answer

        def end(self):
            self.process.stdin.close()
            _, status, usage = os.wait4(self.process.pid, 0)
            return status, usage.ru_maxrss / 1024

    names = sorted(path.name for path in source.iterdir() if ".jpg" in path.name)
    # In an order of their own, so that a run that is ended by Ctrl-C has seen all kinds.
    random.Random("run").shuffle(names)
    report = {}
    steps, crashes, slowest, memory, total = 0, 0, [], 0.0, 0.0
    session = Session()
    try:
        for name in names:
            record = report.setdefault(name.split("-")[0], {"files": 0, "unreadable": 0, "large": 0, "damaged": 0})
            record["files"] += 1
            for line in (f'a = loadimage("{name}")', 'updatefeature(a, "hsv")', 'segmentimage(a, "grid")',
                         'segmentimage(a, "sift")'):
                elapsed, answer = session.step(line)
                steps += 1
                if elapsed is None:
                    crashes += 1
                    print(f"ENDED at {line} of {name}", flush=True)
                    memory = max(memory, session.end()[1])
                    session = Session()
                    break
                slowest = sorted(slowest + [(elapsed, name, line)])[-12:]
                total += elapsed
                if elapsed > 5:
                    # The same wait once more would tell nothing.
                    break
                if line.startswith("update"):
                    record["unreadable"] += b"cannot be read" in answer
                    record["large"] += b"is too large" in answer
                    record["damaged"] += b"is damaged" in answer
            if sum(each["files"] for each in report.values()) % 200 == 0:
                print(steps, "steps", f"{slowest[-1][0]:.1f} s", flush=True)
    except KeyboardInterrupt:
        pass
    memory = max(memory, session.end()[1])
    for kind, record in sorted(report.items()):
        print(kind, record)
    print(f"{sum(each['files'] for each in report.values())} pictures, {steps} steps, {crashes} sessions ended, memory {memory:.0f} MiB at most, "
          f"{total:.0f} s of processor time; slowest:")
    for elapsed, name, line in reversed(slowest):
        print(f"  {elapsed:.1f} s  {name}  {line}")
    return crashes


if __name__ == "__main__":
    action, arguments = sys.argv[1], sys.argv[2:]
    if action == "make":
        make(Path(arguments[0]))
    elif action == "pick":
        pick(Path(arguments[0]), Path(arguments[1]))
    elif action == "run":
        sys.exit(run(os.path.abspath(arguments[0]), Path(arguments[1])) != 0)
    else:
        sys.exit(__doc__)

#!/usr/bin/env python3
"""Computes the descriptors of two made pictures, straight from their formulas and as slowly as that is, and writes the
numbers beside itself, one file for each descriptor and picture. The tests of plugins/ compare the libraries with them.

Usage: compute.py [NAME...]
"""

import cmath
import math
import sys
from fractions import Fraction
from pathlib import Path

SIZES = {"small": (45, 37), "large": (200, 150)}


def value(x, y, channel):
    h = (x * 374761393 + y * 668265263 + channel * 2246822519) % 2**32
    h = ((h ^ (h >> 13)) * 1274126177) % 2**32
    patch = (x // 11 + (y // 7) * (channel + 2)) % 5
    return min(255, (x * 2 + y * (channel + 1)) % 140 + 22 * patch + ((h >> 16) & 31))


def color_picture(size):
    return [[tuple(value(x, y, c) for c in range(3)) for x in range(size[0])] for y in range(size[1])]


def gray_picture(size):
    return [[value(x, y, 0) for x in range(size[0])] for y in range(size[1])]


def unit_sum(numbers):
    total = math.fsum(numbers)
    return [n / total for n in numbers] if total > 0 else numbers


# edgehistogram

QUANTISER = [
    [0.010867, 0.057915, 0.099526, 0.144849, 0.195573, 0.260504, 0.358031, 0.530128],
    [0.012266, 0.069934, 0.125879, 0.182307, 0.243396, 0.314563, 0.411728, 0.564319],
    [0.004193, 0.025852, 0.046860, 0.068519, 0.093286, 0.123490, 0.161505, 0.228960],
    [0.004174, 0.025924, 0.046232, 0.067163, 0.089655, 0.115391, 0.151904, 0.217745],
    [0.006778, 0.051667, 0.108650, 0.166257, 0.224226, 0.285691, 0.356375, 0.450972],
]


def enlarge(p):
    w, h = len(p[0]), len(p)
    s = Fraction(70, min(w, h))
    if s <= 1:
        return p
    rows = []
    for j in range(math.floor(h * s + Fraction(1, 2))):
        row = []
        for i in range(math.floor(w * s + Fraction(1, 2))):
            x, y = Fraction(i) / s, Fraction(j) / s
            x0, y0 = min(math.floor(x), w - 1), min(math.floor(y), h - 1)
            x1, y1 = min(x0 + 1, w - 1), min(y0 + 1, h - 1)
            fx, fy = x - math.floor(x), y - math.floor(y)
            v = (1 - fy) * ((1 - fx) * p[y0][x0] + fx * p[y0][x1]) + fy * ((1 - fx) * p[y1][x0] + fx * p[y1][x1])
            row.append(math.floor(v + Fraction(1, 2)))
        rows.append(row)
    return rows


def block_mean(p, x0, y0, w, h):
    return Fraction(sum(p[y][x] for y in range(y0, y0 + h) for x in range(x0, x0 + w)), w * h)


def strengths(a):
    """Squared: vertical, horizontal, 45, 135, non-directional."""
    return [(a[0] - a[1] + a[2] - a[3]) ** 2, (a[0] + a[1] - a[2] - a[3]) ** 2, 2 * (a[0] - a[3]) ** 2,
            2 * (a[1] - a[2]) ** 2, 4 * (a[0] - a[1] - a[2] + a[3]) ** 2]


def edgehistogram(picture):
    p = enlarge(picture)
    w, h = len(p[0]), len(p)
    b = max(2, 2 * (math.isqrt(w * h // 1100) // 2))
    edges, blocks = [[0] * 5 for _ in range(16)], [0] * 16
    for y in range(0, h - b + 1, b):
        for x in range(0, w - b + 1, b):
            part = 4 * (4 * y // h) + 4 * x // w
            q = [block_mean(p, x + dx, y + dy, b // 2, b // 2) for dy in (0, b // 2) for dx in (0, b // 2)]
            s = strengths(q)
            blocks[part] += 1
            if max(s) >= 121:
                edges[part][s.index(max(s))] += 1
    local = []
    for part in range(16):
        for kind in range(5):
            share = edges[part][kind] / blocks[part] if blocks[part] else 0.0
            table = QUANTISER[kind]
            index = next((j for j in range(7) if share <= (table[j] + table[j + 1]) / 2), 7)
            local.append(table[index])
    groups = [[c, c + 4, c + 8, c + 12] for c in range(4)] + [[4 * r + c for c in range(4)] for r in range(4)]
    groups += [[0, 1, 4, 5], [2, 3, 6, 7], [8, 9, 12, 13], [10, 11, 14, 15], [5, 6, 9, 10]]
    whole = [sum(local[5 * s + k] for s in range(16)) / 16 for k in range(5)]
    semi = [sum(local[5 * s + k] for s in g) / 4 for g in groups for k in range(5)]
    return whole + [v / 5 for v in local + semi]


# colorlayout


def colorlayout(p):
    w, h = len(p[0]), len(p)
    if w < 8:
        p, w = [[row[x // 8] for x in range(8 * w)] for row in p], 8 * w
    if h < 8:
        p, h = [p[y // 8] for y in range(8 * h)], 8 * h
    sums = [[[0, 0, 0, 0] for _ in range(8)] for _ in range(8)]
    for y in range(h):
        for x in range(w):
            r, g, b = p[y][x]
            lum = 299 * r + 587 * g + 114 * b
            cell = sums[8 * y // h][8 * x // w]
            cell[0] += math.floor(Fraction(219 * lum, 256000) + Fraction(33, 2))
            cell[1] += math.floor(Fraction(224 * 564 * (1000 * b - lum), 256000000) + Fraction(257, 2))
            cell[2] += math.floor(Fraction(224 * 713 * (1000 * r - lum), 256000000) + Fraction(257, 2))
            cell[3] += 1
    result = []
    weights = [[2, 2, 2, 1, 1, 1], [2, 1, 1], [4, 2, 2]]
    for channel in range(3):
        for i, (u, v) in enumerate([(0, 0), (1, 0), (0, 1), (0, 2), (1, 1), (2, 0)][:len(weights[channel])]):
            f = 0.0
            for y in range(8):
                for x in range(8):
                    mean = sums[y][x][channel] // sums[y][x][3]
                    f += mean * math.cos((2 * x + 1) * u * math.pi / 16) * math.cos((2 * y + 1) * v * math.pi / 16)
            f *= (math.sqrt(1 / 8) if u == 0 else 0.5) * (math.sqrt(1 / 8) if v == 0 else 0.5)
            f = math.floor(f + 0.499999)
            if i == 0:
                d = int(f / 8)
                if channel == 0:
                    ranges = [(63, lambda: d // 4), (95, lambda: 16 + (d - 64) // 2), (159, lambda: 32 + d - 96),
                              (191, lambda: 96 + (d - 160) // 2), (9999, lambda: 112 + (d - 192) // 4)]
                    q = next(rule() for limit, rule in ranges if d <= limit) // 2
                else:
                    ranges = [(63, lambda: 0), (95, lambda: (d - 64) // 4), (111, lambda: 8 + (d - 96) // 2),
                              (143, lambda: 16 + d - 112), (159, lambda: 48 + (d - 144) // 2),
                              (191, lambda: 56 + (d - 160) // 4), (9999, lambda: 63)]
                    q = next(rule() for limit, rule in ranges if d <= limit)
            else:
                a = max(-256, min(239, int(f / 2) if channel == 0 else f))
                m = abs(a)
                m = m if m <= 63 else 32 + m // 2 if m <= 127 else 64 + m // 4
                q = ((m if a >= 0 else -m) + 132) // 8
            result.append(math.sqrt(weights[channel][i]) * q / 126)
    return result


# correlogram


def correlogram(p):
    w, h = len(p[0]), len(p)
    c = [[16 * (r // 64) + 4 * (g // 64) + b // 64 for r, g, b in row] for row in p]
    count, pairs = [0] * 64, [[0] * 4 for _ in range(64)]
    for y in range(h):
        for x in range(w):
            count[c[y][x]] += 1
            for d, k in enumerate((1, 3, 5, 7)):
                for dy in range(-k, k + 1):
                    for dx in range(-k, k + 1) if abs(dy) == k else (-k, k):
                        if 0 <= x + dx < w and 0 <= y + dy < h and c[y + dy][x + dx] == c[y][x]:
                            pairs[c[y][x]][d] += 1
    return [pairs[i][d] / (8 * k * count[i]) if count[i] else 0.0 for i in range(64) for d, k in enumerate((1, 3, 5, 7))]


# phog


def gradient(p, x, y):
    w, h = len(p[0]), len(p)
    x0, x1, y0, y1 = max(0, x - 1), min(w - 1, x + 1), max(0, y - 1), min(h - 1, y + 1)
    return ((p[y][x1] - p[y][x0]) / (x1 - x0) if x1 > x0 else 0.0,
            (p[y1][x] - p[y0][x]) / (y1 - y0) if y1 > y0 else 0.0)


def canny(p):
    w, h = len(p[0]), len(p)
    kernel = unit_sum([math.exp(-i * i / 4) for i in range(-6, 7)])
    rows = [[sum(kernel[i + 6] * r[min(max(x + i, 0), w - 1)] for i in range(-6, 7)) for x in range(w)] for r in p]
    s = [[sum(kernel[i + 6] * rows[min(max(y + i, 0), h - 1)][x] for i in range(-6, 7)) for x in range(w)] for y in range(h)]
    g = [[gradient(s, x, y) for x in range(w)] for y in range(h)]
    m = [[math.hypot(*v) for v in row] for row in g]
    most = max(map(max, m))
    if most == 0:
        return [[False] * w for _ in range(h)]
    bins = [0] * 64
    for row in m:
        for v in row:
            bins[min(63, int(64 * v / most))] += 1
    high = next((i + 1 for i in range(64) if sum(bins[:i + 1]) > 0.7 * w * h)) / 64 * most

    def at(x, y):
        return m[y][x] if 0 <= x < w and 0 <= y < h else 0.0

    state = [[0] * w for _ in range(h)]
    for y in range(h):
        for x in range(w):
            angle = math.degrees(math.atan2(g[y][x][1], g[y][x][0])) % 180
            dx, dy = [(1, 0), (1, 1), (0, 1), (-1, 1), (1, 0)][int((angle + 22.5) // 45)]
            if m[y][x] > 0.4 * high and m[y][x] > at(x - dx, y - dy) and m[y][x] >= at(x + dx, y + dy):
                state[y][x] = 2 if m[y][x] > high else 1
    changed = True
    while changed:
        changed = False
        for y in range(h):
            for x in range(w):
                if state[y][x] == 1 and any(state[b][a] == 2 for b in range(max(0, y - 1), min(h, y + 2))
                                            for a in range(max(0, x - 1), min(w, x + 2))):
                    state[y][x] = 2
                    changed = True
    return [[v == 2 for v in row] for row in state]


def phog(p):
    w, h = len(p[0]), len(p)
    edges = canny(p)
    result = []
    for level in range(3):
        n = 2**level
        for cx in range(n):
            for cy in range(n):
                bins = [0.0] * 20
                for y in range(cy * h // n, (cy + 1) * h // n):
                    for x in range(cx * w // n, (cx + 1) * w // n):
                        gx, gy = gradient(p, x, y)
                        if edges[y][x] and (gx or gy):
                            t = 90 + math.degrees(math.atan(gy / (gx or 0.00001)))
                            bins[max(1, math.ceil(round(t, 9) / 9)) - 1] += math.hypot(gx, gy)
                result += bins
    return unit_sum(result)


# gist


def fft(a, sign):
    n = len(a)
    for r in (2, 3):
        if n % r == 0:
            parts = [fft(a[i::r], sign) for i in range(r)]
            turn = [cmath.exp(sign * 2j * math.pi * k / n) for k in range(n)]
            return [sum(turn[k * i % n] * parts[i][k % (n // r)] for i in range(r)) for k in range(n)]
    turn = [cmath.exp(sign * 2j * math.pi * k / n) for k in range(n)]
    return [sum(a[j] * turn[k * j % n] for j in range(n)) for k in range(n)]


def fft2(p, sign):
    columns = zip(*[fft(list(row), sign) for row in p])
    return [list(row) for row in zip(*[fft(list(column), sign) for column in columns])]


def filtered(spectrum, gain):
    n = len(spectrum)
    f = [i if i < n // 2 else i - n for i in range(n)]
    answer = fft2([[spectrum[y][x] * gain(f[x], f[y]) for x in range(n)] for y in range(n)], 1)
    return [[v / (n * n) for v in row] for row in answer]


def pad(p, margin):
    n = len(p)

    def source(i):
        return -1 - i if i < 0 else 2 * n - 1 - i if i >= n else i

    return [[p[source(y)][source(x)] for x in range(-margin, n + margin)] for y in range(-margin, n + margin)]


def resize_weights(size, factor):
    scaled = round(size * factor)
    step = size / scaled
    reach = max(1.0, step)
    result = []
    for i in range(128):
        center = ((scaled - 128) // 2 + i + 0.5) * step - 0.5
        weights = {j: 1 - abs(j - center) / reach for j in range(size) if abs(j - center) < reach}
        total = sum(weights.values())
        result.append({j: v / total for j, v in weights.items()})
    return result


def gist(p):
    w, h = len(p[0]), len(p)
    factor = max(128 / w, 128 / h)
    across, down = resize_weights(w, factor), resize_weights(h, factor)
    rows = [[sum(v * row[j] for j, v in weights.items()) for weights in across] for row in p]
    q = [[sum(v * rows[j][x] for j, v in weights.items()) for x in range(128)] for weights in down]
    least = min(map(min, q))
    scale = 255 / max(1.0, max(map(max, q)) - least)
    i = pad([[math.log1p((v - least) * scale) for v in row] for row in q], 5)
    s2 = 16 / math.log(2)

    def low(fx, fy):
        return math.exp(-(fx * fx + fy * fy) / s2)

    smooth = filtered(fft2(i, -1), low)
    d = [[a - b.real for a, b in zip(x, y)] for x, y in zip(i, smooth)]
    power = filtered(fft2([[v * v for v in row] for row in d], -1), low)
    o = [[a / (0.2 + math.sqrt(abs(b))) for a, b in zip(x, y)] for x, y in zip(d, power)]
    spectrum = fft2(pad([row[5:133] for row in o[5:133]], 32), -1)
    result = []
    for scale_index in range(4):
        for j in range(8):
            def gain(fx, fy):
                turned = math.remainder(math.atan2(fy, fx) + j * math.pi / 8, 2 * math.pi)
                distance = math.hypot(fx, fy) / 192 / (0.3 / 1.85**scale_index) - 1
                return math.exp(-3.5 * distance * distance - 2 * math.pi * turned * turned)

            answer = [[abs(v) for v in row[32:160]] for row in filtered(spectrum, gain)[32:160]]
            result += [sum(sum(row[32 * c:32 * c + 32]) for row in answer[32 * r:32 * r + 32]) / 1024
                       for c in range(4) for r in range(4)]
    return unit_sum(result)


# tamura


def tamura(p):
    w, h = len(p[0]), len(p)
    sums = [[0] * (w + 1)]
    for row in p:
        sums.append([0])
        for x in range(w):
            sums[-1].append(sums[-1][x] + row[x] + sums[-2][x + 1] - sums[-2][x])

    def mean(x, y, half):
        x0, x1, y0, y1 = max(0, x - half), min(w, x + half), max(0, y - half), min(h, y + half)
        return Fraction(sums[y1][x1] - sums[y0][x1] - sums[y1][x0] + sums[y0][x0], (x1 - x0) * (y1 - y0))

    def at(x, y):
        return p[min(max(y, 0), h - 1)][min(max(x, 0), w - 1)]

    counts = [0] * 512
    for y in range(h):
        for x in range(w):
            best, coarse = 0, 0
            for k in range(1, 6):
                half = 2 ** (k - 1)
                for dx, dy in ((half, 0), (0, half)):
                    if 0 <= x - dx and x + dx < w and 0 <= y - dy and y + dy < h:
                        e = abs(mean(x + dx, y + dy, half) - mean(x - dx, y - dy, half))
                        if e > best:
                            best, coarse = e, k
            window = [v for row in p[max(0, y - 5):y + 6] for v in row[max(0, x - 5):x + 6]]
            e = sum(window) / len(window)
            mu2 = sum((v - e) ** 2 for v in window) / len(window)
            mu4 = sum((v - e) ** 4 for v in window) / len(window)
            contrast = mu2 / mu4**0.25 if mu4 >= 1e-12 else 0.0
            gx = sum(k * (at(x + 1, y + i) - at(x - 1, y + i)) for i, k in ((-1, 1), (0, 2), (1, 1)))
            gy = sum(k * (at(x + i, y - 1) - at(x + i, y + 1)) for i, k in ((-1, 1), (0, 2), (1, 1)))
            angle = math.atan(gy / gx) + math.pi / 2 if gx else 0.0
            d = min(7, math.floor(round(8 * angle / math.pi, 9)))
            counts[64 * d + 8 * min(7, 8 * coarse // 5) + min(7, math.floor(8 * contrast / 128))] += 1
    return [c / (w * h) for c in counts]


# cedd

CEDD_TABLES = [
    [180.19686541079636, 23730.024499150866, 61457.152912541605, 113918.55437576842, 179122.46400035513,
     260980.3325940354, 341795.93301552488, 554729.98648386425],
    [209.25176965926232, 22490.5872862417345, 60250.8935141849988, 120705.788057580583, 181128.08709063051,
     234132.081356900555, 325660.617733105708, 520702.175858657472],
    [405.4642173212585, 4877.9763319071481, 10882.170090625908, 18167.239081219657, 27043.385568785292,
     38129.413201299016, 52675.221316293857, 79555.402607004813],
    [968.88475977695578, 10725.159033657819, 24161.205360376698, 41555.917344385321, 62895.628446402261,
     93066.271379694881, 136976.13317822068, 262897.86056221306],
]
HUES = [(0, 0, 5, 10), (5, 10, 35, 50), (35, 50, 70, 85), (70, 85, 150, 165), (150, 165, 195, 205),
        (195, 205, 265, 280), (265, 280, 315, 330), (315, 330, 360, 360)]
SATURATIONS = [(0, 0, 10, 75), (10, 75, 255, 255)]
VALUES = [(0, 0, 10, 75), (10, 75, 180, 220), (180, 220, 255, 255)]
SHADES = [(0, 0, 68, 188), (68, 188, 255, 255)]


def member(x, t):
    a, b, c, d = t
    if b <= x <= c:
        return 1.0
    return (x - a) / (b - a) if a < x < b else (d - x) / (d - c) if c < x < d else 0.0


def shades(r, g, b):
    most, least = max(r, g, b), min(r, g, b)
    s = int(255 - Fraction(255 * least, most)) if most else 0
    if most == least:
        hue = 0
    elif most == r:
        hue = int((0 if g >= b else 359) + Fraction(60 * (g - b), most - least))
    elif most == g:
        hue = int(119 + Fraction(60 * (b - r), most - least))
    else:
        hue = int(239 + Fraction(60 * (r - g), most - least))
    ten = [0.0] * 10
    for i, t in enumerate(HUES):
        for si in range(2):
            for vi in range(3):
                strength = min(member(hue, t), member(s, SATURATIONS[si]), member(most, VALUES[vi]))
                ten[2 if vi == 0 else (1, 0)[vi - 1] if si == 0 else 3 + i % 7] += strength
    result = ten[:3] + [0.0] * 21
    for si in range(2):
        for vi in range(2):
            shade = {(1, 1): 1, (0, 0): 2, (1, 0): 2, (0, 1): 0}[si, vi]
            for c in range(3, 10):
                result[3 * (c - 2) + shade] += ten[c] * min(member(s, SHADES[si]), member(most, SHADES[vi]))
    return result


def cedd(p):
    w, h = len(p[0]), len(p)
    columns, rows, bw, bh = w // 2, h // 2, 2, 2
    if min(w, h) >= 40:
        columns = rows = 40 if min(w, h) >= 80 else 20
        bw, bh = (max(2, size // columns - size // columns % 2) for size in (w, h))
    result = [0.0] * 144
    for row in range(rows):
        for column in range(columns):
            x0, y0 = column * bw, row * bh
            q = []
            for dy in (0, bh // 2):
                for dx in (0, bw // 2):
                    cells = [p[y][x] for y in range(y0 + dy, y0 + dy + bh // 2) for x in range(x0 + dx, x0 + dx + bw // 2)]
                    q.append(sum(299 * r + 587 * g + 114 * b for r, g, b in cells) // (1000 * len(cells)))
            cells = [p[y][x] for y in range(y0, y0 + bh) for x in range(x0, x0 + bw)]
            mean = [sum(cell[c] for cell in cells) // len(cells) for c in range(3)]
            v, hor, d45, d135, non = [math.sqrt(s) for s in strengths(q)]
            most = max(v, hor, d45, d135, non)
            if most < 14:
                areas = [0]
            else:
                limits = [(1, non, 0.68), (2, hor, 0.98), (3, v, 0.98), (4, d45, 0.98), (5, d135, 0.98)]
                areas = [area for area, s, limit in limits if s / most > limit]
            own = shades(*mean)
            for area in areas:
                for i in range(24):
                    result[24 * area + i] += own[i]
    quantised = []
    for i, share in enumerate(unit_sum(result)):
        table = CEDD_TABLES[[0, 1, 2, 2, 3, 3][i // 24]]
        quantised.append(min(range(8), key=lambda j: abs(share - table[j] / 1e6)))
    return unit_sum(quantised)


# moments


def lab(pixel):
    r, g, b = [c / 255 / 12.92 if c / 255 <= 0.04045 else ((c / 255 + 0.055) / 1.055) ** 2.4 for c in pixel]
    xyz = [(0.4124564 * r + 0.3575761 * g + 0.1804375 * b) / 0.95047,
           0.2126729 * r + 0.7151522 * g + 0.0721750 * b,
           (0.0193339 * r + 0.1191920 * g + 0.9503041 * b) / 1.08883]
    fx, fy, fz = [t ** (1 / 3) if t > 216 / 24389 else (24389 / 27 * t + 16) / 116 for t in xyz]
    return 116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)


def moments(p):
    w, h = len(p[0]), len(p)
    result = []
    for cy in range(3):
        for cx in range(3):
            cell = [lab(p[y][x]) for y in range(cy * h // 3, (cy + 1) * h // 3) for x in range(cx * w // 3, (cx + 1) * w // 3)]
            for channel in range(3):
                v = [c[channel] for c in cell] or [0.0]
                e = math.fsum(v) / len(v)
                sd = math.sqrt(math.fsum((a - e) ** 2 for a in v) / len(v))
                third = math.fsum((a - e) ** 3 for a in v) / len(v)
                s = math.copysign(abs(third) ** (1 / 3), third)
                result += [e / 100, sd / 50, 0.5 + s / 100] if channel == 0 else [(e + 128) / 256, sd / 128, 0.5 + s / 256]
    return result


GRAY = [edgehistogram, phog, gist, tamura]
COLOR = [colorlayout, correlogram, cedd, moments]

if __name__ == "__main__":
    for function in GRAY + COLOR:
        if len(sys.argv) > 1 and function.__name__ not in sys.argv[1:]:
            continue
        for name, size in SIZES.items():
            picture = gray_picture(size) if function in GRAY else color_picture(size)
            lines = [f"{number:.9g}\n" for number in function(picture)]
            Path(__file__).with_name(f"{function.__name__}-{name}.txt").write_text("".join(lines))

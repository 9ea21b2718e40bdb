#!/usr/bin/env python3
"""Makes the demo's texture images: paving, crate planks with their specular map, bricks, glass
and the lamp. Run once; the images are the committed sources from which the build makes DDS
files. The image helpers come from the engine's own stock texture maker."""

import math
import random
import sys
from pathlib import Path

here = Path(__file__).parent
sys.path.insert(0, str(here.parent.parent / "data" / "textures"))
from make_textures import layered_noise, normal_map, shade, tiles, write_png  # noqa: E402

SIZE = 128


def paving():
    height = tiles(SIZE, 4, 5.0)
    noise = layered_noise(SIZE, 11)
    rng = random.Random(3)
    tint = [[0.8 + 0.35 * rng.random() for _ in range(4)] for _ in range(4)]
    colour = [[shade((150, 142, 128), tint[y * 4 // SIZE][x * 4 // SIZE] * (0.5 + 0.5 * height[y][x])
                     * (0.8 + 0.4 * noise[y][x])) + (255,) for x in range(SIZE)] for y in range(SIZE)]
    bumps = [[height[y][x] + 0.3 * noise[y][x] for x in range(SIZE)] for y in range(SIZE)]
    write_png(here / "ground.png", SIZE, SIZE, colour)
    write_png(here / "ground_normal.png", SIZE, SIZE, normal_map(bumps, 3.0))


def crate():
    noise = layered_noise(SIZE, 23)
    frame = 14

    def wood(x, y):
        board = y * 4 // SIZE
        gap = y % (SIZE // 4) < 2
        grain = 0.5 + 0.5 * math.sin(x * 0.35 + board * 1.7 + noise[y][x] * 9)
        amount = (0.55 if gap else 0.8 + 0.25 * grain) * (0.85 + 0.3 * noise[y][x])
        return shade((176, 124, 72), amount)

    def is_frame(x, y):
        return min(x, y, SIZE - 1 - x, SIZE - 1 - y) < frame

    def is_metal(x, y):
        return min(x, SIZE - 1 - x) < frame + 6 and min(y, SIZE - 1 - y) < frame + 6

    colour, shine = [], []
    for y in range(SIZE):
        colour.append([])
        shine.append([])
        for x in range(SIZE):
            if is_metal(x, y):
                c, s = shade((150, 154, 160), 0.8 + 0.3 * noise[y][x]), 110
            elif is_frame(x, y):
                c, s = shade((120, 82, 46), 0.8 + 0.3 * noise[y][x]), 30
            else:
                c, s = wood(x, y), 20
            colour[-1].append(c + (255,))
            shine[-1].append((s, s, s, 255))
    write_png(here / "crate.png", SIZE, SIZE, colour)
    write_png(here / "crate_specular.png", SIZE, SIZE, shine)


def bricks():
    noise = layered_noise(SIZE, 31)
    rows, columns, mortar = 8, 4, 2.5
    rng = random.Random(5)
    tint = [[0.75 + 0.4 * rng.random() for _ in range(columns)] for _ in range(rows)]
    height, colour = [], []
    for y in range(SIZE):
        height.append([])
        colour.append([])
        row = y * rows // SIZE
        for x in range(SIZE):
            sx = (x + (SIZE // columns // 2 if row % 2 else 0)) % SIZE
            ey = min(y % (SIZE // rows), SIZE // rows - 1 - y % (SIZE // rows))
            ex = min(sx % (SIZE // columns), SIZE // columns - 1 - sx % (SIZE // columns))
            h = min(1.0, min(ex, ey) / mortar)
            height[-1].append(h + 0.2 * noise[y][x])
            brick = shade((160, 70, 50), tint[row][sx * columns // SIZE] * (0.8 + 0.4 * noise[y][x]))
            grout = shade((170, 165, 155), 0.8 + 0.3 * noise[y][x])
            colour[-1].append((brick if h >= 1 else grout) + (255,))
    write_png(here / "bricks.png", SIZE, SIZE, colour)
    write_png(here / "bricks_normal.png", SIZE, SIZE, normal_map(height, 3.0))


def glass():
    size, frame = 64, 4
    noise = layered_noise(size, 41)
    pixels = []
    for y in range(size):
        pixels.append([])
        for x in range(size):
            if min(x, y, size - 1 - x, size - 1 - y) < frame:
                pixels[-1].append((60, 64, 70, 255))
            else:
                streak = 0.5 + 0.5 * math.sin((x + y) * 0.3 + noise[y][x] * 4)
                pixels[-1].append(shade((150, 200, 235), 0.9 + 0.15 * streak) + (int(70 + 40 * streak),))
    write_png(here / "glass.png", size, size, pixels)


def lamp():
    size = 32
    pixels = []
    for y in range(size):
        pixels.append([])
        for x in range(size):
            d = math.hypot(x - size / 2, y - size / 2) / (size / 2)
            pixels[-1].append(shade((255, 236, 190), 1.0 - 0.3 * min(d, 1.0)) + (255,))
    write_png(here / "lamp.png", size, size, pixels)


def island():
    """The island's ground: grass, sand and rock that tile every few metres, and the sea."""
    for name, base, seed, contrast in [("grass", (104, 150, 62), 51, 0.5), ("sand", (204, 186, 140), 52, 0.25),
                                       ("rock", (120, 114, 106), 53, 0.7)]:
        noise = layered_noise(SIZE, seed)
        fine = layered_noise(SIZE, seed + 100)
        colour = [[shade(base, 1 - contrast / 2 + contrast * (0.6 * noise[y][x] + 0.4 * fine[y][x])) + (255,)
                   for x in range(SIZE)] for y in range(SIZE)]
        write_png(here / f"{name}.png", SIZE, SIZE, colour)
    noise = layered_noise(SIZE, 54)
    waves = [[shade((50, 110, 150), 0.8 + 0.35 * (0.5 + 0.5 * math.sin(x * 0.2 + noise[y][x] * 8)) * noise[y][x])
              + (255,) for x in range(SIZE)] for y in range(SIZE)]
    write_png(here / "sea.png", SIZE, SIZE, waves)


def paving_strip(name, edge, dash, seed):
    """Asphalt one width across and one width along: white edge lines at the sides (edge, a share
    of the width) and a centre dash over the first dash share of its length."""
    noise = layered_noise(SIZE, seed)
    pixels = []
    for y in range(SIZE):
        pixels.append([])
        for x in range(SIZE):
            u = (x + 0.5) / SIZE
            v = (y + 0.5) / SIZE
            white = (edge * 0.4 < u < edge * 1.4 or 1 - edge * 1.4 < u < 1 - edge * 0.4
                     or (abs(u - 0.5) < edge * 0.5 and v < dash))
            base = (225, 225, 220) if white else (70, 70, 74)
            pixels[-1].append(shade(base, 0.85 + 0.3 * noise[y][x]) + (255,))
    write_png(here / f"{name}.png", SIZE, SIZE, pixels)


if __name__ == "__main__":
    paving()
    crate()
    bricks()
    glass()
    lamp()
    island()
    paving_strip("runway", 0.03, 0.5, 61)
    paving_strip("road", 0.05, 0.4, 62)

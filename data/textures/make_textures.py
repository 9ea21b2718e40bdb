#!/usr/bin/env python3
"""Makes the engine's stock texture images: the fallback for missing textures and the colour and
normal maps of generated boxes and ellipsoids. Run once; the images are the committed sources
from which the build makes DDS files with kerrin-texture. The demo's texture maker uses the
helpers here as well."""

import math
import random
import struct
import zlib
from pathlib import Path


def write_png(path, width, height, pixels):
    """pixels: rows top to bottom of (r, g, b, a) tuples, 0 to 255."""
    raw = b"".join(b"\0" + bytes(c for p in row for c in p) for row in pixels)

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")
    Path(path).write_bytes(png)


def value_noise(size, cells, seed):
    """Smooth noise from 0 to 1 that tiles across the image, cells a side."""
    rng = random.Random(seed)
    grid = [[rng.random() for _ in range(cells)] for _ in range(cells)]

    def at(x, y):
        fx, fy = x * cells / size, y * cells / size
        ix, iy = int(fx), int(fy)
        tx, ty = fx - ix, fy - iy
        tx, ty = tx * tx * (3 - 2 * tx), ty * ty * (3 - 2 * ty)
        a, b = grid[iy % cells][ix % cells], grid[iy % cells][(ix + 1) % cells]
        c, d = grid[(iy + 1) % cells][ix % cells], grid[(iy + 1) % cells][(ix + 1) % cells]
        return (a * (1 - tx) + b * tx) * (1 - ty) + (c * (1 - tx) + d * tx) * ty

    return [[at(x, y) for x in range(size)] for y in range(size)]


def layered_noise(size, seed):
    """Noise with detail at several scales, 0 to 1."""
    layers = [(4, 0.5), (8, 0.25), (16, 0.15), (32, 0.1)]
    maps = [value_noise(size, cells, seed + i) for i, (cells, _) in enumerate(layers)]
    return [[sum(m[y][x] * w for m, (_, w) in zip(maps, layers)) for x in range(size)] for y in range(size)]


def normal_map(height, strength):
    """Tangent-space normals of a height field that tiles: red along u (to the right), green
    towards the top of the image, blue out of the surface."""
    size = len(height)
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            dx = (height[y][(x + 1) % size] - height[y][(x - 1) % size]) * strength
            # Rows grow downwards, the normal's green upwards.
            dy = (height[(y + 1) % size][x] - height[(y - 1) % size][x]) * strength
            nx, ny, nz = -dx, dy, 1.0
            length = math.sqrt(nx * nx + ny * ny + nz * nz)
            row.append(tuple(int(round((c / length * 0.5 + 0.5) * 255)) for c in (nx, ny, nz)) + (255,))
        rows.append(row)
    return rows


def tiles(size, count, grout):
    """Height of square tiles, count a side: 1 on a tile, falling to 0 in the grout between."""
    step = size / count

    def h(x, y):
        ex = min(x % step, step - 1 - x % step)
        ey = min(y % step, step - 1 - y % step)
        return min(1.0, min(ex, ey) / grout)

    return [[h(x, y) for x in range(size)] for y in range(size)]


def shade(base, amount):
    return tuple(max(0, min(255, int(round(c * amount)))) for c in base)


def main():
    here = Path(__file__).parent
    # A neutral checker: plainly no real texture, yet calm on screen.
    write_png(here / "default.png", 64, 64,
              [[(200, 200, 200, 255) if (x // 8 + y // 8) % 2 else (128, 128, 128, 255) for x in range(64)]
               for y in range(64)])

    size = 128
    height = tiles(size, 4, 4.0)
    noise = layered_noise(size, 7)
    write_png(here / "colormap.png", size, size,
              [[shade((196, 190, 178), (0.55 + 0.45 * height[y][x]) * (0.85 + 0.3 * noise[y][x])) + (255,)
                for x in range(size)] for y in range(size)])
    write_png(here / "normalmap.png", size, size,
              normal_map([[height[y][x] + 0.15 * noise[y][x] for x in range(size)] for y in range(size)], 2.0))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Makes the demo's island as OBJ meshes: the land (a height field with beaches, hills and a
mountain, flattened under the airfield and the road), the runway and road drawn a hand's width
above it, and the sea around it. The build runs it and turns the result into mesh files; the land
is also the static collision mesh the cars, the airplane and the walkers stand on.

Usage: make_island.py <output folder>

Units are metres, y is up. The plain around the start lies at height 0, so what the game places
on flat ground stands at 0; the sea lies below it. Everything is a fixed function of position, so
every build makes the same island."""

import math
import sys
from pathlib import Path

# Land from -HALF to +HALF on x and z, a vertex every STEP metres: 96 x 96 cells, enough for hills
# that read as hills from the air and few enough triangles for the software renderer.
HALF = 960.0
STEP = 20.0
# The coast lies about here from the centre; beyond it the land falls to the sea floor.
RADIUS = 720.0
# Height of the plain, the airfield and the road.
PLAIN = 0.0
# The sea's surface: the game sets its world's water level to the same height.
SEA_LEVEL = -3.0
SEA_FLOOR = -17.0
# The runway: along x, centred on z = RUNWAY_Z, long enough for a light aircraft with room.
RUNWAY_Z = 120.0
RUNWAY_HALF_LENGTH = 550.0
RUNWAY_HALF_WIDTH = 15.0
# The road: along z beside the start square, from the south shore up to the runway's apron.
ROAD_X = 30.0
ROAD_FROM = -420.0
ROAD_TO = RUNWAY_Z - RUNWAY_HALF_WIDTH - 10.0
ROAD_HALF_WIDTH = 4.0
# Land within this distance of the runway or road is flat; beyond it the hills blend in over
# BLEND metres.
CLEAR = 25.0
BLEND = 60.0
# Overlays float this far above the land, clear of depth fighting at a kilometre's range.
LIFT = 0.08
# Texture repeats every TILE metres.
TILE = 8.0
# The sea reaches this far from the centre, past where the camera's far plane ends.
SEA_HALF = 6000.0


def smoothstep(e0, e1, x):
    t = min(1.0, max(0.0, (x - e0) / (e1 - e0)))
    return t * t * (3 - 2 * t)


def distance_to_segment(px, pz, ax, az, bx, bz):
    dx, dz = bx - ax, bz - az
    t = max(0.0, min(1.0, ((px - ax) * dx + (pz - az) * dz) / (dx * dx + dz * dz)))
    return math.hypot(px - (ax + t * dx), pz - (az + t * dz))


def flat_weight(x, z):
    """1 on the airfield, the road and around the start, 0 where the hills are free."""
    runway = distance_to_segment(x, z, -RUNWAY_HALF_LENGTH, RUNWAY_Z, RUNWAY_HALF_LENGTH, RUNWAY_Z)
    road = distance_to_segment(x, z, ROAD_X, ROAD_FROM, ROAD_X, ROAD_TO)
    near = min(runway - RUNWAY_HALF_WIDTH, road - ROAD_HALF_WIDTH, math.hypot(x, z) - 40.0)
    return 1.0 - smoothstep(CLEAR, CLEAR + BLEND, near)


def shore(x, z):
    """Distance from the centre as a share of the coast's, which wanders so the island is no circle."""
    angle = math.atan2(z, x)
    coast = RADIUS * (1.0 + 0.10 * math.sin(3 * angle + 0.7) + 0.06 * math.sin(7 * angle + 2.1))
    return math.hypot(x, z) / coast


def height(x, z):
    r = shore(x, z)
    land = PLAIN + (SEA_FLOOR - PLAIN) * smoothstep(0.86, 1.12, r)
    hills = (9.0 * math.sin(x / 97.0) * math.sin(z / 83.0)
             + 5.0 * math.sin(x / 41.0 + 1.3) * math.cos(z / 37.0 + 0.4)
             + 2.0 * math.sin(x / 17.0 + z / 23.0))
    # Hollows stay shallow: the plain has no lakes.
    hills = max(hills, -1.5) * (1.0 - smoothstep(0.7, 0.9, r))
    mountain = 140.0 * math.exp(-((x + 380.0) ** 2 + (z + 330.0) ** 2) / (2 * 150.0 ** 2))
    ridge = 60.0 * math.exp(-((x - 420.0) ** 2 / (2 * 90.0 ** 2) + (z + 60.0) ** 2 / (2 * 260.0 ** 2)))
    free = 1.0 - flat_weight(x, z)
    return land + free * (hills + mountain + ridge)


def material(h, slope, r):
    if h < SEA_LEVEL + 0.5 or (r > 0.84 and h < PLAIN + 1.5):
        return "sand"
    if h > 40.0 or slope > 0.6:
        return "rock"
    return "grass"


def write_land(folder):
    n = int(2 * HALF / STEP) + 1
    coord = [-HALF + i * STEP for i in range(n)]
    heights = [[height(x, z) for x in coord] for z in coord]

    def normal(i, j):
        left = heights[j][max(i - 1, 0)]
        right = heights[j][min(i + 1, n - 1)]
        back = heights[max(j - 1, 0)][i]
        front = heights[min(j + 1, n - 1)][i]
        nx, ny, nz = left - right, 2 * STEP, back - front
        length = math.sqrt(nx * nx + ny * ny + nz * nz)
        return nx / length, ny / length, nz / length

    lines = ["# The island's land, made by make_island.py.", "mtllib island.mtl", "o land"]
    for j, z in enumerate(coord):
        for i, x in enumerate(coord):
            lines.append(f"v {x:.2f} {heights[j][i]:.3f} {z:.2f}")
    for j, z in enumerate(coord):
        for i, x in enumerate(coord):
            lines.append(f"vt {x / TILE:.4f} {z / TILE:.4f}")
    for j in range(n):
        for i in range(n):
            lines.append("vn {:.4f} {:.4f} {:.4f}".format(*normal(i, j)))

    # Cells grouped by material; each cell is two triangles wound counter-clockwise seen from above.
    groups = {"grass": [], "sand": [], "rock": []}
    for j in range(n - 1):
        for i in range(n - 1):
            corners = [heights[j][i], heights[j][i + 1], heights[j + 1][i], heights[j + 1][i + 1]]
            slope = (max(corners) - min(corners)) / STEP
            a = j * n + i + 1
            b, c, d = a + 1, a + n, a + n + 1
            middle = (coord[i] + STEP / 2, coord[j] + STEP / 2)
            groups[material(sum(corners) / 4, slope, shore(*middle))].append((a, b, c, d))
    for name, cells in groups.items():
        lines.append(f"usemtl {name}")
        for a, b, c, d in cells:
            lines.append(f"f {a}/{a}/{a} {c}/{c}/{c} {b}/{b}/{b}")
            lines.append(f"f {b}/{b}/{b} {c}/{c}/{c} {d}/{d}/{d}")
    (folder / "island.obj").write_text("\n".join(lines) + "\n")


def write_strips(folder):
    """The runway and the road: flat quads on the flattened plain, split every STEP metres so that
    they follow the land's triangles closely."""
    lines = ["# The island's runway and road, made by make_island.py.", "mtllib island.mtl", "o paving"]
    quads = []

    def strip(name, x0, z0, x1, z1, half_width, along_u):
        length = math.hypot(x1 - x0, z1 - z0)
        ux, uz = (x1 - x0) / length, (z1 - z0) / length
        sx, sz = -uz * half_width, ux * half_width
        pieces = max(1, int(length / STEP))
        for k in range(pieces):
            t0, t1 = k / pieces * length, (k + 1) / pieces * length
            p0 = (x0 + ux * t0, z0 + uz * t0)
            p1 = (x0 + ux * t1, z0 + uz * t1)
            # u runs across (0 to 1), v along in widths, so the markings keep their shape.
            v0, v1 = t0 / along_u, t1 / along_u
            quads.append((name, [(p0[0] - sx, p0[1] - sz, 0, v0), (p0[0] + sx, p0[1] + sz, 1, v0),
                                 (p1[0] - sx, p1[1] - sz, 0, v1), (p1[0] + sx, p1[1] + sz, 1, v1)]))

    strip("runway", -RUNWAY_HALF_LENGTH, RUNWAY_Z, RUNWAY_HALF_LENGTH, RUNWAY_Z, RUNWAY_HALF_WIDTH,
          2 * RUNWAY_HALF_WIDTH)
    strip("road", ROAD_X, ROAD_FROM, ROAD_X, ROAD_TO, ROAD_HALF_WIDTH, 2 * ROAD_HALF_WIDTH)

    lines.append("vn 0 1 0")
    index = 1
    faces = {"runway": [], "road": []}
    for name, corners in quads:
        for x, z, u, v in corners:
            lines.append(f"v {x:.2f} {height(x, z) + LIFT:.3f} {z:.2f}")
            lines.append(f"vt {u:.3f} {v:.3f}")
        a, b, c, d = index, index + 1, index + 2, index + 3
        # Winding upward whichever way the strip runs.
        (x0, z0, _, _), (x1, z1, _, _), (x2, z2, _, _) = corners[:3]
        up = (x1 - x0) * (z2 - z0) - (z1 - z0) * (x2 - x0) < 0
        tris = [(a, b, c), (b, d, c)] if up else [(a, c, b), (b, c, d)]
        faces[name].extend(tris)
        index += 4
    for name, tris in faces.items():
        lines.append(f"usemtl {name}")
        for t in tris:
            lines.append("f " + " ".join(f"{k}/{k}/1" for k in t))
    (folder / "paving.obj").write_text("\n".join(lines) + "\n")


def write_sea(folder):
    s = SEA_HALF
    uv = s / 40.0
    lines = ["# The sea around the island, made by make_island.py.", "mtllib island.mtl", "o sea",
             f"v {-s} {SEA_LEVEL} {-s}", f"v {s} {SEA_LEVEL} {-s}", f"v {-s} {SEA_LEVEL} {s}",
             f"v {s} {SEA_LEVEL} {s}",
             f"vt 0 0", f"vt {uv} 0", f"vt 0 {uv}", f"vt {uv} {uv}", "vn 0 1 0",
             "usemtl sea", "f 1/1/1 3/3/1 2/2/1", "f 2/2/1 3/3/1 4/4/1"]
    (folder / "sea.obj").write_text("\n".join(lines) + "\n")


MATERIALS = """# The island's materials, made by make_island.py.
newmtl grass
Ka 0.55 0.55 0.55
Kd 1 1 1
Ks 0 0 0
map_Kd grass.png

newmtl sand
Ka 0.6 0.6 0.6
Kd 1 1 1
Ks 0 0 0
map_Kd sand.png

newmtl rock
Ka 0.5 0.5 0.5
Kd 1 1 1
Ks 0 0 0
map_Kd rock.png

newmtl runway
Ka 0.6 0.6 0.6
Kd 1 1 1
Ks 0 0 0
map_Kd runway.png

newmtl road
Ka 0.6 0.6 0.6
Kd 1 1 1
Ks 0 0 0
map_Kd road.png

newmtl sea
Ka 0.5 0.5 0.5
Kd 1 1 1
Ks 0.3 0.3 0.3
Ns 40
map_Kd sea.png
"""


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_island.py <output folder>")
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "island.mtl").write_text(MATERIALS)
    write_land(folder)
    write_strips(folder)
    write_sea(folder)


if __name__ == "__main__":
    main()

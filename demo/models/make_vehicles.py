#!/usr/bin/env python3
"""Makes the demo's vehicles as OBJ meshes: the car's body of boxes (lower body, cabin with its
windows, lamps), one wheel (a tyre round the x axis with a hub), the airplane (fuselage, high
wing, tail) and its propeller, all with their materials. The build runs it and turns the result
into mesh files.

Usage: make_vehicles.py <output folder>

Units are metres; noses point along -z and y is up. A body's origin is its centre of mass, which
is where the game's physics puts its position; a wheel's and a propeller's origin is its hub."""

import math
import sys
from pathlib import Path

# The body: a hatchback of four metres by 1.8, its floor 0.3 m below the origin.
LENGTH = 4.0
WIDTH = 1.8
FLOOR = -0.3
WAIST = 0.3
ROOF = 0.9
# The airplane: a fuselage of 7.5 m, a wing of 11 m span and 1.5 m chord on top of the cabin.
FUSELAGE = 7.5
SPAN = 11.0
CHORD = 1.5
# Wheel: radius and width, with this many sides round.
RADIUS = 0.33
TREAD = 0.22
SIDES = 20


class Mesh:
    def __init__(self, name):
        self.name = name
        self.vertices, self.normals, self.faces = [], [], {}

    def quad(self, material, corners, normal):
        """A face of four corners wound counter-clockwise seen from where normal points."""
        base = len(self.vertices) + 1
        self.vertices.extend(corners)
        self.normals.append(normal)
        n = len(self.normals)
        self.faces.setdefault(material, []).append([(base + i, n) for i in range(4)])

    def box(self, material, lo, hi, skip=()):
        (x0, y0, z0), (x1, y1, z1) = lo, hi
        sides = {
            "top": ([(x0, y1, z1), (x1, y1, z1), (x1, y1, z0), (x0, y1, z0)], (0, 1, 0)),
            "bottom": ([(x0, y0, z0), (x1, y0, z0), (x1, y0, z1), (x0, y0, z1)], (0, -1, 0)),
            "front": ([(x1, y0, z0), (x0, y0, z0), (x0, y1, z0), (x1, y1, z0)], (0, 0, -1)),
            "back": ([(x0, y0, z1), (x1, y0, z1), (x1, y1, z1), (x0, y1, z1)], (0, 0, 1)),
            "left": ([(x0, y0, z0), (x0, y0, z1), (x0, y1, z1), (x0, y1, z0)], (-1, 0, 0)),
            "right": ([(x1, y0, z1), (x1, y0, z0), (x1, y1, z0), (x1, y1, z1)], (1, 0, 0)),
        }
        for side, (corners, normal) in sides.items():
            if side not in skip:
                self.quad(material, corners, normal)

    def write(self, path):
        lines = [f"# {self.name}, made by make_vehicles.py.", "mtllib vehicles.mtl", f"o {self.name}"]
        lines += [f"v {x:.4f} {y:.4f} {z:.4f}" for x, y, z in self.vertices]
        lines += [f"vn {x:.4f} {y:.4f} {z:.4f}" for x, y, z in self.normals]
        for material, faces in self.faces.items():
            lines.append(f"usemtl {material}")
            lines += ["f " + " ".join(f"{v}//{n}" for v, n in face) for face in faces]
        path.write_text("\n".join(lines) + "\n")


def body():
    m = Mesh("car")
    half, front, back = WIDTH / 2, -LENGTH / 2, LENGTH / 2
    m.box("paint", (-half, FLOOR, front), (half, WAIST, back))
    # The cabin sits back from the bonnet; its sides are glass above a strip of paint.
    cabin_front, cabin_back, inset = front + 1.3, back - 0.25, 0.08
    m.box("glass", (-half + inset, WAIST, cabin_front), (half - inset, ROOF, cabin_back), skip=("bottom", "top"))
    m.box("paint", (-half + inset, ROOF - 0.05, cabin_front), (half - inset, ROOF, cabin_back), skip=("bottom",))
    # Lamps: white at the nose, red at the tail.
    for x in (-half + 0.15, half - 0.45):
        m.box("headlamp", (x, 0.05, front - 0.02), (x + 0.3, 0.2, front))
        m.box("taillamp", (x, 0.05, back), (x + 0.3, 0.2, back + 0.02))
    m.box("trim", (-half - 0.02, FLOOR, front + 0.2), (half + 0.02, FLOOR + 0.12, back - 0.2), skip=("top",))
    return m


def wheel():
    m = Mesh("wheel")
    x0, x1 = -TREAD / 2, TREAD / 2
    ring = [(RADIUS * math.cos(2 * math.pi * k / SIDES), RADIUS * math.sin(2 * math.pi * k / SIDES))
            for k in range(SIDES)]
    for k in range(SIDES):
        (y0, z0), (y1, z1) = ring[k], ring[(k + 1) % SIDES]
        mid = 2 * math.pi * (k + 0.5) / SIDES
        m.quad("tyre", [(x0, y0, z0), (x0, y1, z1), (x1, y1, z1), (x1, y0, z0)], (0, math.cos(mid), math.sin(mid)))
    # The two flanks as fans of quads to the hub: rubber outside, metal within.
    hub = 0.6
    for x, sign in ((x1, 1), (x0, -1)):
        for k in range(SIDES):
            (y0, z0), (y1, z1) = ring[k], ring[(k + 1) % SIDES]
            outer = [(x, y0, z0), (x, y1, z1), (x, y1 * hub, z1 * hub), (x, y0 * hub, z0 * hub)]
            inner = [(x, y0 * hub, z0 * hub), (x, y1 * hub, z1 * hub), (x, 0, 0), (x, 0, 0)]
            for material, quad in (("tyre", outer), ("hub", inner)):
                m.quad(material, quad if sign > 0 else quad[::-1], (sign, 0, 0))
    return m


def airplane():
    m = Mesh("airplane")
    nose, tail = -FUSELAGE * 0.4, FUSELAGE * 0.6
    # Cabin and engine cowling, then the tail boom tapering to the fin.
    m.box("white", (-0.55, -0.6, nose + 0.9), (0.55, 0.75, 0.9))
    m.box("cowling", (-0.45, -0.45, nose), (0.45, 0.4, nose + 0.9))
    m.box("glass", (-0.5, 0.2, nose + 0.95), (0.5, 0.7, 0.2), skip=("bottom",))
    m.box("white", (-0.3, -0.2, 0.9), (0.3, 0.45, tail))
    # The high wing and its stripes, the tailplane and the fin.
    m.box("white", (-SPAN / 2, 0.75, -CHORD / 2), (SPAN / 2, 0.85, CHORD / 2))
    for x in (-SPAN / 2, SPAN / 2 - 0.4):
        m.box("stripe", (x, 0.75, -CHORD / 2 - 0.01), (x + 0.4, 0.86, CHORD / 2 + 0.01))
    m.box("white", (-1.7, 0.15, tail - 1.0), (1.7, 0.22, tail))
    m.box("stripe", (-0.04, 0.2, tail - 1.1), (0.04, 1.45, tail))
    # Fairings of the undercarriage; nothing reaches lower than the cabin's floor, so that the
    # body's box clears the runway when the nose rises for take-off.
    for x in (-1.2, 1.2):
        m.box("cowling", (x - 0.3, -0.6, -0.1), (x + 0.3, -0.45, 0.4))
    return m


def propeller():
    m = Mesh("propeller")
    # Two blades across the hub, spun by the engine about the local z axis.
    m.box("cowling", (-0.08, -0.9, -0.02), (0.08, 0.9, 0.02))
    m.box("hub", (-0.12, -0.12, -0.1), (0.12, 0.12, 0.05))
    return m


MATERIALS = """# The demo vehicles' materials, made by make_vehicles.py.
newmtl paint
Ka 0.8 0.15 0.1
Kd 0.8 0.15 0.1
Ks 0.6 0.6 0.6
Ns 60

newmtl glass
Ka 0.15 0.2 0.25
Kd 0.15 0.2 0.25
Ks 0.8 0.8 0.8
Ns 90

newmtl trim
Ka 0.1 0.1 0.1
Kd 0.1 0.1 0.1
Ks 0 0 0

newmtl headlamp
Ka 1 1 0.9
Kd 1 1 0.9
Ks 0 0 0

newmtl taillamp
Ka 0.9 0.05 0.05
Kd 0.9 0.05 0.05
Ks 0 0 0

newmtl tyre
Ka 0.08 0.08 0.08
Kd 0.08 0.08 0.08
Ks 0.1 0.1 0.1
Ns 10

newmtl white
Ka 0.92 0.92 0.9
Kd 0.92 0.92 0.9
Ks 0.5 0.5 0.5
Ns 40

newmtl stripe
Ka 0.1 0.25 0.7
Kd 0.1 0.25 0.7
Ks 0.4 0.4 0.4
Ns 40

newmtl cowling
Ka 0.2 0.2 0.22
Kd 0.2 0.2 0.22
Ks 0.5 0.5 0.5
Ns 30

newmtl hub
Ka 0.7 0.7 0.72
Kd 0.7 0.7 0.72
Ks 0.8 0.8 0.8
Ns 60
"""


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_vehicles.py <output folder>")
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "vehicles.mtl").write_text(MATERIALS)
    body().write(folder / "car.obj")
    wheel().write(folder / "wheel.obj")
    airplane().write(folder / "airplane.obj")
    propeller().write(folder / "propeller.obj")


if __name__ == "__main__":
    main()

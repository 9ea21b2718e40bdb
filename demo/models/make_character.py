#!/usr/bin/env python3
"""Makes the demo's character, character.gltf: a segmented figure of boxes on a skeleton of 17
joints, skinned (each box on its bone, the ends of the limbs shared with the bone above), with
four animations: idle and walk, run and jump for the walking character to come. Run once; the
model is the committed source from which the build makes the mesh, skeleton and animation files
with kerrin-mesh. It faces +Z, one metre from the hips to the ground."""

import base64
import json
import math
import struct
from pathlib import Path

# name, parent, offset from the parent's joint (the root's from the ground).
JOINTS = [
    ("hips", None, (0, 1.0, 0)),
    ("spine", "hips", (0, 0.1, 0)),
    ("chest", "spine", (0, 0.25, 0)),
    ("neck", "chest", (0, 0.28, 0)),
    ("head", "neck", (0, 0.08, 0)),
    ("upperarm_l", "chest", (0.22, 0.24, 0)),
    ("forearm_l", "upperarm_l", (0, -0.3, 0)),
    ("hand_l", "forearm_l", (0, -0.27, 0)),
    ("upperarm_r", "chest", (-0.22, 0.24, 0)),
    ("forearm_r", "upperarm_r", (0, -0.3, 0)),
    ("hand_r", "forearm_r", (0, -0.27, 0)),
    ("thigh_l", "hips", (0.1, -0.05, 0)),
    ("shin_l", "thigh_l", (0, -0.45, 0)),
    ("foot_l", "shin_l", (0, -0.45, 0)),
    ("thigh_r", "hips", (-0.1, -0.05, 0)),
    ("shin_r", "thigh_r", (0, -0.45, 0)),
    ("foot_r", "shin_r", (0, -0.45, 0)),
]
INDEX = {name: i for i, (name, _, _) in enumerate(JOINTS)}

# The box on each bone: (bone, centre relative to the bone's joint, size, material, share of the
# parent at the joint end). A share above 0 lets the box bend smoothly where it meets its parent.
BOXES = [
    ("hips", (0, -0.02, 0), (0.34, 0.16, 0.2), "trousers", 0),
    ("spine", (0, 0.12, 0), (0.32, 0.24, 0.19), "shirt", 0.5),
    ("chest", (0, 0.14, 0), (0.4, 0.28, 0.22), "shirt", 0.5),
    ("neck", (0, 0.04, 0), (0.09, 0.08, 0.09), "skin", 0.5),
    ("head", (0, 0.12, 0.01), (0.2, 0.24, 0.22), "skin", 0),
    ("upperarm_l", (0.02, -0.15, 0), (0.1, 0.3, 0.1), "shirt", 0),
    ("forearm_l", (0, -0.13, 0), (0.09, 0.26, 0.09), "shirt", 0.5),
    ("hand_l", (0, -0.07, 0), (0.07, 0.14, 0.09), "skin", 0),
    ("upperarm_r", (-0.02, -0.15, 0), (0.1, 0.3, 0.1), "shirt", 0),
    ("forearm_r", (0, -0.13, 0), (0.09, 0.26, 0.09), "shirt", 0.5),
    ("hand_r", (0, -0.07, 0), (0.07, 0.14, 0.09), "skin", 0),
    ("thigh_l", (0, -0.22, 0), (0.15, 0.45, 0.16), "trousers", 0.3),
    ("shin_l", (0, -0.22, 0), (0.12, 0.45, 0.13), "trousers", 0.5),
    ("foot_l", (0, -0.04, 0.06), (0.11, 0.08, 0.24), "shoes", 0),
    ("thigh_r", (0, -0.22, 0), (0.15, 0.45, 0.16), "trousers", 0.3),
    ("shin_r", (0, -0.22, 0), (0.12, 0.45, 0.13), "trousers", 0.5),
    ("foot_r", (0, -0.04, 0.06), (0.11, 0.08, 0.24), "shoes", 0),
]

MATERIALS = {
    "skin": (0.86, 0.66, 0.52),
    "shirt": (0.2, 0.42, 0.72),
    "trousers": (0.25, 0.24, 0.3),
    "shoes": (0.35, 0.2, 0.1),
}


def world_of(name):
    x = y = z = 0.0
    while name:
        _, parent, offset = JOINTS[INDEX[name]]
        x, y, z = x + offset[0], y + offset[1], z + offset[2]
        name = parent
    return (x, y, z)


def box_corners(centre, size):
    """Four corners and the outward normal of each face, counter-clockwise seen from outside."""
    cx, cy, cz = centre
    hx, hy, hz = size[0] / 2, size[1] / 2, size[2] / 2
    faces = []
    for axis in range(3):
        for sign in (-1, 1):
            normal = [0, 0, 0]
            normal[axis] = sign
            u, v = [(1, 2), (2, 0), (0, 1)][axis]
            corners = []
            for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
                p = [0.0, 0.0, 0.0]
                p[axis] = sign
                p[u] = a
                p[v] = b * sign
                corners.append((cx + p[0] * hx, cy + p[1] * hy, cz + p[2] * hz))
            faces.append((corners, tuple(normal)))
    return faces


def build_mesh():
    """Per material: positions, normals, joints, weights and indices."""
    parts = {name: ([], [], [], [], []) for name in MATERIALS}
    for bone, centre, size, material, share in BOXES:
        jx, jy, jz = world_of(bone)
        parent = JOINTS[INDEX[bone]][1]
        # The end at the joint: the top of a hanging limb, the bottom of what stands on its joint.
        joint_end = jy + centre[1] + (size[1] / 2 if centre[1] < 0 else -size[1] / 2)
        positions, normals, joints, weights, indices = parts[material]
        for corners, normal in box_corners((jx + centre[0], jy + centre[1], jz + centre[2]), size):
            base = len(positions)
            for p in corners:
                positions.append(p)
                normals.append(normal)
                at_joint = share > 0 and abs(p[1] - joint_end) < 1e-6
                if at_joint:
                    joints.append((INDEX[bone], INDEX[parent], 0, 0))
                    weights.append((1 - share, share, 0, 0))
                else:
                    joints.append((INDEX[bone], 0, 0, 0))
                    weights.append((1, 0, 0, 0))
            indices += [base, base + 1, base + 2, base, base + 2, base + 3]
    return parts


def about(axis, angle):
    s = math.sin(angle / 2)
    return {"x": (s, 0, 0, math.cos(angle / 2)), "y": (0, s, 0, math.cos(angle / 2)),
            "z": (0, 0, s, math.cos(angle / 2))}[axis]


def multiply(a, b):
    ax, ay, az, aw = a
    bx, by, bz, bw = b
    return (aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
            aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz)


def animations():
    """name: (duration, keys, pose(t) -> {joint: ("rotation", quat) or ("translation", vec)})."""
    def idle(t):
        w = 2 * math.pi * t / 2.4
        return {
            "chest": ("rotation", about("x", 0.03 * math.sin(w))),
            "head": ("rotation", multiply(about("y", 0.15 * math.sin(w / 2)), about("x", 0.04 * math.sin(w)))),
            "upperarm_l": ("rotation", about("z", 0.08 + 0.03 * math.sin(w))),
            "upperarm_r": ("rotation", about("z", -0.08 - 0.03 * math.sin(w))),
            "forearm_l": ("rotation", about("x", -0.15)),
            "forearm_r": ("rotation", about("x", -0.15)),
            "hips": ("translation", (0, 1.0 + 0.01 * math.sin(w), 0)),
        }

    def stride(t, period, swing, knee, bounce, lean):
        w = 2 * math.pi * t / period
        s = math.sin(w)
        return {
            "hips": ("translation", (0, 1.0 - bounce + bounce * abs(math.cos(w)), 0)),
            "spine": ("rotation", about("x", lean)),
            "chest": ("rotation", about("y", -0.15 * s * swing)),
            "thigh_l": ("rotation", about("x", -swing * s)),
            "thigh_r": ("rotation", about("x", swing * s)),
            "shin_l": ("rotation", about("x", knee * max(0.0, math.sin(w + 1.2)))),
            "shin_r": ("rotation", about("x", knee * max(0.0, -math.sin(w + 1.2)))),
            "upperarm_l": ("rotation", multiply(about("z", 0.1), about("x", swing * s))),
            "upperarm_r": ("rotation", multiply(about("z", -0.1), about("x", -swing * s))),
            "forearm_l": ("rotation", about("x", -0.3 - knee * 0.3)),
            "forearm_r": ("rotation", about("x", -0.3 - knee * 0.3)),
        }

    def jump(t):
        # Crouch, leap with the arms up, land, stand.
        crouch = math.sin(math.pi * min(t / 0.35, 1)) if t < 0.35 else 0
        air = math.sin(math.pi * (t - 0.3) / 0.5) if 0.3 < t < 0.8 else 0
        land = math.sin(math.pi * (t - 0.75) / 0.25) if t > 0.75 else 0
        bend = max(crouch, land)
        return {
            "hips": ("translation", (0, 1.0 - 0.25 * bend + 0.35 * air, 0)),
            "spine": ("rotation", about("x", 0.3 * bend)),
            "thigh_l": ("rotation", about("x", -0.9 * bend - 0.3 * air)),
            "thigh_r": ("rotation", about("x", -0.9 * bend - 0.3 * air)),
            "shin_l": ("rotation", about("x", 1.5 * bend + 0.5 * air)),
            "shin_r": ("rotation", about("x", 1.5 * bend + 0.5 * air)),
            "foot_l": ("rotation", about("x", -0.6 * bend)),
            "foot_r": ("rotation", about("x", -0.6 * bend)),
            "upperarm_l": ("rotation", multiply(about("z", 0.2 + 0.4 * air), about("x", 0.6 * bend - 2.2 * air))),
            "upperarm_r": ("rotation", multiply(about("z", -0.2 - 0.4 * air), about("x", 0.6 * bend - 2.2 * air))),
        }

    return {
        "idle": (2.4, 25, idle),
        "walk": (1.0, 17, lambda t: stride(t, 1.0, 0.5, 0.9, 0.04, 0.05)),
        "run": (0.6, 13, lambda t: stride(t, 0.6, 0.9, 1.6, 0.1, 0.25)),
        "jump": (1.0, 21, jump),
    }


class Buffer:
    def __init__(self):
        self.data = bytearray()
        self.views = []
        self.accessors = []

    def add(self, fmt, rows, kind, component, target=None, minmax=False):
        while len(self.data) % 4:
            self.data.append(0)
        start = len(self.data)
        for row in rows:
            self.data += struct.pack("<" + fmt, *row)
        view = {"buffer": 0, "byteOffset": start, "byteLength": len(self.data) - start}
        if target:
            view["target"] = target
        self.views.append(view)
        accessor = {"bufferView": len(self.views) - 1, "componentType": component, "count": len(rows), "type": kind}
        if minmax:
            accessor["min"] = [min(r[i] for r in rows) for i in range(len(rows[0]))]
            accessor["max"] = [max(r[i] for r in rows) for i in range(len(rows[0]))]
        self.accessors.append(accessor)
        return len(self.accessors) - 1


def main():
    FLOAT, USHORT, UBYTE = 5126, 5123, 5121
    buf = Buffer()
    nodes = []
    for name, parent, offset in JOINTS:
        nodes.append({"name": name, "translation": list(offset)})
    for i, (name, parent, _) in enumerate(JOINTS):
        if parent:
            nodes[INDEX[parent]].setdefault("children", []).append(i)

    primitives = []
    materials = []
    for m, (material, (positions, normals, joints, weights, indices)) in enumerate(build_mesh().items()):
        r, g, b = MATERIALS[material]
        materials.append({"name": material, "pbrMetallicRoughness": {
            "baseColorFactor": [r, g, b, 1], "metallicFactor": 0, "roughnessFactor": 1}})
        primitives.append({"attributes": {
            "POSITION": buf.add("3f", positions, "VEC3", FLOAT, 34962, minmax=True),
            "NORMAL": buf.add("3f", normals, "VEC3", FLOAT, 34962),
            "JOINTS_0": buf.add("4B", joints, "VEC4", UBYTE, 34962),
            "WEIGHTS_0": buf.add("4f", weights, "VEC4", FLOAT, 34962),
        }, "indices": buf.add("H", [(i,) for i in indices], "SCALAR", USHORT, 34963), "material": m})

    inverse_binds = []
    for name, _, _ in JOINTS:
        x, y, z = world_of(name)
        inverse_binds.append((1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -x, -y, -z, 1))
    skin = {"joints": list(range(len(JOINTS))), "inverseBindMatrices": buf.add("16f", inverse_binds, "MAT4", FLOAT),
            "skeleton": 0}

    gltf_animations = []
    for name, (duration, keys, pose) in animations().items():
        times = [duration * k / (keys - 1) for k in range(keys)]
        poses = [pose(t) for t in times]
        samplers, channels = [], []
        time_accessor = buf.add("f", [(t,) for t in times], "SCALAR", FLOAT, minmax=True)
        for joint in poses[0]:
            path = poses[0][joint][0]
            values = [p[joint][1] for p in poses]
            fmt, kind = ("4f", "VEC4") if path == "rotation" else ("3f", "VEC3")
            samplers.append({"input": time_accessor, "output": buf.add(fmt, values, kind, FLOAT),
                             "interpolation": "LINEAR"})
            channels.append({"sampler": len(samplers) - 1, "target": {"node": INDEX[joint], "path": path}})
        gltf_animations.append({"name": name, "samplers": samplers, "channels": channels})

    nodes.append({"name": "body", "mesh": 0, "skin": 0})
    gltf = {
        "asset": {"version": "2.0", "generator": "make_character.py"},
        "scene": 0,
        "scenes": [{"nodes": [0, len(nodes) - 1]}],
        "nodes": nodes,
        "meshes": [{"name": "body", "primitives": primitives}],
        "materials": materials,
        "skins": [skin],
        "animations": gltf_animations,
        "buffers": [{"byteLength": len(buf.data),
                     "uri": "data:application/octet-stream;base64," + base64.b64encode(bytes(buf.data)).decode()}],
        "bufferViews": buf.views,
        "accessors": buf.accessors,
    }
    Path(__file__).with_name("character.gltf").write_text(json.dumps(gltf, separators=(",", ":")) + "\n")


if __name__ == "__main__":
    main()

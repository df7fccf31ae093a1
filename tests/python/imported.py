"""What `pathdesk import` wrote, read by the description of the formats alone."""

import os
import re
import struct
import subprocess
import sys
import warnings

warnings.showwarning = lambda *_, **__: None
try:
    import MDAnalysis
    import numpy as np
except ImportError:
    # The distribution's package belongs to its own interpreter.
    if os.path.realpath(sys.executable) == os.path.realpath("/usr/bin/python3"):
        raise
    os.execv("/usr/bin/python3", ["/usr/bin/python3", *sys.argv])


# Offsets in record 1 and from the start of record 2, by series; see the page on file formats.
RECORD_1 = {"temperature": 12, "potential": 52, "bond": 60, "angle": 68, "torsion": 76, "vdw": 92, "coulomb": 100,
            "total": 436, "kinetic": 444}
RECORD_2 = {"pressure": 48, "volume": 56}
TENSOR = ("xx", "yy", "zz", "yz", "xz", "xy")


class Refused(Exception):
    pass


def pathdesk(*words, folder=None):
    program = os.environ.get("PATHDESK_PROGRAM", "pathdesk")
    done = subprocess.run([program, *map(str, words)], capture_output=True, text=True, cwd=folder, timeout=280)
    return done.returncode, done.stdout, done.stderr


class Imported:
    """A run that is brought in: times, cells (three vectors each), positions, velocities, values by name."""

    def __init__(self, folder, *words):
        name = os.path.join(folder, "run")
        code, self.told, complaint = pathdesk("import", "-o", name, *words)
        if code != 0:
            raise Refused(complaint)
        self.read_trajectory(name + ".trj")
        self.model = read_model(name + ".qfx")

    def read_trajectory(self, path):
        with open(path, "rb") as file:
            content = file.read()
        at = 0
        records = []
        while at < len(content):
            length, = struct.unpack_from(">i", content, at)
            assert struct.unpack_from(">i", content, at + 4 + length) == (length,)
            records.append(content[at + 4:at + 4 + length])
            at += 8 + length
        assert records[0][:8] == b"MDTR" + struct.pack(">i", 2010)
        self.flags = struct.unpack(">8i", records[3])
        n, = struct.unpack_from(">i", records[5])
        self.ids = struct.unpack_from(f">{n}i", records[5], 4)
        frames = iter(records[8:])
        self.times, self.cells, self.xyz, self.velocities, self.values = [], [], [], [], []
        for first in frames:
            second = next(frames)
            values = {name: struct.unpack_from(">d", first, at)[0] for name, at in RECORD_1.items()}
            values |= {name: struct.unpack_from(">d", second, at)[0] for name, at in RECORD_2.items()}
            self.times.append(struct.unpack_from(">d", first)[0])
            if self.flags[2]:
                next(frames)
            if self.flags[0]:
                c = struct.unpack_from(">6d", next(frames), 16)
                self.cells.append([[c[0], c[5], c[4]], [0, c[1], c[3]], [0, 0, c[2]]])
                stress = next(frames)
                values |= dict(zip(TENSOR, struct.unpack_from(">6d", stress, 60)))
                if self.flags[6]:
                    next(frames)
            self.values.append(values)
            self.xyz.append(np.stack([np.frombuffer(next(frames), ">f8") for _ in range(3)], axis=1))
            if struct.unpack_from(">i", first, 476) != (0,):
                self.velocities.append(np.stack([np.frombuffer(next(frames), ">f8") for _ in range(3)], axis=1))
        self.times, self.cells, self.xyz = np.array(self.times), np.array(self.cells), np.array(self.xyz)
        self.velocities = np.array(self.velocities)

    def value(self, name):
        return np.array([frame[name] for frame in self.values])


def read_model(path):
    """The attributes of a model by name, as lists of words or numbers."""
    with open(path, encoding="utf-8") as file:
        text = file.read().replace("\\\n", " ")
    model = {}
    for kind, name, body in re.findall(r"\(A ([ICDV]) (\w+) (.*?)\)\n", text, re.S):
        words = body.replace("(", " ").replace(")", " ").split()
        model[name] = words if kind == "C" else np.array(words, dtype=int if kind == "I" else float)
        if kind == "V":
            model[name] = model[name].reshape(-1, 3)
    return model

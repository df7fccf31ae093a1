"""LAMMPS dumps with atoms where the engine has them."""

import numpy as np
from MDAnalysis.coordinates.LAMMPS import DumpReader


class PlacedDumpReader(DumpReader):
    """MDAnalysis moves the origin of each frame's cell to zero. At constant pressure that origin wanders, and with it
    the displacement of every atom; it is put back here. Places that are given as shares of the cell have no origin in
    them, and MDAnalysis takes it from them all the same."""

    format = "LAMMPSDUMP"

    def _read_next_timestep(self):
        place = self._file.tell()
        origin = self._origin() if self.ts.frame + 1 < len(self) else None
        self._file.seek(place)
        ts = super()._read_next_timestep()
        scaled = self.lammps_coordinate_convention.startswith("scaled")
        ts.positions = ts.positions + (2 if scaled else 1) * origin
        return ts

    def _origin(self):
        for _ in range(5):
            self._file.readline()
        bounds = [[float(word) for word in self._file.readline().split()] for _ in range(3)]
        xy, xz, yz = (row[2] for row in bounds) if all(len(row) == 3 for row in bounds) else (0.0, 0.0, 0.0)
        return np.array([bounds[0][0] - min(0.0, xy, xz, xy + xz), bounds[1][0] - min(0.0, yz), bounds[2][0]])

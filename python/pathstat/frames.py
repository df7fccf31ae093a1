"""Frames of a universe in blocks, read here or on the workers of a cluster.

Blocks depend on the work alone, never on the workers, and are joined in their order, so that results have the same bits
wherever they were computed. What a worker leaves for others is one file a block, written whole under a name that tells
what it is of: a file that is there is not made again.
"""

from __future__ import annotations

import hashlib
import os
from collections import deque
from pathlib import Path
from typing import Any, BinaryIO, Callable, Iterable, Iterator, List, NamedTuple, Optional, Sequence, Tuple

import numpy as np

Watcher = Callable[[str, int, int], None]

FRAMES_IN_BLOCK = 32
ATOMS_IN_BLOCK = 2048
BYTES_IN_BLOCK = 1 << 29


def frames_in_block(atoms: int) -> int:
    """Frames of so many atoms that a task holds at once."""
    return max(1, min(FRAMES_IN_BLOCK, BYTES_IN_BLOCK // (24 * max(1, atoms))))


def atoms_in_block(frames: int) -> int:
    """Atoms that a task holds in so many frames."""
    return max(1, min(ATOMS_IN_BLOCK, BYTES_IN_BLOCK // (24 * frames)))



class Source(NamedTuple):
    """What a worker needs to open the files of a universe by itself."""

    topology: str
    trajectory: Tuple[str, ...]

    @classmethod
    def of(cls, universe: Any) -> "Source":
        trajectory = universe.trajectory
        names = getattr(trajectory, "filenames", None)
        if names is None:
            names = [trajectory.filename]
        names = [name for name in names if name is not None]
        if not universe.filename or not names:
            raise ValueError("workers can open a universe only from files; this one is in memory")
        return cls(os.path.abspath(universe.filename), tuple(os.path.abspath(str(name)) for name in names))

    def open(self) -> Any:
        import MDAnalysis

        return MDAnalysis.Universe(self.topology, *self.trajectory)

    def fingerprint(self, *more: object) -> str:
        """Of the files as they are now and of what is asked of them."""
        digest = hashlib.sha256()
        for name in (self.topology, *self.trajectory):
            facts = os.stat(name)
            digest.update(f"{name}\0{facts.st_size}\0{facts.st_mtime_ns}\0".encode())
        for one in more:
            digest.update(np.ascontiguousarray(one).tobytes() if isinstance(one, np.ndarray) else repr(one).encode())
        return digest.hexdigest()[:16]


def pieces(items: Sequence[Any], length: int) -> List[Sequence[Any]]:
    return [items[first : first + length] for first in range(0, len(items), length)]


def read_block(universe: Any, frames: Iterable[int], indices: np.ndarray, what: str) -> Tuple[np.ndarray, np.ndarray]:
    """Positions or velocities, (frames, atoms, 3), and cells, (frames, 6), of some frames."""
    atoms = universe.atoms[indices]
    values, cells = [], []
    for frame in frames:
        step = universe.trajectory[int(frame)]
        if what == "velocities" and not step.has_velocities:
            raise ValueError(f"frame {frame} has no velocities")
        values.append(np.array(getattr(atoms, what), dtype=np.float64))
        cells.append(np.zeros(6) if step.dimensions is None else np.array(step.dimensions, dtype=np.float64))
    return np.array(values).reshape(len(values), len(indices), 3), np.array(cells).reshape(-1, 6)


def map_blocks(
    client: Any, universe: Any, task: Callable[..., Any], blocks: Sequence[Any], arguments: Tuple[Any, ...]
) -> Iterator[Any]:
    """task(universe, block, *arguments) of each block, in their order; on the workers of a client if there is one."""
    stage = task.__name__.strip("_").replace("_", " ")
    _watcher(stage, 0, len(blocks))
    for done, result in enumerate(_results(client, universe, task, blocks, arguments), 1):
        yield result
        _watcher(stage, done, len(blocks))


def _results(
    client: Any, universe: Any, task: Callable[..., Any], blocks: Sequence[Any], arguments: Tuple[Any, ...]
) -> Iterator[Any]:
    if client is None:
        for block in blocks:
            yield task(universe, block, *arguments)
        return
    source = Source.of(universe)
    futures = deque(
        client.map(_run_there, [source] * len(blocks), [task] * len(blocks), blocks, [arguments] * len(blocks), pure=False)
    )
    try:
        while futures:
            yield futures[0].result()
            futures.popleft().release()
    finally:
        # To cancel what is done already would take a second.
        if futures:
            client.cancel(list(futures))


def _see_nothing(stage: str, done: int, total: int) -> None:
    pass


_watcher: Watcher = _see_nothing


def watch(watcher: Optional[Watcher]) -> None:
    """Has what is done told: the stage, blocks that are done, and all of them. None ends it."""
    global _watcher
    _watcher = watcher or _see_nothing


_open_universe: Tuple[Optional[Source], Any] = (None, None)


def _run_there(source: Source, task: Callable[..., Any], block: Any, arguments: Tuple[Any, ...]) -> Any:
    # A worker keeps the universe of the last task open, for itself alone.
    global _open_universe
    if _open_universe[0] != source:
        _open_universe = (source, source.open())
    return task(_open_universe[1], block, *arguments)


def save_whole(path: Path, write: Callable[[BinaryIO], Any]) -> None:
    """Has a file written beside and renames it, so that it is whole or not there."""
    beside = path.with_name(f"{path.name}.{os.getpid()}.{os.urandom(4).hex()}.part")
    try:
        with open(beside, "wb") as file:
            write(file)
        os.replace(beside, path)
    finally:
        beside.unlink(missing_ok=True)

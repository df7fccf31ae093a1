"""`python3 -m pathstat scale run.yaml`: analyses of a universe on many workers, from the command line.

A file names the universe, the frames, the workers and the analyses:

    topology: topol.tpr
    trajectory: traj.xtc            # or a list
    frames: {start: 0, stop: -1, step: 1}
    workers: {count: 4, threads: 1} # of this machine; or {scheduler: "tcp://..."}, or {cluster: SLURMCluster, jobs: 50, options: {...}}
    output: results                 # a folder: a table (.tsv) of each analysis, and a settings file
    folder: /scratch/blocks         # for correlations; seen by all workers
    analyses:
      - RDF: {group: name OW, range: [0, 12]}
      - MSD: {group: name OW, max_lag: 1000}
"""

from __future__ import annotations

import argparse
import inspect
import os
import sys
import tempfile
import time
import warnings
from contextlib import ExitStack
from pathlib import Path
from typing import Any, Callable, Dict, List, Optional, Sequence, TextIO, Tuple

import numpy as np

from . import analyses, frames

ANALYSES = {"RDF": analyses.RDF, "MSD": analyses.MSD, "VAC": analyses.VAC, "Dielectric": analyses.Dielectric, "Density": analyses.Density}
GROUPS = ("group", "g1", "g2")
KEYS = ("topology", "trajectory", "frames", "workers", "output", "folder", "analyses")


class Mistake(Exception):
    """What is wrong with a file of settings."""


def _known(found: Any, known: Sequence[str], where: str) -> Dict[str, Any]:
    if not isinstance(found, dict):
        raise Mistake(f"{where} must hold names with values")
    for name in found:
        if name not in known:
            raise Mistake(f"{where}: there is no {name}; it takes {', '.join(known)}")
    return found


def read_settings(path: Path) -> Dict[str, Any]:
    """The settings of a file, checked. Raises Mistake."""
    import yaml

    try:
        with open(path, encoding="utf-8") as file:
            settings = _known(yaml.safe_load(file), KEYS, str(path))
    except (OSError, UnicodeDecodeError, yaml.YAMLError) as error:
        raise Mistake(f"{path}: {error}") from None
    for name in ("topology", "trajectory", "analyses"):
        if not settings.get(name):
            raise Mistake(f"{path} names no {name}")
    _known(settings.setdefault("frames", {}), ("start", "stop", "step"), "frames")
    _known(settings.setdefault("workers", {}), ("count", "threads", "scheduler", "cluster", "jobs", "options"), "workers")
    if not isinstance(settings["analyses"], list):
        raise Mistake("analyses must be a list")
    folder = path.parent
    trajectory = settings["trajectory"]
    settings["trajectory"] = [folder / one for one in (trajectory if isinstance(trajectory, list) else [trajectory])]
    settings["topology"] = folder / settings["topology"]
    settings["output"] = folder / settings.get("output", "results")
    for file in (settings["topology"], *settings["trajectory"]):
        if not file.is_file():
            raise Mistake(f"there is no file {file}")
    return settings


def make_analysis(universe: Any, entry: Any, folder: Optional[str]) -> Tuple[str, Any]:
    """An analysis as an entry of the settings asks for it, with its name. Raises Mistake."""
    from MDAnalysis.exceptions import SelectionError

    if isinstance(entry, str):
        entry = {entry: {}}
    if not isinstance(entry, dict) or len(entry) != 1:
        raise Mistake(f"an analysis is one name with its settings, as in RDF: {{group: name OW}}, not {entry}")
    (name, options), = entry.items()
    if name not in ANALYSES:
        raise Mistake(f"there is no analysis {name}; there are {', '.join(ANALYSES)}")
    taken = list(inspect.signature(ANALYSES[name]).parameters)
    options = dict(_known(options or {}, [*taken, "group"], name))
    options.setdefault(taken[0], options.pop("group", "all"))
    if folder is not None and "folder" in taken:
        options.setdefault("folder", folder)
    try:
        groups = {key: universe.select_atoms(value) for key, value in options.items() if key in GROUPS}
        return name, ANALYSES[name](**{**options, **groups})
    except (ValueError, TypeError, AttributeError, SelectionError) as error:
        raise Mistake(f"{name}: {error}") from None


def open_client(workers: Dict[str, Any], stack: ExitStack) -> Any:
    """A client of the workers that the settings ask for; none for one worker of this process."""
    if not workers:
        return None
    import distributed

    if "scheduler" in workers:
        return stack.enter_context(distributed.Client(workers["scheduler"]))
    if "cluster" in workers:
        import dask_jobqueue

        cluster = stack.enter_context(getattr(dask_jobqueue, workers["cluster"])(**workers.get("options", {})))
        cluster.scale(jobs=workers.get("jobs", 1))
    else:
        os.environ.setdefault("PYTHONWARNINGS", "ignore::DeprecationWarning")  # of what workers import
        options = {"local_directory": stack.enter_context(tempfile.TemporaryDirectory()), **workers.get("options", {})}
        cluster = stack.enter_context(
            distributed.LocalCluster(
                n_workers=workers.get("count", 1), threads_per_worker=1, dashboard_address=None, **options
            )
        )
    client = stack.enter_context(distributed.Client(cluster))
    threads = workers.get("threads", 1)
    client.register_worker_callbacks(lambda: __import__("pathstat").set_threads(threads))
    return client


class Progress:
    """A line of how far the blocks of an analysis have come, and what is left by the pace so far."""

    def __init__(self, name: str, stream: TextIO, clock: Callable[[], float] = time.monotonic) -> None:
        self.name, self.stream, self.clock = name, stream, clock
        self.begun = self.told = clock()

    def __call__(self, stage: str, done: int, total: int) -> None:
        now = self.clock()
        if done == 0:
            self.begun = now
        elif done < total and now - self.told < 0.5:
            return
        self.told = now
        left = f", {(now - self.begun) / done * (total - done):.0f} s left" if 0 < done < total else ""
        end = "\n" if done == total else ""
        self.stream.write(f"\r\033[K{self.name}, {stage}: {done} of {total} blocks{left}{end}")
        self.stream.flush()


def save(analysis: Any, path: Path, head: Sequence[str]) -> None:
    """Writes the results as a table, written beside and renamed; arrays that are no columns as one NumPy file."""
    results = vars(analysis.results)
    columns = {name: np.asarray(results[name]) for name in analysis.curves}
    lines = [f"# {line}" for line in head]
    lines += [f"# {name} = {value:.12g}" for name, value in results.items() if np.ndim(value) == 0]
    if columns:
        wide = {name: values.reshape(len(values), -1) for name, values in columns.items()}
        titles = [name if v.shape[1] == 1 else f"{name}[{k}]" for name, v in wide.items() for k in range(v.shape[1])]
        lines.append("\t".join(titles))
        lines += ["\t".join(f"{value:.17g}" for value in row) for row in np.hstack(list(wide.values()))]
    arrays = {name: np.asarray(value) for name, value in results.items() if np.ndim(value) > 0}
    frames.save_whole(path.with_suffix(".npz"), lambda file: np.savez(file, **arrays))
    frames.save_whole(path.with_suffix(".tsv"), lambda file: file.write(("\n".join(lines) + "\n").encode()))


def scale(path: Path, stream: TextIO) -> None:
    """Runs the analyses of a file of settings. Raises Mistake."""
    settings = read_settings(path)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        import MDAnalysis

        try:
            universe = MDAnalysis.Universe(str(settings["topology"]), *map(str, settings["trajectory"]))
        except Exception as error:  # of any reader of any format
            raise Mistake(f"{settings['topology']}: {error}") from None
    asked = [make_analysis(universe, entry, settings.get("folder")) for entry in settings["analyses"]]
    settings["output"].mkdir(parents=True, exist_ok=True)
    names: List[str] = []
    with ExitStack() as stack:
        client = open_client(settings["workers"], stack)
        for name, analysis in asked:
            begun = time.monotonic()
            names.append(name)
            frames.watch(Progress(name, stream))
            try:
                analysis.run(**settings["frames"], client=client)
            except ValueError as error:
                raise Mistake(f"{name}: {error}") from None
            finally:
                frames.watch(None)
            number = names.count(name)
            file = settings["output"] / (name.lower() + (f"-{number}" if number > 1 else ""))
            save(analysis, file, [f"{name}, {analysis.n_frames} frames of {', '.join(map(str, settings['trajectory']))}"])
            stream.write(f"{name}: {time.monotonic() - begun:.1f} s, in {file.with_suffix('.tsv')}\n")


def main(arguments: Optional[Sequence[str]] = None) -> int:
    parser = argparse.ArgumentParser(prog="pathstat", description="Analyses of molecular dynamics trajectories.")
    commands = parser.add_subparsers(dest="command", required=True)
    part = commands.add_parser(
        "scale", help="runs analyses on many workers", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    part.add_argument("settings", type=Path, metavar="RUN.yaml", help="what to run, and where")
    try:
        scale(parser.parse_args(arguments).settings, sys.stderr)
    except Mistake as mistake:
        print(f"pathstat: {mistake}", file=sys.stderr)
        return 2
    except ImportError as error:
        print(f"pathstat: {error}; scale needs MDAnalysis and distributed", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print("\npathstat: interrupted; blocks that are done are kept in the folder, if one is named", file=sys.stderr)
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())

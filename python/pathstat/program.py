"""The whole program from Python: `with Analysis("run.trj") as a: a.MSD()`.

Every command word of `pathdesk words` is a method, in upper or lower case, with the word's arguments; a setting without
arguments gives its present value. Behind it works `pathdesk converse`: this module holds no analysis of its own.
"""

from __future__ import annotations

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import warnings
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Callable, Dict, Iterator, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np

__all__ = ["Analysis", "AnalysisError", "AnalysisWarning", "Curve", "Frame", "Graph", "Outcome", "Report", "Setting"]

PathLike = Union[str, "os.PathLike[str]"]


class AnalysisError(RuntimeError):
    """A line failed, or the program was lost. Holds what was told."""


class AnalysisWarning(UserWarning):
    """What the program complains of in a line that went well."""


@dataclass(frozen=True)
class Curve:
    """A curve of a graph: `x` and `y`, as the program plots them, in 32-bit floats."""

    label: str
    x: np.ndarray
    y: np.ndarray


@dataclass(frozen=True)
class Graph:
    """A graph. A notebook shows it as a picture."""

    name: str  #: of its files in the results
    title: str  #: as the program names it
    heading: str
    x: str  #: quantity and unit of the abscissa
    y: str
    of: str  #: atoms and frames
    curves: Tuple[Curve, ...]
    svg: Optional[str] = field(default=None, repr=False)  #: the picture, once it was asked for

    def __getitem__(self, label: Union[int, str]) -> Curve:
        """The curve of a label, or of a place."""
        if isinstance(label, int):
            return self.curves[label]
        for curve in self.curves:
            if curve.label == label:
                return curve
        raise KeyError(f"{label!r} is none of the curves {[curve.label for curve in self.curves]}")

    def plot(self, ax: Any = None) -> Any:
        """Draws the curves by matplotlib, into `ax` if one is given, and returns the axes."""
        if ax is None:
            import matplotlib.pyplot

            ax = matplotlib.pyplot.figure().add_subplot()
        for curve in self.curves:
            ax.plot(curve.x, curve.y, label=curve.label or None)
        ax.set(title=self.heading, xlabel=self.x, ylabel=self.y)
        if any(curve.label for curve in self.curves):
            ax.legend()
        return ax

    def to_frame(self) -> Any:
        """A pandas table: a column of each curve over the abscissa."""
        import pandas

        columns = [pandas.Series(c.y, index=pandas.Index(c.x, name=self.x), name=c.label or self.y) for c in self.curves]
        return pandas.concat(columns, axis=1)

    def _repr_html_(self) -> Optional[str]:
        return self.svg


class Graphs(Mapping[str, Graph]):
    """Graphs by name, title or heading, in upper or lower case; of equals the latest. Iterates over names."""

    def __init__(self, graphs: Sequence[Graph]) -> None:
        self._graphs = tuple(graphs)

    def __getitem__(self, name: str) -> Graph:
        wanted = name.casefold()
        for graph in reversed(self._graphs):
            if wanted in (graph.name.casefold(), graph.title.casefold(), graph.heading.casefold()):
                return graph
        raise KeyError(f"{name!r} is none of the graphs {[graph.heading for graph in self._graphs]}")

    def __iter__(self) -> Iterator[str]:
        return (graph.name for graph in self._graphs)

    def __len__(self) -> int:
        return len(self._graphs)

    def __repr__(self) -> str:
        return "Graphs(" + ", ".join(repr(graph.heading) for graph in self._graphs) + ")"

    def _repr_html_(self) -> str:
        return "".join(graph.svg or "" for graph in self._graphs)


@dataclass(frozen=True)
class Outcome:
    """What came of a line: the texts that it printed, and the graphs that it drew. A notebook shows both."""

    text: str
    graphs: Graphs

    def __str__(self) -> str:
        return self.text

    def _repr_html_(self) -> str:
        from html import escape

        return (f"<pre>{escape(self.text)}</pre>" if self.text else "") + self.graphs._repr_html_()


@dataclass(frozen=True)
class Setting:
    """The present values of a setting (numbers, `True` and `False`, texts), and what it may be as the program tells it."""

    values: List[Any]
    ranges: List[str]

    @property
    def value(self) -> Any:
        """Its first value; None if it has none."""
        return self.values[0] if self.values else None

    def __str__(self) -> str:
        return " ".join(map(str, self.values))


@dataclass(frozen=True)
class Frame:
    """Positions (atoms, 3) and cell vectors as rows, in Å; rows of zeros where there is no cell."""

    positions: np.ndarray
    cell: np.ndarray


@dataclass(frozen=True)
class Report:
    """The results of the run so far: a folder with `report.html`, pictures and tables. A notebook shows the report."""

    folder: Path
    text: str

    def _repr_html_(self) -> str:
        from html import escape

        page = escape((self.folder / "report.html").read_text(encoding="utf-8"), quote=True)
        return f'<iframe srcdoc="{page}" sandbox="" style="width:100%;height:40em;border:0"></iframe>'


def find_program(program: Optional[PathLike] = None) -> str:
    """Path of `pathdesk`: the one named, that of `PATHDESK_PROGRAM`, of the build beside this package, or on `PATH`.

    Raises FileNotFoundError where there is none.
    """
    named = program or os.environ.get("PATHDESK_PROGRAM")
    built = Path(__file__).resolve().parents[3] / "release" / "bin" / "pathdesk"
    for candidate in [named] if named else [built, "pathdesk"]:
        found = shutil.which(candidate)
        if found:
            return os.path.abspath(found)
    raise FileNotFoundError(
        f"there is no program {named}" if named else "pathdesk is not on PATH; name it with program= or PATHDESK_PROGRAM"
    )


def _quoted(value: Any) -> str:
    """An argument as a line has it."""
    if isinstance(value, (bool, np.bool_)):
        return "yes" if value else "no"
    if isinstance(value, (float, np.floating)):
        return repr(float(value))
    text = os.fspath(value) if isinstance(value, os.PathLike) else str(value)
    if any(mark in text for mark in '"\n\r\0'):
        raise ValueError(f"an argument cannot hold quotes or line ends: {text!r}")
    return text if text and not any(c.isspace() or c in "#{}()" for c in text) else f'"{text}"'


#: What the text of a value is read by, by the form of its word.
_readers: Dict[str, Callable[[str], Any]] = {"flag": lambda text: text == "T", "integer": int, "number": float}


def _flat(arguments: Sequence[Any]) -> List[Any]:
    flat: List[Any] = []
    for argument in arguments:
        if isinstance(argument, (list, tuple, np.ndarray)):
            flat.extend(_flat(list(argument)))
        else:
            flat.append(argument)
    return flat


class _Talk:
    """One `pathdesk converse`: a request out, an answer in."""

    def __init__(self, command: Sequence[str], folder: Path) -> None:
        # A session of its own: a Ctrl-C comes through us alone, and once.
        self._log = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._log, cwd=folder, start_new_session=True
        )

    def ask(self, **request: Any) -> Tuple[Dict[str, Any], bytes]:
        """Sends a request and waits for its answer. Ctrl-C stops what is done and keeps it; a second one gives it up.

        Raises AnalysisError if the program is gone, and KeyboardInterrupt behind the answer if it was stopped.
        """
        assert self.process.stdin and self.process.stdout
        stops: List[int] = []

        def stop(*_: Any) -> None:
            stops.append(1)
            self.process.send_signal(signal.SIGINT)

        # Not as an exception, which could come between a request and its answer.
        before = signal.signal(signal.SIGINT, stop) if threading.current_thread() is threading.main_thread() else None
        try:
            header, block = self._exchange(request)
        except EOFError:
            if stops:
                raise KeyboardInterrupt from None
            raise AnalysisError(self._last_words()) from None
        finally:
            if before is not None:
                signal.signal(signal.SIGINT, before)
        header["was_interrupted"] = bool(stops)
        return header, block

    def _exchange(self, request: Dict[str, Any]) -> Tuple[Dict[str, Any], bytes]:
        """Raises EOFError if the program is gone."""
        assert self.process.stdin and self.process.stdout
        try:
            self.process.stdin.write(json.dumps(request).encode() + b"\n")
            self.process.stdin.flush()
        except (BrokenPipeError, ValueError):
            raise EOFError from None
        data = bytearray()
        header: Optional[Dict[str, Any]] = None
        wanted = 0
        while header is None or len(data) < wanted:
            part = os.read(self.process.stdout.fileno(), 1 << 20)
            if not part:
                raise EOFError
            data += part
            end = data.find(b"\n") if header is None else -1
            if end >= 0:
                header = json.loads(data[:end])
                wanted = header["bytes"]
                del data[: end + 1]
        return header, bytes(data)

    def _last_words(self) -> str:
        """Why the program ended."""
        try:
            code = self.process.wait(5)
        except subprocess.TimeoutExpired:
            return "pathdesk does not answer"
        self._log.seek(0)
        told = self._log.read().decode(errors="replace").strip()
        return told or f"pathdesk ended with code {code}"

    def close(self) -> None:
        if self.process.stdin:
            try:
                self.process.stdin.close()
            except BrokenPipeError:
                pass
        try:
            self.process.wait(60)
        except (subprocess.TimeoutExpired, KeyboardInterrupt):
            self.process.kill()
            self.process.wait()
            raise
        finally:
            if self.process.stdout:
                self.process.stdout.close()
            self._log.close()


def _graphs(bodies: Sequence[Mapping[str, Any]], block: bytes) -> List[Graph]:
    points = np.frombuffer(block, np.float32).reshape(-1, 2)
    graphs, at = [], 0
    for body in bodies:
        curves = []
        for curve in body["curves"]:
            part = points[at : at + curve["points"]]
            at += curve["points"]
            curves.append(Curve(curve["label"], part[:, 0].copy(), part[:, 1].copy()))
        texts = {name: body[name] for name in ("name", "title", "heading", "x", "y", "of")}
        graphs.append(Graph(**texts, curves=tuple(curves)))
    return graphs


class Analysis:
    """A run of the program.

    `Analysis("run.trj")` loads a trajectory and its model; `Analysis("topol.tpr", "run.xtc")` first brings in the run of
    another program (by MDAnalysis); `Analysis()` loads nothing. Command words are methods: `a.msd_max_interval(5.0)`,
    `a.MSD()`. Use it in a `with` statement, or call `close()`.

    Parameters: `output`, the folder for results (a temporary one without it); `threads`, the processors to use (all
    without it); `program`, the path of `pathdesk`; `quiet`, which turns warnings off.

    Raises FileNotFoundError for files that are not there, AnalysisError where a file cannot be loaded.
    """

    def __init__(
        self,
        *files: PathLike,
        output: Optional[PathLike] = None,
        threads: Optional[int] = None,
        program: Optional[PathLike] = None,
        quiet: bool = False,
    ) -> None:
        self._talk: Optional[_Talk] = None
        self._graphs: Dict[str, Graph] = {}
        self._quiet = quiet
        self._scratch: Optional[tempfile.TemporaryDirectory[str]] = None
        self._scratch = tempfile.TemporaryDirectory(prefix="pathstat-")
        paths = [Path(file).expanduser().absolute() for file in files]
        for path in paths:
            if not path.exists() and not path.with_name(path.name + ".trj").exists():
                raise FileNotFoundError(f"there is no file {path}")
        self.output = Path(output).absolute() if output is not None else Path(self._scratch.name) / "out"
        desk = find_program(program)
        if len(paths) > 1 or (paths and _is_foreign(paths[0])):
            paths = [self._import(desk, paths)]
        options = ["--out", str(self.output)] + (["--threads", str(threads)] if threads is not None else [])
        self._talk = _Talk([desk, "converse", *options], Path.cwd())
        try:
            body, _ = self._talk.ask(words=True)
            self._words = {word["word"]: word for group in body["groups"] for word in group["words"]}
            if paths:
                self.command("TRAJECTORY", paths[0])
        except BaseException:
            self.close()
            raise

    def _import(self, desk: str, paths: Sequence[Path]) -> Path:
        assert self._scratch
        made = Path(self._scratch.name) / "imported"
        done = subprocess.run([desk, "import", *map(str, paths), "-o", str(made)], capture_output=True, text=True)
        if done.returncode != 0:
            raise AnalysisError(done.stderr.strip() or done.stdout.strip())
        return made.with_name("imported.trj")

    # Lines

    def run(self, line: str) -> Outcome:
        """Runs a line as a script has it: `a.run("@select atoms element O")`.

        Raises AnalysisError if it fails, and KeyboardInterrupt if it was stopped; what it had done is in `graphs`.
        """
        if "\n" in line or "\r" in line:
            raise ValueError("run takes one line")
        body, block = self._ask(line=line)
        graphs = _graphs(body.get("graphs", []), block)
        for graph in graphs:
            self._graphs[graph.name] = graph
        told = body.get("told", [])
        text = "\n".join(each["text"] for each in told if each["kind"] != "complaint")
        complaints = [each["text"] for each in told if each["kind"] == "complaint"]
        if body.get("was_interrupted") or body["end"] == "interrupted":
            raise KeyboardInterrupt
        if body["end"] in ("failed", "refused", "lost"):
            raise AnalysisError("\n".join(filter(None, [*complaints, body.get("problem", "")])) or f"{line} failed")
        for complaint in () if self._quiet else complaints:
            warnings.warn(complaint, AnalysisWarning, stacklevel=_stack_level())
        return Outcome(text, Graphs(self._drawn(graphs)))

    def command(self, word: str, *arguments: Any) -> Outcome:
        """Runs a command word. Lists and arrays stand for their elements; `True` and `False` for yes and no."""
        return self.run(" ".join([word, *map(_quoted, _flat(arguments))]))

    def setting(self, word: str) -> Setting:
        """The present value of a setting."""
        body, _ = self._ask(values=[word])
        answer = body["values"].get(word, {"values": [], "ranges": []})
        read = _readers.get(self._words[word]["form"], str)
        return Setting([read(item.strip()) for item in answer["values"]], [item.strip() for item in answer["ranges"]])

    def select(self, selection: str) -> Outcome:
        """Chooses atoms, in the words of `@select atoms`."""
        return self.run(f"@select atoms {selection}")

    def __getattr__(self, name: str) -> Any:
        words = self.__dict__.get("_words", {})
        word = words.get(name.upper())
        if word is None or name.startswith("_"):
            raise AttributeError(f"there is no command word {name.upper()}; help(pathstat.Analysis) and a.words list them")

        def method(*arguments: Any) -> Any:
            if not arguments and word["setting"]:
                return self.setting(word["word"])
            return self.command(word["word"], *arguments)

        method.__name__ = method.__qualname__ = name
        method.__doc__ = "\n\n".join(
            filter(
                None,
                [
                    word["meaning"] + ".",
                    f"Arguments: {word['arguments']}." if word["arguments"] not in ("", "none") else "",
                    f"Needs: {word['needs']}." if word["needs"] else "",
                ],
            )
        )
        return method

    def __dir__(self) -> List[str]:
        return sorted([*super().__dir__(), *self.__dict__.get("_words", ()), *(w.lower() for w in self.__dict__.get("_words", ()))])

    # What is there

    @property
    def words(self) -> Dict[str, str]:
        """All command words, with what they mean."""
        return {name: word["meaning"] for name, word in self._words.items()}

    @property
    def graphs(self) -> Graphs:
        """All graphs that were drawn so far."""
        return Graphs(list(self._graphs.values()))

    def frame(self, number: Optional[int] = None) -> Frame:
        """The shown frame, or that of a number: from 1 among the frames of the range, or from -1, the last, down.

        Raises IndexError where there is no such frame.
        """
        if number is not None:
            count = self.frames
            wanted = number + count + 1 if number < 0 else number
            if not 1 <= wanted <= count:
                raise IndexError(f"frame {number} is not among the {count} frames of the range")
            self.command("CURRENT_FRAME_NUMBER", wanted)
        body, block = self._ask(frame=True)
        if body["end"] != "done":
            raise AnalysisError(body["problem"])
        return Frame(np.frombuffer(block, np.float64).reshape(-1, 3).copy(), np.array(body["cell"]))

    @property
    def frames(self) -> int:
        """Frames of the range."""
        return int(self.command("GET", "NUMBER_OF_FRAMES_SELECTED").text)

    @property
    def atoms(self) -> Dict[str, Any]:
        """Arrays over the atoms: `names`, `types`, `residues`, `elements` (atomic numbers); and `bonds`, pairs of places."""
        body, block = self._ask(model=True)
        if body["end"] != "done":
            raise AnalysisError(body["problem"])
        arrays: Dict[str, Any] = {name: np.array(body[name]) for name in ("names", "types", "residues")}
        return {**arrays, "elements": np.frombuffer(block, np.uint8).copy(), "bonds": np.array(body["bonds"]).reshape(-1, 2)}

    def report(self) -> Report:
        """Writes the results of the run so far: pictures, tables and the report."""
        body, _ = self._ask(report=True)
        return Report(Path(body["folder"]), "\n".join(each["text"] for each in body["told"]))

    # The end

    def close(self) -> None:
        """Writes the results and ends the program. A temporary folder goes with it."""
        talk, self._talk = self._talk, None
        try:
            if talk:
                talk.close()
        finally:
            if self._scratch:
                self._scratch.cleanup()
                self._scratch = None

    def __enter__(self) -> "Analysis":
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def __del__(self) -> None:
        try:
            self.close()
        except Exception:
            pass

    def __repr__(self) -> str:
        return f"<pathstat.Analysis {'ended' if self._talk is None else 'running'}, {len(self._graphs)} graphs>"

    def _ask(self, **request: Any) -> Tuple[Dict[str, Any], bytes]:
        if self._talk is None:
            raise AnalysisError("the analysis is closed")
        return self._talk.ask(**request)

    def _drawn(self, graphs: Sequence[Graph]) -> List[Graph]:
        """The graphs with their pictures, where a notebook would show them."""
        if "ipykernel" not in sys.modules:
            return list(graphs)
        return [self.drawn(graph) for graph in graphs]

    def drawn(self, graph: Graph) -> Graph:
        """The graph with its picture as the report has it, in `svg`."""
        from dataclasses import replace

        body, block = self._ask(picture=graph.name)
        graph = replace(graph, svg=block.decode() if body["end"] == "done" else None)
        self._graphs[graph.name] = graph
        return graph


def _is_foreign(path: Path) -> bool:
    """True for a file that the program does not read by itself."""
    own = (".trj", ".his", ".arc", "")
    return path.suffix.lower() not in own


def _stack_level() -> int:
    """How many frames up the caller of this package stands."""
    level, frame = 1, sys._getframe(1)
    while frame.f_back and frame.f_code.co_filename == __file__:
        level, frame = level + 1, frame.f_back
    return level

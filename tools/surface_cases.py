#!/usr/bin/env python3
"""Makes src/volumes/surface_cases.inc: the triangles in which a surface crosses a cube, for each of its 256 cases.

    tools/surface_cases.py            prints the table
    tools/surface_cases.py --write    writes it to its place
    tools/surface_cases.py --check    says whether the table in the source is what comes out here

The rules, each of which is tested on every row before anything is printed:

1. On a face with two crossed edges the surface runs from one to the other. On a face whose corners are set crosswise it
   cuts off each of the two set corners, whatever the rest of the cube is like: so the lines of two cubes on the face
   that they share are the same, and the surface is closed across it.
2. The lines of the six faces make loops. A loop of n crossed edges is filled with n - 2 triangles whose inner sides
   run through the cube, never within a face: there a neighbour could draw the same side once more.
3. Triangles are wound so that (b - a) x (c - a) points to the set side.
4. Where two loops face each other across cut-off corners - two set edges of the cube that lie diagonally, or a set
   corner with its three neighbours unset and the rest set - the pieces are joined through the cube: walls around the
   unset pieces, and a lid of two triangles on each crosswise face, which brings the lines there back to rule 1. Of the
   six cases with two edges the three in JOINED_EDGES are made so.
5. A joined set corner has three walls and three lids, nine triangles, as nine lines demand: the sides of the triangles,
   less the lines, come in pairs, so that no ten can do. Its tenth is collapsed to a point and covers nothing.

The rows in STATED stand as they are, in this order of triangles and corners, and are held to the same tests. The lids
of case 170 are wound the other way round; rule 3 leaves them out.
"""
import collections
import itertools
import pathlib
import sys

PLACE = pathlib.Path(__file__).parent.parent / "src/volumes/surface_cases.inc"

CORNERS = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)]
EDGES = [((0, 0, 0), (1, 0, 0)), ((1, 0, 0), (1, 1, 0)), ((0, 1, 0), (1, 1, 0)), ((0, 0, 0), (0, 1, 0)),
         ((0, 0, 1), (1, 0, 1)), ((1, 0, 1), (1, 1, 1)), ((0, 1, 1), (1, 1, 1)), ((0, 0, 1), (0, 1, 1)),
         ((0, 0, 0), (0, 0, 1)), ((1, 0, 0), (1, 0, 1)), ((0, 1, 0), (0, 1, 1)), ((1, 1, 0), (1, 1, 1))]
EDGE_NUMBER = {frozenset(ends): number for number, ends in enumerate(EDGES, 1)}

STATED = {
    1: [(1, 9, 4)],
    2: [(1, 2, 10)],
    3: [(2, 10, 9), (2, 9, 4)],
    7: [(3, 9, 4), (3, 12, 9), (12, 10, 9)],
    15: [(10, 9, 12), (12, 9, 11)],
    170: [(2, 6, 3), (6, 7, 3), (4, 5, 1), (4, 8, 5), (2, 1, 4), (2, 4, 3), (6, 5, 8), (6, 8, 7)],
    254: [(1, 4, 9)],
}
JOINED_EDGES = (150, 170, 195)
WOUND_OTHERWISE = {170}
COUNTS = {0: 2, 1: 16, 2: 50, 3: 80, 4: 73, 5: 24, 8: 3, 10: 8}


def cycles():
    """The corners of the six faces, in order around each, seen from outside against the clock."""
    for axis, side in itertools.product(range(3), (0, 1)):
        u, v = (axis + 1) % 3, (axis + 2) % 3
        around = []
        for at_u, at_v in ((0, 0), (1, 0), (1, 1), (0, 1)):
            corner = [0, 0, 0]
            corner[axis], corner[u], corner[v] = side, at_u, at_v
            around.append(tuple(corner))
        yield around if side == 1 else around[::-1]


FACES = list(cycles())
FACE_EDGES = [[EDGE_NUMBER[frozenset((face[k], face[(k + 1) % 4]))] for k in range(4)] for face in FACES]


def set_corners(case):
    return {corner for k, corner in enumerate(CORNERS) if case >> k & 1}


def crosswise(case):
    tags = set_corners(case)
    return [f for f, face in enumerate(FACES) if [c in tags for c in face] in ([1, 0, 1, 0], [0, 1, 0, 1])]


def lines(case):
    """Rule 1: from one crossed edge to the next around each run of set corners of a face, the set side on the left."""
    tags = set_corners(case)
    for face, edges in zip(FACES, FACE_EDGES):
        for k in range(4):
            if face[k] in tags and face[k - 1] not in tags:
                end = next(n for n in range(k, k + 4) if face[(n + 1) % 4] not in tags)
                yield edges[end % 4], edges[k - 1]


def loops(case):
    """The lines, chained, as a triangle's sides run: against them as the neighbouring face would draw them."""
    following = dict(lines(case))
    while following:
        first, at = following.popitem()
        loop = [first]
        while at != first:
            loop.append(at)
            at = following.pop(at)
        least = loop.index(min(loop))
        yield loop[least:] + loop[:least]


def in_one_face(a, b):
    return any(a in edges and b in edges for edges in FACE_EDGES)


def fillings(loop):
    """All ways to fill a loop with triangles."""
    if len(loop) < 3:
        yield []
        return
    first, last = loop[0], loop[-1]
    for k in range(1, len(loop) - 1):
        for before in fillings(loop[:k + 1]):
            for behind in fillings(loop[k:]):
                yield [(first, loop[k], last)] + before + behind


def sides(triangles):
    return [side for a, b, c in triangles for side in ((a, b), (b, c), (c, a)) if side[0] != side[1]]


def filled(loop):
    """Rule 2; of the fillings that keep to it the first."""
    border = {frozenset(pair) for pair in zip(loop, loop[1:] + loop[:1])}
    for triangles in fillings(loop):
        inner = {frozenset(side) for side in sides(triangles)} - border
        if not any(in_one_face(*side) for side in inner):
            return triangles
    raise ValueError(f"no filling of {loop}")


def cut_off(case, corner):
    """The crossed edges of a corner."""
    return {EDGE_NUMBER[frozenset((a, b))] for a, b in EDGES if corner in (a, b)}


def is_joined(case):
    unset = [corner for corner in CORNERS if corner not in set_corners(case)]
    corner_and_rest = len(unset) == 3 and len(crosswise(case)) == 3
    return case in JOINED_EDGES or corner_and_rest


def walls(case):
    """The loops around the unset pieces: those of the same cube when its crosswise faces cut off unset corners."""
    return [[loop[0]] + loop[:0:-1] for loop in loops(255 - case)]


def lids(case):
    """For each crosswise face its four crossed edges, wound to point into the cube."""
    return [FACE_EDGES[f][::-1] for f in crosswise(case)]


def split(quad):
    return [(quad[0], quad[1], quad[2]), (quad[0], quad[2], quad[3])]


def joined(case):
    triangles = [triangle for loop in walls(case) for triangle in filled(loop)]
    triangles += [triangle for lid in lids(case) for triangle in split(lid)]
    if len(triangles) == 9:
        triangles.append((triangles[-1][0],) * 3)
    return triangles


def row(case):
    if case in STATED:
        return STATED[case]
    if is_joined(case):
        return joined(case)
    return [triangle for loop in sorted(loops(case)) for triangle in filled(loop)]


def tested(rows):
    """Fails unless every row keeps to the rules."""
    assert collections.Counter(map(len, rows)) == COUNTS
    for case, triangles in enumerate(rows):
        tags = set_corners(case)
        crossed = {n for n, (a, b) in enumerate(EDGES, 1) if (a in tags) != (b in tags)}
        assert {edge for triangle in triangles for edge in triangle} == crossed, case
        wound = collections.Counter()
        for a, b in sides(triangles):
            wound[a, b] += 1
            wound[b, a] -= 1
        times = collections.Counter(frozenset(side) for side in sides(triangles))
        border = {frozenset(line) for line in lines(case)}
        assert {side for side, count in times.items() if count % 2} == border, case
        if case not in WOUND_OTHERWISE:
            assert {side for side, count in wound.items() if count > 0} == set(lines(case)), case
        if not is_joined(case):
            assert all(side in border or not in_one_face(*side) for side in times), case
            assert max(times.values(), default=0) <= 2, case
    return rows


def text(rows):
    out = ["// Made by tools/surface_cases.py, which states the rules. One row a case: three edge numbers and a 0 for each",
           "// triangle, and a 0 behind the last."]
    for case, triangles in enumerate(rows):
        numbers = "".join(f"{a},{b},{c},0, " for a, b, c in triangles) + "0"
        out.append(f"{{{numbers}}},  // {case}")
    return "\n".join(out) + "\n"


def main():
    table = text(tested([row(case) for case in range(256)]))
    if sys.argv[1:] == ["--write"]:
        PLACE.write_text(table)
    elif sys.argv[1:] == ["--check"]:
        if PLACE.read_text() != table:
            print(f"{PLACE.name} is not what tools/surface_cases.py makes")
            return 1
    else:
        print(table, end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())

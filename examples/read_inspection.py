#!/usr/bin/env python3
"""Lists an inspection file, checks it, or prints what an inspection says. Needs Python 3.8 and
nothing else.

    read_inspection.py weld.fpd                       # groups and items as stored
    read_inspection.py weld.fpd --json
    read_inspection.py weld.fpd --verify              # every checksum, samples included
    read_inspection.py weld.fpd --data                # its data groups, companions read
    read_inspection.py weld.fpd --samples 0 --row 5 --column 133
                                                      # a cell: position, value, percent

Exit status: 0 done, 1 the file is damaged or cannot be read, 2 wrong usage.
"""
import argparse
import hashlib
import json
import sys

from inspection_file import Block, DamagedFile, Group, open_inspection
from inspection_meaning import ONE_SAMPLE_A_CELL, Inspection

UNITS = {1: ("µs", 1e6), 2: ("mm", 1e3), 3: ("°", 1)}


def place(axis, index):
    """A position with its unit; the index where there is none."""
    if axis is None:
        return str(index)
    unit, factor = UNITS[axis.units]
    return f"{axis.at(index) * factor:g} {unit}"


def data_lines(inspection):
    """One line for each data group: class, ids, extent of its axes, range of its values."""
    for number, data in enumerate(inspection.data):
        axes = (
            (data.rows(), data.rowQuantity),
            (data.columns(), data.columnQuantity),
            (data.times(), 0 if data.plain_class in ONE_SAMPLE_A_CELL else data.sampleQuantity),
        )
        extents = " x ".join(
            f"{size} ({place(axis, 0)} to {place(axis, size - 1)})" for axis, size in axes if size
        )
        ids = f"channel {data.record.key(4)}, gate {data.record.key(8)}"
        low, high = data.dataMinimum, data.dataMaximum
        yield f"{number}  class {data.dataClass}, {ids}: {extents}, values {low:g} to {high:g}"


def cell_lines(data, row, column):
    """The samples of a cell: position, value, and percent of full scale."""
    for number, value in enumerate(data.values(row, column)):
        at = place(data.times(), value if data.holds_positions else number)
        yield f"{at}\t{value}" + ("" if data.holds_positions else f"\t{data.percent(value):g} %")


def as_json(item, file):
    if isinstance(item, Group):
        return {
            "code": item.code,
            "name": item.name,
            "type": "group",
            "items": [as_json(each, file) for each in item.items],
        }
    if isinstance(item, Block):
        digest = hashlib.sha256()
        for chunk in file.read_chunks(item):
            digest.update(chunk)
        return {
            "code": item.code,
            "type": "block",
            "offset": item.offset,
            "bytes": item.size,
            "sha256": digest.hexdigest(),
        }
    count = len(item.value) if item.type == "text" else item.count  # characters, not bytes
    return {"code": item.code, "type": item.type, "count": count, "value": item.value}


def lines(items, depth=1):
    """One line for each group and item, indented by depth."""
    for item in items:
        start = "  " * depth + str(item.code)
        if isinstance(item, Group):
            yield f"{start} {json.dumps(item.name)}"
            yield from lines(item.items, depth + 1)
        elif isinstance(item, Block):
            yield f"{start:<12} block  {item.size} bytes at {item.offset}"
        else:
            shown = json.dumps(item.value)
            yield f"{start:<12} {item.type:<6} {shown if len(shown) <= 100 else shown[:99] + '…'}"


def run_inspection(options):
    with Inspection(options.file) as inspection:
        for warning in inspection.warnings:
            print(f"read_inspection: {warning}", file=sys.stderr)
        if options.data:
            print(*data_lines(inspection), sep="\n")
            return
        groups = inspection.data
        if not 0 <= options.samples < len(groups):
            raise ValueError(f"there is no data group {options.samples}: there are {len(groups)}")
        print(*cell_lines(groups[options.samples], options.row, options.column), sep="\n")


def run(options):
    if options.data or options.samples is not None:
        run_inspection(options)
        return
    with open_inspection(options.file) as file:
        if options.verify:
            file.verify()
            print(f"{options.file}: clean, commit {file.slot.commit}")
        elif options.json:
            tree = {
                "path": options.file,
                "commits": file.slot.commit,
                "groups": [as_json(top, file) for top in file.groups],
            }
            print(json.dumps(tree, indent=2, ensure_ascii=False))
        else:
            print(options.file, *lines(file.groups), sep="\n")


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("file")
    parser.add_argument(
        "--json", action="store_true", help="print the tree as JSON, with the SHA-256 of each block"
    )
    parser.add_argument("--verify", action="store_true", help="check every byte")
    parser.add_argument("--data", action="store_true", help="list the data groups")
    parser.add_argument(
        "--samples", type=int, metavar="N", help="print a cell of the N-th data group, from 0"
    )
    parser.add_argument("--row", type=int, default=0)
    parser.add_argument("--column", type=int, default=0)
    options = parser.parse_args()
    try:
        run(options)
    except (DamagedFile, ValueError) as failure:
        sys.exit(f"read_inspection: {options.file}: {failure}")
    except OSError as failure:
        sys.exit(f"read_inspection: {failure}")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Lists an inspection file, checks it, or prints one of its A-scans. Needs Python 3.8 and nothing
else.

    read_inspection.py weld.fpd                       # groups and items as stored
    read_inspection.py weld.fpd --json
    read_inspection.py weld.fpd --verify              # every checksum, samples included
    read_inspection.py weld.fpd --samples 0 --row 5 --column 133

Exit status: 0 done, 1 the file is damaged or cannot be read, 2 wrong usage.
"""
import argparse
import hashlib
import json
import struct
import sys

from inspection_file import Block, DamagedFile, Group, open_inspection

DATA_GROUPS = (10004, 10018)  # primary and modifier code
# Items of a data group, from docs/group-types.md.
CHANNEL, COLUMNS, ROWS, SAMPLES = 4, 11, 15, 19
SAMPLE_SIZE, STORAGE, SWAP, SAMPLE_TYPE, BLOCK = 42, 44, 45, 47, 100
SAMPLE_FORMAT = {2: "b", 3: "B", 4: "h", 5: "H"}
CELL_AFTER_CELL = 0


class SampleTable:
    """The samples of a data group: `rows` x `columns` cells of `samples` values each."""

    def __init__(self, file, group):
        self.columns, self.rows, self.samples = (
            group.value(code, 0) for code in (COLUMNS, ROWS, SAMPLES)
        )
        block, letter = group.value(BLOCK), SAMPLE_FORMAT.get(group.value(SAMPLE_TYPE))
        if not isinstance(block, Block):
            raise ValueError("the data group has no samples")
        if (
            letter is None
            or struct.calcsize(letter) != group.value(SAMPLE_SIZE)
            or group.value(STORAGE) != CELL_AFTER_CELL
        ):
            raise ValueError("this reader knows samples of 8 and 16 bits, stored cell after cell")
        self._cell = struct.Struct((">" if group.value(SWAP) else "<") + str(self.samples) + letter)
        if block.size < self._cell.size * self.columns * self.rows:
            raise ValueError("the data group has fewer samples than it says")
        self.bytes = file.read_samples(block)

    def cell(self, row, column):
        """The samples of one cell, in time order."""
        if not (0 <= row < self.rows and 0 <= column < self.columns):
            raise ValueError(
                f"there is no cell ({row}, {column}): "
                f"the group has {self.rows} rows of {self.columns} columns"
            )
        return self._cell.unpack_from(self.bytes, self._cell.size * (self.columns * row + column))


def data_groups(file):
    """The data groups of a file that hold samples, in order; later modifications of them are not
    applied."""
    groups = (group for top in file.groups for group in top.walk() if group.code in DATA_GROUPS)
    return [group for group in groups if group.value(BLOCK)]


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


def run(options):
    with open_inspection(options.file) as file:
        if options.verify:
            file.verify()
            print(f"{options.file}: clean, commit {file.slot.commit}")
        elif options.samples is not None:
            groups = data_groups(file)
            if not 0 <= options.samples < len(groups):
                raise ValueError(
                    f"there is no data group {options.samples}: the file has {len(groups)}"
                )
            print(*SampleTable(file, groups[options.samples]).cell(options.row, options.column))
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

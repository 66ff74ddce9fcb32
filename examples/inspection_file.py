"""A reader of inspection files in Python alone, written from docs/file-format.md, whose sections
its functions are named after.

    file = open_inspection("weld.fpd")      # metadata only; refuses damage with DamagedFile
    for group in file.groups: ...           # Group, Value and Block, in the file's order
    file.read_block(block)                  # its bytes, once every chunk matches its checksum
    file.read_part(block, offset, size)     # some of them
    file.verify()                           # every byte of the file, blocks included
"""
import os
import struct
from dataclasses import dataclass, field

from xxh3 import xxh3_64

PAGE = 4096
DATA_START = 3 * PAGE
MAGIC = bytes.fromhex("D55554440D0A1A0A")
VERSION = (0, 9)
OLD_HEADER = 36  # bytes
SLOT_MAGIC = b"utcommit"
SEGMENT_MAGIC = b"utgroup\n"
MAX_DEPTH = 16
MAX_NAME = 131068
MAX_GAP = 4103
INTEGERS = ["i8", "u8", "i16", "u16", "i32", "u32", "i64", "u64"]
TYPES = ["group", None, *INTEGERS, "f32", "f64", "text", "block"]
DEFECT_ITEMS = {
    **dict.fromkeys([1, 2, 3, 4, 5, 6, 15, 16], "f64"),
    **dict.fromkeys([7, 8, 11, 12], "text"),
    **dict.fromkeys([9, 10, 13, 14], "u32"),
}
ELEMENT = [1, 0, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8, 1, 40]
NUMBER = dict(zip(range(2, 12), "bBhHiIqQfd"))
TEXT, BLOCK = 12, 13


class DamagedFile(Exception):
    """The file breaks a rule of the format, or is of a version that this reader does not know."""


def require(holds, what):
    if not holds:
        raise DamagedFile(what)


@dataclass(frozen=True)
class Link:
    offset: int
    size: int
    checksum: int


@dataclass(frozen=True)
class Origin:
    """Which file it is, and of a companion (number not 0) what it belongs to."""

    identity: bytes
    number: int = 0
    base: bytes = bytes(16)
    before: bytes = bytes(16)  # the predecessor, and the commit that counted in it
    before_commit: int = 0
    before_checksum: int = 0


@dataclass(frozen=True)
class Slot:
    commit: int
    end: int
    tops: int
    last: Link
    checksum: int  # of the record


@dataclass(frozen=True)
class Value:
    code: int
    type: str
    count: int
    value: object  # a text, a number, or a tuple of numbers where the count is not 1


@dataclass(frozen=True)
class Block:
    code: int
    offset: int
    size: int
    chunk: int
    table: int
    checksum: int

    type = "block"

    @property
    def table_size(self):
        return 8 * -(-self.size // self.chunk)


@dataclass
class Group:
    code: int
    name: str
    items: list = field(default_factory=list)

    type = "group"

    def value(self, code, default=None):
        """The value of the first item of that code, or the block reference."""
        for item in self.items:
            if item.code == code and item.type != "group":
                return item if item.type == "block" else item.value
        return default

    def walk(self):
        """The group, and every group inside it."""
        yield self
        for item in self.items:
            if isinstance(item, Group):
                yield from item.walk()


# ---- which state counts


def read_header(page):
    require(page[:8] == MAGIC, "not an inspection file")
    require(len(page) == PAGE, "cut short in its header")
    major, minor, number, identity, base, before, commit, record, checksum = struct.unpack_from(
        "<HHI16s16s16sQQQ", page, 8
    )
    require((major, minor) == VERSION, f"of format version {major}.{minor}, not of 0.9")
    require(xxh3_64(page[:80]) == checksum and not any(page[88:]), "header: checksum")
    require(any(identity) and number <= 99, "header: identity")
    if number == 0:
        require(not any(page[32:80]), "header: content")
        return Origin(identity)
    require(any(base) and any(before) and commit > 0, "header: companion")
    return Origin(identity, number, base, before, commit, record)


def read_slot(page):
    """The record of a commit slot, or None when the slot is not whole."""
    if len(page) < PAGE or page[:8] != SLOT_MAGIC or any(page[64:]):
        return None
    commit, end, tops, offset, size, link_checksum, checksum = struct.unpack_from("<7Q", page, 8)
    if xxh3_64(page[:56]) != checksum:
        return None
    return Slot(commit, end, tops, Link(offset, size, link_checksum), checksum)


def was_a_slot(page):
    return len(page) == PAGE and page[:8] == SLOT_MAGIC and not any(page[64:])


def which_slot_counts(pages, size):
    a, b = slots = [read_slot(page) for page in pages]
    newest = max((slot for slot in slots if slot), key=lambda slot: slot.commit, default=None)
    require(newest, "no commit slot is whole")
    require(newest.end <= size, "cut short")
    if not a or a != b:
        require(newest.end < size, "its commit slots disagree")
        whole = a and b and abs(a.commit - b.commit) == 1
        require(
            whole or (not (a and b) and all(map(was_a_slot, pages))), "its commit slots disagree"
        )
    require(newest.end >= DATA_START, "commit slot: end")
    require((newest.tops == 0) == (newest.last == Link(0, 0, 0)), "commit slot: number of groups")
    return newest


# ---- metadata


class BodyReader:
    """Reads the items of a segment; every position is checked against the body that it lies in."""

    def __init__(self, data, data_end):
        self.data = data
        self.data_end = data_end  # blocks and their tables end here at the latest

    def item(self, at, end, depth):
        """One item that starts at `at`, and where the next one starts."""
        require(end - at >= 8, "item: cut short")
        code, kind, zero, count = struct.unpack_from("<HBBI", self.data, at)
        require(kind < len(TYPES) and TYPES[kind] and zero == 0, "item: type")
        start, size = at + 8, count * ELEMENT[kind]
        following = start + (size + 3) // 4 * 4
        require(following <= end, "item: longer than its group")
        require(not any(self.data[start + size : following]), "item: padding")
        if kind == 0:
            require(size % 4 == 0, "group: size")
            return self.body(code, start, following, depth), following
        return self.value(code, kind, count, self.data[start : start + size]), following

    def value(self, code, kind, count, content):
        if kind == BLOCK:
            require(count == 1, "block: count")
            return self.block(Block(code, *struct.unpack("<5Q", content)))
        if kind == TEXT:
            return Value(code, "text", count, decode(content))
        numbers = struct.unpack(f"<{count}{NUMBER[kind]}", content)
        return Value(code, TYPES[kind], count, numbers[0] if count == 1 else numbers)

    def block(self, block):
        require(block.offset % PAGE == 0 and block.offset >= DATA_START, "block: offset")
        require(
            block.chunk & (block.chunk - 1) == 0 and PAGE <= block.chunk <= 1 << 26, "block: chunk"
        )
        require(block.table % 8 == 0 and block.table >= block.offset + block.size, "block: table")
        require(
            block.table + block.table_size <= self.data_end,
            "block: beyond the segment that names it",
        )
        return block

    def body(self, code, at, end, depth):
        require(depth <= MAX_DEPTH, "groups too deep")
        require(end - at >= 8, "group: cut short")
        name_size, count = struct.unpack_from("<II", self.data, at)
        at += 8
        padded = (name_size + 3) // 4 * 4
        require(name_size <= MAX_NAME and at + padded <= end, "group: name")
        require(not any(self.data[at + name_size : at + padded]), "group: padding")
        group = Group(code, decode(self.data[at : at + name_size]))
        at += padded
        for _ in range(count):
            item, at = self.item(at, end, depth + 1)
            group.items.append(item)
        require(at == end, "group: its items do not fill it")
        return group


def decode(content):
    try:
        return bytes(content).decode("utf-8")
    except UnicodeDecodeError:
        raise DamagedFile("a text is not UTF-8") from None


def read_segment(data, number, offset):
    """The top group of a segment, and the link to the one before it."""
    require(len(data) >= 48 and data[:8] == SEGMENT_MAGIC, "segment: magic")
    own_number, *before = struct.unpack_from("<4Q", data, 8)
    require(own_number == number, "segment: number")
    require(number > 0 or before == [0, 0, 0], "segment: link before the first")
    require(data[42] == 0, "segment: no group")
    group, end = BodyReader(data, offset).item(40, len(data), 1)
    require(end == len(data), "segment: its group does not fill it")
    return group, Link(*before)


# ---- the file


class InspectionFile:
    """An inspection file as it was committed when it was opened. One thread at a time."""

    def __init__(self, path):
        self.path = path
        self._file = open(path, "rb")
        try:
            self.slot = self._read_state()
            self.groups, self.links = self._read_chain()
            self._read_before = {}  # chunks, by block and number
        except BaseException:
            self._file.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self._file.close()

    def _read(self, offset, size):
        self._file.seek(offset)
        return self._file.read(size)

    def _stores(self, size):
        """Whether the medium holds so much of the file: a hole claims any size at no cost."""
        blocks = getattr(os.fstat(self._file.fileno()), "st_blocks", None)
        return size <= 1 << 20 or blocks is None or blocks * 512 >= size // 2

    def _read_state(self):
        """The record that counts. A commit between two reads looks like damage: read again until it
        looks the same twice."""
        before = None
        for attempt in range(16):
            pages = [self._read(PAGE * page, PAGE) for page in range(3)]
            size = os.fstat(self._file.fileno()).st_size
            try:
                self.origin = read_header(pages[0])
                return which_slot_counts(pages[1:], size)
            except DamagedFile:
                if before == (pages, size) or attempt == 15:
                    raise
                before = (pages, size)
        raise AssertionError("unreachable")

    def _read_chain(self):
        groups, links = [], []
        link, limit = self.slot.last, self.slot.end
        for number in range(self.slot.tops - 1, -1, -1):
            require(link.offset % 4 == 0 and link.offset >= DATA_START, "segment: offset")
            require(link.offset + link.size <= limit, "segment: beyond what was committed")
            require(self._stores(link.size), "segment: larger than what is stored of the file")
            data = self._read(link.offset, link.size)
            require(len(data) == link.size and xxh3_64(data) == link.checksum, "segment: checksum")
            links.append(link)
            limit = link.offset
            group, link = read_segment(data, number, limit)
            groups.append(group)
        return groups[::-1], links[::-1]

    def blocks(self):
        """Every block reference, in the file's order."""
        for top in self.groups:
            for group in top.walk():
                yield from (item for item in group.items if item.type == "block")

    def read_block(self, block):
        """The bytes of a block, checked."""
        return b"".join(self.read_chunks(block))

    def read_samples(self, block):
        """The samples of a data group: a block without the header that older writers left."""
        content = self.read_block(block)
        return bytes(OLD_HEADER) + content[OLD_HEADER:] if has_old_header(content) else content

    def read_part(self, block, offset, size):
        """Some bytes of the samples of a data group; their chunks are checked once."""
        content = b""
        for number in range(offset // block.chunk, -(-(offset + size) // block.chunk)):
            start = number * block.chunk
            chunk = self._checked_chunk(block, number)
            content += chunk[max(offset - start, 0) : offset + size - start]
        if offset < OLD_HEADER and has_old_header(self._checked_chunk(block, 0)):
            zeros = min(OLD_HEADER, offset + size) - offset
            content = bytes(zeros) + content[zeros:]
        return content

    def _checked_chunk(self, block, number):
        key = block.offset, number
        if key not in self._read_before:
            entry = self._read(block.table + 8 * number, 8)
            self._read_before[key] = self._read_chunk(block, number, entry)
        return self._read_before[key]

    def read_chunks(self, block):
        """The chunks of a block one after the other, each checked."""
        table = self._read(block.table, block.table_size)
        require(
            len(table) == block.table_size and xxh3_64(table) == block.checksum,
            "block: table's checksum",
        )
        for number in range(len(table) // 8):
            yield self._read_chunk(block, number, table[8 * number : 8 * number + 8])

    def _read_chunk(self, block, number, checksum):
        at = number * block.chunk
        chunk = self._read(block.offset + at, min(block.chunk, block.size - at))
        require(
            xxh3_64(chunk).to_bytes(8, "little") == checksum,
            f"block at {block.offset}: checksum of chunk {number}",
        )
        return chunk

    def verify(self):
        """Checks what opening did not: blocks, and that what stands between everything is zero and
        belongs to nobody twice."""
        extents = [(link.offset, link.size) for link in self.links]
        for block in self.blocks():
            for _ in self.read_chunks(block):
                pass
            extents += [(block.offset, block.size), (block.table, block.table_size)]
        at = DATA_START
        used = sorted(extent for extent in extents if extent[1])
        for offset, size in used + [(self.slot.end, 0)]:
            require(offset >= at, f"two values share the byte at {offset}")
            require(
                offset - at <= MAX_GAP and not any(self._read(at, offset - at)),
                f"bytes of nothing at {at}",
            )
            at = offset + size
        for top in self.groups:
            for table in (item for item in top.items if is_group(item, 10045)):
                for record in (item for item in table.items if is_group(item, 10044)):
                    check_defect(record)


def has_old_header(samples):
    return len(samples) >= OLD_HEADER and samples[:2] == b"D3" and samples[4:6] == b"SU"


def is_group(item, code):
    return isinstance(item, Group) and item.code == code


def check_defect(record):
    """A record with an item of another type would come back without what follows it."""
    for item in record.items:
        wanted = DEFECT_ITEMS.get(item.code)
        single = wanted == "text" or getattr(item, "count", 1) == 1
        require(
            wanted in (None, item.type) and single, f"item {item.code} of a defect record: type"
        )


def open_inspection(path):
    """Opens an inspection file. Raises DamagedFile, or OSError when it cannot be read."""
    return InspectionFile(path)

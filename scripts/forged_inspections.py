"""Inspections that no program writes, for check-reader: right by every checksum, with records of
all kinds, odd values in them, samples laid out in every way, modifications that match in every way,
and companions that belong or do not.

    forge(folder, dice)    # writes one, its companions beside it; returns the path of its base
"""
import pathlib
import struct

from inspection_file import MAGIC, PAGE, SEGMENT_MAGIC, SLOT_MAGIC
from xxh3 import xxh3_64

DATA_START = 3 * PAGE
CHUNK = 65536
NOT_FINITE = (float("nan"), float("inf"), -float("inf"))


def padded(content):
    return content + bytes(-len(content) % 4)


def item(code, value_type, count, content):
    return struct.pack("<HBBI", code, value_type, 0, count) + padded(content)


def i32(code, value):
    return item(code, 6, 1, struct.pack("<i", value))


def u32(code, value):
    return item(code, 7, 1, struct.pack("<I", value))


def f32(code, value):
    return item(code, 10, 1, struct.pack("<f", value))


def f64(code, *values):
    return item(code, 11, len(values), struct.pack(f"<{len(values)}d", *values))


def text(code, value):
    content = value.encode()
    return item(code, 12, len(content), content)


def group(code, items, name=""):
    body = struct.pack("<II", len(name), len(items)) + padded(name.encode()) + b"".join(items)
    return item(code, 0, len(body), body)


class FileForge:
    """A file that gets its blocks and top groups one after the other."""

    def __init__(self, identity):
        self.identity, self.data, self.links = identity, bytearray(DATA_START), []

    def block(self, samples):
        self.data += bytes(-len(self.data) % PAGE)
        at = len(self.data)
        self.data += samples + bytes(-len(samples) % 8)
        chunks = (samples[start : start + CHUNK] for start in range(0, len(samples), CHUNK))
        table = b"".join(struct.pack("<Q", xxh3_64(chunk)) for chunk in chunks)
        reference = at, len(samples), CHUNK, len(self.data), xxh3_64(table)
        self.data += table
        return item(100, 13, 1, struct.pack("<5Q", *reference))

    def top(self, items, code=0, name="FC"):
        self.data += bytes(-len(self.data) % 4)
        before = self.links[-1] if self.links else (0, 0, 0)
        head = SEGMENT_MAGIC + struct.pack("<4Q", len(self.links), *before)
        segment = head + group(code, items, name)
        self.links.append((len(self.data), len(segment), xxh3_64(segment)))
        self.data += segment

    def record(self):
        """The commit record, and its checksum."""
        content = SLOT_MAGIC + struct.pack(
            "<6Q", len(self.links), len(self.data), len(self.links), *self.links[-1]
        )
        return content, xxh3_64(content)

    def write(self, path, number=0, base=bytes(16), before=bytes(16), state=(0, 0)):
        """@param state commit number and checksum of the predecessor's record"""
        header = MAGIC + struct.pack("<HHI", 0, 9, number) + self.identity + base + before
        header += struct.pack("<2Q", *state)
        record, checksum = self.record()
        for at, page, its_checksum in (
            (0, header, xxh3_64(header)),
            (PAGE, record, checksum),
            (2 * PAGE, record, checksum),
        ):
            whole = page + struct.pack("<Q", its_checksum)
            self.data[at : at + len(whole)] = whole
        pathlib.Path(path).write_bytes(self.data)


# ---- what is in them

CLASSES = [1, 1, 1, 1, *range(2, 18), 2000, 2001, *(0x8000 + each for each in (1, 2, 3, 14))]
ONE_SAMPLE = (2, 3, 12, 13, 14, 15, 17)
SAMPLE_SIZES = {2: 1, 3: 1, 4: 2, 5: 2}
LARGEST = {2: 127, 3: 255, 4: 32767, 5: 65535}


def number(dice, *usual):
    return dice.choice(NOT_FINITE if dice.random() < 0.03 else usual)


def samples_of(dice, cells, size, step, is_indexed):
    """A block for cells of `size` bytes, `step` apart where there are no offsets."""
    if is_indexed:
        offsets, content = [], b""
        for _ in range(cells):
            offsets.append(0 if dice.random() < 0.3 else 4 * cells + len(content))
            content += dice.randbytes(size) if offsets[-1] else b""
        if dice.random() < 0.05:
            offsets[0] = dice.choice([1, 4 * cells - 1, 4 * cells + len(content)])
        content = struct.pack(f"<{cells}I", *offsets) + content
    else:
        content = dice.randbytes(cells * step)
    if dice.random() < 0.05:
        content = content[:-1]
    if dice.random() < 0.05 and len(content) > 36:
        content = b"D3\1\2SU" + content[6:]  # a header of older writers
    return content + (b"tail" if dice.random() < 0.2 else b"")


def data_group(file, dice, is_change):
    data_class, data_type = dice.choice(CLASSES), dice.choice([2, 3, 4, 5])
    size, largest = SAMPLE_SIZES[data_type], LARGEST[data_type]
    columns, rows, quantity = dice.randint(1, 4), dice.randint(1, 3), dice.randint(1, 5)
    cell = size * (1 if data_class & 0x7FFF in ONE_SAMPLE else quantity)
    cell_size = dice.choice([0, 0, 0, 1, 3, cell, cell + 2, 2 * cell])
    storage = dice.choice([0, 0, 0, 1])
    items = [
        u32(1, data_class),
        u32(4, dice.randint(0, 1)),
        u32(6, dice.choice([0, 0, 0, 1, 2])),
        text(7, dice.choice(["", "", "beam"])),
        u32(8, dice.choice([0, 1, 10, 11, 140])),
        u32(11, columns),
        f32(12, number(dice, 0.001, 0.0005, -0.002, 0, 1.5)),
        f32(13, number(dice, 0, 0.1, -3)),
        u32(14, dice.choice([2, 2, 2, 3, 0, 1, 4])),
        u32(15, rows),
        f32(16, number(dice, 0.001, 0.005, -1, 0)),
        f32(17, number(dice, 0, 0.2)),
        u32(18, dice.choice([2, 2, 3, 0])),
        u32(19, quantity),
        f32(20, number(dice, 2e-8, 1e-7, -1e-8, 0)),
        f32(21, number(dice, 0, 1e-6, -2e-6)),
        u32(22, dice.choice([1, 1, 1, 1, 2, 3, 0])),
        f32(25, number(dice, 0, 0, -128, -32768, -1, 5, -largest)),
        f32(26, number(dice, largest, largest, 100, 1000, 127, 4095, 0.5)),
        f32(27, number(dice, 1, 2e-8, 0, -1e-8, 0.5)),
        f32(28, number(dice, 0, 1e-6)),
        f32(29, number(dice, 0, 45, 60, 90, 95, -30)),
        f32(34, number(dice, 0, 0.01, 0.1)),
        f32(35, number(dice, 0, 0.1, 0.3, -1)),
        f32(36, number(dice, 0, 0.03, 0.05)),
        f32(37, number(dice, 5900, 3230, 0, -5)),
        i32(38, dice.choice([0, 0, 1, 2])),
        u32(39, dice.choice([0, 0, 1, 2, 3])),
        u32(40, dice.choice([0, 16, 17, 18, 19])),
        u32(41, cell_size),
        u32(42, dice.choice([size] * 8 + [0, 1, 2, 4])),
        u32(43, dice.choice([0, 0, 0, 1, 0x100, 0x101])),
        u32(44, storage if dice.random() < 0.98 else 2),
        i32(45, dice.choice([0, 0, 1, -1])),
        u32(47, data_type if dice.random() < 0.98 else 6),
        u32(48, dice.choice([0, 0, 0, 1, 2, 3])),
        u32(49, dice.random() < 0.05),
        u32(51, dice.choice([0, 0, 1, 2, 3, 10, 17])),
        u32(52, dice.choice([0, 0, 0, 1])),
    ]
    items = [each for each in items if dice.random() > (0.75 if is_change else 0.05)]
    if dice.random() > (0.9 if is_change else 0.05):
        cells = columns * rows
        content = samples_of(dice, cells, cell, max(cell, cell_size), storage == 1)
        items.append(file.block(content))
    return numbered(dice, 10018 if is_change else 10004, items, dice.randint(0, 3))


def numbered(dice, code, items, sub_channel):
    """Some groups were added to an inspection whose sub-channels were numbered."""
    return group(code, [u32(200, sub_channel)] + items if dice.random() < 0.08 else items)


def other_group(dice, is_change):
    def ids(*quantities):
        return [u32(code, dice.randrange(quantity)) for code, quantity in quantities]

    def code(primary, modifier):
        return modifier if is_change else primary

    def some(items):
        return [each for each in items if dice.random() > 0.15]

    value = f32(5, dice.random())
    kinds = [
        lambda: numbered(dice, code(10009, 10017), some(ids((1, 2), (2, 2)) + [value]), 0),
        lambda: numbered(
            dice, code(10020, 10021), some(ids((1, 4), (2, 2)) + [value]), dice.randint(0, 3)
        ),
        lambda: group(code(10224, 10025), some(ids((1, 2), (2, 2)) + [text(3, "gate"), value])),
        lambda: group(code(10006, 10013), [value]),
        lambda: group(code(15697, 10019), [text(1, f"title {dice.random()}")]),
        lambda: group(code(10011, 10032), some(ids((3, 2), (25, 2)) + [f64(27, 1, dice.random())])),
        lambda: group(code(10026, 10027), some([text(1, "steel"), value])),
        lambda: group(dice.choice([10047, 10048]), ids((1, 1), (2, 2)) + [value]),
        lambda: group(10045, [group(10044, some(defect(dice))) for _ in range(dice.randint(0, 2))]),
        lambda: group(10999, [value]),
    ]
    return dice.choice(kinds + kinds[:2])()


def defect(dice):
    items = [f64(1, dice.random()), f64(16, 2), text(7, "a\0b"), u32(9, 3), u32(14, 4)]
    for entry in range(dice.randint(0, 2)):
        items += [u32(10, entry), text(11, "c"), text(12, "d")]
    if dice.random() < 0.1:
        items.append(u32(3, 1))  # of another type than it should be
    dice.shuffle(items)
    return items


def add_tops(file, dice, quantity):
    for _ in range(quantity):
        groups = [data_group(file, dice, dice.random() < 0.4) for _ in range(dice.randint(0, 4))]
        groups += [other_group(dice, dice.random() < 0.4) for _ in range(dice.randint(0, 7))]
        dice.shuffle(groups)
        file.top(groups, *dice.choice([(), (), (5, "another")]))


def forge(folder, dice):
    base = FileForge(dice.randbytes(16))
    add_tops(base, dice, dice.randint(1, 3))
    early = base.record()[1]  # before the base is appended to
    late = dice.random() < 0.2
    path = pathlib.Path(folder) / "forged.fpd"
    state, before = (len(base.links), early), base.identity
    if late:
        add_tops(base, dice, 1)
    base.write(path)
    for companion in range(1, dice.choice([1, 1, 1, 2, 4])):
        file = FileForge(dice.randbytes(16))
        add_tops(file, dice, 1)
        said = [companion, base.identity, before, state]
        if dice.random() < 0.1:
            place = dice.randrange(4)
            said[place] = (7, dice.randbytes(16), dice.randbytes(16), (1, 2))[place]
        if dice.random() > 0.05:  # else there is a gap
            file.write(path.with_suffix(f".A{companion:02}"), *said)
        state, before = (len(file.links), file.record()[1]), file.identity
    return path

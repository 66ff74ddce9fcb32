"""What an inspection says, in Python alone: written from docs/meaning.md, whose sections its parts
are named after.

    inspection = Inspection("weld.fpd")          # its companions read; refuses damage
    inspection.warnings                          # companions that are missing or belong elsewhere
    gate = inspection.records["gate"][0]         # item code -> value, modifications applied
    data = inspection.data[0]                    # a data group, its items by name
    value = data.values(row=0, column=12)[250]   # corrected
    data.percent(value)                          # of full scale, with the sign of the half wave
    data.columns().millimetres(12), data.times().microseconds(250), data.half_path(250)
"""
import math
import os
import struct
from dataclasses import dataclass

from inspection_file import SLOT_MAGIC, Block, DamagedFile, Group, open_inspection
from xxh3 import xxh3_64

LAST_COMPANION = 98
NUMBER_ITEM = 200  # the number of a sub-channel that was added to a numbered inspection


# ---- from files to records


@dataclass(frozen=True)
class GroupType:
    primary: int
    modifier: int = 0  # 0: modifications are not applied, or are whole records
    keys: tuple = ()
    last_counts: bool = False  # of records with the same keys


TYPES = {
    "data": GroupType(10004, 10018, (1, 4, 6, 8, 51, 52)),
    "channel": GroupType(10009, 10017, (1, 2, 3)),
    "sub_channel": GroupType(10020, 10021, (1, 2)),
    "gate": GroupType(10224, 10025, (1, 2)),
    "patch": GroupType(10007, 10014, (1,)),
    "probe": GroupType(10008, 10016, (1,)),
    "specimen_dimensions": GroupType(10006),
    "specimen_information": GroupType(10028, 10029),
    "specimen_material": GroupType(10026, 10027),
    "weld": GroupType(10022, 10023, (1,)),
    "info": GroupType(15697),
    "contour": GroupType(10011, 10032, (3, 25)),
    "reference_adjustment": GroupType(10031, 10034, (1,)),
    "mesh": GroupType(10030),
    "specimen_definition": GroupType(10035),
    "dac": GroupType(10010, 10039, (1,)),
    "weld_scan_plan": GroupType(10047, 0, (1, 3), True),
    "weld_fill": GroupType(10048, 0, (1, 2), True),
}
DATA_CLASS, BOOKMARK = 1, 51  # keys of a data group
DEFECT_TABLE, DEFECT = 10045, 10044


class Record:
    """The items of a group by their codes, modifications applied. Items that no file has are
    missing: they have their defaults."""

    def __init__(self, kind, items, file):
        self.kind, self.items = kind, items
        self.block_file = file  # of which its block is part
        self.number = None  # of a sub-channel or its data
        self.fixed_number = None

    def key(self, code):
        return self.items.get(code, 1 if (self.kind, code) == ("data", DATA_CLASS) else 0)

    def is_modified_by(self, change):
        """Whether a modification belongs to it."""
        return all(
            self.key(code) == change.key(code)
            or ((self.kind, code) == ("data", BOOKMARK) and self.key(code) == 0)
            for code in TYPES[self.kind].keys
        )

    def take(self, change):
        self.items.update(
            (code, item) for code, item in change.items.items() if code != NUMBER_ITEM
        )
        if any(isinstance(item, Block) for item in change.items.values()):
            self.block_file = change.block_file


def items_of(group):
    items = {}
    for item in group.items:
        if not isinstance(item, Group):
            items.setdefault(item.code, item if isinstance(item, Block) else item.value)
    return items


def read_defect(group):
    """Values, texts, numbers and sub-entries of a defect record."""
    values, texts, numbers, entries, entry = [0.0] * 8, [""] * 2, [0] * 3, [], None
    places = {code: (values, code - 1) for code in range(1, 7)}
    places.update({15: (values, 6), 16: (values, 7), 7: (texts, 0), 8: (texts, 1)})
    places.update({9: (numbers, 0), 13: (numbers, 1), 14: (numbers, 2)})
    wanted = {id(values): "f64", id(texts): "text", id(numbers): "u32"}
    for item in group.items:
        kind = "u32" if item.code == 10 else "text" if item.code in (11, 12) else None
        if item.code in places:
            kind = wanted[id(places[item.code][0])]
        elif kind is None or (item.code != 10 and entry is None):
            continue
        if item.type != kind or (kind != "text" and item.count != 1):
            break
        value = item.value.split("\0")[0] if kind == "text" else item.value
        if item.code in places:
            place, index = places[item.code]
            place[index] = value
        elif item.code == 10:
            entry = [value, "", ""]
        else:
            entry[item.code - 10] = value
            if item.code == 12:
                entries.append(entry)
                entry = None
    return {"values": values, "texts": texts, "numbers": numbers, "subEntries": entries}


class Records:
    """The records of an inspection by their types; files are added one after the other."""

    def __init__(self):
        self.of_type = {kind: [] for kind in TYPES}
        self.defects = []

    def add_file(self, file):
        changes, defects = [], []
        for top in file.groups:
            for group in (item for item in top.items if isinstance(item, Group)):
                for kind, group_type in TYPES.items():
                    if group.code == group_type.primary:
                        self.of_type[kind].append(self._make(kind, group, file))
                    elif group_type.modifier and group.code == group_type.modifier:
                        changes.append(self._make(kind, group, file))
                if group.code == DEFECT_TABLE:
                    defects = [read_defect(item) for item in group.items if is_defect(item)]
        for change in changes:
            records = self.of_type[change.kind]
            changed = next((record for record in records if record.is_modified_by(change)), None)
            if changed:
                changed.take(change)
            else:
                records.append(change)
            if changed and change.fixed_number is None:
                changed.is_named = bool(changed.items.get(SUB_CHANNEL_NAME))
        self.defects += defects

    @staticmethod
    def _make(kind, group, file):
        record = Record(kind, items_of(group), file)
        for first in group.items[:1]:
            if (first.code, first.type) == (NUMBER_ITEM, "u32") and first.count == 1:
                record.fixed_number = first.value
        record.is_named = bool(record.items.get(SUB_CHANNEL_NAME)) if kind == "data" else False
        return record


def is_defect(item):
    return isinstance(item, Group) and item.code == DEFECT


# ---- sub-channel numbers

SUB_CHANNEL_NAME = 7  # of a data group


def id_of(record):
    """Channel and sub-channel id of a sub-channel or data group."""
    codes = (4, 6) if record.kind == "data" else (2, 1)
    return tuple(record.items.get(code, 0) for code in codes)


def number_sub_channels(records):
    """Gives sub-channels and data groups the numbers that programs show."""
    sub_channels, data = records["sub_channel"], records["data"]
    if not sub_channels:
        return
    own = [each for each in sub_channels if each.fixed_number is None]
    seen = [each for each in data if each.fixed_number is None]
    ids = {}
    for each in own:
        channel, sub_channel = id_of(each)
        ids.setdefault(channel, []).append(sub_channel)
    links = sum(ids.get(id_of(each)[0], []).count(id_of(each)[1]) for each in seen)
    are_named = any(each.is_named for each in seen)
    in_use = are_named or all(id_of(each)[1] for each in seen)
    channels = sum(each.fixed_number is None for each in records["channel"])
    is_cleared = links <= channels and not in_use
    is_shifted = not is_cleared and any(0 in of_channel for of_channel in ids.values())

    def is_beam(each):
        channel, sub_channel = id_of(each)
        if channel not in ids or each.fixed_number is not None:
            return False
        return sub_channel != 0 or (0 in ids[channel] and (not are_named or each.is_named))

    def is_counted_alike(channel):
        beams = {id_of(each)[1] for each in seen if id_of(each)[0] == channel and is_beam(each)}
        before = sum(each in ids[channel] for each in beams)
        return before > sum(each - 1 in ids[channel] for each in beams)

    alike = {channel for channel in ids if is_shifted and is_counted_alike(channel)}
    for each in sub_channels + data:
        channel, sub_channel = id_of(each)
        shift = is_shifted if each.kind == "sub_channel" else channel in alike and is_beam(each)
        each.number = 0 if is_cleared else sub_channel + shift
        if each.fixed_number is not None:
            each.number = each.fixed_number


# ---- companions


def companion_path(base, number):
    return f"{os.path.splitext(base)[0]}.A{number:02}"


def was_in(file, commit, checksum):
    """Whether the commit record of that number and checksum counts in a file, or counted once."""
    states = [(0, 12288, bytes(24))] + [
        (
            number + 1,
            link.offset + link.size,
            struct.pack("<3Q", link.offset, link.size, link.checksum),
        )
        for number, link in enumerate(file.links)
    ]
    return any(
        xxh3_64(SLOT_MAGIC + struct.pack("<3Q", commit, end, tops) + link) == checksum
        for tops, end, link in states
    )


def judge(companion, number, base, before):
    """What is wrong with a companion, or None; and whether it is read all the same."""
    origin = companion.origin
    if origin.number == 0:
        return "is an inspection of its own", False
    if origin.base != base.origin.identity:
        return "is a companion of another inspection", False
    if origin.number != number:
        return f"says that it is companion {origin.number}", False
    if origin.before != before.origin.identity:
        return "was written on another file", False
    known = origin.before_commit, origin.before_checksum
    if known == (before.slot.commit, before.slot.checksum):
        return None, True
    if not was_in(before, *known):
        return "was written on a state that the file before it never had", False
    return "was written before the last writes of the file before it", True


def following_names(path):
    """The companions' names beside a base, up to the first that is not there."""
    for number in range(1, LAST_COMPANION + 1):
        if not os.path.exists(companion_path(path, number)):
            return
        yield companion_path(path, number)


def open_files(path):
    """The files of an inspection in the order in which they count, and what is odd about them."""
    files, warnings = [open_inspection(path)], []
    try:
        number = 0
        for name in following_names(path) if files[0].origin.number == 0 else []:
            number += 1
            if name == path:
                continue
            companion = open_inspection(name)
            fault, is_read = judge(companion, number, files[0], files[-1])
            if fault:
                warnings.append(f"{name} {fault}")
            if is_read:
                files.append(companion)
            else:
                companion.close()
        if files[0].origin.number == 0:
            names = [companion_path(path, each) for each in range(number + 1, 100)]
            if number == LAST_COMPANION and os.path.exists(names[0]):
                warnings.append(f"{names[0]} is one companion too many")
            elif any(map(os.path.exists, names)):
                warnings.append(f"{names[0]} is missing")
    except BaseException:
        for file in files:
            file.close()
        raise
    return files, warnings


class Inspection:
    def __init__(self, path):
        self.files, self.warnings = open_files(str(path))
        records = Records()
        for file in self.files:
            records.add_file(file)
        number_sub_channels(records.of_type)
        self.records, self.defects = records.of_type, records.defects
        self.data = [DataGroup(record) for record in self.records["data"]]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for file in self.files:
            file.close()


# ---- samples, values, amplitudes, axes

FIELDS = {  # item code and default
    "dataClass": (1, 1),
    "columnQuantity": (11, 0),
    "columnResolution": (12, 0.0),
    "columnOffset": (13, 0.0),
    "columnUnits": (14, 2),
    "rowQuantity": (15, 0),
    "rowResolution": (16, 0.0),
    "rowOffset": (17, 0.0),
    "rowUnits": (18, 2),
    "sampleQuantity": (19, 0),
    "sampleResolution": (20, 0.0),
    "sampleOffset": (21, 0.0),
    "sampleUnits": (22, 1),
    "dataMinimum": (25, 0.0),
    "dataMaximum": (26, 0.0),
    "dataResolution": (27, 1.0),
    "dataOffset": (28, 0.0),
    "probeAngle": (29, 0.0),
    "partThickness": (34, 0.0),
    "inspectionRadius": (35, 0.0),
    "probeSeparation": (36, 0.0),
    "soundSpeed": (37, 0.0),
    "tofd": (38, 0),
    "inspectionGeometry": (39, 0),
    "geometryKind": (40, 0),
    "cellSize": (41, 0),
    "sampleSize": (42, 0),
    "fileFormat": (43, 0),
    "storageMode": (44, 0),
    "byteSwap": (45, 0),
    "dataType": (47, 5),
    "rectification": (48, 0),
    "dataScale": (49, 0),
    "samples": (100, None),
}
I8, U8, I16, U16 = 2, 3, 4, 5
SIZES = {I8: 1, U8: 1, I16: 2, U16: 2}
LETTERS = {I8: "b", U8: "B", I16: "h", U16: "H"}
ONE_SAMPLE_A_CELL = (2, 3, 12, 13, 14, 15, 17)
LITTLE_ENDIAN = (2, 3, 5, 6, 7, 8, 9, 12, 13, 16, 17)
POSITIONS = (3, 12, 13)
ANALOG_SCALED, ANGLE = 8, 17
MASTER = 0x8000
SECOND, METRE, DEGREE = 1, 2, 3
OFFSET_BINARY = 1
LOGARITHMIC = 1
NO_BOOKMARK, COUPLING_GATE = 0xFFFFFFFF, 140
LARGEST_QUANTITY = (1 << 31) - 1
LARGEST_TABLE = (1 << 63) - 1


def finite(number, otherwise=0.0):
    return number if math.isfinite(number) else otherwise


def is_above_zero(number):
    return math.isfinite(number) and number > 0


def above_zero(number, otherwise):
    return number if is_above_zero(number) else otherwise


def single(number):
    """Rounded to 32 bits, as records hold it."""
    try:
        return struct.unpack("<f", struct.pack("<f", number))[0]
    except OverflowError:
        return math.copysign(math.inf, number)


@dataclass(frozen=True)
class Axis:
    offset: float
    step: float
    units: int  # 1 s, 2 m, 3 degrees

    def at(self, index):
        return self.offset + index * self.step

    def millimetres(self, index):
        return self.at(index) * 1e3

    def microseconds(self, index):
        return self.at(index) * 1e6


class DataGroup:
    """A data group with its fields as attributes: those of FIELDS."""

    def __init__(self, record):
        self.record = record
        for name, (code, default) in FIELDS.items():
            setattr(self, name, record.items.get(code, default))
        self.plain_class = self.dataClass & ~MASTER
        self.holds_positions = self.plain_class in POSITIONS
        self.is_empty = 0 in (self.columnQuantity, self.rowQuantity, self.samples_of_cell())
        extent = self.dataMaximum - self.dataMinimum
        self.has_range = math.isfinite(extent) and extent > 0
        self._repair()
        self._take_for_what_it_means()
        self._chunks = None

    def bookmark_type(self):
        """The kind of view that it is listed under."""
        given = self.record.key(BOOKMARK)
        if given not in (0, NO_BOOKMARK):
            return given
        if self.record.key(8) == COUPLING_GATE:
            return 10
        sub_channel = self.record.number
        if sub_channel is None:
            sub_channel = id_of(self.record)[1]
        if sub_channel or self.dataClass & MASTER:
            return 17 if self.tofd == 1 else 1
        return 3 if self.tofd == 1 else 2

    def samples_of_cell(self):
        return 1 if self.plain_class in ONE_SAMPLE_A_CELL else self.sampleQuantity

    def _repair(self):
        """What cannot be meant."""
        quantities = ("columnQuantity", "rowQuantity", "sampleQuantity")
        for name in quantities:
            if not 0 < getattr(self, name) <= LARGEST_QUANTITY:
                setattr(self, name, 1)
        self.sampleSize = max(self.sampleSize, SIZES.get(self.dataType, 0))
        cell = max(self.cellSize, self.sampleSize * self.sampleQuantity)
        if cell * self.columnQuantity * self.rowQuantity > LARGEST_TABLE:
            for name in quantities:
                setattr(self, name, 1)
        for name in ("columnOffset", "rowOffset", "sampleOffset", "dataOffset", "dataMinimum"):
            setattr(self, name, finite(getattr(self, name)))
        self.partThickness = finite(self.partThickness)
        self.probeAngle = single(89.999) if self.probeAngle >= 90 else finite(self.probeAngle)
        self.hasSeparation = is_above_zero(self.probeSeparation)
        self.hasRadius = is_above_zero(self.inspectionRadius)
        self.probeSeparation = above_zero(self.probeSeparation, single(0.001))
        self.inspectionRadius = above_zero(self.inspectionRadius, single(0.0573))
        if self.holds_positions and -math.inf < self.dataResolution < 0:
            self.dataResolution = single(2e-8)

    def _take_for_what_it_means(self):
        """From samples to values."""
        if self.plain_class != ANGLE and self.dataMinimum >= 0:
            extent = single(self.dataMaximum - self.dataMinimum)
            if self.rectification:
                if self.dataType == I8 and extent <= 256:
                    self.dataType = U8
                elif self.dataType == I16 and extent <= 65535:
                    self.dataType = U16
            elif self.plain_class != 3:
                if self.dataType == U8:
                    self._take_for_offset_binary(I8, 128)
                elif self.dataType == U16 and self.plain_class != ANALOG_SCALED:
                    self._take_for_offset_binary(I16, 32768)
        self.is_offset_binary = (
            self.dataType in (I8, I16)
            and self.fileFormat & OFFSET_BINARY != 0
            and self.rectification == 0
        )

    def _take_for_offset_binary(self, data_type, middle):
        self.dataType = data_type
        self.fileFormat |= OFFSET_BINARY
        self.dataMinimum = single(self.dataMinimum - middle)
        self.dataMaximum = single(self.dataMaximum - middle)

    # ---- samples

    def values(self, row, column):
        """The values of a cell, one after the other in time. Raises ValueError where the block is
        not what the record says, DamagedFile where it is damaged."""
        self._check_layout()
        if not (0 <= row < self.rowQuantity and 0 <= column < self.columnQuantity):
            raise ValueError("there is no such cell")
        quantity = self.samples_of_cell()
        at = self._place_of(row * self.columnQuantity + column)
        if at is None:
            return [0] * quantity
        is_swapped = self.byteSwap != 0 and (
            self.dataClass & MASTER != 0 or self.plain_class not in LITTLE_ENDIAN
        )
        letter = LETTERS[self.dataType]
        if self.is_offset_binary:
            letter = letter.upper()
        stored = struct.unpack(
            f"{'>' if is_swapped else '<'}{quantity}{letter}",
            self._bytes(at, quantity * self.sampleSize),
        )
        if not self.is_offset_binary:
            return list(stored)
        middle = 128 if self.dataType == I8 else 32768
        return [value - middle for value in stored]

    def _check_layout(self):
        size = SIZES.get(self.dataType)
        if self.is_empty or self.samples is None or self.samples.size == 0:
            raise ValueError("there are no samples")
        if self.sampleSize != size:
            raise ValueError("this reader knows samples of 8 and 16 bits")
        cells = self.rowQuantity * self.columnQuantity
        self._extent = self.samples_of_cell() * size
        self._step = max(self._extent, self.cellSize)
        if self.storageMode not in (0, 1):
            raise ValueError("a storage mode that is not known")
        if cells * (4 if self.storageMode else self._step) > self.samples.size:
            raise ValueError("the samples are fewer than the cells take")
        if self.storageMode == 0:
            if self._step % size:
                raise ValueError("cells that do not hold samples")
            return
        for (offset,) in struct.iter_unpack("<I", self._bytes(0, 4 * cells)):
            fits = 4 * cells <= offset <= self.samples.size - self._extent
            if offset and (not fits or offset % size):
                raise ValueError("an offset that leads nowhere")

    def _place_of(self, cell):
        if self.storageMode == 0:
            return cell * self._step
        return struct.unpack("<I", self._bytes(4 * cell, 4))[0] or None

    def _bytes(self, offset, size):
        return self.record.block_file.read_part(self.samples, offset, size)

    # ---- amplitudes

    def percent(self, value):
        """Of full scale; NaN where the range has no extent."""
        if not self.has_range:
            return math.nan
        if self.dataScale == LOGARITHMIC:
            decades = (self.dataOffset + value * self.dataResolution) / 20
            return 100 * 10**decades if decades < 300 else math.inf
        below = -self.dataMinimum if self.dataMinimum < 0 else self.dataMaximum
        full_scale = self.dataMaximum if value >= 0 else below
        return 100 * value / full_scale if full_scale else math.nan

    def quantity(self, value):
        """What a value is of a class that holds no amplitudes, in dataUnits; positions too."""
        if self.plain_class == ANALOG_SCALED:
            value = self.percent(value)
        return self.dataOffset + value * self.dataResolution

    def decibels(self, percent):
        """The level of an amplitude; NaN where it has none."""
        if self.plain_class == ANALOG_SCALED:
            return math.nan
        return 20 * math.log10(abs(percent) / 100) if percent else -math.inf

    # ---- axes

    def columns(self):
        return axis_of(
            self.columnOffset, self.columnResolution, self.columnUnits, (METRE, DEGREE)
        )

    def rows(self):
        return axis_of(self.rowOffset, self.rowResolution, self.rowUnits, (METRE, DEGREE))

    def times(self):
        """The axis of the samples, of a position C-scan that of its values; None without one."""
        offset, step = (
            (self.dataOffset, self.dataResolution)
            if self.holds_positions
            else (self.sampleOffset, abs(self.sampleResolution))
        )
        return axis_of(offset, step, self.sampleUnits, (SECOND, METRE))

    def half_path(self, index):
        """Metres of one-way path; None where it is not known."""
        axis = self.times()
        has_speed = math.isfinite(self.soundSpeed) and self.soundSpeed > 0
        if not axis or axis.units != SECOND or not has_speed:
            return None
        return axis.at(index) * self.soundSpeed / 2

    def depth(self, index):
        path = self.half_path(index)
        return None if path is None else path * math.cos(math.radians(self.probeAngle))

    def tofd_depth(self, index):
        """Metres of depth of a diffracting tip; None before the lateral wave."""
        path = self.half_path(index)
        if self.tofd != 1 or path is None or not self._knows_probes():
            return None
        half, rise = self._probes()
        if not path >= half:
            return None
        return rise + math.sqrt(path * path - half * half)

    def _knows_probes(self):
        """Whether their places follow from what is stored."""
        if self.inspectionGeometry not in (1, 2):
            return self.hasSeparation
        return (
            self.hasSeparation
            and self.hasRadius
            and self.inspectionRadius > self.partThickness
            and single(self.probeSeparation / self._diameter()) < math.pi
        )

    def _diameter(self):
        """Of the surface that the probes are on."""
        is_outer = self.geometryKind in (16, 17)
        return single(2 * self.inspectionRadius - (0 if is_outer else 2 * self.partThickness))

    def _probes(self):
        """Half the way between the two probes, and how far the surface rises above it."""
        separation = self.probeSeparation
        if self.inspectionGeometry not in (1, 2):
            return separation / 2, 0
        is_outer = self.geometryKind in (16, 17)
        diameter = self._diameter()
        angle = single(separation / diameter)
        rise = diameter / 2 * (1 - math.cos(angle))
        return diameter * math.sin(angle) / 2, rise if is_outer else -rise


def axis_of(offset, step, units, known):
    """None of an axis that counts indices."""
    is_position = units in known and math.isfinite(step) and step != 0
    return Axis(offset, step, units) if is_position else None

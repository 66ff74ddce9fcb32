"""XXH3 of 64 bits with seed 0, the checksum of inspection files, in plain Python (a few megabytes a
second).

The algorithm is public; its constants and steps follow the published description of the hash
family.
"""
import struct
from operator import mul

_SECRET = bytes.fromhex(
    "b8fe6c3923a44bbe7c01812cf721ad1cded46de9839097db7240a4a4b7b3671f"
    "cb79e64eccc0e578825ad07dccff7221b8084674f743248ee03590e6813a264c"
    "3c2852bb91c300cb88d0658b1b532ea371644897a20df94e3819ef46a9deacd8"
    "a8fa763fe39c343ff9dcbbc7c70b4f1d8a51e04bcdb45931c89f7ec9d9787364"
    "eac5ac8334d3ebc3c581a0fffa1363eb170ddd51b7f0da49d316552629d4689e"
    "2b16be587d47a1fc8ff8b8d17ad031ce45cb3a8f95160428afd7fbcabb4b407e"
)
_M32, _M64 = (1 << 32) - 1, (1 << 64) - 1
_P32_1, _P32_2, _P32_3 = 0x9E3779B1, 0x85EBCA77, 0xC2B2AE3D
_P64_1, _P64_2, _P64_3 = 0x9E3779B185EBCA87, 0xC2B2AE3D27D4EB4F, 0x165667B19E3779F9
_P64_4, _P64_5 = 0x85EBCA77C2B2AE63, 0x27D4EB2F165667C5
_STRIPE, _LANES, _BLOCK_STRIPES = 64, 8, 16
_BLOCK = _STRIPE * _BLOCK_STRIPES


def _u32(data, at):
    return int.from_bytes(data[at : at + 4], "little")


def _u64(data, at):
    return int.from_bytes(data[at : at + 8], "little")


def _lanes(data, at):
    return struct.unpack_from("<8Q", data, at)


def _swap(value, size):
    return int.from_bytes(value.to_bytes(size, "little"), "big")


def _rotate(value, bits):
    return (value << bits | value >> (64 - bits)) & _M64


def _fold(a, b):
    product = a * b
    return (product & _M64) ^ (product >> 64)


def _avalanche(value):
    value &= _M64
    value ^= value >> 37
    value = value * 0x165667919E3779F9 & _M64
    return value ^ value >> 32


def _avalanche_short(value):
    value ^= value >> 33
    value = value * _P64_2 & _M64
    value ^= value >> 29
    value = value * _P64_3 & _M64
    return value ^ value >> 32


def _up_to_16(data):
    size = len(data)
    if size > 8:
        low = _u64(data, 0) ^ _u64(_SECRET, 24) ^ _u64(_SECRET, 32)
        high = _u64(data, size - 8) ^ _u64(_SECRET, 40) ^ _u64(_SECRET, 48)
        return _avalanche(size + _swap(low, 8) + high + _fold(low, high))
    if size >= 4:
        value = (
            (_u32(data, size - 4) + (_u32(data, 0) << 32)) ^ _u64(_SECRET, 8) ^ _u64(_SECRET, 16)
        )
        value ^= _rotate(value, 49) ^ _rotate(value, 24)
        value = value * 0x9FB21C651E98DF25 & _M64
        value ^= (value >> 35) + size
        value = value * 0x9FB21C651E98DF25 & _M64
        return value ^ value >> 28
    if size:
        joined = data[size - 1] | size << 8 | data[0] << 16 | data[size >> 1] << 24
        return _avalanche_short(joined ^ _u32(_SECRET, 0) ^ _u32(_SECRET, 4))
    return _avalanche_short(_u64(_SECRET, 56) ^ _u64(_SECRET, 64))


def _mix(data, at, secret):
    return _fold(
        _u64(data, at) ^ _u64(_SECRET, secret), _u64(data, at + 8) ^ _u64(_SECRET, secret + 8)
    )


def _up_to_128(data):
    size = len(data)
    total = size * _P64_1
    for pair in range((size - 1) // 32 + 1):
        total += _mix(data, 16 * pair, 32 * pair) + _mix(
            data, size - 16 * (pair + 1), 32 * pair + 16
        )
    return _avalanche(total)


def _up_to_240(data):
    size = len(data)
    total = _avalanche(size * _P64_1 + sum(_mix(data, at, at) for at in range(0, 128, 16)))
    total += sum(_mix(data, at, at - 128 + 3) for at in range(128, size // 16 * 16, 16))
    return _avalanche(total + _mix(data, size - 16, 119))


# The key of each word of a block: a stripe's secret starts 8 bytes after that of the stripe before.
_BLOCK_KEYS = [key for stripe in range(_BLOCK_STRIPES) for key in _lanes(_SECRET, 8 * stripe)]
_SCRAMBLE_KEYS = _lanes(_SECRET, len(_SECRET) - _STRIPE)
_LAST_KEYS = _lanes(_SECRET, len(_SECRET) - _STRIPE - 7)


def _accumulate(sums, words, keys):
    """Adds whole stripes to the eight sums: each word to its neighbour's lane, and the product of
    its keyed halves to its own."""
    keyed = [word ^ key for word, key in zip(words, keys)]
    products = list(map(mul, [value & _M32 for value in keyed], [value >> 32 for value in keyed]))
    for lane in range(_LANES):
        sums[lane] = (
            sums[lane] + sum(products[lane::_LANES]) + sum(words[lane ^ 1 :: _LANES]) & _M64
        )


def _long(data):
    size = len(data)
    sums = [_P32_3, _P64_1, _P64_2, _P64_3, _P64_4, _P32_2, _P64_5, _P32_1]
    blocks = (size - 1) // _BLOCK
    block = struct.Struct(f"<{_BLOCK // 8}Q")
    for at in range(0, blocks * _BLOCK, _BLOCK):
        _accumulate(sums, block.unpack_from(data, at), _BLOCK_KEYS)
        sums = [
            (value ^ value >> 47 ^ key) * _P32_1 & _M64 for value, key in zip(sums, _SCRAMBLE_KEYS)
        ]
    stripes = (size - 1 - blocks * _BLOCK) // _STRIPE
    words = struct.unpack_from(f"<{stripes * _LANES}Q", data, blocks * _BLOCK)
    _accumulate(sums, words, _BLOCK_KEYS)
    _accumulate(sums, _lanes(data, size - _STRIPE), _LAST_KEYS)
    total = size * _P64_1
    for pair in range(4):
        at = 11 + 16 * pair
        total += _fold(
            sums[2 * pair] ^ _u64(_SECRET, at), sums[2 * pair + 1] ^ _u64(_SECRET, at + 8)
        )
    return _avalanche(total)


def xxh3_64(data):
    """The checksum of a bytes-like object, as an unsigned number of 64 bits."""
    size = len(data)
    if size <= 16:
        return _up_to_16(data)
    if size <= 128:
        return _up_to_128(data)
    return _up_to_240(data) if size <= 240 else _long(data)

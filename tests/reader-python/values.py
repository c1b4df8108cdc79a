"""Values of attributes and rows."""

import re
import struct

ESCAPE = re.compile(r"\\x([0-9a-f]{2})")


def text(value):
    """A text attribute: its escapes are bytes again."""
    return ESCAPE.sub(lambda found: chr(int(found[1], 16)), value)


def doubles(attributes, counts):
    """Little-endian bytes of the numbers in these attributes, so many each; zeros for those that aren't there."""
    numbers = []
    for name, count in counts.items():
        words = attributes.get(name, "").split()[:count]
        numbers += [float(word) for word in words] + [0.0] * (count - len(words))
    return struct.pack(f"<{len(numbers)}d", *numbers)


def floats(rows):
    """Little-endian bytes of the floats in these rows."""
    words = b"".join(rows).split()
    return struct.pack(f"<{len(words)}f", *map(float, words))


def row_bytes(rows):
    """The bytes of rows, each two digits and a blank."""
    return bytes.fromhex(b"".join(rows).decode("ascii"))

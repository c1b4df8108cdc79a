#!/usr/bin/env python3
"""Do the pages of two logs look the same? The exit status is 1 if they don't.

    compare.py LOG LOG2
"""

import sys
from typing import Iterator, Optional, Tuple

import orvlog


def differences(one: str, other: str) -> Iterator[Tuple[int, Optional[int], int]]:
    """For each page the number of rows that differ, of how many; None for a page that only one log has, or that has
    another size in the other."""
    with orvlog.open(one) as first, orvlog.open(other) as second:
        count = sum(1 for _ in first.pages())
        others = sum(1 for _ in second.pages())
        for page in range(1, max(count, others) + 1):
            if page > min(count, others):
                yield page, None, 0
                continue
            a, b = first.draw(page), second.draw(page)
            if (a.width, a.height) != (b.width, b.height):
                yield page, None, a.height
                continue
            row = 3 * a.width
            rows = range(0, len(a.data), row)
            yield page, sum(a.data[at:at + row] != b.data[at:at + row] for at in rows), a.height


if __name__ == "__main__":
    found = list(differences(*sys.argv[1:3]))
    for page, rows, height in found:
        print(f"page {page}: " + ("another size, or missing" if rows is None else f"{rows} of {height} rows differ"))
    sys.exit(any(rows != 0 for _, rows, _ in found))

#!/usr/bin/env python3
"""Which texts does a job draw, how often, and in which sizes?

    texts.py LOG
"""

import collections
import sys
from typing import Counter, DefaultDict, Tuple

import orvlog


def texts(path: str) -> Tuple[DefaultDict[int, Counter[str]], Counter[float]]:
    """For each page the texts with their count, and for each font size the characters drawn in it."""
    pages: DefaultDict[int, Counter[str]] = collections.defaultdict(collections.Counter)
    sizes: Counter[float] = collections.Counter()
    with orvlog.open(path) as log:
        for call in log.calls(data=False):
            if not call.text:
                continue
            pages[call.page][call.text] += 1
            for font in call.find("GFI_FontSpec"):
                size = font.get("ufs_FontSize")
                if isinstance(size, float):
                    sizes[round(size, 2)] += len(call.text)
    return pages, sizes


if __name__ == "__main__":
    by_page, by_size = texts(sys.argv[1])
    for page, found in sorted(by_page.items()):
        print(f"page {page}: {sum(found.values())} texts, first {next(iter(found))!r}")
    for size, count in by_size.most_common(5):
        print(f"size {size}: {count} characters")

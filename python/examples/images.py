#!/usr/bin/env python3
"""Which images does a job bring, how fine are they on the page, and how bright?

    images.py LOG
"""

import sys
from typing import Iterator, Optional, Tuple

import orvlog


def images(path: str) -> Iterator[Tuple[int, orvlog.Image, Optional[float], Optional[float]]]:
    """Page, image, pixels of the image for each pixel of the page, and the mean of its samples, of one."""
    with orvlog.open(path) as log:
        for call in log.calls():
            for image in call.images():
                fine = image.width / (call.box[2] - call.box[0]) if call.box and call.box[2] > call.box[0] else None
                try:
                    pixels = image.array()
                except ValueError:
                    continue
                # As bytes, so that it works without NumPy as well.
                samples = pixels.tobytes() if image.depth <= 8 else b""
                top = 255 if image.depth == 8 else (1 << image.depth) - 1
                mean = sum(samples) / len(samples) / top if samples else None
                yield call.page, image, fine, mean


if __name__ == "__main__":
    for page, image, fine, mean in images(sys.argv[1]):
        density = "?" if fine is None else f"{fine:.2f}"
        brightness = "?" if mean is None else f"{mean:.3f}"
        print(f"page {page}: {image!r}, {density} to a pixel, mean {brightness}")

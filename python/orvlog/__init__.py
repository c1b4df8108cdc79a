"""Reads logs of rendering jobs: pages and calls as objects with the names of the records, images and paths as arrays,
pages drawn again.

    import orvlog

    with orvlog.open("job.xml.zst") as log:
        for call in log.calls(page=2):
            print(call.address, call.kind, call.operator, call.colour, call.text)
        picture = log.draw(2)

A log may be plain, coded, in Zstandard frames or repacked. It may come from anybody: what is no log, or can't be read,
raises LogError, and what is damaged is told by Log.damage. docs/log-format.md tells what stands in it.
"""

from ._native import LogError
from .elements import Element, Value
from .images import Image, images_of
from .log import Call, Comment, Damage, Log, Page, Picture, open
from .paths import Edge, Path, paths_of

__all__ = ["Call", "Comment", "Damage", "Edge", "Element", "Image", "Log", "LogError", "Page", "Path", "Picture", "Value",
           "images_of", "open", "paths_of"]

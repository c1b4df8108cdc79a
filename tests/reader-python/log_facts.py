"""What a log says, as plain facts: counts, sizes and hashes."""

import hashlib
import os

import coded_log
import ticket_text
import values
from log_text import LogText

PAINTS = ("ORV_object_paint", "ORV_object_paint_and_stroke", "ORV_resource_paint")
GLYPHS = ("GFI_GlyphDescFBE", "GFI_GlyphDescBitmap", "GFI_GlyphDescPath", "GFI_GlyphDescTrueType", "GFI_GlyphDescRLE")
IMAGE_CALLBACKS = ("GOP_ImagePrepareFn", "GOP_ImageFinishFn")
SEGMENTS = {
    "GGO_Vector": {"gvf_X": 1, "gvf_Y": 1},
    "GPA_BezierSegment": {"bs_StartTangent": 2, "bs_EndTangent": 2, "bs_EndPoint": 2},
    "GPA_QuadBezierSegment": {"qs_ControlPoint": 2, "qs_EndPoint": 2},
    "GPA_StaircaseSegment": {"ss_XOffset": 1, "ss_YOffset": 1},
    "GPA_EllipticalSegment": {"es_XRadius": 1, "es_YRadius": 1, "es_AngleToXAxis": 1, "es_EndPoint": 2},
}
WARNING = b"ORVLOG: WARNING: "


def innermost(above, *names):
    return next((element for element in reversed(above) if element.name in names), None)


class Hash:
    """Bytes counted and hashed."""

    def __init__(self):
        self.bytes = 0
        self.sum = hashlib.sha256()

    def add(self, more):
        self.bytes += len(more)
        self.sum.update(more)

    def facts(self):
        return {"bytes": self.bytes, "sha256": self.sum.hexdigest()}


class Image:
    def __init__(self, number):
        self.number, self.size = number, [None, None]
        self.direct, self.read, self.attributes = None, Hash(), Hash()

    def facts(self):
        return {"id": int(self.number or 0), "size": self.size, "direct": self.direct and self.direct.facts(),
                "read": self.read.facts(), "attributes": self.attributes.facts()}


class Path:
    """Start points and edges belong together by their index; of a path that was cut one list can be the longer."""

    def __init__(self, attributes):
        self.box = values.doubles(attributes, {"pa_EnclosingBox": 4})
        self.starts, self.edges = [], []

    def numbers(self):
        return self.box + b"".join(self.starts[:len(self.edges)] + self.edges[:len(self.starts)])


class Facts:
    """Takes the parts of a log as LogText gives them."""

    def __init__(self, folder):
        self.folder = folder
        self.reader = LogText(self)
        self.root, self.elements, self.tags = {}, {}, hashlib.sha256()
        self.comments = self.warnings = 0
        self.left_open = {}
        self.pages, self.page_of = [], {}
        self.images, self.image_of = [], {}
        self.side_files, self.side_offsets = {}, {}
        self.glyphs, self.tickets = {}, []
        self.paths, self.last_path = [], None

    # Parts of the log

    def start(self, element, above):
        name, attributes = element.name, element.attributes
        self.elements[name] = self.elements.get(name, 0) + 1
        self.tags.update(f"<{name}\n".encode())
        for key, value in attributes.items():
            self.tags.update(f"{key}={value}\n".encode("latin-1"))
        if name == "ORV" and not above:
            self.root = dict(attributes)
        elif name in PAINTS:
            self.paint(name, attributes)
        elif name in SEGMENTS:
            if self.last_path and self.last_path.edges:
                self.last_path.edges[-1] += values.doubles(attributes, SEGMENTS[name])
        else:
            handle = getattr(self, "on_" + name, None)
            if handle:
                handle(attributes, above)

    def end(self, element, above):
        if element.name == "BufferUInt8":
            more = values.row_bytes(element.rows)
            self.tags.update(more)
            if above:
                self.bytes_of(above, more)
        elif element.name == "BufferFloat":
            self.tags.update(values.floats(element.rows))
        self.tags.update(f">{element.name}\n".encode())
        if element.left_open:
            self.left_open[element.name] = self.left_open.get(element.name, 0) + 1
        if element.name == "GPA_PathPointer":
            self.path(above)
        elif element.name == "GOP_ImageKeepFn":
            self.kept_image(values.text(element.attributes.get("async_img_log_file_name", "")))

    def bytes_of(self, above, more):
        owner = above[-1].name
        if owner in ("img_buf", "attr_buf"):
            read = innermost(above, "GOP_ImageReadFn")
            if read:
                self.image_bytes(read.attributes, owner == "img_buf", more)
        elif owner == "imp_DirectImageData" and self.images and self.images[-1].direct:
            self.images[-1].direct.add(more)
        elif owner in self.glyphs:
            self.glyphs[owner][1].add(more)

    def comment(self, text):
        self.comments += 1
        self.warnings += text.startswith(WARNING)

    def ticket(self, element, text, prefix):
        number = int(element.attributes.get("id", 0)) if element else 0
        self.tickets.append({"id": number, **ticket_text.facts(text, prefix)})
        if not ticket_text.is_whole(text, prefix):
            self.left_open["GXC_ColorTickets"] = self.left_open.get("GXC_ColorTickets", 0) + 1

    # Pages

    def on_ORV_face_start(self, attributes, _):
        self.pages.append({"size": [None, None], "paints": {}})
        self.page_of[attributes.get("drawing_context")] = self.pages[-1]

    def on_ORV_FaceProperties(self, attributes, above):
        if innermost(above, "ORV_face_start"):
            self.pages[-1]["size"] = [int(attributes.get(key, 0)) for key in ("fp_WidthInPixels", "fp_HeightInPixels")]

    def paint(self, name, attributes):
        page = self.page_of.get(attributes.get("drawing_context"))
        if page:
            page["paints"][name] = page["paints"].get(name, 0) + 1

    # Images

    def on_GOP_OperandImagePointer(self, attributes, above):
        number, callback = attributes.get("Id"), innermost(above, *IMAGE_CALLBACKS)
        if not callback:
            self.image_of[number] = Image(number)
            self.images.append(self.image_of[number])
            if "imp_DirectImageFileName" in attributes:
                self.images[-1].direct = Hash()
                self.images[-1].direct.add(self.side_file(attributes["imp_DirectImageFileName"]))
        elif callback.name == "GOP_ImagePrepareFn" and callback.attributes.get("Id") in self.image_of:
            self.image_of[number] = self.image_of[callback.attributes["Id"]]

    def on_imp_DirectImageData(self, _, above):
        if self.images and not innermost(above, *IMAGE_CALLBACKS):
            self.images[-1].direct = Hash()

    def on_GOP_Operand(self, _, above):
        record = above[-1] if above else None
        if record and record.name == "GOP_OperandImage" and self.images and not innermost(above, *IMAGE_CALLBACKS):
            self.images[-1].size = [int(record.attributes.get(key, 0))
                                    for key in ("im_ImageWidthPixels", "im_ImageHeightPixels")]

    def on_GOP_ImageReadFn(self, attributes, _):
        for is_image, name, length in ((True, "ImageFileName", "img_returned"),
                                       (False, "AttrFileName", "attr_returned")):
            if name in attributes and attributes.get("return") == "TRUE":
                begin = self.side_offsets.get(attributes[name], 0)
                end = begin + max(int(attributes.get(length, 0)), 0)
                self.side_offsets[attributes[name]] = end
                self.image_bytes(attributes, is_image, self.side_file(attributes[name])[begin:end])

    def image_bytes(self, read, is_image, more):
        image = self.image_of.get(read.get("Id"))
        if image:
            (image.read if is_image else image.attributes).add(more)

    def side_file(self, name):
        if name not in self.side_files:
            self.side_files[name] = read_file(os.path.join(self.folder, values.text(name))) or b""
        return self.side_files[name]

    def kept_image(self, name):
        content = name and read_file(os.path.join(self.folder, name))
        if content:
            self.reader.read(content)

    # Paths and glyphs

    def on_GPA_PathPointer(self, *_):
        self.last_path = None

    def on_GPA_Path(self, attributes, _):
        self.last_path = Path(attributes)

    def on_GGO_Point(self, attributes, _):
        if self.last_path:
            self.last_path.starts.append(values.doubles(attributes, {"gpf_X": 1, "gpf_Y": 1}))

    def on_GPA_EdgePointer(self, *_):
        if self.last_path:
            self.last_path.edges.append(b"")

    def path(self, above):
        if not self.last_path:
            return
        numbers = self.last_path.numbers()
        edges = min(len(self.last_path.starts), len(self.last_path.edges))
        self.paths.append({"edges": edges, "sha256": hashlib.sha256(numbers).hexdigest()})
        if "GFI_GlyphDescPath" in self.glyphs and innermost(above, "GFI_GlyphDescPointer"):
            self.glyphs["GFI_GlyphDescPath"][1].add(numbers)

    def on_GFI_GlyphDesc(self, _, above):
        if above and above[-1].name in GLYPHS:
            self.glyphs.setdefault(above[-1].name, [0, Hash()])[0] += 1

    # All of it

    def facts(self):
        return {
            "root": self.root,
            "calls": {name: count for name, count in self.elements.items() if is_call(name)},
            "elements": self.elements,
            "tags": self.tags.hexdigest(),
            "comments": self.comments,
            "warnings": self.warnings,
            "pages": self.pages,
            "images": [image.facts() for image in self.images],
            "glyphs": {name: {"count": count, **payload.facts()} for name, (count, payload) in self.glyphs.items()},
            "paths": self.paths,
            "tickets": self.tickets,
            "left_open": self.left_open,
        }


def is_call(name):
    return name.startswith("ORV_") and "." not in name and not name.endswith("Properties")


def read_file(name):
    try:
        with open(name, "rb") as file:
            return file.read()
    except OSError:
        return None


def of_log(name):
    """The facts of a log, plain or coded, with the files that lie beside it."""
    with open(name, "rb") as file:
        text = file.read()
    coded = text.startswith(coded_log.HEADER)
    rest = len(text) - len(text.rstrip(b"\0"))
    if not coded or rest >= 16:
        text = text.rstrip(b"\0")
    if coded:
        text = coded_log.decode(text)
    facts = Facts(os.path.dirname(name))
    facts.reader.read(text)
    return {**facts.facts(), "coded": coded}

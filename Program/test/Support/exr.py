"""A small reader and writer of OpenEXR files for tests, independent of the program's own: scan lines, any parts, channels
and attributes; reads files without compression, ZIPS and ZIP, writes them without compression."""
import itertools
import struct
import zlib

UINT, HALF, FLOAT = 0, 1, 2
COMPRESSIONS = ["none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"]
LINES_PER_BLOCK = {0: 1, 2: 1, 3: 16}
CODES = {UINT: "I", HALF: "e", FLOAT: "f"}
SIZES = {UINT: 4, HALF: 2, FLOAT: 4}


class Part:
    """One picture. Windows are (minX, minY, maxX, maxY); `channels` maps a name to (type, rows), each row a list of
    numbers; `attributes` maps a name to (type, bytes) and holds, after reading, every attribute of the file."""

    def __init__(self, data, display=None, channels=None, attributes=None, name=None):
        self.data = tuple(data)
        self.display = tuple(display or data)
        self.channels = channels if channels is not None else {}
        self.attributes = attributes if attributes is not None else {}
        self.name = name

    @property
    def width(self):
        return self.data[2] - self.data[0] + 1

    @property
    def height(self):
        return self.data[3] - self.data[1] + 1

    @property
    def compression(self):
        return COMPRESSIONS[self.attributes["compression"][1][0]]

    def types(self):
        return {name: kind for name, (kind, _) in self.channels.items()}

    def fill(self, name, kind, function):
        """Gives a channel the value function(x, y) at each pixel of the data window."""
        x0, y0, x1, y1 = self.data
        self.channels[name] = (kind, [[function(x, y) for x in range(x0, x1 + 1)] for y in range(y0, y1 + 1)])
        return self

    def at(self, name, x, y):
        """The value at a pixel given as the file counts."""
        return self.channels[name][1][y - self.data[1]][x - self.data[0]]

    def text(self, name):
        return self.attributes[name][1].decode()


def text(value):
    return "string", value.encode()


def timecode(hours, minutes, seconds, frames):
    def packed(number):
        return number // 10 << 4 | number % 10
    word = packed(frames) | packed(seconds) << 8 | packed(minutes) << 16 | packed(hours) << 24
    return "timecode", struct.pack("<II", word, 0)


def write(path, *parts):
    out = bytearray(struct.pack("<II", 20000630, 2 | (0x1000 if len(parts) > 1 else 0)))
    for number, part in enumerate(parts):
        names = b"".join(name.encode() + b"\0" + struct.pack("<iIii", kind, 0, 1, 1)
                         for name, (kind, _) in sorted(part.channels.items()))
        attributes = {
            "channels": ("chlist", names + b"\0"), "compression": ("compression", b"\0"),
            "dataWindow": ("box2i", struct.pack("<4i", *part.data)),
            "displayWindow": ("box2i", struct.pack("<4i", *part.display)), "lineOrder": ("lineOrder", b"\0"),
            "pixelAspectRatio": ("float", struct.pack("<f", 1)),
            "screenWindowCenter": ("v2f", struct.pack("<2f", 0, 0)),
            "screenWindowWidth": ("float", struct.pack("<f", 1)), **part.attributes}
        if len(parts) > 1:
            attributes["name"] = text(part.name or f"part{number}")
            attributes["type"] = text("scanlineimage")
            attributes["chunkCount"] = ("int", struct.pack("<i", part.height))
        for name, (kind, value) in attributes.items():
            out += name.encode() + b"\0" + kind.encode() + b"\0" + struct.pack("<i", len(value)) + value
        out += b"\0"
    if len(parts) > 1:
        out += b"\0"
    tables = len(out)
    out += bytes(8 * sum(part.height for part in parts))
    for number, part in enumerate(parts):
        for row in range(part.height):
            struct.pack_into("<Q", out, tables, len(out))
            tables += 8
            line = b"".join(struct.pack(f"<{part.width}{CODES[kind]}", *rows[row])
                            for _, (kind, rows) in sorted(part.channels.items()))
            out += (struct.pack("<i", number) if len(parts) > 1 else b"")
            out += struct.pack("<ii", part.data[1] + row, len(line)) + line
    with open(path, "wb") as file:
        file.write(out)


def unzip(block, size):
    if len(block) == size:
        return block
    split = bytes(itertools.accumulate(zlib.decompress(block), lambda a, b: (a + b - 128) & 255))
    merged = bytearray(size)
    half = (size + 1) // 2
    merged[0::2] = split[:half]
    merged[1::2] = split[half:]
    return bytes(merged)


class Reader:
    def __init__(self, path):
        with open(path, "rb") as file:
            self.bytes = file.read()
        self.position = 0

    def take(self, form):
        values = struct.unpack_from("<" + form, self.bytes, self.position)
        self.position += struct.calcsize("<" + form)
        return values if len(values) > 1 else values[0]

    def word(self):
        end = self.bytes.index(b"\0", self.position)
        value = self.bytes[self.position:end].decode()
        self.position = end + 1
        return value

    def header(self):
        attributes = {}
        while name := self.word():
            kind = self.word()
            size = self.take("i")
            attributes[name] = (kind, self.bytes[self.position:self.position + size])
            self.position += size
        return attributes


def read(path):
    """All parts of a file."""
    reader = Reader(path)
    magic, version = reader.take("II")
    assert magic == 20000630, path
    is_multi = version & 0x1000
    headers = [reader.header()]
    while is_multi and (attributes := reader.header()):
        headers.append(attributes)
    parts, tables = [], []
    for attributes in headers:
        part = Part(struct.unpack("<4i", attributes["dataWindow"][1]),
                    struct.unpack("<4i", attributes["displayWindow"][1]), {}, attributes)
        part.name = part.text("name") if "name" in attributes else None
        per_block = LINES_PER_BLOCK[attributes["compression"][1][0]]
        blocks = -(-part.height // per_block)
        tables.append(reader.take(f"{blocks}Q") if blocks > 1 else (reader.take("Q"),))
        parts.append(part)
    for number, (part, offsets) in enumerate(zip(parts, tables)):
        listed = Reader.__new__(Reader)
        listed.bytes, listed.position = part.attributes["channels"][1], 0
        kinds = []
        while name := listed.word():
            kinds.append((name, listed.take("iIii")[0]))
            part.channels[name] = (kinds[-1][1], [None] * part.height)
        line_size = part.width * sum(SIZES[kind] for _, kind in kinds)
        per_block = LINES_PER_BLOCK[part.attributes["compression"][1][0]]
        for offset in offsets:
            reader.position = offset
            assert not is_multi or reader.take("i") == number
            y, size = reader.take("ii")
            first = y - part.data[1]
            lines = min(per_block, part.height - first)
            block = unzip(reader.bytes[reader.position:reader.position + size], line_size * lines)
            place = 0
            for row in range(first, first + lines):
                for name, kind in kinds:
                    part.channels[name][1][row] = list(struct.unpack_from(f"<{part.width}{CODES[kind]}", block, place))
                    place += part.width * SIZES[kind]
    return parts

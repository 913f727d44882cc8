"""Masters small discs for tests: CD, DVD with and without UDF, UMD, each with the oddities of real discs. It writes both
byte orders, all path tables and a whole UDF 1.02 bridge, so that other readers can judge what is left after an edit."""
import binascii
import struct
from dataclasses import dataclass, field

SECTOR = 2048
STAMP = bytes([110, 1, 1, 0, 0, 0, 0])
LONG_STAMP = b"2010010100000000\0"
UDF_STAMP = struct.pack("<HHBBBBBBBB", 0x1000, 2010, 1, 1, 0, 0, 0, 0, 0, 0)
POSTGAP = 150


def both16(value):
    return struct.pack("<H", value) + struct.pack(">H", value)


def both32(value):
    return struct.pack("<I", value) + struct.pack(">I", value)


def sectors(length):
    return -(-length // SECTOR)


@dataclass
class Entry:
    """A file to master. `hole` free sectors precede it; `link` names a file whose content it shares."""
    path: str
    content: bytes = b""
    hole: int = 0
    link: str = ""


@dataclass
class Master:
    """What to master. Files stand on the disc in the order of their declaration."""
    kind: str  # "cd", "dvd" or "umd"
    entries: list
    udf: bool = False
    joliet: bool = False
    joliet_behind_files: bool = False
    tables_behind: bool = False
    empty_files_own_sectors: bool = False
    hole_fill: int = 0
    attributes: bool = False
    postgap: int = 0            # sectors at the end, which begin with ...
    postgap_mark: bytes = b""   # ... this, and ...
    postgap_counted: bool = True  # ... which the volume size includes
    missing: int = 0            # sectors that the volume size includes without being there
    places: dict = field(default_factory=dict)


class Folder:
    def __init__(self, path, parent):
        self.path, self.parent = path, parent or self
        self.name = path.split("/")[-1]
        self.place, self.joliet_place, self.number = 0, 0, 1
        self.entry, self.names, self.names_length = 0, 0, 0


class Image:
    """The image while it is made."""

    def __init__(self, master):
        self.master, self.data = master, bytearray()
        self.folders = self.find_folders()
        self.next = 16

    def find_folders(self):
        root = Folder("", None)
        found = {"": root}
        for entry in self.master.entries:
            path = ""
            for part in entry.path.split("/")[:-1]:
                parent, path = found[path], path + "/" + part if path else part
                found.setdefault(path, Folder(path, parent))
        # The order of path tables: by level, then by the parent's number, then by name (ECMA-119 6.9.1).
        ordered = [root]
        for folder in ordered:
            folder.number = ordered.index(folder) + 1
            ordered += sorted((below for below in found.values() if below.parent is folder and below is not folder),
                              key=lambda below: below.name)
        return ordered

    def take(self, count):
        first = self.next
        self.next += count
        return first

    def put(self, sector, content):
        position = sector * SECTOR
        end = position + len(content)
        if len(self.data) < end:
            self.data += bytes(end - len(self.data))
        self.data[position:end] = content

    def children(self, folder):
        return ([below for below in self.folders if below.parent is folder and below is not folder],
                [entry for entry in self.master.entries if entry.path.rpartition("/")[0] == folder.path])

    # Places

    def place_everything(self):
        master = self.master
        self.descriptors = self.take(3 if master.joliet else 2)
        if master.udf:
            self.take(3)
            self.next = 257
        elif master.kind == "dvd":
            self.next = 33  # behind the sector with the mark of a DVD
        self.table_bytes = len(self.path_table(False, "<"))
        self.joliet_table_bytes = len(self.path_table(True, "<"))
        if not master.tables_behind:
            self.place_tables()
        if master.udf:
            self.place_udf()
        for folder in self.folders:
            folder.length = sectors(len(self.directory(folder, False))) * SECTOR
            folder.joliet_length = sectors(len(self.directory(folder, True))) * SECTOR
            folder.place = self.take(folder.length // SECTOR)
        if master.tables_behind:
            self.place_tables()
        if master.joliet and not master.joliet_behind_files:
            self.place_joliet()
        self.place_files()
        if master.joliet and master.joliet_behind_files:
            self.place_joliet()

    def place_tables(self):
        self.tables = [self.take(sectors(self.table_bytes)) for _ in range(4)]
        if self.master.joliet:
            self.joliet_tables = [self.take(sectors(self.joliet_table_bytes)) for _ in range(2)]

    def place_joliet(self):
        for folder in self.folders:
            folder.joliet_place = self.take(folder.joliet_length // SECTOR)

    def place_udf(self):
        """File set, then an ICB and names for each folder, then an ICB for each file."""
        self.file_set = self.take(2)
        self.entry_of = {}
        for folder in self.folders:
            folder.entry = self.take(1)
            self.entry_of[folder.path] = folder.entry
        for entry in self.master.entries:
            self.entry_of[entry.path] = self.entry_of[entry.link] if entry.link else self.take(1)
        for folder in self.folders:
            folder.names = self.next
            folder.names_length = len(self.names_of(folder))
            self.take(sectors(folder.names_length))

    def place_files(self):
        places = self.master.places
        for entry in self.master.entries:
            if entry.hole:
                first = self.take(entry.hole)
                self.put(first, bytes([self.master.hole_fill]) * (entry.hole * SECTOR))
            if entry.link:
                places[entry.path] = places[entry.link]
                continue
            own = 1 if self.master.empty_files_own_sectors else 0
            places[entry.path] = self.take(sectors(len(entry.content)) or own)

    # ISO 9660

    def record(self, name, sector, length, flags):
        """A directory record (ECMA-119 9.1), with the attributes of CD-ROM XA if wanted."""
        extra = b"\0" * 4 + (b"\x8d\x55" if flags & 2 else b"\x0d\x55") + b"XA" + bytes(6) if self.master.attributes else b""
        body = name + b"\0" * (1 - len(name) % 2) + extra
        return (bytes([33 + len(body), 0]) + both32(sector) + both32(length) + STAMP + bytes([flags, 0, 0]) + both16(1)
                + bytes([len(name)]) + body)

    def directory(self, folder, joliet):
        encode = (lambda text: text.encode("utf-16-be")) if joliet else str.encode
        place = (lambda one: (one.joliet_place, one.joliet_length)) if joliet else (lambda one: (one.place, one.length))
        folders, files = self.children(folder)
        sized = lambda one: place(one) if hasattr(one, "joliet_length") else (0, 0)
        records = [self.record(b"\0", *sized(folder), 2), self.record(b"\1", *sized(folder.parent), 2)]
        named = [(encode(below.name), self.record(encode(below.name), *sized(below), 2)) for below in folders]
        for entry in files:
            name = encode(entry.path.rpartition("/")[2] + ";1")
            length = len(self.content_of(entry))
            named.append((name, self.record(name, self.master.places.get(entry.path, 0), length, 0)))
        records += [record for _, record in sorted(named)]
        data = b""
        for record in records:
            if len(data) % SECTOR + len(record) > SECTOR:
                data += bytes(-len(data) % SECTOR)
            data += record
        return data + bytes(-len(data) % SECTOR)

    def content_of(self, entry):
        while entry.link:
            entry = next(other for other in self.master.entries if other.path == entry.link)
        return entry.content

    def path_table(self, joliet, order):
        data = b""
        for folder in self.folders:
            name = folder.name.encode("utf-16-be" if joliet else "latin-1") or b"\0"
            place = folder.joliet_place if joliet else folder.place
            data += bytes([len(name), 0]) + struct.pack(order + "IH", place, folder.parent.number)
            data += name + b"\0" * (len(name) % 2)
        return data

    def volume_descriptor(self, joliet, volume_sectors):
        encode = (lambda text, size: text.encode("utf-16-be").ljust(size, b"\0")) if joliet else (
            lambda text, size: text.encode().ljust(size))
        system = "PSP GAME" if self.master.kind == "umd" else "PLAYSTATION"
        root = self.folders[0]
        place = (root.joliet_place, root.joliet_length) if joliet else (root.place, root.length)
        tables = [self.joliet_tables[0], 0, self.joliet_tables[1], 0] if joliet else self.tables
        data = bytes([2 if joliet else 1]) + b"CD001\1\0" + encode(system, 32) + encode("SAMPLE", 32) + bytes(8)
        data += both32(volume_sectors) + (b"%/E" if joliet else b"").ljust(32, b"\0")
        data += both16(1) + both16(1) + both16(SECTOR)
        data += both32(self.joliet_table_bytes if joliet else self.table_bytes)
        data += struct.pack("<II", *tables[:2]) + struct.pack(">II", *tables[2:])
        bare, self.master.attributes = self.master.attributes, False
        data += self.record(b"\0", *place, 2)
        self.master.attributes = bare
        data += encode("", 128) * 3 + encode(system, 128) + encode("", 37) * 3
        data += LONG_STAMP * 2 + (b"0" * 16 + b"\0") * 2 + b"\1\0"
        data = data.ljust(1024, b"\0")
        return (data + (b"" if self.master.kind == "dvd" or joliet else b"CD-XA001")).ljust(SECTOR, b"\0")

    def write_iso(self, volume_sectors):
        sector = self.descriptors
        self.put(sector, self.volume_descriptor(False, volume_sectors))
        if self.master.joliet:
            sector += 1
            self.put(sector, self.volume_descriptor(True, volume_sectors))
        self.put(sector + 1, b"\xffCD001\1".ljust(SECTOR, b"\0"))
        for place, order in zip(self.tables, "<<>>"):
            self.put(place, self.path_table(False, order))
        for folder in self.folders:
            self.put(folder.place, self.directory(folder, False))
        if self.master.joliet:
            for place, order in zip(self.joliet_tables, "<>"):
                self.put(place, self.path_table(True, order))
            for folder in self.folders:
                self.put(folder.joliet_place, self.directory(folder, True))
        for entry in self.master.entries:
            if not entry.link:
                self.put(self.master.places[entry.path], entry.content)
        if self.master.kind == "dvd" and not self.master.udf:
            self.put(32, bytes(389) + b"DVD MASTER".ljust(SECTOR - 389, b"\0"))

    # UDF 1.02 (ECMA-167)

    def tagged(self, identifier, location, body):
        crc = binascii.crc_hqx(body, 0)
        tag = bytearray(struct.pack("<HHBBHHHI", identifier, 2, 0, 0, 0, crc, len(body), location))
        tag[4] = sum(tag) % 256
        return bytes(tag) + body

    def identifier(self, text, suffix=b""):
        return b"\0" + text.ljust(23, b"\0") + suffix.ljust(8, b"\0")

    def sequence(self, place, end):
        start, count = 257, end - 257
        charset = b"\0" + b"OSTA Compressed Unicode".ljust(63, b"\0")
        name = lambda text, size: (b"\x08" + text).ljust(size - 1, b"\0") + bytes([len(text) + 1])
        maker, domain = self.identifier(b"DVD MASTER"), self.identifier(b"*OSTA UDF Compliant", b"\x02\x01\x03")
        primary = struct.pack("<II", 0, 0) + name(b"SAMPLE", 32) + struct.pack("<HHHHII", 1, 1, 2, 2, 1, 1)
        primary += name(b"SAMPLE SET", 128) + charset * 2 + bytes(16) + maker + UDF_STAMP + maker
        implementation = struct.pack("<I", 1) + self.identifier(b"*UDF LV Info", b"\x02\x01") + charset + name(b"SAMPLE", 128)
        implementation += name(b"", 36) * 3 + maker
        partition = struct.pack("<IHH", 2, 1, 0) + b"\2" + b"+NSR02".ljust(31, b"\0") + bytes(128)
        partition += struct.pack("<III", 1, start, count) + maker
        logical = struct.pack("<I", 3) + charset + name(b"SAMPLE", 128) + struct.pack("<I", SECTOR) + domain
        logical += struct.pack("<IIH", 2 * SECTOR, self.file_set - start, 0).ljust(16, b"\0") + struct.pack("<II", 6, 1)
        logical += maker + bytes(128) + struct.pack("<II", 2 * SECTOR, 64) + struct.pack("<BBHH", 1, 6, 1, 0)
        unallocated = struct.pack("<II", 4, 0)
        bodies = [(1, primary.ljust(496, b"\0")), (4, implementation.ljust(496, b"\0")), (5, partition.ljust(496, b"\0")),
                  (6, logical), (7, unallocated), (8, bytes(496))]
        for index, (number, body) in enumerate(bodies):
            self.put(place + index, self.tagged(number, place + index, body))
        self.put(place + 15, bytes(SECTOR))

    def file_entry(self, sector, kind, links, content_length, place):
        blocks = sectors(content_length)
        icb = struct.pack("<IHHHBB", 0, 4, 0, 1, 0, kind) + bytes(6) + struct.pack("<H", 0x200)
        body = icb + struct.pack("<IIIHBBIQQ", 0xFFFFFFFF, 0xFFFFFFFF, 0x14A5, links, 0, 0, 0, content_length, blocks)
        body += UDF_STAMP * 3 + struct.pack("<I", 1) + bytes(16) + self.identifier(b"DVD MASTER")
        body += struct.pack("<QII", 0 if sector == self.folders[0].entry else sector, 0, 8 if content_length else 0)
        if content_length:
            body += struct.pack("<II", content_length, place - 257)
        self.put(sector, self.tagged(261, sector - 257, body).ljust(SECTOR, b"\0"))

    def names_of(self, folder):
        folders, files = self.children(folder)
        listed = [(b"", 2 | 8, folder.parent.entry)]
        listed += [(b"\x08" + below.name.encode(), 2, below.entry) for below in folders]
        listed += [(b"\x08" + entry.path.rpartition("/")[2].encode(), 0, self.entry_of[entry.path]) for entry in files]
        data = b""
        for name, characteristics, entry in listed:
            body = struct.pack("<HBB", 1, characteristics, len(name))
            body += struct.pack("<IIH", SECTOR, max(entry - 257, 0), 0) + bytes(2) + struct.pack("<I", entry)
            body += struct.pack("<H", 0) + name
            body += bytes(-(16 + len(body)) % 4)
            location = max(folder.names + len(data) // SECTOR - 257, 0)
            data += self.tagged(257, location, body)
        return data

    def write_udf(self, end):
        """Everything of the bridge; `end` is the sector of the closing anchor."""
        for index, name in enumerate((b"BEA01", b"NSR02", b"TEA01")):
            self.put(18 + (1 if self.master.joliet else 0) + index, (b"\0" + name + b"\1").ljust(SECTOR, b"\0"))
        self.sequence(32, end)
        self.sequence(48, end)
        free_and_size = struct.pack("<II", 0, end - 257)
        use = self.identifier(b"DVD MASTER") + struct.pack("<IIHHH", len(self.entry_of), len(self.folders), 0x102, 0x102, 0x102)
        integrity = UDF_STAMP + struct.pack("<III", 1, 0, 0) + struct.pack("<Q", 0x1000).ljust(32, b"\0")
        integrity += struct.pack("<II", 1, len(use)) + free_and_size + use
        self.put(64, self.tagged(9, 64, integrity))
        self.put(65, self.tagged(8, 65, bytes(496)))
        for sector in 256, end:
            anchor = struct.pack("<IIII", 16 * SECTOR, 32, 16 * SECTOR, 48)
            self.put(sector, self.tagged(2, sector, anchor.ljust(496, b"\0")).ljust(SECTOR, b"\0"))
        charset = b"\0" + b"OSTA Compressed Unicode".ljust(63, b"\0")
        name = lambda text, size: (b"\x08" + text).ljust(size - 1, b"\0") + bytes([len(text) + 1])
        file_set = UDF_STAMP + struct.pack("<HHIIII", 3, 3, 1, 1, 0, 0) + charset + name(b"SAMPLE", 128) + charset
        file_set += name(b"SAMPLE", 32) + bytes(64) + struct.pack("<IIH", SECTOR, self.folders[0].entry - 257, 0).ljust(16, b"\0")
        file_set += self.identifier(b"*OSTA UDF Compliant", b"\x02\x01\x03")
        self.put(self.file_set, self.tagged(256, self.file_set - 257, file_set.ljust(496, b"\0")))
        self.put(self.file_set + 1, self.tagged(8, self.file_set - 256, bytes(496)))
        for folder in self.folders:
            folders, _ = self.children(folder)
            self.file_entry(folder.entry, 4, 1 + len(folders), folder.names_length, folder.names)
            self.put(folder.names, self.names_of(folder))
        for entry in self.master.entries:
            if not entry.link:
                links = 1 + sum(other.link == entry.path for other in self.master.entries)
                self.file_entry(self.entry_of[entry.path], 5, links, len(entry.content), self.master.places[entry.path])

    def finish(self):
        master = self.master
        self.place_everything()
        end = self.next + (1 if master.udf else 0)
        self.write_iso(end + (master.postgap if master.postgap_counted else 0) + master.missing)
        if master.udf:
            self.write_udf(end - 1)
        self.data += bytes(end * SECTOR - len(self.data))
        return bytes(self.data) + master.postgap_mark.ljust(master.postgap * SECTOR, b"\0")


def make(master):
    """The image of a declaration."""
    return Image(master).finish()

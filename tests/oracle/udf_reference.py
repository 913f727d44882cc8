"""A second implementation of UDF (ECMA-167) for images with blocks of 2048 bytes and one plain partition: reads a volume and
checks every tag, length and block count on the way."""
import struct

SECTOR = 2048
ANCHOR, PARTITION, LOGICAL_VOLUME, TERMINATOR, INTEGRITY = 2, 5, 6, 8, 9
FILE_SET, FILE_IDENTIFIER, ALLOCATION_EXTENT, FILE_ENTRY, EXTENDED_FILE_ENTRY = 256, 257, 258, 261, 266


def crc(data):
    """ECMA-167 7.2.6: polynomial x^16 + x^12 + x^5 + 1, most significant bit first, initial value 0."""
    value = 0
    for byte in data:
        value ^= byte << 8
        for _ in range(8):
            value = value << 1 ^ (0x11021 if value & 0x8000 else 0)
    return value


assert crc(b"123456789") == 0x31C3


def check(condition, what):
    if not condition:
        raise ValueError(what)


def tag(data, location, *identifiers):
    """Checks the tag of a descriptor and returns its identifier."""
    identifier, version, checksum, _, _, descriptor_crc, length, place = struct.unpack_from("<HHBBHHHI", data)
    check(identifier in identifiers, "tag %d instead of %s" % (identifier, identifiers))
    check(version in (2, 3), "version %d" % version)
    check(checksum == sum(data[:4] + data[5:16]) & 255, "checksum of tag %d at %d" % (identifier, location))
    check(length + 16 <= len(data), "CRC length of tag %d at %d" % (identifier, location))
    check(descriptor_crc == crc(data[16:16 + length]), "CRC of tag %d at %d" % (identifier, location))
    check(place == location, "location %d of tag %d at %d" % (place, identifier, location))
    return identifier


class Volume:
    """Its `files` are tuples of path, whether it is a folder, sector of the entry, size, list of (sector, bytes)."""

    def __init__(self, image):
        self.image = image
        self.sectors = len(image) // SECTOR
        for sector in 256, self.sectors - 1:
            tag(self.sector(sector), sector, ANCHOR)
        anchor = self.sector(256)
        places = []
        for position in 16, 24:
            length, first = struct.unpack_from("<II", anchor, position)
            places.append(self.sequence(first, length // SECTOR))
        check(places[0] == places[1], "main and reserve sequence differ")
        self.start, self.length, file_set, integrity = places[0]
        check(self.start + self.length <= self.sectors, "partition behind the image")
        data = self.sector(integrity)
        tag(data, integrity, INTEGRITY)
        kind, = struct.unpack_from("<I", data, 28)
        partitions, _, free, size = struct.unpack_from("<IIII", data, 72)
        check((kind, partitions, free, size) == (1, 1, 0, self.length), "integrity descriptor")
        data = self.block(file_set)
        tag(data, file_set, FILE_SET)
        self.files = []
        self.walk("", struct.unpack_from("<I", data, 404)[0])

    def sector(self, number):
        return self.image[number * SECTOR:(number + 1) * SECTOR]

    def block(self, number):
        check(number < self.length, "block %d" % number)
        return self.sector(self.start + number)

    def sequence(self, first, count):
        start = length = file_set = integrity = None
        for sector in range(first, first + count):
            data = self.sector(sector)
            identifier = tag(data, sector, *range(1, 9))
            if identifier == PARTITION:
                start, length = struct.unpack_from("<II", data, 188)
            elif identifier == LOGICAL_VOLUME:
                check(struct.unpack_from("<I", data, 212)[0] == SECTOR, "block size")
                file_set, = struct.unpack_from("<I", data, 252)
                integrity, = struct.unpack_from("<I", data, 436)
            elif identifier == TERMINATOR:
                break
        return start, length, file_set, integrity

    def extents(self, data, length, is_long):
        """The allocation descriptors in `data`, with their continuations."""
        found, step = [], 16 if is_long else 8
        at = 0
        while at + step <= length:
            size, block = struct.unpack_from("<II", data, at)
            kind, size = size >> 30, size & (1 << 30) - 1
            if size == 0:
                break
            if kind == 3:
                more = self.block(block)
                tag(more, block, ALLOCATION_EXTENT)
                return found + self.extents(more[24:], struct.unpack_from("<I", more, 20)[0], is_long)
            check(kind == 0, "extent of type %d" % kind)
            found.append((self.start + block, size))
            at += step
        return found

    def entry(self, block):
        """Whether it is a folder, its size, its extents, its embedded content."""
        data = self.block(block)
        is_extended = tag(data, block, FILE_ENTRY, EXTENDED_FILE_ENTRY) == EXTENDED_FILE_ENTRY
        tail = 216 if is_extended else 176
        size, = struct.unpack_from("<Q", data, 56)
        recorded, = struct.unpack_from("<Q", data, 72 if is_extended else 64)
        attributes, length = struct.unpack_from("<II", data, tail - 8)
        content = data[tail + attributes:tail + attributes + length]
        kind = data[34] & 7
        is_folder = data[27] == 4
        if kind == 3:
            check(size == length and recorded == 0, "embedded content")
            return is_folder, size, [], content
        extents = self.extents(content, length, kind == 1)
        check(sum(bytes_ for _, bytes_ in extents) == size, "extents of block %d" % block)
        check(sum(-(-bytes_ // SECTOR) for _, bytes_ in extents) == recorded, "blocks recorded of block %d" % block)
        check(all(bytes_ % SECTOR == 0 for _, bytes_ in extents[:-1]), "extents that end within a block")
        return is_folder, size, extents, None

    def content(self, size, extents, embedded=None):
        if embedded is not None:
            return embedded
        return b"".join(self.image[sector * SECTOR:sector * SECTOR + bytes_] for sector, bytes_ in extents)[:size]

    def walk(self, path, block):
        is_folder, size, extents, embedded = self.entry(block)
        self.files.append((path, is_folder, self.start + block, size, extents))
        if not is_folder:
            return
        data = self.content(size, extents, embedded)
        blocks = [sector - self.start + i for sector, bytes_ in extents for i in range(-(-bytes_ // SECTOR))] or [block]
        at = 0
        while at < len(data):
            characteristics, name_length, _, entry = struct.unpack_from("<BBII", data, at + 18)
            use, = struct.unpack_from("<H", data, at + 36)
            length = (38 + use + name_length + 3) // 4 * 4
            tag(data[at:at + length], blocks[min(at // SECTOR, len(blocks) - 1)], FILE_IDENTIFIER)
            if not characteristics & (4 | 8):
                name = data[at + 38 + use:at + 38 + use + name_length]
                text = name[1:].decode("latin-1" if name[0] == 8 else "utf-16-be")
                self.walk(path + "/" + text if path else text, entry)
            at += length

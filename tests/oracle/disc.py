#!/usr/bin/env python3
"""A second implementation of a disc reader: the trees of ISO 9660 (ECMA-119: primary, Joliet, enhanced) and UDF (ECMA-167),
for the tests of edited images. It reads every file with place, length and content, checks both byte orders, path tables,
tags and CRCs, and lists everything that contradicts itself.

usage: disc.py IMAGE
"""
import binascii
import struct
import sys
from dataclasses import dataclass, field

SECTOR = 2048
ANCHOR, FILE_SET, FILE_IDENTIFIER, TERMINATOR, FILE_ENTRY, EXTENDED_FILE_ENTRY = 2, 256, 257, 8, 261, 266
FOLDER_TYPE = 4
POSTGAP = 150
POSTGAP_MARK = b"postgap"


def sectors(length):
    return -(-length // SECTOR)


@dataclass(frozen=True)
class File:
    """A file of one tree. Extents are (sector, bytes); those that follow each other are one. `embedded` is the byte position
    of content inside a UDF file entry."""
    path: str
    size: int
    extents: tuple
    embedded: int = 0

    @property
    def sector(self):
        return self.extents[0][0] if self.extents else None


@dataclass
class Tree:
    """One volume of ISO 9660: files and folders by path ("DIR/SUB/NAME", without version), the byte positions of their
    records, and the areas (sector, sectors) of its structures."""
    name: str
    descriptor: int
    volume_sectors: int
    files: dict = field(default_factory=dict)
    folders: dict = field(default_factory=dict)
    records: dict = field(default_factory=dict)
    areas: list = field(default_factory=list)


@dataclass
class Udf:
    """The UDF side: files and folders by path, and the sectors of their file entries."""
    anchors: list
    partition_start: int = 0
    partition_sectors: int = 0
    files: dict = field(default_factory=dict)
    folders: dict = field(default_factory=dict)
    entries: dict = field(default_factory=dict)
    areas: list = field(default_factory=list)

    @property
    def partition_end(self):
        return self.partition_start + self.partition_sectors


def joined(extents):
    """Extents without empty ones; neighbours that follow each other become one."""
    result = []
    for sector, length in extents:
        if not length:
            continue
        if result and result[-1][1] % SECTOR == 0 and result[-1][0] + result[-1][1] // SECTOR == sector:
            result[-1] = (result[-1][0], result[-1][1] + length)
        else:
            result.append((sector, length))
    return tuple(result)


class Disc:
    """Everything in an image. `problems` holds a sentence for each fault."""

    def __init__(self, image):
        self.image = image
        self.problems = []
        self.sectors = sectors(len(image))
        self.trees = {}
        self.read_volumes()
        self.udf = self.read_udf()
        self.compare_udf()
        self.find_overlaps()

    @property
    def primary(self):
        return self.trees["primary"]

    def problem(self, text, *values):
        self.problems.append(text % values)

    def part(self, sector, length, what):
        if (sector * SECTOR + length) > len(self.image):
            self.problem("%s is outside of the image: sector %d, %d bytes", what, sector, length)
        return bytes(self.image[sector * SECTOR:sector * SECTOR + length])

    def content(self, file):
        if file.embedded:
            return bytes(self.image[file.embedded:file.embedded + file.size])
        return b"".join(self.part(sector, length, file.path) for sector, length in file.extents)

    def areas(self):
        """All areas (sector, sectors, what) that anything describes, once each."""
        found = {(16, 1, "descriptor")}
        for tree in self.trees.values():
            found |= {(sector, count, "structure of " + tree.name) for sector, count in tree.areas}
        if self.udf:
            found |= {(sector, count, "structure of UDF") for sector, count in self.udf.areas}
        for files in [tree.files for tree in self.trees.values()] + ([self.udf.files] if self.udf else []):
            found |= {(sector, sectors(length), "file") for file in files.values() for sector, length in file.extents}
        return sorted(found)

    # ISO 9660

    def both(self, data, offset, size, what):
        """A number in both byte orders."""
        little = int.from_bytes(data[offset:offset + size], "little")
        big = int.from_bytes(data[offset + size:offset + 2 * size], "big")
        if little != big:
            self.problem("%s differs in its two byte orders: %d and %d", what, little, big)
        return little

    def read_volumes(self):
        for sector in range(16, min(self.sectors, 64)):
            data = self.part(sector, SECTOR, "descriptor")
            if data[1:6] != b"CD001":
                self.problem("sector %d is no volume descriptor", sector)
                return
            if data[0] == 255:
                break
            if data[0] in (1, 2):
                self.read_volume(sector, data)
        else:
            self.problem("the volume descriptors have no end")
        if "primary" not in self.trees:
            raise ValueError("no primary volume descriptor")

    def read_volume(self, sector, data):
        joliet = data[88:91] in (b"%/@", b"%/C", b"%/E")
        name = "primary" if data[0] == 1 else "joliet" if joliet else "enhanced"
        tree = Tree(name, sector, self.both(data, 80, 4, name + " volume size"))
        tree.areas.append((sector, 1))
        if self.both(data, 128, 2, name + " block size") != SECTOR:
            self.problem("%s: blocks are not of 2048 bytes", name)
        root = (self.both(data, 158, 4, name + " root"), self.both(data, 166, 4, name + " root length"))
        self.trees[name] = tree
        self.walk(tree, root, joliet)
        self.read_path_tables(tree, data, joliet)
        # The trees of some programs share directories or path tables.
        tree.areas = sorted(set(tree.areas))

    def walk(self, tree, root, joliet):
        tree.folders[""] = root
        queue, seen = [("", root, root)], set()
        for path, place, parent in queue:
            if place[0] in seen:
                self.problem("%s: the folder %s is reached twice", tree.name, path)
                continue
            seen.add(place[0])
            tree.areas.append((place[0], sectors(place[1])))
            parts = []
            for number, (name, entry, flags, position) in enumerate(self.records(tree, path, place)):
                if number < 2:
                    # xorriso writes the folder itself as the parent of a Joliet folder.
                    accepted = ((place,), (parent, place) if joliet else (parent,))[number]
                    if name != (b"\0", b"\1")[number] or entry not in accepted:
                        self.problem("%s: record %d of the folder %s is wrong", tree.name, number, path)
                    continue
                text = name.decode("utf-16-be" if joliet else "latin-1")
                full = (path + "/" if path else "") + (text if flags & 2 else text.split(";")[0])
                tree.records[full] = position
                if flags & 2:
                    tree.folders[full] = entry
                    queue.append((full, entry, place))
                    continue
                parts.append(entry)
                if not flags & 0x80:
                    self.add_file(tree, full, parts)
                    parts = []

    def add_file(self, tree, path, parts):
        if path in tree.files:
            self.problem("%s: two files are named %s", tree.name, path)
        size = sum(length for _, length in parts)
        extents = joined(parts) if size else ((parts[0][0], 0),)
        for sector, length in extents:
            if sector * SECTOR + length > len(self.image):
                self.problem("%s: %s is outside of the image", tree.name, path)
        tree.files[path] = File(path, size, extents)

    def records(self, tree, path, place):
        """(name, (sector, length), flags, byte position) of each record of a directory."""
        sector, length = place
        if length % SECTOR or not length:
            self.problem("%s: the folder %s has %d bytes", tree.name, path, length)
        data = self.part(sector, length, "folder " + path)
        for start in range(0, len(data), SECTOR):
            block, offset = data[start:start + SECTOR], 0
            while offset < len(block) and block[offset]:
                size = block[offset]
                record = block[offset:offset + size]
                if len(record) < size or size < 34 or 33 + record[32] > size:
                    self.problem("%s: a record of the folder %s leaves its sector", tree.name, path)
                    break
                what = "%s: a record of %s" % (tree.name, path)
                entry = (self.both(record, 2, 4, what), self.both(record, 10, 4, what))
                yield bytes(record[33:33 + record[32]]), entry, record[25], sector * SECTOR + start + offset
                offset += size
            if any(block[offset:]):
                self.problem("%s: bytes behind the records of the folder %s", tree.name, path)

    def read_path_tables(self, tree, data, joliet):
        size = self.both(data, 132, 4, tree.name + " path table size")
        expected = {(path, place[0]) for path, place in tree.folders.items()}
        for offset, order, name in ((140, "<", "L"), (144, "<", "optional L"), (148, ">", "M"), (152, ">", "optional M")):
            sector, = struct.unpack_from(order + "I", data, offset)
            if not sector:
                if not name.startswith("optional"):
                    self.problem("%s: no path table %s", tree.name, name)
                continue
            tree.areas.append((sector, sectors(size)))
            if set(self.path_table(self.part(sector, size, "path table " + name), order, joliet)) != expected:
                self.problem("%s: the path table %s names other folders than the tree", tree.name, name)

    def path_table(self, data, order, joliet):
        paths, offset = [], 0
        while offset + 8 <= len(data) and data[offset]:
            length, _, sector, parent = struct.unpack_from(order + "BBIH", data, offset)
            name = data[offset + 8:offset + 8 + length].decode("utf-16-be" if joliet and length > 1 else "latin-1")
            if not paths:
                paths.append("")
            elif not 1 <= parent <= len(paths):
                return
            else:
                above = paths[parent - 1]
                paths.append((above + "/" if above else "") + name)
            yield paths[-1], sector
            offset += 8 + length + length % 2

    # UDF

    def tag(self, data, location, what, accepted=None):
        """Checks a descriptor tag (ECMA-167 3/7.2) and returns its identifier."""
        identifier, version, checksum, _, _, crc, length, place = struct.unpack_from("<HHBBHHHI", data)
        if accepted and identifier not in accepted:
            self.problem("%s: tag %d instead of %s", what, identifier, accepted)
            return identifier
        if sum(data[:4] + data[5:16]) % 256 != checksum:
            self.problem("%s: the checksum of the tag is wrong", what)
        if length > len(data) - 16 or binascii.crc_hqx(data[16:16 + length], 0) != crc:
            self.problem("%s: the CRC of the descriptor is wrong", what)
        if place != location:
            self.problem("%s: the tag names sector %d instead of %d", what, place, location)
        if version not in (2, 3):
            self.problem("%s: version %d of the tag", what, version)
        return identifier

    def is_anchor(self, sector):
        data = self.image[sector * SECTOR:sector * SECTOR + 16]
        return data[:4] in (b"\2\0\2\0", b"\2\0\3\0") and any(data[4:])

    def anchor_sectors(self):
        """The sectors that hold an anchor: 256, 256 before the last, and all at the end. genisoimage pads with anchors."""
        closing = self.sectors
        while closing > 257 and self.is_anchor(closing - 1):
            closing -= 1
        others = {sector for sector in (256, self.sectors - 257) if 16 < sector < closing and self.is_anchor(sector)}
        return sorted(others) + list(range(closing, self.sectors))

    def read_udf(self):
        found = self.anchor_sectors()
        if not found:
            return None
        udf = Udf(found)
        sequences = set()
        for sector in found:
            data = self.part(sector, SECTOR, "anchor")
            self.tag(data, sector, "anchor %d" % sector)
            sequences.add(struct.unpack_from("<IIII", data, 16))
            udf.areas.append((sector, 1))
        if len(sequences) != 1:
            self.problem("the anchors name different sequences")
        main_length, main, reserve_length, reserve = sequences.pop()
        if not main_length:
            return None
        descriptors = self.sequence(udf, main, main_length, "main sequence")
        spare = self.sequence(udf, reserve, reserve_length, "reserve sequence")
        # Their volume descriptors may differ: genisoimage puts a random number into each.
        if any(descriptors.get(key, b"")[16:] != spare.get(key, b"")[16:] for key in (5, 6, 7)):
            self.problem("main and reserve sequence differ")
        if not {1, 5, 6} <= set(descriptors):
            self.problem("the main sequence is incomplete: %s", sorted(descriptors))
            return udf
        self.read_partition(udf, descriptors[5])
        self.read_logical_volume(udf, descriptors[6])
        return udf

    def sequence(self, udf, first, length, what):
        found = {}
        udf.areas.append((first, sectors(length)))
        for sector in range(first, first + sectors(length)):
            data = self.part(sector, SECTOR, what)
            identifier = self.tag(data, sector, "%s, sector %d" % (what, sector))
            if identifier == TERMINATOR:
                return found
            found[identifier] = data
        self.problem("the %s has no end", what)
        return found

    def read_partition(self, udf, data):
        udf.partition_start, udf.partition_sectors = struct.unpack_from("<II", data, 188)
        if udf.partition_end > self.sectors:
            self.problem("the partition ends at sector %d of %d", udf.partition_end, self.sectors)

    def read_logical_volume(self, udf, data):
        block, = struct.unpack_from("<I", data, 212)
        maps, = struct.unpack_from("<I", data, 268)
        if block != SECTOR or maps != 1 or data[440] != 1:
            self.problem("the logical volume has blocks of %d bytes and %d partitions of type %d", block, maps, data[440])
            return
        length, integrity = struct.unpack_from("<II", data, 432)
        self.read_integrity(udf, integrity, length)
        _, place = struct.unpack_from("<II", data, 248)
        file_set = self.part(udf.partition_start + place, SECTOR, "file set")
        self.tag(file_set, place, "file set", (FILE_SET,))
        udf.areas.append((udf.partition_start + place, 1))
        _, root = struct.unpack_from("<II", file_set, 400)
        self.walk_udf(udf, root)
        udf.areas = sorted(set(udf.areas))

    def read_integrity(self, udf, sector, length):
        udf.areas.append((sector, sectors(length)))
        data = self.part(sector, SECTOR, "integrity descriptor")
        self.tag(data, sector, "integrity descriptor", (9,))
        kind, = struct.unpack_from("<I", data, 28)
        partitions, = struct.unpack_from("<I", data, 72)
        free, size = struct.unpack_from("<II", data, 80)
        if kind != 1 or partitions != 1:
            self.problem("the integrity descriptor is open, or names %d partitions", partitions)
        if size != udf.partition_sectors or free > size:
            self.problem("integrity descriptor: size %d, free %d; the partition has %d sectors", size, free,
                         udf.partition_sectors)

    def file_entry(self, udf, block, path):
        """(whether it is a folder, File) of an ICB."""
        what = "file entry of " + path
        position = (udf.partition_start + block) * SECTOR
        data = self.part(udf.partition_start + block, SECTOR, what)
        identifier = self.tag(data, block, what, (FILE_ENTRY, EXTENDED_FILE_ENTRY))
        udf.areas.append((udf.partition_start + block, 1))
        udf.entries[path] = udf.partition_start + block
        later = 40 if identifier == EXTENDED_FILE_ENTRY else 0
        size, = struct.unpack_from("<Q", data, 56)
        recorded, = struct.unpack_from("<Q", data, 72 if later else 64)
        attributes, descriptors = struct.unpack_from("<II", data, 168 + later)
        start = 176 + later + attributes
        if start + descriptors > SECTOR:
            self.problem("%s: allocation descriptors leave the sector", what)
            return data[27] == FOLDER_TYPE, File(path, 0, ())
        kind = data[34] & 7
        if kind == 3:
            if descriptors != size:
                self.problem("%s: %d bytes inside, length %d", what, descriptors, size)
            return data[27] == FOLDER_TYPE, File(path, size, (), position + start if size else 0)
        step = {0: 8, 1: 16}[kind]
        extents = []
        for offset in range(start, start + descriptors, step):
            length, place = struct.unpack_from("<II", data, offset)
            if not length:
                break
            if length >> 30:
                self.problem("%s: an extent that is not recorded", what)
            extents.append((udf.partition_start + place, length))
            if place + sectors(length) > udf.partition_sectors:
                self.problem("%s: an extent leaves the partition", what)
        if any(length % SECTOR for _, length in extents[:-1]):
            self.problem("%s: an extent before the last one is no whole sectors", what)
        if sum(length for _, length in extents) != size:
            self.problem("%s: extents of %d bytes, length %d", what, sum(length for _, length in extents), size)
        if sum(sectors(length) for _, length in extents) != recorded:
            self.problem("%s: %d blocks recorded for %d bytes", what, recorded, size)
        for sector, length in extents:
            if sector * SECTOR + length > len(self.image):
                self.problem("UDF: %s is outside of the image", path)
        return data[27] == FOLDER_TYPE, File(path, size, joined(extents))

    def walk_udf(self, udf, root):
        queue, seen = [("", root)], set()
        for path, block in queue:
            if block in seen:
                self.problem("UDF: the folder %s is reached twice", path)
                continue
            seen.add(block)
            is_folder, folder = self.file_entry(udf, block, path)
            if not is_folder:
                self.problem("UDF: %s is no folder", path)
                continue
            udf.folders[path] = folder
            udf.areas += [(sector, sectors(length)) for sector, length in folder.extents]
            for name, characteristics, place in self.identifiers(udf, folder):
                if characteristics & 8:
                    continue
                full = (path + "/" if path else "") + name
                if characteristics & 2:
                    queue.append((full, place))
                    continue
                is_folder, file = self.file_entry(udf, place, full)
                if is_folder:
                    self.problem("UDF: the file %s is a folder", full)
                if full in udf.files:
                    self.problem("UDF: two files are named %s", full)
                udf.files[full] = file

    def identifiers(self, udf, folder):
        """(name, characteristics, ICB block) of each file identifier descriptor (ECMA-167 4/14.4)."""
        data = self.content(folder)
        offset = 0
        while offset + 38 <= len(data):
            length, used = data[offset + 19], struct.unpack_from("<H", data, offset + 36)[0]
            size = (38 + used + length + 3) // 4 * 4
            entry = data[offset:offset + size]
            sector = (folder.embedded or folder.extents[0][0] * SECTOR + offset) // SECTOR
            self.tag(entry, sector - udf.partition_start, "name in " + folder.path, (FILE_IDENTIFIER,))
            raw = entry[38 + used:38 + used + length]
            name = raw[1:].decode("utf-16-be" if raw[:1] == b"\x10" else "latin-1") if raw else ""
            yield name, entry[18], struct.unpack_from("<I", entry, 24)[0]
            offset += size
        if offset != len(data):
            self.problem("UDF: bytes behind the names of the folder %s", folder.path)

    # What holds between the sides

    def compare_udf(self):
        """Readers choose a side as they like, so both must name the same content."""
        if not self.udf or not self.udf.files:
            return
        names = {path: file for path, file in self.primary.files.items()}
        if set(names) != set(self.udf.files):
            self.problem("ISO 9660 and UDF name different files: %s", sorted(set(names) ^ set(self.udf.files))[:4])
        for path in set(names) & set(self.udf.files):
            ours, theirs = names[path], self.udf.files[path]
            if ours.size != theirs.size or (ours.size and not theirs.embedded and ours.extents != theirs.extents):
                self.problem("%s: ISO 9660 has %s, UDF has %s", path, ours.extents, theirs.extents)

    def find_overlaps(self):
        end, before = 0, None
        for area in self.areas():
            if not area[1]:
                continue
            if area[0] < end and (area[:2] != before[:2] or (area[2] == "file") != (before[2] == "file")):
                self.problem("%s and %s overlap", before, area)
            if area[0] + area[1] > end:
                end, before = area[0] + area[1], area

    def covered(self, sector):
        return any(first <= sector < first + count for first, count, _ in self.areas())

    def free(self, sector):
        """Whether nothing describes this sector and all its bytes are zero."""
        return not self.covered(sector) and not any(self.image[sector * SECTOR:(sector + 1) * SECTOR])

    @property
    def closing_anchors(self):
        """Number of anchors at the end of the image."""
        anchors, count = self.udf.anchors if self.udf else [], 0
        while count < len(anchors) and anchors[-1 - count] == self.sectors - 1 - count and anchors[-1 - count] > 256:
            count += 1
        return count

    @property
    def marked_postgap(self):
        """Number of sectors of a postgap that begins with its mark."""
        tail = bytes(self.image[-POSTGAP * SECTOR:])
        return POSTGAP if tail == POSTGAP_MARK.ljust(POSTGAP * SECTOR, b"\0") else 0

    @property
    def content_end(self):
        """The first sector behind everything that is described and behind the last byte that is not zero, but for the
        anchors or the postgap at the end."""
        closing = self.sectors - self.closing_anchors - self.marked_postgap
        described = max(first + count for first, count, _ in self.areas() if first < closing)
        data = bytes(self.image[described * SECTOR:closing * SECTOR])
        return described + sectors(len(data.rstrip(b"\0")))


def read(path):
    with open(path, "rb") as file:
        return Disc(file.read())


def main():
    disc = read(sys.argv[1])
    for tree in disc.trees.values():
        print("%s: volume of %d sectors" % (tree.name, tree.volume_sectors))
        for file in sorted(tree.files.values(), key=lambda file: (file.sector, file.path)):
            print("  %8d %10d %s" % (file.sector, file.size, file.path))
    if disc.udf:
        print("UDF: anchors %s, %d at the end, partition %d to %d" % (
            disc.udf.anchors[:2], disc.closing_anchors, disc.udf.partition_start, disc.udf.partition_end))
        for file in disc.udf.files.values():
            print("  %8s %10d %s" % (file.sector, file.size, file.path))
    print("%d sectors, content ends at %d" % (disc.sectors, disc.content_end))
    for text in disc.problems:
        print("problem:", text)
    sys.exit(1 if disc.problems else 0)


if __name__ == "__main__":
    main()

"""A second implementation of the export of an image to a layout, based only on the format descriptions."""
import ntpath
import struct

SECTOR = 2048


class Image:
    """The parts of an image that an export reads."""

    def __init__(self, data):
        self.data = data
        self.is_cd = data[33792:33795] == b"CD-"
        self.is_dvd = not self.is_cd and data[65925:65928] == b"DVD"
        pvd = data[16 * SECTOR:17 * SECTOR]
        self.key = (chr(pvd[575]), pvd[1024])
        self.volume_sectors = struct.unpack_from("<I", pvd, 80)[0]
        table_size, = struct.unpack_from("<I", pvd, 132)
        table, optional = struct.unpack_from("<II", pvd, 140)
        sectors = optional - table if optional > table else -(-table_size // SECTOR)
        self.directories = self.read_path_table(data[table * SECTOR:(table + sectors) * SECTOR])
        self.files = sorted(self.read_files(), key=lambda file: file[0])  # stable
        self.header = self.find_header_end()

    @staticmethod
    def read_path_table(table):
        directories, at = [], 0
        while at < len(table) and table[at]:
            length = table[at]
            extent, parent = struct.unpack_from("<IH", table, at + 2)
            name = table[at + 8:at + 8 + length].decode("latin-1")
            path = "" if not directories else directories[parent - 1][1] + "\\" + name
            directories.append((extent, path))
            at += 8 + length + length % 2
        return directories

    def length_of(self, extent):
        return struct.unpack_from("<I", self.data, extent * SECTOR + 10)[0]

    def read_files(self):
        for extent, path in self.directories:
            end = extent * SECTOR + self.length_of(extent)
            for sector in range(extent * SECTOR, end, SECTOR):
                at = sector
                while at < sector + 2015 and self.data[at]:
                    start, = struct.unpack_from("<I", self.data, at + 2)
                    size, = struct.unpack_from("<I", self.data, at + 10)
                    if self.data[at + 25] == 0:
                        name = self.data[at + 33:at + 33 + self.data[at + 32]].decode("latin-1")
                        yield start, size, path + "\\" + name.split(";")[0]
                    at += self.data[at]

    def find_header_end(self):
        highest = max(extent for extent, _ in self.directories)
        end = highest + -(-self.length_of(highest) // SECTOR)
        if self.is_dvd:
            first = min(start for start, _, _ in self.files if start >= end)
            for sector in range(end, first):
                if self.data[sector * SECTOR:sector * SECTOR + 4] == b"\x05\x01\x02\x00":
                    end = sector + 1
        return end

    def anchor(self):
        for sector in (self.volume_sectors - 1, 256):
            tag = self.data[sector * SECTOR:sector * SECTOR + 12]
            if tag[:2] == b"\x02\x00":
                return tag
        return bytes(12)


class ConsoleImage(Image):
    """The same for the console program, which follows the directory records and keeps every structure before the files."""

    def __init__(self, data):
        super().__init__(data)
        roots = [(16, struct.unpack_from("<I", data, 16 * SECTOR + 158)[0])]
        roots += [(sector, struct.unpack_from("<I", data, sector * SECTOR + 158)[0])
                  for sector in range(17, 64) if data[sector * SECTOR:sector * SECTOR + 6] == b"\x02CD001"]
        self.files, ends = [], []
        for sector, root in roots:
            files, tree_ends = self.read_tree(root)
            if sector == 16:
                self.files = sorted(files, key=lambda file: file[0])
                self.header = max([self.header] + tree_ends)
            else:
                ends += tree_ends
            ends += self.path_table_ends(sector)
        if self.is_dvd:
            (size, first, size2, second), = [struct.unpack_from("<IIII", data, 256 * SECTOR + 16)]
            ends += [257, first + size // SECTOR, second + size2 // SECTOR]
        first = min([start for start, size, _ in self.files if size and start >= self.header])
        self.header = max([self.header] + [end for end in ends if end <= first])

    def path_table_ends(self, sector):
        size, = struct.unpack_from("<I", self.data, sector * SECTOR + 132)
        starts = struct.unpack_from("<II", self.data, sector * SECTOR + 140)
        starts += struct.unpack_from(">II", self.data, sector * SECTOR + 148)
        return [start + -(-size // SECTOR) for start in starts if start]

    def read_tree(self, root):
        """The files below a root directory, breadth first, and the sectors behind the directories."""
        waiting, files, ends = [(root, "")], [], []
        while waiting:
            extent, path = waiting.pop(0)
            end = extent + -(-self.length_of(extent) // SECTOR)
            ends.append(end)
            for sector in range(extent, end):
                at = sector * SECTOR
                while at < sector * SECTOR + 2015 and self.data[at]:
                    start, = struct.unpack_from("<I", self.data, at + 2)
                    size, = struct.unpack_from("<I", self.data, at + 10)
                    name = self.data[at + 33:at + 33 + self.data[at + 32]].decode("latin-1")
                    if name not in ("\0", "\1") and self.data[at + 25] & 2:
                        waiting.append((start, path + "\\" + name))
                    elif name not in ("\0", "\1"):
                        files.append((start, size, path + "\\" + name.split(";")[0]))
                    at += self.data[at]
        return files, ends


def file_list(image):
    return "".join("%08X|%08X|%08X|%s\r\n" % (start, size, -(-size // SECTOR), path)
                   for start, size, path in image.files)


def offset_list(image):
    values = [image.header]
    for start, size, _ in image.files:
        values += [start, start + max(-(-size // SECTOR), 1) - 1]
    return struct.pack("<%dI" % len(values), *values)


def leading_file(image):
    data = image.data[:image.header * SECTOR]
    if image.key == ("L", 0):
        last = image.anchor() + struct.pack("<I", image.volume_sectors - 1)
        data += last.ljust(SECTOR, b"\0")
    return data


VARIANTS = {
    ("L", 0): ("DVD", "PS2", "2", "01", "0.0", "Source"),
    ("L", ord("C")): ("CD", "PS2", "2", "01", "2.1", "Path"),
    ("S", ord("C")): ("UMD", "PSP", "PSP", "00", "2.1", "Path"),
}


def entries(image):
    """Sector ranges and paths, including the rule for files with the same start and padding."""
    remembered = (0, 2032)
    for start, size, path in image.files:
        padding = -size % SECTOR
        end = start if size == 0 else start + (size + padding) // SECTOR - 1
        if (start, padding) == remembered:
            start = end
        else:
            remembered = (start, padding)
        yield start, end, path[1:]


def layout(image, leading_name, field, date="DATE", plain_date="CREATIONDATE"):
    media, target, kind, code, mode, column = VARIANTS[image.key]
    folder = ntpath.splitdrive(field)[1]
    folder = folder[:max(folder.rfind("\\"), folder.rfind("/")) + 1]
    is_dvd = media == "DVD"
    blank = '"%s"' % (" " * 32)
    lines = ["[SYS]", "VERSION=1.00", "MEDIA=" + media, "TARGET=" + target, "DISCVERSION=1.00", date, "[/SYS]", ""]
    lines += ["[CUE]"] + [key + "=" + blank for key in ("DISCNAME", "PRODUCER", "COPYRIGHT")]
    lines += [plain_date, "PSTYPE=" + kind, "DISCCODE=" + code]
    if not is_dvd:
        track = "      00:00:00    CDROM2_0    DATA"
        lines += ["#Track   Index   Time        Form        Control        LBN", " 00      00" + track,
                  " 01      00" + track, " 01      00" + track + "           0", " AA      01" + track + "           0"]
    placed = [entry for entry in entries(image) if entry[2]]
    lines += ["[/CUE]", "", "[LOC]", "# the number of entries: %d" % (len(placed) + (2 if is_dvd else 1))]
    lines += ["#Start   End      Mode Fno " + column]
    lines += ['%-8d %-8d %s  0   "%s"' % (0, image.header - 1, mode, leading_name)]
    lines += ['%-8d %-8d %s  0   "%s"' % (start, end, mode, folder + path) for start, end, path in placed]
    if is_dvd:
        last = image.volume_sectors - 1
        lines += ['%-8d %-8d %s  0   "%s" %d' % (last, last, mode, leading_name, image.header * SECTOR)]
    return "".join(line + "\r\n" for line in lines + ["[/LOC]", ""])

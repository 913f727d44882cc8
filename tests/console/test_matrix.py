"""Every command with every kind of input: its status, and what status 0 promises."""
import os
import shutil
import unittest

from support import ConsoleTest, IS_WINDOWS, psp_image

SECTOR = 2048
KINDS = ["right", "damaged", "truncated", "partial", "other form", "text", "empty", "folder", "missing", "device"]

# The kinds of input with which each command succeeds; it refuses all others.
SUCCEEDS = {
    "iso2cso": {"right", "damaged", "truncated", "partial", "other form"},
    "iso2dax": {"right", "damaged", "truncated", "partial", "other form"},
    "iso2bin": {"right", "damaged", "truncated"},
    "iso2iml": {"right", "damaged", "other form"},
    "cso2iso": {"right"},
    "dax2iso": {"right"},
    "bin2iso": {"right", "truncated"},
    "iml2iso": {"right"},
    "check-postgap": {"right", "damaged"},
    "add-postgap": {"right", "damaged", "truncated"},
    "info": {"right", "damaged", "truncated", "partial", "other form"},
    "verify": {"right", "damaged", "other form"},
    "list": {"right", "damaged", "truncated", "partial", "other form"},
    "extract": {"right", "damaged", "other form"},
}
INPUTS = {"cso2iso": "cso", "dax2iso": "dax", "bin2iso": "bin", "iml2iso": "iml"}
CD_COMMANDS = "iso2bin", "bin2iso", "check-postgap"
OUTPUTS = {"iso2cso": ["out.cso"], "iso2dax": ["out.dax"], "iso2bin": ["out.bin", "out.cue"],
           "iso2iml": ["out.iml", "out.ims", "out.gaps"]}
BACK = {"iso2cso": ["cso2iso", "out.cso"], "iso2dax": ["dax2iso", "out.dax"], "iso2bin": ["bin2iso", "out.bin"],
        "iso2iml": ["iml2iso", "--exact", "--files", "out", "out.iml"]}


def disc(is_cd):
    """A PlayStation 2 CD or a PSP UMD with one file in its root directory."""
    content = psp_image()[:4 * SECTOR]
    image = bytearray(24 * SECTOR)
    image[16 * SECTOR:16 * SECTOR + 8] = b"\1CD001\1\0"
    image[16 * SECTOR + 8:16 * SECTOR + 40] = (b"PLAYSTATION" if is_cd else b"PSP GAME").ljust(32)

    def both(position, value, size=4):
        image[position:position + 2 * size] = value.to_bytes(size, "little") + value.to_bytes(size, "big")

    descriptor = 16 * SECTOR
    both(descriptor + 80, 24)
    both(descriptor + 128, SECTOR, 2)
    both(descriptor + 132, 10)
    image[descriptor + 140:descriptor + 144] = (18).to_bytes(4, "little")
    image[descriptor + 156:descriptor + 190] = record(19, SECTOR, b"\0", 2)
    application = b"PLAYSTATION" if is_cd else b"PSP GAME"
    image[descriptor + 574:descriptor + 574 + len(application)] = application
    image[descriptor + 1024:descriptor + 1032] = b"CD-XA001"
    image[17 * SECTOR:17 * SECTOR + 7] = b"\xFFCD001\1"
    image[18 * SECTOR:18 * SECTOR + 10] = b"\1\0" + (19).to_bytes(4, "little") + b"\1\0\0\0"
    entries = record(19, SECTOR, b"\0", 2) + record(19, SECTOR, b"\1", 2) + record(20, len(content) - 5, b"A.BIN;1", 0)
    image[19 * SECTOR:19 * SECTOR + len(entries)] = entries
    image[20 * SECTOR:] = content
    return bytes(image)


def record(sector, length, name, flags):
    size = 33 + len(name) + (len(name) + 1) % 2
    fields = bytes([size, 0]) + sector.to_bytes(4, "little") + sector.to_bytes(4, "big")
    fields += length.to_bytes(4, "little") + length.to_bytes(4, "big") + b"\x7A\1\1\0\0\0\0" + bytes([flags, 0, 0])
    return (fields + b"\1\0\0\1" + bytes([len(name)]) + name).ljust(size, b"\0")


class Matrix(ConsoleTest):
    def setUp(self):
        super().setUp()
        self.write("umd.iso", disc(False))
        self.write("cd.iso", disc(True))
        for words in ["iso2cso", "umd.iso"], ["iso2dax", "umd.iso"], ["iso2bin", "cd.iso"], ["iso2iml", "umd.iso", "--extract"]:
            self.assert_done(self.run_here(*words))

    def put(self, command, kind):
        """Writes an input of the kind; returns its name."""
        form = INPUTS.get(command, "iso")
        name = "in." + form
        base = "cd" if command in CD_COMMANDS else "umd"
        self.image = self.read(base + ".iso")
        content = bytearray(self.read(base + "." + form))
        if kind == "device":
            return os.devnull
        if kind == "folder":
            os.mkdir(self.path(name))
        elif kind != "missing":
            self.write(name, self.changed(form, kind, content))
        return name

    def changed(self, form, kind, content):
        if kind == "damaged":
            # A byte of the list of a layout, of the first block of a CSO (a plain one would have no sum), or of the file.
            place = {"iml": content.find(b"#Start") + 60, "cso": 24 + 4 * 25 + 3}
            content[place.get(form, len(content) * 7 // 8)] ^= 0x55
        if kind == "truncated":
            del content[len(content) - (60 if form == "iml" else 2352 if form == "bin" else SECTOR):]
        if kind == "partial":
            del content[len(content) - 100:]
        others = {"other form": self.read("umd.dax" if form == "cso" else "umd.cso"), "text": b"some text\n" * 9000,
                  "empty": b""}
        return others.get(kind, bytes(content))

    def words(self, command, name):
        words = [command]
        if command == "add-postgap":
            words += ["--count", "2"]
        if command in OUTPUTS or command in INPUTS:
            words += ["-o", OUTPUTS.get(command, ["out.iso"])[0]]
        if command == "iso2iml":
            words += ["--extract=out"]
        if command == "extract":
            words += ["-C", "out"]
        return words + [name]

    def check_done(self, command, kind, name, before):
        """The output of a successful command reads back as its input."""
        if command in BACK:
            self.assert_done(self.run_here(BACK[command][0], "-o", "back.iso", *BACK[command][1:]))
            self.assertEqual(self.read("back.iso"), self.image if kind == "other form" else before[name])
        elif command == "bin2iso":
            self.assertEqual(self.read("out.iso"), self.image[:len(before[name]) // 2352 * SECTOR])
        elif command == "iml2iso":
            end = 24 * SECTOR - 5  # of the file; a mark follows
            self.assertEqual(self.read("out.iso")[:end], self.image[:end])
        elif command in INPUTS:
            self.assertEqual(self.read("out.iso"), self.image)
        elif command == "extract":
            image = before[name] if len(before[name]) == len(self.image) else self.image
            self.assertEqual(self.read("out/A.BIN"), image[20 * SECTOR:][:4 * SECTOR - 5])
        elif command == "add-postgap":
            self.assertEqual(len(self.read(name)), len(before[name]) + 2 * SECTOR)
        else:
            self.assertEqual(self.state(), before)

    def check(self, command, kind):
        name = self.put(command, kind)
        before = self.state()
        result = self.run_here(*self.words(command, name))
        self.assertEqual(result.status, 0 if kind in SUCCEEDS[command] else 1, result)
        if result.status == 0:
            self.check_done(command, kind, name, before)
        else:
            self.assertIn(os.path.basename(name), result.err + result.out)
            self.assertEqual(self.state(), before)

    def test_every_command_with_every_kind_of_input(self):
        kept = self.names()
        for command in SUCCEEDS:
            for kind in KINDS:
                if kind == "device" and IS_WINDOWS:
                    continue
                with self.subTest(command=command, kind=kind):
                    self.check(command, kind)
                for name in set(self.names()) - set(kept):
                    path = self.path(name)
                    shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)


if __name__ == "__main__":
    unittest.main()

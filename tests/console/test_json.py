"""Reports as JSON: docs/json.md names exactly the members that occur, with their types."""
import hashlib
import json
import os
import re
import struct
import subprocess
import unittest
import zlib

from support import ConsoleTest

DOCUMENT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../docs/json.md")
TYPES = {"text": (str,), "integer": (int,), "number": (float,), "true or false": (bool,), "object": (dict,),
         "object or null": (dict, type(None)), "texts": (list,), "objects": (list,), "integer or null": (int, type(None))}


def documented():
    """For each heading, the types of its members."""
    found, heading = {}, None
    with open(DOCUMENT, encoding="utf-8") as file:
        for line in file:
            if line.startswith("## "):
                heading = line[3:].strip()
                found[heading] = {}
            row = re.match(r"\| `([^`]+)` \| ([a-z ]+) \|", line)
            if row:
                found[heading][row[1]] = row[2]
    return found


def members(value, prefix=""):
    """The dotted name and the value of each member."""
    for name, member in value.items():
        yield prefix + name, member
        if isinstance(member, dict):
            yield from members(member, prefix + name + ".")
        if isinstance(member, list):
            for element in member:
                if isinstance(element, dict):
                    yield from members(element, prefix + name + "[].")


def param_sfo(title, disc_id):
    keys, values, index = b"", b"", b""
    for key, text in ((b"DISC_ID", disc_id), (b"TITLE", title)):
        index += struct.pack("<HHIII", len(keys), 0x0204, len(text) + 1, 64, len(values))
        keys += key + b"\0"
        values += text.ljust(64, b"\0")
    start = 20 + len(index)
    return b"\0PSF" + struct.pack("<IIII", 0x101, start, start + len(keys), 2) + index + keys + values


class Json(ConsoleTest):
    def master(self, name, application, **files):
        source = self.path("src-" + name)
        for path, content in files.items():
            path = path.replace("__", "/").replace("_dot_", ".")
            os.makedirs(os.path.dirname(os.path.join(source, path)), exist_ok=True)
            self.write(os.path.join("src-" + name, path), content)
        subprocess.run(["genisoimage", "-quiet", "-V", "GAME", "-o", self.path(name), source], check=True,
                       stderr=subprocess.DEVNULL)
        image = bytearray(self.read(name))
        image[32776:32776 + 32] = application.ljust(32)
        image[33342:33342 + 128] = application.ljust(128)
        image[33792:33800] = b"CD-XA001"
        self.write(name, image)

    def setUp(self):
        super().setUp()
        self.master("cd.iso", b"PLAYSTATION", SYSTEM_dot_CNF=b"BOOT2 = cdrom0:\\SLUS_200.62;1\r\nVER = 1.00\r\n")
        self.master("psp.iso", b"PSP GAME", PSP_GAME__PARAM_dot_SFO=param_sfo("A g\u00e4me".encode(), b"ULUS10041"))
        for words in (["iso2cso", "psp.iso"], ["iso2dax", "psp.iso"], ["iso2bin", "cd.iso"], ["iso2iml", "cd.iso"]):
            self.assert_done(self.run_here(*words))
        self.write("text.iso", b"no image")

    def reports(self, *words):
        """The objects, one in each line."""
        return [json.loads(line) for line in self.run_here(*words, "--json").out.splitlines()]

    def check(self, heading, reports):
        types = documented()[heading]
        seen = set()
        for report in reports:
            for name, value in members(report):
                self.assertIn(name, types, (heading, report))
                self.assertIn(type(value), TYPES[types[name]], (heading, name, value))
                if types[name] == "texts":
                    self.assertTrue(all(type(element) is str for element in value), (name, value))
                seen.add(name)
        self.assertEqual(seen, set(types), heading)

    def write_dat(self, name, content):
        self.write("discs.dat", ('<?xml version="1.0"?><datafile><game name="The &quot;game&quot;"><rom name="%s" '
                                 'size="%d" crc="%08X" md5="%s" sha1="%s"/></game></datafile>'
                                 % (name, len(content), zlib.crc32(content), hashlib.md5(content).hexdigest(),
                                    hashlib.sha1(content).hexdigest().upper())).encode())

    def test_every_member_is_documented_and_every_documented_member_occurs(self):
        files = ["cd.iso", "psp.iso", "psp.cso", "psp.dax", "cd.bin", "cd.cue", "cd.iml"]
        self.write_dat("game.iso", self.read("psp.iso"))
        self.check("info", self.reports("info", *files))
        self.check("verify", self.reports("verify", *files) + self.reports("verify", "--dat", "discs.dat", "psp.cso"))
        self.check("verify --against", self.reports("verify", "psp.cso", "psp.dax", "--against", "psp.iso")
                   + self.reports("verify", "psp.cso", "--against", "cd.iso"))
        self.check("list", self.reports("list", *files[:-1]))
        self.check("A file that cannot be read", self.reports("info", "text.iso"))

    def test_values(self):
        """Whole reports on files that the other tests of reports leave out."""
        image = self.read("cd.iso")
        sectors = len(image) // 2048
        report = self.reports("info", "cd.iso")[0]
        self.assertEqual(report, {"file": "cd.iso", "form": "ISO", "file_bytes": len(image), "image": {
            "kind": "PlayStation 2 CD", "system_identifier": "PLAYSTATION", "volume_identifier": "GAME",
            "application_identifier": "PLAYSTATION", "bytes": len(image), "sectors": sectors, "volume_sectors": sectors,
            "postgap": "complete", "files": 1, "folders": 1, "disc_id": "SLUS-20062"}})
        bin_report, cue_report = self.reports("info", "cd.bin", "cd.cue")
        self.assertEqual((bin_report["form"], cue_report["form"]), ("BIN", "CUE"))
        self.assertEqual((bin_report["file_bytes"], cue_report["file_bytes"]),
                         (sectors * 2352, len(self.read("cd.cue"))))
        self.assertEqual((bin_report["image"], cue_report["image"]), (report["image"], report["image"]))
        layout = self.reports("info", "cd.iml")[0]
        self.assertEqual(layout["file_bytes"], len(self.read("cd.iml")))
        sums = {"bytes": len(image), "crc32": "%08x" % zlib.crc32(image), "md5": hashlib.md5(image).hexdigest(),
                "sha1": hashlib.sha1(image).hexdigest()}
        self.write_dat("Game (Europe).iso", image)
        self.assertEqual(self.reports("verify", "--dat", "discs.dat", "cd.iso"), [{
            "file": "cd.iso", "form": "ISO", "ok": True, "problems": [], "image": sums,
            "dat": {"file": "discs.dat", "status": "verified", "game": 'The "game"', "name": "Game (Europe).iso"}}])
        self.assertEqual(self.reports("verify", "--dat", "discs.dat", "psp.iso")[0]["dat"],
                         {"file": "discs.dat", "status": "unknown"})
        self.assertEqual(self.reports("verify", "psp.cso", "--against", "psp.iso"), [
            {"file": "psp.cso", "form": "CSO", "against": "psp.iso", "ok": True, "difference": None}])

    def test_a_failing_file_has_an_object_too(self):
        for command in "info", "verify", "list":
            result = self.run_here(command, "--json", "text.iso", "psp.iso", "missing.iso")
            self.assertEqual(result.status, 1)
            first, second, third = [json.loads(line) for line in result.out.splitlines()]
            self.assertEqual(first, {"file": "text.iso", "error": "text.iso: not a known kind of disc image"})
            self.assertEqual(second["file"], "psp.iso")
            self.assertEqual(third["file"], "missing.iso")
            self.assertIn("vantrel %s: text.iso: not a known kind" % command, result.err)

    def test_titles_and_disc_numbers(self):
        cd, psp, cso, raw = [report["image"] for report in self.reports("info", "cd.iso", "psp.iso", "psp.cso", "cd.bin")]
        self.assertEqual((cd.get("title"), cd["disc_id"]), (None, "SLUS-20062"))
        self.assertEqual((psp["title"], psp["disc_id"]), ("A g\u00e4me", "ULUS-10041"))
        self.assertEqual((cso["title"], raw["disc_id"]), (psp["title"], cd["disc_id"]))
        self.assertIn("  disc id: SLUS-20062\n", self.run_here("info", "cd.iso").out)

    def test_a_disc_database(self):
        for inputs, entry in ((["psp.iso", "psp.cso", "psp.dax"], "psp.iso"), (["cd.bin", "cd.cue"], "cd.bin")):
            self.write_dat("Game (Europe)." + entry[-3:], self.read(entry))
            for name in inputs:
                result = self.run_here("verify", "--dat", "discs.dat", name)
                self.assert_done(result)
                for text in "status: verified\n", 'game: The "game"\n', "name: Game (Europe)." + entry[-3:]:
                    self.assertIn(text, result.out)
        # A BIN is looked up as a file, an image of it as an image.
        result = self.run_here("verify", "--dat", "discs.dat", "cd.iso")
        self.assertEqual(result.status, 1)
        self.assertIn("status: unknown\n", result.out)
        self.assertIn("no entry of discs.dat has the size and the checksums of cd.iso\n", result.out)

    def test_unusable_databases(self):
        self.write("bad.dat", b"<datafile><game>")
        self.write("deep.dat", b"<datafile>" + b"<game><!--</game>-->" * 100_000)
        for name, cause in (("bad.dat", "not a disc database"), ("deep.dat", "elements are nested too deeply"),
                            ("cd.iso", "not a disc database"), ("none.dat", "none.dat: ")):
            result = self.run_here("verify", "--dat", name, "psp.iso")
            self.assertEqual((result.status, result.out), (1, ""))
            self.assertIn("vantrel verify: psp.iso: %s: " % name, result.err)
            self.assertIn(cause, result.err)
        self.assertEqual(self.run_here("verify", "--dat", "x", "--against", "y", "psp.iso").status, 2)
        result = self.run_here("verify", "--dat", "discs.dat", "cd.iml")
        self.assertEqual(result.status, 1)


if __name__ == "__main__":
    unittest.main()

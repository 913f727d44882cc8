#!/usr/bin/env python3
"""Edits discs of all kinds in all ways, and reads what results with a second implementation, 7z, isoinfo and xorriso.

usage: edit_table.py VANTREL GROUP [IMAGE [CHANGE]]

Every image of the group (see edit_images.py) is changed in every way of CHANGES by "iml2iso" (with and without its gap
file), by "replace -o" and by "replace --in-place". Afterwards all trees must name the new content, everything else must be
where it was, and volume sizes, closing anchor and postgap must be at the new end.
"""
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

from disc import POSTGAP, SECTOR, Disc, sectors
from disc_readers import check_with_tools
from edit_images import GROUPS, image_of


class Wrong(Exception):
    pass


def expect(condition, text, *values):
    if not condition:
        raise Wrong(text % values)


# What is changed

def places(disc):
    """The names of each place that has content, by sector."""
    found = {}
    for path, file in disc.primary.files.items():
        if file.size:
            found.setdefault((file.sector, file.size), []).append(path)
    return [(file[0], file[1], sorted(names)) for file, names in sorted(found.items())]


def free_behind(disc, sector, size):
    """Number of free sectors directly behind an extent."""
    start = sector + sectors(size)
    end = start
    while end < disc.content_end and disc.free(end):
        end += 1
    return end - start


def content(names, size):
    return {name: random.Random(names[0] + str(size)).randbytes(size) for name in names}


def place_with(disc, test):
    return next((place for place in places(disc) if test(*place[:2])), None)


def sized(test, size_of):
    """A change that gives the first place that passes the test another size."""
    def change(disc):
        place = place_with(disc, lambda sector, size: test(disc, sector, size))
        return content(place[2], size_of(disc, *place[:2])) if place else None
    return change


def at(index, more):
    """A change of the file that is first (0) or last (-1) on the disc."""
    def change(disc):
        _, size, names = places(disc)[index]
        return content(names, max(size + more, 1))
    return change


def filled(disc):
    return content([next(path for path, file in disc.primary.files.items() if not file.size)], 5000)


def all_files(disc):
    """Every file gets a size of its own: some are shorter, some longer, one is emptied, the empty ones are filled."""
    steps = (-3000, 1, 7000, -1, 0, 2048)
    changes = {}
    for index, (_, size, names) in enumerate(places(disc)):
        changes.update(content(names, 0 if index == 3 else max(size + steps[index % len(steps)], 1)))
    for path, file in disc.primary.files.items():
        if not file.size:
            changes.update(content([path], 100))
    return changes


def half(size):
    return size // 2 // SECTOR * SECTOR + 5


def partial(size):
    return 1 < size % SECTOR < SECTOR - 1


def before_unnamed_data(disc, sector, size):
    end = sector + sectors(size)
    return end < disc.content_end and not disc.covered(end) and not disc.free(end)


CHANGES = {
    "unchanged": lambda disc: {},
    "same length": sized(lambda disc, sector, size: size > 5000, lambda disc, sector, size: size),
    "shorter": sized(lambda disc, sector, size: size > 5 * SECTOR, lambda disc, sector, size: half(size)),
    "one byte shorter": sized(lambda disc, sector, size: size > SECTOR, lambda disc, sector, size: size - 1),
    "emptied": sized(lambda disc, sector, size: size > 2 * SECTOR, lambda disc, sector, size: 0),
    "filled": filled,
    "grown within the sector": sized(lambda disc, sector, size: partial(size),
                                     lambda disc, sector, size: sectors(size) * SECTOR),
    "grown into free sectors": sized(lambda disc, sector, size: free_behind(disc, sector, size) > 2,
                                     lambda disc, sector, size: size + 2 * SECTOR),
    "grown over all free sectors": sized(lambda disc, sector, size: free_behind(disc, sector, size) > 2,
                                         lambda disc, sector, size:
                                         (sectors(size) + free_behind(disc, sector, size)) * SECTOR + 1),
    "grown towards unnamed data": sized(before_unnamed_data, lambda disc, sector, size: size + 2 * SECTOR),
    "beyond": sized(lambda disc, sector, size: size > 2 * SECTOR and not free_behind(disc, sector, size),
                    lambda disc, sector, size: size + 40 * SECTOR),
    "last shorter": at(-1, -7000),
    "last longer": at(-1, 30000),
    "first shorter": at(0, -20),
    "first longer": at(0, 30000),
    "all files": all_files,
}

# What must result


def check_files(base, new, changes):
    """All trees name the same files; each has its new content or is where it was."""
    expect(list(new.trees) == list(base.trees), "volumes: %s", list(new.trees))
    for name, tree in base.trees.items():
        check_tree(base, new, tree.files, new.trees[name].files, changes, name)
        expect(new.trees[name].folders == tree.folders, "%s: folders have moved", name)
    expect((new.udf is None) == (base.udf is None), "UDF is lost")
    if base.udf:
        check_tree(base, new, base.udf.files, new.udf.files, changes, "UDF")


def check_tree(base, new, before, after, changes, name):
    expect(set(after) == set(before), "%s: names %s", name, sorted(set(after) ^ set(before)))
    for path, file in before.items():
        # All trees of these images have the same names, but for the order of letters and versions.
        wanted = changes.get(path)
        if wanted is None:
            expect(after[path].extents == file.extents, "%s: %s has moved from %s to %s", name, path, file.extents,
                   after[path].extents)
            expect(new.content(after[path]) == base.content(file), "%s: %s has other content", name, path)
        else:
            expect(new.content(after[path]) == wanted, "%s: %s lacks its new content, %d bytes of %d", name, path,
                   after[path].size, len(wanted))


def check_places(base, new, changes):
    """What fits stays at its sector; the rest is behind everything else. Nothing of the older content is left."""
    covered = {sector for first, count, _ in new.areas() for sector in range(first, first + count)}
    for path, wanted in changes.items():
        before, after = base.primary.files[path], new.primary.files[path]
        own, needed = sectors(before.size), sectors(len(wanted))
        room = own + free_behind(base, before.sector, before.size)
        is_last = before.sector + own >= base.content_end
        if needed <= own or (own and len(changes) <= 2 and needed <= room):
            expect(after.sector == before.sector, "%s fits but has moved from %d to %d", path, before.sector, after.sector)
        elif after.sector != before.sector:
            expect(after.sector >= base.content_end, "%s has moved to %d; the content ends at %d", path, after.sector,
                   base.content_end)
        else:
            expect(needed <= room or is_last, "%s stays, but it has room in %d sectors only, not %d", path, room, needed)
        end = after.sector * SECTOR + len(wanted) if wanted else 0
        expect(not any(new.image[end:end + -end % SECTOR]), "bytes behind the end of %s", path)
        left = [sector for sector in range(before.sector, before.sector + own)
                if sector not in covered and any(new.image[sector * SECTOR:(sector + 1) * SECTOR])]
        expect(not left, "older content of %s is left in the sectors %s", path, left)


def check_ends(base, new, changes):
    """Volume sizes keep their difference to the length; what closes the disc is at its end."""
    added = new.sectors - base.sectors
    expect(added >= 0, "%d sectors are gone", -added)
    expect(len(new.image) % SECTOR == 0, "the length is %d", len(new.image))
    grown = sum(sectors(len(wanted)) for path, wanted in changes.items())
    expect(added <= grown, "%d sectors added for %d", added, grown)
    for name, tree in base.trees.items():
        expect(new.trees[name].volume_sectors == tree.volume_sectors + added, "%s: volume of %d sectors instead of %d", name,
               new.trees[name].volume_sectors, tree.volume_sectors + added)
    expect(new.closing_anchors == base.closing_anchors, "%d anchors at the end instead of %d", new.closing_anchors,
           base.closing_anchors)
    if base.udf:
        expect(new.udf.anchors[0] == 256, "the anchor 256 is lost")
        expect(new.udf.partition_end >= base.udf.partition_end + added, "the partition ends at %d instead of %d",
               new.udf.partition_end, base.udf.partition_end + added)
    expect(new.marked_postgap == base.marked_postgap, "the mark of the postgap is lost")
    if base.sectors - base.content_end >= POSTGAP and base.image[32776:32779] == b"PLA" and not base.udf:
        expect(new.sectors - new.content_end >= POSTGAP, "a postgap of %d sectors", new.sectors - new.content_end)


def check_rest(base, new, changes):
    """Outside of structures, of the changed files and behind the older content, no byte differs."""
    touched = {16}
    for disc in (base, new):
        touched |= {sector for first, count, what in disc.areas() if what != "file" for sector in range(first, first + count)}
        for path in changes:
            file = disc.primary.files[path]
            touched |= set(range(file.sector, file.sector + sectors(file.size)))
    for sector in range(min(base.content_end, new.sectors)):
        part = slice(sector * SECTOR, (sector + 1) * SECTOR)
        expect(sector in touched or base.image[part] == new.image[part], "sector %d differs", sector)


def check_report(base, new, changes, report):
    """What the report counts, in names, and where it says that files went."""
    told, counts = {}, {"in place": 0, "moved": 0}
    for file in report["files"]:
        numbers = (file["from_sector"], file["to_sector"], file["bytes_before"], file["bytes"])
        told.update(dict.fromkeys(file["paths"], numbers))
        counts[file["action"]] += len(file["paths"])
    before, after = base.primary.files, new.primary.files
    actual = {path: (before[path].sector, after[path].sector, before[path].size, len(wanted))
              for path, wanted in changes.items()}
    for path, numbers in actual.items():
        moved = numbers[0] != numbers[1]
        # Without a gap file, nothing tells whether a file of the same length is another one.
        expect(path in told or (report["notices"] and not moved and numbers[2] == numbers[3]), "%s is not reported", path)
        expect(told.get(path, numbers) == numbers, "reported: %s; found: %s", told.get(path), numbers)
    expect(set(told) <= set(actual), "reported but unchanged: %s", set(told) - set(actual))
    wanted = {"unchanged": len(before) - len(told), "changed_in_place": counts["in place"], "moved": counts["moved"],
              "sectors": new.sectors, "sectors_added": new.sectors - base.sectors}
    expect({name: report[name] for name in wanted} == wanted, "the report counts %s; found: %s", report, wanted)


def check(base, image, changes, report):
    new = Disc(image)
    expect(not new.problems, "%s", "; ".join(new.problems[:3]))
    check_files(base, new, changes)
    check_places(base, new, changes)
    check_ends(base, new, changes)
    check_rest(base, new, changes)
    check_report(base, new, changes, report)


# How it is edited


class Bench:
    """An image, its layout with and without gap file, and its extracted files, in a folder of its own."""

    def __init__(self, vantrel, folder, image):
        self.vantrel, self.folder, self.image = vantrel, folder, image
        self.base = Disc(image)
        expect(not self.base.problems, "before any edit: %s", self.base.problems)
        self.write("game.iso", image)
        self.run("iso2iml", "-q", "game.iso", "--extract", "files")
        for name in "game.iml", "game.ims":
            shutil.copy(self.path(name), self.path(name.replace("game", "bare")))
        with open(self.path("bare.iml"), "rb") as file:
            text = file.read().replace(b'"game.ims"', b'"bare.ims"')
        self.write("bare.iml", text)
        self.covered = Disc(self.without_gaps())
        self.is_accepted = self.status("verify", "game.iso") == 0

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def status(self, *words):
        done = subprocess.run([self.vantrel, *words], cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, errors="replace", timeout=60)
        self.told = done.stdout + done.stderr
        return done.returncode

    def run(self, *words):
        status = self.status(*words)
        expect(status == 0, "%s: status %d: %s", " ".join(words)[:200], status, self.told[-500:])

    def without_gaps(self):
        """The image with zeros wherever neither leading structures nor files are; a DVD's last sector is its anchor. It
        ends with the volume, because nothing else tells its length."""
        leading = len(self.read("game.ims")) // SECTOR - (self.base.image[65925:65928] == b"DVD")
        kept = bytearray(len(self.image))
        areas = [(0, leading)] + [(sector, sectors(size)) for sector, size, _ in places(self.base)]
        areas += [(self.base.sectors - 1, 1)] if self.base.closing_anchors else []
        for first, count in areas:
            part = slice(first * SECTOR, (first + count) * SECTOR)
            kept[part] = self.image[part]
        length = max(self.base.primary.volume_sectors, self.base.content_end) * SECTOR
        return bytes(kept[:length]).ljust(length, b"\0")

    def with_files(self, changes, action):
        """Does something while the changed files stand among the extracted ones."""
        before = {path: self.read("files/" + path) for path in changes}
        for path, data in changes.items():
            self.write("files/" + path, data)
        try:
            action()
        finally:
            for path, data in before.items():
                self.write("files/" + path, data)

    def rebuilt(self, layout, changes):
        self.with_files(changes, lambda: self.run("iml2iso", "--json", "-f", layout, "--files", "files", "-o", "new.iso"))
        return self.read("new.iso")

    def words_of(self, changes, disc):
        """PATH=FILE of the first name of each place, in a case of its own."""
        words, seen = [], set()
        for index, (path, data) in enumerate(sorted(changes.items())):
            file = disc.primary.files[path]
            if file.size and file.extents in seen:
                continue
            seen.add(file.extents)
            name = "with-%d" % index
            self.write(name, data)
            words.append("%s=%s" % (path.lower().replace("/", "\\") if index % 2 else path, name))
        return words

    def replaced(self, changes):
        self.run("replace", "--json", "-f", "game.iso", *self.words_of(changes, self.base), "-o", "new.iso")
        return self.read("new.iso")

    def replaced_in_place(self, changes):
        shutil.copy(self.path("game.iso"), self.path("place.iso"))
        self.run("replace", "--json", "--in-place", "place.iso", *self.words_of(changes, self.base))
        return self.read("place.iso")

    # The four ways

    def check_layout(self, changes):
        image = self.rebuilt("game.iml", changes)
        check(self.base, image, changes, json.loads(self.told))
        expect(changes or image == self.image, "nothing is changed, but the image differs")
        if len(changes) > 2:
            check_with_tools(self.path("new.iso"), Disc(image), self.folder)

    def check_bare_layout(self, changes):
        if self.covered.problems:
            return self.check_lost_side(changes)
        image = self.rebuilt("bare.iml", changes)
        check(self.covered, image, changes, json.loads(self.told))
        expect("gap" in self.told, "no notice on the missing gap file: %s", self.told)
        expect(changes or image == self.covered.image, "nothing is changed, but the image differs")
        if len(changes) > 2:
            check_with_tools(self.path("new.iso"), Disc(image), self.folder)

    def check_lost_side(self, changes):
        """Joliet or UDF lie outside of what the layout keeps: the primary tree is right, and the status tells the rest."""
        try:
            self.rebuilt("bare.iml", changes)
        except Wrong:
            expect("cannot be read" in self.told, "refused: %s", self.told)
        else:
            raise Wrong("status 0: " + self.told)
        expect("gap" in self.told, "no notice on the missing gap file: %s", self.told)
        new = Disc(self.read("new.iso"))
        check_tree(self.covered, new, self.covered.primary.files, new.primary.files, changes, "primary")

    def check_replace(self, changes):
        if not changes:
            return
        image = self.replaced(changes)
        report = json.loads(self.told)
        check(self.base, image, changes, report)
        expect(self.replaced_in_place(changes) == image, "in place, the result differs")
        expect(json.loads(self.told) == {**report, "output": "place.iso", "file": "place.iso"}, "in place: %s", self.told)
        if self.is_accepted:
            self.run("verify", "new.iso")
        check_with_tools(self.path("new.iso"), Disc(image), self.folder)
        if len(changes) > 2:
            self.check_way_back(image, changes)

    def check_way_back(self, image, changes):
        """The edited image gets its older contents again, and comes through a layout unchanged."""
        self.write("edited.iso", image)
        self.run("iso2iml", "-q", "-f", "edited.iso", "--extract", "edited")
        self.run("iml2iso", "-q", "-f", "edited.iml", "--files", "edited", "-o", "new.iso")
        expect(self.read("new.iso") == image, "the edited image does not come through a layout")
        edited = Disc(image)
        older = {path: self.base.content(self.base.primary.files[path]) for path in changes}
        self.run("replace", "--json", "-f", "edited.iso", *self.words_of(older, edited), "-o", "new.iso")
        check(edited, self.read("new.iso"), older, json.loads(self.told))


WAYS = {"layout": Bench.check_layout, "layout without gaps": Bench.check_bare_layout, "replace": Bench.check_replace}


def main():
    vantrel, group = os.path.abspath(sys.argv[1]), sys.argv[2]
    images, names = sys.argv[3:4] or GROUPS[group], sys.argv[4:5] or list(CHANGES)
    failures, count = [], 0
    for image in images:
        with tempfile.TemporaryDirectory(prefix="vantrel-edit-") as folder:
            bench = Bench(vantrel, folder, image_of(image, folder))
            for name in names:
                changes = CHANGES[name](bench.base)
                if changes is None:
                    continue
                for way, check_way in WAYS.items():
                    count += 1
                    try:
                        check_way(bench, changes)
                    except (Wrong, ValueError, subprocess.TimeoutExpired) as wrong:
                        failures.append("%s, %s, %s: %s" % (image, name, way, wrong))
    print("%d edits" % count)
    sys.exit("\n".join(failures) if failures else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Changes boot images of discs of genisoimage and xorriso; xorriso must find each at its new place, loaded as a whole."""
import os
import random
import subprocess
import sys
import tempfile

SECTOR = 2048
FILES = {"BOOT.IMG": 2048, "DATA.BIN": 9000, "EFI.IMG": 5000, "Z.BIN": 3000}
BIOS = ["-b", "BOOT.IMG", "-c", "BOOT.CAT", "-no-emul-boot", "-boot-load-size", "4"]
EFI = ["-eltorito-alt-boot", "-e", "EFI.IMG", "-no-emul-boot"]
IMAGES = {"genisoimage": ["genisoimage", "-quiet", *BIOS],
          "xorriso": ["xorriso", "-as", "mkisofs", "-quiet", "--norock", *BIOS, *EFI]}
# New lengths, and how many units of 512 bytes are loaded afterwards: the whole file, as before.
CHANGES = {"BOOT.IMG": ((2047, 4), (9000, 20)), "EFI.IMG": ((5001, 12), (100, 4), (70000, 140)), "DATA.BIN": ((20000, None),)}


def run(*words, folder):
    done = subprocess.run(words, cwd=folder, capture_output=True, stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        sys.exit("%s: status %d: %s" % (" ".join(words), done.returncode, done.stderr.decode()[-500:]))
    return done.stdout.decode("latin-1")


def boot_images(path, folder):
    """{name: (units loaded, sector)} according to xorriso."""
    counts, names = {}, {}
    for line in run("xorriso", "-indev", path, "-report_el_torito", "plain", folder=folder).splitlines():
        words = line.split(":", 1)[-1].split()
        if line.startswith("El Torito boot img"):
            counts[words[0]] = (int(words[-2]), int(words[-1]))
        elif line.startswith("El Torito img path"):
            names[words[0]] = words[1].lstrip("/")
    return {names[number]: counts[number] for number in counts}


def check(folder, base, name, count, contents):
    with open(os.path.join(folder, "new.iso"), "rb") as file:
        image = file.read()
    found = boot_images("new.iso", folder)
    expected = {path: (count if path == name else units) for path, (units, _) in base.items()}
    if {path: units for path, (units, _) in found.items()} != expected:
        sys.exit("%s with %d bytes: xorriso finds %s, not %s" % (name, len(contents[name]), found, expected))
    for path, (_, sector) in found.items():
        if image[sector * SECTOR:sector * SECTOR + len(contents[path])] != contents[path]:
            sys.exit("%s with %d bytes: %s is not at sector %d" % (name, len(contents[name]), path, sector))


def edit(vantrel, folder, name):
    """Writes the image with the file "new" as `name`, in every way, and yields after each."""
    run(vantrel, "replace", "-f", "game.iso", name + "=new", "-o", "new.iso", folder=folder)
    yield
    run("cp", "game.iso", "new.iso", folder=folder)
    run(vantrel, "replace", "--in-place", "new.iso", name + "=new", folder=folder)
    yield
    run("rm", "-rf", "out", folder=folder)
    run("mkdir", "out", folder=folder)
    run(vantrel, "iso2iml", "--extract", "-o", "out/game.iml", "game.iso", folder=folder)
    place = next(os.path.join(top, each) for top, _, names in os.walk(os.path.join(folder, "out")) for each in names
                 if each == name)
    run("cp", "new", place, folder=folder)
    for gaps in ("game.gaps", None):
        run(vantrel, "iml2iso", "-f", "out/game.iml", "-o", "new.iso", folder=folder)
        yield
        if gaps:
            os.remove(os.path.join(folder, "out", gaps))


def main():
    vantrel = os.path.abspath(sys.argv[1])
    source = random.Random(1)
    with tempfile.TemporaryDirectory(prefix="vantrel-boot-") as folder:
        contents = {name: source.randbytes(size) for name, size in FILES.items()}
        os.mkdir(os.path.join(folder, "src"))
        for name, content in contents.items():
            with open(os.path.join(folder, "src", name), "wb") as file:
                file.write(content)
        for program, words in IMAGES.items():
            run(*words, "-sysid", "PLAYSTATION", "-A", "PLAYSTATION", "-o", "game.iso", "src", folder=folder)
            with open(os.path.join(folder, "game.iso"), "r+b") as file:
                file.seek(33792)
                file.write(b"CD-XA001")
            base = boot_images("game.iso", folder)
            for name, changes in CHANGES.items():
                for size, count in changes:
                    new = source.randbytes(size)
                    with open(os.path.join(folder, "new"), "wb") as file:
                        file.write(new)
                    for _ in edit(vantrel, folder, name):
                        check(folder, base, name, count, {**contents, name: new})
            print("%s: %s" % (program, base))


if __name__ == "__main__":
    main()

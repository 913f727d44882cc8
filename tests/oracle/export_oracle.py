#!/usr/bin/env python3
"""Compares exports with a second implementation and with the file lists of isoinfo and 7z, for images of the image builder
and images mastered by genisoimage and xorriso.

usage: export_oracle.py VANTREL EXPORT_IMAGES
"""
import filecmp
import os
import random
import re
import subprocess
import sys
import tempfile

import export_reference as reference

vantrel, export_images = sys.argv[1:3]


def run(*words, accepted=(0,)):
    done = subprocess.run(words, capture_output=True)
    if done.returncode not in accepted:
        text = done.stdout + done.stderr
        sys.exit("%s: status %d: %s" % (words, done.returncode, text[-2000:].decode(errors="replace")))
    return done.stdout.decode(errors="replace")


def sevenzip(*words):
    """7z reads an image that is shorter than its volume (without postgap), but returns an error status."""
    return run("7z", *words, accepted=(0, 2))


def read(path):
    with open(path, "rb") as file:
        return file.read()


def check(what, ours, theirs):
    if ours != theirs:
        if isinstance(ours, str):
            pairs = [pair for pair in zip(ours.splitlines(), theirs.splitlines()) if pair[0] != pair[1]]
            print(pairs[:3], len(ours), len(theirs))
        sys.exit("%s differs" % what)


def make_folder(top, seed):
    """A tree with empty files, file sizes around sector boundaries and a folder of several sectors."""
    rng = random.Random(seed)
    for folder in ("", "DATA", "DATA/DEEP", "DATA/DEEP/ER", "MOVIE", "SOUND", "NOTHING"):
        os.makedirs(os.path.join(top, folder), exist_ok=True)
        count = 0 if folder == "NOTHING" else 150 if folder == "SOUND" else 7
        for i in range(count):
            size = rng.choice((0, 1, 61, 2047, 2048, 2049, 4096, 5000, 20000))
            with open(os.path.join(top, folder, "F%d.BIN" % i), "wb") as file:
                file.write(rng.randbytes(size))


def patch(path, position, text):
    with open(path, "r+b") as file:
        file.seek(position)
        file.write(text)


def master_images(folder):
    """Images mastered by other programs, with the marks of the three media added."""
    tree = os.path.join(folder, "tree")
    make_folder(tree, 7)
    images = []

    def image(name, *command):
        path = os.path.join(folder, name + ".iso")
        run(*command, "-o", path, tree)
        images.append(path)
        return path

    ps2 = ("-sysid", "PLAYSTATION", "-A", "PLAYSTATION", "-V", "PS2")
    psp = ("-sysid", "PSP GAME", "-A", "PSP GAME", "-V", "PSP")
    xorriso = ("xorriso", "-as", "mkisofs", "--norock", "-quiet")
    patch(image("genisoimage-cd", "genisoimage", "-quiet", *ps2), 33792, b"CD-XA001")
    patch(image("genisoimage-umd", "genisoimage", "-quiet", *psp), 33792, b"CD-XA001")
    dvd = image("genisoimage-dvd", "genisoimage", "-quiet", "-udf", *ps2)
    patch(dvd, 65925, b"DVD")
    patch(dvd, 33792, b"\0")  # genisoimage fills this field with blanks
    patch(image("xorriso-cd", *xorriso, *ps2), 33792, b"CD-XA001")
    patch(image("xorriso-umd", *xorriso, *psp), 33792, b"CD-XA001")
    patch(image("genisoimage-joliet", "genisoimage", "-quiet", "-J", *ps2), 33792, b"CD-XA001")
    patch(image("genisoimage-hidden", "genisoimage", "-quiet", "-hidden", "F3.BIN", *ps2), 33792, b"CD-XA001")
    patch(image("genisoimage-rock-ridge", "genisoimage", "-quiet", "-R", *psp), 33792, b"CD-XA001")
    patch(image("genisoimage-level-3", "genisoimage", "-quiet", "-iso-level", "3", *psp), 33792, b"CD-XA001")
    patch(image("xorriso-joliet", *xorriso, "-J", *psp), 33792, b"CD-XA001")
    joliet_dvd = image("genisoimage-joliet-dvd", "genisoimage", "-quiet", "-udf", "-J", *ps2)
    patch(joliet_dvd, 65925, b"DVD")
    patch(joliet_dvd, 33792, b"\0")
    return images


def isoinfo_files(path):
    """(sector, size, path) of all files according to isoinfo."""
    folder, files = "", []
    for line in run("isoinfo", "-l", "-i", path).splitlines():
        if line.startswith("Directory listing of "):
            folder = line[len("Directory listing of "):].rstrip().replace("/", "\\")
            continue
        match = re.match(r"-.{9}\s+\d+\s+\d+\s+\d+\s+(\d+) .{11} \[\s*(\d+) \w\w\]\s+(\S+)", line)
        if match:
            files.append((int(match[2]), int(match[1]), folder + match[3].split(";")[0]))
    return sorted(files)


def sevenzip_files(path):
    """(size, path) of all files according to 7z."""
    files, name, size, folder = [], None, 0, False
    for line in sevenzip("l", "-tiso", "-slt", path).partition("----------\n")[2].splitlines() + [""]:
        key, _, value = line.partition(" = ")
        if key == "Path":
            name = value
        elif key == "Folder":
            folder = value == "+"
        elif key == "Size":
            size = int(value or 0)
        elif not line and name:
            if not folder:
                files.append((size, "\\" + name.replace("/", "\\").split(";")[0]))
            name, folder = None, False
    return sorted(files)


def listed_files(list_text):
    lines = [line.split("|", 3) for line in list_text.splitlines()]
    return sorted((int(start, 16), int(size, 16), path) for start, size, _, path in lines)


def without_dates(text):
    return re.sub(r"(?m)^(DATE|CREATIONDATE)=[\d/:-]+", r"\1", text)


def check_dates(text):
    if not re.search(r"\r\nDATE=\d{4}/\d\d/\d\d-(0[1-9]|1[0-2]):[0-5]\d:[0-5]\d\r\n", text):
        sys.exit("the date is wrong")
    if not re.search(r"\r\nCREATIONDATE=\d{8}\r\n", text):
        sys.exit("the creation date is wrong")


def shows_primary_names(name):
    """Whether 7z shows the names of the primary volume."""
    return "joliet" not in name and "rock-ridge" not in name


def check_window_export(path, image, work):
    folder, name = os.path.split(path)
    layout = os.path.join(work, "window.iml")
    field = "C:\\Game Folder\\"
    run(export_images, "export", folder, name, layout, field)
    list_text = read(path + "-LBA.TXT").decode("latin-1")
    check(name + ": file list", list_text, reference.file_list(image))
    check(name + ": offset list", read(path + ".vlt"), reference.offset_list(image))
    text = read(layout).decode("latin-1")
    check_dates(text)
    check(name + ": layout", without_dates(text), reference.layout(image, "window.ims", field))
    check(name + ": leading file", read(os.path.join(work, "window.ims")), reference.leading_file(image))
    if "hidden" in name:
        return  # the window does not list hidden files
    check(name + ": isoinfo", listed_files(list_text), isoinfo_files(path))
    if shows_primary_names(name):
        check(name + ": 7z", sorted((size, path) for _, size, path in listed_files(list_text)), sevenzip_files(path))


def files_below(top):
    return sorted(os.path.relpath(os.path.join(folder, name), top)
                  for folder, _, names in os.walk(top) for name in names)


def layout_paths(text):
    return sorted(re.findall(r'(?m)^\d+ +\d+ +[\d.]+  0   "([^"]*)"\r$', text)[1:])


def check_console_export(path, image, work):
    name = os.path.basename(path)
    layout, ours, theirs = (os.path.join(work, part) for part in ("console.iml", "ours", "theirs"))
    run(vantrel, "iso2iml", path, "-o", layout, "--extract=" + ours)
    text = read(layout).decode("latin-1")
    check(name + ": console layout", without_dates(text), reference.layout(image, "console.ims", ""))
    check(name + ": console leading file", read(os.path.join(work, "console.ims")), reference.leading_file(image))
    listed = [line[20:] for line in run(vantrel, "list", path).splitlines()]
    check(name + ": list and layout", layout_paths(text), sorted(listed_path.replace("/", "\\") for listed_path in listed))
    if shows_primary_names(name):
        sevenzip("x", "-y", "-tiso", "-o" + theirs, path)
        check(name + ": extracted names", files_below(ours), files_below(theirs))
        for file in files_below(ours):
            if not filecmp.cmp(os.path.join(ours, file), os.path.join(theirs, file), shallow=False):
                sys.exit("%s: extracted %s differs" % (name, file))
    run(vantrel, "iso2iml", path, "-o", os.path.join(work, "path.iml"), "--path", "/games/one")
    text = read(os.path.join(work, "path.iml")).decode("latin-1")
    check(name + ": console layout with path", without_dates(text), reference.layout(image, "path.ims", "/games/one/"))


def refused(*words):
    """The error message of a command that must be refused."""
    done = subprocess.run((vantrel, "iso2iml") + words, capture_output=True)
    if done.returncode != 1 or done.stdout:
        sys.exit("%s: status %d: %s" % (words, done.returncode, done.stdout))
    return done.stderr.decode()


def check_refusals(image, work):
    """A refused command writes, replaces and leaves nothing, and its message names the file."""
    layout = os.path.join(work, "out.iml")
    damaged = os.path.join(work, "damaged.iso")
    with open(damaged, "wb") as file:
        file.write(read(image))
    patch(damaged, 33792, b"cd-")
    before = sorted(os.listdir(work))
    check("refused image", refused(damaged, "-o", layout),
          "vantrel iso2iml: %s: Code 9999 - invalid file header %s\n" % (damaged, damaged))
    if "Code 101e - Error Opening " + work + "/none.iso" not in refused(work + "/none.iso"):
        sys.exit("a missing image is not named")
    if work + "/none/out.ims" not in refused(image, "-o", work + "/none/out.iml"):
        sys.exit("a missing folder is not named")
    if damaged not in refused(image, "-o", layout, "--extract=" + damaged + "/below"):
        sys.exit("a file in the way of the extraction is not named")
    check("files after refusals", sorted(os.listdir(work)), before)
    run(vantrel, "iso2iml", image, "-o", layout, "--extract")
    written = {name: os.stat(os.path.join(work, name)).st_mtime_ns for name in os.listdir(work)}
    if "out.iml exists already" not in refused(image, "-o", layout, "--extract"):
        sys.exit("an existing layout is not named")
    check("files after a refusal", {name: os.stat(os.path.join(work, name)).st_mtime_ns for name in os.listdir(work)},
          written)
    os.remove(layout)
    os.remove(os.path.join(work, "out.ims"))
    os.remove(os.path.join(work, "out.gaps"))
    if "exists already" not in refused(image, "-o", layout, "--extract"):
        sys.exit("an existing file is not named")
    if os.path.exists(layout):
        sys.exit("a layout was written for a refused extraction")
    run(vantrel, "iso2iml", image, "-f", "-o", layout, "--extract")


def main():
    with tempfile.TemporaryDirectory() as folder:
        run(export_images, "make", folder)
        images = sorted(os.path.join(folder, name) for name in os.listdir(folder)) + master_images(folder)
        with tempfile.TemporaryDirectory() as work:
            check_refusals(images[0], work)
        for path in images:
            image = reference.Image(read(path))
            with tempfile.TemporaryDirectory() as work:
                check_window_export(path, image, work)
                check_console_export(path, reference.ConsoleImage(read(path)), work)
            print("%s: %d files in %d directories" % (os.path.basename(path), len(image.files), len(image.directories)))


if __name__ == "__main__":
    main()

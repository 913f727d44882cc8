"""What 7z, isoinfo and xorriso read on an image, compared with the second implementation of a reader."""
import os
import re
import shutil
import subprocess


def run(*words, accepted=(0,)):
    done = subprocess.run(words, capture_output=True, stdin=subprocess.DEVNULL)
    text = (done.stdout + done.stderr).decode("latin-1")
    if done.returncode not in accepted:
        raise ValueError("%s: status %d: %s" % (" ".join(words), done.returncode, text[-600:]))
    return text


def files_below(top):
    """The content of all files, by path. Programs may drop or keep the version, and write names in small letters."""
    found = {}
    for folder, _, names in os.walk(top):
        for name in names:
            path = os.path.join(folder, name)
            with open(path, "rb") as file:
                found[os.path.relpath(path, top).split(";")[0].upper()] = file.read()
    return found


def compare(program, found, wanted):
    for path in sorted(set(found) | set(wanted)):
        if found.get(path) != wanted.get(path):
            raise ValueError("%s reads %s wrong: %s bytes instead of %s" % (
                program, path, *(len(files[path]) if path in files else "no" for files in (found, wanted))))


def extracted(folder, program, *words, accepted=(0,)):
    """The files that a program extracts into an empty folder, which is {} in its words."""
    top = os.path.join(folder, "extracted")
    run(program, *(word.replace("{}", top) for word in words), accepted=accepted)
    files = files_below(top)
    run("chmod", "-R", "u+rwx", top)
    shutil.rmtree(top)
    return files


def listed_by_isoinfo(path, *options):
    """(sector, size) of each file according to isoinfo. It gives an empty file no place that matters."""
    folder, files = "", {}
    for line in run("isoinfo", "-l", "-i", path, *options).splitlines():
        if line.startswith("Directory listing of "):
            folder = line[len("Directory listing of "):].strip().lstrip("/")
            continue
        match = re.match(r"[-l].{9}\s+\d+\s+\d+\s+\d+\s+(\d+) .{11} \[\s*(\d+) \w\w\]\s+(\S+)", line)
        if match:
            files[(folder + match[3].split(";")[0]).upper()] = (int(match[2]), int(match[1]))
    return files


def check_with_tools(path, disc, folder):
    # 7z reads an image that is shorter than its volume, but with an error status.
    accepted = (0, 2) if disc.sectors < disc.primary.volume_sectors else (0,)
    wanted = {name.upper(): disc.content(file) for name, file in disc.primary.files.items()}
    compare("7z (ISO 9660)", extracted(folder, "7z", "x", "-y", "-tiso", "-o{}", path, accepted=accepted), wanted)
    if disc.udf:
        compare("7z (UDF)", extracted(folder, "7z", "x", "-y", "-tudf", "-o{}", path), wanted)
    compare("xorriso", extracted(folder, "xorriso", "-osirrox", "on", "-indev", path, "-extract", "/", "{}"), wanted)
    places = {name: (file.sector, file.size) for name, file in disc.primary.files.items()}
    compare_places("isoinfo", listed_by_isoinfo(path), places)
    if "joliet" in disc.trees:
        places = {name: (file.sector, file.size) for name, file in disc.trees["joliet"].files.items()}
        compare_places("isoinfo -J", listed_by_isoinfo(path, "-J"), places)


def compare_places(program, found, wanted):
    if found != {name.upper(): place for name, place in wanted.items()}:
        raise ValueError("%s finds other places: %s" % (program, sorted(set(found.items()) ^ set(wanted.items()))[:4]))

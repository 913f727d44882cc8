"""The discs whose edits are tested: our own, and those of genisoimage and xorriso, with the marks of the three media."""
import binascii
import os
import random
import subprocess

from disc_master import POSTGAP, SECTOR, Entry, Master, make


def tree(seed, hole=0):
    """Files of all sizes: tiny ones, whole sectors, empty ones, two names of one file, a hole before the last one."""
    rng = random.Random(seed)
    return [Entry("SYSTEM.CNF", b"BOOT2 = cdrom0:\\MAIN.ELF;1\r\nVER = 1.00\r\n "),
            Entry("DATA/ALPHA.BIN", rng.randbytes(10340)), Entry("DATA/EMPTY.DAT"), Entry("DATA/BETA.BIN", rng.randbytes(4096)),
            Entry("DATA/DEEP/GAMMA.BIN", rng.randbytes(70001)), Entry("EMPTY.DAT"),
            Entry("DATA/DEEP/TINY.TXT", b"x"), Entry("DATA/TWIN.BIN", link="DATA/ALPHA.BIN"),
            Entry("MOVIE/INTRO.PSS", rng.randbytes(20000)), Entry("MOVIE/LAST.PSS", rng.randbytes(9000), hole=hole)]


def many_files(seed):
    """A folder of several sectors, and files in a deep one."""
    rng = random.Random(seed)
    files = [Entry("SOUND/VOICE%03d.VAG" % i, rng.randbytes(rng.choice((1, 700, 2048, 2049, 5000)))) for i in range(130)]
    return files + [Entry("A/B/C/D/E/F/LEVEL%d.BIN" % i, rng.randbytes(3000 + i)) for i in range(8)] + [Entry("EMPTY.DAT")]


OURS = {
    "cd": dict(kind="cd", attributes=True, postgap=POSTGAP, hole=9),
    "cd-bare": dict(kind="cd", empty_files_own_sectors=True),
    "cd-marked-postgap": dict(kind="cd", postgap=POSTGAP, postgap_mark=b"postgap"),
    "cd-missing-postgap": dict(kind="cd", missing=POSTGAP, hole=5),
    "cd-postgap-not-counted": dict(kind="cd", postgap=POSTGAP, postgap_counted=False, hole=4, hole_fill=0x77),
    "dvd": dict(kind="dvd", udf=True, hole=12),
    "dvd-own-empty": dict(kind="dvd", udf=True, empty_files_own_sectors=True),
    "dvd-without-udf": dict(kind="dvd", hole=7),
    "dvd-joliet": dict(kind="dvd", udf=True, joliet=True, hole=7),
    "umd": dict(kind="umd", hole=11),
    "umd-filled-hole": dict(kind="umd", hole=11, hole_fill=0x5A, tables_behind=True),
    "joliet": dict(kind="umd", joliet=True, hole=9),
    "joliet-behind": dict(kind="cd", joliet=True, joliet_behind_files=True, postgap=POSTGAP, hole=9),
    "umd-folders": dict(kind="umd", entries=many_files),
    "dvd-folders": dict(kind="dvd", udf=True, entries=many_files),
}
PS2 = ("-sysid", "PLAYSTATION", "-A", "PLAYSTATION", "-V", "SAMPLE")
PSP = ("-sysid", "PSP GAME", "-A", "PSP GAME", "-V", "SAMPLE")
GENISOIMAGE = ("genisoimage", "-quiet", "-cache-inodes")
XORRISO = ("xorriso", "-as", "mkisofs", "-quiet", "--norock")
THEIRS = {
    "genisoimage-cd": (GENISOIMAGE + PS2, "cd"),
    "genisoimage-umd": (GENISOIMAGE + ("-no-pad",) + PSP, "umd"),
    "genisoimage-joliet": (GENISOIMAGE + ("-J",) + PS2, "cd"),
    "genisoimage-enhanced": (GENISOIMAGE + ("-iso-level", "4") + PSP, "umd"),
    "genisoimage-udf": (GENISOIMAGE + ("-udf",) + PS2, "dvd"),
    "genisoimage-udf-joliet": (GENISOIMAGE + ("-udf", "-J") + PS2, "dvd"),
    "xorriso-cd": (XORRISO + PS2, "cd"),
    "xorriso-umd": (XORRISO + ("-no-pad",) + PSP, "umd"),
    "xorriso-joliet": (XORRISO + ("-J",) + PSP, "umd"),
}
GROUPS = {
    "cd": ("cd", "cd-bare", "cd-marked-postgap", "cd-missing-postgap", "cd-postgap-not-counted", "genisoimage-cd", "xorriso-cd"),
    "dvd": ("dvd", "dvd-own-empty", "dvd-without-udf", "dvd-joliet"),
    "udf": ("genisoimage-udf", "genisoimage-udf-joliet"),
    "umd": ("umd", "umd-filled-hole", "genisoimage-umd", "xorriso-umd", "genisoimage-enhanced"),
    "joliet": ("joliet", "joliet-behind", "genisoimage-joliet", "xorriso-joliet"),
    "folders": ("umd-folders", "dvd-folders"),
}


def own_image(name, seed=1):
    options = dict(OURS[name])
    entries, hole = options.pop("entries", None), options.pop("hole", 0)
    return make(Master(entries=entries(seed) if entries else tree(seed, hole), **options))


def write_tree(top, entries):
    for entry in entries:
        path = os.path.join(top, entry.path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if entry.link:
            os.link(os.path.join(top, entry.link), path)
            continue
        with open(path, "wb") as file:
            file.write(entry.content)


def with_mark(image, kind):
    """Adds the mark by which a medium is recognised. That of a DVD lies in a UDF descriptor, whose CRC follows."""
    image = bytearray(image)
    if kind != "dvd":
        image[33792:33800] = b"CD-XA001"
        return bytes(image)
    image[33792:33800] = bytes(8)
    descriptor = image[32 * SECTOR:33 * SECTOR]
    descriptor[389:392] = b"DVD"
    length = int.from_bytes(descriptor[10:12], "little")
    descriptor[8:10] = binascii.crc_hqx(bytes(descriptor[16:16 + length]), 0).to_bytes(2, "little")
    descriptor[4] = sum(descriptor[:4] + descriptor[5:16]) % 256
    image[32 * SECTOR:33 * SECTOR] = descriptor
    return bytes(image)


def their_image(name, folder, entries=None):
    command, kind = THEIRS[name]
    top, path = os.path.join(folder, name + ".tree"), os.path.join(folder, name + ".raw")
    write_tree(top, entries or tree(2))
    subprocess.run(command + ("-o", path, top), check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    with open(path, "rb") as file:
        image = file.read()
    os.remove(path)
    return with_mark(image, kind)


def image_of(name, folder):
    return own_image(name) if name in OURS else their_image(name, folder)

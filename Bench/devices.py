"""The devices and trees of the comparison, all of them below one scratch folder."""

import os
import plistlib
import shutil
import sqlite3
import subprocess

STEPS = (
    "ATTACHMENTS SAFARI APPLICATIONS OTAUPDATES BATTERYDATA CYDIA CYDIASOURCES DEPENDENCIES LOGFILES CACHEFILES "
    "TEMPFILES FILETYPECLEANUP CUSTOMFILES"
).split()
FILE_TYPES = ["log", "logs", "tmp", "temp"]

# The step for caches empties this folder.
SNAPSHOTS = "private/var/mobile/Library/Caches/Snapshots"
TEMPORARY = "private/var/tmp"
ATTACHMENTS = "private/var/mobile/Library/SMS/Attachments"


class Maker:
    def __init__(self, programs, scratch):
        self.programs = programs
        self.scratch = scratch

    def device(self, name, junk=0, steps=()):
        """A device with just these steps on; gives its folder."""
        folder = os.path.join(self.scratch, name)
        self._run("ozdevice", "create", folder, "--files", str(junk))
        self.choose(folder, steps)
        return folder

    def choose(self, device, steps):
        settings = {key: key in steps for key in STEPS}
        # This step knows more than on and off: 1 is the smart cleanup.
        settings["ATTACHMENTS"] = int("ATTACHMENTS" in steps)
        folder = root(device, "private/var/mobile/Library/Preferences")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "com.ozdev90.ozvarine.plist"), "wb") as file:
            plistlib.dump({"cleanupSettings": settings, "fileTypes": FILE_TYPES, "testMode": False}, file)

    def files(self, folder, folders, files):
        """A folder of folders with that many small files in each, in place of what is there."""
        shutil.rmtree(folder, ignore_errors=True)
        self._run("rows", "files", folder, str(folders), str(files))

    def messages(self, device, rows):
        """A message database of that many rows, whose attachments are half of the files."""
        attachments = root(device, ATTACHMENTS)
        shutil.rmtree(attachments, ignore_errors=True)
        for number in range(4096):
            os.makedirs(os.path.join(attachments, shard(number)))
        known = []
        for number in range(2 * rows):
            name = f"{shard(number)}/{number * 2654435761 % 2**32:08X}-{number:08X}"
            os.mkdir(os.path.join(attachments, name))
            os.close(os.open(os.path.join(attachments, name, "IMG_0001.jpg"), os.O_CREAT | os.O_WRONLY, 0o644))
            if number % 2 == 0:
                known.append((str(number), f"~/Library/SMS/Attachments/{name}/IMG_0001.jpg"))
        with sqlite3.connect(root(device, "private/var/mobile/Library/SMS/sms.db")) as database:
            database.execute("delete from attachment")
            database.executemany("insert into attachment (guid, filename) values (?, ?)", known)
        database.close()

    def packages(self, device, count):
        """A package database of that many packages, each of which needs 20 others."""
        with open(root(device, "private/var/lib/dpkg/status"), "w", encoding="ascii") as file:
            for number in range(count):
                needed = ((number + 1 + step * step) % count for step in range(20))
                file.write(
                    f"Package: org.example.package{number}\nStatus: install ok installed\nSection: Tweaks\n"
                    f"Maintainer: Example <packages@example.org>\nArchitecture: iphoneos-arm\nVersion: 1.{number}\n"
                    f"Depends: {', '.join(f'org.example.package{other} (>= 1.0)' for other in needed)}\n"
                    f"Description: Package {number}\n of an example\nName: Package {number}\n\n"
                )

    def _run(self, program, *arguments):
        subprocess.run([os.path.join(self.programs, program), *arguments], check=True, stdout=subprocess.DEVNULL)


def shard(number):
    """The two folders that a message's attachments lie below."""
    return f"{number % 256:02x}/{number // 256 % 16:02d}"


def root(device, path=""):
    return os.path.join(device, "Root", path)

"""What the comparison sets against a test run and the restore after it: every file below a folder gets another
name and its old one back, by one process, in the order of the folder's listing."""

import os
import sys

extension = ".backup"


def files_below(folder):
    pending = [folder]
    while pending:
        with os.scandir(pending.pop()) as entries:
            for entry in list(entries):
                if entry.is_dir(follow_symlinks=False):
                    pending.append(entry.path)
                elif entry.is_file(follow_symlinks=False):
                    yield entry.path


for path in files_below(sys.argv[1]):
    os.rename(path, path + extension)
for path in files_below(sys.argv[1]):
    if path.endswith(extension):
        os.rename(path, path[: -len(extension)])

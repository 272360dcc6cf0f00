"""Packages of the npm registry that checks read and run, pinned by version and checksum.

A list has a line for each package: what it is for, its name, its version and the SHA-256 of its
archive.
"""
import hashlib
import pathlib
import subprocess
import sys
import tarfile


def fetch(package_list, folder):
    """The packages of the list, unpacked below the folder: [(use, folder)]. Tools and libraries,
    which require each other, lie in node_modules, others in files."""
    found = []
    for row in package_list.read_text().splitlines():
        if row.startswith("#"):
            continue
        use, name, version, checksum = row.split()
        archive = folder / ("%s-%s.tgz" % (name.lstrip("@").replace("/", "-"), version))
        target = folder / ("node_modules" if use == "tool" else "files") / name
        if not archive.exists():
            subprocess.run(["npm", "pack", "--silent", "--pack-destination", folder,
                            "%s@%s" % (name, version)], check=True, stdout=subprocess.DEVNULL)
        digest = hashlib.sha256(archive.read_bytes()).hexdigest()
        if digest != checksum:
            sys.exit("npm_packages: %s has another checksum: %s" % (archive, digest))
        if not target.exists():
            target.mkdir(parents=True)
            with tarfile.open(archive) as packed:
                for member in packed:
                    name = pathlib.PurePosixPath(*pathlib.PurePosixPath(member.name).parts[1:])
                    if not member.isfile() or ".." in name.parts:
                        continue
                    (target / name).parent.mkdir(parents=True, exist_ok=True)
                    (target / name).write_bytes(packed.extractfile(member).read())
        found.append((use, target))
    return found

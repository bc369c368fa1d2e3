"""Where a run was made, as (what, value)."""

import datetime
import pathlib
import re
import subprocess

PACKAGES = ["libfmt-dev", "libspdlog-dev", "liblog4cplus-dev", "liblog4cxx-dev", "libgoogle-glog-dev", "libboost-log-dev"]


def first_line_of(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def file_entry(path, key):
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        if line.startswith(key):
            return line.split(":", 1)[1].strip()
    return "unknown"


def version_of_quill(headers):
    parts = dict(re.findall(r"Version(Major|Minor|Patch)\{(\d+)\}", (headers / "quill/Backend.h").read_text("utf-8")))
    return "%(Major)s.%(Minor)s.%(Patch)s" % parts


def describe(folder, quill):
    """
    \\param folder where the logs are written
    \\param quill the folder of quill's headers, or None
    """
    yield "date", datetime.date.today().isoformat()
    yield "processor", "%s, %s cores" % (file_entry("/proc/cpuinfo", "model name"), first_line_of("nproc"))
    yield "memory", file_entry("/proc/meminfo", "MemTotal")
    yield "system", "%s, Debian %s" % (first_line_of("uname", "-srm"), first_line_of("cat", "/etc/debian_version"))
    yield "file system", first_line_of("findmnt", "--noheadings", "--output", "FSTYPE", "--target", str(folder))
    yield "compiler", first_line_of("c++", "--version")
    for package in PACKAGES:
        yield package, first_line_of("dpkg-query", "--show", "--showformat=${Version}", package)
    if quill:
        yield "quill, headers alone", version_of_quill(quill)

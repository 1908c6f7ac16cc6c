#!/usr/bin/env python3
"""Prints CHANGELOG.md as Debian's changelogs are written.

usage: debian_changelog.py CHANGELOG VERSION MAINTAINER

The first version in it must be VERSION; each needs a date and at least one change.
"""

import datetime
import email.utils
import re
import sys
import textwrap

HEADING = re.compile(r"## (\d+(?:\.\d+)+) – (\d{4}-\d\d-\d\d)")


def read(text):
    """Versions with their dates and changes, as they stand in the text."""
    versions = []
    for line in text.splitlines():
        heading = HEADING.fullmatch(line)
        if heading:
            versions.append((heading[1], datetime.date.fromisoformat(heading[2]), []))
        elif line.startswith("## "):
            raise ValueError(f"neither a version nor a date in “{line}”")
        elif line.startswith("- "):
            versions[-1][2].append(line[2:])
        elif line.startswith("  "):
            versions[-1][2][-1] += " " + line.strip()
    return versions


def entry(version, date, changes, maintainer):
    lines = [f"tavrel ({version}-1) unstable; urgency=medium", ""]
    for change in changes:
        lines += textwrap.wrap(change, 78, initial_indent="  * ", subsequent_indent="    ")
    noon = datetime.datetime.combine(date, datetime.time(12), datetime.timezone.utc)
    lines += ["", f" -- {maintainer}  {email.utils.format_datetime(noon)}", ""]
    return "\n".join(lines)


def main(changelog, version, maintainer):
    with open(changelog, encoding="utf-8") as file:
        versions = read(file.read())
    if not versions or versions[0][0] != version:
        raise ValueError(f"{changelog} does not begin with version {version}")
    for each, _, changes in versions:
        if not changes:
            raise ValueError(f"{changelog} names no change of version {each}")
    print("\n".join(entry(*each, maintainer) for each in versions), end="")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    try:
        main(*sys.argv[1:])
    except ValueError as error:
        sys.exit(f"debian_changelog.py: {error}")

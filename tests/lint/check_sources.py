#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""No timed sleeps in tests, a licence line in every source, no file that has outgrown one screenful of ideas."""
import pathlib
import re
import sys

SLEEPS = re.compile(r'\b(QTest::qWait\s*\(|qSleep\s*\(|QThread::m?u?sleep\s*\(|usleep\s*\(|nanosleep\s*\(|sleep_for\s*\(|(?<![\w:.])sleep\s*\()')
LICENCE = "SPDX-License-Identifier: GPL-3.0-or-later"
# What authors of extensions build with and copy.
PERMISSIVE = "SPDX-License-Identifier: MIT"
PERMISSIVE_FOLDERS = ("include/kestrel", "extensions/template")
PERMISSIVE_BUILD_FILES = ("extensions/template/CMakeLists.txt", "include/KestrelExtensionConfig.cmake.in")
MAXIMUM_LINES = 600


def licence_fault(text, is_permissive):
    other = LICENCE if is_permissive else PERMISSIVE
    if other not in text[:200]:
        return "no licence line"
    return "authors of extensions need it under MIT" if is_permissive else "under MIT, which is for what authors of extensions need"


def check(root):
    errors, files = [], 0
    for folder in ("src", "services", "tests", "extensions", "include"):
        for path in sorted([*(root / folder).rglob("*.h"), *(root / folder).rglob("*.cpp")]):
            files += 1
            text = path.read_text(encoding="utf-8")
            name = path.relative_to(root)
            is_permissive = any(name.is_relative_to(permissive) for permissive in PERMISSIVE_FOLDERS)
            if (PERMISSIVE if is_permissive else LICENCE) not in text[:200]:
                errors.append(f"{name}: {licence_fault(text, is_permissive)}")
            if text.count("\n") > MAXIMUM_LINES:
                errors.append(f"{name}: {text.count(chr(10))} lines, at most {MAXIMUM_LINES}")
            if folder == "tests" and "bench" not in path.parts:
                for number, line in enumerate(text.splitlines(), 1):
                    if SLEEPS.search(line) and not line.lstrip().startswith("//"):
                        errors.append(f"{name}:{number}: a timed sleep; wait for the condition instead")
    for path in (root / name for name in PERMISSIVE_BUILD_FILES):
        text = path.read_text(encoding="utf-8") if path.exists() else PERMISSIVE
        if PERMISSIVE not in text[:200]:
            errors.append(f"{path.relative_to(root)}: {licence_fault(text, True)}")
    return errors, files


def main():
    errors, files = check(pathlib.Path(sys.argv[1]))
    print("\n".join(errors))
    print(f"{files} files, {len(errors)} errors")
    return 1 if errors or not files else 0


if __name__ == "__main__":
    sys.exit(main())

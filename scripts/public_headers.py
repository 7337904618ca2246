"""Which headers are installed, for the checks in this folder."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def public_headers():
    """Their names under morvane/, as the folders' CMakeLists.txt list them under HEADERS."""
    names = set()
    for listing in sorted((ROOT / "morvane").rglob("CMakeLists.txt")):
        folder = listing.parent.relative_to(ROOT / "morvane")
        text = re.sub(r"#[^\n]*", "", listing.read_text())
        for call in re.findall(r"^morvane_room\(([^)]*)\)", text, re.MULTILINE):
            words = call.split()
            listed = words[words.index("HEADERS") + 1 :] if "HEADERS" in words else []
            if "SOURCES" in listed:
                listed = listed[: listed.index("SOURCES")]
            names.update((folder / word).as_posix() for word in listed)
    return names

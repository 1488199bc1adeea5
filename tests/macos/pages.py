"""What the pages of docs/formats tell producers, read from their text."""

import re


def marker_of(root, page):
    """The bytes of a marker."""
    text = (root / "docs" / "formats" / page).read_text(encoding="utf-8")
    block = re.search(r"marker is\s+these \d+ bytes:\n\n((?: {4}(?:[0-9a-f]{2} ?){32}\n)+)", text)
    return bytes.fromhex(block[1])

"""Panels: what a view shows of a photo, for people."""

from __future__ import annotations

import html
from dataclasses import dataclass
from typing import Any

_LINE_PIXELS, _HEAD_PIXELS, _MOST_PIXELS = 40, 180, 700


@dataclass(frozen=True, repr=False)
class Panel:
    """A panel, as it was when it was made. A notebook shows it as a page, a terminal as text."""

    view: str
    text: str
    #: A whole HTML page, with the picture in it, that needs nothing but itself.
    page: str
    #: The same as data: label, value and path of each item.
    values: dict[str, Any]

    def __repr__(self) -> str:
        return self.text.rstrip("\n")

    def _repr_html_(self) -> str:
        # In a frame, as the page has a style of its own, which is not to become that of the notebook.
        height = min(_HEAD_PIXELS + _LINE_PIXELS * self.text.count("\n"), _MOST_PIXELS)
        style = f"width: 100%; height: {height}px; border: 0; resize: vertical"
        return f'<iframe sandbox="" style="{style}" srcdoc="{html.escape(self.page)}"></iframe>'


Panel.__module__ = "zephmetadata"

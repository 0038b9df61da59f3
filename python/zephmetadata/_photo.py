"""The metadata of one file as a mapping."""

from __future__ import annotations

import io
import json
import os
import warnings
from collections.abc import Iterator, MutableMapping
from dataclasses import dataclass
from types import TracebackType
from typing import Any, Literal, Protocol, Union

from . import _core, _values
from ._edits import Edit, edits_for, warn_of_languages
from ._errors import (
    Error,
    MetadataWarning,
    PathError,
    ReadError,
    TypeRefused,
    ValueRefused,
    WriteError,
    WriteReport,
    did_you_mean,
    reason,
)
from ._files import Paths, files
from ._panels import Panel

SidecarPolicy = Literal["auto", "never", "always"]


class Readable(Protocol):
    """What can stand for a file that is only read, such as an object of fsspec."""

    def read(self, size: int = ..., /) -> bytes: ...
    def seek(self, offset: int, whence: int = ..., /) -> int: ...
    def tell(self) -> int: ...


class Writable(Protocol):
    """What takes the bytes of an edited photo."""

    def write(self, data: bytes, /) -> int | None: ...


Source = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview, Readable]

POLICIES: dict[str, int] = {"never": 0, "auto": 1, "always": 2}
_ORIGINS = ["none", "xmp", "native"]


@dataclass(frozen=True)
class Finding:
    """Something that does not agree with the definitions. ``severity`` is ``"error"`` or ``"warning"``."""

    path: str
    severity: str
    rule: str
    message: str


def policy_number(sidecar: str) -> int:
    if sidecar not in POLICIES:
        raise ValueRefused(f"sidecar is one of {', '.join(POLICIES)}, not {sidecar!r}")
    return POLICIES[sidecar]


def no_view(view: str, file: str | None = None) -> ValueRefused:
    known = _core.views()
    near = did_you_mean(_core.nearest_name(view, known)) or f"; there are {', '.join(known)}"
    return ValueRefused(f"there is no view {view!r}{near}", file=file)


class Photo(MutableMapping[str, Any]):
    """The metadata of a photo, a video or another media file, by path. Made by ``open``, ``parse`` and ``merge``.

    Values are ``str``, ``int``, ``float``, ``bool``, ``fractions.Fraction``, ``datetime`` (aware or naive, as it is
    stored), ``date``, ``PartialDate``, ``list``, and ``dict`` for structures and for texts by language. A text that is
    stored against its type comes as ``str``. Lists and dictionaries are copies: assign them to change the photo.

    What is assigned takes the place of what was there: of a list all items (a set keeps their
    order), of a structure all fields. Texts by language are those of the dictionary and no others, and a ``str`` is that of ``"x-default"`` alone, which leaves the others. A
    dictionary without ``"x-default"``, the text for readers of any other language, leaves it, unless it says what one of
    the languages said; then it goes on to say that. Where there is none yet, it becomes the first text.

    >>> photo = zephmetadata.open("photo.jpg")
    >>> photo["dc:title"] = {"en": "Boats at dawn", "de": "Boote im Morgengrauen"}
    >>> photo["dc:title"]
    {'x-default': 'Harbour at dawn', 'de': 'Boote im Morgengrauen', 'en': 'Boats at dawn'}
    >>> photo["dc:title"] = {**photo["dc:title"], "fr": "Bateaux à l’aube"}
    >>> list(photo["dc:title"])
    ['x-default', 'de', 'en', 'fr']

    One thread at a time; different photos may be used by different threads.
    """

    def __init__(self, media: _core.Media, name: str | None, sidecar: str = "auto") -> None:
        self._media = media
        self._name = name
        self._policy = sidecar
        self._parts: list[Photo] = []

    @property
    def name(self) -> str | None:
        """The file; None for what is no file."""
        return self._name

    @property
    def sidecar(self) -> str | None:
        """The file that changes go to when it is not the photo itself."""
        return os.fsdecode(self._media.sidecar()) or None

    def __repr__(self) -> str:
        together = f"of {len(self._parts)} file{'s' * (len(self._parts) > 1)}"
        what = together if self._parts else repr(self._name) if self._name else "without a file"
        return f"<zephmetadata.Photo {what}, {len(self)} properties{', not saved' * self.changed}>"

    def __enter__(self) -> Photo:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if kind is None:
            self.save()

    # The mapping.

    def __getitem__(self, path: str) -> Any:
        raw = self._raw(path)
        if raw is None:
            raise self._no_value(path)
        return _values.from_raw(raw, path)

    def __contains__(self, path: object) -> bool:
        try:
            return isinstance(path, str) and self._raw(path) is not None
        except PathError:
            return False

    def __iter__(self) -> Iterator[str]:
        return iter(self._media.properties())

    def __len__(self) -> int:
        return len(self._media.properties())

    def __setitem__(self, path: str, value: Any) -> None:
        self._edit(self._edits(path, value))

    def __delitem__(self, path: str) -> None:
        if self._raw(path) is None:
            raise self._no_value(path)
        self._edit([("delete", self._canonical(path), "", "")])

    def update(self, other: Any = (), /, **values: Any) -> None:
        """Sets all of the values, or, when one of them is refused, none."""
        edits: list[Edit] = []
        for path, value in dict(other, **values).items():
            edits += self._edits(path, value)
        self._edit(edits)

    def _canonical(self, path: str) -> str:
        return _values.canonical(path, self._name)

    def _raw(self, path: str) -> Any:
        return self._media.get(self._canonical(path))

    def _no_value(self, path: str) -> PathError:
        return PathError("there is no value" + _values.suggestion(path), file=self._name, path=path)

    def _edits(self, path: str, value: Any) -> list[Edit]:
        path = self._canonical(path)
        raw = self._media.get(path)
        try:
            return edits_for(path, raw, value)
        except Error as error:
            error.file = self._name
            raise

    def _edit(self, edits: list[Edit]) -> None:
        for number, why in self._media.edit(edits) if edits else ():
            path = edits[number][1]
            raise ValueRefused(why + _values.suggestion(path), file=self._name, path=path)
        warn_of_languages(edits, self._name, stacklevel=3)

    # What else is known.

    def display(self, path: str, lang: str = "") -> str:
        """The value as it is shown to people, in the user's language or in ``lang``; empty when there is none.

        >>> photo = zephmetadata.open(sample())
        >>> photo.label("exif:ExposureTime", lang="de"), photo.display("exif:ExposureTime", lang="fr")
        ('Belichtungszeit', '1/250 s')
        """
        return self._media.display(self._canonical(path), lang)

    def label(self, path: str, lang: str = "") -> str:
        """The name of the property for people, likewise; the path where none is known."""
        return _core.label(self._canonical(path), lang) or path

    def panel(self, view: str = "overview", lang: str = "") -> Panel:
        """What a view shows, such as ``"camera"``, ``"gps"`` or ``"iptccore"``; the overview has what matters most.

        >>> zephmetadata.open(sample()).panel("camera", lang="de").text.splitlines()[6]
        '    Brennweite        50 mm (50 mm im 35-mm-Kleinbildformat)'
        """
        forms = self._media.panel(view, lang)
        if forms is None:
            raise no_view(view, self._name)
        text, page, values = forms
        return Panel(view, text, page, json.loads(values))

    def origin(self, path: str) -> str:
        """Where the value was read from: ``"xmp"``, ``"native"`` (Exif, IPTC and the like) or ``"none"``."""
        return _ORIGINS[self._media.origin(self._canonical(path))]

    def validate(self) -> list[Finding]:
        """What does not agree with the definitions."""
        return [Finding(*row) for row in self._media.validate()]

    def packet(self) -> bytes:
        """An XMP packet (ISO 16684-1) of all of it."""
        return self._media.packet()

    # The way back.

    @property
    def changed(self) -> bool:
        """Whether there is something to save."""
        return bool(self._media.touched())

    @property
    def data(self) -> bytes | None:
        """All bytes of what was opened as bytes, with what was saved; None for anything else.

        >>> photo = zephmetadata.open(pathlib.Path(sample()).read_bytes())
        >>> photo["xmp:Rating"] = 2
        >>> photo.save().changed, zephmetadata.open(photo.data)["xmp:Rating"]
        (True, 2.0)
        """
        return self._media.data()

    def save(self, target: Writable | None = None) -> WriteReport:
        """Writes what changed, all at once; the file stays as it is when nothing did.

        What was opened as bytes is changed in memory (``data``). With ``target``, an object with ``write``, the whole of
        what was opened as bytes or as an object goes there, also when nothing changed; only what stands in the target
        after this has returned is to be kept. Edits of an object are saved once: open what was written to go on.

        Raises WriteError when that cannot be done; the file is then as it was. After ``"changed"`` (another program
        changed the file meanwhile) open it again and repeat the edits.
        """
        if target is None:
            return self._reported(self._media.save())
        if self._name is not None or self._parts:
            raise TypeRefused("a target is for what was opened as bytes or as an object", file=self._name)
        return self._reported(self._media.save_to(target))

    def _reported(self, outcome: _core._Outcome) -> WriteReport:
        changed, status, detail, refusals, failures = outcome
        unwritten = {name: reason(*why) for name, *why in failures} if self._parts else {}
        report = WriteReport(changed, status, detail, refusals, unwritten)
        if status != "success" or refusals:
            is_packet = status == "no-file" and not self._name and not self._parts
            why = "; ".join(refusals) or ("it is a packet, and only read" if is_packet else reason(status, detail))
            where = f"{self.sidecar}: " if self.sidecar else ""
            raise WriteError(where + why, file=self._name, report=report)
        return report

    def __reduce__(self) -> tuple[Any, ...]:
        if self._parts:
            raise TypeRefused("photos that are edited together cannot be pickled")
        if self.changed and not self.packet():
            raise TypeRefused("this photo cannot be pickled: no packet can hold its metadata", file=self._name)
        return _unpickled, (self._name, self._policy, self.packet(), sorted(self._media.touched()))


def _unpickled(name: str | None, sidecar: str, packet: bytes, touched: list[str]) -> Photo:
    media = _core.open_packet(packet) if name is None else _core.open_file(os.fsencode(name), policy_number(sidecar))
    if media is None or (packet and not media.take_edits(packet, set(touched))):
        raise ReadError("its packet cannot be read", file=name, status="damaged-xmp")
    return Photo(media, name, sidecar)


def open(source: Source, *, sidecar: SidecarPolicy = "auto") -> Photo:
    """The metadata of a file, of the bytes of one, or of an object with ``read``, ``seek`` and ``tell``.

    With ``sidecar="auto"`` a ``.xmp`` file beside the photo is read, too, and written where there is one and where the
    photo itself cannot be; ``"never"`` keeps to the photo, ``"always"`` writes sidecars alone. Of bytes and objects
    ``Photo.save`` makes new bytes.
    """
    if isinstance(source, (str, os.PathLike)):
        name = os.fspath(source)
        media = _core.open_file(os.fsencode(name), policy_number(sidecar))
        return _checked(Photo(media, name, sidecar))
    if isinstance(source, (bytes, bytearray, memoryview)):
        return _checked(Photo(_core.open_bytes(bytes(source)), None))
    if isinstance(source, io.TextIOBase) or not hasattr(source, "read") or not hasattr(source, "seek"):
        kind = 'a file of text; open it with "rb"' if isinstance(source, io.TextIOBase) else type(source).__name__
        raise TypeRefused(f"takes a path, bytes or an object with read and seek, not {kind}")
    try:
        media, problem = _core.open_object(source)
    except Exception as error:  # of the object, which may be of any make
        raise ReadError(f"its source cannot be read ({error})", file=None, status="unreadable") from error
    if problem:
        raise ReadError(problem, file=None, status="unreadable")
    return _checked(Photo(media, None))


def _checked(photo: Photo) -> Photo:
    status, detail, problems = photo._media.last_read()
    if status not in ("success", "no-xmp"):
        raise ReadError(reason(status, detail), file=photo.name, status=status)
    if status == "success" and detail:
        problems = [f"the file is damaged ({detail})", *problems]
    for problem in problems:
        warnings.warn(f"{photo.name or 'bytes'}: {problem}", MetadataWarning, stacklevel=3)
    return photo


def parse(packet: bytes) -> Photo:
    """The metadata of an XMP packet.

    >>> photo = parse(b'''<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF
    ... xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description rdf:about=""
    ... xmlns:xmp="http://ns.adobe.com/xap/1.0/" xmp:Rating="3"/></rdf:RDF></x:xmpmeta>''')
    >>> photo["xmp:Rating"]
    3.0
    >>> photo["dc:subject"] = ["harbour", "boats"]
    >>> b"harbour" in photo.packet()
    True
    """
    media = _core.open_packet(packet)
    if media is None:
        raise ReadError("it is no XMP packet", file=None, status="damaged-xmp")
    return Photo(media, None)


def merge(sources: Paths, *, sidecar: SidecarPolicy = "auto") -> Photo:
    """Several files as one: where they differ, the value is ``MIXED``. What is assigned and saved goes to each of them,
    and nothing that is an own value of one gets into another. A file that is named twice counts once. Files are named as
    for ``table``.

    >>> merge([sample(), "photo.jpg"])["xmp:Label"]
    'Green'
    """
    once = {os.path.realpath(source): source for source in files(sources)}
    parts = [open(source, sidecar=sidecar) for source in once.values()]
    if not parts:
        raise ValueRefused("merge takes at least one file")
    together = _core.open_together([part._media for part in parts])
    if together is None:
        raise ReadError("one of the files has no metadata and can be given none", file=None, status="cannot-carry-xmp")
    photo = Photo(together, None)
    photo._parts = parts
    return photo

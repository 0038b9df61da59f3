"""The exceptions of the package, one family, and its warning."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any


class Error(Exception):
    """Base of what the package raises. ``file`` and ``path`` say where, as far as that is known."""

    def __init__(self, message: str, *, file: str | None = None, path: str | None = None) -> None:
        super().__init__(message)
        self.message = message
        self.file = file
        self.path = path

    def __reduce__(self) -> tuple[Any, ...]:
        # By what it holds: pools of processes hand errors on, and take no keywords.
        return _remade, (type(self), self.args, self.__dict__)

    def __str__(self) -> str:
        return ": ".join(part for part in (self.file, self.path, self.message) if part)


def _remade(kind: type[Error], arguments: tuple[Any, ...], state: dict[str, Any]) -> Error:
    error = kind.__new__(kind, *arguments)
    error.args = arguments
    error.__dict__.update(state)
    return error


class ReadError(Error, OSError):
    """A file cannot be read. ``status`` is a name for programs, such as ``"no-file"``. An OSError as well."""

    def __init__(self, message: str, *, file: str | None, status: str) -> None:
        super().__init__(message, file=file)
        self.status = status


@dataclass(frozen=True)
class WriteReport:
    """How a write-back went. ``status`` is ``"success"`` or a name such as ``"changed"`` or ``"read-only"``."""

    #: Whether anything was written; not when nothing differed.
    changed: bool
    status: str
    #: More about the status, for people.
    detail: str = ""
    #: Why values were refused.
    refusals: list[str] = field(default_factory=list)
    #: Of files that are edited together: how it went for each that was not written, by file name.
    files: dict[str, str] = field(default_factory=dict)


class WriteError(Error, OSError):
    """A file could not be written and is as it was. ``report`` has the whole answer. An OSError as well."""

    def __init__(self, message: str, *, file: str | None, report: WriteReport) -> None:
        super().__init__(message, file=file)
        self.report = report


class PathError(Error, KeyError):
    """There is nothing at a path, or it is no path."""

    __str__ = Error.__str__


class ValueRefused(Error, ValueError):
    """A value that its definition does not allow, or an argument that is none of those it may be. Nothing was changed."""


class TypeRefused(Error, TypeError):
    """A value of a type that does not fit; the message says which types do. Nothing was changed."""


class InUse(Error, RuntimeError):
    """A photo was used by two threads at once."""


class MetadataWarning(UserWarning):
    """A file that was read as far as it goes, a package of which not all is right, a language that nobody knows, a column
    that no definition describes though it is near to one."""


REASONS = {
    "no-file": "no such file",
    "not-a-file": "not a file",
    "unreadable": "cannot be read",
    "unknown-format": "not a media file of a known format",
    "damaged-file": "the file is damaged",
    "damaged-xmp": "its XMP is damaged and left as it is",
    "no-xmp": "the file has no metadata",
    "read-only": "it can only be read",
    "cannot-carry-xmp": "its metadata can be read but not written",
    "writing-disabled": "writing is switched off",
    "not-written": "could not be written",
    "changed": "the file was changed by another program meanwhile",
}


def did_you_mean(near: str) -> str:
    return f"; did you mean {near}?" if near else ""


def reason(status: str, detail: str) -> str:
    text = REASONS.get(status, status)
    return f"{text} ({detail})" if detail else text


for _public in (Error, ReadError, WriteReport, WriteError, PathError, ValueRefused, TypeRefused, InUse, MetadataWarning):
    _public.__module__ = "zephmetadata"  # where users find them

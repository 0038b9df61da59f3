"""Which files are meant: by name, by folder, by pattern."""

from __future__ import annotations

import functools
import glob
import os
from collections.abc import Iterable, Iterator
from typing import Any, Union

from . import _core
from ._errors import TypeRefused

#: A file, a folder or a pattern, or several of them.
Paths = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]


def files(paths: Paths) -> list[str]:
    """The files of names, folders and patterns such as ``"photos/**/*.jpg"``, in order. Of a folder those of known formats
    in it and below it, by name; hidden ones, sidecars and links to folders are passed over. A name without a file stays,
    so that whoever opens it is told.

    >>> files("photos")
    ['photos/2024/boats.JPG', 'photos/2024/torn.jpg', 'photos/harbour.jpg']
    """
    listed = [paths] if _is_path(paths) else paths
    if not isinstance(listed, Iterable) or isinstance(listed, (bytes, bytearray)):
        raise TypeRefused(f"takes a path or a list of paths, not {type(paths).__name__}")
    return [file for path in listed for file in _meant(_name_of(path))]


def _is_path(value: Any) -> bool:
    return isinstance(value, (str, os.PathLike))


def _name_of(path: Any) -> str:
    name = os.fspath(path) if _is_path(path) else None
    if not isinstance(name, str):
        raise TypeRefused(f"a path is str or os.PathLike, not {type(path).__name__}")
    return name


def _meant(name: str) -> Iterable[str]:
    if os.path.isdir(name):
        return _files_below(name)
    if glob.has_magic(name) and not os.path.lexists(name):
        return sorted(found for found in glob.glob(name, recursive=True) if not os.path.isdir(found)) or [name]
    return [name]


def _files_below(folder: str) -> Iterator[str]:
    try:
        with os.scandir(folder) as entries:
            listed = sorted((entry for entry in entries if not entry.name.startswith(".")), key=lambda entry: entry.name)
    except OSError:
        yield folder  # it cannot be listed: its row says that it is no file
        return
    for entry in listed:
        if entry.is_dir(follow_symlinks=False):
            yield from _files_below(entry.path)
        elif os.path.splitext(entry.name)[1].lower() in _extensions() and not entry.is_dir():
            yield entry.path


@functools.lru_cache(maxsize=1)
def _extensions() -> frozenset[str]:
    return frozenset(f".{extension}" for extension in _core.extensions()) - {".xmp"}

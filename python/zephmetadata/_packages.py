"""Extension packages: schemas, panels and translations from folders or memory, without code."""

from __future__ import annotations

import os
import warnings
from collections.abc import Mapping
from dataclasses import dataclass
from typing import Union

from . import _core, _values
from ._errors import Error, MetadataWarning

PackageSource = Union[str, "os.PathLike[str]", Mapping[str, Union[str, bytes]]]


@dataclass(frozen=True)
class Package:
    """A package that is loaded, with the namespaces of its schemas and the names of its views."""

    name: str
    version: float
    #: Empty for one from memory.
    folder: str
    schemas: list[str]
    views: list[str]
    #: Whether it comes with the library.
    bundled: bool


def packages() -> list[Package]:
    """The packages that are loaded, in that order."""
    return [Package(*row) for row in _core.packages()]


def load_package(source: PackageSource) -> Package:
    """Loads a package from its folder, or from its documents by name (``"manifest.xml"``, ``"schema/NAME.xml"``,
    ``"view/NAME.xml"``, ``"loc/LANGUAGE.dict"``). What is wrong in it becomes warnings, and what is right is loaded; raises
    Error when it is none, or when one of its name is loaded. No other thread may use the library meanwhile.
    """
    if isinstance(source, Mapping):
        where, documents = None, [(name, text.encode() if isinstance(text, str) else text) for name, text in source.items()]
        row, problems = _core.load_documents(documents)
    else:
        where = os.fspath(source)
        row, problems = _core.load_folder(os.fsencode(where))
    _forget()
    if row is None:
        raise Error("; ".join(problems) or "it is no package", file=where)
    for problem in problems:
        warnings.warn(f"{where or row[0]}: {problem}", MetadataWarning, stacklevel=2)
    return Package(*row)


def remove_package(name: str) -> bool:
    """Takes the package of that name out again, wherever it came from; False when there is none. Values in files stay."""
    is_removed = _core.remove_package(name)
    _forget()
    return is_removed


def _forget() -> None:
    _values.definition.cache_clear()
    _values.suggestion.cache_clear()
    _values._canonical.cache_clear()


Package.__module__ = "zephmetadata"

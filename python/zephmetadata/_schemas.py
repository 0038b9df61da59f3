"""What the library knows of properties."""

from __future__ import annotations

from dataclasses import dataclass, field

from . import _core


@dataclass(frozen=True)
class Property:
    """A property. ``type`` is the id of its type, ``kind`` what values are made of, such as ``"integer"`` or ``"bag"``."""

    path: str
    type: str
    kind: str
    items: str
    label: str
    description: str
    #: The stored value and its label, for each value that can be chosen.
    choices: list[tuple[str, str]] = field(default_factory=list)


@dataclass(frozen=True)
class Schema:
    """The properties of a namespace, by path."""

    namespace: str
    prefix: str
    label: str
    description: str
    properties: dict[str, Property]


def schemas() -> list[Schema]:
    """The schemas that are known, ordered by prefix.

    >>> {schema.prefix: schema for schema in schemas()}["dc"].properties["dc:subject"].type
    'bag'
    """
    return [
        Schema(namespace, prefix, label, text, {path: Property(path, **known) for path, known in properties.items()})
        for namespace, prefix, label, text, properties in _core.schemas()
    ]

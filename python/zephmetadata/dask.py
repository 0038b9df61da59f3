"""Collections of any size on the workers of Dask, one machine or many.

The files have to be where the workers can read them under the same names. Every function that is sent to a worker can be
repeated: reading changes nothing, and a file that holds what is to be written is not written again.

>>> rows = read([sample()], ["xmp:Rating"])
>>> rows.compute(scheduler="synchronous")[0]["xmp:Rating"]
4.0
"""

from __future__ import annotations

import csv
import glob
import importlib
import io
import json
import os
from collections.abc import Iterable, Sequence
from typing import Any

from . import _tables, _values
from ._photo import SidecarPolicy

# Dask has no types of its own.
_dask: Any = importlib.import_module("dask")
_bag: Any = importlib.import_module("dask.bag")
Bag = Any

FILES_PER_PARTITION = 300


def files_of(patterns: str | Iterable[str | os.PathLike[str]]) -> list[str]:
    """The files of names and of patterns such as ``"photos/**/*.jpg"``, each once, in order. A name without a file
    stays, so that its row says so."""
    names: dict[str, None] = {}
    for pattern in [patterns] if isinstance(patterns, str) else patterns:
        text = os.fspath(pattern)
        is_pattern = glob.has_magic(text) and not os.path.lexists(text)
        names.update(dict.fromkeys(sorted(glob.glob(text, recursive=True)) if is_pattern else [text]))
    return list(names)


def read(
    patterns: str | Iterable[str | os.PathLike[str]],
    columns: Sequence[str],
    *,
    files_per_partition: int = FILES_PER_PARTITION,
    sidecar: SidecarPolicy = "auto",
) -> Bag:
    """The rows of ``zephmetadata.table`` as a bag. A file that cannot be read costs its own row alone; a partition whose
    worker dies is read again by another."""
    for column in columns:
        _values.canonical(column)  # a wrong path is told here, and not in every partition
    names = files_of(patterns)
    parts = [names[at : at + files_per_partition] for at in range(0, len(names), files_per_partition)]
    return _bag.from_delayed([_dask.delayed(read_partition)(part, list(columns), sidecar) for part in parts or [[]]])


def read_partition(names: Sequence[str], columns: Sequence[str], sidecar: SidecarPolicy = "auto") -> list[dict[str, Any]]:
    """What ``read`` has a worker do: any engine that maps functions over lists of names can map this one."""
    rows: list[dict[str, Any]] = _tables.table(names, columns, workers=1, sidecar=sidecar)
    return rows


def write(rows: Bag, *, sidecar: SidecarPolicy = "auto", delete_missing: bool = False) -> Bag:
    """``zephmetadata.apply`` for each partition of @p rows, which are to name each file once: a bag of what became of the
    files. A row of a file that could not be written has the reason in ``"error"``."""
    return rows.map_partitions(write_partition, sidecar=sidecar, delete_missing=delete_missing)


def write_partition(
    rows: Iterable[dict[str, Any]], sidecar: SidecarPolicy = "auto", delete_missing: bool = False
) -> list[dict[str, Any]]:
    """What ``write`` has a worker do."""
    return _tables.apply(rows, workers=1, sidecar=sidecar, delete_missing=delete_missing)


def to_files(rows: Bag, folder: str | os.PathLike[str], kind: str = "jsonl") -> list[str]:
    """Computes the rows and writes a file for each partition, JSON lines (``"jsonl"``) or ``"csv"``; their names, in order.
    A file is there as a whole or not at all: a repeated partition replaces its own."""
    if kind not in _TEXT_OF:
        raise ValueError(f"kind is one of {', '.join(_TEXT_OF)}, not {kind!r}")
    os.makedirs(folder, exist_ok=True)
    parts = rows.to_delayed()
    names = [os.path.join(os.fspath(folder), f"part-{number:06}.{kind}") for number in range(len(parts))]
    return list(_dask.compute(*(_dask.delayed(_write_file)(part, name, kind) for part, name in zip(parts, names))))


def _write_file(rows: Iterable[dict[str, Any]], name: str, kind: str) -> str:
    # Two workers may write the same partition at once, when one was taken for dead.
    temporary = f"{name}.{os.getpid()}.tmp"
    with open(temporary, "w", encoding="utf-8", errors="surrogateescape", newline="") as file:
        file.write(_TEXT_OF[kind](list(rows)))
        file.flush()
        os.fsync(file.fileno())
    os.replace(temporary, name)
    return name


def _plain(value: Any) -> str:
    """Fractions as "1/250", dates as they are stored."""
    return str(value.isoformat()) if type(value).__name__ in ("datetime", "date") else str(value)


def _jsonl(rows: list[dict[str, Any]]) -> str:
    return "".join(json.dumps(row, ensure_ascii=False, default=_plain) + "\n" for row in rows)


def _csv(rows: list[dict[str, Any]]) -> str:
    text = io.StringIO()
    writer = csv.DictWriter(text, list(rows[0]) if rows else [])
    writer.writeheader()
    for row in rows:
        writer.writerow({name: _cell(value) for name, value in row.items()})
    return text.getvalue()


def _cell(value: Any) -> Any:
    if isinstance(value, (list, dict)):
        return json.dumps(value, ensure_ascii=False, default=_plain)
    return value if value is None or isinstance(value, (str, bool, int, float)) else _plain(value)


_TEXT_OF = {"jsonl": _jsonl, "csv": _csv}

"""Collections of any size on the workers of Dask, one machine or many.

The files have to be where the workers can read them under the same names. Every function that is sent to a worker can be
repeated: reading changes nothing, and a file that holds what is to be written is not written again.

>>> rows = read([sample()], ["xmp:Rating"])
>>> rows.compute(scheduler="synchronous")[0]["xmp:Rating"]
4.0
"""

from __future__ import annotations

import contextlib
import csv
import importlib
import json
import os
import sqlite3
import uuid
from collections.abc import Callable, Sequence
from typing import Any, Literal, TextIO

from . import _files, _tables
from ._errors import ValueRefused
from ._photo import SidecarPolicy

# Dask has no types of its own.
_dask: Any = importlib.import_module("dask")
_bag: Any = importlib.import_module("dask.bag")
Bag = Any

FILES_PER_PARTITION = 300


def read(
    paths: _files.Paths,
    columns: str | Sequence[str] = (),
    *,
    view: str | None = None,
    files_per_partition: int = FILES_PER_PARTITION,
    sidecar: SidecarPolicy = "auto",
    frame: Literal["pandas"] | None = None,
) -> Bag:
    """The rows of ``zephmetadata.table`` as a bag, or, with ``frame="pandas"``, as a dataframe of Dask. Files are named as
    for that, and each counts once. A file that cannot be read costs its own row alone; a partition whose worker dies is
    read again by another.

    In a dataframe the columns have the types of the definitions in every partition: a value that is stored against its type
    is then missing, and ``"error"`` of its row says so.
    """
    columns = _tables.columns_of(columns, view)  # a wrong path is told here, and not in every partition
    names = list(dict.fromkeys(_files.files(paths)))
    parts = [names[at : at + files_per_partition] for at in range(0, len(names), files_per_partition)] or [[]]
    if frame is None:
        return _bag.from_delayed([_dask.delayed(read_partition)(part, columns, sidecar) for part in parts])
    frames = importlib.import_module("dask.dataframe")
    made = [_dask.delayed(_read_frame)(part, columns, sidecar) for part in parts]
    return frames.from_delayed(made, meta=_tables.typed_frame([], columns), verify_meta=False)


def read_partition(names: Sequence[str], columns: Sequence[str], sidecar: SidecarPolicy = "auto") -> list[dict[str, Any]]:
    """What ``read`` has a worker do: any engine that maps functions over lists of names can map this one."""
    return _tables.table(names, columns, workers=1, sidecar=sidecar)


def _read_frame(names: Sequence[str], columns: Sequence[str], sidecar: SidecarPolicy) -> Any:
    return _tables.typed_frame(read_partition(names, columns, sidecar), columns)


def write(rows: Bag, *, sidecar: SidecarPolicy = "auto", delete_missing: bool = False) -> Bag:
    """``zephmetadata.apply`` for each partition of ``rows``, a bag or a dataframe, which are to name each file once: a bag of
    what became of the files. A row of a file that could not be written has the reason in ``"error"``."""
    parts = [_dask.delayed(write_partition)(part, sidecar, delete_missing) for part in rows.to_delayed()]
    return _bag.from_delayed(parts)


def write_partition(
    rows: Any, sidecar: SidecarPolicy = "auto", delete_missing: bool = False
) -> list[dict[str, Any]]:
    """What ``write`` has a worker do. Rows, or a DataFrame."""
    return _tables.apply(rows, workers=1, sidecar=sidecar, delete_missing=delete_missing)


def to_files(rows: Bag, folder: str | os.PathLike[str], kind: str = "jsonl") -> list[str]:
    """Computes the rows, a bag or a dataframe, and writes a file for each partition: JSON lines (``"jsonl"``), ``"csv"``, or
    a database with a table ``files`` (``"sqlite"``); their names, in order. A file is there as a whole or not at all: a
    repeated partition replaces its own. (Of a dataframe ``to_parquet`` is Dask's own.)"""
    if kind not in _WRITE:
        raise ValueRefused(f"kind is one of {', '.join(_WRITE)}, not {kind!r}")
    os.makedirs(folder, exist_ok=True)
    parts = rows.to_delayed()
    names = [os.path.join(os.fspath(folder), f"part-{number:06}.{kind}") for number in range(len(parts))]
    return list(_dask.compute(*(_dask.delayed(_write_file)(part, name, kind) for part, name in zip(parts, names))))


def _write_file(rows: Any, name: str, kind: str) -> str:
    # Two workers may write the same partition at once, when one was taken for dead; on two machines with the same id.
    temporary = f"{name}.{uuid.uuid4().hex}.tmp"
    try:
        _WRITE[kind](_tables.records(rows), temporary)
        with open(temporary, "rb") as file:
            os.fsync(file.fileno())
        os.replace(temporary, name)
    except BaseException:
        with contextlib.suppress(FileNotFoundError):
            os.remove(temporary)
        raise
    return name


def _text_file(name: str) -> TextIO:
    return open(name, "w", encoding="utf-8", errors="surrogateescape", newline="")


def _write_jsonl(rows: list[dict[str, Any]], name: str) -> None:
    with _text_file(name) as file:
        file.writelines(json.dumps(row, ensure_ascii=False, default=_tables.as_text) + "\n" for row in rows)


def _write_csv(rows: list[dict[str, Any]], name: str) -> None:
    with _text_file(name) as file:
        writer = csv.DictWriter(file, list(rows[0]) if rows else [])
        writer.writeheader()
        writer.writerows({column: _cell(value) for column, value in row.items()} for row in rows)


def _write_sqlite(rows: list[dict[str, Any]], name: str) -> None:
    with contextlib.closing(sqlite3.connect(name)) as database, database:
        columns = list(rows[0]) if rows else [_tables.FILE, _tables.ERROR]
        quoted = ", ".join('"' + column.replace('"', '""') + '"' for column in columns)
        database.execute(f"CREATE TABLE files ({quoted})")
        marks = ", ".join("?" * len(columns))
        cells = ([_stored(_cell(row[column])) for column in columns] for row in rows)
        database.executemany(f"INSERT INTO files VALUES ({marks})", cells)


def _cell(value: Any) -> Any:
    return value if value is None or isinstance(value, (str, bool, int, float)) else _tables.as_text(value)


def _stored(cell: Any) -> Any:
    """What SQLite takes: names of files that are no UTF-8 as their bytes, numbers beyond 64 bits as texts."""
    if isinstance(cell, str):
        return _encodable(cell)
    return str(cell) if isinstance(cell, int) and not -(2**63) <= cell < 2**63 else cell


def _encodable(text: str) -> str | bytes:
    try:
        text.encode()
        return text
    except UnicodeEncodeError:
        return os.fsencode(text)


_WRITE: dict[str, Callable[[list[dict[str, Any]], str], None]] = {
    "jsonl": _write_jsonl,
    "csv": _write_csv,
    "sqlite": _write_sqlite,
}

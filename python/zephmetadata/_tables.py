"""Collections as tables: a row for each file."""

from __future__ import annotations

import importlib
import math
import os
from collections.abc import Callable, Iterable, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from typing import Any, Literal

from . import _core, _values
from ._errors import Error, reason
from ._photo import SidecarPolicy, open, policy_number

FILE, ERROR = "file", "error"
_BATCH = 64  # files that a worker takes at once

Row = dict[str, Any]


def table(
    paths: Iterable[str | os.PathLike[str]],
    columns: Sequence[str],
    *,
    workers: int | None = None,
    sidecar: SidecarPolicy = "auto",
    frame: Literal["pandas"] | None = None,
) -> Any:
    """A row for each file, in the order of @p paths: ``"file"``, the values of the columns, and ``"error"``.

    Where there is no value, and in the row of a file that cannot be read, the cells are None; ``"error"`` says why.
    With ``frame="pandas"`` it is a DataFrame, with the types of the definitions.

    >>> table([sample(), "missing.jpg"], ["xmp:Rating", "dc:subject"])[1]
    {'file': 'missing.jpg', 'xmp:Rating': None, 'dc:subject': None, 'error': 'no such file'}
    """
    wanted = [_values.canonical(column) for column in columns]
    names = [os.fspath(path) for path in paths]
    policy = policy_number(sidecar)

    def read(name: str) -> Row:
        return _row(name, policy, columns, wanted)

    rows = _map(read, names, workers)
    return rows if frame is None else _frame(rows, columns, wanted)


def _row(name: str, policy: int, columns: Sequence[str], wanted: list[str]) -> Row:
    row: Row = {FILE: name}
    status, detail, raw = _core.read_columns(os.fsencode(name), policy, wanted)
    for column, path, value in zip(columns, wanted, raw):
        row[column] = _values.from_raw(value, path)
    is_read = status in ("success", "no-xmp")
    row[ERROR] = None if is_read else reason(status, detail)
    return row


def _map(work: Callable[[Any], Row], items: Sequence[Any], workers: int | None) -> list[Row]:
    """In as many threads as wanted: the library reads and writes without Python's lock."""
    count = workers or os.cpu_count() or 1
    if count == 1 or len(items) < 2:
        return [work(item) for item in items]
    batches = [items[at : at + _BATCH] for at in range(0, len(items), _BATCH)]
    with ThreadPoolExecutor(count) as pool:
        return [row for rows in pool.map(lambda batch: [work(item) for item in batch], batches) for row in rows]


_DTYPES = {"integer": "Int64", "real": "Float64", "boolean": "boolean", "text": "string"}
_TYPES: dict[str, tuple[type, ...]] = {
    "Int64": (int,),
    "Float64": (float,),
    "boolean": (bool,),
    "string": (str,),
}


def _frame(rows: list[Row], columns: Sequence[str], wanted: list[str]) -> Any:
    pandas = importlib.import_module("pandas")
    frame = pandas.DataFrame(rows, columns=[FILE, *columns, ERROR], dtype=object)
    types = {FILE: "string", ERROR: "string"}
    for column, path in zip(columns, wanted):
        dtype = _DTYPES.get(_values.kind_of(path), "object")
        fits = _TYPES.get(dtype, ())
        if all(type(cell) in fits for cell in frame[column] if cell is not None):
            types[column] = dtype  # a value that is stored against its type keeps the column as it is
    return frame.astype(types)


def apply(
    rows: Any, *, workers: int | None = None, sidecar: SidecarPolicy = "auto", delete_missing: bool = False
) -> list[Row]:
    """Writes the cells of a table (a list of rows, or a DataFrame) that differ from what the files hold.

    Each file is written once and stays as it is when nothing differs, so that a repetition does no harm. Rows with an
    error are passed over. A cell without a value leaves the file's value alone, unless @p delete_missing is true. The
    result has a row for each: ``"file"``, ``"changed"`` and ``"error"``.

    >>> apply([{"file": sample(), "xmp:Rating": 2, "error": None}])[0]["changed"]
    True
    """
    policy_number(sidecar)
    records = rows.to_dict("records") if hasattr(rows, "to_dict") else list(rows)
    names = [os.path.realpath(record[FILE]) for record in records]
    if len(set(names)) != len(names):
        raise ValueError("a file has more than one row")
    return _map(lambda record: _write(record, sidecar, delete_missing), records, workers)


def _write(record: Mapping[str, Any], sidecar: SidecarPolicy, delete_missing: bool) -> Row:
    result: Row = {FILE: record[FILE], "changed": False, ERROR: None}
    if not _is_missing(record.get(ERROR)):
        return {**result, ERROR: record[ERROR]}
    try:
        photo = open(record[FILE], sidecar=sidecar)
        cells = {path: _plain(cell) for path, cell in record.items() if path not in (FILE, ERROR)}
        photo.update({path: cell for path, cell in cells.items() if cell is not None and cell is not _values.MIXED})
        for path in (path for path, cell in cells.items() if cell is None and delete_missing and path in photo):
            del photo[path]
        result["changed"] = photo.save().changed
    except Error as error:
        result[ERROR] = f"{error.path}: {error.message}" if error.path else error.message
    return result


def _is_missing(cell: Any) -> bool:
    return cell is None or type(cell).__name__ == "NAType" or (isinstance(cell, float) and math.isnan(cell))


def _plain(cell: Any) -> Any:
    """A cell of a frame as Python has it."""
    if _is_missing(cell):
        return None
    if hasattr(cell, "to_pydatetime"):
        return cell.to_pydatetime()
    return cell.item() if type(cell).__module__ == "numpy" and hasattr(cell, "item") else cell



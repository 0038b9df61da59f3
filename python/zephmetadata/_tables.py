"""Collections as tables: a row for each file."""

from __future__ import annotations

import importlib
import json
import math
import os
import warnings
from collections.abc import Callable, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from typing import Any, Literal, overload

from . import _core, _values
from ._errors import Error, MetadataWarning, TypeRefused, ValueRefused, reason
from ._files import Paths, files
from ._photo import Photo, SidecarPolicy, no_view, open, policy_number

FILE, ERROR = "file", "error"
_BATCH = 64  # files that a worker takes at once, fewer where there are few
_BATCHES_PER_WORKER = 4

Row = dict[str, Any]
Frame = Literal["pandas", "arrow"]


@overload
def table(
    paths: Paths,
    columns: str | Sequence[str] = ...,
    *,
    view: str | None = ...,
    workers: int | None = ...,
    sidecar: SidecarPolicy = ...,
    frame: None = None,
) -> list[Row]: ...
@overload
def table(
    paths: Paths,
    columns: str | Sequence[str] = ...,
    *,
    view: str | None = ...,
    workers: int | None = ...,
    sidecar: SidecarPolicy = ...,
    frame: Frame,
) -> Any: ...
def table(
    paths: Paths,
    columns: str | Sequence[str] = (),
    *,
    view: str | None = None,
    workers: int | None = None,
    sidecar: SidecarPolicy = "auto",
    frame: Frame | None = None,
) -> Any:
    """A row for each file, in the order of ``paths``: ``"file"``, the values of the columns, and ``"error"``.

    ``paths`` is a file, a folder (its files of known formats and those of the folders in it; hidden ones and sidecars are
    passed over), a pattern such as ``"photos/**/*.jpg"``, or several of them. A column is a path; ``dc:title`` holds all
    languages of a title, ``dc:title[?xml:lang="de"]`` one of them. With ``workers`` as many threads, else one for each
    processor.

    With ``view`` the columns are also what a panel such as ``"camera"`` shows; its made values, such as
    ``"corvid:ShutterSpeed"``, are texts.

    Where there is no value, and in the row of a file that cannot be read, the cells are None; ``"error"`` says why.
    With ``frame="pandas"`` it is a DataFrame, with the types of the definitions, with ``"arrow"`` a table of pyarrow.

    >>> table([sample(), "missing.jpg"], ["xmp:Rating", "dc:subject"])[1]
    {'file': 'missing.jpg', 'xmp:Rating': None, 'dc:subject': None, 'error': 'no such file'}
    """
    columns = columns_of(columns, view)
    wanted = [_values.canonical(column) for column in columns]
    if frame is not None and frame not in _FRAMES:
        raise ValueRefused(f"frame is one of {', '.join(_FRAMES)}, not {frame!r}")
    names = files(paths)
    policy = policy_number(sidecar)

    def read(name: str) -> Row:
        return _row(name, policy, columns, wanted)

    rows = _map(read, names, workers)
    return rows if frame is None else _FRAMES[frame](rows, columns, wanted)


def columns_of(columns: str | Sequence[str], view: str | None) -> list[str]:
    """The columns, with those of a view behind them. Warns of those that are probably mistyped."""
    shown = [] if view is None else _core.columns(view)
    if shown is None:
        raise no_view(str(view))
    named = list(dict.fromkeys([columns] if isinstance(columns, str) else columns))
    for column in named:
        if near := _values.suggestion(_values.canonical(column)):
            warnings.warn(f"{column}: no definition describes it{near}", MetadataWarning, stacklevel=3)
    return list(dict.fromkeys([*named, *shown]))


def _row(name: str, policy: int, columns: Sequence[str], wanted: list[str]) -> Row:
    row: Row = {FILE: name}
    status, detail, raw = _core.read_columns(os.fsencode(name), policy, wanted)
    for column, path, value in zip(columns, wanted, raw):
        row[column] = _values.from_raw(value, path)
    is_read = status in ("success", "no-xmp")
    row[ERROR] = None if is_read else reason(status, detail)
    if status == "success" and detail:
        warnings.warn(f"{name}: the file is damaged ({detail})", MetadataWarning, stacklevel=2)
    return row


def _map(work: Callable[[Any], Row], items: Sequence[Any], workers: int | None) -> list[Row]:
    """In as many threads as wanted: the library reads and writes without Python's lock."""
    count = workers or os.cpu_count() or 1
    if count < 0:
        raise ValueRefused(f"there cannot be {count} workers")
    if count == 1 or len(items) < 2:
        return [work(item) for item in items]
    size = min(_BATCH, len(items) // (count * _BATCHES_PER_WORKER) + 1)
    batches = [items[at : at + size] for at in range(0, len(items), size)]
    with ThreadPoolExecutor(count) as pool:
        return [row for rows in pool.map(lambda batch: [work(item) for item in batch], batches) for row in rows]


_DTYPES = {"integer": "Int64", "real": "Float64", "boolean": "boolean", "text": "string"}
_TYPES: dict[str, tuple[type, ...]] = {
    "Int64": (int,),
    "Float64": (float,),
    "boolean": (bool,),
    "string": (str,),
}


def _fits(cell: Any, dtype: str) -> bool:
    """Whether a column of ``dtype`` can hold it; any can hold nothing."""
    if cell is None:
        return True
    return type(cell) in _TYPES[dtype] and (dtype != "Int64" or -(2**63) <= cell < 2**63)


def _frame(rows: list[Row], columns: Sequence[str], wanted: list[str]) -> Any:
    pandas = importlib.import_module("pandas")
    frame = pandas.DataFrame(rows, columns=[FILE, *columns, ERROR], dtype=object)
    types = {FILE: "string", ERROR: "string"}
    for column, path in zip(columns, wanted):
        dtype = _DTYPES.get(_values.kind_of(path), "object")
        if dtype in _TYPES and all(_fits(cell, dtype) for cell in frame[column]):
            types[column] = dtype  # a value that is stored against its type keeps the column as it is
    return frame.astype(types)


def typed_frame(rows: list[Row], columns: Sequence[str]) -> Any:
    """A frame of these very types, whatever the rows hold: what does not fit is missing, and its row says so."""
    pandas = importlib.import_module("pandas")
    dtypes = {column: _DTYPES.get(_values.kind_of(_values.canonical(column)), "object") for column in columns}
    for row in rows:
        for column, dtype in dtypes.items():
            if dtype in _TYPES and not _fits(row[column], dtype):
                row[ERROR] = row[ERROR] or f"{column}: {row[column]!r} is no {dtype}"
                row[column] = None
    frame = pandas.DataFrame(rows, columns=[FILE, *columns, ERROR], dtype=object)
    return frame.astype({FILE: "string", **dtypes, ERROR: "string"})


def records(rows: Any) -> list[Row]:
    """The rows of a table, whatever holds them, as dictionaries; cells without a value are None."""
    if not hasattr(rows, "to_dict"):
        listed = [rows] if isinstance(rows, Mapping) else list(rows)
        wrong = next((row for row in listed if not isinstance(row, Mapping)), None)
        if wrong is not None:
            raise TypeRefused(f"takes rows as table makes them (dict), or a DataFrame, not {type(wrong).__name__}")
        return [dict(row) for row in listed]
    return [{column: plain(cell) for column, cell in record.items()} for record in rows.to_dict("records")]


def _arrow(rows: list[Row], columns: Sequence[str], wanted: list[str]) -> Any:
    pyarrow = importlib.import_module("pyarrow")
    types = {"Int64": pyarrow.int64(), "Float64": pyarrow.float64(), "boolean": pyarrow.bool_(), "string": pyarrow.string()}
    cells: dict[str, Any] = {}
    for column, path in zip([FILE, *columns, ERROR], [None, *wanted, None]):
        dtype = "string" if path is None else _DTYPES.get(_values.kind_of(path), "object")
        values = [row[column] for row in rows]
        if dtype not in types or not all(_fits(cell, dtype) for cell in values):
            dtype, values = "string", [as_text(cell) for cell in values]
        cells[column] = pyarrow.array(values, types[dtype])
    return pyarrow.table(cells)


_FRAMES: dict[str, Callable[[list[Row], Sequence[str], list[str]], Any]] = {"pandas": _frame, "arrow": _arrow}


def as_text(cell: Any) -> str | None:
    """A cell where only texts can stand: lists and dictionaries as JSON, fractions as "1/250", dates as in ISO 8601."""
    if isinstance(cell, (list, dict)):
        return json.dumps(cell, ensure_ascii=False, default=as_text)
    if cell is None or isinstance(cell, str):
        return cell
    return str(cell.isoformat()) if hasattr(cell, "isoformat") else str(cell)


def apply(
    rows: Any, *, workers: int | None = None, sidecar: SidecarPolicy = "auto", delete_missing: bool = False
) -> list[Row]:
    """Writes the cells of a table (a row, a list of rows, or a DataFrame) that differ from what the files hold.

    Each file is written once and stays as it is when nothing differs, so that a repetition does no harm. Rows with an
    error are passed over. A cell without a value leaves the file's value alone, unless ``delete_missing`` is true. The
    result has a row for each: ``"file"``, ``"changed"`` and ``"error"``.

    >>> apply([{"file": sample(), "xmp:Rating": 2, "error": None}])[0]["changed"]
    True
    """
    policy_number(sidecar)
    listed = records(rows)
    if any(_is_missing(record.get(FILE)) for record in listed):
        raise ValueRefused(f'a row has no "{FILE}"')
    names: set[str] = set()
    for record in listed:
        name = os.path.realpath(record[FILE])
        if name in names:
            raise ValueRefused("it has more than one row", file=os.fspath(record[FILE]))
        names.add(name)
    return _map(lambda record: _write(record, sidecar, delete_missing), listed, workers)


def _write(record: Mapping[str, Any], sidecar: SidecarPolicy, delete_missing: bool) -> Row:
    result: Row = {FILE: record[FILE], "changed": False, ERROR: None}
    if not _is_missing(record.get(ERROR)):
        return {**result, ERROR: record[ERROR]}
    try:
        photo = open(record[FILE], sidecar=sidecar)
        cells = {path: plain(cell) for path, cell in record.items() if path not in (FILE, ERROR)}
        photo.update({path: cell for path, cell in cells.items() if not _stays(photo, path, cell)})
        for path in (path for path, cell in cells.items() if cell is None and delete_missing and path in photo):
            del photo[path]
        result["changed"] = photo.save().changed
    except Error as error:
        result[ERROR] = f"{error.path}: {error.message}" if error.path else error.message
    return result


def _stays(photo: Photo, path: str, cell: Any) -> bool:
    """Whether a cell is nothing to write: no value, the text of the one that is there, as a CSV file has it, or a value that
    a view makes of others to show it."""
    if cell is None or cell is _values.MIXED:
        return True
    if not isinstance(cell, str):
        return False
    if path not in photo:
        return bool(cell == photo.display(path))
    meant, stored = _values.from_raw(cell, path), photo[path]
    same_kind = type(meant) is type(stored) and not isinstance(meant, str)
    return same_kind and _values.to_text(meant, path) == _values.to_text(stored, path)


def _is_missing(cell: Any) -> bool:
    return cell is None or type(cell).__name__ == "NAType" or (isinstance(cell, float) and math.isnan(cell))


def plain(cell: Any) -> Any:
    """A cell of a frame as Python has it."""
    if _is_missing(cell):
        return None
    if hasattr(cell, "to_pydatetime"):
        return cell.to_pydatetime()
    return _values.plain(cell)



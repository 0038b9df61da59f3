"""Stored texts as Python values and back."""

from __future__ import annotations

import datetime
import decimal
import functools
import math
import re
from fractions import Fraction
from typing import Any, Union

from . import _core
from ._errors import PathError, TypeRefused, ValueRefused, did_you_mean

#: What a value of the package may be; lists and dictionaries hold such values.
Value = Union[str, int, float, Fraction, bool, datetime.datetime, datetime.date, "list[Any]", "dict[str, Any]", "_Mixed"]

#: Texts, lists and dictionaries of texts, as the library stores them.
Raw = Any

_DATE = re.compile(
    r"(\d{4})(?:-(\d\d)(?:-(\d\d)(?:T(\d\d):(\d\d)(?::(\d\d)(?:\.(\d{1,9}))?)?(Z|[+-]\d\d:\d\d)?)?)?)?", re.ASCII
)
_INTEGER = re.compile(r"[+-]?\d{1,19}", re.ASCII)
_REAL = re.compile(r"[+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d{1,4})?", re.ASCII)
_RATIONAL = re.compile(r"([+-]?\d{1,19})/(\d{1,19})", re.ASCII)
_BOOLEANS = {"True": True, "true": True, "1": True, "False": False, "false": False, "0": False}
_LARGEST_RATIONAL = 2**31 - 1  # Exif keeps rationals in 32 bits
_CLOSE_DENOMINATOR = 10**6


class _Mixed:
    """The type of MIXED."""

    def __repr__(self) -> str:
        return "MIXED"

    def __bool__(self) -> bool:
        return False

    def __reduce__(self) -> str:
        return "MIXED"


#: Stands for the values of several files that differ.
MIXED = _Mixed()


class PartialDate(datetime.date):
    """A year, or a year and a month, as files have them. Otherwise the date of its first day.

    >>> PartialDate(2024, 5)
    PartialDate(2024, 5)
    >>> str(PartialDate(2024, 5)), PartialDate(2024, 5).precision
    ('2024-05', 'month')
    """

    precision: str

    def __new__(cls, year: int, month: int | None = None) -> PartialDate:
        self = super().__new__(cls, year, month or 1, 1)
        self.precision = "year" if month is None else "month"
        return self

    def __str__(self) -> str:
        return f"{self.year:04}" if self.precision == "year" else f"{self.year:04}-{self.month:02}"

    def isoformat(self) -> str:
        return str(self)

    def __repr__(self) -> str:
        return f"PartialDate({self.year})" if self.precision == "year" else f"PartialDate({self.year}, {self.month})"

    def __eq__(self, other: object) -> bool:
        return isinstance(other, PartialDate) and str(self) == str(other)

    def __hash__(self) -> int:
        return hash(str(self))

    def __reduce__(self) -> tuple[Any, ...]:
        return PartialDate, (self.year,) if self.precision == "year" else (self.year, self.month)


def read_date(text: str) -> datetime.datetime | datetime.date | str:
    """A date of XMP (ISO 8601); the text itself when it is none that Python can hold.

    >>> read_date("2024-05-01T10:30:00+02:00")
    datetime.datetime(2024, 5, 1, 10, 30, tzinfo=datetime.timezone(datetime.timedelta(seconds=7200)))
    >>> read_date("2024-05")
    PartialDate(2024, 5)
    """
    match = _DATE.fullmatch(text)
    if match is None:
        return text
    year, month, day, hour, minute, second, fraction, zone = match.groups()
    try:
        if day is None:
            return PartialDate(int(year), None if month is None else int(month))
        if hour is None:
            return datetime.date(int(year), int(month), int(day))
        micro = int(((fraction or "") + "000000")[:6])
        tz = None if zone is None else _zone(zone)
        return datetime.datetime(
            int(year), int(month), int(day), int(hour), int(minute), int(second or 0), micro, tzinfo=tz
        )
    except ValueError:
        return text


def _zone(text: str) -> datetime.timezone:
    if text == "Z":
        return datetime.timezone.utc
    hours, minutes = int(text[1:3]), int(text[4:6])
    offset = datetime.timedelta(hours=hours, minutes=minutes)
    return datetime.timezone(-offset if text[0] == "-" else offset)


def _read_rational(text: str) -> Fraction | str:
    match = _RATIONAL.fullmatch(text)
    return text if match is None or int(match[2]) == 0 else Fraction(int(match[1]), int(match[2]))


def _read_float(text: str) -> float | Fraction | str:
    return float(text) if _REAL.fullmatch(text) else _read_rational(text)


_READERS = {
    "integer": lambda text: int(text) if _INTEGER.fullmatch(text) else text,
    "real": _read_float,
    "boolean": lambda text: _BOOLEANS.get(text, text),
    "date": read_date,
    "rational": _read_rational,
}


@functools.lru_cache(maxsize=10000)
def definition(path: str) -> dict[str, Any] | None:
    return _core.definition(path)


_ITEM = re.compile(r"\[[^\]]*\]")


def kind_of(path: str) -> str:
    """``"integer"``, ``"date"``, ``"bag"`` and so on; empty for what no definition describes and for structures."""
    found = definition(_ITEM.sub("[1]", path))
    if found is None:
        return ""
    return str(found["type"] if found["type"] in _READERS else found["kind"])


def from_raw(raw: Raw, path: str) -> Any:
    """The Python value of what is stored at ``path``."""
    if isinstance(raw, str):
        reader = _READERS.get(kind_of(path))
        return raw if reader is None else reader(raw)
    if isinstance(raw, list):
        return [from_raw(part, f"{path}[1]") for part in raw]
    if isinstance(raw, dict):
        return {name: part if is_language(path) else from_raw(part, f"{path}/{name}") for name, part in raw.items()}
    return MIXED if raw is NotImplemented else None


def is_language(path: str) -> bool:
    return kind_of(path) == "alt"


def is_structure(path: str) -> bool:
    return (definition(_ITEM.sub("[1]", path)) or {}).get("kind") == ""


def plain(value: Any) -> Any:
    """A number of numpy as Python has it."""
    return value.item() if type(value).__module__ == "numpy" and getattr(value, "shape", None) == () else value


def to_text(value: Any, path: str) -> str:
    """The text that is stored for a single value; raises TypeRefused when the type of ``value`` does not fit."""
    if not isinstance(value, str) and definition(_ITEM.sub("[1]", path)) is None:
        raise ValueRefused("no definition describes it" + suggestion(path), path=path)
    kind = kind_of(path)
    fits, text_of = _WRITERS.get(kind, ((str,), str))
    if isinstance(value, bool) and bool not in fits:
        raise _refusal(value, path, fits)
    if isinstance(value, str):
        return checked(value, path)  # as it is stored; what the type does not allow is refused with the reason
    if not isinstance(value, fits):
        raise _refusal(value, path, fits)
    if isinstance(value, (float, decimal.Decimal)) and not math.isfinite(value):
        raise ValueRefused(f"{value} is not a number", path=path)
    return str(text_of(value))


def checked(text: str, path: str) -> str:
    try:
        text.encode()
    except UnicodeEncodeError as error:
        raise ValueRefused("it holds lone surrogates", path=path) from error
    return text


def _refusal(value: Any, path: str, fits: tuple[type, ...]) -> TypeRefused:
    names = " or ".join(dict.fromkeys(fit.__name__ for fit in fits))
    return TypeRefused(f"takes {names}, not {type(value).__name__}", path=path)


def _rational_text(value: Any) -> str:
    exact = Fraction(repr(value)) if isinstance(value, float) else Fraction(value)
    if max(abs(exact.numerator), exact.denominator) > _LARGEST_RATIONAL:
        exact = exact.limit_denominator(_CLOSE_DENOMINATOR)
    return f"{exact.numerator}/{exact.denominator}"


def _date_text(value: datetime.date) -> str:
    return value.isoformat() if isinstance(value, datetime.datetime) else str(value)


def _real_text(value: Any) -> str:
    """Without an exponent, which not every reader knows."""
    return format(decimal.Decimal(repr(value) if isinstance(value, float) else value), "f")


_WRITERS: dict[str, tuple[tuple[type, ...], Any]] = {
    "integer": ((int, str), str),
    "real": ((float, int, decimal.Decimal, str), _real_text),
    "boolean": ((bool, str), str),
    "date": ((datetime.datetime, datetime.date, str), _date_text),
    "rational": ((Fraction, float, int, decimal.Decimal, str), _rational_text),
}


def canonical(path: str, file: str | None = None) -> str:
    """The path as the library writes it; raises PathError for what is none."""
    if not isinstance(path, str):
        raise TypeRefused(f"a path is str, not {type(path).__name__}", file=file)
    found = _canonical(path)
    if not found:
        raise PathError("no such path" + suggestion(path), file=file, path=path)
    return found


@functools.lru_cache(maxsize=1000)
def suggestion(path: str) -> str:
    """What was probably meant by a path that no definition describes."""
    return did_you_mean(_core.nearest_path(path.encode(errors="replace").decode()))


@functools.lru_cache(maxsize=10000)
def _canonical(path: str) -> str:
    try:
        path.encode()
    except UnicodeEncodeError:
        return ""  # no path has lone surrogates
    return _core.canonical(path)

"""Stored texts as Python values and back."""

from __future__ import annotations

import datetime
import decimal
import functools
import math
import re
import warnings
from collections.abc import Mapping
from fractions import Fraction
from typing import Any, Tuple, Union

from . import _core
from ._errors import MetadataWarning, PathError, TypeRefused, ValueRefused, did_you_mean

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
        return _checked(value, path)  # as it is stored; what the type does not allow is refused with the reason
    if not isinstance(value, fits):
        raise _refusal(value, path, fits)
    if isinstance(value, (float, decimal.Decimal)) and not math.isfinite(value):
        raise ValueRefused(f"{value} is not a number", path=path)
    return str(text_of(value))


def _checked(text: str, path: str) -> str:
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


_NUMBERS = (int, float, Fraction, decimal.Decimal)
_WRITERS: dict[str, tuple[tuple[type, ...], Any]] = {
    "integer": ((int, str), str),
    "real": ((float, int, decimal.Decimal, str), _real_text),
    "boolean": ((bool, str), str),
    "date": ((datetime.datetime, datetime.date, str), _date_text),
    "rational": ((Fraction, float, int, decimal.Decimal, str), _rational_text),
}

_DEFAULT = "x-default"
_LANGUAGE = re.compile(r'\[\?xml:lang="([^"]*)"\]$')

Edit = Tuple[str, str, str, str]  # kind, path, language, text


def edits_for(path: str, old: Raw, new: Any) -> list[Edit]:
    """What makes the stored value ``old`` the value ``new``, and no more than that."""
    new = plain(new)
    if new is MIXED or new is None:
        raise TypeRefused(f"takes a value, not {new!r}; del removes one", path=path)
    if old is NotImplemented:
        whole = not isinstance(new, str)  # a text is one language of those that the files have
        if isinstance(new, Mapping) and kind_of(path) == "alt" and _DEFAULT not in new:
            raise ValueRefused("the files differ; name what x-default is to be", path=path)
        return [("delete", path, "", "")] * whole + edits_for(path, None, new)
    kind = kind_of(path)
    is_texts = kind == "alt" and not _is_structure(f"{path}[1]") and not isinstance(old, list)
    if is_texts and isinstance(new, (str, Mapping)):
        return _language_edits(path, old, new)
    if kind in ("bag", "seq", "alt"):
        if is_texts or isinstance(new, (str, bytes, Mapping)) or not hasattr(new, "__iter__"):
            fits = "str or dict" if is_texts else "list"
            raise TypeRefused(f"takes {fits}, not {type(new).__name__}", path=path)
        return _list_edits(path, old, list(new))
    if isinstance(new, Mapping):
        return _field_edits(path, old, new)
    if isinstance(old, dict) or _is_structure(path):
        raise TypeRefused(f"takes dict, not {type(new).__name__}", path=path)
    same = isinstance(old, str) and _same(old, new, path)
    return [] if same else [("set", path, "", to_text(new, path))]


def _is_structure(path: str) -> bool:
    return (definition(_ITEM.sub("[1]", path)) or {}).get("kind") == ""


def _same(old: str, new: Any, path: str) -> bool:
    """Whether the value says what is stored, in whatever form: "28/10" is left as it is by Fraction(14, 5)."""
    text = to_text(new, path)
    if text == old:
        return True
    stored = from_raw(old, path)
    if isinstance(stored, _NUMBERS) and isinstance(new, _NUMBERS) and not isinstance(stored, bool):
        return bool(stored == new)
    return type(stored) is type(new) and not isinstance(new, str) and to_text(stored, path) == text


def _language_edits(path: str, old: Raw, new: str | Mapping[str, str]) -> list[Edit]:
    held: dict[str, str] = old if isinstance(old, dict) else {}
    if isinstance(new, str):
        return [] if held.get(_DEFAULT) == new else [("set", path, _DEFAULT, _checked(new, path))]
    wrong = next((text for pair in new.items() for text in pair if not isinstance(text, str)), None)
    if wrong is not None:
        raise TypeRefused(f"takes str for each language, not {type(wrong).__name__}", path=path)
    spelled = {language.lower(): language for language in held}  # tags compare without letter case
    wanted = {spelled.get(language.lower(), language): text for language, text in new.items()}
    if wanted and _DEFAULT in held:
        wanted.setdefault(_DEFAULT, _default_text(held, wanted))
    gone = [("delete", path, language, "") for language in held if language not in wanted]
    changed = {language: text for language, text in wanted.items() if held.get(language) != text}
    return gone + [("set", path, _language(language, path), _checked(text, path)) for language, text in changed.items()]


def _default_text(held: dict[str, str], wanted: dict[str, str]) -> str:
    """What x-default is to be that was not named: as before, or the new text of the language whose text it was."""
    default = held[_DEFAULT]
    return next((wanted[language] for language in wanted if held.get(language) == default), default)


def _language(tag: str, path: str) -> str:
    if not tag:
        raise ValueRefused('"" is not a language tag such as de, en-US or x-default', path=path)
    return tag


def warn_of_languages(edits: list[Edit], file: str | None, stacklevel: int) -> None:
    """Tells of texts in languages that nobody will look for, though their tags have the form of one."""
    for _, path, language, text in edits:
        selected = _LANGUAGE.search(path)
        tag = language or (selected[1] if selected else "")
        if tag and text and not _core.is_known_language(_checked(tag, path)):
            where = f"{file}: {path}" if file else path
            message = f'{where}: "{tag}" is no language that is known; "de" and "en-US" are'
            warnings.warn(message, MetadataWarning, stacklevel=stacklevel + 1)


def _list_edits(path: str, old: Raw, new: list[Any]) -> list[Edit]:
    held: list[Raw] = old if isinstance(old, list) else []
    edits: list[Edit] = []
    kept = 0
    while kept < min(len(held), len(new)):
        part = edits_for(f"{path}[{kept + 1}]", held[kept], new[kept])
        if part and not isinstance(new[kept], Mapping):
            break  # what belongs to an item, such as its language, is not to become that of another
        edits += part
        kept += 1
    edits += [("delete", f"{path}[{number}]", "", "") for number in range(len(held), kept, -1)]
    for number in range(kept, len(new)):
        edits += edits_for(f"{path}[{number + 1}]", None, new[number])
    return edits


def _field_edits(path: str, old: Raw, new: Mapping[str, Any]) -> list[Edit]:
    held: dict[str, Raw] = old if isinstance(old, dict) else {}
    edits = [("delete", f"{path}/{name}", "", "") for name in held if name not in new]
    for name, value in new.items():
        edits += edits_for(f"{path}/{name}", held.get(name), value)
    return edits


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

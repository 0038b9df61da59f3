"""What makes stored values those that are assigned, and no more than that."""

from __future__ import annotations

import decimal
import re
import warnings
from collections.abc import Hashable, Mapping
from fractions import Fraction
from typing import Any, Tuple

from . import _core
from ._errors import MetadataWarning, TypeRefused, ValueRefused
from ._values import MIXED, Raw, checked, from_raw, is_structure, kind_of, plain, to_text

_NUMBERS = (int, float, Fraction, decimal.Decimal)
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
    is_texts = kind == "alt" and not is_structure(f"{path}[1]") and not isinstance(old, list)
    if is_texts and isinstance(new, (str, Mapping)):
        return _language_edits(path, old, new)
    if kind in ("bag", "seq", "alt"):
        if is_texts or isinstance(new, (str, bytes, Mapping)) or not hasattr(new, "__iter__"):
            fits = "str or dict" if is_texts else "list"
            raise TypeRefused(f"takes {fits}, not {type(new).__name__}", path=path)
        return _list_edits(path, old, _in_order(new, from_raw(old, path)) if isinstance(new, (set, frozenset)) else list(new))
    if isinstance(new, Mapping):
        return _field_edits(path, old, new)
    if isinstance(old, dict) or is_structure(path):
        raise TypeRefused(f"takes dict, not {type(new).__name__}", path=path)
    same = isinstance(old, str) and _same(old, new, path)
    return [] if same else [("set", path, "", to_text(new, path))]


def _in_order(new: set[Any] | frozenset[Any], held: Any) -> list[Any]:
    """What has no order of its own keeps that of the file, so that the same set is no change."""
    kept = [item for item in held if isinstance(item, Hashable) and item in new] if isinstance(held, list) else []
    return kept + sorted(new - set(kept), key=str)


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
        return [] if held.get(_DEFAULT) == new else [("set", path, _DEFAULT, checked(new, path))]
    wrong = next((text for pair in new.items() for text in pair if not isinstance(text, str)), None)
    if wrong is not None:
        raise TypeRefused(f"takes str for each language, not {type(wrong).__name__}", path=path)
    spelled = {language.lower(): language for language in held}  # tags compare without letter case
    wanted = {spelled.get(language.lower(), language): text for language, text in new.items()}
    if wanted and _DEFAULT in held:
        wanted.setdefault(_DEFAULT, _default_text(held, wanted))
    gone = [("delete", path, language, "") for language in held if language not in wanted]
    changed = {language: text for language, text in wanted.items() if held.get(language) != text}
    return gone + [("set", path, _language(language, path), checked(text, path)) for language, text in changed.items()]


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
        if tag and text and not _core.is_known_language(checked(tag, path)):
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

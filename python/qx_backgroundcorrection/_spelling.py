"""Keys and paths between Python's texts and the library's bytes. Bytes that are no UTF-8 survive there and back."""
from __future__ import annotations

import os
from typing import Optional, Union

from ._library import ON_WINDOWS

Path = Union[str, "os.PathLike[str]"]


def key_bytes(key: str) -> bytes:
    if not isinstance(key, str):
        raise TypeError(f"the key is a {type(key).__name__}, not a str")
    if "\0" in key:
        raise ValueError("the key contains a NUL character")
    return key.encode("utf-8", "surrogateescape")


def key_text(key: Optional[bytes]) -> Optional[str]:
    return None if key is None else key.decode("utf-8", "surrogateescape")


def path_bytes(path: Path) -> bytes:
    text = os.fspath(path)
    spelled = os.fsencode(text) if not ON_WINDOWS or isinstance(text, bytes) else text.encode("utf-8", "surrogatepass")
    if b"\0" in spelled:
        raise ValueError("the path contains a NUL character")
    return spelled


def folded(key: str) -> bytes:
    """What two keys have in common that are one: ASCII letters count without case, and the first 512 bytes."""
    return key_bytes(key)[:512].lower()

"""Small pictures for notebooks, made with the standard library."""
from __future__ import annotations

import base64
import struct
import zlib
from html import escape
from typing import Optional

import numpy as np

from ._arrays import Image

LARGEST = 192  # pixels of the longer side


def _chunk(kind: bytes, data: bytes) -> bytes:
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(image: Image) -> bytes:
    """An 8-bit grey PNG, at most 192 pixels wide or high, from the darkest to the brightest percent."""
    step = max(1, -(-max(image.shape) // LARGEST))
    small = image[::step, ::step].astype(np.float64)
    low, high = np.percentile(small, (1, 99))
    grey = np.clip((small - low) * (255 / max(high - low, 1)) + 0.5, 0, 255).astype(np.uint8)
    rows = np.pad(grey, ((0, 0), (1, 0)))  # before each row the kind of its filter: none
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", struct.pack(">IIBBBBB", grey.shape[1], grey.shape[0], 8, 0, 0, 0, 0))
            + _chunk(b"IDAT", zlib.compress(rows.tobytes(), 6)) + _chunk(b"IEND", b""))


def figures(image: Image) -> str:
    return (f"minimum {image.min()}, median {np.median(image):g}, mean {image.mean():.1f}, maximum {image.max()}")


def html(title: str, image: Optional[Image]) -> str:
    """A title over a picture with its figures."""
    text = f"<div>{escape(title)}</div>"
    if image is not None and image.size:
        data = base64.b64encode(png(image)).decode("ascii")
        text += (f'<img alt="background" style="image-rendering: pixelated" src="data:image/png;base64,{data}">'
                 f"<div>{escape(figures(image))}</div>")
    return text

"""Result codes of the library as exceptions."""
from __future__ import annotations

from typing import Dict, NamedTuple, Tuple, Type


class _Code(NamedTuple):
    name: str
    meaning: str


# As in QX_BackgroundCorrection.h and QX_BackgroundCorrection_C.h; a test compares.
CODES: Dict[int, _Code] = {
    0: _Code("SUCCESS", "done"),
    271: _Code("LIST_ENDED_WHILE_SAVING", "the list of corrections ended early while a file was being written"),
    513: _Code("FIRST_ARGUMENT_INVALID", "the first argument is missing or invalid, or no correction has this key"),
    514: _Code("SECOND_ARGUMENT_INVALID", "the second argument is missing or invalid"),
    515: _Code("THIRD_ARGUMENT_INVALID", "the third argument is missing or invalid"),
    516: _Code("FOURTH_ARGUMENT_INVALID", "the fourth argument is missing or invalid, or lengths differ"),
    517: _Code("FIFTH_ARGUMENT_INVALID", "the fifth argument is invalid"),
    518: _Code("SIXTH_ARGUMENT_INVALID", "the sixth argument is invalid"),
    519: _Code("SEVENTH_ARGUMENT_INVALID", "the seventh argument is invalid"),
    768: _Code("FILE_NAME_INVALID", "a group file does not carry its grouping names in its own name"),
    769: _Code("FILE_NOT_ACCESSIBLE", "the calibration file cannot be created, opened or recognised"),
    770: _Code("HEADER_ONLY_MODE", "the object was loaded without pixels: nothing can be changed or applied"),
    771: _Code("FILE_NOT_FOUND", "there is neither a file nor any group file of that name"),
    772: _Code("STRUCTURE_VERSION_WRONG", "the calibration file has another structure version"),
    1024: _Code("OPERATION_FAILED", "memory, or the making of a correction from stored data, failed"),
    1280: _Code("NO_CORRECTION_ACTIVE", "no group is loaded"),
    4294967295: _Code("SHORT_READ_OR_WRITE", "the calibration file ended early, or could not be written to its end"),
    4294967294: _Code("UNEXPECTED_RECORD", "the last correction of the calibration file was given up"),
    65537: _Code("NO_LIBRARY", "the main library is not beside the flat interface, or cannot be loaded"),
    65538: _Code("NO_OBJECT", "the object was closed"),
    65539: _Code("OUT_OF_MEMORY", "memory ran out"),
    65540: _Code("PATH_NOT_SPELLED", "the system's code page cannot spell the path"),
    65541: _Code("UNKNOWN_EXCEPTION", "something unknown was thrown in the library"),
}


class CorrectionError(Exception):
    """A call of the library failed.

    Attributes
    ----------
    code : int
        The result code, as in the C header; `name` is its name there.
    text : str
        What the library says about it; may be empty.
    operation : str
        Which operation failed.
    """

    code: int
    text: str
    operation: str

    @property
    def name(self) -> str:
        """The code's name in the C header, without QXBC_."""
        return CODES[self.code].name if self.code in CODES else str(self.code)

    def __str__(self) -> str:
        meaning = CODES[self.code].meaning if self.code in CODES else "a code of the host's own delegate"
        return f"{self.operation}: {' '.join((self.text or meaning).split())} ({self.code}, {self.name})"

    def __reduce__(self) -> Tuple[object, ...]:  # it has to come back from the workers of a cluster
        return make_error, (self.operation, self.code, self.text)


class ArgumentError(CorrectionError, ValueError):
    """An argument was refused, or no correction has the key (513 to 519)."""


class FileError(CorrectionError, OSError):
    """A calibration file could not be read or written (271, 768, 769, 771, 772, -1 and -2 as unsigned)."""


class HeaderOnlyError(CorrectionError):
    """The object was loaded without pixels (770)."""


class OperationFailedError(CorrectionError, MemoryError):
    """Memory, or the making of a correction from stored data, failed (1024, 65539)."""


class LibraryError(CorrectionError, OSError):
    """The library is not there or cannot be loaded (65537)."""


class ClosedError(CorrectionError):
    """The object was closed (65538)."""


_CLASSES: Dict[int, Type[CorrectionError]] = {
    **dict.fromkeys(range(513, 520), ArgumentError),
    **dict.fromkeys((271, 768, 769, 771, 772, 4294967295, 4294967294, 65540), FileError),
    770: HeaderOnlyError,
    **dict.fromkeys((1024, 65539), OperationFailedError),
    65537: LibraryError,
    65538: ClosedError,
}


def make_error(operation: str, code: int, text: str) -> CorrectionError:
    error = _CLASSES.get(code, CorrectionError)(text)
    error.operation, error.code, error.text = operation, code, text
    return error

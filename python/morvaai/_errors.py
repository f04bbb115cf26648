"""What goes wrong, as exceptions."""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, Optional

if TYPE_CHECKING:
    from ._document import Document


class MorvaError(Exception):
    """The base of this module's own exceptions; its text names the file, if there is one, and the cause.

    Beside them the built-in ones are raised where they say it as well: :class:`FileNotFoundError` and other
    kinds of :class:`OSError` for a file that the system does not open, :class:`ValueError` for an argument that
    is not what it should be, :class:`MemoryError`. Without the shared library, importing the module raises
    :class:`ImportError`.
    """


class DocumentError(MorvaError, ValueError):
    """A document of no known type, with a password, or damaged, or one that its worker process was lost with.

    ``document`` is what was found nonetheless: its outcome, the reason, and text if any was asked for.
    """

    def __init__(self, text: str, document: Optional["Document"] = None) -> None:
        super().__init__(text)
        self.document = document


class NotAskedError(MorvaError, ValueError):
    """A document is asked for something that it was not read for."""


class DictionaryError(MorvaError, RuntimeError):
    """There is no dictionary where it is looked for."""


class BoxError(MorvaError, ValueError):
    """A box file, or the index of a directory of boxes, that cannot be read."""


class WorkerError(MorvaError, RuntimeError):
    """No worker process can be started."""


def cannot_open(number: int, path: "str | bytes | os.PathLike[str] | os.PathLike[bytes] | None") -> OSError:
    """The exception that opening the file would raise: one of the kinds of OSError."""
    return OSError(number, os.strerror(number), None if path is None else os.fspath(path))

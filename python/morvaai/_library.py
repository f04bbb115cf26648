"""The shared library ``libmorvaai_c`` through ctypes: where it is found, what it takes, what it returns."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_char_p, c_double, c_int, c_int32, c_int64, c_size_t, c_uint, c_uint64, c_void_p
from pathlib import Path
from typing import Any, Callable, Iterator, List, Tuple

from ._errors import BoxError, DictionaryError, DocumentError, MorvaError, NotAskedError, WorkerError

NAME = "libmorvaai_c.so.1"

OK, INVALID_ARGUMENT, OUT_OF_MEMORY, CANNOT_OPEN, NOT_READ, NO_DICTIONARY = range(6)
NOT_ASKED, BAD_BOX, NO_WORKER, STOPPED = range(6, 10)

WANT_WORDS, WANT_DNA, WANT_WIDE_DNA, WANT_TEXT = 1, 2, 4, 8

TEXT_KINDS = ("main", "header", "comment", "notes", "footnote", "endnote", "control", "property", "other")

# Receives a document: the caller's value, the index of the file, the status, the document.
TAKE = ctypes.CFUNCTYPE(c_int, c_void_p, c_size_t, c_int, c_void_p)

_texts = POINTER(c_char_p)
_functions: List[Tuple[str, Any, List[Any]]] = [
    ("morva_library_version", c_char_p, []),
    ("morva_last_error", c_char_p, []),
    ("morva_load_dictionary", c_int, [c_char_p]),
    ("morva_set_log", c_int, [c_int, c_void_p, c_void_p]),
    ("morva_read_file", c_int, [c_char_p, c_uint, c_size_t, POINTER(c_void_p)]),
    ("morva_read_text", c_int, [c_char_p, c_size_t, c_uint, c_size_t, POINTER(c_void_p)]),
    ("morva_document_from_words", c_int, [_texts, c_void_p, c_void_p, c_size_t, c_char_p, POINTER(c_void_p)]),
    ("morva_document_free", None, [c_void_p]),
    ("morva_document_outcome", c_int, [c_void_p]),
    ("morva_outcome_name", c_char_p, [c_int]),
    ("morva_document_reason", c_char_p, [c_void_p]),
    ("morva_document_error", c_int, [c_void_p]),
    ("morva_document_words", c_int,
     [c_void_p, POINTER(c_size_t), POINTER(_texts), POINTER(c_void_p), POINTER(c_void_p), POINTER(_texts)]),
    ("morva_document_dna", c_int, [c_void_p, POINTER(c_char_p)]),
    ("morva_document_wide_dna", c_int, [c_void_p, POINTER(c_char_p)]),
    ("morva_document_covered", c_int, [c_void_p, POINTER(c_int64)]),
    ("morva_document_text", c_int, [c_void_p, c_int, POINTER(c_void_p), POINTER(c_size_t)]),
    ("morva_pool_new", c_int, [POINTER(c_void_p)]),
    ("morva_pool_free", None, [c_void_p]),
    ("morva_pool_set_jobs", c_int, [c_void_p, c_size_t]),
    ("morva_pool_set_memory", c_int, [c_void_p, c_uint64]),
    ("morva_pool_set_seconds", c_int, [c_void_p, c_int]),
    ("morva_pool_read", c_int, [c_void_p, _texts, c_size_t, c_uint, c_size_t, TAKE, c_void_p]),
    ("morva_isolation", c_int, [POINTER(c_int), POINTER(c_int), POINTER(c_int)]),
    ("morva_dna_similarity", c_int, [c_char_p, c_char_p, POINTER(c_double)]),
    ("morva_dna_point", c_int, [c_char_p, c_void_p]),
    ("morva_dna_list_new", c_int, [POINTER(c_void_p)]),
    ("morva_dna_list_free", None, [c_void_p]),
    ("morva_dna_list_append", c_int, [c_void_p, _texts, c_size_t]),
    ("morva_dna_list_size", c_size_t, [c_void_p]),
    ("morva_dna_list_similarities", c_int, [c_void_p, c_char_p, c_void_p, c_size_t]),
    ("morva_dna_list_most_similar", c_int,
     [c_void_p, c_char_p, c_size_t, c_void_p, c_void_p, POINTER(c_size_t)]),
    ("morva_boxes_open", c_int, [c_char_p, POINTER(c_void_p)]),
    ("morva_boxes_close", None, [c_void_p]),
    ("morva_boxes_wants", c_uint, [c_void_p]),
    ("morva_boxes_class_count", c_size_t, [c_void_p]),
    ("morva_boxes_box_id", c_char_p, [c_void_p, c_size_t]),
    ("morva_boxes_class_id", c_char_p, [c_void_p, c_size_t]),
    ("morva_boxes_class_name", c_char_p, [c_void_p, c_size_t]),
    ("morva_boxes_match", c_int, [c_void_p, c_void_p, POINTER(c_size_t)]),
    ("morva_boxes_is_in_class", c_int, [c_void_p, c_void_p, c_size_t, POINTER(c_int)]),
]


def _candidates() -> Iterator[str]:
    """Where the library may lie: as told, else in the tree that this module is installed in, else as the system
    finds it."""
    told = os.environ.get("MORVA_LIBRARY")
    if told:
        yield told
        return
    # <prefix>/lib/python3/dist-packages/morvaai/_library.py
    here = Path(__file__).resolve()
    if len(here.parents) > 3 and here.parents[3].name.startswith("lib"):
        yield from (str(path) for path in sorted(here.parents[3].glob("*/" + NAME)))
        yield str(here.parents[3] / NAME)
    yield NAME


def _load() -> ctypes.CDLL:
    problems = []
    for candidate in _candidates():
        if os.sep in candidate and not os.environ.get("MORVA_LIBRARY") and not os.path.exists(candidate):
            continue
        try:
            return ctypes.CDLL(candidate, use_errno=True)
        except OSError as error:
            problems.append(str(error))
    raise ImportError(f"{'; '.join(problems)}. Install libmorvaai_c, or name it in the variable MORVA_LIBRARY.")


def _prepare() -> ctypes.CDLL:
    library = _load()
    for name, result, arguments in _functions:
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    # Every problem is an exception here; the library's log is for those who ask for it.
    if "MORVA_LOG_LEVEL" not in os.environ:
        library.morva_set_log(0, None, None)
    return library


lib: ctypes.CDLL = _prepare()


def text_of(value: "bytes | None") -> str:
    """The text behind UTF-8 of the library."""
    return "" if value is None else value.decode("utf-8")


_exceptions: "dict[int, type[Exception]]" = {
    INVALID_ARGUMENT: ValueError,
    OUT_OF_MEMORY: MemoryError,
    NOT_READ: DocumentError,
    NO_DICTIONARY: DictionaryError,
    NOT_ASKED: NotAskedError,
    BAD_BOX: BoxError,
    NO_WORKER: WorkerError,
}


def check(status: int) -> None:
    """Raises what a status stands for, with the library's reason."""
    if status == CANNOT_OPEN:
        number = ctypes.get_errno()
        raise OSError(number, text_of(lib.morva_last_error()))
    if status != OK:
        raise _exceptions.get(status, MorvaError)(text_of(lib.morva_last_error()))


def path_bytes(path: "str | bytes | os.PathLike[str] | os.PathLike[bytes]") -> bytes:
    """A path as the library takes it."""
    return c_text(os.fsencode(path))


def c_text(text: bytes) -> bytes:
    """A text that ends with its first zero in C, and so must hold none."""
    if b"\0" in text:
        raise ValueError("embedded null byte")
    return text


def c_texts(texts: "list[bytes]") -> Any:
    """An array of texts for C."""
    return (c_char_p * len(texts))(*texts)


class Handle:
    """Something of the library's that is freed with this object."""

    def __init__(self, address: "int | None", free: Callable[[Any], None]) -> None:
        self._address = address
        self._free = free

    @property
    def address(self) -> int:
        if self._address is None:
            raise ValueError("it is closed")
        return self._address

    def close(self) -> None:
        address, self._address = self._address, None
        if address is not None:
            self._free(address)

    def __del__(self) -> None:
        if getattr(self, "_address", None) is not None:
            self.close()


def made(function: Any, free: Callable[[Any], None], *arguments: Any) -> Handle:
    """What a function of the library makes and gives through its last argument."""
    result = c_void_p()
    check(function(*arguments, ctypes.byref(result)))
    return Handle(result.value, free)

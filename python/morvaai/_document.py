"""Documents: what a file or a text holds, read in this process or in workers."""

from __future__ import annotations

import ctypes
import os
import signal
import threading
from ctypes import byref, c_char_p, c_int64, c_size_t, c_void_p
from typing import Any, Dict, Iterable, Iterator, List, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _library as library
from ._errors import DocumentError, cannot_open
from ._library import Handle, check, lib, text_of

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Floats = npt.NDArray[np.float64]
Counts = npt.NDArray[np.int32]


class _View:
    """Numbers of the library's, for NumPy to look at without a copy; keeps the document that they belong to."""

    def __init__(self, owner: object, address: int, count: int, kind: str) -> None:
        self.owner = owner
        self.__array_interface__ = {"shape": (count,), "typestr": kind, "data": (address, True), "version": 3}


class Document:
    """What was found in a document. It never changes; made by :func:`read` and the like.

    >>> document = read_text("The harbour master closed the harbour.", words=2)
    >>> document.words
    ['harbour', 'master']
    >>> document.weights.dtype, float(document.weights[0])
    (dtype('float64'), 1.0)
    >>> document.outcome
    'text'
    """

    def __init__(self, handle: Handle, path: Optional[Path] = None, status: int = library.OK) -> None:
        self._handle = handle
        self._status = status
        self._words: Optional[Tuple[List[str], List[str], Floats, Counts]] = None
        #: The path that the document was read from, as it was given; None for a text.
        self.path = path

    def __repr__(self) -> str:
        about = "" if self.path is None else f" {os.fsdecode(self.path)!r}"
        return f"<morvaai.Document{about}: {self.outcome}>"

    @property
    def outcome(self) -> str:
        """How reading ended: "text", "no text", "encrypted", "not supported", "incomplete", "damaged", "limit
        reached", "timed out" or "failed"."""
        return text_of(lib.morva_outcome_name(lib.morva_document_outcome(self._handle.address)))

    @property
    def reason(self) -> str:
        """Why it was not read, or not whole; else empty."""
        return text_of(lib.morva_document_reason(self._handle.address))

    @property
    def is_read(self) -> bool:
        """There is text to work with, perhaps not all of it."""
        return self._status == library.OK

    @property
    def error(self) -> Optional[Exception]:
        """What :func:`read` raises for such a document; None where it was read."""
        if self.is_read:
            return None
        if self._status == library.CANNOT_OPEN:
            return cannot_open(int(lib.morva_document_error(self._handle.address)), self.path)
        name = "" if self.path is None else f"{os.fsdecode(self.path)!r}: "
        return DocumentError(f"{name}{self.outcome}: {self.reason}", self)

    def _read_words(self) -> Tuple[List[str], List[str], Floats, Counts]:
        if self._words is None:
            count = c_size_t()
            words, tags = ctypes.POINTER(c_char_p)(), ctypes.POINTER(c_char_p)()
            weights, counts = c_void_p(), c_void_p()
            check(lib.morva_document_words(self._handle.address, byref(count), byref(words), byref(weights),
                                           byref(counts), byref(tags)))
            self._words = (
                [text_of(word) for word in words[:count.value]] if count.value else [],
                [text_of(tag) for tag in tags[:count.value]] if count.value else [],
                self._numbers(weights.value, count.value, "<f8", np.float64),
                self._numbers(counts.value, count.value, "<i4", np.int32),
            )
        return self._words

    def _numbers(self, address: Optional[int], count: int, kind: str, dtype: Any) -> Any:
        if count == 0 or address is None:
            return np.empty(0, dtype)
        return np.asarray(_View(self._handle, address, count, kind))

    @property
    def words(self) -> List[str]:
        """The words that characterise the document, in descending weight."""
        return list(self._read_words()[0])

    @property
    def tags(self) -> List[str]:
        """The part of speech of each word, in the notation of the dictionary."""
        return list(self._read_words()[1])

    @property
    def weights(self) -> Floats:
        """The weight of each word, from 1 downwards: the library's own numbers, not a copy, and not to be changed."""
        return self._read_words()[2]

    @property
    def counts(self) -> Counts:
        """How often each word stands in the text; as ``weights``."""
        return self._read_words()[3]

    @property
    def features(self) -> npt.NDArray[np.void]:
        """Words, weights, counts and tags together: a structured array with these names.

        >>> features = read_text("The harbour master closed the harbour.").features
        >>> features.dtype.names
        ('word', 'weight', 'count', 'tag')
        >>> features[features["count"] > 1]["word"]
        array(['harbour'], dtype='<U7')
        """
        words, tags, weights, counts = self._read_words()
        longest_word = max(map(len, words), default=1)
        longest_tag = max(1, max(map(len, tags), default=1))
        table = np.empty(len(words), [("word", f"<U{longest_word}"), ("weight", "<f8"), ("count", "<i4"),
                                      ("tag", f"<U{longest_tag}")])
        table["word"], table["weight"], table["count"], table["tag"] = words, weights, counts, tags
        return table

    @property
    def dna(self) -> str:
        """The fingerprint, 32 hexadecimal digits; empty where the text has no words."""
        return self._text_from(lib.morva_document_dna)

    @property
    def wide_dna(self) -> str:
        """The wide fingerprint, as a rule 1024 hexadecimal digits. Read with ``wide=True``."""
        return self._text_from(lib.morva_document_wide_dna)

    def _text_from(self, function: Any) -> str:
        result = c_char_p()
        check(function(self._handle.address, byref(result)))
        return text_of(result.value)

    @property
    def covered(self) -> int:
        """How many characters all words of the text cover together, each as often as it stands there."""
        result = c_int64()
        check(lib.morva_document_covered(self._handle.address, byref(result)))
        return result.value

    @property
    def text(self) -> str:
        """The main text. Read with ``text=True``."""
        return self._text_of_kind(library.TEXT_KINDS.index("main") + 1)

    @property
    def texts(self) -> Dict[str, str]:
        """All texts by their kind: "main", "header", "comment", "notes", "footnote", "endnote", "control",
        "property", "other"; kinds that the document has not are left out. Read with ``text=True``."""
        texts = {kind: self._text_of_kind(i) for i, kind in enumerate(library.TEXT_KINDS, 1)}
        return {kind: text for kind, text in texts.items() if text}

    def _text_of_kind(self, kind: int) -> str:
        text, size = c_void_p(), c_size_t()
        check(lib.morva_document_text(self._handle.address, kind, byref(text), byref(size)))
        return ctypes.string_at(text.value, size.value).decode("utf-8") if text.value else ""


def _wants(words: Optional[int], dna: bool, wide: bool, text: bool) -> Tuple[int, int]:
    if words is not None and words < 0:
        raise ValueError("words must not be below 0")
    flags = library.WANT_TEXT if text else 0
    if words != 0:
        flags |= library.WANT_WORDS
    if dna:
        flags |= library.WANT_DNA
    if wide:
        flags |= library.WANT_WIDE_DNA
    return flags, words or 0


def _read(function: Any, path: Optional[Path], *arguments: Any) -> Document:
    result = c_void_p()
    status = function(*arguments, byref(result))
    if result.value is None:
        check(status)
    document = Document(Handle(result.value, lib.morva_document_free), path, status)
    if status == library.NO_DICTIONARY:
        check(status)
    error = document.error
    if error is not None:
        raise error
    return document


def read(path: Path, *, words: Optional[int] = 100, dna: bool = True, wide: bool = False,
         text: bool = False) -> Document:
    """Reads a file, of which the content tells the type. Works in this process: files from elsewhere are for
    :func:`read_all`.

    ``words`` is the greatest number of words, None for all and 0 for none; ``dna``, ``wide`` and ``text`` say
    whether the fingerprint, the wide one and the texts are wanted. Raises an :class:`OSError` for a file that
    does not open, and :class:`DocumentError` for one that cannot be read.

    >>> document = read(samples / "harbour-report.docx", words=3)
    >>> document.words
    ['terminal', 'dredging', 'goods']
    >>> document.dna
    '5D8DDBD0013A6B37D30645A0DB9B7D1D'
    """
    return _read(lib.morva_read_file, path, library.path_bytes(path), *_wants(words, dna, wide, text))


def read_text(text: Union[str, bytes], *, words: Optional[int] = 100, dna: bool = True, wide: bool = False) -> Document:
    """The same of a text, or of bytes of UTF-8."""
    raw = text.encode("utf-8", "replace") if isinstance(text, str) else text
    return _read(lib.morva_read_text, None, raw, len(raw), *_wants(words, dna, wide, True))


def from_words(words: Sequence[str], weights: "npt.ArrayLike", counts: "Optional[npt.ArrayLike]" = None,
               wide_dna: Optional[str] = None) -> Document:
    """A document of words and weights that were kept from an earlier reading, to be matched again.

    >>> kept = read_text("The harbour master closed the harbour.")
    >>> from_words(kept.words, kept.weights).words == kept.words
    True
    """
    raw = [library.c_text(word.encode("utf-8")) for word in words]
    numbers = np.ascontiguousarray(weights, np.float64)
    times = None if counts is None else np.ascontiguousarray(counts, np.int32)
    for numbers_given in (numbers, times):
        if numbers_given is not None and numbers_given.shape != (len(raw),):
            raise ValueError("there must be one number for each word")
    return _read(lib.morva_document_from_words, None, library.c_texts(raw), numbers.ctypes.data,
                 None if times is None else times.ctypes.data, len(raw),
                 None if wide_dna is None else library.c_text(wide_dna.encode("utf-8")))


class _Interrupts:
    """Keeps an interrupt by the user for the end of a call, where it becomes a KeyboardInterrupt as ever; within a
    function that the library calls it would be lost. Whichever thread it comes to, the handler runs in the main one,
    so that this is of concern there alone, and where there is a handler of Python's."""

    def __enter__(self) -> "_Interrupts":
        #: There was one.
        self.is_waiting = False
        self._former = signal.getsignal(signal.SIGINT)
        self._is_main = threading.current_thread() is threading.main_thread()
        if self._is_main and callable(self._former):
            signal.signal(signal.SIGINT, self._note)
        return self

    def _note(self, *_: object) -> None:
        self.is_waiting = True

    def __exit__(self, *_: object) -> None:
        if self._is_main and callable(self._former):
            signal.signal(signal.SIGINT, self._former)
        if self.is_waiting:
            signal.raise_signal(signal.SIGINT)


def _read_batch(pool: Handle, paths: List[Path], wants: int, most_words: int) -> List[Document]:
    documents: List[Document] = []
    # Where a handler takes an interrupt for nothing, it goes on behind it.
    while len(documents) < len(paths):
        documents += _read_some(pool, paths[len(documents):], wants, most_words)
    return documents


def _read_some(pool: Handle, paths: List[Path], wants: int, most_words: int) -> List[Document]:
    """The documents up to an interrupt."""
    documents: List[Document] = []
    failed: List[int] = []

    def take(_: Any, index: int, status: int, address: Optional[int]) -> int:
        if address is None:
            failed.append(status)
            return 1
        documents.append(Document(Handle(address, lib.morva_document_free), paths[index], status))
        return int(interrupts.is_waiting)

    raw = library.c_texts([library.path_bytes(path) for path in paths])
    with _Interrupts() as interrupts:
        status = lib.morva_pool_read(pool.address, raw, len(paths), wants, most_words, library.TAKE(take), None)
    if failed:
        raise MemoryError("out of memory")
    if status != library.STOPPED:
        check(status)
    return documents


def read_all(paths: Iterable[Path], *, jobs: Optional[int] = None, memory: Optional[int] = None,
             seconds: Optional[int] = None, words: Optional[int] = 100, dna: bool = True, wide: bool = False,
             text: bool = False) -> Iterator[Document]:
    """Reads many files in worker processes that reach nothing but their document, and yields the documents in order
    of the paths, some at a time: the paths may come without end.

    A file that cannot be read raises nothing; its document says so by ``is_read``, ``outcome``, ``reason`` and
    ``error``. That holds for one that crashes its worker, takes longer than ``seconds`` of the processor (else
    150) or more than ``memory`` bytes (else 4 GiB), too. ``jobs`` is the number of workers, None for one for each
    processor that this process may use. The others as for :func:`read`.

    >>> for document in read_all(sorted(samples.glob("*.docx")), words=2):
    ...     print(document.path.name, document.words)
    harbour-report-revised.docx ['terminal', 'dredging']
    harbour-report.docx ['terminal', 'dredging']
    软件开发合同.docx ['乙方', '合同']
    """
    wants, most_words = _wants(words, dna, wide, text)
    workers = len(os.sched_getaffinity(0)) if jobs is None else jobs
    pool = library.made(lib.morva_pool_new, lib.morva_pool_free)
    check(lib.morva_pool_set_jobs(pool.address, max(workers, 0)))
    if memory is not None:
        check(lib.morva_pool_set_memory(pool.address, max(memory, 0)))
    if seconds is not None:
        check(lib.morva_pool_set_seconds(pool.address, seconds))
    return _in_batches(pool, paths, workers, wants, most_words)


def _in_batches(pool: Handle, paths: Iterable[Path], workers: int, wants: int, most_words: int) -> Iterator[Document]:
    # The first documents come soon; later batches are so large that starting workers does not count.
    size, largest = 4 * workers, 64 * workers
    batch: List[Path] = []
    for path in paths:
        batch.append(path)
        if len(batch) == size:
            yield from _read_batch(pool, batch, wants, most_words)
            batch, size = [], min(2 * size, largest)
    if batch:
        yield from _read_batch(pool, batch, wants, most_words)


__all__ = ["Document", "from_words", "read", "read_all", "read_text"]

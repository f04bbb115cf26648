"""Likeness of fingerprints: of two, of one with many, of all with all."""

from __future__ import annotations

from ctypes import byref, c_double, c_size_t
from typing import Iterable, Tuple

import numpy as np
import numpy.typing as npt

from . import _library as library
from ._library import check, lib

Floats = npt.NDArray[np.float64]


def _raw(dna: str) -> bytes:
    return library.c_text(dna.encode("utf-8"))


def similarity(a: str, b: str) -> float:
    """The share of bits in which two fingerprints agree, from 0.0 to 100.0; unrelated texts agree in about half.
    0.0 where one is empty or their lengths differ.

    >>> similarity("FFFF", "FFF0")
    75.0
    """
    result = c_double()
    check(lib.morva_dna_similarity(_raw(a), _raw(b), byref(result)))
    return result.value


class DnaList:
    """Many fingerprints, with all of which one is compared at a time.

    >>> dnas = DnaList(["FFFF", "FF00", "0000"])
    >>> dnas.similarities("FFF0")
    array([75., 75., 25.])
    >>> positions, values = dnas.most_similar("FFF0", 2)
    >>> positions.tolist(), values.tolist()
    ([0, 1], [75.0, 75.0])
    """

    def __init__(self, dnas: Iterable[str] = ()) -> None:
        self._handle = library.made(lib.morva_dna_list_new, lib.morva_dna_list_free)
        self.extend(dnas)

    def __len__(self) -> int:
        return int(lib.morva_dna_list_size(self._handle.address))

    def append(self, dna: str) -> None:
        """Adds one at the end."""
        self.extend([dna])

    def extend(self, dnas: Iterable[str]) -> None:
        """Adds all of them, or none where one is no fingerprint."""
        raw = [_raw(dna) for dna in dnas]
        for place, dna in enumerate(raw):
            if dna.strip(b"0123456789ABCDEF"):
                raise ValueError(f"fingerprint {place} is none: it is of digits and A to F")
        check(lib.morva_dna_list_append(self._handle.address, library.c_texts(raw), len(raw)))

    def similarities(self, dna: str) -> Floats:
        """The similarity of a fingerprint to each of the list, in its order."""
        result = np.empty(len(self), np.float64)
        self._fill(dna, result)
        return result

    def _fill(self, dna: str, row: Floats) -> None:
        check(lib.morva_dna_list_similarities(self._handle.address, _raw(dna), row.ctypes.data, row.size))

    def most_similar(self, dna: str, count: int) -> Tuple[npt.NDArray[np.uintp], Floats]:
        """Positions and similarities of the most similar ones, at most ``count``; of equal ones the earlier first."""
        most = min(max(count, 0), len(self))
        positions, values = np.empty(most, np.uintp), np.empty(most, np.float64)
        found = c_size_t()
        check(lib.morva_dna_list_most_similar(self._handle.address, _raw(dna), most, positions.ctypes.data,
                                              values.ctypes.data, byref(found)))
        return positions[:found.value], values[:found.value]


def similarity_matrix(dnas: Iterable[str]) -> Floats:
    """The similarity of each of N fingerprints to each, N by N.

    >>> similarity_matrix(["FF", "F0"])
    array([[100.,  50.],
           [ 50., 100.]])
    """
    texts = list(dnas)
    known = DnaList(texts)
    matrix = np.empty((len(texts), len(texts)), np.float64)
    for row, dna in zip(matrix, texts):
        known._fill(dna, row)
    return matrix


def dna_bits(dna: str) -> npt.NDArray[np.bool_]:
    """The bits of a fingerprint, four for each digit.

    >>> dna_bits("A1").astype(int)
    array([1, 0, 1, 0, 0, 0, 0, 1])
    """
    try:
        digits = np.array([int(digit, 16) for digit in dna], np.uint8)
    except ValueError:
        raise ValueError("a fingerprint is of hexadecimal digits") from None
    return np.unpackbits(digits[:, np.newaxis], axis=1)[:, 4:].ravel().astype(np.bool_)


def dna_point(wide_dna: str) -> Floats:
    """The 128 numbers behind a wide fingerprint of 1024 digits, by which documents are clustered."""
    point = np.empty(128, np.float64)
    check(lib.morva_dna_point(_raw(wide_dna), point.ctypes.data))
    return point

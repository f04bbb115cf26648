"""What is in documents: the words that characterise them, their fingerprints, how like they are, and which class
they belong to.

>>> import morvaai
>>> report = morvaai.read(samples / "harbour-report.docx")
>>> revised = morvaai.read(samples / "harbour-report-revised.docx")
>>> round(morvaai.similarity(report.dna, revised.dna), 1)
96.9

Numbers are NumPy arrays. Files from elsewhere are for :func:`read_all`, which reads them in worker processes;
everything else works in this process. Any thread may call, one at a time works.
"""

from __future__ import annotations

import ctypes as _ctypes
import os as _os
from typing import Dict as _Dict, Optional as _Optional

from ._boxes import BoxClass, Boxes
from ._dna import DnaList, dna_bits, dna_point, similarity, similarity_matrix
from ._document import Document, from_words, read, read_all, read_text
from ._errors import BoxError, DictionaryError, DocumentError, MorvaError, NotAskedError, WorkerError
from ._library import check as _check, lib as _lib, path_bytes as _path_bytes, text_of as _text_of
from ._matrix import FeatureMatrix, feature_matrix

__version__: str = _text_of(_lib.morva_library_version())


def load_dictionary(directory: "_Optional[str | _os.PathLike[str]]" = None) -> None:
    """Loads the dictionary now, which else the first document does; with a directory, from there. To be called
    before there are other threads. Raises :class:`DictionaryError`."""
    _check(_lib.morva_load_dictionary(None if directory is None else _path_bytes(directory)))


def isolation() -> "_Dict[str, int]":
    """What shuts the workers of :func:`read_all` in on this machine: "system_calls" and "memory", 1 or 0, and
    "landlock", its version."""
    values = {name: _ctypes.c_int() for name in ("system_calls", "landlock", "memory")}
    _check(_lib.morva_isolation(*map(_ctypes.byref, values.values())))
    return {name: value.value for name, value in values.items()}


__all__ = [
    "BoxClass", "BoxError", "Boxes", "DictionaryError", "DnaList", "Document", "DocumentError", "FeatureMatrix",
    "MorvaError", "NotAskedError", "WorkerError", "dna_bits", "dna_point", "feature_matrix", "from_words",
    "isolation", "load_dictionary", "read", "read_all", "read_text", "similarity", "similarity_matrix",
]

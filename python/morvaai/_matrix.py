"""Documents as rows of numbers, for whoever computes with them."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Iterable, List, Tuple

import numpy as np
import numpy.typing as npt

from ._document import Document


@dataclass(frozen=True)
class FeatureMatrix:
    """A row for each document, a column for each word of all of them: the weight of the word in the document. Kept
    as compressed sparse rows: of row i the columns are ``indices[indptr[i]:indptr[i + 1]]``, ascending, and the
    weights stand at the same places of ``data``."""

    data: npt.NDArray[np.float64]
    indices: npt.NDArray[np.int32]
    indptr: npt.NDArray[np.int64]
    #: The words, in code-point order.
    vocabulary: List[str]

    @property
    def shape(self) -> Tuple[int, int]:
        """Documents and words."""
        return len(self.indptr) - 1, len(self.vocabulary)

    def toarray(self) -> npt.NDArray[np.float64]:
        """With the zeros: of N documents with V words 8 * N * V bytes."""
        dense = np.zeros(self.shape, np.float64)
        rows = np.repeat(np.arange(self.shape[0]), np.diff(self.indptr))
        dense[rows, self.indices] = self.data
        return dense

    def tocsr(self) -> Any:
        """As a ``scipy.sparse.csr_matrix``, which shares the numbers. Takes SciPy."""
        from scipy.sparse import csr_matrix  # type: ignore[import]

        return csr_matrix((self.data, self.indices, self.indptr), shape=self.shape)


def feature_matrix(documents: Iterable[Document]) -> FeatureMatrix:
    """The weights of the words of all documents; they may come one by one, as from :func:`read_all`. A document
    without words is a row of zeros.

    >>> matrix = feature_matrix(read_all([samples / "harbour-report.docx", samples / "travel-policy.odt"], words=50))
    >>> matrix.shape == (2, len(matrix.vocabulary))
    True
    >>> matrix.toarray().max(axis=1)
    array([1., 1.])
    """
    places: Dict[str, int] = {}
    rows: List[npt.NDArray[np.int64]] = []
    weights: List[npt.NDArray[np.float64]] = []
    for document in documents:
        words = document.words if document.is_read else []
        rows.append(np.array([places.setdefault(word, len(places)) for word in words], np.int64))
        weights.append(document.weights.copy() if words else np.empty(0))
    vocabulary = sorted(places)
    columns = np.empty(len(places), np.int32)
    columns[[places[word] for word in vocabulary]] = np.arange(len(places), dtype=np.int32)
    indices: List[npt.NDArray[np.int32]] = [np.empty(0, np.int32)]
    data: List[npt.NDArray[np.float64]] = [np.empty(0)]
    for row, of_row in zip(rows, weights):
        found = columns[row]
        order = np.argsort(found)
        indices.append(found[order])
        data.append(of_row[order])
    indptr = np.zeros(len(rows) + 1, np.int64)
    np.cumsum([len(row) for row in rows], out=indptr[1:])
    return FeatureMatrix(np.concatenate(data), np.concatenate(indices), indptr, vocabulary)

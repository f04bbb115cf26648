"""Boxes: the class that a document belongs to."""

from __future__ import annotations

import os
from ctypes import byref, c_int, c_size_t
from typing import Any, Iterable, Iterator, List, NamedTuple, Optional, Tuple, Union

from . import _library as library
from ._document import Document, Path, read, read_all
from ._library import check, lib, text_of


class BoxClass(NamedTuple):
    """A class of a box."""

    #: Where it stands among all classes that are asked.
    position: int
    #: The id of its box.
    box: str
    #: Its own id.
    id: str
    #: Its name.
    name: str


class Boxes:
    """Boxes that are asked together: one box file, all of a directory with its index ``box.ini``, or without a path
    those of this machine. They are read once.

    >>> with Boxes(box_file) as boxes:
    ...     [each.name for each in boxes.classes]
    ...     boxes.match(samples / "corpus/decide/invoices/invoices-05.docx").name
    ['invoices', '采购合同']
    'invoices'
    """

    def __init__(self, path: Optional[Path] = None) -> None:
        raw = None if path is None else library.path_bytes(path)
        self._handle = library.made(lib.morva_boxes_open, lib.morva_boxes_close, raw)
        self._classes = tuple(self._class(i) for i in range(lib.morva_boxes_class_count(self._handle.address)))

    def _class(self, position: int) -> BoxClass:
        address = self._handle.address
        return BoxClass(position, text_of(lib.morva_boxes_box_id(address, position)),
                        text_of(lib.morva_boxes_class_id(address, position)),
                        text_of(lib.morva_boxes_class_name(address, position)))

    def __enter__(self) -> "Boxes":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Gives their memory back; what was made of them to ask them fast goes as other boxes are asked. Also done
        when the object ends."""
        self._handle.close()

    @property
    def classes(self) -> Tuple[BoxClass, ...]:
        """All classes, in the order in which they are asked."""
        return self._classes

    @property
    def wants_wide(self) -> bool:
        """Documents must be read with ``wide=True``: a box compares fingerprints."""
        return bool(lib.morva_boxes_wants(self._handle.address) & library.WANT_WIDE_DNA)

    def match(self, document: Union[Document, Path]) -> Optional[BoxClass]:
        """The first class that takes the document, or None. A path is read first, in this process."""
        asked = self._read(document)
        position = c_size_t()
        check(lib.morva_boxes_match(self._handle.address, asked._handle.address, byref(position)))
        return self._classes[position.value] if position.value < len(self._classes) else None

    def match_all(self, document: Union[Document, Path]) -> List[BoxClass]:
        """All classes that take the document."""
        asked = self._read(document)
        return [each for each in self._classes if self._is_in(each, asked)]

    def _is_in(self, asked: BoxClass, document: Document) -> bool:
        result = c_int()
        check(lib.morva_boxes_is_in_class(self._handle.address, document._handle.address, asked.position,
                                          byref(result)))
        return bool(result.value)

    def _read(self, document: Union[Document, Path]) -> Document:
        if isinstance(document, Document):
            return document
        return read(document, dna=False, wide=self.wants_wide)

    def match_files(self, paths: Iterable[Path], **options: Any) -> Iterator[Tuple[Document, Optional[BoxClass]]]:
        """Reads files in worker processes, as :func:`read_all` with its options does, and yields each document with
        the first class that takes it; one that could not be read has none."""
        chosen = {"dna": False, "wide": self.wants_wide, **options}
        for document in read_all(paths, **chosen):
            yield document, self.match(document) if document.is_read else None

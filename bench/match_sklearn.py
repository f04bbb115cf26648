#!/usr/bin/python3
"""Measures scikit-learn's nearest of class centers to one document, as match_bench measures `match`.

Usage: bench/match_sklearn.py [--runs N]

The document and the centers are sparse rows over 20,000 words, generated as match_bench generates them; the
words have been looked up already. Of NearestCentroid and of the distances alone, with their least, the faster
one is printed: one JSON object a line with the name and the seconds of each repetition.
"""

import argparse
import json
import time

import numpy
import scipy.sparse
from sklearn.metrics.pairwise import euclidean_distances
from sklearn.neighbors import NearestCentroid

WORDS = 20_000
WORDS_OF_DOCUMENT = 100
DOCUMENTS_OF_CLASS = 20
DOCUMENTS = 50
CLASSES = (10, 100, 1000)


def documents_of(random, topic, count):
    """Words of a topic: the frequent ones of the language, and some of the topic's own."""
    rank = random.exponential(300.0, (count, WORDS_OF_DOCUMENT)).astype(numpy.int64)
    offset = numpy.where(random.integers(0, 2, rank.shape) == 0, 0, 131 * topic + 1000)
    columns = (rank + offset) * 7919 % WORDS
    dense = numpy.zeros((count, WORDS))
    dense[numpy.arange(count)[:, None], columns] = random.uniform(0.05, 1.0, rank.shape)
    return dense


def seconds_of(work, documents, runs):
    """Of each repetition the mean over all documents."""
    result = []
    for _ in range(runs):
        start = time.perf_counter()
        for document in documents:
            work(document)
        result.append((time.perf_counter() - start) / len(documents))
    return result


def measure(classes, runs):
    random = numpy.random.default_rng(1)
    centers = scipy.sparse.vstack(
        [scipy.sparse.csr_matrix(documents_of(random, topic, DOCUMENTS_OF_CLASS).mean(axis=0)) for topic in range(classes)],
        format="csr",
    )
    documents = [scipy.sparse.csr_matrix(documents_of(random, i % classes, 1)) for i in range(DOCUMENTS)]
    # Each center is a class of one document, which is its centroid.
    nearest_centroid = NearestCentroid().fit(centers, numpy.arange(classes))
    squares = centers.multiply(centers).sum(axis=1)
    squares = numpy.asarray(squares).reshape(1, -1)

    def by_distances(document):
        return euclidean_distances(document, centers, Y_norm_squared=squares, squared=True).argmin()

    candidates = [seconds_of(work, documents, runs) for work in (nearest_centroid.predict, by_distances)]
    fastest = min(candidates, key=lambda seconds: sorted(seconds)[len(seconds) // 2])
    print(json.dumps({"name": f"match_kmeans/sklearn/{classes}", "seconds": fastest}), flush=True)


def main():
    parser = argparse.ArgumentParser(description="scikit-learn's nearest centroid, one document at a time")
    parser.add_argument("--runs", type=int, default=5)
    runs = parser.parse_args().runs
    for classes in CLASSES:
        measure(classes, runs)


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Measures scikit-learn on a matrix that clustering_bench wrote, and prints the seconds as JSON.

Usage: bench/clustering_sklearn.py FOLDER

FOLDER holds meta.json (rows, columns, eps, minpts, memory_limit) and, in native byte order, the matrix by
rows without its zeros: values.bin (float64), columns.bin (int32), starts.bin (int64), with centers.bin, the
initial centers of K-means (float64, dense; none: K-means is left out). The result names the seconds of the runs of
each operation on the dense matrix (sklearn), on compressed rows made from it (sklearn_converted: with the making)
and on compressed rows (sklearn_csr); what is left out was too large for the memory limit.
"""

import json
import os
import pathlib
import sys
import time
import warnings

import numpy
import scipy
import scipy.sparse
import sklearn
from sklearn.cluster import DBSCAN, KMeans
from sklearn.metrics import pairwise_distances

ENOUGH_SECONDS = 1.0
MOST_RUNS = 7
# DBSCAN over compressed rows takes minutes beyond.
MOST_ROWS_OF_DBSCAN = 4000


def seconds(work):
    runs = []
    while len(runs) < MOST_RUNS and sum(runs) < ENOUGH_SECONDS:
        start = time.perf_counter()
        work()
        runs.append(time.perf_counter() - start)
    return runs


def measure(matrix, centers, meta):
    works = {
        "mean_distance": lambda: pairwise_distances(matrix).sum(),
        "largest_distance": lambda: pairwise_distances(matrix).max(),
        "eps": lambda: numpy.sort(pairwise_distances(matrix), axis=1),
    }
    if not scipy.sparse.issparse(matrix) or matrix.shape[0] <= MOST_ROWS_OF_DBSCAN:
        dbscan = DBSCAN(eps=meta["eps"], min_samples=meta["minpts"])
        works["dbscan"] = lambda: dbscan.fit(matrix)
    if len(centers):
        # tol=0: until no assignment changes, as the engine does.
        kmeans = KMeans(len(centers), init=centers, n_init=1, max_iter=1000, tol=0, algorithm="lloyd")
        works["kmeans"] = lambda: kmeans.fit(matrix)
    return {name: seconds(work) for name, work in works.items()}


def main():
    warnings.filterwarnings("ignore")
    folder = pathlib.Path(sys.argv[1])
    meta = json.loads((folder / "meta.json").read_text())
    shape = (meta["rows"], meta["columns"])
    rows = scipy.sparse.csr_matrix((numpy.fromfile(folder / "values.bin"),
                                    numpy.fromfile(folder / "columns.bin", numpy.int32),
                                    numpy.fromfile(folder / "starts.bin", numpy.int64)), shape)
    centers = numpy.fromfile(folder / "centers.bin").reshape(-1, shape[1])
    result = {"version": sklearn.__version__, "processors": len(os.sched_getaffinity(0)),
              "sklearn_csr": measure(rows, centers, meta)}
    # K-means works on a copy.
    if 2 * 8 * shape[0] * shape[1] <= meta["memory_limit"]:
        dense = rows.toarray()
        making = min(seconds(lambda: scipy.sparse.csr_matrix(dense)))
        result["sklearn_converted"] = {name: [making + run for run in runs]
                                       for name, runs in result["sklearn_csr"].items()}
        result["sklearn"] = measure(dense, centers, meta)
    print(json.dumps(result))


if __name__ == "__main__":
    sys.exit(main())

"""Reads of the Python module against netCDF4-python + numpy on the same NC file, in one run.

    python3 bench/bench_python.py RUN.nc [ITEM]

RUN.nc holds a 3-D item ITEM (default "temp") written by the library (build/bench/bench_python
writes a run of 1,000,000 elements and calls this script). Times, best of several rounds:
  - the surface layer of a timestep: thalmod's read_layer against reading the timestep's record with
    netCDF4 and picking each column's top cell with numpy (target: ratio <= 1.0);
  - the series of one cell over all timesteps: read_series against the record variable's column
    (target: ratio <= 1.0).
Both sides open the file in this one process and so share HDF5's chunk cache: they take turns over
the timesteps, and read series of cells far apart, so that neither reads what the other read just
before. Prints; asserts nothing.
"""
import sys
import time

try:
    import netCDF4
    import numpy as np
    import thalmod
except ImportError as missing:
    print(f"bench_python: skipped, {missing.name} is not installed (python3-netcdf4, python3-numpy, "
          "and the module built with THALMOD_PYTHON and found through PYTHONPATH).")
    sys.exit(0)


def best(rounds, library, baseline):
    """Least wall time of each over the rounds; call(r) gets the round number."""
    lib = base = float("inf")
    for r in range(rounds):
        t0 = time.perf_counter()
        baseline(r)
        t1 = time.perf_counter()
        library(r)
        t2 = time.perf_counter()
        base, lib = min(base, t1 - t0), min(lib, t2 - t1)
    return lib, base


def report(what, times, target):
    lib, base = times
    print(f"{what:<44} thalmod {lib:8.4f} s   netCDF4+numpy {base:8.4f} s   ratio {lib / base:5.2f}"
          f"   (target <= {target:.2f})")


def main(path, item):
    rf = thalmod.ResultFile(path)
    ds = netCDF4.Dataset(path)
    ds.set_auto_maskandscale(False)
    var = ds[item]
    nt, noe, nol = rf.nt, rf.mesh.noe, rf.model.nol
    # the baseline's own cell numbers: columns bottom up, one after the other
    top = np.cumsum(nol - ds["elemBottomLayerIdx"][:].astype(np.int64)) - 1
    print(f"{path}: {noe} elements, {nol} layers, {var.shape[1]} cells, {nt} timesteps")

    def base_layer(r):
        layer = var[(2 * r) % nt][top].astype(np.float64)
        assert layer.shape == (noe,)

    def lib_layer(r):
        rf.read_layer(item, (2 * r + 1) % nt, "surface")

    report("surface layer of a timestep", best(6, lib_layer, base_layer), 1.0)
    # each side its own cell, a quarter of the mesh apart, so that they share no chunk
    elem, other = noe // 2, noe // 4
    if not np.array_equal(rf.read_series(item, elem, "surface"), var[:, top[elem]].astype(np.float64)):
        sys.exit("bench_python: the two reads of the series differ.")
    report("series of one cell, all timesteps", best(5, lambda r: rf.read_series(item, elem, "surface"),
                                                     lambda r: var[:, top[other]].astype(np.float64)), 1.0)
    ds.close()
    rf.close()


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else "temp")

#!/usr/bin/python3
"""The library's reads beside the Python tools, on one generated run, in one go.

    /usr/bin/python3 bench/side_by_side.py BUILD_DIR [--rounds N] [--keep]

BUILD_DIR is a build with benchmarks and tools (bench/bench_open, tools/thal). The run, 1,000,000
triangles, 20 layers, 24 timesteps, NetCDF-4 deflate 2, is written into BUILD_DIR/sbs once and
kept there. Each measurement runs in a process of its own and the best of N rounds counts (the
machine may be shared). Printed: the light open and the full header read against the Python
topology read (netCDF4 arrays, a matplotlib Triangulation with its edges and neighbours), with
the peak memory of the light open against the heap that it holds; and `thal info` and
`thal paint` as whole processes against Python scripts doing the same.
"""
import os
import subprocess
import sys
import time

try:
    import matplotlib  # noqa: F401
    import netCDF4  # noqa: F401
    import numpy  # noqa: F401
except ImportError as e:
    print(f"side_by_side: skipped, {e.name} is not installed (scripts/setup-bench.sh installs it)")
    sys.exit(0)

PY = "/usr/bin/python3"

# The Python topology read: what a Python tool needs before it can draw or search the mesh.
TOPOLOGY = r"""
import sys, time
import netCDF4, numpy
import matplotlib.tri as mtri
def kib(key):
    for line in open('/proc/self/status'):
        if line.startswith(key): return float(line.split()[1])
rss0 = kib('VmRSS:')
t0 = time.perf_counter()
with netCDF4.Dataset(sys.argv[1]) as d:
    x = d['nodeXCoor'][:].filled(); y = d['nodeYCoor'][:].filled()
    conn = d['connectivity'][:].filled(); bathy = d['elemBathy'][:].filled()
    layers = d['elemlayers'][:].filled(); dz = d['layerThickness'][:].filled()
    t = d['time'][:]
tri = mtri.Triangulation(x, y, conn.reshape(-1, 3))
edges, nbrs = tri.edges, tri.neighbors
s = time.perf_counter() - t0
print(f"seconds {s:.4f} peakMiB {(kib('VmHWM:') - rss0) / 1024:.1f}")
"""

# `thal info` in Python: items and their kinds, time axis, mesh counts and extent, depths, layers
# and cells, and the open boundaries with their faces (the mesh's outer edges whose two nodes lie
# on an open boundary), which need the triangles' neighbours as the library's report needs faces.
INFO = r"""
import sys, datetime
import netCDF4, numpy
import matplotlib.tri as mtri
with netCDF4.Dataset(sys.argv[1]) as d:
    noe, non = len(d.dimensions['elems']), len(d.dimensions['nodes'])
    cells, nol = len(d.dimensions['cells']), len(d.dimensions['layers'])
    n = d.getncattr('nItem')
    for v in list(d.variables.values())[-n:]:
        k = v.shape[1]
        print(v.name, '3-D' if k == cells else '2-D' if k == noe else 'vector')
    t = d['time'][:]
    step = (t[-1] - t[0]) / (len(t) - 1) if len(t) > 1 else 1
    print(len(t), 'timesteps from', datetime.datetime.utcfromtimestamp(int(t[0])), 'every', step, 's')
    nonpe = d['noElemNodes'][:].filled()
    x, y = d['nodeXCoor'][:].filled(), d['nodeYCoor'][:].filled()
    types = d['nodeType'][:].filled()
    conn = d['connectivity'][:].filled().reshape(-1, 3)
    bathy = d['elemBathy'][:].filled()
    print(non, 'nodes,', noe, 'elements (', int((nonpe == 3).sum()), 'triangles ),',
          d.getncattr('projection'))
    print('extent', x.min(), x.max(), y.min(), y.max(), 'depth', bathy.min(), bathy.max())
    print(nol, 'layers,', int(d['elemlayers'][:].sum()), 'cells')
tri = mtri.Triangulation(x, y, conn)
e, side = numpy.nonzero(tri.neighbors == -1)
a, b = conn[e, side], conn[e, (side + 1) % 3]
open_ = (types[a] >= 1) & (types[a] <= 98) & (types[b] >= 1) & (types[b] <= 98)
ids, counts = numpy.unique(numpy.minimum(types[a], types[b])[open_], return_counts=True)
print(len(ids), 'open boundaries', dict(zip(ids.tolist(), counts.tolist())))
"""

# `thal paint` in Python: the top cell of each column at one timestep, drawn at the element
# centres' triangles by matplotlib into a PNG of the same size.
PAINT = r"""
import sys
import netCDF4, numpy
import matplotlib
matplotlib.use('Agg')
import matplotlib.pyplot as plt
import matplotlib.tri as mtri
with netCDF4.Dataset(sys.argv[1]) as d:
    x = d['nodeXCoor'][:].filled(); y = d['nodeYCoor'][:].filled()
    conn = d['connectivity'][:].filled().reshape(-1, 3)
    layers = d['elemlayers'][:].filled()
    top = numpy.cumsum(layers) - 1
    values = d['temperature'][12, :].filled()[top]
fig = plt.figure(figsize=(8, 6), dpi=100)
ax = fig.add_axes([0, 0.1, 1, 0.9]); ax.set_axis_off()
pc = ax.tripcolor(mtri.Triangulation(x, y, conn), facecolors=values, cmap='viridis')
fig.colorbar(pc, cax=fig.add_axes([0.05, 0.02, 0.9, 0.04]), orientation='horizontal')
fig.savefig(sys.argv[2])
"""


def run(cmd):
    out = subprocess.run(cmd, capture_output=True, text=True)
    if out.returncode != 0:
        sys.exit(f"side_by_side: {' '.join(cmd)} failed: {out.stderr.strip()}")
    return out.stdout


def fields(text):
    words = text.split()
    return {words[i]: float(words[i + 1]) for i in range(0, len(words) - 1, 2)}


def best(rounds, measure):
    results = [measure() for _ in range(rounds)]
    return min(results, key=lambda r: r["seconds"])


def wall(cmd):
    t0 = time.perf_counter()
    run(cmd)
    return {"seconds": time.perf_counter() - t0}


def main():
    args = sys.argv[1:]
    if not args:
        sys.exit(__doc__)
    build = args[0]
    rounds = int(args[args.index("--rounds") + 1]) if "--rounds" in args else 3
    bench, thal = os.path.join(build, "bench", "bench_open"), os.path.join(build, "tools", "thal")
    for exe in (bench, thal):
        if not os.access(exe, os.X_OK):
            sys.exit(f"side_by_side: {exe} is missing; "
                     "build with THALMOD_BUILD_BENCH and THALMOD_BUILD_TOOLS")
    work = os.path.join(build, "sbs")
    os.makedirs(work, exist_ok=True)
    nc = os.path.join(work, "run1m.nc")
    if not os.path.exists(nc):
        print(run([bench, "write", nc]).strip())
    png_lib, png_py = os.path.join(work, "lib.png"), os.path.join(work, "py.png")

    light = best(rounds, lambda: fields(run([bench, "light", nc])))
    full = best(rounds, lambda: fields(run([bench, "full", nc])))
    topo = best(rounds, lambda: fields(run([PY, "-c", TOPOLOGY, nc])))
    info = best(rounds, lambda: wall([thal, "info", nc]))
    info_py = best(rounds, lambda: wall([PY, "-c", INFO, nc]))
    paint_cmd = [thal, "paint", nc, "--item", "temperature", "--time", "12", "--size", "800x600",
                 "-o", png_lib]
    paint = best(rounds, lambda: wall(paint_cmd))
    paint_py = best(rounds, lambda: wall([PY, "-c", PAINT, nc, png_py]))

    def line(what, a, b, target):
        ratio = a["seconds"] / b["seconds"]
        print(f"{what:<38} {a['seconds']:8.3f} s  vs {b['seconds']:8.3f} s   "
              f"ratio {ratio:5.2f}  (target <= {target})")

    print(f"side by side on {nc}, best of {rounds}")
    line("light open / Python topology read", light, topo, 1.0)
    line("full header read / Python topology", full, topo, 1.5)
    line("thal info / Python info (processes)", info, info_py, 0.8)
    line("thal paint / Python paint (processes)", paint, paint_py, 0.8)
    print(f"peak memory: light open {light['peakMiB']:.0f} MiB, holding {light['heldMiB']:.0f} MiB "
          f"(ratio {light['peakMiB'] / light['heldMiB']:.2f}, target <= 2); full header read "
          f"{full['peakMiB']:.0f} MiB; Python topology read {topo['peakMiB']:.0f} MiB")


if __name__ == "__main__":
    main()

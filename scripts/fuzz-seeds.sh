#!/usr/bin/env bash
# Writes the seed corpora of the fuzz targets into OUT (default build-fuzz/seeds), one folder per
# target: NetCDF result files and grids from CDL (NetCDF-4, classic, 64-bit offset, CDF-5), EMB
# files of versions 0 to 8, TEXT0D/TEXT1D tables, mesh files, XML, dates and thal command lines.
# With THAL set to a thal binary (default build/tools/thal, where it exists), the sample run and
# its bathymetry join them. Nothing here is committed: the seeds are made afresh each time.
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build-fuzz/seeds}
thal=${THAL:-build/tools/thal}
rm -rf "$out"
mkdir -p "$out"/{resultfile,mesh,xml,texttable,dates,grid,thalargs}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# ---- NetCDF result files. The reader needs an int64 time, which only NetCDF-4 and CDF-5 hold; the
# classic and 64-bit offset copies store it as double and so try the refusals.
result_cdl() {  # $1: type of time
  cat <<CDL
netcdf run {
dimensions:
  time = UNLIMITED ; nodes = 4 ; elems = 2 ; cells = 4 ; layers = 2 ; totNoElemNodes = 6 ;
variables:
  $1 time(time) ; time:units = "seconds since 1970-01-01 00:00:00" ;
  double nodeXCoor(nodes) ; double nodeYCoor(nodes) ; int nodeType(nodes) ;
  int noElemNodes(elems) ; double voronoiX(elems) ; double voronoiY(elems) ; double elemBathy(elems) ;
  int elemBottomLayerIdx(elems) ; int elemlayers(elems) ; int connectivity(totNoElemNodes) ;
  double layerThickness(layers) ; float temperature(time, cells) ; float elevation(time, elems) ;
// global attributes:
  :fileType = "Thalmod unstructured data file" ; :version = 8 ; :layerType = 0 ; :flavor = 0 ;
  :topDepth = 0. ; :modeltype = 0 ; :projection = "UTM32" ; :nItem = 2 ;
data:
  time = 1717200000, 1717203600, 1717207200 ;
  nodeXCoor = 0, 100, 100, 0 ; nodeYCoor = 0, 0, 100, 100 ; nodeType = 99, 1, 1, 99 ;
  noElemNodes = 3, 3 ; voronoiX = 50, 50 ; voronoiY = 25, 75 ; elemBathy = 10, 10 ;
  elemBottomLayerIdx = 0, 0 ; elemlayers = 2, 2 ; connectivity = 0, 2, 1, 0, 3, 2 ;
  layerThickness = 5, 5 ;
  temperature = 10, 11, 12, 13, 10.5, 11.5, 12.5, 13.5, 11, 12, 13, 14 ;
  elevation = 0.1, 0.2, 0.3, 0.4, 0.5, 0.6 ;
}
CDL
}
result_cdl int64 > "$work/run64.cdl"
result_cdl double > "$work/rund.cdl"
ncgen -k nc4 -o "$out/resultfile/run-nc4.nc" "$work/run64.cdl"
# ncgen makes int of an int64 in CDF-5: copy the NetCDF-4 file instead, which keeps the type
nccopy -k cdf5 "$out/resultfile/run-nc4.nc" "$out/resultfile/run-cdf5.nc"
ncgen -k classic -o "$out/resultfile/run-classic.nc" "$work/rund.cdl"
ncgen -k 64-bit-offset -o "$out/resultfile/run-64bit.nc" "$work/rund.cdl"

# ---- grids: x, y and the depths over (y, x); a GEBCO-like layout leads with another variable.
cat > "$work/grid.cdl" <<'CDL'
netcdf grid {
dimensions: x = 4 ; y = 3 ;
variables: double x(x) ; double y(y) ; float z(y, x) ; z:_FillValue = -9999.f ;
data: x = 0, 10, 20, 30 ; y = 0, 10, 20 ; z = -1, -2, -3, -4, -5, _, -7, -8, 1, 2, -9, -10 ;
}
CDL
cat > "$work/gebco.cdl" <<'CDL'
netcdf gebco {
dimensions: lon = 3 ; lat = 2 ;
variables: int crs ; double lon(lon) ; double lat(lat) ; short elevation(lat, lon) ;
data: crs = 0 ; lon = 5, 5.5, 6 ; lat = 60, 60.5 ; elevation = -100, -50, 10, -200, -20, 30 ;
}
CDL
for k in nc4 classic 64-bit-offset cdf5; do
  ncgen -k "$k" -o "$out/grid/grid-$k.nc" "$work/grid.cdl"
  ncgen -k "$k" -o "$out/grid/gebco-$k.nc" "$work/gebco.cdl"
done

# ---- EMB files of versions 0 to 8, TEXT0D and TEXT1D tables, mesh files (the first byte of a
# mesh seed picks the version its binary image is read as: byte v+1 for version v, 0 for a
# stand-alone file).
python3 - "$out" <<'PY'
import struct, sys
out = sys.argv[1]
i32 = lambda *v: struct.pack("<%di" % len(v), *v)
f32 = lambda *v: struct.pack("<%df" % len(v), *v)
x, y, types = [0, 100, 100, 0], [0, 0, 100, 100], [99, 1, 1, 99]
nonpe, en = [3, 3], [0, 2, 1, 0, 3, 2]

def mesh_image(version):
    t = [(v + 1) % 100 for v in types] if 0 <= version <= 1 else types  # 99 stored as 0
    b = i32(4, 2) + f32(*x) + f32(*y) + i32(*t) + i32(*nonpe) + i32(*en)
    return b + f32(50, 50) + f32(25, 75) if version < 0 or version >= 7 else b

def emb(version):
    items = [(4, b"temperature"), (2, b"elevation")] if version > 0 else [(4, b"temperature")]
    nt, nol = 3, 2
    statics = [("elemBathy", "float", f32(10, 10), 2), ("mesh", "char", mesh_image(version), 1),
               ("dz", "float", f32(5, 5), 2)]
    if version >= 4: statics.append(("enol", "int", i32(2, 2), 2))
    if version >= 3: statics.append(("proj", "char", b"UTM32", 5))
    fixed = b"" if version == 0 else i32(version, 0)
    if version >= 5: fixed += i32(0, 1) + f32(3.14159265, 0.0)
    table = b"".join((i32(n) if version > 0 else b"") + i32(len(s)) + s for n, s in items)
    if version >= 3:
        st = b"".join(i32(len(d), c, len(n), len(t)) + n.encode() + t.encode() + d
                      for n, t, d, c in statics)
    else:
        st = b"".join(i32(len(d), c) for _, _, d, c in statics) + b"".join(d for _, _, d, _ in statics)
    start = 1717200000
    def fields(header_len):
        h = fixed + i32(0, header_len) + (struct.pack("<q", start) if version >= 8 else i32(start))
        return h + f32(3600.0) + i32(nt, len(items), 128, len(statics), 128 + len(table), nol)
    header_len = 128 + len(table) + len(st)
    head = fields(header_len).ljust(128, b"\0") + table + st
    data = b"".join(f32(*([10.0 + t + 0.1 * k for k in range(n)])) for t in range(nt) for n, _ in items)
    return head + data

for v in range(9):
    open(f"{out}/resultfile/run-v{v}.emb", "wb").write(emb(v))
open(f"{out}/resultfile/table.text0d", "w").write(
    "time\ttemperature\tsalinity\n2024-06-01 00:00:00\t10.5\t33.1\n"
    "2024-06-01 01:00:00\t10.7,33.0\n2024-06-01 02:00:00\t\t32.9\n")
open(f"{out}/resultfile/profile.text1d", "w").write(
    "2024-06-01 00:00:00\t10.5\t33.1\r\n2024-06-01 00:00:00\t9.5\t34.0\r\n"
    "2024-06-01 01:00:00\t10.6\t33.2\r\n2024-06-01 01:00:00\t9.6\t34.1\r\n")
text = "4 2 1\n0 0 99\n100 0 1\n100 100 1\n0 100\n0 2 1\n0;3;2\n50 25\n50 75\n"
open(f"{out}/mesh/square.mesh", "wb").write(b"\0" + text.encode())
quad = "5 2\n0 0\n100 0\n100 100\n0 100\n200 50 1\n0 3 2 1\n1 2 4\n"
open(f"{out}/mesh/quad.mesh", "wb").write(b"\0" + quad.encode())
for v in (-1, 0, 1, 6, 7, 8):
    open(f"{out}/mesh/image-v{v}.bin", "wb").write(bytes([v + 1 if v >= 0 else 0]) + mesh_image(v))
PY

# ---- XML (a tag path, a line end, the text), text tables, dates, command lines.
printf 'model/mesh\n<model><mesh>a.mesh</mesh><dz>5</dz></model>' > "$out/xml/simple.xml"
printf 'a/b\n<a x="1"><b/><b>two</b><!-- c --><a><b>nested</b></a></a>' > "$out/xml/nested.xml"
printf 'x y z\n0 0 1.5\n1 0 2\n/* block */ 2;0;3\n// note\n' > "$out/texttable/xyz.txt"
printf '<!-- a --> 1,2,3\n4\t5\t6\n' > "$out/texttable/comments.txt"
for d in "2024-06-01 12:00:00" "1900-01-01 00:00:00" "2024-02-29" "12:30:15" "1d 2h 3m" "90s" "3600"; do
  printf '%s' "$d" > "$out/dates/$(printf '%s' "$d" | tr -c 'A-Za-z0-9' '_')"
done
printf 'run.nc\0--item\0temperature\0--time\0012\0--at\0510000,6702500\0-o\0t.png' > "$out/thalargs/paint"
printf 'run.nc\0--size\0800x600\0--range\0-1.5:2e1' > "$out/thalargs/size"

# ---- the sample run and its bathymetry, and their first 20 bytes.
if [ -x "$thal" ]; then
  "$thal" sample "$work/sample" > /dev/null
  cp "$work/sample/fjord.nc" "$out/resultfile/fjord.nc"
  cp "$work/sample/fjord_bathy.nc" "$out/grid/fjord_bathy.nc"
  head -c 20 "$work/sample/fjord.nc" > "$out/resultfile/fjord-cut20.nc"
  "$thal" convert "$work/sample/fjord.nc" "$work/fjord.emb" > /dev/null
  head -c 65536 "$work/fjord.emb" > "$out/resultfile/fjord-head.emb"
else
  echo "fuzz-seeds: no thal at $thal; the sample run is not among the seeds" >&2
fi
echo "Seeds in $out: $(find "$out" -type f | wc -l) files"

// Reading NC result files against bare NetCDF reads of the same arrays, in the same run.
//
// Writes a model of 1,000,000 quadrilaterals with 20 layers (about 10 million cells) and a few
// timesteps through the library's writer into /tmp, then times
//   - the header read (open, model arrays, mesh and cells set up) against nc_get_var of the
//     arrays that the header holds (target: ratio <= 3),
//   - readLayer of the top layer against nc_get_vara of the whole timestep of the item
//     (target: ratio <= 1.2, the pick of cells costing little beside the read),
//   - readTimeSeries of one cell over all timesteps against nc_get_vara of that column.
// Each measurement is the best of several rounds, library and baseline taking turns. Where both
// have the file open at once, the HDF5 layer shares one chunk cache between them, so the layer
// reads take turns over the timesteps and never read what the other side read just before.
// Prints; asserts nothing. The file is removed at the end.

#include <netcdf.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "benchModel.h"
#include "resultfile/thResultFile.h"

using namespace thalmod;
using bench::best;
using bench::buildModel;
using bench::seconds;

namespace {

using bench::report;

void check(int rc, const char* what) {
  if (rc != NC_NOERR) {
    std::fprintf(stderr, "%s: %s\n", what, nc_strerror(rc));
    std::exit(1);
  }
}

}  // namespace

int main() {
  const int n = 1000, nt = 6;
  std::string fn = "/tmp/bench_resultfile_nc_" + std::to_string(getpid()) + ".nc";
  int32_t cells = 0, noe = 0, col = 0, colBottom = 0, colLayer = 0;
  {
    thResultFile w(fn, NC);
    double tb = seconds([&] { buildModel(w.mInfo, n); });
    cells = w.mInfo.cells;
    noe = w.mInfo.mesh2d.noe;
    std::printf("model: %d elements, %d nodes, %d layers, %d cells (set up in %.2f s)\n", noe,
                w.mInfo.mesh2d.non, w.mInfo.nol, cells, tb);
    double tw = seconds([&] { bench::writeTempElevRun(w, nt); });
    std::printf("written: %d timesteps to %s in %.2f s\n", nt, fn.c_str(), tw);
    // a deep element in the middle for the series
    int e = (n / 2) * n + n / 2;
    colLayer = w.mInfo.nol - 1;
    col = e;
    colBottom = w.mInfo.botlayerIdx[e] - w.mInfo.ebli[e] + colLayer;
  }

  // ---- header
  // the object is released outside the timing, as the baseline's arrays are
  std::unique_ptr<thResultFile> kept;
  auto bareHeader = [&] {
    int id = -1;
    check(nc_open(fn.c_str(), NC_NOWRITE, &id), "nc_open");
    auto readAll = [&](const char* name, auto* tag) {
      using T = std::remove_pointer_t<decltype(tag)>;
      int v = -1, nd = 0, dims[4];
      check(nc_inq_varid(id, name, &v), name);
      nc_inq_varndims(id, v, &nd);
      nc_inq_vardimid(id, v, dims);
      size_t len = 1;
      for (int d = 0; d < nd; ++d) {
        size_t l = 0;
        nc_inq_dimlen(id, dims[d], &l);
        len *= l;
      }
      std::unique_ptr<T[]> buf(new T[len > 0 ? len : 1]);
      if constexpr (std::is_same_v<T, double>)
        check(nc_get_var_double(id, v, buf.get()), name);
      else if constexpr (std::is_same_v<T, int>)
        check(nc_get_var_int(id, v, buf.get()), name);
      else
        check(nc_get_var_longlong(id, v, buf.get()), name);
    };
    readAll("time", static_cast<long long*>(nullptr));
    for (const char* v : {"nodeXCoor", "nodeYCoor", "voronoiX", "voronoiY", "elemBathy", "layerThickness"})
      readAll(v, static_cast<double*>(nullptr));
    for (const char* v : {"nodeType", "noElemNodes", "elemlayers", "connectivity"})
      readAll(v, static_cast<int*>(nullptr));
    nc_close(id);
  };
  std::pair<double, double> header{1e30, 1e30};
  for (int r = 0; r < 3; ++r) {
    // No object of the library may hold the file open meanwhile: the HDF5 layer would share its
    // chunk cache with the bare reads.
    kept.reset();
    header.second = std::min(header.second, seconds(bareHeader));
    header.first = std::min(header.first, seconds([&] { kept = std::make_unique<thResultFile>(fn, NC); }));
  }
  report("header read", header, 3.0, "bare NetCDF");
  {
    // The share of the mesh and cell set-up, run on the arrays of the file in memory once the
    // object read has gone, so that one model is in memory as in the header read.
    const thMesh2D& src = kept->mInfo.mesh2d;
    std::vector<double> x(src.nxCoor, src.nxCoor + src.non), y(src.nyCoor, src.nyCoor + src.non);
    std::vector<double> vx(src.eVoronoiX, src.eVoronoiX + src.noe),
        vy(src.eVoronoiY, src.eVoronoiY + src.noe);
    std::vector<int32_t> types(src.nt, src.nt + src.non), nonpe(src.nonpe, src.nonpe + src.noe);
    std::vector<int32_t> en(src.en, src.en + src.nevf);
    std::vector<double> dz(kept->mInfo.dz, kept->mInfo.dz + kept->mInfo.nol);
    std::vector<double> bathy(kept->mInfo.elemBathy, kept->mInfo.elemBathy + src.noe);
    kept.reset();
    auto copy = [](const auto& v) {
      auto* a = new std::remove_const_t<std::remove_reference_t<decltype(v[0])>>[v.size()];
      std::copy(v.begin(), v.end(), a);
      return a;
    };
    thModelInfo mi;
    thMesh2D& m = mi.mesh2d;
    m.non = static_cast<int32_t>(x.size());
    m.noe = static_cast<int32_t>(nonpe.size());
    m.nxCoor = copy(x);
    m.nyCoor = copy(y);
    m.nt = copy(types);
    m.nonpe = copy(nonpe);
    m.en = copy(en);
    m.eVoronoiX = copy(vx);
    m.eVoronoiY = copy(vy);
    m.hasVoronoi = true;
    mi.nol = static_cast<int32_t>(dz.size());
    mi.dz = copy(dz);
    mi.elemBathy = copy(bathy);
    double tMesh = seconds([&] { m.initMesh(); });
    double tCells = seconds([&] { mi.initCells(); });
    // for scale only: run apart, the allocator is in another state than within the header read
    std::printf("  for scale, the set-up of the same model run apart: initMesh %.4f s, initCells %.4f s\n",
                tMesh, tCells);
  }

  // ---- the top layer, and a series of one cell
  {
    thResultFile rf(fn, NC);
    int id = -1, v = -1;
    check(nc_open(fn.c_str(), NC_NOWRITE, &id), "nc_open");
    check(nc_inq_varid(id, "temp", &v), "temp");
    std::vector<float> layer(noe), all(cells);
    // each call reads another timestep than the call before, so that neither side finds the
    // other's chunks in the library's cache
    int t = 0;
    auto lay = best(
        6,
        [&] {
          float* p = layer.data();
          rf.readLayer(0, t++ % nt, rf.mInfo.nol - 1, &p);
        },
        [&] {
          size_t start[2] = {static_cast<size_t>(t++ % nt), 0}, count[2] = {1, static_cast<size_t>(cells)};
          check(nc_get_vara_float(id, v, start, count, all.data()), "temp");
        });
    report("readLayer, top layer", lay, 1.2, "bare NetCDF");

    std::vector<float> column(nt);
    auto ser = best(
        6,
        [&] {
          double* d = nullptr;
          rf.readTimeSeries(0, col, colLayer, &d, 0, nt);
          delete[] d;
        },
        [&] {
          size_t start[2] = {0, static_cast<size_t>(colBottom)}, count[2] = {static_cast<size_t>(nt), 1};
          check(nc_get_vara_float(id, v, start, count, column.data()), "temp series");
        });
    report("readTimeSeries, one cell, all timesteps", ser, 1.2, "bare NetCDF");
    nc_close(id);
  }
  std::remove(fn.c_str());
  return 0;
}

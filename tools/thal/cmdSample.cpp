// thal sample DIR: writes a sample model run, a fjord, through the library's result-file writer,
// and a bathymetry raster of the same area beside it.
//
// The run is the same, byte for byte, on every call: its dates are fixed, its fields closed
// formulas, and neither file carries the time at which it was written.
#include <netcdf.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

#include "netcdf/VNetCdf.h"
#include "resultfile/thResultFile.h"
#include "support/VDT.h"
#include "thalCommands.h"
#include "thalFjord.h"

namespace thTool {

namespace {

namespace fs = std::filesystem;

constexpr double rasterSpacing = 50.0;  // metres between the raster's grid points

template <typename T>
T* newArray(const std::vector<T>& v) {
  T* a = new T[v.size()];
  std::copy(v.begin(), v.end(), a);
  return a;
}

// The model description of the run: the mesh, its layers and its time axis.
void describeRun(thalmod::thModelInfo& m, const FjordMesh& fj) {
  thalmod::thMesh2D& g = m.mesh2d;
  g.projection = "UTM32";
  g.non = static_cast<int32_t>(fj.x.size());
  g.nxCoor = newArray(fj.x);
  g.nyCoor = newArray(fj.y);
  g.nt = newArray(fj.nodeType);
  g.noe = static_cast<int32_t>(fj.nonpe.size());
  g.nonpe = newArray(fj.nonpe);
  g.en = newArray(fj.en);
  g.initMesh();

  m.startDT = VCppLib::VDT::strDT2longDT(fjordStart);
  m.dt = fjordDt;
  m.nt = fjordTimesteps;
  m.modelType = thalmod::water;
  m.flavor = 0;
  m.layerType = thalmod::zlayer;
  m.topDepth = 0.0;
  const std::vector<double> dz = fjordLayerThickness();
  m.nol = static_cast<int32_t>(dz.size());
  m.dz = newArray(dz);
  m.elemBathy = newArray(fjordElementDepth(fj));
  m.initCells();
}

// The lowest water of the run: when most columns fall dry (their surface under the sea bed), how
// many, and how many cells are dry then.
struct LowWater {
  int32_t dryColumns = 0, dryCells = 0;
  std::string when;
};

// Follows the surface through the run with the model's wet/dry update, on a copy of the model so
// that the file describes the model at rest.
struct WetDryWatch {
  explicit WetDryWatch(const thalmod::thModelInfo& m) : model(m.clone()) { model->initWetDry(); }
  void step(int32_t t, std::vector<double>& elev) {
    std::vector<int32_t> wet, dry;
    model->updateDZWetDry(elev.data(), wet, dry, true);
    int32_t columns = 0, cells = 0;
    for (int32_t e = 0; e < model->mesh2d.noe; ++e) {
      columns += model->edz[e][0] < 0.0;
      cells += model->nol - 1 - model->etli[e];
    }
    if (columns > low.dryColumns) low = {columns, cells, model->ts2StrDT(t)};
  }
  std::unique_ptr<thalmod::thModelInfo> model;
  LowWater low;
};

LowWater writeRun(const std::string& path, const FjordMesh& fj) {
  thalmod::thResultFile rf(path, thalmod::NC);
  thalmod::thModelInfo& m = rf.mInfo;
  describeRun(m, fj);
  const thalmod::thMesh2D& g = m.mesh2d;
  rf.addItem("temperature", m.cells);
  rf.addItem("salinity", m.cells);
  rf.addItem("elevation", g.noe);
  rf.writeHeader();

  WetDryWatch watch(m);
  std::vector<double> temp(m.cells), salt(m.cells), elev(g.noe);
  for (int32_t t = 0; t < m.nt; ++t) {
    const double sec = t * m.dt;
    for (int32_t e = 0; e < g.noe; ++e) {
      elev[e] = fjordElevation(g.exCoor[e], sec);
      for (int32_t c = m.botlayerIdx[e]; c <= m.toplayerIdx[e]; ++c) {
        temp[c] = fjordTemperature(g.exCoor[e], m.cellDepth[c], sec, m.elemBathy[e]);
        salt[c] = fjordSalinity(g.exCoor[e], m.cellDepth[c], sec);
      }
    }
    rf.writeItemData(temp.data(), m.cells);
    rf.writeItemData(salt.data(), m.cells);
    rf.writeItemData(elev.data(), g.noe);
    watch.step(t, elev);
  }
  rf.closeFile(m.nt);
  return watch.low;
}

void putText(int ncid, int varid, const char* name, const std::string& text) {
  nc_put_att_text(ncid, varid, name, text.size(), text.c_str());
}

// A gridded raster as a bathymetry reader expects it: variables x, y, then depth(y, x).
void writeRaster(const std::string& path, const FjordRaster& r) {
  VCppLib::VNetCdf nc(path, true);
  const int32_t nx = static_cast<int32_t>(r.x.size()), ny = static_cast<int32_t>(r.y.size());
  const int32_t xDim = nc.defDim("x", nx), yDim = nc.defDim("y", ny);
  const int32_t xVar = nc.defVar("x", {xDim}, NC_DOUBLE);
  const int32_t yVar = nc.defVar("y", {yDim}, NC_DOUBLE);
  const int32_t zVar = nc.defVar("depth", {yDim, xDim}, NC_DOUBLE);
  putText(nc.ncid, NC_GLOBAL, "title", "Bathymetry of the thal sample fjord");
  putText(nc.ncid, NC_GLOBAL, "projection", "UTM32");
  putText(nc.ncid, xVar, "units", "m");
  putText(nc.ncid, xVar, "long_name", "easting");
  putText(nc.ncid, yVar, "units", "m");
  putText(nc.ncid, yVar, "long_name", "northing");
  putText(nc.ncid, zVar, "units", "m");
  putText(nc.ncid, zVar, "long_name", "depth below mean sea level, positive down; NaN on land");
  nc.endDef();
  nc.putVar(xVar, const_cast<double*>(r.x.data()));
  nc.putVar(yVar, const_cast<double*>(r.y.data()));
  nc.putVar(zVar, const_cast<double*>(r.depth.data()));
  nc.closeFile();
}

}  // namespace

int cmdSample(const Args& args) {
  args.expectPositional(1, "thal sample DIR");
  const fs::path dir = args.positional[0];
  std::error_code ec;
  fs::create_directories(dir, ec);
  if (ec || !fs::is_directory(dir))
    throw ToolError("Cannot make the folder '" + dir.string() + "'" + (ec ? ": " + ec.message() : "") + ".");
  const std::string runPath = (dir / "fjord.nc").string();
  const std::string rasterPath = (dir / "fjord_bathy.nc").string();
  // A result file that exists would be read by the writer's constructor: start afresh.
  for (const std::string& p : {runPath, rasterPath}) {
    fs::remove(p, ec);
    if (ec) throw ToolError("Cannot replace '" + p + "': " + ec.message() + ".");
  }

  const FjordMesh fj = buildFjordMesh();
  const LowWater low = writeRun(runPath, fj);
  const FjordRaster raster = rasterizeFjord(fj, rasterSpacing);
  writeRaster(rasterPath, raster);

  std::cout << "Wrote " << runPath << ": a fjord of " << fj.nonpe.size() << " triangles, "
            << fjordLayerThickness().size() << " layers, " << fjordTimesteps
            << " hourly timesteps of temperature, salinity (3-D) and elevation (2-D) from " << fjordStart
            << ".\n"
            << "Wrote " << rasterPath << ": its bathymetry on a grid of " << raster.x.size() << "x"
            << raster.y.size() << " points, " << rasterSpacing << " m apart.\n";
  if (low.dryColumns > 0) {
    std::cout << "At low water (" << low.when << ") the surface falls below the sea bed of " << low.dryColumns
              << " columns at the head of the fjord, and " << low.dryCells << " cells lie dry.\n";
  }
  return 0;
}

}  // namespace thTool

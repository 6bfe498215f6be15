// Export of a result file as a UGRID 1.0 / CF NetCDF-4 file (see the header for the layout).
#include "resultfile/thResultFileUgrid.h"

#include <netcdf.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "support/VFiles.h"

namespace thalmod {

using VCppLib::VException;
using VCppLib::VNetCdf;

namespace {

const char* const fnName = "writeUgrid";

// Attributes of one variable (or NC_GLOBAL) of the file being defined.
struct attWriter {
  int ncid;
  int varid;
  attWriter& text(const char* name, const std::string& v) {
    nc_put_att_text(ncid, varid, name, v.size(), v.c_str());
    return *this;
  }
  attWriter& num(const char* name, int v) {
    nc_put_att_int(ncid, varid, name, NC_INT, 1, &v);
    return *this;
  }
  attWriter& fill(float v) {
    nc_put_att_float(ncid, varid, "_FillValue", NC_FLOAT, 1, &v);
    return *this;
  }
  attWriter& onMesh(const char* location) { return text("mesh", "mesh").text("location", location); }
};

// How an item is laid out in the file.
enum class itemShape { faceLayer, face, edgeLayer, plain };

struct ugridItem {
  int32_t itemNo;
  itemShape shape;
  int32_t varid = -1;
};

// The depth range of each layer: its top and its bottom.
std::vector<double> layerBounds(const thModelInfo& mi) {
  std::vector<double> b(2 * static_cast<size_t>(mi.nol));
  for (int32_t k = 0; k < mi.nol; ++k) {
    b[2 * k] = mi.layerDepth[k] - mi.dz[k] / 2;
    b[2 * k + 1] = mi.layerDepth[k] + mi.dz[k] / 2;
  }
  return b;
}

// Spreads the values of an item that is numbered column by column, bottom up (cells of element
// columns, U-points of faces), over a block of nOut columns by nol layers; the rest stays delVal.
// Numbers outside the item are left out rather than trusted.
void spreadColumns(const std::vector<float>& v, int32_t nCol, const int32_t* first, const int32_t* bli,
                   const int32_t* tli, int32_t nol, std::vector<float>& out) {
  std::fill(out.begin(), out.end(), static_cast<float>(delVal));
  const int64_t len = static_cast<int64_t>(v.size());
  for (int32_t c = 0; c < nCol; ++c)
    for (int32_t k = std::max(bli[c], 0); k <= std::min(tli[c], nol - 1); ++k) {
      const int64_t at = static_cast<int64_t>(first[c]) + k - bli[c];
      if (at >= 0 && at < len) out[static_cast<size_t>(c) * nol + k] = v[at];
    }
}

// Writes the file; the caller removes it on failure.
class ugridWriter {
 public:
  // The U-point numbering (fUIdx, fbli, ftli) is one of the tables that a light open leaves to first use.
  ugridWriter(thResultFile& file, VNetCdf& out) : rf(file), mi(file.mInfo), m(file.mInfo.mesh2d), nc(out) {
    if (mi.isInit) mi.cellTables();
  }

  void write() {
    defineMesh();
    if (hasLayers()) defineLayers();
    timeVar = nc.defVar("time", {timeDim}, NC_INT64);
    attWriter{nc.ncid, timeVar}
        .text("standard_name", "time")
        .text("long_name", "time")
        .text("units", "seconds since 1970-01-01 00:00:00")
        .text("calendar", "standard")
        .text("axis", "T");
    defineItems();
    nc.endDef();
    putMesh();
    putTimesteps();
  }

 private:
  thResultFile& rf;
  thModelInfo& mi;
  thMesh2D& m;
  VNetCdf& nc;
  int32_t timeDim = -1, nodeDim = -1, faceDim = -1, edgeDim = -1, twoDim = -1, layerDim = -1;
  int32_t timeVar = -1;
  int32_t maxNodes = 4;  // triangles and quadrilaterals: a fixed width, whatever a file holds
  std::vector<ugridItem> items;
  std::vector<std::pair<int32_t, const void*>> fixed;  // variables written after the definitions

  bool hasLayers() const { return mi.isInit && mi.nol > 0 && mi.dz && mi.layerDepth; }

  int32_t var(const char* name, std::vector<int32_t> dims, int32_t type, const void* data) {
    int32_t v = nc.defVar(name, std::move(dims), type);
    if (data) fixed.emplace_back(v, data);
    return v;
  }

  void defineMesh() {
    const int32_t nBnd = m.nvf - m.nivf;
    for (int32_t e = 0; e < m.noe; ++e) maxNodes = std::max(maxNodes, m.nonpe[e]);
    timeDim = nc.defDim("time", -1);
    nodeDim = nc.defDim("node", m.non);
    faceDim = nc.defDim("face", m.noe);
    edgeDim = nc.defDim("edge", m.nvf);
    twoDim = nc.defDim("two", 2);
    int32_t maxDim = nc.defDim("max_face_nodes", maxNodes);
    int32_t bndDim = nBnd > 0 ? nc.defDim("boundary", nBnd) : -1;
    attWriter g{nc.ncid, NC_GLOBAL};
    g.text("Conventions", "CF-1.8 UGRID-1.0")
        .text("title", "Thalmod model run")
        .text("source", rf.filename)
        .text("projection", m.projection);

    attWriter{nc.ncid, var("mesh", {}, NC_INT, nullptr)}
        .text("cf_role", "mesh_topology")
        .text("long_name", "topology of the unstructured mesh")
        .num("topology_dimension", 2)
        .text("node_coordinates", "mesh_node_x mesh_node_y")
        .text("face_node_connectivity", "mesh_face_nodes")
        .text("face_dimension", "face")
        .text("face_coordinates", "mesh_face_x mesh_face_y")
        .text("edge_node_connectivity", "mesh_edge_nodes")
        .text("edge_dimension", "edge")
        .text("edge_coordinates", "mesh_edge_x mesh_edge_y");
    if (nBnd > 0)
      attWriter{nc.ncid, nc.getVarId("mesh")}.text("boundary_node_connectivity", "mesh_boundary_nodes");
    coords("node", nodeDim, m.nxCoor, m.nyCoor, "nodes");
    coords("face", faceDim, m.exCoor, m.eyCoor, "element centres");
    coords("edge", edgeDim, m.vfxCoor, m.vfyCoor, "face midpoints");

    faceNodes.assign(static_cast<size_t>(m.noe) * maxNodes, -1);
    for (int32_t e = 0; e < m.noe; ++e)
      std::copy_n(m.en + m.eni[e], m.nonpe[e], faceNodes.begin() + static_cast<size_t>(e) * maxNodes);
    attWriter{nc.ncid, var("mesh_face_nodes", {faceDim, maxDim}, NC_INT, faceNodes.data())}
        .text("cf_role", "face_node_connectivity")
        .num("start_index", 0)
        .num("_FillValue", -1)
        .text("long_name", "nodes of each element, counter-clockwise");
    attWriter{nc.ncid, var("mesh_edge_nodes", {edgeDim, twoDim}, NC_INT, m.vfn)}
        .text("cf_role", "edge_node_connectivity")
        .num("start_index", 0);
    const std::string types = "0 inner, 1 to 98 the number of an open boundary, 99 closed boundary";
    if (nBnd > 0) {  // a dimension of length 0 would be a second unlimited one
      attWriter{nc.ncid, var("mesh_boundary_nodes", {bndDim, twoDim}, NC_INT, m.vfn + 2 * m.nivf)}
          .text("cf_role", "boundary_node_connectivity")
          .num("start_index", 0)
          .text("long_name", "nodes of the boundary faces: open boundaries first, then the closed ones");
      attWriter{nc.ncid, var("mesh_boundary_type", {bndDim}, NC_INT, m.vft + m.nivf)}
          .text("long_name", "type of each boundary face")
          .text("comment", types);
    }
    attWriter{nc.ncid, var("mesh_node_type", {nodeDim}, NC_INT, m.nt)}
        .onMesh("node")
        .text("long_name", "node type")
        .text("comment", types);
    attWriter{nc.ncid, var("mesh_edge_type", {edgeDim}, NC_INT, m.vft)}
        .onMesh("edge")
        .text("long_name", "face type")
        .text("comment", types);
    if (mi.elemBathy)
      attWriter{nc.ncid, var("mesh_face_depth", {faceDim}, NC_DOUBLE, mi.elemBathy)}
          .onMesh("face")
          .text("long_name", "depth of the sea bed")
          .text("units", "m")
          .text("positive", "down")
          .text("coordinates", "mesh_face_x mesh_face_y");
  }

  void coords(const char* where, int32_t dim, const double* x, const double* y, const char* what) {
    const bool deg = m.isLonLat;
    const std::string name = std::string("mesh_") + where + "_";
    for (int32_t i = 0; i < 2; ++i) {
      const char* axis = i == 0 ? "x" : "y";
      attWriter{nc.ncid, var((name + axis).c_str(), {dim}, NC_DOUBLE, i == 0 ? x : y)}
          .onMesh(where)
          .text("standard_name", deg ? (i == 0 ? "longitude" : "latitude")
                                     : (i == 0 ? "projection_x_coordinate" : "projection_y_coordinate"))
          .text("long_name", std::string(axis) + " of the " + what)
          .text("units", deg ? (i == 0 ? "degrees_east" : "degrees_north") : "m");
    }
  }

  void defineLayers() {
    layerDim = nc.defDim("layer", mi.nol);
    int32_t ifDim = nc.defDim("interface", mi.nol + 1);
    bounds = layerBounds(mi);
    interfaces.resize(static_cast<size_t>(mi.nol) + 1);
    for (int32_t k = 0; k < mi.nol; ++k) interfaces[k] = bounds[2 * k + 1];
    interfaces[mi.nol] = bounds[2 * (mi.nol - 1)];
    attWriter{nc.ncid, nc.getVarId("mesh")}
        .text("layer_dimension", "layer")
        .text("interface_dimension", "interface");
    attWriter{nc.ncid, var("layer", {layerDim}, NC_DOUBLE, mi.layerDepth)}
        .text("standard_name", "depth")
        .text("long_name", "depth of the layer centre; layer 0 is the deepest")
        .text("units", "m")
        .text("positive", "down")
        .text("axis", "Z")
        .text("bounds", "layer_bnds");
    var("layer_bnds", {layerDim, twoDim}, NC_DOUBLE, bounds.data());
    attWriter{nc.ncid, var("interface", {ifDim}, NC_DOUBLE, interfaces.data())}
        .text("standard_name", "depth")
        .text("long_name", "depth of the layer interfaces, from the bottom of layer 0 up")
        .text("units", "m")
        .text("positive", "down");
    attWriter{nc.ncid, var("mesh_face_bottom_layer", {faceDim}, NC_INT, mi.ebli)}.onMesh("face").text(
        "long_name", "deepest layer of each element");
  }

  itemShape shapeOf(int32_t len) const {
    if (hasLayers() && len == mi.cells) return itemShape::faceLayer;
    if (len == m.noe) return itemShape::face;
    if (hasLayers() && len == mi.totNoUPnts && mi.fUIdx) return itemShape::edgeLayer;
    return itemShape::plain;
  }

  void defineItems() {
    for (int32_t i = 0; i < static_cast<int32_t>(rf.itemNameVec.size()); ++i) {
      const std::string& name = rf.itemNameVec[i];
      if (rf.itemLengthVec[i] <= 0) continue;  // nothing to hold, and no dimension of length 0
      if (nc.getVarId(name) >= 0)
        throw VException(std::string(fnName) + ": the item '" + name + "' of '" + rf.filename +
                         "' has the name of a variable of the mesh and cannot be exported.");
      ugridItem it{i, shapeOf(rf.itemLengthVec[i])};
      switch (it.shape) {
        case itemShape::faceLayer: it.varid = nc.defVar(name, {timeDim, faceDim, layerDim}, NC_FLOAT); break;
        case itemShape::face: it.varid = nc.defVar(name, {timeDim, faceDim}, NC_FLOAT); break;
        case itemShape::edgeLayer: it.varid = nc.defVar(name, {timeDim, edgeDim, layerDim}, NC_FLOAT); break;
        case itemShape::plain:
          it.varid = nc.defVar(name, {timeDim, nc.defDim(name + "_values", rf.itemLengthVec[i])}, NC_FLOAT);
      }
      if (it.varid < 0 || nc.getVarId(name) != it.varid)
        throw VException(std::string(fnName) + ": the item '" + name +
                         "' cannot be made a variable of the file.");
      attWriter a{nc.ncid, it.varid};
      a.text("long_name", name).fill(static_cast<float>(delVal));
      if (it.shape == itemShape::face || it.shape == itemShape::faceLayer)
        a.onMesh("face").text("coordinates", "mesh_face_x mesh_face_y");
      else if (it.shape == itemShape::edgeLayer)
        a.onMesh("edge").text("coordinates", "mesh_edge_x mesh_edge_y");
      items.push_back(it);
    }
  }

  void putMesh() {
    for (auto& [varid, data] : fixed) {
      int rc = nc.putVar(varid, const_cast<void*>(data));
      if (rc != NC_NOERR)
        throw VException(std::string(fnName) + ": the mesh cannot be written: " + nc_strerror(rc));
    }
    int32_t zero = 0;
    nc_put_var_int(nc.ncid, nc.getVarId("mesh"), &zero);
  }

  void putTimesteps() {
    const bool multi = rf.format == EMB || rf.format == RESTART || rf.format == DECOUPLED;
    const int32_t nt = multi ? rf.getTotNoTimesteps() : mi.nt;
    std::vector<float> v, block;
    for (int32_t t = 0; t < nt; ++t) {
      for (const ugridItem& it : items) {
        v.resize(static_cast<size_t>(std::max(rf.itemLengthVec[it.itemNo], 1)));
        if (rf.readItemData(it.itemNo, t, v.data()) < 0)
          throw VException(std::string(fnName) + ": item '" + rf.itemNameVec[it.itemNo] + "' at timestep " +
                           std::to_string(t) + " cannot be read from '" + rf.filename + "'.");
        const float* out = v.data();
        if (it.shape == itemShape::faceLayer || it.shape == itemShape::edgeLayer) {
          const bool faces = it.shape == itemShape::faceLayer;
          block.resize(static_cast<size_t>(faces ? m.noe : m.nvf) * mi.nol);
          if (faces)
            spreadColumns(v, m.noe, mi.botlayerIdx, mi.ebli, mi.etli, mi.nol, block);
          else
            spreadColumns(v, std::min(mi.totNoUvf, m.nvf), mi.fUIdx, mi.fbli, mi.ftli, mi.nol, block);
          out = block.data();
        }
        int rc = nc.putTimestepData(it.varid, t, const_cast<float*>(out));
        if (rc != NC_NOERR)
          throw VException(std::string(fnName) + ": item '" + rf.itemNameVec[it.itemNo] +
                           "' cannot be written: " + nc_strerror(rc));
      }
      int64_t dt = mi.ts2DT(t);
      nc.putTimestepData(timeVar, t, &dt);
    }
  }

  std::vector<int32_t> faceNodes;
  std::vector<double> bounds, interfaces;
};

bool sameFile(const std::string& a, const std::string& b) {
  std::error_code ec;
  return a == b || std::filesystem::equivalent(a, b, ec);
}

}  // namespace

void writeUgrid(thResultFile& rf, const std::string& outName) {
  const thMesh2D& m = rf.mInfo.mesh2d;
  if (m.noe <= 0 || !m.en || !m.vfn)
    throw VException(std::string(fnName) + ": '" + rf.filename + "' holds no mesh to export.");
  if (sameFile(rf.filename, outName))
    throw VException(std::string(fnName) + ": the output '" + outName + "' is the result file itself.");
  try {
    VNetCdf nc(outName, true);
    if (nc.ncid < 0) throw VException(std::string(fnName) + ": cannot create '" + outName + "'.");
    ugridWriter(rf, nc).write();
    nc.closeFile();
  } catch (...) {
    VCppLib::deleteFile(outName);
    throw;
  }
}

void exportUgrid(const std::string& inName, const std::string& outName) {
  if (!VCppLib::fileExists(inName))
    throw VException(std::string("exportUgrid: the result file '") + inName + "' does not exist.");
  thResultFile rf(inName);
  if (rf.format < 0 || rf.mInfo.mesh2d.noe <= 0)
    throw VException(std::string("exportUgrid: '") + inName +
                     "' cannot be read as a result file with a mesh.");
  writeUgrid(rf, outName);
}

}  // namespace thalmod

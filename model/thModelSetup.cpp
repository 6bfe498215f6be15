// Setting a model up from configuration values (a mesh file, a bathymetry specification, a layer
// thickness list and a top depth), and the General block of a model configuration file that holds
// those values.
#include <cstdlib>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "model/thModelInfo.h"
#include "support/VFiles.h"
#include "support/VStr.h"
#include "support/VXml.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

namespace {

// A bathymetry specification read for a mesh of a given element count, before it goes into a model.
struct BathySpec {
  std::vector<double> depth;
  std::vector<int32_t> layers;  // enol by element; empty for a number, which sets no layer counts
};

// The text of a bathymetry specification that is not a number: an inline list (one record per
// comma-separated piece) or the contents of a file (one record per line).
std::string bathyRecords(const std::string& spec) {
  if (spec.find(',') != std::string::npos) return VStr::replaceAll(spec, ",", "\n");
  if (!VCppLib::fileExists(spec)) throw VException("thModelInfo::setElemBathy: No such file: '" + spec + "'");
  return VCppLib::readFileToString(spec);
}

BathySpec readBathySpec(const std::string& spec, int32_t noe) {
  BathySpec b;
  if (VStr::isNumber(spec)) {
    b.depth.assign(noe, std::atof(spec.c_str()));
    return b;
  }
  // Empty lines (a trailing line end, the empty piece between CR and LF) are no records.
  const std::vector<std::string> records = VStr::tokenize(bathyRecords(spec), "\r\n", true);
  if (records.size() != static_cast<size_t>(noe)) throw VException("Wrong number of values in bathymetry.");
  b.depth.resize(noe);
  b.layers.assign(noe, -1);
  for (int32_t i = 0; i < noe; i++) {
    // Empty fields are kept: a leading blank makes the depth 0 and the real depth the layer count.
    const std::vector<std::string> fields = VStr::tokenize(records[i], "\t ;");
    b.depth[i] = std::atof(fields[0].c_str());
    if (fields.size() > 1) b.layers[i] = std::atoi(fields[1].c_str());
  }
  return b;
}

// Layer thicknesses from the bottom layer up; a piece that does not start with a number is 0.0.
std::vector<double> readLayerThickness(const std::string& list) {
  std::vector<double> dz;
  for (const std::string& piece : VStr::tokenize(list, ",")) {
    std::istringstream ss(piece);
    double d = 0.0;
    if (!(ss >> d)) d = 0.0;
    dz.push_back(d);
  }
  return dz;
}

std::string noMeshText() {
  return "thModelInfo::setElemBathy initialize mesh2d before calling this function. " + thGlobal::errTail;
}

template <typename T>
T* newCopy(const std::vector<T>& v) {
  T* a = new T[v.size()];
  std::copy(v.begin(), v.end(), a);
  return a;
}

}  // namespace

// Installs a checked bathymetry; the arrays that member-wise copies share stay with them.
void thModelInfo::installBathy(std::vector<double>& depth, std::vector<int32_t>& layers) {
  unshare(true);
  std::unique_ptr<double[]> newDepth(newCopy(depth));
  int32_t* newLayers = layers.empty() ? nullptr : newCopy(layers);
  shares.release(enol);
  enol = newLayers;
  shares.release(elemBathy);
  elemBathy = newDepth.release();
}

int32_t thModelInfo::setElemBathy(std::string bathy) {
  if (mesh2d.noe < 1) throw VException(noMeshText());
  // Read and checked in full before anything changes. A mesh of noe elements always gets noe
  // values here or a failure, so the shorter list that "Not enough values in bathy." would name
  // cannot arise.
  BathySpec b = readBathySpec(bathy, mesh2d.noe);
  installBathy(b.depth, b.layers);
  bathymetry = bathy;
  return 0;
}

int32_t thModelInfo::initModel(std::string layerList, std::string meshFile, std::string bathy, double top) {
  // The new mesh, bathymetry and layers are read aside and go in only when all of them are sound,
  // so that a failure leaves the model as it was.
  thMesh2D fresh;
  fresh.meshFmt = mesh2d.meshFmt;
  fresh.projection = mesh2d.projection;  // not stored in a mesh file
  fresh.readMeshFromFile(meshFile);
  if (fresh.noe < 1) throw VException(noMeshText());
  BathySpec b = readBathySpec(bathy, fresh.noe);
  std::vector<double> layers = readLayerThickness(layerList);
  const int32_t nolNew = static_cast<int32_t>(layers.size());
  for (size_t e = 0; e < b.layers.size(); e++) {
    if (b.layers[e] > nolNew)
      throw VException("thModelInfo::initModel: the bathymetry gives element " + VStr::toString(e) + " " +
                       VStr::toString(b.layers[e]) + " layers, more than the " + VStr::toString(nolNew) +
                       " layers of the list '" + layerList + "'.");
  }
  if (layerType == sigma) throw VException("Sigma layers no longer supported.");

  unshare(false);  // the copies that shared the arrays keep them
  releaseDerived(true);
  std::swap(mesh2d, fresh);  // the old mesh goes with the temporary of the swap
  installBathy(b.depth, b.layers);
  bathymetry = bathy;
  layerThickness = layerList;
  topDepth = top;
  shares.release(dz);
  dz = newCopy(layers);
  nol = nolNew;
  return initCells();
}

std::string thModelInfo::modelXml(int32_t noTs) {
  using VCppLib::xmlElement;
  std::string s = xmlElement("Type", modelTypeEnum2str(static_cast<modelTypeEnum>(modelType)));
  s += mesh2d.meshXml();
  s += xmlElement("Bathymetry", bathymetry);
  s += xmlElement("LayerThickness", joinValues(dz, nol, ","));
  s += xmlElement("LayerType", layerTypeEnum2str(static_cast<layerTypeEnum>(layerType)));
  s += xmlElement("StartDT", ts2StrDT(0));
  s += xmlElement("DT", VStr::toString(dt));
  s += xmlElement("NoTimesteps", VStr::toString(noTs > 0 ? noTs : nt));
  s += xmlElement("CheckBlowUp", "true");
  return VCppLib::xmlWrap(s, "General", true);
}

}  // namespace thalmod

#include "testutil/thResultFixtures.h"

#include <sstream>

#include "model/thModelInfo.h"
#include "support/VCppLib.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

namespace thTest {

float SmallModel::temp(int t, int cell) {
  if ((t == 1 && (cell == 1 || cell == 2 || cell == 8)) ||
      (t == 2 && (cell == 6 || cell == 7 || cell == 8 || cell == 4)))
    return delVal;
  return static_cast<float>(100 * t + cell + 0.25);
}

float SmallModel::elev(int t, int elem) { return static_cast<float>(t + 0.5 * elem); }

namespace {

// The entries of a list, comma-separated; floating-point values with all the digits they need.
template <typename T>
std::string join(const std::vector<T>& v) {
  std::ostringstream s;
  s.precision(17);
  for (size_t i = 0; i < v.size(); ++i) s << (i ? ", " : "") << v[i];
  return s.str();
}

}  // namespace

std::string smallModelCdl(const SmallModelOptions& opt) {
  using M = SmallModel;
  std::ostringstream c;
  c << "netcdf small {\ndimensions:\n  time = UNLIMITED ;\n  nodes = 8 ;\n  elems = 4 ;\n  cells = 9 ;\n"
    << "  layers = 3 ;\n  totNoElemNodes = 14 ;\nvariables:\n  int64 time(time) ;\n"
    << "    time:long_name = \"Time (seconds since 1970-01-01)\" ;\n    time:standard_name = \"time\" ;\n"
    << "    time:units = \"seconds since 1970-01-01 00:00:00\" ;\n"
    << "  double nodeXCoor(nodes) ;\n  double nodeYCoor(nodes) ;\n  int nodeType(nodes) ;\n"
    << "  int noElemNodes(elems) ;\n  double voronoiX(elems) ;\n  double voronoiY(elems) ;\n"
    << "  double elemBathy(elems) ;\n  int elemBottomLayerIdx(elems) ;\n";
  if (opt.elemLayers) c << "  int elemlayers(elems) ;\n";
  c << "  int connectivity(totNoElemNodes) ;\n  double layerThickness(layers) ;\n";
  if (opt.items) c << "  float temp(time, cells) ;\n  float elev(time, elems) ;\n";
  c << "\n  :fileType = \"Thalmod unstructured data file\" ;\n  :version = 8 ;\n"
    << "  :layerType = " << opt.layerType << " ;\n  :flavor = 3 ;\n";
  if (opt.topDepthAtt) c << "  :topDepth = 0. ;\n";
  c << "  :modeltype = 0 ;\n  :projection = \"UTM32\" ;\n"
    << "  :nItem = " << (opt.items ? 2 : 0) << " ;\ndata:\n";
  if (!opt.times.empty()) c << "  time = " << join(opt.times) << " ;\n";
  c << "  nodeXCoor = " << join(M::x) << " ;\n  nodeYCoor = " << join(M::y) << " ;\n"
    << "  nodeType = " << join(M::nodeType) << " ;\n  noElemNodes = " << join(M::nonpe) << " ;\n"
    << "  voronoiX = " << join(M::vorX) << " ;\n  voronoiY = " << join(M::vorY) << " ;\n"
    << "  elemBathy = " << join(M::bathy) << " ;\n  elemBottomLayerIdx = " << join(M::ebli) << " ;\n";
  if (opt.elemLayers) c << "  elemlayers = " << join(M::enol) << " ;\n";
  c << "  connectivity = " << join(M::en) << " ;\n  layerThickness = " << join(M::dz) << " ;\n";
  if (opt.items && !opt.times.empty()) {
    std::vector<double> temp, elev;
    for (size_t t = 0; t < opt.times.size(); ++t) {
      int step = opt.firstStep + static_cast<int>(t);
      for (int k = 0; k < M::cells; ++k) temp.push_back(M::temp(step, k));
      for (int e = 0; e < M::noe; ++e) elev.push_back(M::elev(step, e));
    }
    c << "  temp = " << join(temp) << " ;\n  elev = " << join(elev) << " ;\n";
  }
  c << "}\n";
  return c.str();
}

void writeSmallModelNc(const std::string& ncPath, const SmallModelOptions& opt) {
  ncgen(smallModelCdl(opt), ncPath);
}

std::string smallModelNc(const std::string& ncPath, const SmallModelOptions& opt) {
  writeSmallModelNc(ncPath, opt);
  return ncPath;
}

void buildSmallModel(thalmod::thModelInfo& mi) {
  std::vector<std::vector<int32_t>> elems;
  for (size_t e = 0, k = 0; e < SmallModel::nonpe.size(); k += SmallModel::nonpe[e++])
    elems.emplace_back(SmallModel::en.begin() + k, SmallModel::en.begin() + k + SmallModel::nonpe[e]);
  buildMesh(mi.mesh2d, SmallModel::x, SmallModel::y, SmallModel::nodeType, elems);
  mi.nol = SmallModel::nol;
  mi.dz = newArray(SmallModel::dz);
  mi.elemBathy = newArray(SmallModel::bathy);
  mi.initCells();
  mi.startDT = SmallModel::startDT;
  mi.dt = 3600.0;
  mi.flavor = 3;
}

}  // namespace thTest

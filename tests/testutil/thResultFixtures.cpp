#include "testutil/thResultFixtures.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "model/thModelInfo.h"
#include "support/VCppLib.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

namespace thTest {

const std::vector<double> SmallModel::x = {0, 100, 200, 300, 0, 100, 200, 300};
const std::vector<double> SmallModel::y = {0, 0, 0, 0, 100, 100, 100, 100};
const std::vector<int> SmallModel::nodeType = {1, 99, 99, 99, 1, 99, 99, 99};
const std::vector<int> SmallModel::nonpe = {4, 4, 3, 3};
const std::vector<int> SmallModel::en = {0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, 2, 7, 6};
const std::vector<double> SmallModel::vorX = {50, 150, 270, 230};
const std::vector<double> SmallModel::vorY = {50, 50, 30, 70};
const std::vector<double> SmallModel::bathy = {15, 5, 1.5, 10};
const std::vector<double> SmallModel::dz = {10, 5, 2};
const std::vector<int> SmallModel::ebli = {0, 1, 2, 0};
const std::vector<int> SmallModel::botlayerIdx = {0, 3, 5, 6};
const std::vector<int> SmallModel::enol = {3, 2, 1, 3};
const std::vector<double> SmallModel::layerDepth = {12, 4.5, 1};

float SmallModel::temp(int t, int cell) {
  if ((t == 1 && (cell == 1 || cell == 2 || cell == 8)) ||
      (t == 2 && (cell == 6 || cell == 7 || cell == 8 || cell == 4)))
    return delVal;
  return static_cast<float>(100 * t + cell + 0.25);
}

float SmallModel::elev(int t, int elem) { return static_cast<float>(t + 0.5 * elem); }

namespace {

template <typename T, typename F>
std::string join(const std::vector<T>& v, F fmt) {
  std::string s;
  for (size_t i = 0; i < v.size(); ++i) s += (i ? ", " : "") + fmt(v[i]);
  return s;
}

std::string num(double v) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

}  // namespace

std::string smallModelCdl(const SmallModelOptions& opt) {
  using M = SmallModel;
  auto d = [](double v) { return num(v); };
  auto i = [](int v) { return std::to_string(v); };
  auto l = [](int64_t v) { return std::to_string(v); };
  std::ostringstream c;
  c << "netcdf small {\ndimensions:\n"
    << "  time = UNLIMITED ;\n  nodes = 8 ;\n  elems = 4 ;\n  cells = 9 ;\n  layers = 3 ;\n"
    << "  totNoElemNodes = 14 ;\nvariables:\n  int64 time(time) ;\n"
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
  if (!opt.times.empty()) c << "  time = " << join(opt.times, l) << " ;\n";
  c << "  nodeXCoor = " << join(M::x, d) << " ;\n"
    << "  nodeYCoor = " << join(M::y, d) << " ;\n"
    << "  nodeType = " << join(M::nodeType, i) << " ;\n"
    << "  noElemNodes = " << join(M::nonpe, i) << " ;\n"
    << "  voronoiX = " << join(M::vorX, d) << " ;\n"
    << "  voronoiY = " << join(M::vorY, d) << " ;\n"
    << "  elemBathy = " << join(M::bathy, d) << " ;\n"
    << "  elemBottomLayerIdx = " << join(M::ebli, i) << " ;\n";
  if (opt.elemLayers) c << "  elemlayers = " << join(M::enol, i) << " ;\n";
  c << "  connectivity = " << join(M::en, i) << " ;\n"
    << "  layerThickness = " << join(M::dz, d) << " ;\n";
  if (opt.items && !opt.times.empty()) {
    std::vector<double> temp, elev;
    for (size_t t = 0; t < opt.times.size(); ++t) {
      int step = opt.firstStep + static_cast<int>(t);
      for (int k = 0; k < M::cells; ++k) temp.push_back(M::temp(step, k));
      for (int e = 0; e < M::noe; ++e) elev.push_back(M::elev(step, e));
    }
    c << "  temp = " << join(temp, d) << " ;\n"
      << "  elev = " << join(elev, d) << " ;\n";
  }
  c << "}\n";
  return c.str();
}

void writeSmallModelNc(const std::string& ncPath, const SmallModelOptions& opt) {
  ncgen(smallModelCdl(opt), ncPath);
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

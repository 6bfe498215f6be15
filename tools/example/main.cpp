// thal_example RUN: a program of one's own over the library's facade. It opens a result file
// (such as the sample that `thal sample DIR` writes, DIR/fjord.nc), and prints a layer, a profile, a
// time series and a section of its first 3-D item.
//
// Everything goes through thWrapper::thResultFileWrapper: vectors and strings in and out, nothing
// to free, failures as VCppLib::VException with a full sentence.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "facade/thResultFileWrapper.h"

namespace {

void print(const char* title, const std::vector<double>& v, size_t most = 8) {
  std::printf("%s (%zu values):", title, v.size());
  for (size_t i = 0; i < std::min(v.size(), most); ++i) std::printf(" %.4g", v[i]);
  std::printf("%s\n", v.size() > most ? " ..." : "");
}

int run(const std::string& path) {
  thWrapper::thResultFileWrapper rf;
  rf.filename(path);
  if (rf.readHeader() != 0) {
    std::fprintf(stderr, "thal_example: cannot read '%s'.\n", path.c_str());
    return 1;
  }
  thWrapper::thModelInfoWrapper& mi = *rf.mInfo;
  std::vector<std::string> items = rf.items();
  std::printf("%s: %d elements, %d layers, %d timesteps from %s; items:", path.c_str(), mi.mesh2d.noe(),
              mi.nol(), mi.nt(), mi.ts2StrDT(0).c_str());
  for (const std::string& s : items) std::printf(" %s", s.c_str());
  std::printf("\n");
  // The first item whose values are one per cell, and the deepest element as the place to look.
  std::vector<double> bathy = mi.elemBathy();
  int32_t item = 0, elem = static_cast<int32_t>(std::max_element(bathy.begin(), bathy.end()) - bathy.begin());
  size_t cells = 0;
  for (int32_t b : mi.ebli()) cells += mi.nol() - b;
  while (item < static_cast<int32_t>(items.size()) && rf.readItemData(item, 0).size() != cells) ++item;
  if (item == static_cast<int32_t>(items.size())) item = 0;
  int32_t last = mi.nt() - 1, top = mi.nol() - 1;
  std::printf("item %s, element %d (depth %.1f m), timestep %d (%s)\n", items[item].c_str(), elem,
              bathy[elem], last, mi.ts2StrDT(last).c_str());
  if (auto layer = rf.readLayer(item, last, 999)) print("top layer, by element", *layer);
  if (auto column = rf.readItemData(item, last, {elem})) print("profile, bottom up", *column);
  if (auto series = rf.readTimeSeries(item, elem, top)) print("surface series", *series);
  // a section from the element's centre 2 km east, sampled every 250 m at 1, 5 and 20 m
  std::vector<double> ex = mi.mesh2d.exCoor(), ey = mi.mesh2d.eyCoor();
  std::vector<double> d, v, xc, yc;
  rf.extractSectionCart(item, last, {ex[elem], ex[elem] + 2000}, {ey[elem], ey[elem]}, {1, 5, 20}, 250, d, v,
                        xc, yc);
  print("section at 1, 5, 20 m, point after point", v, 12);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: thal_example RUN.nc\n");
    return 1;
  }
  try {
    return run(argv[1]);
  } catch (const VCppLib::VException& e) {
    std::fprintf(stderr, "thal_example: %s\n", e.message.c_str());
    return 1;
  }
}

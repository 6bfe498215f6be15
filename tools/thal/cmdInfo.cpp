// thal info FILE [--level N]: what a result file holds.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/VDT.h"
#include "thalCommands.h"
#include "thalResult.h"

namespace thTool {

namespace {

void printItems(const thResultFileWrapper& rf, std::ostream& out) {
  out << "Item kinds:\n";
  const std::vector<std::string> names = rf.items();
  const std::vector<int32_t> lengths = rf.itemLengths();
  for (size_t i = 0; i < names.size(); ++i) {
    ItemKind k = itemKind(rf, static_cast<int32_t>(i));
    out << "\t" << names[i] << "\t" << itemKindName(k);
    // A table's lengths say how its lines are read, not how much a timestep holds.
    if (k != ItemKind::column) out << "\t" << lengths[i] << " values per timestep";
    out << "\n";
  }
}

// A table has no time axis: each block of lines carries its own time stamp. The blocks are read
// through once to count them, line by line, which the facade does not offer: the library's own
// object reads them.
void printTableTimes(const std::string& path, std::ostream& out) {
  auto rf = openNativeResult(path);
  int64_t first = 0, last = 0;
  int32_t blocks = 0;
  for (;;) {
    double** rows = nullptr;
    int32_t lines = 0;
    int64_t when = 0;
    try {
      when = rf->readNextTimestep(&rows, &lines);
    } catch (const VCppLib::VException& e) {
      readFailed(*rf, "the lines of the table", e.message);
    }
    if (when == INT32_MAX) break;  // the end of the table
    rf->freeTimestepData(rows);
    if (blocks++ == 0) first = when;
    last = when;
  }
  out << "Time stamps:\t" << blocks;
  if (blocks > 0)
    out << " from " << VCppLib::VDT::longDT2StrDT(first) << " to " << VCppLib::VDT::longDT2StrDT(last);
  out << "\n";
}

void printTimeAxis(thResultFileWrapper& rf, std::ostream& out) {
  if (isTextTable(rf)) return printTableTimes(rf.filename(), out);
  out << "Time axis:\t" << timeAxisText(rf);
  if (rf.totNoTimesteps() > 1) out << ", every " << rf.mInfo->dt() << " s";
  out << "\n";
}

void printBoundaries(const thWrapper::thMesh2DWrapper& g, std::ostream& out) {
  const std::vector<int32_t> ids = g.bndId(), faces = g.bndNoFaces();
  out << "Open boundaries:\t" << ids.size();
  for (size_t b = 0; b < ids.size(); ++b)
    out << (b ? ", " : " (") << "number " << ids[b] << " with " << faces[b] << " faces"
        << (b + 1 == ids.size() ? ")" : "");
  out << "\n";
}

void printMesh(const thResultFileWrapper& rf, std::ostream& out) {
  const thWrapper::thMesh2DWrapper& g = rf.mInfo->mesh2d;
  const std::vector<int32_t> nonpe = g.nonpe();
  const std::vector<double> nx = g.nxCoor(), ny = g.nyCoor();
  if (g.noe() < 1 || g.non() < 1 || nonpe.empty() || nx.empty() || ny.empty()) {
    out << "Mesh:\tnone\n";  // a table, or a file that holds items alone
    return;
  }
  const auto tri = std::count(nonpe.begin(), nonpe.end(), 3);
  const auto quad = std::count(nonpe.begin(), nonpe.end(), 4);
  const std::string projection = g.projection();
  out << "Mesh:\t" << g.non() << " nodes, " << g.noe() << " elements (" << tri << " triangles, " << quad
      << " quadrilaterals";
  if (tri + quad < g.noe()) out << ", " << g.noe() - tri - quad << " other polygons";
  out << "), projection " << (projection.empty() ? "none" : projection) << "\n";
  auto [xLo, xHi] = std::minmax_element(nx.begin(), nx.end());
  auto [yLo, yHi] = std::minmax_element(ny.begin(), ny.end());
  out << "Extent:\tx " << num(*xLo) << " to " << num(*xHi) << ", y " << num(*yLo) << " to " << num(*yHi)
      << "\n";
  const thWrapper::thModelInfoWrapper& m = *rf.mInfo;
  const std::vector<double> depth = m.isInit() ? m.elemBathy() : std::vector<double>();
  if (!depth.empty()) {
    auto [dLo, dHi] = std::minmax_element(depth.begin(), depth.end());
    out << "Depth:\t" << num(*dLo) << " to " << num(*dHi) << " m\n";
    out << "Layers:\t" << m.nol() << " (0 at the bottom, " << m.nol() - 1 << " at the surface), " << m.cells()
        << " cells\n";
  }
  printBoundaries(g, out);
}

}  // namespace

int cmdInfo(const Args& args) {
  args.expectPositional(1, "thal info FILE [--level N]");
  int level = args.has("--level") ? parseInt(args.required("--level"), "level") : 0;
  auto rf = openResult(args.positional[0]);
  std::ostringstream out;  // all of it is made first, so that a failure prints nothing half-done
  out << rf->toString(level);
  printItems(*rf, out);
  printTimeAxis(*rf, out);
  printMesh(*rf, out);
  std::cout << out.str();
  return 0;
}

}  // namespace thTool

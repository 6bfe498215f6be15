// thal info FILE [--level N]: what a result file holds.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "support/VDT.h"
#include "thalCommands.h"
#include "thalResult.h"

namespace thTool {

namespace {

std::string num(double v) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.10g", v);
  return buf;
}

void printItems(thalmod::thResultFile& rf, std::ostream& out) {
  out << "Item kinds:\n";
  for (size_t i = 0; i < rf.itemNameVec.size(); ++i) {
    ItemKind k = itemKind(rf, static_cast<int32_t>(i));
    out << "\t" << rf.itemNameVec[i] << "\t" << itemKindName(k);
    // A table's lengths say how its lines are read, not how much a timestep holds.
    if (k != ItemKind::column) out << "\t" << rf.itemLengthVec[i] << " values per timestep";
    out << "\n";
  }
}

// A table has no time axis: each block of lines carries its own time stamp. The blocks are read
// through once to count them.
void printTableTimes(thalmod::thResultFile& rf, std::ostream& out) {
  int64_t first = 0, last = 0;
  int32_t blocks = 0;
  for (;;) {
    double** rows = nullptr;
    int32_t lines = 0;
    int64_t when = 0;
    try {
      when = rf.readNextTimestep(&rows, &lines);
    } catch (const VCppLib::VException& e) {
      readFailed(rf, "the lines of the table", e.message);
    }
    if (when == INT32_MAX) break;  // the end of the table
    rf.freeTimestepData(rows);
    if (blocks++ == 0) first = when;
    last = when;
  }
  out << "Time stamps:\t" << blocks;
  if (blocks > 0)
    out << " from " << VCppLib::VDT::longDT2StrDT(first) << " to " << VCppLib::VDT::longDT2StrDT(last);
  out << "\n";
}

void printTimeAxis(thalmod::thResultFile& rf, std::ostream& out) {
  if (isTextTable(rf)) return printTableTimes(rf, out);
  out << "Time axis:\t" << timeAxisText(rf);
  if (totalTimesteps(rf) > 1) out << ", every " << rf.mInfo.dt << " s";
  out << "\n";
}

void printMesh(thalmod::thResultFile& rf, std::ostream& out) {
  const thalmod::thMesh2D& g = rf.mInfo.mesh2d;
  const thalmod::thModelInfo& m = rf.mInfo;
  if (g.noe < 1 || g.non < 1 || !g.nonpe || !g.nxCoor || !g.nyCoor) {
    out << "Mesh:\tnone\n";  // a table, or a file that holds items alone
    return;
  }
  int32_t tri = 0, quad = 0;
  for (int32_t e = 0; e < g.noe; ++e) {
    if (g.nonpe[e] == 3) ++tri;
    if (g.nonpe[e] == 4) ++quad;
  }
  out << "Mesh:\t" << g.non << " nodes, " << g.noe << " elements (" << tri << " triangles, " << quad
      << " quadrilaterals";
  if (tri + quad < g.noe) out << ", " << g.noe - tri - quad << " other polygons";
  out << "), projection " << (g.projection.empty() ? "none" : g.projection) << "\n";
  if (g.non > 0) {
    auto [xLo, xHi] = std::minmax_element(g.nxCoor, g.nxCoor + g.non);
    auto [yLo, yHi] = std::minmax_element(g.nyCoor, g.nyCoor + g.non);
    out << "Extent:\tx " << num(*xLo) << " to " << num(*xHi) << ", y " << num(*yLo) << " to " << num(*yHi) << "\n";
  }
  if (m.isInit && g.noe > 0) {
    auto [dLo, dHi] = std::minmax_element(m.elemBathy, m.elemBathy + g.noe);
    out << "Depth:\t" << num(*dLo) << " to " << num(*dHi) << " m\n";
    out << "Layers:\t" << m.nol << " (0 at the bottom, " << m.nol - 1 << " at the surface), " << m.cells
        << " cells\n";
  }
  out << "Open boundaries:\t" << g.nBnd;
  for (int32_t b = 0; b < g.nBnd; ++b)
    out << (b ? ", " : " (") << "number " << g.bndId[b] << " with " << g.bndNoFaces[b] << " faces"
        << (b + 1 == g.nBnd ? ")" : "");
  out << "\n";
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

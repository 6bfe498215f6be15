// thal section: a 3-D item at one timestep along a polyline, cell by cell, as CSV or as a picture
// of the vertical section (distance along the line against depth) with a legend.
//
// The library does the work: sectionIntersections finds the elements that the line crosses,
// ise2VMesh makes the quadrilateral of every crossed cell, and readItemData reads the columns of
// the crossed elements in the order of those quadrilaterals.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

#include "interp/VDraw.h"
#include "thalCommands.h"
#include "thalImage.h"
#include "thalMap.h"
#include "thalResult.h"

namespace thTool {

namespace {

const char* sectionUsage =
    "thal section FILE --item NAME --line X1,Y1:X2,Y2[:...] --time T [--csv] [-o OUT.png] [--size WxH] "
    "[--range MIN:MAX] [--palette NAME]";

constexpr int32_t colourSteps = 256;
constexpr uint32_t seabedColour = 0xFFA89F8E;  // below the sea bed, as thal paint draws it
constexpr int defaultMapHeight = 400;          // the section's own proportions are far too flat

bool hasValue(double v) { return std::isfinite(v) && v != static_cast<double>(delVal); }

std::string num(double v, int digits) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.*g", digits, v);
  return buf;
}

// "X1,Y1:X2,Y2:..." into the polyline's points.
void parseLine(const std::string& text, std::vector<double>& x, std::vector<double>& y) {
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = std::min(text.find(':', start), text.size());
    double px, py;
    parsePoint(text.substr(start, end - start), px, py);
    x.push_back(px);
    y.push_back(py);
    start = end + 1;
  }
  if (x.size() < 2) throw ToolError("The line '" + text + "' needs at least two points: X1,Y1:X2,Y2.");
}

// The section as the library gives it, and the cells along it.
struct Section {
  std::vector<int32_t> ise;                  // element of each stretch, -1 outside the mesh
  std::vector<double> isd;                   // distance at the end of each stretch
  std::unique_ptr<thalmod::thMesh2D> cells;  // one quadrilateral per crossed cell
  std::vector<double> values;                // by quadrilateral
};

Section cutSection(thalmod::thResultFile& rf, int32_t item, int32_t ts, const std::string& lineText) {
  std::vector<double> x, y;
  parseLine(lineText, x, y);
  int32_t* rawE = nullptr;
  double* rawD = nullptr;
  int32_t k = 0;
  try {
    k = rf.mInfo.mesh2d.sectionIntersections(x.data(), y.data(), static_cast<int32_t>(x.size()), rawE, rawD);
  } catch (const VCppLib::VException& ex) {  // the library cannot join lines that meet on a face
    throw ToolError("A point of the line " + lineText +
                    " lies on the edge between two elements; move it a little into one of them (" + ex.message + ").");
  }
  std::unique_ptr<int32_t[]> e(rawE);
  std::unique_ptr<double[]> d(rawD);
  Section s;
  // A line through a node crosses the elements around it over no length: they are left out, so
  // that every cell drawn has a width.
  for (int32_t i = 0; i < k; ++i)
    if (d[i] > (s.isd.empty() ? 0.0 : s.isd.back())) {
      s.ise.push_back(e[i]);
      s.isd.push_back(d[i]);
    }
  std::vector<int32_t> wet;
  for (int32_t el : s.ise)
    if (el >= 0) wet.push_back(el);
  if (wet.empty())  // outside the mesh, or a line of no length
    throw ToolError("The line " + lineText + " runs through no part of the mesh of '" + rf.filename + "'.");
  s.cells.reset(rf.mInfo.ise2VMesh(s.ise.data(), s.isd.data(), static_cast<int32_t>(s.ise.size()), nullptr));
  double* raw = nullptr;
  int32_t n = 0;
  try {
    n = rf.readItemData(item, ts, wet.data(), static_cast<int32_t>(wet.size()), &raw);
  } catch (const VCppLib::VException& ex) {
    readFailed(rf, "item '" + rf.itemNameVec[item] + "' at timestep " + std::to_string(ts), ex.message);
  }
  std::unique_ptr<double[]> v(raw);
  if (n != s.cells->noe)
    throw ToolError("Cannot read item '" + rf.itemNameVec[item] + "' at timestep " + std::to_string(ts) + " of '" +
                    rf.filename + "'.");
  s.values.assign(v.get(), v.get() + n);
  return s;
}

// One line per crossed cell: stretch after stretch, each column from the surface down.
void writeCsv(const thalmod::thResultFile& rf, int32_t item, const Section& s) {
  const thalmod::thModelInfo& m = rf.mInfo;
  std::ostringstream out;
  out << "distance,element,layer,depth," << rf.itemNameVec[item] << "\n";
  size_t first = 0;  // the element's first quadrilateral, its bottom cell
  for (size_t c = 0; c < s.ise.size(); ++c) {
    const int32_t e = s.ise[c];
    if (e < 0) continue;
    const double mid = 0.5 * ((c == 0 ? 0.0 : s.isd[c - 1]) + s.isd[c]);  // the middle of the stretch
    for (int32_t l = m.nol - 1; l >= m.ebli[e]; --l) {
      const double v = s.values[first + l - m.ebli[e]];
      out << num(mid, 10) << "," << e << "," << l << "," << num(m.cellDepth[m.botlayerIdx[e] + l - m.ebli[e]], 7) << ","
          << (hasValue(v) ? num(v, 7) : "") << "\n";
    }
    first += m.nol - m.ebli[e];
  }
  std::cout << out.str();
}

void colourRange(const Args& args, const Section& s, const std::string& itemName, double& lo, double& hi) {
  if (args.has("--range")) {
    parseRange(args.required("--range"), lo, hi);
    return;
  }
  lo = INFINITY;
  hi = -INFINITY;
  for (double v : s.values)
    if (hasValue(v)) {
      lo = std::min(lo, v);
      hi = std::max(hi, v);
    }
  if (!(lo <= hi)) throw ToolError("Item '" + itemName + "' has no values along the line.");
  if (!(lo < hi)) {  // a uniform field still needs a scale
    lo -= 0.5;
    hi += 0.5;
  }
}

// Distance along the line to the right, height up; every pixel is one crossed cell's colour,
// the sea bed of the element under it, or land where the line runs outside the mesh.
Image paintSection(const thalmod::thModelInfo& m, const Section& s, int w, int h, const std::vector<int32_t>& colours,
                   double lo, double hi) {
  const thalmod::thMesh2D& g = *s.cells;
  MapFrame f;
  f.nx = w;
  f.ny = h;
  f.xmin = 0.0;
  f.xmax = s.isd.back();
  f.ymin = *std::min_element(g.nyCoor, g.nyCoor + g.non);
  f.ymax = *std::max_element(g.nyCoor, g.nyCoor + g.non);
  const std::vector<int32_t> owner = polygonsOnPixels(f, g.noe, g.nonpe, g.enxCoor, g.enyCoor);
  Image img(w, h + legendHeight, legendBackground);
  for (int32_t col = 0; col < w; ++col) {
    const size_t c =
        std::min<size_t>(std::upper_bound(s.isd.begin(), s.isd.end(), f.pixelX(col)) - s.isd.begin(), s.isd.size() - 1);
    const int32_t e = s.ise[c];
    for (int32_t row = 0; row < h; ++row) {
      const int32_t q = owner[static_cast<size_t>(row) * w + col];
      const bool water = e >= 0 && -f.pixelY(row) <= m.elemBathy[e];
      const bool value = water && q >= 0 && hasValue(s.values[q]);  // a cell, and not a deleted value
      const double t = value ? (s.values[q] - lo) / (hi - lo) * colourSteps : 0.0;
      img.at(col, row) =
          e < 0    ? landColour
          : !value ? seabedColour
                   : static_cast<uint32_t>(colours[static_cast<size_t>(std::clamp(t, 0.0, colourSteps - 1.0))]);
    }
  }
  drawLegend(img, colours, lo, hi);
  return img;
}

}  // namespace

int cmdSection(int argc, char** argv) {
  // --csv is the one option without a value: it is taken out before the others are parsed.
  std::vector<char*> words;
  bool csv = false;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--csv") == 0)
      csv = true;
    else
      words.push_back(argv[i]);
  }
  const Args args = Args::parse("section", static_cast<int>(words.size()), words.data(), 0,
                                {"--item", "--line", "--time", "-o", "--size", "--range", "--palette"});
  args.expectPositional(1, sectionUsage);
  if (!csv && !args.has("-o")) throw ToolError("'thal section' needs --csv or -o OUT.png.");
  auto rf = openResult(args.positional[0]);
  if (isTextTable(*rf))
    throw ToolError("'" + rf->filename + "' is a table without a mesh; a section needs a 3-D item of a result file.");
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string& name = rf->itemNameVec[item];
  const ItemKind kind = itemKind(*rf, item);
  if (kind != ItemKind::item3D)
    throw ToolError("Item '" + name + "' is a " + itemKindName(kind) + " item; a section needs a 3-D item.");
  const int32_t ts = parseTime(*rf, args.required("--time"));
  std::vector<int32_t> colours;
  if (args.has("-o")) {  // a wrong palette is told before the reading starts
    std::vector<int32_t> controls = paletteControls(args.get("--palette", "turbo"));
    std::unique_ptr<int32_t[]> ramp(
        VCppLib::VDraw::colourRamp(controls.data(), static_cast<int32_t>(controls.size()), colourSteps));
    colours.assign(ramp.get(), ramp.get() + colourSteps);
  }
  const Section s = cutSection(*rf, item, ts, args.required("--line"));
  if (csv) writeCsv(*rf, item, s);
  if (!args.has("-o")) return 0;
  int w = 0, h = 0;
  mapSize(args, w, h);
  if (h == 0) h = defaultMapHeight;
  double lo, hi;
  colourRange(args, s, name, lo, hi);
  const Image img = paintSection(rf->mInfo, s, w, h, colours, lo, hi);
  const std::string outPath = args.required("-o");
  writePng(outPath, img);
  // The message goes to standard error when the CSV holds standard output.
  (csv ? std::cerr : std::cout) << "Wrote " << outPath << " (" << img.width << "x" << img.height << " pixels): " << name
                                << ", section of " << num(s.isd.back(), 7) << " through " << s.cells->noe << " cells, "
                                << rf->mInfo.ts2StrDT(ts) << ", colours from " << legendNumber(lo) << " to "
                                << legendNumber(hi) << ".\n";
  return 0;
}

}  // namespace thTool

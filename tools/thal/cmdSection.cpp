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
#include <optional>
#include <sstream>
#include <vector>

#include "thalCommands.h"
#include "thalImage.h"
#include "thalMap.h"
#include "thalResult.h"

namespace thTool {

namespace {

const char* sectionUsage =
    "thal section FILE --item NAME --line X1,Y1:X2,Y2[:...] --time T [--csv] [-o OUT.png] [--size WxH] "
    "[--range MIN:MAX] [--palette NAME]";

constexpr uint32_t seabedColour = 0xFFA89F8E;  // below the sea bed, as thal paint draws it
constexpr int defaultMapHeight = 400;          // the section's own proportions are far too flat

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
  std::vector<int32_t> ise;                           // element of each stretch, -1 outside the mesh
  std::vector<double> isd;                            // distance at the end of each stretch
  std::unique_ptr<thWrapper::thMesh2DWrapper> cells;  // one quadrilateral per crossed cell
  std::vector<double> values;                         // by quadrilateral
};

Section cutSection(thResultFileWrapper& rf, int32_t item, int32_t ts, const std::string& lineText) {
  std::vector<double> x, y;
  parseLine(lineText, x, y);
  std::vector<int32_t> e;
  std::vector<double> d;
  try {
    rf.mInfo->mesh2d.sectionIntersections(x, y, e, d);
  } catch (const VCppLib::VException& ex) {  // the library cannot join lines that meet on a face
    throw ToolError("A point of the line " + lineText +
                    " lies on the edge between two elements; move it a little into one of them (" +
                    ex.message + ").");
  }
  Section s;
  // A line through a node crosses the elements around it over no length: they are left out, so
  // that every cell drawn has a width.
  for (size_t i = 0; i < e.size(); ++i)
    if (d[i] > (s.isd.empty() ? 0.0 : s.isd.back())) {
      s.ise.push_back(e[i]);
      s.isd.push_back(d[i]);
    }
  std::vector<int32_t> wet;
  for (int32_t el : s.ise)
    if (el >= 0) wet.push_back(el);
  if (wet.empty())  // outside the mesh, or a line of no length
    throw ToolError("The line " + lineText + " runs through no part of the mesh of '" + rf.filename() + "'.");
  s.cells = std::make_unique<thWrapper::thMesh2DWrapper>(rf.mInfo->ise2VMesh(s.ise, s.isd));
  const std::string what = "item '" + rf.items()[item] + "' at timestep " + std::to_string(ts);
  std::optional<std::vector<double>> v;
  try {
    v = rf.readItemData(item, ts, wet);
  } catch (const VCppLib::VException& ex) {
    readFailed(rf, what, ex.message);
  }
  if (!v || static_cast<int32_t>(v->size()) != s.cells->noe())
    throw ToolError("Cannot read " + what + " of '" + rf.filename() + "'.");
  s.values = std::move(*v);
  return s;
}

// One line per crossed cell: stretch after stretch, each column from the surface down.
void writeCsv(const thResultFileWrapper& rf, int32_t item, const Section& s) {
  const thWrapper::thModelInfoWrapper& m = *rf.mInfo;
  const std::vector<int32_t> ebli = m.ebli(), bottomCell = m.botlayerIdx();
  const std::vector<double> depth = m.cellDepth();
  const int32_t nol = m.nol();
  std::ostringstream out;
  out << "distance,element,layer,depth," << rf.items()[item] << "\n";
  size_t first = 0;  // the element's first quadrilateral, its bottom cell
  for (size_t c = 0; c < s.ise.size(); ++c) {
    const int32_t e = s.ise[c];
    if (e < 0) continue;
    const double mid = 0.5 * ((c == 0 ? 0.0 : s.isd[c - 1]) + s.isd[c]);  // the middle of the stretch
    for (int32_t l = nol - 1; l >= ebli[e]; --l) {
      const double v = s.values[first + l - ebli[e]];
      out << num(mid, 10) << "," << e << "," << l << "," << num(depth[bottomCell[e] + l - ebli[e]], 7) << ","
          << (hasValue(v) ? num(v, 7) : "") << "\n";
    }
    first += nol - ebli[e];
  }
  std::cout << out.str();
}

// Distance along the line to the right, height up; every pixel is one crossed cell's colour,
// the sea bed of the element under it, or land where the line runs outside the mesh.
Image paintSection(const thWrapper::thModelInfoWrapper& m, const Section& s, int w, int h,
                   const std::vector<int32_t>& colours, double lo, double hi) {
  const thWrapper::thMesh2DWrapper& g = *s.cells;
  const std::vector<double> ny = g.nyCoor(), ex = g.enxCoor(), ey = g.enyCoor(), bathy = m.elemBathy();
  const std::vector<int32_t> nonpe = g.nonpe();
  MapFrame f;
  f.nx = w;
  f.ny = h;
  f.xmin = 0.0;
  f.xmax = s.isd.back();
  f.ymin = *std::min_element(ny.begin(), ny.end());
  f.ymax = *std::max_element(ny.begin(), ny.end());
  const std::vector<int32_t> owner = polygonsOnPixels(f, g.noe(), nonpe.data(), ex.data(), ey.data());
  Image img(w, h + legendHeight, legendBackground);
  for (int32_t col = 0; col < w; ++col) {
    const size_t c = std::min<size_t>(
        std::upper_bound(s.isd.begin(), s.isd.end(), f.pixelX(col)) - s.isd.begin(), s.isd.size() - 1);
    const int32_t e = s.ise[c];
    for (int32_t row = 0; row < h; ++row) {
      const int32_t q = owner[static_cast<size_t>(row) * w + col];
      const bool water = e >= 0 && -f.pixelY(row) <= bathy[e];
      const bool value = water && q >= 0 && hasValue(s.values[q]);  // a cell, and not a deleted value
      const double t = value ? (s.values[q] - lo) / (hi - lo) * colourSteps : 0.0;
      img.at(col, row) =
          e < 0 ? landColour
          : !value
              ? seabedColour
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
    throw ToolError("'" + rf->filename() +
                    "' is a table without a mesh; a section needs a 3-D item of a result file.");
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string name = rf->items()[item];
  const ItemKind kind = itemKind(*rf, item);
  if (kind != ItemKind::item3D)
    throw ToolError("Item '" + name + "' is a " + itemKindName(kind) + " item; a section needs a 3-D item.");
  const int32_t ts = parseTime(*rf, args.required("--time"));
  std::vector<int32_t> colours;
  if (args.has("-o")) colours = colourTable(args.get("--palette", "turbo"));  // a wrong palette is told first
  const Section s = cutSection(*rf, item, ts, args.required("--line"));
  if (csv) writeCsv(*rf, item, s);
  if (!args.has("-o")) return 0;
  int w = 0, h = 0;
  mapSize(args, w, h);
  if (h == 0) h = defaultMapHeight;
  double lo, hi;
  colourRange(args, s.values, "Item '" + name + "' has no values along the line.", lo, hi);
  const Image img = paintSection(*rf->mInfo, s, w, h, colours, lo, hi);
  const std::string outPath = args.required("-o");
  writePng(outPath, img);
  // The message goes to standard error when the CSV holds standard output.
  (csv ? std::cerr : std::cout) << "Wrote " << outPath << " (" << img.width << "x" << img.height
                                << " pixels): " << name << ", section of " << num(s.isd.back(), 7)
                                << " through " << s.cells->noe() << " cells, " << rf->mInfo->ts2StrDT(ts)
                                << ", colours from " << legendNumber(lo) << " to " << legendNumber(hi)
                                << ".\n";
  return 0;
}

}  // namespace thTool

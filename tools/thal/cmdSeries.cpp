// thal series and thal profile: the values at one point of the mesh, or a column of a TEXT0D table,
// as CSV on standard output.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <vector>

#include "support/VDT.h"
#include "thalCommands.h"
#include "thalResult.h"

namespace thTool {

namespace {

// Values are float32 in the files: seven significant digits say all that they hold. A deleted
// value is an empty field.
std::string csvValue(double v) {
  if (v == static_cast<double>(delVal)) return "";
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.7g", v);
  return buf;
}

int32_t elementAt(thalmod::thResultFile& rf, const Args& args) {
  double x, y;
  parsePoint(args.required("--at"), x, y);
  return findElement(rf, x, y);
}

// A column of a TEXT0D table is a series of its own, each value with the time stamp of its line.
int tableSeries(thalmod::thResultFile& rf, int32_t item, const Args& args) {
  const std::string& name = rf.itemNameVec[item];
  if (rf.format != thalmod::TEXT0D)
    throw ToolError("'" + rf.filename + "' is a TEXT1D table of profiles; a series reads TEXT0D tables and result files.");
  if (args.has("--at") || args.has("--layer"))
    throw ToolError("'" + rf.filename + "' is a table of one point: leave out --at and --layer.");
  int64_t* rawTimes = nullptr;
  double* rawValues = nullptr;
  int32_t n = 0;
  try {
    n = rf.readTimeSeriesUET(item, &rawTimes, &rawValues, INT64_MIN, INT64_MAX, -1, 0.0, 0.0);
  } catch (const VCppLib::VException& e) {
    readFailed(rf, "column '" + name + "'", e.message);
  }
  std::unique_ptr<int64_t[]> times(rawTimes);
  std::unique_ptr<double[]> values(rawValues);
  std::ostringstream out;
  out << "datetime," << name << "\n";
  for (int32_t i = 0; i < n; ++i) out << VCppLib::VDT::longDT2StrDT(times[i]) << "," << csvValue(values[i]) << "\n";
  std::cout << out.str();
  return 0;
}

}  // namespace

int cmdSeries(const Args& args) {
  args.expectPositional(1, "thal series FILE --item NAME --at X,Y [--layer L]");
  auto rf = openResult(args.positional[0]);
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string& name = rf->itemNameVec[item];
  if (isTextTable(*rf)) return tableSeries(*rf, item, args);
  if (itemKind(*rf, item) == ItemKind::vector)
    throw ToolError("Item '" + name + "' is a plain vector, not a field on the mesh; a series needs a 3-D or 2-D item.");
  const int32_t steps = totalTimesteps(*rf);
  if (steps < 1) throw ToolError("'" + rf->filename + "' holds no timesteps.");
  const int32_t elem = elementAt(*rf, args);
  const int32_t layer = parseSeriesLayer(*rf, elem, args.get("--layer", "surface"));

  double* raw = nullptr;
  int32_t n = 0;
  try {
    n = rf->readTimeSeries(item, elem, layer, &raw, 0, steps);  // follows the "^" files
  } catch (const VCppLib::VException& e) {
    readFailed(*rf, "the series of item '" + name + "'", e.message);
  }
  std::unique_ptr<double[]> values(raw);
  std::ostringstream out;
  out << "datetime," << name << "\n";
  for (int32_t t = 0; t < n; ++t) out << rf->mInfo.ts2StrDT(t) << "," << csvValue(values[t]) << "\n";
  std::cout << out.str();
  return 0;
}

int cmdProfile(const Args& args) {
  args.expectPositional(1, "thal profile FILE --item NAME --at X,Y --time T");
  auto rf = openResult(args.positional[0]);
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string& name = rf->itemNameVec[item];
  const ItemKind kind = itemKind(*rf, item);
  if (isTextTable(*rf))
    throw ToolError("'" + rf->filename + "' is a table without a mesh; a profile needs a 3-D item of a result file.");
  if (kind != ItemKind::item3D)
    throw ToolError("Item '" + name + "' is a " + itemKindName(kind) + " item; a profile needs a 3-D item.");
  const int32_t ts = parseTime(*rf, args.required("--time"));
  const int32_t elem = elementAt(*rf, args);

  thalmod::thModelInfo& m = rf->mInfo;
  // A read that fails leaves the buffer as it was: NaN tells it apart from any value.
  std::vector<float> column(m.nol, std::numeric_limits<float>::quiet_NaN());
  try {
    rf->readProfile(item, ts, elem, column.data());
  } catch (const VCppLib::VException& e) {
    readFailed(*rf, "item '" + name + "' at timestep " + std::to_string(ts), e.message);
  }
  for (int32_t l = m.ebli[elem]; l < m.nol; ++l)
    if (std::isnan(column[l]))
      throw ToolError("Cannot read item '" + name + "' at timestep " + std::to_string(ts) + " of '" + rf->filename + "'.");
  std::ostringstream out;
  out << "datetime,layer,depth," << name << "\n";
  const std::string when = m.ts2StrDT(ts);
  for (int32_t l = m.nol - 1; l >= m.ebli[elem]; --l) {  // from the surface down
    double depth = m.cellDepth[m.botlayerIdx[elem] + l - m.ebli[elem]];
    out << when << "," << l << "," << csvValue(depth) << "," << csvValue(column[l]) << "\n";
  }
  std::cout << out.str();
  return 0;
}

}  // namespace thTool

// thal series and thal profile: the values at one point of the mesh, or a column of a TEXT0D table,
// as CSV on standard output.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
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

int32_t elementAt(thResultFileWrapper& rf, const Args& args) {
  double x, y;
  parsePoint(args.required("--at"), x, y);
  return findElement(rf, x, y);
}

// A column of a TEXT0D table is a series of its own, each value with the time stamp of its line.
int tableSeries(thResultFileWrapper& rf, int32_t item, const Args& args) {
  const std::string name = rf.items()[item];
  if (rf.format() != thalmod::TEXT0D)
    throw ToolError("'" + rf.filename() +
                    "' is a TEXT1D table of profiles; a series reads TEXT0D tables and result files.");
  if (args.has("--at") || args.has("--layer"))
    throw ToolError("'" + rf.filename() + "' is a table of one point: leave out --at and --layer.");
  std::vector<int64_t> times;
  std::vector<double> values;  // both stay empty when the table has no lines
  try {
    rf.readTimeSeriesUET(item, INT64_MIN, INT64_MAX, times, values, -1, 0.0, 0.0);
  } catch (const VCppLib::VException& e) {
    readFailed(rf, "column '" + name + "'", e.message);
  }
  std::ostringstream out;
  out << "datetime," << name << "\n";
  for (size_t i = 0; i < times.size(); ++i)
    out << VCppLib::VDT::longDT2StrDT(times[i]) << "," << csvValue(values[i]) << "\n";
  std::cout << out.str();
  return 0;
}

}  // namespace

int cmdSeries(const Args& args) {
  args.expectPositional(1, "thal series FILE --item NAME --at X,Y [--layer L]");
  auto rf = openResult(args.positional[0]);
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string name = rf->items()[item];
  if (isTextTable(*rf)) return tableSeries(*rf, item, args);
  if (itemKind(*rf, item) == ItemKind::vector)
    throw ToolError("Item '" + name +
                    "' is a plain vector, not a field on the mesh; a series needs a 3-D or 2-D item.");
  const int32_t steps = rf->totNoTimesteps();
  if (steps < 1) throw ToolError("'" + rf->filename() + "' holds no timesteps.");
  const int32_t elem = elementAt(*rf, args);
  const int32_t layer = parseSeriesLayer(*rf, elem, args.get("--layer", "surface"));

  std::optional<std::vector<double>> values;
  try {
    values = rf->readTimeSeries(item, elem, layer, 0, steps);  // follows the "^" files
  } catch (const VCppLib::VException& e) {
    readFailed(*rf, "the series of item '" + name + "'", e.message);
  }
  // A read that finds no values (a file without this item's data) gives the header line alone.
  const std::vector<double> series = values.value_or(std::vector<double>());
  std::ostringstream out;
  out << "datetime," << name << "\n";
  for (size_t t = 0; t < series.size(); ++t)
    out << rf->mInfo->ts2StrDT(static_cast<int32_t>(t)) << "," << csvValue(series[t]) << "\n";
  std::cout << out.str();
  return 0;
}

int cmdProfile(const Args& args) {
  args.expectPositional(1, "thal profile FILE --item NAME --at X,Y --time T");
  auto rf = openResult(args.positional[0]);
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string name = rf->items()[item];
  const ItemKind kind = itemKind(*rf, item);
  if (isTextTable(*rf))
    throw ToolError("'" + rf->filename() +
                    "' is a table without a mesh; a profile needs a 3-D item of a result file.");
  if (kind != ItemKind::item3D)
    throw ToolError("Item '" + name + "' is a " + itemKindName(kind) + " item; a profile needs a 3-D item.");
  const int32_t ts = parseTime(*rf, args.required("--time"));
  const int32_t elem = elementAt(*rf, args);

  // The facade's readProfile is unfinished (it always fails); the element's column comes as the
  // item's data of a list of one element instead, from its bottom cell up.
  const std::string what = "item '" + name + "' at timestep " + std::to_string(ts);
  const thWrapper::thModelInfoWrapper& m = *rf->mInfo;
  const int32_t nol = m.nol(), bottom = m.ebli()[elem];
  std::optional<std::vector<double>> column;
  try {
    column = rf->readItemData(item, ts, std::vector<int32_t>{elem});
  } catch (const VCppLib::VException& e) {
    readFailed(*rf, what, e.message);
  }
  if (!column || static_cast<int32_t>(column->size()) != nol - bottom)
    throw ToolError("Cannot read " + what + " of '" + rf->filename() + "'.");
  const std::vector<double> depth = m.cellDepth();
  const int32_t bottomCell = m.botlayerIdx()[elem];
  std::ostringstream out;
  out << "datetime,layer,depth," << name << "\n";
  const std::string when = m.ts2StrDT(ts);
  for (int32_t l = nol - 1; l >= bottom; --l)  // from the surface down
    out << when << "," << l << "," << csvValue(depth[bottomCell + l - bottom]) << ","
        << csvValue((*column)[l - bottom]) << "\n";
  std::cout << out.str();
  return 0;
}

}  // namespace thTool

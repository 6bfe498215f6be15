// VNetCdf: interpretation of common file layouts: a GDAL-style band grid, CF-like time variables
// ("<unit> since <reference date-time>") and regular grids from 1-D coordinate variables.
//
// A time variable holds numbers of minutes, hours or seconds after a reference date-time; they
// come back as long date-times, seconds since 1970-01-01 00:00:00. A grid's origin is the first
// coordinate of each axis and its spacing the difference of the first two.

#include <netcdf.h>

#include <cmath>
#include <memory>
#include <stdexcept>

#include "netcdf/VNetCdf.h"
#include "support/VDT.h"
#include "support/VStr.h"

namespace VCppLib {

namespace {

// The reference of a CF time unit may be written without leading zeros in month and day
// ("1970-1-1 00:00:00"); they are put in so that the special references compare exactly.
// A text too short to hold the month or the day raises the string library's own error.
std::string normaliseReference(std::string ref) {
  if (ref.size() < 6) throw std::out_of_range("invalid string position");
  if (ref.compare(6, 1, "-") == 0) ref.insert(ref.begin() + 5, '0');
  if (ref.size() < 9) throw std::out_of_range("invalid string position");
  if (ref.compare(9, 1, " ") == 0) ref.insert(ref.begin() + 8, '0');
  return ref;
}

}  // namespace

bool VNetCdf::isBandGrid() {
  return getDimId("x") >= 0 && getDimId("y") >= 0 && getVarId("Band1") >= 0 &&
         getVarId("transverse_mercator") >= 0;
}

std::vector<int64_t> VNetCdf::getTimeVarValues(int32_t timeVar, std::string units) {
  if (timeVar < 0) {
    timeVar = findRecordVar("units");
    if (timeVar < 0) throw VException("Could not find time var in " + fileName);
  }
  checkVarId(timeVar, "getTimeVarValues");
  if (varNdims[timeVar] != 1)
    throw VException("'" + varNames[timeVar] + "' variable has more than one dimension in " + fileName);
  if (units.empty()) units = getAttStr("units", timeVar);
  if (units.empty()) throw VException("Could not find 'units' attribute of time var in " + fileName);

  size_t since = units.find("since ");
  if (since == std::string::npos) throw VException("Could not parse time unit in netcdf file.");
  std::string ref = units.substr(since + 6);

  std::string lower = VStr::toLower(units);
  double factor;
  if (VStr::startsWith(lower, "minute"))
    factor = 60.0;
  else if (VStr::startsWith(lower, "hour"))
    factor = 3600.0;
  else if (VStr::startsWith(lower, "second") || VStr::startsWith(lower, "secs"))
    factor = 1.0;
  else
    throw VException("Unsupported time unit in " + fileName);  // days included

  ref = normaliseReference(ref);

  const int64_t n = trueVarLen(timeVar, false, "getTimeVarValues");
  std::vector<double> values(static_cast<size_t>(n > 0 ? n : 1), 0.0);
  size_t start[1] = {0};
  size_t count[1] = {static_cast<size_t>(n)};
  double* data = values.data();
  getDataIntoGivenType<double>(timeVar, data, start, count);

  int64_t base;
  if (ref == "1900-01-01 00:00:00")
    base = -2208988800LL;  // the date-time arithmetic is a day low for 1900: keep the true value
  else if (ref == "1970-01-01 00:00:00")
    base = 0;
  else
    base = VDT::strDT2longDT(ref);

  std::vector<int64_t> result;
  result.reserve(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) {
    double t = factor * values[i] + static_cast<double>(base);
    // 2^63 as a double: anything not below it (or NaN, a fill value) has no long date-time
    if (!(std::fabs(t) < 9223372036854775808.0))
      throw VException("Value " + VStr::toString<double>(values[i]) + " at position " +
                       VStr::toString<int64_t>(i) + " of time variable '" + varNames[timeVar] + "' in " +
                       fileName + " is not a valid time.");
    result.push_back(static_cast<int64_t>(t));  // truncates toward zero
  }
  return result;
}

VCartGrid VNetCdf::getGrid(int32_t xVar, int32_t yVar, int32_t zVar) {
  checkVarId(xVar, "getGrid");
  checkVarId(yVar, "getGrid");
  if (varNdims[xVar] != 1 || varNdims[yVar] != 1)
    throw VException("Invalid number of dimenstions for given x or y variable");
  VCartGrid grid;
  grid.nx = getVarLen(xVar, false);
  grid.ny = getVarLen(yVar, false);
  // the spacing is the difference of the first two coordinates: one point has no spacing
  for (int32_t v : {xVar, yVar}) {
    int64_t len = trueVarLen(v, false, "getGrid");
    if (len < 2)
      throw VException("VNetCdf::getGrid: coordinate variable '" + varNames[v] + "' in '" + fileName +
                       "' has fewer than two points.");
    if (len != (v == xVar ? grid.nx : grid.ny))
      throw VException("VNetCdf::getGrid: coordinate variable '" + varNames[v] + "' in '" + fileName +
                       "' has not the length that the file's header gives.");
    checkVarFitsFile(v, "getGrid");  // before the axes are allocated at their declared lengths
  }
  std::vector<double> x(static_cast<size_t>(grid.nx)), y(static_cast<size_t>(grid.ny));
  double* px = x.data();
  double* py = y.data();
  getAllDataIntoGivenType<double>(xVar, px);
  getAllDataIntoGivenType<double>(yVar, py);
  grid.x0 = x[0];
  grid.y0 = y[0];
  grid.dx = x[1] - x[0];
  grid.dy = y[1] - y[0];
  if (zVar < 0) return grid;  // the caller allocates and reads the data

  checkVarId(zVar, "getGrid");
  if (varNdims[zVar] != 1) throw VException("Invalid number of dimenstions for given z variable");
  int64_t nz = trueVarLen(zVar, false, "getGrid");
  checkVarFitsFile(zVar, "getGrid");
  grid.nz = getVarLen(zVar, false);
  if (nz != grid.nz)
    throw VException("VNetCdf::getGrid: the z variable '" + varNames[zVar] + "' in '" + fileName +
                     "' has not the length that the file's header gives.");
  std::unique_ptr<double[]> z(new double[nz > 0 ? nz : 1]());
  double* pz = z.get();
  getAllDataIntoGivenType<double>(zVar, pz);
  grid.z = z.release();  // the grid carries it; whoever uses the grid frees it
  return grid;
}

}  // namespace VCppLib

#include "thalResult.h"

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "support/VDT.h"
#include "thalArgs.h"

namespace thTool {

using thalmod::thResultFile;

void checkReadable(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) {
    if (errno == ENOENT) throw ToolError("No such file: '" + path + "'.");
    throw ToolError("Cannot read '" + path + "': " + std::strerror(errno) + ".");
  }
  if (S_ISDIR(st.st_mode)) throw ToolError("'" + path + "' is a folder, not a file.");
  FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) throw ToolError("Cannot read '" + path + "': " + std::strerror(errno) + ".");
  std::fclose(f);
}

std::unique_ptr<thResultFileWrapper> openResult(const std::string& path) {
  checkReadable(path);
  auto rf = std::make_unique<thResultFileWrapper>();
  try {
    rf->filename(path);  // finds the format
    if (rf->format() >= 0) rf->readHeader();
  } catch (const VCppLib::VException& e) {
    throw ToolError("Cannot read the result file '" + path + "': " + e.message);
  }
  if (rf->format() < 0) throw ToolError("Cannot read the result file '" + path + "'.");
  return rf;
}

std::unique_ptr<thResultFile> openNativeResult(const std::string& path) {
  checkReadable(path);
  std::unique_ptr<thResultFile> rf;
  try {
    rf = std::make_unique<thResultFile>(path, -1);  // finds the format and reads the header
  } catch (const VCppLib::VException& e) {
    throw ToolError("Cannot read the result file '" + path + "': " + e.message);
  }
  if (rf->format < 0) throw ToolError("Cannot read the result file '" + path + "'.");
  return rf;
}

bool isTextTable(const thResultFileWrapper& rf) {
  return rf.format() == thalmod::TEXT0D || rf.format() == thalmod::TEXT1D;
}

ItemKind itemKind(const thResultFileWrapper& rf, int32_t itemNo) {
  if (isTextTable(rf)) return ItemKind::column;
  const int32_t len = rf.itemLengths()[itemNo];
  if (len == rf.mInfo->cells()) return ItemKind::item3D;
  if (len == rf.mInfo->mesh2d.noe()) return ItemKind::item2D;
  return ItemKind::vector;
}

std::string itemKindName(ItemKind k) {
  switch (k) {
    case ItemKind::item3D: return "3-D";
    case ItemKind::item2D: return "2-D";
    case ItemKind::column: return "table column";
    default: return "vector";
  }
}

int32_t findItem(const thResultFileWrapper& rf, const std::string& name) {
  const std::vector<std::string> items = rf.items();
  for (size_t i = 0; i < items.size(); ++i)
    if (items[i] == name) return static_cast<int32_t>(i);
  std::string list;
  for (const std::string& n : items) list += (list.empty() ? "" : ", ") + n;
  if (list.empty()) throw ToolError("No item '" + name + "' in '" + rf.filename() + "': it holds no items.");
  throw ToolError("No item '" + name + "' in '" + rf.filename() + "'; the items are " + list + ".");
}

std::string timeAxisText(int32_t n, const std::string& first, const std::string& last) {
  if (n < 1) return "no timesteps";
  if (n == 1) return "1 timestep at " + first;
  return std::to_string(n) + " timesteps from " + first + " to " + last;
}

std::string timeAxisText(thResultFileWrapper& rf) {
  const int32_t n = rf.totNoTimesteps();
  return timeAxisText(n, rf.mInfo->ts2StrDT(0), rf.mInfo->ts2StrDT(n - 1));
}

namespace {

[[noreturn]] void readFailed(const std::string& filename, int32_t format, const std::string& what,
                             const std::string& why) {
  const auto f = static_cast<thalmod::fileFmtEnum>(format);
  const std::string formatText = format >= 0 ? " (" + thalmod::fileFmtEnum2str(f) + ")" : "";
  throw ToolError("Cannot read " + what + " of '" + filename + "'" + formatText + ": " + why);
}

}  // namespace

void readFailed(const thResultFileWrapper& rf, const std::string& what, const std::string& why) {
  readFailed(rf.filename(), rf.format(), what, why);
}

void readFailed(const thResultFile& rf, const std::string& what, const std::string& why) {
  readFailed(rf.filename, rf.format, what, why);
}

namespace {

bool isWholeNumber(const std::string& s) {
  size_t i = (!s.empty() && s[0] == '-') ? 1 : 0;
  if (i >= s.size()) return false;
  for (; i < s.size(); ++i)
    if (!std::isdigit(static_cast<unsigned char>(s[i]))) return false;
  return true;
}

// The timestep of 0..n-1 nearest to a date-time, a tie going to the later one, for runs that go on
// in "^" files: their timesteps lie beyond what findTimestep knows, so the search runs on ts2DT.
int32_t nearestTimestep(const thWrapper::thModelInfoWrapper& m, int64_t when, int32_t n) {
  int32_t lo = 0, hi = n - 1;  // the first timestep at or after `when`
  while (lo < hi) {
    int32_t mid = lo + (hi - lo) / 2;
    if (m.ts2DT(mid) < when)
      lo = mid + 1;
    else
      hi = mid;
  }
  if (lo > 0 && when - m.ts2DT(lo - 1) < m.ts2DT(lo) - when) --lo;
  return lo;
}

}  // namespace

int32_t parseTime(thResultFileWrapper& rf, const std::string& text) {
  const thWrapper::thModelInfoWrapper& m = *rf.mInfo;
  const int32_t n = rf.totNoTimesteps();
  if (n < 1) throw ToolError("'" + rf.filename() + "' holds no timesteps.");
  if (isWholeNumber(text)) {
    int32_t ts = parseInt(text, "timestep");
    if (ts < 0 || ts >= n)
      throw ToolError("Timestep " + text + " is out of range: '" + rf.filename() + "' has timesteps 0 to " +
                      std::to_string(n - 1) + ".");
    return ts;
  }
  if (!VCppLib::VDT::isDateTimeStr(text))
    throw ToolError("The time '" + text +
                    "' is neither a timestep number nor a date-time YYYY-MM-DD HH:MM:SS.");
  int64_t when = VCppLib::VDT::strDT2longDT(text);
  if (when < m.ts2DT(0) || when > m.ts2DT(n - 1))
    throw ToolError("The time " + text + " lies outside the run in '" + rf.filename() + "', " +
                    timeAxisText(rf) + ".");
  return n == m.nt() ? m.findTimestep(when, 0) : nearestTimestep(m, when, n);  // the nearest timestep
}

int32_t parsePaintLayer(const thResultFileWrapper& rf, const std::string& text) {
  const int32_t nol = rf.mInfo->nol();
  if (text == "bottom") return -1;
  if (text == "top") return 999;
  if (text == "surface") return nol - 1;
  int32_t layer = parseInt(text, "layer");
  if (layer == -1 || layer == 999 || (layer >= 0 && layer < nol)) return layer;
  throw ToolError("Layer " + text + " is out of range: '" + rf.filename() + "' has layers 0 (bottom) to " +
                  std::to_string(nol - 1) +
                  " (surface); -1 is each element's bottom cell and 999 its top cell.");
}

int32_t parseSeriesLayer(const thResultFileWrapper& rf, int32_t elem, const std::string& text) {
  const int32_t bottom = rf.mInfo->ebli()[elem], nol = rf.mInfo->nol();
  if (text == "bottom" || text == "-1") return bottom;
  if (text == "surface" || text == "top" || text == "999") return nol - 1;
  int32_t layer = parseInt(text, "layer");
  if (layer < bottom || layer >= nol)
    throw ToolError("Layer " + text + " is out of range: element " + std::to_string(elem) + " of '" +
                    rf.filename() + "' has layers " + std::to_string(bottom) + " (bottom) to " +
                    std::to_string(nol - 1) + " (surface).");
  return layer;
}

int32_t findElement(thResultFileWrapper& rf, double x, double y) {
  const int32_t e = rf.mInfo->mesh2d.pointElem(x, y);
  if (e < 0) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "The point (%.10g, %.10g) lies outside the mesh of '", x, y);
    throw ToolError(buf + rf.filename() + "'.");
  }
  return e;
}

}  // namespace thTool

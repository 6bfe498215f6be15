#include "thalResult.h"

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "support/VDT.h"
#include "support/VFiles.h"
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

std::unique_ptr<thResultFile> openResult(const std::string& path) {
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

bool isTextTable(const thResultFile& rf) { return rf.format == thalmod::TEXT0D || rf.format == thalmod::TEXT1D; }

int32_t totalTimesteps(thResultFile& rf) {
  if (rf.format != thalmod::EMB && rf.format != thalmod::RESTART && rf.format != thalmod::DECOUPLED)
    return rf.mInfo.nt;
  // Most runs are one physical file: getTotNoTimesteps would read that file's header a second
  // time to learn what is known already.
  rf.fileNo = 1;
  const bool more = VCppLib::fileExists(rf.getFileName());
  rf.fileNo = 0;
  return more ? rf.getTotNoTimesteps() : rf.mInfo.nt;
}

ItemKind itemKind(const thResultFile& rf, int32_t itemNo) {
  if (isTextTable(rf)) return ItemKind::column;
  int32_t len = rf.itemLengthVec[itemNo];
  if (len == rf.mInfo.cells) return ItemKind::item3D;
  if (len == rf.mInfo.mesh2d.noe) return ItemKind::item2D;
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

int32_t findItem(const thResultFile& rf, const std::string& name) {
  for (size_t i = 0; i < rf.itemNameVec.size(); ++i)
    if (rf.itemNameVec[i] == name) return static_cast<int32_t>(i);
  std::string list;
  for (const std::string& n : rf.itemNameVec) list += (list.empty() ? "" : ", ") + n;
  if (list.empty()) throw ToolError("No item '" + name + "' in '" + rf.filename + "': it holds no items.");
  throw ToolError("No item '" + name + "' in '" + rf.filename + "'; the items are " + list + ".");
}

std::string timeAxisText(thResultFile& rf) {
  const thalmod::thModelInfo& m = rf.mInfo;
  const int32_t n = totalTimesteps(rf);
  if (n < 1) return "no timesteps";
  if (n == 1) return "1 timestep at " + m.ts2StrDT(0);
  return std::to_string(n) + " timesteps from " + m.ts2StrDT(0) + " to " + m.ts2StrDT(n - 1);
}

void readFailed(const thResultFile& rf, const std::string& what, const std::string& why) {
  const auto f = static_cast<thalmod::fileFmtEnum>(rf.format);
  const std::string format = rf.format >= 0 ? " (" + thalmod::fileFmtEnum2str(f) + ")" : "";
  throw ToolError("Cannot read " + what + " of '" + rf.filename + "'" + format + ": " + why);
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
int32_t nearestTimestep(const thalmod::thModelInfo& m, int64_t when, int32_t n) {
  int32_t lo = 0, hi = n - 1;  // the first timestep at or after `when`
  while (lo < hi) {
    int32_t mid = lo + (hi - lo) / 2;
    if (m.ts2DT(mid) < when) lo = mid + 1;
    else hi = mid;
  }
  if (lo > 0 && when - m.ts2DT(lo - 1) < m.ts2DT(lo) - when) --lo;
  return lo;
}

}  // namespace

int32_t parseTime(thResultFile& rf, const std::string& text) {
  const thalmod::thModelInfo& m = rf.mInfo;
  const int32_t n = totalTimesteps(rf);
  if (n < 1) throw ToolError("'" + rf.filename + "' holds no timesteps.");
  if (isWholeNumber(text)) {
    int32_t ts = parseInt(text, "timestep");
    if (ts < 0 || ts >= n)
      throw ToolError("Timestep " + text + " is out of range: '" + rf.filename + "' has timesteps 0 to " +
                      std::to_string(n - 1) + ".");
    return ts;
  }
  if (!VCppLib::VDT::isDateTimeStr(text))
    throw ToolError("The time '" + text + "' is neither a timestep number nor a date-time YYYY-MM-DD HH:MM:SS.");
  int64_t when = VCppLib::VDT::strDT2longDT(text);
  if (when < m.ts2DT(0) || when > m.ts2DT(n - 1))
    throw ToolError("The time " + text + " lies outside the run in '" + rf.filename + "', " +
                    timeAxisText(rf) + ".");
  return n == m.nt ? m.findTimestep(when, 0) : nearestTimestep(m, when, n);  // the nearest timestep
}

int32_t parsePaintLayer(const thResultFile& rf, const std::string& text) {
  int32_t nol = rf.mInfo.nol;
  if (text == "bottom") return -1;
  if (text == "top") return 999;
  if (text == "surface") return nol - 1;
  int32_t layer = parseInt(text, "layer");
  if (layer == -1 || layer == 999 || (layer >= 0 && layer < nol)) return layer;
  throw ToolError("Layer " + text + " is out of range: '" + rf.filename + "' has layers 0 (bottom) to " +
                  std::to_string(nol - 1) + " (surface); -1 is each element's bottom cell and 999 its top cell.");
}

int32_t parseSeriesLayer(const thResultFile& rf, int32_t elem, const std::string& text) {
  const thalmod::thModelInfo& m = rf.mInfo;
  int32_t bottom = m.ebli[elem];
  if (text == "bottom" || text == "-1") return bottom;
  if (text == "surface" || text == "top" || text == "999") return m.nol - 1;
  int32_t layer = parseInt(text, "layer");
  if (layer < bottom || layer >= m.nol)
    throw ToolError("Layer " + text + " is out of range: element " + std::to_string(elem) + " of '" +
                    rf.filename + "' has layers " + std::to_string(bottom) + " (bottom) to " +
                    std::to_string(m.nol - 1) + " (surface).");
  return layer;
}

int32_t findElement(thResultFile& rf, double x, double y) {
  int32_t e = rf.mInfo.mesh2d.pointElem(x, y);
  if (e < 0) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "The point (%.10g, %.10g) lies outside the mesh of '", x, y);
    throw ToolError(buf + rf.filename + "'.");
  }
  return e;
}

}  // namespace thTool

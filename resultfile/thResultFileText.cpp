// Text forms of result files: EMT and EMF are written by the model for inspection and are never
// read back; TEXT0D and TEXT1D are tables from measurements or other programs, read only.
//
// Line layouts (<TAB> a tab, lines end with "\n"; the tables may have "\r\n"):
//   TEXT0D  one line per time: date-time<TAB>value,value<TAB>value ... ; the date-time ends at a
//           tab only, the values at a tab or a comma, an empty value is missing (delVal). The first
//           line may be a header: a first column, then the item names.
//   TEXT1D  as TEXT0D, but a block of consecutive lines with an equal date-time, one per depth.
//   EMT     eight header lines ("ModelType: ", "StartDT: ", "Timestep: ", "No. timesteps: ",
//           "No. items: ", "Item names: " a,b,c, "No. Layers: ", "Data: "), then one line per item
//           and timestep: t=00000,i=00<sep>v<sep>v<sep>... with 4 significant digits a value. The
//           timestep count starts at -1 ("t=000-1").
//   EMF     "DateTime           CellNo" and the item names in columns of colWidth, then one line
//           per cell and timestep: YYYY-MM-DD HH:MM:SS, the cell right-aligned in 6, and each item's
//           value in colWidth (fixed with colWidth-10 decimals, scientific when that does not fit
//           or hides a value that is not 0).

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "resultfile/thResultFile.h"
#include "support/VDT.h"
#include "support/VFiles.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;
namespace VDT = VCppLib::VDT;

namespace {

using VCppLib::str;

// printf formatting into a string of any length.
std::string printfStr(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string printfStr(const char* fmt, ...) {
  char buf[64];
  va_list ap;
  va_start(ap, fmt);
  int n = std::vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  if (n < 0) return "";
  if (n < static_cast<int>(sizeof buf)) return std::string(buf, n);
  std::string s(n, '\0');
  va_start(ap, fmt);
  std::vsnprintf(s.data(), n + 1, fmt, ap);
  va_end(ap);
  return s;
}

std::string stripCR(std::string s) {
  if (!s.empty() && s.back() == '\r') s.pop_back();
  return s;
}

// Lines of a text table from a byte position on, with the position of the line that follows.
struct lineReader {
  std::ifstream in;
  int64_t pos;

  lineReader(const std::string& file, int64_t from) : in(file, std::ios::binary), pos(from) {
    in.seekg(from);
  }

  // The next line that is not a lone carriage return; false at the end of the file.
  bool next(std::string& line) {
    for (;;) {
      if (!std::getline(in, line)) return false;
      pos += static_cast<int64_t>(line.size()) + (in.eof() ? 0 : 1);
      if (line != "\r") return true;
    }
  }
};

// Where the date-time of a table line ends.
size_t firstTab(const std::string& line, const std::string& file) {
  size_t tab = line.find('\t');
  if (tab == std::string::npos) throw VException("Invalid line in file " + file);
  return tab;
}

// The fields of a block line behind its date-time; an empty field is a missing value.
std::vector<std::string> blockFields(const std::string& line) {
  return VStr::tokenize(stripCR(line.substr(line.find('\t') + 1)), "\t,");
}

// Fields of the first line make the rows, lines the columns; both live in one block so that
// freeTimestepDataText needs no counts. A line with more fields than the first has its extra
// fields ignored; one with fewer leaves missing values.
double** blockMatrix(const std::vector<std::string>& lines, const std::string& file) {
  size_t rows = blockFields(lines[0]).size(), cols = lines.size();
  std::unique_ptr<double*[]> m;
  std::unique_ptr<double[]> values;
  try {
    // a count that wraps around would make a block too small for what is written into it
    if (rows > std::numeric_limits<size_t>::max() / sizeof(double) / cols) throw std::bad_alloc();
    m.reset(new double*[rows]);
    values.reset(new double[rows * cols]);
  } catch (const std::bad_alloc&) {
    throw VException("thResultFile::readNextTimestep: a block of " + str(cols) + " lines of " + str(rows) +
                     " fields in file " + file + " is too large to hold.");
  }
  std::fill(values.get(), values.get() + rows * cols, static_cast<double>(delVal));
  for (size_t f = 0; f < rows; ++f) m[f] = values.get() + f * cols;
  for (size_t l = 0; l < cols; ++l) {
    std::vector<std::string> fields = blockFields(lines[l]);
    for (size_t f = 0; f < fields.size() && f < rows; ++f)
      if (!fields[f].empty()) m[f][l] = std::atof(fields[f].c_str());
  }
  values.release();
  return m.release();
}

// A value of an EMF column.
std::string emfValue(float v, int32_t width) {
  int decimals = width > 10 ? width - 10 : 0;
  std::string s = printfStr("%*.*f", width, decimals, static_cast<double>(v));
  if (s.empty() || s[0] != ' ' || (v != 0 && std::atof(s.c_str()) == 0))
    s = printfStr("%*.*e", width, decimals, static_cast<double>(v));
  return s;
}

}  // namespace

// ---------------------------------------------------------------- TEXT0D and TEXT1D

void thResultFile::readHeaderText() {
  std::string line;
  {
    std::ifstream in(filename, std::ios::binary);
    std::getline(in, line);
    textPos = static_cast<int64_t>(line.size()) + (in.eof() ? 0 : 1);
  }
  line = stripCR(line);
  // A first line with a field that is no number names the items; blanks count as separators here,
  // so a time stamp with a blank makes the line a header.
  std::vector<std::string> tok = VStr::tokenize(line, "\t, ");
  bool header = false;
  for (size_t i = 1; i < tok.size(); ++i)
    if (!VStr::isNumber(tok[i])) header = true;
  if (!header) textPos = 0;
  int32_t len = format == TEXT1D ? mInfo.nol : 1;
  for (size_t i = 1; i < tok.size(); ++i) addItem(header ? tok[i] : "Itm" + VStr::toString<size_t>(i), len);
}

int64_t thResultFile::readNextTimestepText(double*** data, int32_t* noLines) {
  lineReader r(filename, textPos);
  if (!r.in.is_open()) throw VException("thResultFile::readNextTimestep: cannot open file " + filename + ".");
  std::string line;
  if (!r.next(line)) {
    ++curTimestep;
    return 2147483647;
  }
  std::string stamp = line.substr(0, firstTab(line, filename));
  // The block: the lines that begin with the first line's date-time. textPos ends at the line
  // that ends the block, which the next call reads again.
  std::vector<std::string> lines;
  for (;;) {
    lines.push_back(line);
    textPos = r.pos;
    if (!r.next(line)) break;
    firstTab(line, filename);
    if (line.compare(0, stamp.size(), stamp) != 0) break;
  }
  std::unique_ptr<double*[]> rows(blockMatrix(lines, filename));
  std::unique_ptr<double[]> values(rows[0]);
  ++curTimestep;
  int64_t t = VDT::strDT2longDT(stamp);  // a bad date-time leaves the caller's pointers alone
  values.release();
  *data = rows.release();
  *noLines = static_cast<int32_t>(lines.size());
  return t;
}

void thResultFile::freeTimestepDataText(double** data) {
  if (!data) return;
  delete[] data[0];
  delete[] data;
}

int32_t thResultFile::readTimeSeriesUETText(int32_t itemNo, int64_t** dt, double** d, int64_t SDT,
                                            int64_t EDT, int32_t filterItem, double filterMin,
                                            double filterMax) {
  // Field itemNo + 1 holds the item; below -1 there is no such field at all.
  if (itemNo < -1)
    throw VException("thResultFile::readTimeSeriesUET: item number " + str(itemNo) +
                     " is out of range for file " + filename + ".");
  const size_t col = static_cast<size_t>(itemNo + 1);
  std::vector<int64_t> times;
  std::vector<double> values;
  for (const std::string& raw : VStr::tokenize(VCppLib::readFileToString(filename), "\n")) {
    std::string line = stripCR(raw);
    if (line.empty()) continue;
    // Lines too short for the item or the filter are dropped, as is the header line.
    std::vector<std::string> f = VStr::tokenize(line, "\t,");
    if (col >= f.size() || !VStr::isNumber(f[col])) continue;
    int64_t t = VDT::strDT2longDT(f[0]);
    if (t < SDT || t > EDT) continue;
    if (filterItem >= 0) {
      size_t fc = static_cast<size_t>(filterItem) + 1;
      if (fc >= f.size() || !VStr::isNumber(f[fc])) continue;
      double fv = std::atof(f[fc].c_str());
      if (fv < filterMin || fv > filterMax) continue;
    }
    times.push_back(t);
    values.push_back(std::atof(f[col].c_str()));
  }
  *dt = new int64_t[times.size()];
  *d = new double[values.size()];
  std::copy(times.begin(), times.end(), *dt);
  std::copy(values.begin(), values.end(), *d);
  return static_cast<int32_t>(times.size());
}

// ---------------------------------------------------------------- EMT and EMF

void thResultFile::writeHeaderText() {
  std::string text;
  if (format == EMT) {
    writeTimestep = -1;  // the first timestep's lines read "t=000-1"
    text = "ModelType: " + modelTypeEnum2str(static_cast<modelTypeEnum>(mInfo.modelType)) + "\n" +
           "StartDT: " + VDT::longDT2StrDT(mInfo.startDT) + "\n" +
           "Timestep: " + VStr::toString<double>(mInfo.dt) + "\n" + "No. timesteps: " + str(mInfo.nt) + "\n" +
           "No. items: " + str(static_cast<int64_t>(itemNameVec.size())) + "\n" +
           "Item names: " + VStr::joinStrings(itemNameVec, ",") + "\n" + "No. Layers: " + str(mInfo.nol) +
           "\n" + "Data: \n";
  } else {
    if (colWidth < 10)
      throw VException("thResultFile::writeHeader: the column width " + str(colWidth) + " of '" +
                       getFileName() + "' leaves no room for a value; it must be 10 or more.");
    delete[] cellText;
    cellTextLen = mInfo.cells > 0 ? mInfo.cells : 0;
    cellText = new std::string[cellTextLen];
    text = "DateTime           CellNo";
    for (const std::string& name : itemNameVec) text += VStr::padLeft(name.substr(0, colWidth), colWidth);
    text += "\n";
  }
  textBufLen = 0;  // what was left from an earlier file does not belong to this one
  VCppLib::writeTextFile(getFileName(), text);
}

void thResultFile::writeItemDataText(float* data, int32_t n) {
  int32_t noItems = static_cast<int32_t>(itemNameVec.size());
  if (format == EMT) {
    if (writeItem >= noItems) {
      writeItem = 0;
      ++writeTimestep;
    }
    std::string line = "t=" + VStr::toString<int>(writeTimestep, -1, 5) +
                       ",i=" + VStr::toString<int>(writeItem, -1, 2) + sep;
    for (int32_t i = 0; i < n; ++i) line += printfStr("%.4g", static_cast<double>(data[i])) + sep;
    appendText(line + "\n");
    ++writeItem;
    return;
  }
  if (!cellText)
    throw VException("thResultFile::writeItemData: the file '" + getFileName() +
                     "' is not open for writing; call writeHeader first.");
  if (n > cellTextLen)
    throw VException("thResultFile::writeItemData: " + str(n) + " values are more than the " +
                     str(cellTextLen) + " cells of '" + getFileName() + "'.");
  for (int32_t i = 0; i < n; ++i) cellText[i] += emfValue(data[i], colWidth);
  if (writeItem < noItems - 1) {
    ++writeItem;
    return;
  }
  // the last item of the timestep completes the rows of its cells
  std::string when = VDT::longDT2StrDT(static_cast<int64_t>(writeTimestep * mInfo.dt) + mInfo.startDT);
  for (int32_t i = 0; i < n; ++i) {
    appendText(when + printfStr("%6d", i) + cellText[i] + "\n");
    cellText[i].clear();
  }
  writeItem = 0;
  ++writeTimestep;
}

// The text formats have no count to patch: closing is writing out what waits in textBuf, and
// serves as the flush of appendText.
void thResultFile::closeFileText(int32_t) {
  VCppLib::writeTextFile(getFileName(), std::string(textBuf, textBufLen), true);
  textBufLen = 0;
}

}  // namespace thalmod

// Text result files: header and block reading of TEXT0D and TEXT1D tables, time series of TEXT0D
// columns, and EMT and EMF output, against values worked out by hand.

#include <tuple>

#include "resultfile/thResultFile.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using VD = std::vector<double>;
using samples = std::vector<std::pair<int64_t, double>>;  // (seconds after day0, value)

namespace {

const double delD = -1.0000000031710769e-30;        // delVal widened
const int64_t day0 = 1262304000, end = 2147483647;  // 2010-01-01 00:00:00; the end of a table

// The next block of a table as its rows (the first line's fields), after checking its time.
std::vector<VD> block(thResultFile& rf, int64_t t, int rows) {
  double** m = nullptr;
  int32_t n = 0;
  EXPECT_EQ(rf.readNextTimestep(&m, &n), t);
  std::vector<VD> out;
  for (int f = 0; f < rows; ++f) out.emplace_back(m[f], m[f] + n);
  rf.freeTimestepData(m);
  return out;
}

}  // namespace

TEST(ResultFileText, HeaderBlocksAndSeriesOfTables) {
  using Case = std::tuple<std::string, std::vector<std::string>, int64_t>;  // text, items, textPos
  const Case cases[] = {{"DateTime\tTemp\tSalt\n2010-01-01\t1\t2\n", {"Temp", "Salt"}, 19},
                        {"2010-01-01\t1.5\t2.5\n", {"Itm1", "Itm2"}, 0},          // data from the start
                        {"2010-01-01 12:00:00\t1.5\n", {"12:00:00", "1.5"}, 24},  // split at the blank
                        {"", {}, 0},
                        {std::string("\x01\xff\0garbage", 10), {}, 0},
                        {"DateTime,Temp\r\n", {"Temp"}, 15}};
  thTest::TempDir dir;
  std::string fn = dir.file("a.text0d");
  for (const auto& [text, items, textPos] : cases) {
    thTest::writeText(fn, text);
    thResultFile rf(fn, -1);
    EXPECT_EQ(rf.itemNameVec, items) << text;
    EXPECT_EQ(rf.itemLengthVec, std::vector<int32_t>(items.size(), 1));
    EXPECT_EQ(rf.textPos, textPos) << text;
  }
  thResultFile one(fn, TEXT1D);  // TEXT1D items hold nol values once the caller has set nol
  one.mInfo.nol = 5;
  one.readHeader();
  EXPECT_EQ(one.itemLengthVec, std::vector<int32_t>{5});

  // blocks of profiles
  const std::string text =
      "DateTime\tT\tS\tQ\n2010-01-01 00:00:00\t1.5,,2.5\n2010-01-01 00:00:00\t3.5,x,4\n\r\n"
      "2010-01-01 01:00:00\t7\t8\n2010-01-01 01:00:00\t6,7,8\r\n2010-01-01 02:00:00\t9";
  thTest::writeText(dir.file("p.text1d"), text);
  thResultFile rf(dir.file("p.text1d"), -1);
  // an empty field is missing and a field that is no number 0
  EXPECT_EQ(block(rf, day0, 3), (std::vector<VD>{{1.5, 3.5}, {delD, 0}, {2.5, 4}}));
  EXPECT_EQ(rf.textPos, static_cast<int64_t>(text.find('\r')));  // the line that ended the block
  // the lone "\r" is skipped; the rows are the first line's, so the extra 8 is ignored
  EXPECT_EQ(block(rf, day0 + 3600, 2), (std::vector<VD>{{7, 6}, {8, 7}}));
  EXPECT_EQ(block(rf, day0 + 7200, 1), std::vector<VD>{{9}});  // a last line without its end
  double** untouched = nullptr;
  int32_t n = -7;
  EXPECT_EQ(rf.readNextTimestep(&untouched, &n), end);
  EXPECT_TRUE(untouched == nullptr && n == -7 && rf.curTimestep == 4);
  const std::string invalid = "Invalid line in file " + dir.file("b.text0d");
  for (const auto& [bad, msg] : {std::pair<std::string, std::string>{"D\tT\n2010-01-01\t1\n\n", invalid},
                                 {"2010-01-01 1.5\n", invalid},
                                 {"D\tT\nno date\t1\n", "Invalid date: no date"}}) {
    thTest::writeText(dir.file("b.text0d"), bad);
    thResultFile b(dir.file("b.text0d"), -1);
    EXPECT_VEXCEPTION(b.readNextTimestep(&untouched, &n), msg);
  }
  EXPECT_TRUE(untouched == nullptr && n == -7);

  // series of columns
  thTest::writeText(fn,
                    "DateTime\tTemp\tQual\n2010-01-01 00:00:00\t1.5\t1\n2010-01-01 01:00:00\t2.5\t5\r\n"
                    "2010-01-01 02:00:00\t\t1\n2010-01-01 03:00:00\t4.5\n\n2010-01-01 04:00:00\t5.5\t9");
  thResultFile s(fn, -1);
  const int64_t h = 3600;
  // item, from, to, filter item, filter range, samples
  using Series = std::tuple<int, int64_t, int64_t, int, double, double, samples>;
  const Series series[] = {{0, -1, end, -1, -1e37, 1e37, {{0, 1.5}, {h, 2.5}, {3 * h, 4.5}, {4 * h, 5.5}}},
                           {0, day0 + h, day0 + 3 * h, -1, 0, 0, {{h, 2.5}, {3 * h, 4.5}}},  // ends included
                           {0, -1, end, 1, 1, 5, {{0, 1.5}, {h, 2.5}}},  // 4.5: no filter field; 5.5: out
                           {1, -1, end, -1, 0, 0, {{0, 1}, {h, 5}, {2 * h, 1}, {4 * h, 9}}},
                           {5, -1, end, -1, 0, 0, {}}};
  int64_t* t = nullptr;
  double* d = nullptr;
  for (const auto& [item, from, to, filter, lo, hi, expected] : series) {
    samples got;
    for (int i = 0, k = s.readTimeSeriesUET(item, &t, &d, from, to, filter, lo, hi); i < k; ++i)
      got.emplace_back(t[i] - day0, d[i]);
    EXPECT_EQ(got, expected) << item << " " << filter;
    delete[] t;
    delete[] d;
  }
  EXPECT_VEXCEPTION(s.readTimeSeriesUET(-2, &t, &d, 0, 0, -1, 0, 0),
                    "thResultFile::readTimeSeriesUET: item number -2 is out of range for file " + fn + ".");
  thTest::writeText(fn, "\x01\x02garbage\n\n");  // nothing to take: no samples, no failure
  EXPECT_EQ(s.readTimeSeriesUET(0, &t, &d, -1, end, -1, 0, 0), 0);
  delete[] t;
  delete[] d;
}

TEST(ResultFileText, WriteEMTAndEMF) {
  thTest::TempDir dir;
  float a[] = {1.5f, 0.001f, 1e12f, 0}, b[] = {-2.25f, 0, 123456789.0f};
  double c[] = {99999.999}, d[] = {-1e-30};  // 100000 and delVal as float32
  const std::string emt =
      "ModelType: water\nStartDT: 2010-01-01 00:00:00\nTimestep: 1800\nNo. timesteps: 2\nNo. items: 2\n"
      "Item names: averyveryLongItemName,s\nNo. Layers: 3\nData: \nt=000-1,i=00\t1.5\t0.001\t1e+12\t\n"
      "t=000-1,i=01\t-2.25\t0\t1.235e+08\t\nt=00000,i=00\t1e+05\t\nt=00000,i=01\t-1e-30\t\n";
  const std::string emf =  // fixed unless it overflows or reads 0
      "DateTime           CellNoaveryveryLon           s\n"
      "2010-01-01 00:00:00     0        1.50       -2.25\n"
      "2010-01-01 00:00:00     1    1.00e-03        0.00\n"
      "2010-01-01 00:00:00     2    1.00e+12    1.23e+08\n"
      "2010-01-01 00:30:00     0   100000.00   -1.00e-30\n";
  for (std::string ext : {"emt", "emf"}) {
    std::string fn = dir.file("w." + ext);
    thResultFile w(fn, str2fileFmtEnum(ext));
    w.mInfo.startDT = day0, w.mInfo.dt = 1800, w.mInfo.nt = 2, w.mInfo.nol = w.mInfo.cells = 3;
    w.addItem("averyveryLongItemName", 3);
    w.addItem("s", 3);
    if (w.format == EMF)
      EXPECT_VEXCEPTION(w.writeItemData(a, 3), "thResultFile::writeItemData: the file '" + fn +
                                                   "' is not open for writing; call writeHeader first.");
    ASSERT_EQ(w.writeHeader(), 0);
    if (w.format == EMF)
      EXPECT_VEXCEPTION(w.writeItemData(a, 4),
                        "thResultFile::writeItemData: 4 values are more than the 3 cells of '" + fn + "'.");
    w.writeItemData(a, 3), w.writeItemData(b, 3);
    w.writeItemData(c, 1), w.writeItemData(d, 1);  // the second timestep holds one value an item
    w.closeFile(2);
    EXPECT_EQ(thTest::readText(fn), w.format == EMT ? emt : emf);
  }
  thResultFile w(dir.file("x.emf"), EMF);
  w.addItem("x", 1);
  w.colWidth = 9;
  EXPECT_VEXCEPTION(w.writeHeader(), "thResultFile::writeHeader: the column width 9 of '" +
                                         dir.file("x.emf") +
                                         "' leaves no room for a value; it must be 10 or more.");
  thResultFile big(dir.file("big.emt"), EMT);  // a line longer than the text buffer
  big.addItem("x", 3000);
  big.writeHeader();
  std::vector<float> sevens(3000, 7.0f);
  big.writeItemData(sevens.data(), 3000);
  big.closeFile(1);
  std::string all = thTest::readText(dir.file("big.emt")), line = "t=000-1,i=00\t";
  for (int i = 0; i < 3000; ++i) line += "7\t";
  EXPECT_EQ(all.substr(all.find("Data: \n") + 7), line + "\n");
}

// Typed hyperslab and record reading of VNetCdf, and the scale/offset/missing-value transform.
#include <netcdf.h>

#include <cmath>
#include <cstring>
#include <typeinfo>

#include "netcdf/VNetCdf.h"
#include "netcdf/ncTestFiles.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

// Variables with transform attributes; ids: 0 s(x), 1 f(x), 2 fm(x), 3 i(x), 4 d(x), 5 plain(x), and
// values beyond the int range: 6 wf(y), 7 wi(y), 8 wd(y).
const char* scaledCdl =
    "netcdf scaled {\ndimensions:\n x = 4 ;\n y = 5 ;\nvariables:\n"
    " short s(x) ;\n  s:scale_factor = 0.5 ;\n  s:add_offset = 1. ;\n  s:missing_value = -999s ;\n"
    " float f(x) ;\n  f:scale_factor = 2. ;\n  f:_FillValue = -1.f ;\n"
    " float fm(x) ;\n  fm:scale_factor = 2. ;\n  fm:missing_value = -999. ;\n"
    " int i(x) ;\n  i:scale_factor = 0.5 ;\n"
    " double d(x) ;\n  d:add_offset = 10. ;\n  d:missing_value = 1.e+30 ;\n"
    " double plain(x) ;\n float wf(y) ;\n int wi(y) ;\n  wi:scale_factor = 1.e6 ;\n double wd(y) ;\n"
    "data:\n s = -999, 2, 3, -4 ;\n f = -1, 1, 2, 3 ;\n fm = -999, 0, 1, 2 ;\n"
    " i = 101, -101, 3, -3 ;\n d = 1.e+30, 1, NaN, -2 ;\n plain = 1, 2, 3, 4 ;\n"
    " wf = 1e30, NaN, -1e30, 2.5, 9.96921e+36 ;\n wi = 100000, -100000, 3, -3, 0 ;\n"
    " wd = 1e300, -1e300, -2.5, 2147483647, 2147483648 ;\n}\n";

// The whole of a variable read into the type T, as a vector of n values.
template <typename T>
std::vector<T> readAll(VNetCdf& nc, int32_t varid, int n) {
  std::vector<T> v(n);
  T* p = v.data();
  nc.getAllDataIntoGivenType<T>(varid, p);
  return v;
}

}  // namespace

TEST(VNetCdfRead, HyperslabsRecordsAndGivenTypes) {
  ncTest::ModelFile f;
  VNetCdf nc(f.path, false);
  // A variable without dimensions counts 1 here and 0 in getStartAndCountTotLen, on purpose.
  size_t *start = nullptr, *count = nullptr;
  auto release = [&] { delete[] start, delete[] count; };
  EXPECT_EQ(nc.getStartAndCountArr(7, start, count), 12);
  EXPECT_EQ(VNetCdf::getStartAndCountTotLen(0, start, count), 0);
  release();
  EXPECT_EQ(nc.getStartAndCountArr(18, start, count), 1);
  release();
  EXPECT_EQ(nc.getTimestepStartAndCount(10, 1, start, count), 12);
  EXPECT_EQ(std::vector<size_t>({start[0], count[0], count[1], count[3]}), (std::vector<size_t>{1, 1, 2, 3}));
  release();
  EXPECT_EQ(nc.getTimestepStartAndCount(2, 1, start, count), 1);  // one value per record
  release();
  size_t big[2] = {65536, 65537};  // 2^32 + 65536 wraps to 65536 in 32 bits
  EXPECT_EQ(VNetCdf::getStartAndCountTotLen(2, big, big), 65536);
  EXPECT_VEXCEPTION_HAS(nc.getStartAndCountArr(21, start, count), "out of range");

  // record 1, layer 1 of d3 and s3: elements 9, 10, 11
  size_t from[3] = {1, 1, 0}, three[3] = {1, 1, 3}, late[3] = {5, 0, 0}, s0[1] = {0}, c4[1] = {4};
  double d[3], *pd = d;
  int16_t s[3], *ps = s;
  EXPECT_EQ(nc.getData<double>(7, pd, from, three) + nc.getData<int16_t>(8, ps, from, three), 0);
  EXPECT_EQ(std::vector<double>(d, d + 3), ncTest::values<double>(3, ncTest::d3v, 9));
  EXPECT_EQ(s[2], ncTest::s3v(11));
  // beyond the records: the library's status comes back and the array stays
  EXPECT_TRUE(nc.getData<double>(7, pd, late, three) != 0 && d[0] == ncTest::d3v(9));
  EXPECT_THROW(nc.getData<double>(14, pd, s0, c4), VCppLib::VException);  // a byte variable

  float rec[12], *pr = rec;
  int32_t one, *po = &one;
  nc.getTimestepData<float>(10, 1, pr);  // f4, second record: elements 12 .. 23
  nc.getTimestepData<int32_t>(5, 1, po);
  EXPECT_EQ(std::vector<float>(rec, rec + 12), ncTest::values<float>(12, ncTest::f4v, 12));
  EXPECT_EQ(one, ncTest::i1v(1));

  // Raw records in the stored type; a record beyond the file still gives a block.
  EXPECT_EQ(ncTest::raw<double>(nc.getTimestepRaw(7, 1), 6), ncTest::values<double>(6, ncTest::d3v, 6));
  EXPECT_EQ(ncTest::raw<int16_t>(nc.getTimestepRaw(12, 0), 12), ncTest::values<int16_t>(12, ncTest::s4v));
  EXPECT_EQ(ncTest::raw<double>(nc.getTimestepRaw(18, 0), 1), (std::vector<double>{7.5}));
  VNetCdf::freeRaw(nc.getTimestepRaw(7, 9));
  EXPECT_VEXCEPTION_HAS(nc.getTimestepRaw(30, 0), "out of range");

  // Into a given type: the caller's type matching the stored one takes the direct path; a byte
  // shares unsigned char.
  const std::pair<int, const std::type_info*> types[] = {
      {NC_BYTE, &typeid(unsigned char)}, {NC_UBYTE, &typeid(unsigned char)}, {NC_CHAR, &typeid(char)},
      {NC_SHORT, &typeid(int16_t)},      {NC_INT, &typeid(int32_t)},         {NC_FLOAT, &typeid(float)},
      {NC_DOUBLE, &typeid(double)},      {NC_USHORT, &typeid(uint16_t)},     {NC_UINT, &typeid(uint32_t)},
      {NC_INT64, &typeid(int64_t)},      {NC_UINT64, &typeid(uint64_t)},     {NC_STRING, &typeid(char*)}};
  for (auto [code, type] : types) EXPECT_EQ(VNetCdf::NCType2cppType(code), *type) << code;
  EXPECT_VEXCEPTION(VNetCdf::NCType2cppType(0), "Unsupported type.");
  EXPECT_THROW(VNetCdf::NCType2cppType(13), VCppLib::VException);
  using V = std::vector<double>;
  EXPECT_EQ(readAll<double>(nc, 6, 12), ncTest::values<double>(12, ncTest::f3v));   // float, exact
  EXPECT_EQ(readAll<double>(nc, 12, 24), ncTest::values<double>(24, ncTest::s4v));  // short
  // int, int64, double rounded once to float, short to int
  EXPECT_TRUE(readAll<double>(nc, 13, 24)[23] == 24000000.0 && readAll<double>(nc, 17, 4)[3] == 4e9);
  EXPECT_EQ(readAll<float>(nc, 3, 2), (std::vector<float>{0.1f, 0.2f}));
  EXPECT_EQ(readAll<int32_t>(nc, 4, 2), (std::vector<int32_t>{-3, -2}));
  // a variable without dimensions: read when the type is its own, else converted over 0 elements
  EXPECT_EQ(readAll<double>(nc, 18, 1), (V{7.5}));
  float fl[4] = {42.0f}, *pf = fl;
  nc.getAllDataIntoGivenType<float>(18, pf);
  EXPECT_EQ(fl[0], 42.0f);

  int64_t l[4], *pl = l;
  // ubyte and string are not read
  EXPECT_THROW(nc.getAllDataIntoGivenType<float>(15, pf), VCppLib::VException);
  EXPECT_THROW(nc.getAllDataIntoGivenType<double>(19, pd), VCppLib::VException);
  // the own type of an int64 variable goes through getData, which has no int64 path
  EXPECT_THROW(nc.getAllDataIntoGivenType<int64_t>(17, pl), VCppLib::VException);
  // an out-of-range hyperslab leaves the target as it was
  size_t s3[1] = {3}, c5[1] = {5};
  nc.getDataIntoGivenType<double>(17, pd, s3, c5);
  EXPECT_EQ(d[0], ncTest::d3v(9));
}

TEST(VNetCdfRead, ScaleOffsetMissingValueAndSaturation) {
  thTest::TempDir dir;
  std::string path = dir.file("scaled.nc");
  thTest::ncgen(scaledCdl, path);
  VNetCdf nc(path, false);
  using V = std::vector<double>;
  using I = std::vector<int32_t>;
  // NaN and floats beyond the int range (the default float fill value among them) must not be
  // converted with undefined behaviour: they saturate, NaN going to the lowest value.
  const int32_t lo = INT32_MIN, hi = INT32_MAX;
  EXPECT_EQ(readAll<int32_t>(nc, 6, 5), (I{hi, lo, lo, 2, hi}));
  EXPECT_EQ(readAll<int32_t>(nc, 8, 5), (I{hi, lo, -2, hi, hi}));
  EXPECT_EQ(readAll<int16_t>(nc, 8, 5), (std::vector<int16_t>{32767, -32768, -2, 32767, 32767}));
  EXPECT_EQ(readAll<int64_t>(nc, 6, 5),
            (std::vector<int64_t>{INT64_MAX, INT64_MIN, INT64_MIN, 2, INT64_MAX}));

  nc.setScaleOffsetAtts("scale_factor", "add_offset", "missing_value");
  // short: 0.5 v + 1, the missing value stays raw
  EXPECT_EQ(readAll<double>(nc, 0, 4), (V{-999, 2, 2.5, -1}));
  // no missing value named: the fill value is scaled like any other value; float into float in place
  EXPECT_EQ(readAll<double>(nc, 1, 4), (V{-2, 2, 4, 6}));
  EXPECT_EQ(readAll<float>(nc, 1, 4), (std::vector<float>{-2, 2, 4, 6}));
  // missing value given as double on a float variable: its first four bytes are read as a
  // float, and -999.0 as a double begins with four zero bytes: 0 is "missing", -999 is not
  EXPECT_EQ(readAll<double>(nc, 2, 4), (V{-1998, 0, 2, 4}));
  // in place on int: truncation toward zero
  EXPECT_EQ(readAll<int32_t>(nc, 3, 4), (I{50, -50, 1, -1}));
  // double with offset and missing value; NaN never equals the missing value
  V d = readAll<double>(nc, 4, 4);
  EXPECT_TRUE(d[0] == 1e30 && d[1] == 11.0 && std::isnan(d[2]) && d[3] == 8.0);
  EXPECT_EQ(readAll<double>(nc, 5, 4), (V{1, 2, 3, 4}));  // plain: scale 1, offset 0
  // in place, scaled: 1e6 x 100000 = 1e11 lies beyond the int range
  EXPECT_EQ(readAll<int32_t>(nc, 7, 5), (I{hi, lo, 3000000, -3000000, 0}));

  // names switched off: all scales 1, offsets 0, no missing values
  nc.setScaleOffsetAtts("", "", "");
  EXPECT_TRUE(readAll<double>(nc, 0, 4)[2] == 3.0 && nc.missingTab[0] == nullptr);

  // Raw reads with tables see the block as 32-bit words, whatever was stored.
  nc.setScaleOffsetAtts("scale_factor", "add_offset", "");
  // an int variable: its words are its values, truncated toward zero
  EXPECT_EQ(ncTest::varData<int32_t>(nc, 3), (I{50, -50, 1, -1}));
  std::vector<int16_t> s = ncTest::varData<int16_t>(nc, 0);  // -999, 2 as one word: 0x0002FC19 = 195609
  int32_t w;
  std::memcpy(&w, s.data(), 4);
  EXPECT_EQ(w, static_cast<int32_t>(0.5 * 195609 + 1));
}

// Typed hyperslab and record reading of VNetCdf, and the scale/offset/missing-value transform.
#include <netcdf.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "netcdf/VNetCdf.h"
#include "netcdf/ncTestFiles.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

struct ModelFile {
  thTest::TempDir dir;
  std::string path = dir.file("model.nc");
  ModelFile() { thTest::ncgen(ncTest::modelCdl(), path); }
};

// Variables with transform attributes; ids: 0 s(x), 1 f(x), 2 fm(x), 3 i(x), 4 d(x), 5 plain(x).
const char* scaledCdl =
    "netcdf scaled {\ndimensions:\n x = 4 ;\nvariables:\n"
    " short s(x) ;\n  s:scale_factor = 0.5 ;\n  s:add_offset = 1. ;\n  s:missing_value = -999s ;\n"
    " float f(x) ;\n  f:scale_factor = 2. ;\n  f:_FillValue = -1.f ;\n"
    " float fm(x) ;\n  fm:scale_factor = 2. ;\n  fm:missing_value = -999. ;\n"
    " int i(x) ;\n  i:scale_factor = 0.5 ;\n"
    " double d(x) ;\n  d:add_offset = 10. ;\n  d:missing_value = 1.e+30 ;\n"
    " double plain(x) ;\n"
    "data:\n s = -999, 2, 3, -4 ;\n f = -1, 1, 2, 3 ;\n fm = -999, 0, 1, 2 ;\n"
    " i = 101, -101, 3, -3 ;\n d = 1.e+30, 1, NaN, -2 ;\n plain = 1, 2, 3, 4 ;\n}\n";

}  // namespace

TEST(VNetCdfRead, TypeTable) {
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_BYTE), typeid(unsigned char));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_UBYTE), typeid(unsigned char));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_CHAR), typeid(char));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_SHORT), typeid(int16_t));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_INT), typeid(int32_t));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_FLOAT), typeid(float));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_DOUBLE), typeid(double));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_USHORT), typeid(uint16_t));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_UINT), typeid(uint32_t));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_INT64), typeid(int64_t));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_UINT64), typeid(uint64_t));
  EXPECT_EQ(VNetCdf::NCType2cppType(NC_STRING), typeid(char*));
  EXPECT_VEXCEPTION(VNetCdf::NCType2cppType(0), "Unsupported type.");
  EXPECT_VEXCEPTION(VNetCdf::NCType2cppType(13), "Unsupported type.");
}

TEST(VNetCdfRead, HyperslabHelpers) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  size_t* start = nullptr;
  size_t* count = nullptr;
  EXPECT_EQ(nc.getStartAndCountArr(7, start, count), 12);
  EXPECT_EQ(count[0], 2u);
  EXPECT_EQ(count[1], 2u);
  EXPECT_EQ(count[2], 3u);
  EXPECT_EQ(start[0] + start[1] + start[2], 0u);
  EXPECT_EQ(VNetCdf::getStartAndCountTotLen(3, start, count), 12);
  EXPECT_EQ(VNetCdf::getStartAndCountTotLen(0, start, count), 0);
  delete[] start;
  delete[] count;

  EXPECT_EQ(nc.getStartAndCountArr(18, start, count), 1);  // no dimensions
  delete[] start;
  delete[] count;

  EXPECT_EQ(nc.getTimestepStartAndCount(10, 1, start, count), 12);
  EXPECT_EQ(start[0], 1u);
  EXPECT_EQ(count[0], 1u);
  EXPECT_EQ(count[1], 2u);
  EXPECT_EQ(count[3], 3u);
  delete[] start;
  delete[] count;
  EXPECT_EQ(nc.getTimestepStartAndCount(2, 1, start, count), 1);  // one value per record
  delete[] start;
  delete[] count;

  size_t big[2] = {65536, 65537};  // 2^32 + 65536 wraps to 65536 in 32 bits
  EXPECT_EQ(VNetCdf::getStartAndCountTotLen(2, big, big), 65536);
  EXPECT_VEXCEPTION_HAS(nc.getStartAndCountArr(21, start, count), "out of range");
}

TEST(VNetCdfRead, GetDataInTheStoredType) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  // record 1, layer 1 of d3: elements 9, 10, 11
  size_t start[3] = {1, 1, 0};
  size_t count[3] = {1, 1, 3};
  double d[3];
  double* pd = d;
  EXPECT_EQ(nc.getData<double>(7, pd, start, count), 0);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(d[k], ncTest::d3v(9 + k));
  int16_t s[3];
  int16_t* ps = s;
  EXPECT_EQ(nc.getData<int16_t>(8, ps, start, count), 0);
  EXPECT_EQ(s[2], ncTest::s3v(11));
  // beyond the records: the library's status comes back and the array stays
  size_t late[3] = {5, 0, 0};
  d[0] = -1;
  EXPECT_NE(nc.getData<double>(7, pd, late, count), 0);
  EXPECT_EQ(d[0], -1);
  int64_t l[4];
  int64_t* pl = l;
  size_t s0[1] = {0}, c4[1] = {4};
  EXPECT_VEXCEPTION(nc.getData<int64_t>(17, pl, s0, c4), "Unsupported nc type: 10");
  EXPECT_VEXCEPTION(nc.getData<double>(14, pd, s0, c4), "Unsupported nc type: 1");

  float rec[12];
  float* pr = rec;
  nc.getTimestepData<float>(10, 1, pr);  // f4, second record: elements 12 .. 23
  for (int k = 0; k < 12; ++k) EXPECT_EQ(rec[k], ncTest::f4v(12 + k));
  int32_t one;
  int32_t* po = &one;
  nc.getTimestepData<int32_t>(5, 1, po);
  EXPECT_EQ(one, ncTest::i1v(1));
}

TEST(VNetCdfRead, IntoAGivenType) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  double d[24];
  double* pd = d;
  nc.getAllDataIntoGivenType<double>(6, pd);  // float -> double, exact
  for (int k = 0; k < 12; ++k) EXPECT_EQ(d[k], ncTest::f3v(k));
  nc.getAllDataIntoGivenType<double>(12, pd);  // short -> double
  for (int k = 0; k < 24; ++k) EXPECT_EQ(d[k], ncTest::s4v(k));
  nc.getAllDataIntoGivenType<double>(13, pd);  // int -> double
  EXPECT_EQ(d[23], 24000000.0);
  nc.getAllDataIntoGivenType<double>(17, pd);  // int64 -> double
  EXPECT_EQ(d[3], 4e9);
  nc.getAllDataIntoGivenType<double>(0, pd);
  EXPECT_EQ(d[1], 3600.0);

  float fl[4];
  float* pf = fl;
  nc.getAllDataIntoGivenType<float>(3, pf);  // double 0.1, 0.2 -> float, rounded once
  EXPECT_EQ(fl[0], 0.1f);
  EXPECT_EQ(fl[1], 0.2f);
  nc.getAllDataIntoGivenType<float>(17, pf);
  EXPECT_EQ(fl[3], 4e9f);
  int32_t i[4];
  int32_t* pi = i;
  nc.getAllDataIntoGivenType<int32_t>(4, pi);  // short -> int
  EXPECT_EQ(i[0], -3);
  EXPECT_EQ(i[1], -2);

  EXPECT_VEXCEPTION(nc.getAllDataIntoGivenType<float>(15, pf), "Unsupported nc type: 7");
  EXPECT_VEXCEPTION(nc.getAllDataIntoGivenType<float>(16, pf), "Unsupported nc type: 2");
  EXPECT_VEXCEPTION(nc.getAllDataIntoGivenType<double>(20, pd), "Unsupported nc type: 8");
  EXPECT_VEXCEPTION(nc.getAllDataIntoGivenType<double>(19, pd), "Unsupported nc type: 12");
  // the own type of an int64 variable goes through getData, which has no int64 path
  int64_t l[4];
  int64_t* pl = l;
  EXPECT_VEXCEPTION(nc.getAllDataIntoGivenType<int64_t>(17, pl), "Unsupported nc type: 10");

  // a variable without dimensions: converted over 0 elements, read when the type is its own
  fl[0] = 42.0f;
  nc.getAllDataIntoGivenType<float>(18, pf);
  EXPECT_EQ(fl[0], 42.0f);
  d[0] = 0;
  nc.getAllDataIntoGivenType<double>(18, pd);
  EXPECT_EQ(d[0], 7.5);

  // an out-of-range hyperslab leaves the target as it was
  size_t start[1] = {3}, count[1] = {5};
  d[0] = -5;
  nc.getDataIntoGivenType<double>(17, pd, start, count);
  EXPECT_EQ(d[0], -5);
}

TEST(VNetCdfRead, RawRecords) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  double* d = static_cast<double*>(nc.getTimestepRaw(7, 1));
  for (int k = 0; k < 6; ++k) EXPECT_EQ(d[k], ncTest::d3v(6 + k));
  VNetCdf::freeRaw(d);
  int16_t* s = static_cast<int16_t*>(nc.getTimestepRaw(12, 0));
  for (int k = 0; k < 12; ++k) EXPECT_EQ(s[k], ncTest::s4v(k));
  VNetCdf::freeRaw(s);
  float* one = static_cast<float*>(nc.getTimestepRaw(2, 1));
  EXPECT_EQ(one[0], static_cast<float>(ncTest::f1v(1)));
  VNetCdf::freeRaw(one);
  double* sc = static_cast<double*>(nc.getTimestepRaw(18, 0));
  EXPECT_EQ(sc[0], 7.5);
  VNetCdf::freeRaw(sc);
  VNetCdf::freeRaw(nc.getTimestepRaw(7, 9));  // no such record: a block, not a crash
  EXPECT_VEXCEPTION(nc.getTimestepRaw(0, 0), "Unsupported nc type: 10");
  EXPECT_VEXCEPTION_HAS(nc.getTimestepRaw(30, 0), "out of range");
}

TEST(VNetCdfRead, ScaleOffsetAndMissingValue) {
  thTest::TempDir dir;
  std::string path = dir.file("scaled.nc");
  thTest::ncgen(scaledCdl, path);
  VNetCdf nc(path, false);
  double d[4];
  double* pd = d;
  // without tables the values pass unchanged
  nc.getAllDataIntoGivenType<double>(0, pd);
  EXPECT_EQ(d[0], -999.0);
  EXPECT_EQ(d[1], 2.0);

  nc.setScaleOffsetAtts("scale_factor", "add_offset", "missing_value");
  ASSERT_NE(nc.scaleTab, nullptr);
  EXPECT_EQ(nc.scaleTab[0], 0.5);
  EXPECT_EQ(nc.offsetTab[0], 1.0);
  EXPECT_EQ(nc.scaleTab[5], 1.0);
  EXPECT_EQ(nc.offsetTab[5], 0.0);
  EXPECT_EQ(nc.missingTab[1], nullptr);
  EXPECT_NE(nc.missingTab[0], nullptr);

  nc.getAllDataIntoGivenType<double>(0, pd);  // short: 0.5 v + 1, the missing value stays raw
  EXPECT_EQ(d[0], -999.0);
  EXPECT_EQ(d[1], 2.0);
  EXPECT_EQ(d[2], 2.5);
  EXPECT_EQ(d[3], -1.0);
  float fl[4];
  float* pf = fl;
  nc.getAllDataIntoGivenType<float>(0, pf);
  EXPECT_EQ(fl[0], -999.0f);
  EXPECT_EQ(fl[2], 2.5f);

  // no missing value named: the fill value is scaled like any other value
  nc.getAllDataIntoGivenType<double>(1, pd);
  EXPECT_EQ(d[0], -2.0);
  EXPECT_EQ(d[3], 6.0);
  nc.getAllDataIntoGivenType<float>(1, pf);  // float into float: in place
  EXPECT_EQ(fl[1], 2.0f);

  // missing value given as double on a float variable: its first four bytes are read as a
  // float, and -999.0 as a double begins with four zero bytes: 0 is "missing", -999 is not
  nc.getAllDataIntoGivenType<double>(2, pd);
  EXPECT_EQ(d[0], -1998.0);
  EXPECT_EQ(d[1], 0.0);
  EXPECT_EQ(d[2], 2.0);

  // in place on int: truncation toward zero
  int32_t i[4];
  int32_t* pi = i;
  nc.getAllDataIntoGivenType<int32_t>(3, pi);
  EXPECT_EQ(i[0], 50);
  EXPECT_EQ(i[1], -50);
  EXPECT_EQ(i[2], 1);
  EXPECT_EQ(i[3], -1);

  // double with offset and missing value; NaN never equals the missing value
  nc.getAllDataIntoGivenType<double>(4, pd);
  EXPECT_EQ(d[0], 1e30);
  EXPECT_EQ(d[1], 11.0);
  EXPECT_TRUE(std::isnan(d[2]));
  EXPECT_EQ(d[3], 8.0);

  // the two forms called directly
  int16_t raw[3] = {-999, 4, 6};
  double out[3];
  double* po = out;
  nc.scaleOffset<int16_t, double>(raw, po, 3, 0);
  EXPECT_EQ(out[0], -999.0);
  EXPECT_EQ(out[1], 3.0);
  EXPECT_EQ(out[2], 4.0);
  double inPlace[2] = {2.0, 4.0};
  double* pp = inPlace;
  nc.scaleOffset<double>(pp, 2, 5);  // plain: scale 1, offset 0
  EXPECT_EQ(inPlace[1], 4.0);
  nc.scaleOffset<double>(pp, 2, 4);
  EXPECT_EQ(inPlace[0], 12.0);

  // names switched off: all scales 1, offsets 0, no missing values
  nc.setScaleOffsetAtts("", "", "");
  nc.getAllDataIntoGivenType<double>(0, pd);
  EXPECT_EQ(d[2], 3.0);
  EXPECT_EQ(nc.missingTab[0], nullptr);
}

TEST(VNetCdfRead, RawReadsWithTablesSeeThirtyTwoBitWords) {
  thTest::TempDir dir;
  std::string path = dir.file("scaled.nc");
  thTest::ncgen(scaledCdl, path);
  VNetCdf nc(path, false);
  nc.setScaleOffsetAtts("scale_factor", "add_offset", "");
  int32_t* i = nullptr;
  ASSERT_EQ(nc.getVarData<int32_t>(3, i), 4);  // an int variable: its words are its values
  EXPECT_EQ(i[0], 50);
  EXPECT_EQ(i[1], -50);
  delete[] i;
  int16_t* s = nullptr;
  nc.getVarData<int16_t>(0, s);  // shorts -999, 2 seen as one word: 0x0002FC19 = 195609
  int32_t w;
  std::memcpy(&w, s, 4);
  EXPECT_EQ(w, static_cast<int32_t>(0.5 * 195609 + 1));
  delete[] s;
}

TEST(VNetCdfRead, IntegersFromValuesTheyCannotHoldSaturate) {
  // NaN and floats beyond the int range (the default float fill value among them) must not be
  // converted with undefined behaviour: they saturate, NaN going to the lowest value.
  thTest::TempDir dir;
  std::string path = dir.file("wide.nc");
  thTest::ncgen("netcdf w {\ndimensions:\n x = 5 ;\nvariables:\n float f(x) ;\n"
                " int i(x) ;\n  i:scale_factor = 1.e6 ;\n double d(x) ;\n"
                "data:\n f = 1e30, NaN, -1e30, 2.5, 9.96921e+36 ;\n"
                " i = 100000, -100000, 3, -3, 0 ;\n d = 1e300, -1e300, -2.5, 2147483647, 2147483648 ;\n}\n",
                path);
  VNetCdf nc(path, false);
  const int32_t lo = INT32_MIN, hi = INT32_MAX;
  int32_t i[5];
  int32_t* pi = i;
  nc.getAllDataIntoGivenType<int32_t>(0, pi);
  EXPECT_EQ(std::vector<int32_t>(i, i + 5), (std::vector<int32_t>{hi, lo, lo, 2, hi}));
  nc.getAllDataIntoGivenType<int32_t>(2, pi);
  EXPECT_EQ(std::vector<int32_t>(i, i + 5), (std::vector<int32_t>{hi, lo, -2, hi, hi}));
  int16_t s[5];
  int16_t* ps = s;
  nc.getAllDataIntoGivenType<int16_t>(2, ps);
  EXPECT_EQ(std::vector<int16_t>(s, s + 5), (std::vector<int16_t>{32767, -32768, -2, 32767, 32767}));
  int64_t l[5];
  int64_t* pl = l;
  nc.getAllDataIntoGivenType<int64_t>(0, pl);
  EXPECT_EQ(l[0], INT64_MAX);
  EXPECT_EQ(l[1], INT64_MIN);
  EXPECT_EQ(l[3], 2);

  // in place, scaled: 1e6 x 100000 = 1e11 lies beyond the int range
  nc.setScaleOffsetAtts("scale_factor", "", "");
  nc.getAllDataIntoGivenType<int32_t>(1, pi);
  EXPECT_EQ(std::vector<int32_t>(i, i + 5), (std::vector<int32_t>{hi, lo, 3000000, -3000000, 0}));
}

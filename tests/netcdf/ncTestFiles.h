// CDL texts and writers of the NetCDF fixtures of the VNetCdf tests, and the formulas of their values.
#pragma once

#include <string>
#include <vector>

#include "netcdf/VNetCdf.h"
#include "testutil/thTestUtil.h"

namespace ncTest {

// Values of the model-like file, element k of the whole variable in storage order.
inline double f1v(int k) { return 1.5 + k; }         // float  f1(time)
inline double d1v(int k) { return 0.1 * (k + 1); }   // double d1(time)
inline int s1v(int k) { return -3 + k; }             // short  s1(time)
inline int i1v(int k) { return 70000 + k; }          // int    i1(time)
inline double f3v(int k) { return 0.5 * (k + 1); }   // float  f3(time, nol, cells)
inline double d3v(int k) { return 0.25 * (k + 1); }  // double d3(time, nol, cells)
inline int s3v(int k) { return 10 * (k + 1); }       // short  s3(time, nol, cells)
inline int i3v(int k) { return 100 * (k + 1) + 1; }  // int    i3(time, nol, cells)
inline double f4v(int k) { return -0.5 * (k + 1); }  // float  f4(time, layers, nol, cells)
inline double d4v(int k) { return 1000.0 + k; }      // double d4(...)
inline int s4v(int k) { return -(k + 1); }           // short  s4(...)
inline int i4v(int k) { return 1000000 * (k + 1); }  // int    i4(...)

// Values f(from) .. f(from + n - 1) in the type T.
template <typename T, typename F>
std::vector<T> values(int n, F f, int from = 0) {
  std::vector<T> v;
  for (int k = from; k < from + n; ++k) v.push_back(static_cast<T>(f(k)));
  return v;
}

// The first n values of a raw block handed out by VNetCdf, which is released here.
template <typename T>
std::vector<T> raw(void* block, int n) {
  std::vector<T> v(static_cast<T*>(block), static_cast<T*>(block) + n);
  VCppLib::VNetCdf::freeRaw(block);
  return v;
}

// The whole variable as getVarData<T> gives it.
template <typename T>
std::vector<T> varData(VCppLib::VNetCdf& nc, int32_t varid) {
  T* data = nullptr;
  int32_t n = nc.getVarData<T>(varid, data);
  return thTest::take(data, n);
}

// One CDL data line "  name = f(0), f(1), ... ;" of n values.
template <typename F>
std::string cdlData(const std::string& name, int n, F f) {
  std::string s = "  " + name + " =";
  for (int k = 0; k < n; ++k) s += (k ? ", " : " ") + std::to_string(f(k));
  return s + " ;\n";
}

// Model-like file: two records, nol = 2, cells = 3, layers = 2. Variable ids in order:
// 0 time, 1 fixed3, 2 f1, 3 d1, 4 s1, 5 i1, 6 f3, 7 d3, 8 s3, 9 i3, 10 f4, 11 d4, 12 s4, 13 i4,
// 14 b1, 15 ub1, 16 c1, 17 big, 18 scal, 19 name, 20 plain.
inline std::string modelCdl() {
  return "netcdf model {\ndimensions:\n"
         "  time = UNLIMITED ;\n  layers = 2 ;\n  nol = 2 ;\n  cells = 3 ;\n  x = 4 ;\nvariables:\n"
         "  int64 time(time) ;\n    time:units = \"seconds since 1970-01-01 00:00:00\" ;\n"
         "  float fixed3(layers, nol, cells) ;\n"
         "  float f1(time) ;\n    f1:long_name = \"one float per record\" ;\n"
         "  double d1(time) ;\n  short s1(time) ;\n  int i1(time) ;\n"
         "  float f3(time, nol, cells) ;\n  double d3(time, nol, cells) ;\n"
         "  short s3(time, nol, cells) ;\n  int i3(time, nol, cells) ;\n"
         "  float f4(time, layers, nol, cells) ;\n  double d4(time, layers, nol, cells) ;\n"
         "  short s4(time, layers, nol, cells) ;\n  int i4(time, layers, nol, cells) ;\n"
         "  byte b1(x) ;\n  ubyte ub1(x) ;\n  char c1(x) ;\n  int64 big(x) ;\n"
         "  double scal ;\n  string name(x) ;\n  ushort plain(x) ;\n"
         "  :title = \"test file\" ;\n  :nlayers = 2 ;\n  :dval = 1.25 ;\n  :bval = -1b ;\n"
         "  :multi = 1.f, 2.f, 3.f, 4.f, 5.f, 6.f ;\n  :sval = -7s ;\n"
         "  :u64 = 5ull ;\n  string :sa = \"hello\", \"world\" ;\n"
         "data:\n  time = 0, 3600 ;\n" +
         cdlData("fixed3", 12, [](int k) { return k; }) + cdlData("f1", 2, f1v) + cdlData("d1", 2, d1v) +
         cdlData("s1", 2, s1v) + cdlData("i1", 2, i1v) + cdlData("f3", 12, f3v) + cdlData("d3", 12, d3v) +
         cdlData("s3", 12, s3v) + cdlData("i3", 12, i3v) + cdlData("f4", 24, f4v) + cdlData("d4", 24, d4v) +
         cdlData("s4", 24, s4v) + cdlData("i4", 24, i4v) +
         "  b1 = -1, 0, 1, 2 ;\n  ub1 = 250, 251, 252, 253 ;\n  c1 = \"abcd\" ;\n"
         "  big = 1, 2, 3, 4000000000 ;\n  scal = 7.5 ;\n  name = \"a\", \"b\", \"c\", \"d\" ;\n"
         "  plain = 1, 2, 3, 4 ;\n}\n";
}

// The model-like file, written into a fresh folder.
struct ModelFile {
  thTest::TempDir dir;
  std::string path = dir.file("model.nc");
  ModelFile() { thTest::ncgen(modelCdl(), path); }
};

}  // namespace ncTest

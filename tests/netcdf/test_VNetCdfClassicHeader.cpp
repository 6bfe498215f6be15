// Damaged classic-format headers are refused before the library opens them, and reads whose size
// does not fit the 32-bit counts of VNetCdf are refused instead of overrunning the caller's array.
#include <netcdf.h>

#include <memory>
#include <string>
#include <vector>

#include "netcdf/VNetCdf.h"
#include "netcdf/VNetCdfClassicCheck.h"
#include "netcdf/ncTestFiles.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

// A classic (CDF-1) file written byte by byte: one dimension, no global attributes unless
// given, one float variable over the listed dimension ids, then its data.
struct ClassicFile {
  std::string dimName = "x";
  uint32_t dimLen = 2, dimCount = 1;
  std::string varName = "v";
  std::vector<uint32_t> varDims = {0};
  uint32_t varType = NC_FLOAT;
  std::string gattName;  // empty: no global attribute

  std::vector<uint8_t> b;
  void be(uint32_t v) {
    for (int i = 3; i >= 0; --i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
  }
  void name(const std::string& s) {
    be(static_cast<uint32_t>(s.size()));
    b.insert(b.end(), s.begin(), s.end());
    while (b.size() % 4) b.push_back(0);
  }
  std::vector<uint8_t> bytes() {
    b = {'C', 'D', 'F', 1};
    be(0), be(0x0A), be(dimCount);  // no records; the dimension list
    name(dimName), be(dimLen);
    if (gattName.empty()) {
      be(0), be(0);
    } else {
      be(0x0C), be(1), name(gattName), be(NC_INT), be(1), be(7);
    }
    be(0x0B), be(1), name(varName), be(static_cast<uint32_t>(varDims.size()));
    for (uint32_t d : varDims) be(d);
    be(0), be(0), be(varType), be(4 * dimLen);                          // no attributes; type and vsize
    be(static_cast<uint32_t>(b.size() + 4));                            // begin: the data follow the header
    for (uint32_t k = 0; k < dimLen; ++k) be(0x3FC00000u + (k << 21));  // 1.5, 1.75 as floats
    return b;
  }
};

std::string refusal(const std::string& path) {
  try {
    VNetCdf nc(path, false);
  } catch (const VCppLib::VException& e) {
    return e.message;
  }
  return "opened";
}

}  // namespace

TEST(VNetCdfClassicHeader, SoundHeadersOpen) {
  thTest::TempDir dir;
  ClassicFile f;
  f.dimName = std::string(NC_MAX_NAME, 'n');  // the longest name allowed
  std::string path = dir.file("sound.nc");
  thTest::writeBytes(path, f.bytes());
  EXPECT_EQ(VCppLib::classicHeaderStatus(path), NC_NOERR);
  VNetCdf nc(path, false);
  EXPECT_EQ(nc.getDimLen(f.dimName), 2);
  float* v = nullptr;
  ASSERT_EQ(nc.getVarData<float>(0, v), 2);
  std::unique_ptr<float[]> own(v);
  EXPECT_EQ(std::vector<float>(v, v + 2), (std::vector<float>{1.5f, 1.75f}));
  // files of the three classic kinds as ncgen writes them, and a NetCDF-4 file, pass the check
  for (const char* kind : {"classic", "64-bit-offset", "cdf5", "nc4"}) {
    std::string file = dir.file(std::string(kind) + ".nc");
    thTest::ncgen(
        "netcdf k {\ndimensions:\n time = UNLIMITED ;\n x = 2 ;\nvariables:\n"
        " double t(time) ;\n  t:units = \"hours since 1970-01-01\" ;\n short s(time, x) ;\n"
        "  s:r = 1s, 2s ;\n char c(x) ;\n float f ;\n :g = \"global\" ;\n"
        "data:\n t = 1, 2 ;\n s = 1, 2, 3, 4 ;\n c = \"ab\" ;\n f = 3 ;\n}\n",
        file, kind);
    EXPECT_EQ(VCppLib::classicHeaderStatus(file), NC_NOERR) << kind;
    EXPECT_EQ(VNetCdf(file, false).nvars, 4) << kind;
  }
}

TEST(VNetCdfClassicHeader, DamagedHeadersAreRefused) {
  thTest::TempDir dir;
  std::string path = dir.file("bad.nc");
  // Names longer than the library's limit, which the library would copy whole into a name buffer.
  ClassicFile longDim, longVar, longAtt, manyDims, wide, badId, badType;
  longDim.dimName = std::string(300, 'd');
  longVar.varName = std::string(NC_MAX_NAME + 1, 'v');
  longAtt.gattName = std::string(1000, 'a');
  manyDims.dimCount = 0x7E000001;  // two billion dimensions in a file of a hundred bytes
  wide.varDims.assign(2000, 0);    // more dimensions for one variable than an id array holds
  badId.varDims = {5};
  badType.varType = NC_UINT;  // a CDF-5 type in a CDF-1 file
  const std::pair<ClassicFile*, int> bad[] = {
      {&longDim, NC_EMAXNAME}, {&longVar, NC_EMAXNAME}, {&longAtt, NC_EMAXNAME}, {&manyDims, NC_ENOTNC},
      {&wide, NC_EMAXDIMS},    {&badId, NC_EBADDIM},    {&badType, NC_EBADTYPE}};
  for (auto [f, code] : bad) {
    thTest::writeBytes(path, f->bytes());
    EXPECT_EQ(refusal(path), nc_strerror(code)) << code;
  }
  // Cut anywhere inside the header: refused, never a crash.
  std::vector<uint8_t> whole = ClassicFile().bytes();
  for (size_t keep = 4; keep + 8 < whole.size(); ++keep) {
    thTest::writeBytes(path, std::vector<uint8_t>(whole.begin(), whole.begin() + keep));
    EXPECT_NE(refusal(path), "opened") << keep;
  }
}

TEST(VNetCdfClassicHeader, ReadsBeyondThirtyTwoBitCountsAreRefused) {
  // A caller sizes its array from getVarLen or dimLen, narrowed or wrapped to 32 bits; the library
  // would write the true count (fill values of a file without data).
  thTest::TempDir dir;
  std::string path = dir.file("huge.nc");
  thTest::ncgen(
      "netcdf h {\ndimensions:\n time = UNLIMITED ;\n huge = 3000000000 ;\n a = 70000 ;\n"
      " two = 2 ;\nvariables:\n float h(huge) ;\n float r(time, a, a) ;\n float s(time, two) ;\n"
      "data:\n s = 1, 2 ;\n}\n",
      path);
  VNetCdf nc(path, false);
  double small[4] = {0, 0, 0, 0};
  double* p = small;
  EXPECT_VEXCEPTION(
      nc.getAllDataIntoGivenType<double>(0, p),
      "VNetCdf::getAllDataIntoGivenType: variable 'h' in '" + path + "' is too large to be read at once.");
  float f[4] = {0, 0, 0, 0};
  float* pf = f;
  EXPECT_VEXCEPTION(nc.getTimestepData<float>(1, 0, pf), "VNetCdf::getTimestepData: variable 'r' in '" +
                                                             path + "' is too large to be read at once.");
  nc.getTimestepData<float>(2, 0, pf);  // a record that fits is read as before
  EXPECT_EQ(f[1], 2.0f);
  EXPECT_EQ(f[2], 0.0f);
}

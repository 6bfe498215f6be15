// Damaged files are refused before the library opens or reads them: classic-format headers that
// would make the library overrun its buffers, classic files cut off before the end of their data,
// NetCDF-4 variables declared far larger than the file can hold, and reads whose size does not fit
// the 32-bit counts of VNetCdf.
#include <netcdf.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "netcdf/VNetCdf.h"
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

  std::vector<uint8_t> bytes() const {
    std::vector<uint8_t> b = {'C', 'D', 'F', 1};
    auto be = [&b](uint32_t v) {
      for (int i = 3; i >= 0; --i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
    };
    auto name = [&](const std::string& s) {
      be(static_cast<uint32_t>(s.size()));
      b.insert(b.end(), s.begin(), s.end());
      while (b.size() % 4) b.push_back(0);
    };
    be(0), be(0x0A), be(dimCount);  // no records; the dimension list
    name(dimName), be(dimLen);
    be(gattName.empty() ? 0 : 0x0C), be(gattName.empty() ? 0 : 1);  // the global attribute list
    if (!gattName.empty()) name(gattName), be(NC_INT), be(1), be(7);
    be(0x0B), be(1), name(varName), be(static_cast<uint32_t>(varDims.size()));
    for (uint32_t d : varDims) be(d);
    be(0), be(0), be(varType), be(4 * dimLen);                          // no attributes; type and vsize
    be(static_cast<uint32_t>(b.size() + 4));                            // begin: the data follow the header
    for (uint32_t k = 0; k < dimLen; ++k) be(0x3FC00000u + (k << 21));  // 1.5, 1.75 as floats
    return b;
  }
};

}  // namespace

TEST(VNetCdfDamaged, ClassicHeadersAndCutFiles) {
  thTest::TempDir dir;
  std::string path = dir.file("bad.nc");
  ClassicFile sound, longDim, longVar, longAtt, manyDims, wide, badId, badType;
  sound.dimName = std::string(NC_MAX_NAME, 'n');  // the longest name allowed
  thTest::writeBytes(dir.file("sound.nc"), sound.bytes());
  VNetCdf nc(dir.file("sound.nc"), false);
  EXPECT_EQ(nc.getDimLen(sound.dimName), 2);
  EXPECT_EQ(ncTest::varData<float>(nc, 0), (std::vector<float>{1.5f, 1.75f}));
  // Names longer than the library's limit, which the library would copy whole into a name buffer.
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
    EXPECT_VEXCEPTION(VNetCdf(path, false), nc_strerror(code));
  }
  // Cut anywhere inside the header: refused, never a crash.
  std::vector<uint8_t> whole = ClassicFile().bytes();
  for (size_t keep = 4; keep + 8 < whole.size(); ++keep) {
    thTest::writeBytes(path, std::vector<uint8_t>(whole.begin(), whole.begin() + keep));
    EXPECT_THROW(VNetCdf(path, false), VCppLib::VException) << keep;
  }

  // Classic files as ncgen writes them, then cut in their data. Fixed variables c, f and v (8 doubles,
  // 64 bytes), then three records of r and s, 8 bytes each: the file ends with the last record.
  const std::string cdl =
      "netcdf c {\ndimensions:\n t = UNLIMITED ;\n x = 8 ;\n two = 2 ;\nvariables:\n char c(two) ;\n"
      " float f ;\n double v(x) ;\n  v:units = \"hours since 1970-01-01\" ;\n int r(t) ;\n"
      " short s(t, two) ;\n  s:r = 1s, 2s ;\n :g = \"global\" ;\ndata:\n c = \"ab\" ;\n f = 3 ;\n"
      " v = 1, 2, 3, 4, 5, 6, 7, 8 ;\n r = 1, 2, 3 ;\n s = 1, 2, 3, 4, 5, 6 ;\n}\n";
  for (const char* kind : {"classic", "64-bit-offset", "cdf5"}) {
    const std::string file = dir.file(std::string(kind) + ".nc");
    thTest::ncgen(cdl, file, kind);
    struct stat st;
    ASSERT_EQ(stat(file.c_str(), &st), 0);
    EXPECT_EQ(VNetCdf(file, false).nvars, 5) << kind;  // whole, it opens
    for (size_t cut : {1, 24, 40}) {                   // inside the last record, all records gone, inside v
      thTest::truncateFile(file, static_cast<size_t>(st.st_size) - cut);
      EXPECT_VEXCEPTION(VNetCdf(file, false),
                        "The NetCDF file '" + file + "' is cut off: its header places data beyond its end.");
    }
  }
}

TEST(VNetCdfDamaged, SizesBeyondTheFileOrThirtyTwoBits) {
  // x declared with 2^26 values of which two are written: HDF5 stores one chunk, a file of some
  // kilobytes that cannot hold 512 MB even at deflate's best of 1032 to 1. Such a read would allocate
  // for the declared size first.
  thTest::TempDir dir;
  const std::string path = dir.file("grid.nc");
  int id = 0, dx = 0, dy = 0, vx = 0, vy = 0;
  ASSERT_EQ(nc_create(path.c_str(), NC_NETCDF4, &id), NC_NOERR);
  nc_def_dim(id, "x", size_t{1} << 26, &dx);
  nc_def_dim(id, "y", 2, &dy);
  nc_def_var(id, "x", NC_DOUBLE, 1, &dx, &vx);
  size_t chunk = 1024;
  nc_def_var_chunking(id, vx, NC_CHUNKED, &chunk);
  nc_def_var(id, "y", NC_DOUBLE, 1, &dy, &vy);
  const double two[2] = {0, 1};
  size_t start = 0, count = 2;
  nc_put_vara_double(id, vx, &start, &count, two);
  nc_put_var_double(id, vy, two);
  ASSERT_EQ(nc_close(id), NC_NOERR);
  struct stat st;
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  ASSERT_LT(st.st_size, 1 << 16);

  VNetCdf nc(path, false);
  EXPECT_VEXCEPTION(nc.getGrid(0, 1, -1), "VNetCdf::getGrid: variable 'x' in '" + path +
                                              "' declares 67108864 values of 8 bytes, more than the file's " +
                                              std::to_string(st.st_size) + " bytes can hold.");
  nc.checkVarFitsFile(1, "test");  // y: two values, written

  const std::string hugePath = dir.file("huge.nc");
  thTest::ncgen(
      "netcdf h {\ndimensions:\n time = UNLIMITED ;\n huge = 3000000000 ;\n a = 70000 ;\n two = 2 ;\n"
      " b = 3 ;\nvariables:\n float h(huge) ;\n float v(two, b, two) ;\n float r(time, a, a) ;\n"
      " float s(time, two) ;\n float w(two, two, b, b) ;\ndata:\n s = 1, 2 ;\n}\n",
      hugePath);
  VNetCdf huge(hugePath, false);
  // Lengths beyond 32 bits wrap in the cache: 3e9 - 2^32, and 70000^2 - 2^32 for the first 3-D record
  // variable (v comes first but does not start on the record dimension); there is no 4-D one.
  EXPECT_EQ((std::vector<int64_t>{huge.getDimLen("huge"), huge.layerLen3D, huge.layerLen4D,
                                  huge.getVarLen(1, false), huge.getVarLen(4, true)}),
            (std::vector<int64_t>{3000000000LL - 4294967296LL, 4900000000LL - 4294967296LL, -1, 12, 36}));
  // A caller sizes its array from getVarLen or dimLen, narrowed or wrapped to 32 bits; the library
  // would write the true count (fill values of a file without data): such reads are refused.
  double small[4] = {}, *p = small;
  EXPECT_VEXCEPTION(huge.getAllDataIntoGivenType<double>(0, p),
                    "VNetCdf::getAllDataIntoGivenType: variable 'h' in '" + hugePath +
                        "' is too large to be read at once.");
  float f[4] = {}, *pf = f;
  EXPECT_THROW(huge.getTimestepData<float>(2, 0, pf), VCppLib::VException);  // the same from a record
  huge.getTimestepData<float>(3, 0, pf);  // a record that fits is read as before
  EXPECT_EQ(std::vector<float>(f, f + 3), (std::vector<float>{1, 2, 0}));
}

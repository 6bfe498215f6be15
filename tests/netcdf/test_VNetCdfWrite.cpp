// Defining, writing and copying through VNetCdf, checked by reading back and through ncdump.
#include <netcdf.h>

#include <cerrno>
#include <cstring>

#include "netcdf/VNetCdf.h"
#include "netcdf/ncTestFiles.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

// Checks that every fragment stands in ncdump's text of the file.
void expectInDump(const std::string& path, const std::string& options,
                  const std::vector<std::string>& parts) {
  std::string dump = thTest::ncdump(path, options);
  for (const auto& part : parts) EXPECT_NE(dump.find(part), std::string::npos) << part << "\n" << dump;
}

}  // namespace

TEST(VNetCdfWrite, ResultLikeFileRoundTrip) {
  thTest::TempDir dir;
  std::string path = dir.file("written.nc");
  {
    VNetCdf nc(path, true);
    EXPECT_EQ(nc.ndims + nc.nvars, 0);
    int32_t tdim = nc.defDim("time", -1), cdim = nc.defDim("cells", 3);
    EXPECT_EQ(std::vector<int32_t>({tdim, nc.unlimdimid, nc.dimLen[0], nc.getDimId("cells")}),
              (std::vector<int32_t>{0, 0, 0, 1}));
    // a second dimension under a name in use: the library's error, and the tables grow all the same
    EXPECT_EQ(nc.defDim("cells", 4), NC_ENAMEINUSE);
    EXPECT_EQ(nc.ndims, 3);
    int32_t time = nc.defVar("time", {tdim}, NC_INT64);
    int32_t temp = nc.defVar("temp", {tdim, cdim}, NC_FLOAT);
    int32_t depth = nc.defVar("depth", {cdim}, NC_DOUBLE);
    int32_t kind = nc.defVar("kind", {cdim}, NC_SHORT);
    int32_t ids = nc.defVar("ids", {cdim}, NC_INT);
    int32_t flags = nc.defVar("flags", {cdim}, NC_BYTE);
    EXPECT_TRUE(nc.nvars == 6 && nc.varNames[temp] == "temp");
    EXPECT_EQ(nc.getDimIdsFromList("cells,time,zz"), (std::vector<int32_t>{1, 0, -1}));
    const char* units = "seconds since 1970-01-01 00:00:00";
    nc_put_att_text(nc.ncid, time, "units", std::strlen(units), units);
    nc.endDef();
    EXPECT_EQ(nc.ndims, 2);  // reread from the file: the refused dimension is gone

    double dv[3] = {1.5, 2.5, 4.0};
    int16_t kv[3] = {-1, 0, 7};
    int32_t iv[3] = {10, 20, 30};
    signed char fv[3] = {1, 2, 3};
    EXPECT_EQ(nc.putVar(depth, dv) + nc.putVar(kind, kv) + nc.putVar(ids, iv), 0);
    EXPECT_VEXCEPTION(nc.putVar(flags, fv), "Unsupported nc type: 1");
    EXPECT_NE(nc.putVar(99, dv), 0);
    for (int32_t t = 0; t < 2; ++t) {
      int64_t tv = 3600LL * (t + 1);
      float rec[3] = {0.5f + t, 1.5f + t, 2.5f + t};
      EXPECT_EQ(nc.putTimestepData(time, t, &tv) + nc.putTimestepData(temp, t, rec), 0);
    }
    EXPECT_VEXCEPTION(nc.putTimestepData(depth, 0, dv), "putTimestepData: first dim must be unlimited.");
  }
  expectInDump(path, "-s",
               {"time = UNLIMITED ; // (2 currently)", "int64 time(time) ;", "float temp(time, cells) ;",
                "temp:_DeflateLevel = 2 ;", "temp:_Shuffle = \"true\" ;", "depth:_DeflateLevel = 2 ;",
                "time = 3600, 7200 ;", "temp =\n  0.5, 1.5, 2.5,\n  1.5, 2.5, 3.5 ;", "depth = 1.5, 2.5, 4 ;",
                "kind = -1, 0, 7 ;", "ids = 10, 20, 30 ;"});
  VNetCdf nc(path, false);
  EXPECT_EQ(nc.getTimeVarValues(-1, ""), (std::vector<int64_t>{3600, 7200}));
  // a reopened file has records: it is not written through this class
  float rec[3] = {};
  EXPECT_VEXCEPTION(nc.putTimestepData(1, 2, rec), "putTimestepData: first dim must be unlimited.");
}

TEST(VNetCdfWrite, BadDefinitionsAndLists) {
  thTest::TempDir dir;
  VNetCdf nc(dir.file("defs.nc"), true);
  int32_t x = nc.defDim("x", 2);
  int32_t v = nc.defVar("v", {x}, NC_DOUBLE);
  EXPECT_EQ(nc.getVarId("v"), v);
  nc.defVar("v", {x}, NC_DOUBLE);  // a name in use: the tables grow all the same
  EXPECT_EQ(nc.nvars, 2);
  EXPECT_VEXCEPTION_HAS(nc.defVar(std::string(300, 'a'), {x}, NC_DOUBLE), "longer than 256");
  int32_t s = nc.defVar("scalar", {}, NC_INT);
  nc.endDef();
  EXPECT_EQ(nc.nvars, 2);
  EXPECT_VEXCEPTION_HAS(nc.putTimestepData(s, 0, &x), "has no dimensions");
  EXPECT_VEXCEPTION_HAS(nc.putTimestepData(7, 0, &x), "out of range");
  try {
    VNetCdf bad(dir.file("no/such/folder.nc"), true);
    ADD_FAILURE() << "a file was created in a missing folder";
  } catch (const VCppLib::VException& e) {
    EXPECT_TRUE(e.message == nc_strerror(ENOENT) || e.message == nc_strerror(EACCES)) << e.message;
  }

  std::string path = dir.file("model.nc");
  thTest::ncgen(ncTest::modelCdl(), path);
  VNetCdf m(path, false);
  EXPECT_EQ(m.getVarIdsFromList("0,d3"), (std::vector<int32_t>{0, 7}));
  EXPECT_EQ(m.getVarIdsFromList("-,99,nope"), (std::vector<int32_t>{0, 99, -1}));  // "-" is an integer
  EXPECT_EQ(m.getDimIdsFromList("x,time,"), (std::vector<int32_t>{4, 0, -1}));
  int32_t* ids = nullptr;
  EXPECT_EQ(m.getDimIdsArr("cells,nol", ids), 2);
  EXPECT_EQ(thTest::take(ids, 2), (std::vector<int32_t>{3, 2}));
}

TEST(VNetCdfWrite, CopyDimensionsVariablesAndAttributes) {
  thTest::TempDir dir;
  std::string srcPath = dir.file("src.nc");
  thTest::ncgen(
      "netcdf src {\ndimensions:\n time = UNLIMITED ;\n x = 3 ;\nvariables:\n"
      " double time(time) ;\n  time:units = \"hours since 1970-01-01\" ;\n"
      " double x(x) ;\n  x:long_name = \"position\" ;\n"
      " float temp(time, x) ;\n  temp:_FillValue = -1.f ;\n  temp:valid = 0.f, 40.f ;\n"
      " short s(x) ;\n  s:b = -1b ;\n  s:ub = 200ub ;\n  s:us = 60000us ;\n  s:ui = 4000000000u ;\n"
      "  s:i64 = -5000000000ll ;\n  s:u64 = 18000000000000000000ull ;\n  s:sh = -3s ;\n"
      "  string s:names = \"one\", \"two\" ;\n"
      " int64 n(x) ;\n"
      " :title = \"source\" ;\n"
      "data:\n time = 1, 2 ;\n x = 0.5, 1.5, 2.5 ;\n temp = 1, 2, 3, 4, 5, 6 ;\n s = 1, 2, 3 ;\n"
      " n = 1, 2, 3000000000 ;\n}\n",
      srcPath);
  VNetCdf src(srcPath, false);

  std::string dstPath = dir.file("dst.nc");
  {
    VNetCdf dst(dstPath, true);
    dst.copyAllDims(src, false);
    EXPECT_TRUE(dst.dimNames == (std::vector<std::string>{"time", "x"}) && dst.unlimdimid == 0);
    dst.copyVarAtts(src, NC_GLOBAL, NC_GLOBAL);
    // a zero-length attribute cannot be written in CDL: put it through the library
    nc_put_att_int(dst.ncid, NC_GLOBAL, "empty", NC_INT, 0, nullptr);
    EXPECT_EQ(VNetCdf::copyAttByName(src.ncid, NC_GLOBAL, "nope", dst.ncid, NC_GLOBAL), NC_ENOTATT);
    dst.copyAllVars(src, true);
    EXPECT_EQ(dst.nvars, 5);
    EXPECT_EQ(VNetCdf::copyAttByName(dst.ncid, NC_GLOBAL, "empty", dst.ncid, 1), 0);
  }
  // Records are not copied; attributes of every type are.
  expectInDump(
      dstPath, "",
      {"time = UNLIMITED ; // (0 currently)", ":title = \"source\" ;", "x:long_name = \"position\" ;",
       "temp:_FillValue = -1.f ;", "temp:valid = 0.f, 40.f ;", "s:b = -1b ;", "s:ub = 200UB ;",
       "s:us = 60000US ;", "s:ui = 4000000000U ;", "s:i64 = -5000000000LL ;",
       "s:u64 = 18000000000000000000ULL ;", "s:sh = -3s ;", "string s:names = \"one\", \"two\" ;",
       "x = 0.5, 1.5, 2.5 ;", "s = 1, 2, 3 ;", "n = 1, 2, 3000000000 ;"});
  VNetCdf back(dstPath, false);
  nc_type type = NC_NAT;
  size_t len = 99;
  EXPECT_EQ(nc_inq_att(back.ncid, 1, "empty", &type, &len), 0);
  EXPECT_TRUE(type == NC_INT && len == 0u);

  // dimensions one by one, renamed or with their variable
  std::string onePath = dir.file("one.nc");
  {
    VNetCdf one(onePath, true);
    EXPECT_VEXCEPTION(one.copyDim(src, 1, true, "y"),
                      "Cannot copy var when renaming dimension (dimensions a mapped by name).");
    one.copyDim(src, 1, false, "y");
    one.copyDim(src, 1, true, "");
    one.copyDim(src, 0, false, "");
    EXPECT_TRUE(one.unlimdimid == 2 && one.dimNames == (std::vector<std::string>{"y", "x", "time"}));
    EXPECT_VEXCEPTION_HAS(one.copyDim(src, 5, false, ""), "dimension id 5 is out of range");
    // a variable whose dimension this file lacks: the library refuses, nothing is raised
    VNetCdf lacking(dir.file("lacking.nc"), true);
    lacking.copyVar(src, 3, false, "");
    int natts = -1;
    nc_inq_natts(lacking.ncid, &natts);
    EXPECT_EQ(natts, 0);  // the attributes of the refused variable do not land on the file
    EXPECT_VEXCEPTION_HAS(one.copyVar(src, 42, false, ""), "is not a variable of");
    one.endDef();
    EXPECT_EQ(one.nvars, 1);
  }
  expectInDump(onePath, "", {"y = 3 ;", "x = 0.5, 1.5, 2.5 ;"});

  // a copy whose target is larger than the source block is refused, not overrun
  VNetCdf big(dir.file("big.nc"), true);
  big.defDim("x", 1000);
  int32_t bx = big.defVar("x", {0}, NC_DOUBLE);
  big.endDef();
  EXPECT_VEXCEPTION_HAS(big.copyVarData(src, 1, bx), "is smaller than its copy");
}

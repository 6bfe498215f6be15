// Defining, writing and copying through VNetCdf, checked by reading back and through ncdump.
#include <netcdf.h>

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

using V = std::vector<int32_t>;

}  // namespace

TEST(VNetCdfWrite, ResultLikeFileRoundTripAndBadDefinitions) {
  thTest::TempDir dir;
  std::string path = dir.file("written.nc");
  EXPECT_THROW(VNetCdf(dir.file("no/such/folder.nc"), true), VCppLib::VException);  // the library's message
  {
    VNetCdf nc(path, true);
    EXPECT_EQ(nc.ndims + nc.nvars, 0);
    int32_t tdim = nc.defDim("time", -1), cdim = nc.defDim("cells", 3);
    EXPECT_EQ((V{tdim, nc.unlimdimid, nc.dimLen[0], nc.getDimId("cells")}), (V{0, 0, 0, 1}));
    // a second dimension or variable under a name in use: the library's error, and the tables grow
    // all the same
    EXPECT_EQ(nc.defDim("cells", 4), NC_ENAMEINUSE);
    int32_t time = nc.defVar("time", {tdim}, NC_INT64), temp = nc.defVar("temp", {tdim, cdim}, NC_FLOAT),
            depth = nc.defVar("depth", {cdim}, NC_DOUBLE), kind = nc.defVar("kind", {cdim}, NC_SHORT),
            ids = nc.defVar("ids", {cdim}, NC_INT), flags = nc.defVar("flags", {cdim}, NC_BYTE),
            scalar = nc.defVar("scalar", {}, NC_INT);
    nc.defVar("temp", {cdim}, NC_DOUBLE);
    EXPECT_TRUE(nc.ndims == 3 && nc.nvars == 8 && nc.varNames[temp] == "temp" && nc.getVarId("ids") == ids);
    EXPECT_VEXCEPTION_HAS(nc.defVar(std::string(300, 'a'), {cdim}, NC_DOUBLE), "longer than 256");
    const char* units = "seconds since 1970-01-01 00:00:00";
    nc_put_att_text(nc.ncid, time, "units", std::strlen(units), units);
    nc.endDef();
    EXPECT_TRUE(nc.ndims == 2 && nc.nvars == 7);         // reread from the file: the refused ones are gone
    EXPECT_TRUE(nc.getTimeVarValues(time, "").empty());  // no records yet

    double dv[3] = {1.5, 2.5, 4.0};
    int16_t kv[3] = {-1, 0, 7};
    int32_t iv[3] = {10, 20, 30};
    signed char fv[3] = {1, 2, 3};
    EXPECT_EQ(nc.putVar(depth, dv) + nc.putVar(kind, kv) + nc.putVar(ids, iv), 0);
    EXPECT_THROW(nc.putVar(flags, fv), VCppLib::VException);  // a byte variable
    EXPECT_NE(nc.putVar(99, dv), 0);
    for (int32_t t = 0; t < 2; ++t) {
      int64_t tv = 3600LL * (t + 1);
      float rec[3] = {0.5f + t, 1.5f + t, 2.5f + t};
      EXPECT_EQ(nc.putTimestepData(time, t, &tv) + nc.putTimestepData(temp, t, rec), 0);
    }
    EXPECT_VEXCEPTION(nc.putTimestepData(depth, 0, dv), "putTimestepData: first dim must be unlimited.");
    EXPECT_VEXCEPTION_HAS(nc.putTimestepData(scalar, 0, iv), "has no dimensions");
    EXPECT_VEXCEPTION_HAS(nc.putTimestepData(9, 0, iv), "out of range");
  }
  expectInDump(path, "-s",
               {"time = UNLIMITED ; // (2 currently)", "int64 time(time) ;", "float temp(time, cells) ;",
                "temp:_DeflateLevel = 2 ;", "temp:_Shuffle = \"true\" ;", "time = 3600, 7200 ;",
                "temp =\n  0.5, 1.5, 2.5,\n  1.5, 2.5, 3.5 ;", "depth = 1.5, 2.5, 4 ;", "kind = -1, 0, 7 ;",
                "ids = 10, 20, 30 ;"});
  VNetCdf nc(path, false);
  // a reopened file has records: it is not written through this class
  EXPECT_THROW(nc.putTimestepData(1, 2, nullptr), VCppLib::VException);
  // Lists of names or ids: a number is taken as the id itself ("-" is an integer), an empty name is none.
  EXPECT_EQ(nc.getVarIdsFromList("0,depth,-,99,nope"), (V{0, 2, 0, 99, -1}));
  EXPECT_EQ(nc.getDimIdsFromList("cells,time,"), (V{1, 0, -1}));
  int32_t* dimIds = nullptr;
  EXPECT_EQ(nc.getDimIdsArr("cells,time", dimIds), 2);
  EXPECT_EQ(thTest::take(dimIds, 2), (V{1, 0}));
}

TEST(VNetCdfWrite, CopyDimensionsVariablesAndAttributes) {
  thTest::TempDir dir;
  std::string srcPath = dir.file("src.nc");
  thTest::ncgen(
      "netcdf src {\ndimensions:\n time = UNLIMITED ;\n x = 3 ;\nvariables:\n double time(time) ;\n"
      "  time:units = \"hours since 1970-01-01\" ;\n double x(x) ;\n  x:long_name = \"position\" ;\n"
      " float temp(time, x) ;\n  temp:_FillValue = -1.f ;\n  temp:valid = 0.f, 40.f ;\n short s(x) ;\n"
      "  s:b = -1b ;\n  s:ub = 200ub ;\n  s:us = 60000us ;\n  s:ui = 4000000000u ;\n"
      "  s:i64 = -5000000000ll ;\n  s:u64 = 18000000000000000000ull ;\n  s:sh = -3s ;\n"
      "  string s:names = \"one\", \"two\" ;\n int64 n(x) ;\n :title = \"source\" ;\ndata:\n time = 1, 2 ;\n"
      " x = 0.5, 1.5, 2.5 ;\n temp = 1, 2, 3, 4, 5, 6 ;\n s = 1, 2, 3 ;\n n = 1, 2, 3000000000 ;\n}\n",
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
    nc_type type = NC_NAT;
    size_t len = 99;
    EXPECT_TRUE(nc_inq_att(dst.ncid, 1, "empty", &type, &len) == 0 && type == NC_INT && len == 0u);
  }
  // Records are not copied; attributes of every type are.
  expectInDump(
      dstPath, "",
      {"time = UNLIMITED ; // (0 currently)", ":title = \"source\" ;", "x:long_name = \"position\" ;",
       "temp:_FillValue = -1.f ;", "temp:valid = 0.f, 40.f ;", "s:b = -1b ;", "s:ub = 200UB ;",
       "s:us = 60000US ;", "s:ui = 4000000000U ;", "s:i64 = -5000000000LL ;",
       "s:u64 = 18000000000000000000ULL ;", "s:sh = -3s ;", "string s:names = \"one\", \"two\" ;",
       "x = 0.5, 1.5, 2.5 ;", "s = 1, 2, 3 ;", "n = 1, 2, 3000000000 ;"});

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
    EXPECT_VEXCEPTION_HAS(one.copyVar(src, 42, false, ""), "is not a variable of");
    one.endDef();
    EXPECT_EQ(one.nvars, 1);
  }
  expectInDump(onePath, "", {"y = 3 ;", "x = 0.5, 1.5, 2.5 ;"});

  // a copy whose target is larger than the source block is refused, not overrun
  VNetCdf big(dir.file("big.nc"), true);
  big.defDim("x", 1000);
  int32_t bx = big.defVar("x", {0}, NC_DOUBLE);
  // a variable whose dimension this file lacks: the library refuses, nothing is raised, and the
  // attributes of the refused variable do not land on the file
  big.copyVar(src, 2, false, "");  // temp(time, x)
  int natts = -1;
  nc_inq_natts(big.ncid, &natts);
  EXPECT_EQ(natts, 0);
  big.endDef();
  EXPECT_VEXCEPTION_HAS(big.copyVarData(src, 1, bx), "is smaller than its copy");
}

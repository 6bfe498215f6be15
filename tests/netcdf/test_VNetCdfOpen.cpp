// Opening, the cached tables, lookups, attributes and whole-variable reads of VNetCdf.
#include <netcdf.h>

#include <type_traits>

#include "netcdf/VNetCdf.h"
#include "netcdf/ncTestFiles.h"
#include "testutil/thTestUtil.h"

using VCppLib::VException;
using VCppLib::VNetCdf;

using V = std::vector<int32_t>;

TEST(VNetCdfOpen, TablesLookupsAttributesReadsAndMoves) {
  ncTest::ModelFile f;
  VNetCdf nc(f.path, false);
  EXPECT_EQ((V{nc.ndims, nc.nvars, nc.ngatts, nc.unlimdimid}), (V{5, 21, 8, 0}));
  EXPECT_EQ(nc.dimNames, (std::vector<std::string>{"time", "layers", "nol", "cells", "x"}));
  EXPECT_EQ(nc.dimLen, (V{2, 2, 2, 3, 4}));
  ASSERT_EQ(nc.varNames.size(), 21u);
  EXPECT_TRUE(nc.varNames[7] == "d3" && nc.varTypes[0] == NC_INT64 && nc.varTypes[7] == NC_DOUBLE);
  EXPECT_EQ(nc.varDimIds[13], (V{0, 1, 2, 3}));
  EXPECT_TRUE(nc.varDimIds[18].empty() && nc.varNdims[18] == 0);
  // fixed3 comes first but does not start on the record dimension; names are byte-exact
  EXPECT_EQ((V{nc.layerLen3D, nc.layerLen4D, nc.getDimId("cells"), nc.getDimId("Time"), nc.getDimLen("x"),
               nc.getDimLen("nope"), nc.getVarId("i4"), nc.getVarId("I4")}),
            (V{2 * 3, 2 * 2 * 3, 3, -1, 4, -1, 13, -1}));
  EXPECT_EQ(nc.getVarIds({"d3", "nope", "time"}, false), (V{7, -1, 0}));
  EXPECT_VEXCEPTION(nc.getVarIds({"d3", "nope"}, true),
                    "VNetCdf:: variable 'nope' not found in '" + f.path + "')");
  EXPECT_EQ((V{nc.findRecordVar(""), nc.findRecordVar("units"), nc.findRecordVar("long_name"),
               nc.findRecordVar("no_such_att")}),
            (V{0, 0, 2, -1}));
  EXPECT_TRUE(nc.hasAtt("title", NC_GLOBAL) && nc.hasAtt("units", 0) && nc.status == 0);
  EXPECT_TRUE(!nc.hasAtt("nope", NC_GLOBAL) && nc.status == NC_ENOTATT);

  nc.status = 12345;
  // a numeric attribute comes back as its first `length` bytes: the int 2 is one byte, 2
  EXPECT_EQ(nc.getAttStr("title", NC_GLOBAL) + "|" + nc.getAttStr("nope", NC_GLOBAL) + "|" +
                nc.getAttStr("nlayers", NC_GLOBAL) + "|" + nc.getAttStr("sa", NC_GLOBAL),
            "test file||\x02|hello");
  EXPECT_EQ(nc.status, 12345);  // getAttStr leaves the status alone
  EXPECT_TRUE(nc.getAttFloat("dval", NC_GLOBAL) == 1.25f && nc.getAttFloat("multi", NC_GLOBAL) == 1.0f &&
              nc.getGlobalAttDouble("dval") == 1.25 && nc.getGlobalAttInt("nlayers") == 2 && nc.status == 0);
  nc.getGlobalAttInt("nope");  // the value is undefined; the status tells
  EXPECT_EQ(nc.status, NC_ENOTATT);

  // a byte reads unsigned
  for (auto [name, v] :
       {std::pair{"dval", 1.25}, {"multi", 1.0}, {"nlayers", 2.0}, {"sval", -7.0}, {"bval", 255.0}})
    EXPECT_DOUBLE_EQ(nc.getAttAsDouble(name, NC_GLOBAL), v) << name;
  EXPECT_VEXCEPTION(nc.getAttAsDouble("u64", NC_GLOBAL), "Unsupported nc type: 11");
  EXPECT_VEXCEPTION(nc.getAttRaw("nope", NC_GLOBAL), nc_strerror(NC_ENOTATT));

  // six values: more than the four of the block
  EXPECT_EQ(ncTest::raw<float>(nc.getAttRaw("multi", NC_GLOBAL), 6)[5], 6.0f);

  // Whole arrays in the caller's type; a variable without dimensions is one value.
  using ncTest::varData;
  EXPECT_EQ(varData<double>(nc, 7), ncTest::values<double>(12, ncTest::d3v));
  EXPECT_EQ(varData<int16_t>(nc, 12), ncTest::values<int16_t>(24, ncTest::s4v));
  EXPECT_EQ(varData<int32_t>(nc, 9), ncTest::values<int32_t>(12, ncTest::i3v));
  EXPECT_EQ(varData<float>(nc, 1).at(11), 11.0f);  // fixed3: 0 .. 11
  EXPECT_EQ(varData<int64_t>(nc, 17), (std::vector<int64_t>{1, 2, 3, 4000000000LL}));
  EXPECT_EQ(varData<double>(nc, 18), (std::vector<double>{7.5}));

  EXPECT_VEXCEPTION(nc.getVarRaw(14), "Unsupported nc type: 1");
  EXPECT_THROW(ncTest::varData<double>(nc, 20), VException);  // ushort
  EXPECT_THROW(nc.getVarRaw(-1), VException);
  EXPECT_VEXCEPTION_HAS(nc.getVarLen(99, false), "variable id 99 is out of range");
  EXPECT_EQ(
      (V{nc.getVarLen(7, false), nc.getVarLen(7, true), nc.getVarLen(18, false), nc.getVarLen(0, true)}),
      (V{12, 6, 1, 1}));
  const std::pair<int, int32_t> sizes[] = {{NC_BYTE, 1},   {NC_USHORT, 2}, {NC_UINT, 4},
                                           {NC_UINT64, 8}, {NC_STRING, 0}, {99, 0}};
  for (auto [type, size] : sizes) EXPECT_EQ(VNetCdf::ncTypeSize(type), size) << type;
  EXPECT_EQ(nc.getTypeSize(NC_DOUBLE) + nc.getTypeSize(NC_SHORT), 10);

  // Copies are refused; a move hands the handle over, and closing is idempotent.
  static_assert(!std::is_copy_constructible_v<VNetCdf> && !std::is_copy_assignable_v<VNetCdf>);
  int id = nc.ncid;
  VNetCdf moved(std::move(nc)), other(f.path, false);
  EXPECT_EQ(nc.ncid, -1);
  other = std::move(moved);
  EXPECT_TRUE(other.ncid == id && other.nvars == 21);
  EXPECT_EQ(ncTest::varData<double>(other, 3), ncTest::values<double>(2, ncTest::d1v));
  other.closeFile();
  other.closeFile();
  EXPECT_EQ(other.ncid, -1);
}

TEST(VNetCdfOpen, BadFiles) {
  thTest::TempDir dir;
  std::string missing = dir.file("none.nc"), text = dir.file("text.nc"), empty = dir.file("empty.nc");
  EXPECT_VEXCEPTION(VNetCdf(missing, false), "No such file: '" + missing + "'");
  thTest::writeText(text, "this is not a NetCDF file at all\n");
  thTest::writeText(empty, "");
  EXPECT_VEXCEPTION(VNetCdf(text, false), nc_strerror(NC_ENOTNC));  // the library's message
  for (const auto& other : {empty, dir.path()}) EXPECT_THROW(VNetCdf(other, false), VException);
  // Truncated at several points: refused with a message, or opened and then read without crashing.
  std::string good = dir.file("model.nc"), cut = dir.file("cut.nc");
  thTest::ncgen(ncTest::modelCdl(), good);
  std::string bytes = thTest::readText(good);
  for (size_t keep : {size_t(8), size_t(600), bytes.size() / 2, bytes.size() - 100}) {
    thTest::writeText(cut, bytes.substr(0, keep));
    try {
      VNetCdf nc(cut, false);
      for (int v = 0; v < nc.nvars; ++v) {
        try {
          VNetCdf::freeRaw(nc.getVarRaw(v));
        } catch (const VException&) {
        }
      }
    } catch (const VException& e) {
      EXPECT_FALSE(e.message.empty());
    }
  }
  // a classic file cut in its data is refused at open: test_VNetCdfClassicHeader.cpp
}

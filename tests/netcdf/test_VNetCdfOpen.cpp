// Opening, the cached tables, lookups, attributes and whole-variable reads of VNetCdf.
#include <netcdf.h>

#include <cstring>
#include <memory>
#include <type_traits>

#include "netcdf/VNetCdf.h"
#include "netcdf/ncTestFiles.h"
#include "testutil/thTestUtil.h"

using VCppLib::VException;
using VCppLib::VNetCdf;

namespace {

// True when text is the library's message for some error code.
bool isLibraryMessage(const std::string& text) {
  for (int code = -200; code < 0; ++code)
    if (text == nc_strerror(code)) return true;
  return false;
}

}  // namespace

TEST(VNetCdfOpen, TablesLookupsAndMoves) {
  ncTest::ModelFile f;
  VNetCdf nc(f.path, false);
  EXPECT_EQ(std::vector<int32_t>({nc.ndims, nc.nvars, nc.ngatts, nc.unlimdimid}),
            (std::vector<int32_t>{5, 21, 8, 0}));
  EXPECT_EQ(nc.dimNames, (std::vector<std::string>{"time", "layers", "nol", "cells", "x"}));
  EXPECT_EQ(nc.dimLen, (std::vector<int32_t>{2, 2, 2, 3, 4}));
  ASSERT_EQ(nc.varNames.size(), 21u);
  EXPECT_TRUE(nc.varNames[7] == "d3" && nc.varTypes[0] == NC_INT64 && nc.varTypes[7] == NC_DOUBLE);
  EXPECT_EQ(nc.varDimIds[13], (std::vector<int32_t>{0, 1, 2, 3}));
  EXPECT_TRUE(nc.varDimIds[18].empty() && nc.varNdims[18] == 0);
  // fixed3 comes first but does not start on the record dimension; names are byte-exact
  EXPECT_EQ(
      std::vector<int32_t>({nc.layerLen3D, nc.layerLen4D, nc.getDimId("cells"), nc.getDimId("Time"),
                            nc.getDimLen("x"), nc.getDimLen("nope"), nc.getVarId("i4"), nc.getVarId("I4")}),
      (std::vector<int32_t>{2 * 3, 2 * 2 * 3, 3, -1, 4, -1, 13, -1}));
  EXPECT_EQ(nc.getVarIds({"d3", "nope", "time"}, false), (std::vector<int32_t>{7, -1, 0}));
  EXPECT_VEXCEPTION(nc.getVarIds({"d3", "nope"}, true),
                    "VNetCdf:: variable 'nope' not found in '" + f.path + "')");
  EXPECT_EQ(std::vector<int32_t>({nc.findRecordVar(""), nc.findRecordVar("units"),
                                  nc.findRecordVar("long_name"), nc.findRecordVar("no_such_att")}),
            (std::vector<int32_t>{0, 0, 2, -1}));
  // Copies are refused; a move hands the handle over, and closing is idempotent.
  static_assert(!std::is_copy_constructible_v<VNetCdf> && !std::is_copy_assignable_v<VNetCdf>);
  int id = nc.ncid;
  VNetCdf moved(std::move(nc)), other(f.path, false);
  EXPECT_EQ(nc.ncid, -1);
  other = std::move(moved);
  EXPECT_TRUE(other.ncid == id && other.nvars == 21);
  double* d = nullptr;
  EXPECT_EQ(other.getVarData<double>(3, d), 2);
  std::unique_ptr<double[]> own(d);
  EXPECT_DOUBLE_EQ(d[1], ncTest::d1v(1));
  other.closeFile();
  other.closeFile();
  EXPECT_EQ(other.ncid, -1);

  // Without a record dimension there are no layer lengths; a length beyond 32 bits is narrowed.
  std::string path = f.dir.file("fixed.nc");
  thTest::ncgen(
      "netcdf f {\ndimensions:\n a = 2 ;\n b = 3 ;\n huge = 3000000000 ;\n"
      "variables:\n float v(a, b, a) ;\n float w(a, a, b, b) ;\n}\n",
      path);
  VNetCdf fixed(path, false);
  EXPECT_EQ(std::vector<int32_t>({fixed.unlimdimid, fixed.layerLen3D, fixed.layerLen4D}),
            (std::vector<int32_t>{-1, -1, -1}));
  EXPECT_EQ(fixed.getDimLen("huge"), static_cast<int32_t>(3000000000LL - 4294967296LL));
  EXPECT_EQ(fixed.getVarLen(0, false) + fixed.getVarLen(1, true), 12 + 36);
}

TEST(VNetCdfOpen, BadFiles) {
  thTest::TempDir dir;
  std::string missing = dir.file("none.nc"), text = dir.file("text.nc"), empty = dir.file("empty.nc");
  EXPECT_VEXCEPTION(VNetCdf(missing, false), "No such file: '" + missing + "'");
  thTest::writeText(text, "this is not a NetCDF file at all\n");
  thTest::writeText(empty, "");
  for (const auto& path : {text, empty, dir.path()}) {
    try {
      VNetCdf nc(path, false);
      ADD_FAILURE() << path << " was opened";
    } catch (const VException& e) {
      EXPECT_TRUE(isLibraryMessage(e.message)) << e.message;
    }
  }
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
  // a classic file cut in its data is refused at open: test_VNetCdfCutOff.cpp
}

TEST(VNetCdfOpen, AttributesAndTheirStatus) {
  ncTest::ModelFile f;
  VNetCdf nc(f.path, false);
  EXPECT_TRUE(nc.hasAtt("title", NC_GLOBAL) && nc.hasAtt("units", 0));
  EXPECT_EQ(nc.status, 0);
  EXPECT_FALSE(nc.hasAtt("nope", NC_GLOBAL));
  EXPECT_EQ(nc.status, NC_ENOTATT);

  nc.status = 12345;
  // a numeric attribute comes back as its first `length` bytes: the int 2 is one byte, 2
  EXPECT_EQ(nc.getAttStr("title", NC_GLOBAL) + "|" + nc.getAttStr("nope", NC_GLOBAL) + "|" +
                nc.getAttStr("nlayers", NC_GLOBAL) + "|" + nc.getAttStr("sa", NC_GLOBAL),
            "test file||\x02|hello");
  EXPECT_EQ(nc.status, 12345);  // getAttStr leaves the status alone
  EXPECT_TRUE(nc.getAttFloat("dval", NC_GLOBAL) == 1.25f && nc.getAttFloat("multi", NC_GLOBAL) == 1.0f &&
              nc.getGlobalAttDouble("dval") == 1.25 && nc.getGlobalAttInt("nlayers") == 2 && nc.status == 0);
  nc.getGlobalAttInt("nope");
  EXPECT_EQ(nc.status, NC_ENOTATT);

  // a byte reads unsigned
  for (auto [name, v] :
       {std::pair{"dval", 1.25}, {"multi", 1.0}, {"nlayers", 2.0}, {"sval", -7.0}, {"bval", 255.0}})
    EXPECT_DOUBLE_EQ(nc.getAttAsDouble(name, NC_GLOBAL), v) << name;
  EXPECT_VEXCEPTION(nc.getAttAsDouble("u64", NC_GLOBAL), "Unsupported nc type: 11");
  EXPECT_VEXCEPTION(nc.getAttRaw("nope", NC_GLOBAL), nc_strerror(NC_ENOTATT));

  void* raw = nc.getAttRaw("multi", NC_GLOBAL);  // six values: more than the four of the block
  float six[6];
  std::memcpy(six, raw, sizeof six);
  VNetCdf::freeRaw(raw);
  EXPECT_EQ(six[5], 6.0f);
}

TEST(VNetCdfOpen, WholeVariableReadsInTheStoredType) {
  ncTest::ModelFile f;
  VNetCdf nc(f.path, false);
  // Whole arrays in the caller's type; a variable without dimensions is one value.
  auto all = [&nc]<typename T>(int32_t varid, T) {
    T* data = nullptr;
    int32_t n = nc.getVarData<T>(varid, data);
    std::vector<T> v(data, data + n);
    delete[] data;
    return v;
  };
  EXPECT_EQ(all(7, 0.0), ncTest::values<double>(12, ncTest::d3v));
  EXPECT_EQ(all(12, int16_t()), ncTest::values<int16_t>(24, ncTest::s4v));
  EXPECT_EQ(all(9, int32_t()), ncTest::values<int32_t>(12, ncTest::i3v));
  EXPECT_EQ(all(1, 0.0f).at(11), 11.0f);  // fixed3: 0 .. 11
  EXPECT_EQ(all(17, int64_t()), (std::vector<int64_t>{1, 2, 3, 4000000000LL}));
  EXPECT_EQ(all(18, 0.0), (std::vector<double>{7.5}));

  double* d = nullptr;
  EXPECT_VEXCEPTION(nc.getVarRaw(14), "Unsupported nc type: 1");
  EXPECT_VEXCEPTION(nc.getVarData<double>(20, d), "Unsupported nc type: 8");
  EXPECT_VEXCEPTION_HAS(nc.getVarRaw(-1), "out of range");
  EXPECT_VEXCEPTION_HAS(nc.getVarLen(99, false), "variable id 99 is out of range");
  EXPECT_EQ(std::vector<int32_t>({nc.getVarLen(7, false), nc.getVarLen(7, true), nc.getVarLen(18, false),
                                  nc.getVarLen(0, true)}),
            (std::vector<int32_t>{12, 6, 1, 1}));
  const std::pair<int, int32_t> sizes[] = {{NC_BYTE, 1},   {NC_USHORT, 2}, {NC_UINT, 4},
                                           {NC_UINT64, 8}, {NC_STRING, 0}, {99, 0}};
  for (auto [type, size] : sizes) EXPECT_EQ(VNetCdf::ncTypeSize(type), size) << type;
  EXPECT_EQ(nc.getTypeSize(NC_DOUBLE) + nc.getTypeSize(NC_SHORT), 10);
}

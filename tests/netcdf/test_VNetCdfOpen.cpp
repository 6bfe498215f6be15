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

struct ModelFile {
  thTest::TempDir dir;
  std::string path = dir.file("model.nc");
  ModelFile() { thTest::ncgen(ncTest::modelCdl(), path); }
};

}  // namespace

TEST(VNetCdfOpen, TablesOfAnOpenedFile) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  EXPECT_GE(nc.ncid, 0);
  EXPECT_EQ(nc.deflateLevel, 2);
  EXPECT_EQ(nc.reservedFlag, 1);
  EXPECT_EQ(nc.fileName, f.path);
  EXPECT_EQ(nc.ndims, 5);
  EXPECT_EQ(nc.nvars, 21);
  EXPECT_EQ(nc.ngatts, 8);
  EXPECT_EQ(nc.unlimdimid, 0);
  EXPECT_EQ(nc.dimNames, (std::vector<std::string>{"time", "layers", "nol", "cells", "x"}));
  EXPECT_EQ(nc.dimLen, (std::vector<int32_t>{2, 2, 2, 3, 4}));
  ASSERT_EQ(nc.varNames.size(), 21u);
  EXPECT_EQ(nc.varNames[7], "d3");
  EXPECT_EQ(nc.varTypes[0], NC_INT64);
  EXPECT_EQ(nc.varTypes[7], NC_DOUBLE);
  EXPECT_EQ(nc.varNdims[10], 4);
  EXPECT_EQ(nc.varNdims[18], 0);
  EXPECT_EQ(nc.varDimIds[13], (std::vector<int32_t>{0, 1, 2, 3}));
  EXPECT_TRUE(nc.varDimIds[18].empty());
  // fixed3 comes first but does not start on the record dimension
  EXPECT_EQ(nc.layerLen3D, 2 * 3);
  EXPECT_EQ(nc.layerLen4D, 2 * 2 * 3);
  EXPECT_EQ(nc.scaleTab, nullptr);
  EXPECT_EQ(nc.missingTab, nullptr);
  nc.closeFile();
  EXPECT_EQ(nc.ncid, -1);
  nc.closeFile();  // idempotent
  EXPECT_EQ(nc.ncid, -1);
}

TEST(VNetCdfOpen, NoRecordDimensionAndNarrowedLength) {
  thTest::TempDir dir;
  std::string path = dir.file("fixed.nc");
  thTest::ncgen("netcdf f {\ndimensions:\n a = 2 ;\n b = 3 ;\n huge = 3000000000 ;\n"
                "variables:\n float v(a, b, a) ;\n float w(a, a, b, b) ;\n}\n", path);
  VNetCdf nc(path, false);
  EXPECT_EQ(nc.unlimdimid, -1);
  EXPECT_EQ(nc.layerLen3D, -1);
  EXPECT_EQ(nc.layerLen4D, -1);
  EXPECT_EQ(nc.getDimLen("huge"), static_cast<int32_t>(3000000000LL - 4294967296LL));
  EXPECT_EQ(nc.getVarLen(0, false), 12);
  EXPECT_EQ(nc.getVarLen(1, true), 36);
}

TEST(VNetCdfOpen, CopyIsRefusedAndMoveHandsTheHandleOver) {
  static_assert(!std::is_copy_constructible_v<VNetCdf>);
  static_assert(!std::is_copy_assignable_v<VNetCdf>);
  ModelFile f;
  VNetCdf a(f.path, false);
  int id = a.ncid;
  VNetCdf b(std::move(a));
  EXPECT_EQ(a.ncid, -1);
  EXPECT_EQ(b.ncid, id);
  EXPECT_EQ(b.getVarId("d3"), 7);
  VNetCdf c(f.path, false);
  c = std::move(b);
  EXPECT_EQ(c.ncid, id);
  EXPECT_EQ(c.nvars, 21);
  double* d = nullptr;
  EXPECT_EQ(c.getVarData<double>(3, d), 2);
  std::unique_ptr<double[]> own(d);
  EXPECT_DOUBLE_EQ(d[1], ncTest::d1v(1));
}

TEST(VNetCdfOpen, BadFiles) {
  thTest::TempDir dir;
  std::string missing = dir.file("none.nc");
  EXPECT_VEXCEPTION(VNetCdf(missing, false), "No such file: '" + missing + "'");

  std::string text = dir.file("text.nc");
  thTest::writeText(text, "this is not a NetCDF file at all\n");
  std::string empty = dir.file("empty.nc");
  thTest::writeText(empty, "");
  for (const auto& path : {text, empty, dir.path()}) {
    try {
      VNetCdf nc(path, false);
      ADD_FAILURE() << path << " was opened";
    } catch (const VException& e) {
      EXPECT_TRUE(isLibraryMessage(e.message)) << e.message;
    }
  }

  // truncated at several points: either refused with the library's message, or opened and
  // then read without crashing
  std::string good = dir.file("model.nc");
  thTest::ncgen(ncTest::modelCdl(), good);
  std::string bytes = thTest::readText(good);
  for (size_t keep : {size_t(8), size_t(600), bytes.size() / 2, bytes.size() - 100}) {
    std::string cut = dir.file("cut" + std::to_string(keep) + ".nc");
    thTest::writeText(cut, bytes.substr(0, keep));
    try {
      VNetCdf nc(cut, false);
      for (int v = 0; v < nc.nvars; ++v) {
        try {
          VCppLib::VNetCdf::freeRaw(nc.getVarRaw(v));
        } catch (const VException&) {
        }
      }
    } catch (const VException& e) {
      EXPECT_FALSE(e.message.empty());
    }
  }
}

TEST(VNetCdfOpen, LookupsByName) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  EXPECT_EQ(nc.getDimId("cells"), 3);
  EXPECT_EQ(nc.getDimId("Time"), -1);  // byte-exact
  EXPECT_EQ(nc.getDimLen("x"), 4);
  EXPECT_EQ(nc.getDimLen("nope"), -1);
  EXPECT_EQ(nc.getVarId("i4"), 13);
  EXPECT_EQ(nc.getVarId("I4"), -1);
  EXPECT_EQ(nc.getVarIds({"d3", "nope", "time"}, false), (std::vector<int32_t>{7, -1, 0}));
  EXPECT_VEXCEPTION(nc.getVarIds({"d3", "nope"}, true),
                    "VNetCdf:: variable 'nope' not found in '" + f.path + "')");
  EXPECT_EQ(nc.findRecordVar(""), 0);
  EXPECT_EQ(nc.findRecordVar("units"), 0);
  EXPECT_EQ(nc.findRecordVar("long_name"), 2);
  EXPECT_EQ(nc.findRecordVar("no_such_att"), -1);
}

TEST(VNetCdfOpen, AttributesAndTheirStatus) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  EXPECT_TRUE(nc.hasAtt("title", NC_GLOBAL));
  EXPECT_EQ(nc.status, 0);
  EXPECT_FALSE(nc.hasAtt("nope", NC_GLOBAL));
  EXPECT_EQ(nc.status, NC_ENOTATT);
  EXPECT_TRUE(nc.hasAtt("units", 0));

  nc.status = 12345;
  EXPECT_EQ(nc.getAttStr("title", NC_GLOBAL), "test file");
  EXPECT_EQ(nc.getAttStr("units", 0), "seconds since 1970-01-01 00:00:00");
  EXPECT_EQ(nc.getAttStr("nope", NC_GLOBAL), "");
  EXPECT_EQ(nc.status, 12345);  // getAttStr leaves the status alone
  // a numeric attribute comes back as its first `length` bytes: the int 2 is one byte, 2
  EXPECT_EQ(nc.getAttStr("nlayers", NC_GLOBAL), std::string(1, '\x02'));
  EXPECT_EQ(nc.getAttStr("sa", NC_GLOBAL), "hello");

  EXPECT_FLOAT_EQ(nc.getAttFloat("dval", NC_GLOBAL), 1.25f);
  EXPECT_EQ(nc.status, 0);
  EXPECT_FLOAT_EQ(nc.getAttFloat("multi", NC_GLOBAL), 1.0f);
  nc.getAttFloat("nope", NC_GLOBAL);
  EXPECT_EQ(nc.status, NC_ENOTATT);
  EXPECT_DOUBLE_EQ(nc.getGlobalAttDouble("dval"), 1.25);
  EXPECT_EQ(nc.getGlobalAttInt("nlayers"), 2);
  EXPECT_EQ(nc.status, 0);
  nc.getGlobalAttInt("nope");
  EXPECT_EQ(nc.status, NC_ENOTATT);

  EXPECT_DOUBLE_EQ(nc.getAttAsDouble("dval", NC_GLOBAL), 1.25);
  EXPECT_DOUBLE_EQ(nc.getAttAsDouble("multi", NC_GLOBAL), 1.0);
  EXPECT_DOUBLE_EQ(nc.getAttAsDouble("nlayers", NC_GLOBAL), 2.0);
  EXPECT_DOUBLE_EQ(nc.getAttAsDouble("sval", NC_GLOBAL), -7.0);
  EXPECT_DOUBLE_EQ(nc.getAttAsDouble("bval", NC_GLOBAL), 255.0);  // a byte reads unsigned
  EXPECT_VEXCEPTION(nc.getAttAsDouble("title", NC_GLOBAL), "Unsupported nc type: 2");
  EXPECT_VEXCEPTION(nc.getAttAsDouble("u64", NC_GLOBAL), "Unsupported nc type: 11");
  EXPECT_VEXCEPTION(nc.getAttAsDouble("nope", NC_GLOBAL), nc_strerror(NC_ENOTATT));
  EXPECT_VEXCEPTION(nc.getAttRaw("nope", NC_GLOBAL), nc_strerror(NC_ENOTATT));

  void* raw = nc.getAttRaw("multi", NC_GLOBAL);  // six values: more than the four of the block
  float six[6];
  std::memcpy(six, raw, sizeof six);
  VNetCdf::freeRaw(raw);
  EXPECT_EQ(six[5], 6.0f);
  raw = nc.getAttRaw("sval", NC_GLOBAL);
  int16_t sv;
  std::memcpy(&sv, raw, 2);
  VNetCdf::freeRaw(raw);
  EXPECT_EQ(sv, -7);
}

TEST(VNetCdfOpen, WholeVariableReadsInTheStoredType) {
  ModelFile f;
  VNetCdf nc(f.path, false);
  int64_t* t = static_cast<int64_t*>(nc.getVarRaw(0));
  EXPECT_EQ(t[0], 0);
  EXPECT_EQ(t[1], 3600);
  VNetCdf::freeRaw(t);

  double* d = nullptr;
  ASSERT_EQ(nc.getVarData<double>(7, d), 12);
  for (int k = 0; k < 12; ++k) EXPECT_EQ(d[k], ncTest::d3v(k));
  delete[] d;
  int16_t* s = nullptr;
  ASSERT_EQ(nc.getVarData<int16_t>(12, s), 24);
  for (int k = 0; k < 24; ++k) EXPECT_EQ(s[k], ncTest::s4v(k));
  delete[] s;
  int32_t* i = nullptr;
  ASSERT_EQ(nc.getVarData<int32_t>(9, i), 12);
  EXPECT_EQ(i[11], ncTest::i3v(11));
  delete[] i;
  float* fl = nullptr;
  ASSERT_EQ(nc.getVarData<float>(1, fl), 12);  // fixed3: 0 .. 11
  EXPECT_EQ(fl[11], 11.0f);
  delete[] fl;
  int64_t* big = nullptr;
  ASSERT_EQ(nc.getVarData<int64_t>(17, big), 4);
  EXPECT_EQ(big[3], 4000000000LL);
  delete[] big;
  ASSERT_EQ(nc.getVarData<double>(18, d), 1);  // no dimensions: one value
  EXPECT_EQ(d[0], 7.5);
  delete[] d;

  EXPECT_VEXCEPTION(nc.getVarRaw(14), "Unsupported nc type: 1");
  EXPECT_VEXCEPTION(nc.getVarRaw(16), "Unsupported nc type: 2");
  EXPECT_VEXCEPTION(nc.getVarData<double>(20, d), "Unsupported nc type: 8");
  EXPECT_VEXCEPTION_HAS(nc.getVarRaw(21), "out of range");
  EXPECT_VEXCEPTION_HAS(nc.getVarRaw(-1), "out of range");
  EXPECT_VEXCEPTION_HAS(nc.getVarLen(99, false), "variable id 99 is out of range");

  EXPECT_EQ(nc.getVarLen(7, false), 12);
  EXPECT_EQ(nc.getVarLen(7, true), 6);
  EXPECT_EQ(nc.getVarLen(18, false), 1);
  EXPECT_EQ(nc.getVarLen(0, true), 1);

  EXPECT_EQ(VNetCdf::ncTypeSize(NC_BYTE), 1);
  EXPECT_EQ(VNetCdf::ncTypeSize(NC_USHORT), 2);
  EXPECT_EQ(VNetCdf::ncTypeSize(NC_UINT), 4);
  EXPECT_EQ(VNetCdf::ncTypeSize(NC_UINT64), 8);
  EXPECT_EQ(VNetCdf::ncTypeSize(NC_STRING), 0);
  EXPECT_EQ(VNetCdf::ncTypeSize(99), 0);
  EXPECT_EQ(nc.getTypeSize(NC_DOUBLE), 8);
  EXPECT_EQ(nc.getTypeSize(NC_SHORT), 2);
}

TEST(VNetCdfOpen, ClassicFileWithItsDataCutOff) {
  // a classic file keeps its header at the front: cut in the data, it still opens
  thTest::TempDir dir;
  std::string cdl = dir.file("c.cdl");
  std::string path = dir.file("c.nc");
  thTest::writeText(cdl, "netcdf c {\ndimensions:\n time = UNLIMITED ;\n n = 50 ;\nvariables:\n"
                         " double time(time) ;\n time:units = \"hours since 1970-01-01\" ;\n"
                         " float v(time, n) ;\n double w(n) ;\ndata:\n time = 1, 2, 3 ;\n"
                         " v = " + ncTest::cdlList(150, [](int k) { return k; }) + " ;\n"
                         " w = " + ncTest::cdlList(50, [](int k) { return k; }) + " ;\n}\n");
  ASSERT_EQ(thTest::runCommand(std::string(THAL_NCGEN) + " -k classic -o '" + path + "' '" + cdl + "'"), 0);
  std::string bytes = thTest::readText(path);
  thTest::truncateFile(path, bytes.size() / 2);
  VNetCdf nc(path, false);
  EXPECT_EQ(nc.nvars, 3);
  for (int v = 0; v < nc.nvars; ++v) VNetCdf::freeRaw(nc.getVarRaw(v));
  float rec[50];
  float* pr = rec;
  nc.getTimestepData<float>(1, 2, pr);
  double all[150];
  double* pa = all;
  nc.getAllDataIntoGivenType<double>(1, pa);
  EXPECT_EQ(nc.getTimeVarValues(-1, "").size(), 3u);
}

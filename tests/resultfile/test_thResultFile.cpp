// The result file object: enumerations, format detection, dispatch by format, file names, items,
// static items, the report and backups.

#include <functional>

#include "resultfile/thResultFile.h"
#include "support/VFiles.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;

TEST(ResultFile, FormatTexts) {
  struct Row {
    const char* given;
    fileFmtEnum f;
    int value;
    const char* text;
  };
  const Row rows[] = {{"emt", EMT, 0, "EMT"},
                      {"Emb", EMB, 1, "EMB"},
                      {"text0D", TEXT0D, 2, "TEXT0D"},
                      {"TEXT1d", TEXT1D, 3, "TEXT1D"},
                      {"emf", EMF, 4, "EMF"},
                      {"nc", NC, 10, "NC"},
                      {"Restart", RESTART, 100, "RESTART"},
                      {"decoupled", DECOUPLED, 101, "DECOUPLED"},
                      {"MESH", MESH, 1000, "MESH"}};
  for (const Row& r : rows) {
    EXPECT_EQ(str2fileFmtEnum(r.given), r.f) << r.given;
    EXPECT_EQ(static_cast<int>(r.f), r.value);
    EXPECT_EQ(fileFmtEnum2str(r.f), r.text);
  }
  EXPECT_VEXCEPTION(str2fileFmtEnum("txt"), "str2fileFmtEnum: invalid format definition (TXT).");
  for (int bad : {-1, 5})
    EXPECT_VEXCEPTION(fileFmtEnum2str(static_cast<fileFmtEnum>(bad)),
                      "fileFmtEnum2str: unsupported fileFmtEnum");
}

TEST(ResultFile, FormatFromFileAndHeaderDispatch) {
  thTest::TempDir dir;
  for (std::string n : {"a.NC", "a.nc", "a.emf", "a.emt", "a.txt", "noext"})
    thTest::writeText(dir.file(n), "x");
  thResultFile rf("", -1);
  EXPECT_EQ(rf.format, -1);
  EXPECT_EQ(rf.versionCutoffDT, 1338508800);  // 2012-06-01 00:00:00
  EXPECT_EQ(rf.getFormatFromFile(dir.file("a.NC")) + rf.getFormatFromFile(dir.file("a.nc")), 2 * NC);
  EXPECT_EQ(rf.getFormatFromFile(dir.file("missing.nc")), -1);  // a missing file: -1, no exception
  // without a "." the whole name is taken
  EXPECT_VEXCEPTION_HAS(rf.getFormatFromFile(dir.file("noext")), "invalid format definition (/TMP/");

  // a missing file reads nothing at construction, and readHeader then gives -1
  thResultFile missing(dir.file("missing.nc"), -1);
  EXPECT_EQ(missing.format + missing.readHeader(), -2);
  EXPECT_VEXCEPTION(thResultFile(dir.file("a.txt"), -1), "str2fileFmtEnum: invalid format definition (TXT).");
  // EMT is write-only and reads nothing; EMF and unknown formats cannot be read at all
  thResultFile emt(dir.file("a.emt"), -1);
  EXPECT_TRUE(emt.format == EMT && emt.itemNameVec.empty());
  EXPECT_VEXCEPTION(thResultFile(dir.file("a.emf"), -1), "thResultFile::readItemData undefined format.");
  thResultFile unknown("", -1);
  unknown.filename = dir.file("a.nc");
  EXPECT_VEXCEPTION(unknown.readHeader(), "thResultFile::readItemData undefined format.");
}

TEST(ResultFile, ReadMessagesByFormat) {
  thTest::TempDir dir;
  thTest::writeSmallModelNc(dir.file("s.nc"));
  thResultFile s(dir.file("s.nc"), -1);  // items, elements and timesteps are all there
  // One message of each family; each reader words its own (the readers of layers and series name
  // EMT "TEXT1", and readItemData's "undefined format." stands for every format it cannot read).
  float f[9];
  float* fp = f;
  double db[9];
  double* dp = db;
  double* d = nullptr;
  double** rows = nullptr;
  int32_t lines = 0;
  auto fails = [&](int32_t format, const std::function<void()>& call, const std::string& msg) {
    s.format = format;
    EXPECT_VEXCEPTION(call(), msg);
  };
  const std::string rid = "thResultFile::readItemData ", undef = rid + "undefined format.";
  fails(
      EMT, [&] { s.readItemData(0, 0, f); }, rid + "Not implemented for EMT files.");
  fails(
      TEXT0D, [&] { s.readItemData(0, 0, db); }, rid + "Data cannot be read by timestep for TEXT0D files.");
  fails(
      TEXT1D, [&] { s.readItemData(0, 0, f); }, undef);
  fails(
      EMT, [&] { s.readLayer(0, 0, 0, &fp); }, "thResultFile::readLayer Not implemented for TEXT1 files.");
  fails(
      DECOUPLED, [&] { s.readProfile(0, 0, 0, f); }, "thResultFile::readProfile undefined format.");
  fails(
      EMB, [&] { s.readNextTimestep(&rows, &lines); },
      "thResultFile::readNextTimestep Not implemented for EMB files.");
  s.freeTimestepData(rows);  // nothing to free outside the text tables
  fails(
      EMT, [&] { s.readTimeSeriesProfile(0, 0, &d, 0, 3); },
      "thResultFile::readTimeSeriesProfile Not implemented for TEXT1 files.");
  fails(
      NC, [&] { s.readTimeSeriesUET(0, nullptr, nullptr, 0, 0, -1, 0, 0); },
      "thResultFile::readTimeSeries unsuppored format.");
  // RESTART is not among the formats of sequential reading; the flags have moved already
  fails(
      RESTART, [&] { s.readNextItemData(0, &dp); }, undef);
  EXPECT_EQ(s.itemRead[0], 1);
}

TEST(ResultFile, MeshFiles) {
  thTest::TempDir dir;
  thTest::writeText(dir.file("one.mesh"), "4\t1\n0\t0\n1\t0\n1\t1\n0\t1\n0\t1\t2\t3\n");  // one quadrilateral
  thResultFile rf(dir.file("one.mesh"), -1);
  const thMesh2D& m = rf.mInfo.mesh2d;
  EXPECT_TRUE(rf.format == MESH && m.noe == 1 && m.nvf == 4 && rf.itemNameVec.empty());
  EXPECT_EQ(rf.readHeader(), 0);
}

TEST(ResultFile, PhysicalFileNames) {
  struct Row {
    const char* name;
    int fileNo;
    const char* expect;
  };
  const Row rows[] = {{"dir/run.emb", 0, "dir/run.emb"},
                      {"dir/run.emb", 1, "dir/run^1.emb"},
                      {"dir/run.emb", 12, "dir/run^12.emb"},
                      {"a.b.nc", 12, "a.b^12.nc"},
                      {"run", 3, "run"},
                      {".nc", 3, ".nc"}};  // no "." at all, or only the first
  thResultFile rf("", -1);
  for (const Row& r : rows) {
    rf.filename = r.name;
    rf.fileNo = r.fileNo;
    EXPECT_EQ(rf.getFileName(), r.expect);
  }
}

TEST(ResultFile, ItemsStaticItemsAndReport) {
  thResultFile rf("", -1);
  for (auto [name, len] : {std::pair{"salt", 100}, {"temp", 100}, {"salt", 7}}) rf.addItem(name, len);
  // the first of a name; none: the number of items, not -1
  EXPECT_EQ((std::vector<int>{rf.getItemNo("salt"), rf.getItemNo("temp"), rf.getItemNo("Salt")}),
            (std::vector<int>{0, 1, 3}));
  // getItemOffset(number of items) is the values of one timestep
  EXPECT_EQ((std::vector<int>{rf.getItemOffset(0), rf.getItemOffset(2), rf.getItemOffset(3)}),
            (std::vector<int>{0, 200, 207}));
  EXPECT_VEXCEPTION_HAS(rf.getItemOffset(4), "item number 4 is out of range");

  float fl[3] = {1, 2, 3};
  int32_t in[2] = {4, 5};
  char ch[5] = {'a', 'b', 'c', 'd', 'e'};
  rf.addStaticItem("a", fl, 3);
  rf.addStaticItem("b", in, 2);     // the number forms go to the front
  rf.addStaticItem("c", ch, 5, 1);  // the char form at its position
  rf.addStaticItem("d", ch, 2, 9);  // or at the end
  struct Si {
    const char* name;
    const char* type;
    int bytes;
  };
  const Si expect[] = {{"b", "int", 8}, {"c", "char", 5}, {"a", "float", 12}, {"d", "char", 2}};
  ASSERT_EQ(rf.staticItems.size(), 4u);
  for (int i = 0; i < 4; ++i)
    EXPECT_TRUE(rf.staticItems[i].name == expect[i].name && rf.staticItems[i].typeName == expect[i].type &&
                rf.staticItems[i].noBytes == expect[i].bytes)
        << i;
  EXPECT_EQ(rf.staticItems[2].data, reinterpret_cast<uint8_t*>(fl));  // kept by reference
  rf.addStaticItem("a", fl, 0);  // replaces the old "a"; no values, no data
  ASSERT_EQ(rf.staticItems.size(), 4u);
  EXPECT_TRUE(rf.staticItems[0].name == "a" && rf.staticItems[0].data == nullptr);

  rf.filename = "r.nc";
  rf.format = NC;
  EXPECT_EQ(rf.toString(9),
            "Filename:\tr.nc\nFormat:\tNC\nStatic items:\n\ta, length=0\n\tb, length=2\n\tc, length=5\n"
            "\td, length=2\nItems:\n\tsalt, length=100\n\ttemp, length=100\n\tsalt, length=7\n");
  rf.format = -1;
  EXPECT_VEXCEPTION(rf.toString(0), "fileFmtEnum2str: unsupported fileFmtEnum");

  // no header read yet: the name, the format and two empty lists
  thTest::TempDir dir;
  thResultFile none(dir.file("none.nc"), NC);
  EXPECT_EQ(none.toString(0), "Filename:\t" + dir.file("none.nc") + "\nFormat:\tNC\nStatic items:\nItems:\n");
  thTest::writeSmallModelNc(dir.file("s.nc"));
  thResultFile s(dir.file("s.nc"), NC);
  EXPECT_EQ(s.toString(9), "Filename:\t" + dir.file("s.nc") +
                               "\nFormat:\tNC\nStatic items:\nItems:\n\ttemp, length=9\n\telev, length=4\n");
  // level 10 appends the model's own report to the short one
  EXPECT_EQ(s.toString(10), s.toString(9) + s.mInfo.toString(10));
}

TEST(ResultFile, BackupOrRemove) {
  thTest::TempDir dir;
  std::string fn = dir.file("out.nc");
  backupOrRemoveFile(fn, true);  // nothing there: nothing happens
  EXPECT_EQ(backupFileName, fn);
  thTest::writeText(fn, "old");
  backupOrRemoveFile(fn, false);
  EXPECT_FALSE(VCppLib::fileExists(fn));
  thTest::writeText(fn, "old");
  backupOrRemoveFile(fn, true);
  EXPECT_FALSE(VCppLib::fileExists(fn));
  // renamed to out<time stamp>.nc: one file with a 14-digit stamp
  std::string out;
  thTest::runCommand("ls " + dir.path(), &out);
  ASSERT_EQ(out.size(), std::string("out20240101120000.nc\n").size()) << out;
  EXPECT_EQ(out.substr(0, 3) + out.substr(17), "out.nc\n");
}

// The result file object: enumerations, format detection, dispatch by format, file names, items,
// static items, the report and backups.

#include <functional>
#include <tuple>

#include "resultfile/thResultFile.h"
#include "support/VFiles.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;

TEST(ResultFile, FormatTextsFilesAndHeaderDispatch) {
  // a text in any case, its format, the format's number and its own text
  const char* given[] = {"emt", "Emb", "text0D", "TEXT1d", "emf", "nc", "Restart", "decoupled", "MESH"};
  const fileFmtEnum formats[] = {EMT, EMB, TEXT0D, TEXT1D, EMF, NC, RESTART, DECOUPLED, MESH};
  const int values[] = {0, 1, 2, 3, 4, 10, 100, 101, 1000};
  const char* texts[] = {"EMT", "EMB", "TEXT0D", "TEXT1D", "EMF", "NC", "RESTART", "DECOUPLED", "MESH"};
  for (int i = 0; i < 9; ++i) {
    EXPECT_EQ(str2fileFmtEnum(given[i]), formats[i]) << given[i];
    EXPECT_EQ(static_cast<int>(formats[i]), values[i]);
    EXPECT_EQ(fileFmtEnum2str(formats[i]), texts[i]);
  }
  EXPECT_VEXCEPTION(str2fileFmtEnum("txt"), "str2fileFmtEnum: invalid format definition (TXT).");
  for (int bad : {-1, 5})
    EXPECT_VEXCEPTION(fileFmtEnum2str(static_cast<fileFmtEnum>(bad)),
                      "fileFmtEnum2str: unsupported fileFmtEnum");

  thTest::TempDir dir;
  for (std::string n : {"a.NC", "a.nc", "a.emf", "a.emt", "a.txt", "noext"})
    thTest::writeText(dir.file(n), "x");
  thResultFile rf("", -1);
  EXPECT_EQ(rf.getFormatFromFile(dir.file("a.NC")) + rf.getFormatFromFile(dir.file("a.nc")), 2 * NC);
  // without a "." the whole name is taken
  EXPECT_VEXCEPTION_HAS(rf.getFormatFromFile(dir.file("noext")), "invalid format definition (/TMP/");

  // a missing file has the format -1 (no exception), reads nothing at construction, and readHeader
  // then gives -1
  thResultFile missing(dir.file("missing.nc"), -1);
  EXPECT_EQ(missing.format + missing.readHeader(), -2);
  EXPECT_THROW(thResultFile(dir.file("a.txt"), -1), VCppLib::VException);
  // EMT is write-only and reads nothing; EMF cannot be read at all (the message is readItemData's)
  thResultFile emt(dir.file("a.emt"), -1);
  EXPECT_TRUE(emt.format == EMT && emt.itemNameVec.empty());
  EXPECT_THROW(thResultFile(dir.file("a.emf"), -1), VCppLib::VException);
  // a mesh file: one quadrilateral
  thTest::writeText(dir.file("one.mesh"), "4\t1\n0\t0\n1\t0\n1\t1\n0\t1\n0\t1\t2\t3\n");
  thResultFile mesh(dir.file("one.mesh"), -1);
  const thMesh2D& m = mesh.mInfo.mesh2d;
  EXPECT_TRUE(mesh.format == MESH && m.noe == 1 && m.nvf == 4 && mesh.itemNameVec.empty());
  EXPECT_EQ(mesh.readHeader(), 0);
}

TEST(ResultFile, ReadMessagesByFormat) {
  thTest::TempDir dir;
  thResultFile s(thTest::smallModelNc(dir.file("s.nc")), -1);  // items, elements and timesteps are all there
  // One message of each family; each reader words its own (the readers of layers and series name
  // EMT "TEXT1", and readItemData's "undefined format." stands for every format it cannot read).
  float f[9], *fp = f;
  double db[9], *dp = db, *d = nullptr, **rows = nullptr;
  int32_t lines = 0;
  const std::string rid = "thResultFile::readItemData ";
  // the format, the call and its message
  const std::tuple<int32_t, std::function<void()>, std::string> cases[] = {
      {EMT, [&] { s.readItemData(0, 0, f); }, rid + "Not implemented for EMT files."},
      {TEXT0D, [&] { s.readItemData(0, 0, db); }, rid + "Data cannot be read by timestep for TEXT0D files."},
      {TEXT1D, [&] { s.readItemData(0, 0, f); }, rid + "undefined format."},
      {EMT, [&] { s.readLayer(0, 0, 0, &fp); }, "thResultFile::readLayer Not implemented for TEXT1 files."},
      {DECOUPLED, [&] { s.readProfile(0, 0, 0, f); }, "thResultFile::readProfile undefined format."},
      {EMB, [&] { s.readNextTimestep(&rows, &lines); },
       "thResultFile::readNextTimestep Not implemented for EMB files."},
      {EMT, [&] { s.readTimeSeriesProfile(0, 0, &d, 0, 3); },
       "thResultFile::readTimeSeriesProfile Not implemented for TEXT1 files."},
      {NC, [&] { s.readTimeSeriesUET(0, nullptr, nullptr, 0, 0, -1, 0, 0); },
       "thResultFile::readTimeSeries unsuppored format."}};
  for (const auto& [format, call, msg] : cases) {
    s.format = format;
    EXPECT_VEXCEPTION(call(), msg);
  }
  // RESTART is not among the formats of sequential reading; the flags have moved already
  s.format = RESTART;
  EXPECT_THROW(s.readNextItemData(0, &dp), VCppLib::VException);
  EXPECT_EQ(s.itemRead[0], 1);
}

TEST(ResultFile, FileNamesItemsStaticItemsAndReport) {
  // physical file names; no "." at all, or only the first: no number
  const char* names[] = {"dir/run.emb", "dir/run.emb", "dir/run.emb", "a.b.nc", "run", ".nc"};
  const int fileNos[] = {0, 1, 12, 12, 3, 3};
  const char* expect[] = {"dir/run.emb", "dir/run^1.emb", "dir/run^12.emb", "a.b^12.nc", "run", ".nc"};
  thResultFile rf("", -1);
  for (int i = 0; i < 6; ++i) {
    rf.filename = names[i];
    rf.fileNo = fileNos[i];
    EXPECT_EQ(rf.getFileName(), expect[i]);
  }

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
  std::vector<std::string> got;     // name, type, bytes
  for (const auto& si : rf.staticItems)
    got.push_back(si.name + " " + si.typeName + " " + std::to_string(si.noBytes));
  EXPECT_EQ(got, (std::vector<std::string>{"b int 8", "c char 5", "a float 12", "d char 2"}));
  EXPECT_EQ(rf.staticItems[2].data, reinterpret_cast<uint8_t*>(fl));  // kept by reference
  rf.addStaticItem("a", fl, 0);  // replaces the old "a"; no values, no data
  ASSERT_EQ(rf.staticItems.size(), 4u);
  EXPECT_TRUE(rf.staticItems[0].name == "a" && rf.staticItems[0].data == nullptr);

  rf.filename = "r.nc";
  rf.format = NC;
  EXPECT_EQ(rf.toString(9),
            "Filename:\tr.nc\nFormat:\tNC\nStatic items:\n\ta, length=0\n\tb, length=2\n\tc, length=5\n"
            "\td, length=2\nItems:\n\tsalt, length=100\n\ttemp, length=100\n\tsalt, length=7\n");
  // level 10 appends the model's own report to the short one
  EXPECT_EQ(rf.toString(10), rf.toString(9) + rf.mInfo.toString(10));
}

TEST(ResultFile, BackupOrRemove) {
  thTest::TempDir dir;
  std::string fn = dir.file("out.nc");
  backupOrRemoveFile(fn, true);  // nothing there: nothing happens
  EXPECT_EQ(backupFileName, fn);
  for (bool backup : {false, true}) {
    thTest::writeText(fn, "old");
    backupOrRemoveFile(fn, backup);
    EXPECT_FALSE(VCppLib::fileExists(fn));
  }
  // renamed to out<time stamp>.nc: one file with a 14-digit stamp
  std::string out;
  thTest::runCommand("ls " + dir.path(), &out);
  ASSERT_EQ(out.size(), std::string("out20240101120000.nc\n").size()) << out;
  EXPECT_EQ(out.substr(0, 3) + out.substr(17), "out.nc\n");
}

// The result file object: enumerations, format detection, dispatch, file names, items, report.

#include <cstdio>

#include "resultfile/thResultFile.h"
#include "support/VFiles.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;

TEST(ResultFile, FormatTexts) {
  EXPECT_EQ(str2fileFmtEnum("nc"), NC);
  EXPECT_EQ(str2fileFmtEnum("Emb"), EMB);
  EXPECT_EQ(str2fileFmtEnum("text1d"), TEXT1D);
  EXPECT_EQ(str2fileFmtEnum("Decoupled"), DECOUPLED);
  EXPECT_EQ(str2fileFmtEnum("mesh"), MESH);
  EXPECT_VEXCEPTION(str2fileFmtEnum("txt"), "str2fileFmtEnum: invalid format definition (TXT).");
  EXPECT_VEXCEPTION(str2fileFmtEnum(""), "str2fileFmtEnum: invalid format definition ().");
  EXPECT_EQ(fileFmtEnum2str(RESTART), "RESTART");
  EXPECT_EQ(fileFmtEnum2str(EMF), "EMF");
  EXPECT_VEXCEPTION(fileFmtEnum2str(static_cast<fileFmtEnum>(-1)), "fileFmtEnum2str: unsupported fileFmtEnum");
  EXPECT_VEXCEPTION(fileFmtEnum2str(static_cast<fileFmtEnum>(5)), "fileFmtEnum2str: unsupported fileFmtEnum");
}

TEST(ResultFile, FormatFromFileAndDispatch) {
  thTest::TempDir dir;
  for (std::string n : {"a.NC", "a.nc", "a.emf", "a.emt", "a.txt", "noext"}) thTest::writeText(dir.file(n), "x");
  thResultFile rf("", -1);
  EXPECT_EQ(rf.format, -1);
  EXPECT_EQ(rf.getFormatFromFile(dir.file("a.NC")), NC);
  EXPECT_EQ(rf.getFormatFromFile(dir.file("a.nc")), NC);
  EXPECT_EQ(rf.getFormatFromFile(dir.file("missing.nc")), -1);  // a missing file: -1, no exception
  EXPECT_VEXCEPTION(rf.getFormatFromFile(dir.file("a.txt")), "str2fileFmtEnum: invalid format definition (TXT).");
  // without a "." the whole name is taken
  EXPECT_VEXCEPTION_HAS(rf.getFormatFromFile(dir.file("noext")), "invalid format definition (/TMP/");

  // construction with a missing file reads nothing; readHeader then gives -1
  thResultFile missing(dir.file("missing.nc"), -1);
  EXPECT_EQ(missing.format, -1);
  EXPECT_EQ(missing.readHeader(), -1);
  EXPECT_VEXCEPTION(thResultFile(dir.file("a.txt"), -1), "str2fileFmtEnum: invalid format definition (TXT).");

  // EMT is write-only and reads nothing; EMF cannot be read at all
  thResultFile emt(dir.file("a.emt"), -1);
  EXPECT_EQ(emt.format, EMT);
  EXPECT_TRUE(emt.itemNameVec.empty());
  EXPECT_VEXCEPTION(thResultFile(dir.file("a.emf"), -1), "thResultFile::readItemData undefined format.");
  thResultFile unknown("", -1);
  unknown.filename = dir.file("a.nc");
  EXPECT_VEXCEPTION(unknown.readHeader(), "thResultFile::readItemData undefined format.");

  // the messages of the reads by format
  float f[4];
  float* fp = f;
  double* d = nullptr;
  EXPECT_VEXCEPTION(emt.readItemData(0, 0, f), "thResultFile::readItemData Not implemented for EMT files.");
  double db[4];
  int32_t en[] = {0};
  EXPECT_VEXCEPTION(emt.readItemData(3, 0, db), "thResultFile::readItemData Not implemented for EMT files.");
  EXPECT_VEXCEPTION(emt.readItemData(3, 0, en, 1, &d), "thResultFile::readItemData Not implemented for EMT files.");
  EXPECT_VEXCEPTION(emt.readLayer(0, 0, 0, &fp), "thResultFile::readLayer Not implemented for TEXT1 files.");
  EXPECT_VEXCEPTION(emt.readProfile(0, 0, 0, f), "thResultFile::readProfile Not implemented for TEXT1 files.");
  double** rows = nullptr;
  int32_t lines = 0;
  EXPECT_VEXCEPTION(emt.readNextTimestep(&rows, &lines), "thResultFile::readNextTimestep Not implemented for EMT files.");
  emt.format = EMB;
  EXPECT_VEXCEPTION(emt.readNextTimestep(&rows, &lines), "thResultFile::readNextTimestep Not implemented for EMB files.");
  emt.format = TEXT0D;
  EXPECT_VEXCEPTION(emt.readItemData(0, 0, f),
                    "thResultFile::readItemData Data cannot be read by timestep for TEXT0D files.");
  EXPECT_VEXCEPTION(emt.readLayer(0, 0, 0, &fp), "thResultFile::readLayer undefined format.");
  EXPECT_VEXCEPTION(emt.readProfile(0, 0, 0, f), "thResultFile::readProfile undefined format.");
  emt.format = TEXT1D;
  EXPECT_VEXCEPTION(emt.readItemData(0, 0, f), "thResultFile::readItemData undefined format.");
  emt.format = RESTART;
  EXPECT_VEXCEPTION(emt.readLayer(0, 0, 0, &fp), "thResultFile::readLayer undefined format.");

  // series: the format is looked at once the range is known
  thTest::TempDir d2;
  thTest::writeSmallModelNc(d2.file("s.nc"));
  thResultFile s(d2.file("s.nc"), -1);
  s.format = EMT;
  EXPECT_VEXCEPTION(s.readTimeSeries(0, 0, 0, &d, 0, 3), "thResultFile::readTimeSeries Not implemented for TEXT1 files.");
  EXPECT_VEXCEPTION(s.readTimeSeriesProfile(0, 0, &d, 0, 3),
                    "thResultFile::readTimeSeriesProfile Not implemented for TEXT1 files.");
  s.format = DECOUPLED;
  EXPECT_VEXCEPTION(s.readTimeSeries(0, 0, 0, &d, 0, 3), "thResultFile::readTimeSeries undefined format.");
  EXPECT_VEXCEPTION(s.readTimeSeriesProfile(0, 0, &d, 0, 3), "thResultFile::readTimeSeriesProfile undefined format.");
  double buf[9];
  double* bp = buf;
  s.format = RESTART;  // not among the formats of sequential reading; the flags have moved already
  EXPECT_VEXCEPTION(s.readNextItemData(0, &bp), "thResultFile::readItemData undefined format.");
  EXPECT_EQ(s.itemRead[0], 1);
}

TEST(ResultFile, MeshFiles) {
  thTest::TempDir dir;
  // one quadrilateral in the text mesh format
  thTest::writeText(dir.file("one.mesh"), "4\t1\n0\t0\n1\t0\n1\t1\n0\t1\n0\t1\t2\t3\n");
  thResultFile rf(dir.file("one.mesh"), -1);
  EXPECT_EQ(rf.format, MESH);
  EXPECT_EQ(rf.mInfo.mesh2d.noe, 1);
  EXPECT_EQ(rf.mInfo.mesh2d.nvf, 4);
  EXPECT_TRUE(rf.itemNameVec.empty());
  EXPECT_EQ(rf.readHeader(), 0);
}

TEST(ResultFile, PhysicalFileNames) {
  thResultFile rf("", -1);
  rf.filename = "dir/run.emb";
  EXPECT_EQ(rf.getFileName(), "dir/run.emb");
  rf.fileNo = 1;
  EXPECT_EQ(rf.getFileName(), "dir/run^1.emb");
  rf.fileNo = 12;
  EXPECT_EQ(rf.getFileName(), "dir/run^12.emb");
  rf.filename = "run";
  EXPECT_EQ(rf.getFileName(), "run");  // no "." at all
  rf.filename = ".nc";
  EXPECT_EQ(rf.getFileName(), ".nc");  // the "." is the first character
  rf.filename = "a.b.nc";
  EXPECT_EQ(rf.getFileName(), "a.b^12.nc");
}

TEST(ResultFile, ItemsAndStaticItems) {
  thResultFile rf("", -1);
  rf.addItem("salt", 100);
  rf.addItem("temp", 100);
  rf.addItem("salt", 7);
  EXPECT_EQ(rf.getItemNo("salt"), 0);
  EXPECT_EQ(rf.getItemNo("temp"), 1);
  EXPECT_EQ(rf.getItemNo("Salt"), 3);
  EXPECT_EQ(rf.getItemOffset(0), 0);
  EXPECT_EQ(rf.getItemOffset(2), 200);
  EXPECT_EQ(rf.getItemOffset(3), 207);  // the values of one timestep
  EXPECT_VEXCEPTION_HAS(rf.getItemOffset(4), "item number 4 is out of range");

  float fl[3] = {1, 2, 3};
  int32_t in[2] = {4, 5};
  char ch[5] = {'a', 'b', 'c', 'd', 'e'};
  rf.addStaticItem("a", fl, 3);
  rf.addStaticItem("b", in, 2);        // the number forms go to the front
  rf.addStaticItem("c", ch, 5, 1);     // the char form at its position
  rf.addStaticItem("d", ch, 2, 9);     // or at the end
  ASSERT_EQ(rf.staticItems.size(), 4u);
  EXPECT_EQ(rf.staticItems[0].name, "b");
  EXPECT_EQ(rf.staticItems[1].name, "c");
  EXPECT_EQ(rf.staticItems[2].name, "a");
  EXPECT_EQ(rf.staticItems[3].name, "d");
  EXPECT_EQ(rf.staticItems[0].typeName, "int");
  EXPECT_EQ(rf.staticItems[0].noBytes, 8);
  EXPECT_EQ(rf.staticItems[1].typeName, "char");
  EXPECT_EQ(rf.staticItems[1].noBytes, 5);
  EXPECT_EQ(rf.staticItems[2].typeName, "float");
  EXPECT_EQ(rf.staticItems[2].data, reinterpret_cast<uint8_t*>(fl));  // kept by reference
  rf.addStaticItem("a", fl, 0);  // replaces the old "a"; no values, no data
  ASSERT_EQ(rf.staticItems.size(), 4u);
  EXPECT_EQ(rf.staticItems[0].name, "a");
  EXPECT_EQ(rf.staticItems[0].data, nullptr);

  rf.filename = "r.nc";
  rf.format = NC;
  EXPECT_EQ(rf.toString(9),
            "Filename:\tr.nc\nFormat:\tNC\nStatic items:\n\ta, length=0\n\tb, length=2\n\tc, length=5\n"
            "\td, length=2\nItems:\n\tsalt, length=100\n\ttemp, length=100\n\tsalt, length=7\n");
  rf.format = -1;
  EXPECT_VEXCEPTION(rf.toString(0), "fileFmtEnum2str: unsupported fileFmtEnum");
}

TEST(ResultFile, Reports) {
  thTest::TempDir dir;
  // a name with a known extension and no header read: name, format, two empty lists
  thResultFile rf(dir.file("none.nc"), NC);
  EXPECT_EQ(rf.toString(0), "Filename:\t" + dir.file("none.nc") + "\nFormat:\tNC\nStatic items:\nItems:\n");
  thTest::writeSmallModelNc(dir.file("s.nc"));
  thResultFile s(dir.file("s.nc"), NC);
  std::string shortReport = s.toString(9);
  EXPECT_NE(shortReport.find("Items:\n\ttemp, length=9\n\telev, length=4\n"), std::string::npos);
  EXPECT_EQ(shortReport.substr(shortReport.size() - 16), "\telev, length=4\n");
  // level 10 appends the model's own report, when the model description offers one
  EXPECT_EQ(s.toString(10).substr(0, shortReport.size()), shortReport);
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
  EXPECT_EQ(out.substr(0, 3), "out");
  EXPECT_EQ(out.substr(17), ".nc\n");
}

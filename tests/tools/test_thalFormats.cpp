// thal convert, and the commands on the formats other than NC: EMB with its "^" files, text tables.
#include <algorithm>
#include <tuple>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "thalRun.h"

namespace {

using namespace thalTest;
using thalmod::thResultFile;
using thTest::SmallModel;

// Everything that a conversion keeps of the model description.
void expectSameModel(const thResultFile& a, const thResultFile& b) {
  const thalmod::thModelInfo &m = a.mInfo, &n = b.mInfo;
  const thalmod::thMesh2D &g = m.mesh2d, &h = n.mesh2d;
  EXPECT_EQ(
      std::tie(m.startDT, m.dt, m.modelType, m.flavor, m.layerType, m.topDepth, m.nol, m.cells, g.projection),
      std::tie(n.startDT, n.dt, n.modelType, n.flavor, n.layerType, n.topDepth, n.nol, n.cells,
               h.projection));
  EXPECT_EQ(std::tie(a.itemNameVec, a.itemLengthVec), std::tie(b.itemNameVec, b.itemLengthVec));
  auto same = [](const auto* p, const auto* q, int32_t len) {
    EXPECT_TRUE(p && q && std::equal(p, p + len, q));
  };
  same(m.dz, n.dz, m.nol);
  same(m.elemBathy, n.elemBathy, g.noe);
  same(m.enol, n.enol, g.noe);
  same(g.nxCoor, h.nxCoor, g.non);
  same(g.nyCoor, h.nyCoor, g.non);
  same(g.nt, h.nt, g.non);
  same(g.eVoronoiX, h.eVoronoiX, g.noe);
  same(g.eVoronoiY, h.eVoronoiY, g.noe);
  same(g.nonpe, h.nonpe, g.noe);
  same(g.en, h.en, g.nevf);
}

// Every value of both items at every timestep, against the fixture's formulas.
void expectSmallModelValues(thResultFile& rf, int32_t nt) {
  ASSERT_EQ(rf.mInfo.nt, nt);
  ASSERT_EQ(rf.itemNameVec, (std::vector<std::string>{"temp", "elev"}));
  std::vector<float> temp(SmallModel::cells), elev(SmallModel::noe);
  for (int t = 0; t < nt; ++t) {
    ASSERT_TRUE(rf.readItemData(0, t, temp.data()) == 0 && rf.readItemData(1, t, elev.data()) == 0);
    for (int c = 0; c < SmallModel::cells; ++c) EXPECT_EQ(temp[c], SmallModel::temp(t, c)) << t << " " << c;
    for (int e = 0; e < SmallModel::noe; ++e) EXPECT_EQ(elev[e], SmallModel::elev(t, e)) << t << " " << e;
  }
}

// The report without its first two lines, the file's name and format.
std::string infoBody(const std::string& file) {
  Result r = thal("info " + quoted(file));
  EXPECT_EQ(r.out.rfind("Filename:\t" + file + "\nFormat:\t", 0), 0u) << r.out;
  return r.out.substr(r.out.find('\n', r.out.find('\n') + 1));
}

Result convert(const std::string& in, const std::string& out) {
  return thal("convert " + thalTest::quoted(in) + " " + thalTest::quoted(out));
}

TEST(ThalConvert, NcToEmbAndBackKeepsModelItemsAndEveryValueButNotOtherFormats) {
  thTest::TempDir d;
  const std::string nc = d.file("run.nc"), emb = d.file("run.emb"), back = d.file("back.nc");
  thTest::writeSmallModelNc(nc);
  Result toEmb = convert(nc, emb);
  EXPECT_EQ(toEmb.out.rfind("Wrote " + emb + " (EMB): 2 items, 3 timesteps from ", 0), 0u)
      << toEmb.out << toEmb.err;
  ASSERT_EQ(convert(emb, back).status, 0);
  thResultFile source(nc, -1), viaEmb(emb, -1), again(back, -1);
  for (thResultFile* rf : {&viaEmb, &again}) {
    expectSameModel(source, *rf);
    expectSmallModelValues(*rf, 3);
  }
  for (const std::string& f : {emb, back}) EXPECT_EQ(infoBody(f), infoBody(nc));

  // Other formats, and the input itself, are refused.
  const std::string formats = "': convert writes NC and EMB files, named by their extension .nc or .emb.";
  const std::string itself = "' is the input file itself; give the converted file another name.",
                    sameFile = d.path() + "/./run.nc";
  const std::pair<std::string, std::string> cases[] = {
      {d.file("run.txt"), "Cannot write '" + d.file("run.txt") + formats},
      {nc, "The output '" + nc + itself},
      {sameFile, "The output '" + sameFile + itself}};
  for (const auto& [out, message] : cases) EXPECT_EQ(convert(nc, out).err, "thal: " + message + "\n");
}

TEST(ThalConvert, FollowsTheCaretFilesOfAnEmbRun) {
  thTest::TempDir d;
  const std::string split = d.file("split.emb"), split1 = d.file("split^1.emb"), joined = d.file("joined.nc");
  thTest::writeSmallModelNc(d.file("0.nc"));
  thTest::writeSmallModelNc(d.file("1.nc"), {.firstStep = 3});  // timesteps 3 to 5, to go on in split^1.emb
  ASSERT_EQ(convert(d.file("0.nc"), split).status, 0);
  ASSERT_EQ(convert(d.file("1.nc"), split1).status, 0);
  ASSERT_EQ(convert(split, joined).status, 0);
  thResultFile rf(joined, -1);
  expectSmallModelValues(rf, 6);
  EXPECT_EQ(infoBody(split), infoBody(joined));
  Result series = thal("series " + quoted(split) + " --item elev --at 50,50");
  EXPECT_EQ(series.out,
            "datetime,elev\n2010-01-01 00:00:00,0\n2010-01-01 01:00:00,1\n2010-01-01 02:00:00,2\n"
            "2010-01-01 03:00:00,3\n2010-01-01 04:00:00,4\n2010-01-01 05:00:00,5\n")
      << series.err;
  EXPECT_EQ(convert(split1, split).err, "thal: Writing '" + split + "' would overwrite '" + split1 +
                                            "', a file of the input '" + split1 +
                                            "'; give the converted file another name.\n");

  // A last file cut short fails the conversion and leaves no output behind.
  thTest::truncateFile(split1, thTest::readText(split1).size() - 4);
  Result cut = convert(split, d.file("cut.nc"));
  EXPECT_NE(cut.err.find("the file ends before its values"), std::string::npos) << cut.err;
  EXPECT_NE(thTest::runCommand("test -e " + quoted(d.file("cut.nc"))), 0);
}

TEST(ThalFormats, TextTablesGoToInfoAndSeries) {
  thTest::TempDir d;
  const std::string t0 = d.file("p.text0d"), t1 = d.file("p.text1d");
  thTest::writeText(t0,
                    "DateTime\tTemp\tSalt\n2024-06-01 00:00:00\t10.5\t30\n"
                    "2024-06-01 01:00:00\t11\t\n2024-06-01 02:00:00\t11.5,31\n");
  thTest::writeText(
      t1, "DateTime\tTemp\n2024-06-01 00:00:00\t10.5\n2024-06-01 00:00:00\t9.5\n2024-06-01 06:00:00\t11\n");
  const std::string info0 = thal("info " + quoted(t0)).out, info1 = thal("info " + quoted(t1)).out;
  EXPECT_NE(info0.find("Item kinds:\n\tTemp\ttable column\n\tSalt\ttable column\n"
                       "Time stamps:\t3 from 2024-06-01 00:00:00 to 2024-06-01 02:00:00\nMesh:\tnone\n"),
            std::string::npos);
  EXPECT_NE(info1.find("Time stamps:\t2 from 2024-06-01 00:00:00 to 2024-06-01 06:00:00\nMesh:\tnone\n"),
            std::string::npos);
  EXPECT_EQ(thal("series " + quoted(t0) + " --item Salt").out,
            "datetime,Salt\n2024-06-01 00:00:00,30\n2024-06-01 02:00:00,31\n");
}

}  // namespace

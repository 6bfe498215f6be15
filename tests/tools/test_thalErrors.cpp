// Every mistake of a user ends in one clear line on standard error and exit status 1.
#include "thalRun.h"

namespace {

using namespace thalTest;

// Status 1, nothing on standard output, and exactly the line "thal: " + message.
void expectFailure(const Result& r, const std::string& message) {
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "thal: " + message + "\n");
}

// Status 1 and one line holding `part` (for messages that the NetCDF library words).
void expectFailureHas(const Result& r, const std::string& part) {
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_EQ(r.out, "");
  ASSERT_EQ(lines(r.err).size(), 1u) << r.err;
  EXPECT_EQ(r.err.rfind("thal: ", 0), 0u) << r.err;
  EXPECT_NE(r.err.find(part), std::string::npos) << r.err;
}

TEST(ThalErrors, CommandLineMistakes) {
  Result none = thal(""), help = thal("--help");
  EXPECT_TRUE(none.status == 1 && none.err.find("Usage: thal COMMAND") != std::string::npos);
  EXPECT_TRUE(help.status == 0 && help.out.find("thal paint FILE") != std::string::npos);

  expectFailure(thal("draw x.nc"), "Unknown command 'draw'; 'thal --help' lists the commands.");
  expectFailure(thal("info x.nc --colour red"), "Unknown option --colour for 'thal info'.");
  expectFailure(thal("info x.nc --level"), "The option --level needs a value.");
  expectFailure(thal("series a.nc b.nc --item x --at 1,2"),
                "Usage: thal series FILE --item NAME --at X,Y [--layer L]");
  expectFailure(thal("paint /no/such/run.nc --item t --time 0"), "'thal paint' needs the option -o.");
}

TEST(ThalErrors, FilesThatCannotBeRead) {
  thTest::TempDir d;
  auto info = [&](const std::string& name) { return thal("info " + quoted(d.file(name))); };
  expectFailure(info("missing.nc"), "No such file: '" + d.file("missing.nc") + "'.");
  expectFailure(thal("info " + quoted(d.path())), "'" + d.path() + "' is a folder, not a file.");
  thTest::writeText(d.file("empty.nc"), "");
  thTest::writeText(d.file("garbage.nc"), std::string(5000, 'x'));
  for (const std::string bad : {"empty.nc", "garbage.nc"})
    expectFailureHas(info(bad), "Cannot read the result file '" + d.file(bad) + "': ");
  thTest::writeText(d.file("notes.txt"), "hello\n");
  expectFailure(info("notes.txt"), "Cannot read the result file '" + d.file("notes.txt") +
                                       "': str2fileFmtEnum: invalid format definition (TXT).");
  expectFailureHas(thal("paint-bathy " + quoted(d.file("garbage.nc")) + " -o " + quoted(d.file("b.png"))),
                   "Cannot read the bathymetry '" + d.file("garbage.nc") + "': ");
  expectFailure(thal("sample /dev/null/sample"),
                "Cannot make the folder '/dev/null/sample': Not a directory.");
}

TEST_F(SampleRun, WrongItemsTimesLayersAndPoints) {
  const std::string f = quoted(run()), name = "'" + run() + "'";
  thTest::TempDir d;
  const std::string png = quoted(d.file("x.png")), paint = "paint " + f + " -o " + png + " --item ",
                    t0 = paint + "temperature --time 0 ";
  const std::pair<std::string, std::string> cases[] = {
      {paint + "salt --time 0",
       "No item 'salt' in " + name + "; the items are temperature, salinity, elevation."},
      {paint + "temperature --time 48", "Timestep 48 is out of range: " + name + " has timesteps 0 to 47."},
      {paint + "temperature --time '2024-07-01 00:00:00'",
       "The time 2024-07-01 00:00:00 lies outside the run in " + name +
           ", 48 timesteps from 2024-06-01 00:00:00 to 2024-06-02 23:00:00."},
      {paint + "temperature --time noon",
       "The time 'noon' is neither a timestep number nor a date-time YYYY-MM-DD HH:MM:SS."},
      {t0 + "--layer 20",
       "Layer 20 is out of range: " + name +
           " has layers 0 (bottom) to 19 (surface); -1 is each element's bottom cell and 999 its top cell."},
      {t0 + "--palette plaid",
       "Unknown palette 'plaid'; the palettes are turbo, viridis, deep, balance, gray."},
      {t0 + "--size 400", "The size '400' is not of the form WIDTHxHEIGHT."},
      {t0 + "--range 9:3", "The range '9:3' needs MIN below MAX."},
      {"series " + f + " --item elevation --at 0,0",
       "The point (0, 0) lies outside the mesh of " + name + "."},
      {"series " + f + " --item elevation --at 500000", "The point '500000' is not of the form X,Y."},
      {"profile " + f + " --item elevation --at 1,1 --time 0",
       "Item 'elevation' is a 2-D item; a profile needs a 3-D item."}};
  for (const auto& [args, message] : cases) expectFailure(thal(args), message);
  expectFailureHas(
      thal("paint " + f + " --item temperature --time 0 -o " + quoted(d.file("no/such/dir/x.png"))),
      "Cannot write the picture '" + d.file("no/such/dir/x.png") + "': ");
  expectFailureHas(thal("paint-bathy " + f + " -o " + png), "Cannot read the bathymetry ");
  expectFailureHas(thal("section " + f + " --item elevation --line 0,0:1,1 --time 0 --csv"),
                   "a section needs a 3-D item.");

  // A layer above the surface, and one below the sea bed of a shallow element near the head.
  int32_t shallow = 0;
  while (model().ebli[shallow] < 15) ++shallow;
  const std::string layers = std::to_string(model().ebli[shallow]) + " (bottom) to 19 (surface).";
  expectFailure(thal("series " + f + " --item temperature --layer 2 --at " + at(shallow)),
                "Layer 2 is out of range: element " + std::to_string(shallow) + " of " + name +
                    " has layers " + layers);
}

TEST_F(SampleRun, TruncatedAndDamagedRunsFailCleanly) {
  thTest::TempDir d;
  const std::string cut = d.file("cut.nc");
  const std::string whole = thTest::readText(run());
  for (size_t keep : {size_t(8), size_t(2000), whole.size() / 2, whole.size() - 1}) {
    thTest::writeText(cut, whole.substr(0, keep));
    expectFailureHas(thal("series " + quoted(cut) + " --item elevation --at " + at(100)),
                     "Cannot read the result file");
  }
  // Data blocks overwritten in the middle of the file: a series that meets them ends in one
  // line, and never in made-up values.
  std::string damaged = whole;
  std::fill(damaged.begin() + damaged.size() / 5, damaged.begin() + damaged.size() * 4 / 5, '\x55');
  thTest::writeText(cut, damaged);
  int failures = 0;
  for (const char* item : {"temperature", "salinity", "elevation"}) {
    Result r = thal("series " + quoted(cut) + " --item " + item + " --at " + at(100));
    if (r.status == 0) {
      EXPECT_EQ(lines(r.out).size(), 49u);
      continue;
    }
    ++failures;
    expectFailureHas(r, "'" + cut + "'");
  }
  EXPECT_GT(failures, 0);
}

}  // namespace

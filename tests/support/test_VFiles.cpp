#include "support/VFiles.h"

#include <cstdio>
#include <iostream>

#include "support/VStr.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VFiles, FileNamePartsAndSizes) {
  using Fn = std::string (*)(std::string);
  const std::pair<Fn, std::vector<std::pair<const char*, const char*>>> names[] = {
      {dirPart, {{"a\\b\\c.txt", "a\\b"}, {"c.txt", ""}, {"/tmp/x/c.txt", "/tmp/x"}, {"a/b\\c", "a/b"}}},
      {fileName, {{"a\\b\\c.txt", "c.txt"}, {"a/b/c.txt", "c.txt"}, {"c.txt", "c.txt"}, {"dir\\", ""}}},
      {baseName, {{"a\\b\\run.v1.nc", "run.v1"}, {"a.d/run", "run"}, {"", ""}}},
      {extPart, {{"a\\run.nc", "nc"}, {"run", "run"}, {"run.", ""}}},
      // setExt: a last point stays
      {[](std::string p) { return setExt(p, "emb"); },
       {{"run.nc", "run.emb"}, {"run", "run.emb"}, {"run.", "run..emb"}}},
      {[](std::string p) { return insertBeforeExt(p, "_1"); },
       {{"run.nc", "run_1.nc"}, {"run", "run"}, {".nc", ".nc"}, {"a/b.c/run.nc", "a/b.c/run_1.nc"}}},
      {addBackslash, {{"dir", "dir\\"}, {"dir\\", "dir\\"}, {"dir/", "dir/"}, {"", ""}}}};
  for (const auto& [fn, cases] : names)
    for (auto [in, want] : cases) EXPECT_EQ(fn(in), want) << in;
  const std::pair<int32_t, const char*> printed[] = {
      {0, "0 bytes"},    {1023, "1023 bytes"}, {1024, "1 KB"},       {1536, "1 KB"},
      {1048576, "1 MB"}, {1048575, "1023 KB"}, {2147483647, "1 GB"}, {-5, "-5 bytes"}};
  for (auto [n, s] : printed) EXPECT_EQ(sizeToStr(n), s) << n;
  // "tb" and "pb" are rounded decimals, not powers of 1024.
  const std::pair<const char*, uint64_t> sizes[] = {
      {"1.5 KB", 1536},      {"2 tb", 2199024000000},    {"10", 10}, {"3mb", 3145728},
      {"1 G B", 1073741824}, {"1 pb", 1125900000000000}, {"kb", 0},  {"", 0},
      {"-5 kb", 0},          {"1e30 pb", UINT64_MAX}};
  for (auto [s, n] : sizes) EXPECT_EQ(parseSize(s), n) << s;
}

TEST(VFiles, WholeFilesAndDirectories) {
  thTest::TempDir dir;
  std::string f = dir.file("t.txt"), missing = dir.file("missing"), b = dir.file("b"), c = dir.file("c");
  EXPECT_EQ(writeTextFile(f, "first\n", false) + writeTextFile(f, "second\n", true), 0);
  EXPECT_EQ(readFileToString(f), "first\nsecond\n");
  EXPECT_EQ(writeTextFile(f, "new", false), 0);  // replaces the contents
  EXPECT_EQ(readFileToString(f), "new");
  EXPECT_EQ(writeTextFile(dir.file("no/such/dir.txt"), "x", false), -1);
  EXPECT_EQ(readFileToString(missing) + readFileToString(dir.path()), "");
  EXPECT_TRUE(fileExists(f) && fileSize(f) == 3);
  EXPECT_FALSE(fileExists(missing) || fileExists(dir.path()) || fileExists(""));
  EXPECT_TRUE(fileModTime(f) > 1500000000 && fileCreateTime(f) > 1500000000);
  EXPECT_EQ(fileSize(missing) + fileModTime(missing) + fileCreateTime(missing), 0);
  // Binary bytes, and more than one 512-byte block.
  std::string bytes = std::string("\0\1\0\xff", 4) + std::string(1300, 'q');
  thTest::writeText(b, bytes);
  EXPECT_EQ(readFileToString(b), bytes);
  copyFile(b, c);
  EXPECT_EQ(readFileToString(c), bytes);
  copyFile(missing, dir.file("d"));  // nothing happens
  EXPECT_FALSE(fileExists(dir.file("d")));
  EXPECT_EQ(renameFile(c, dir.file("e")), 0);
  EXPECT_TRUE(fileExists(dir.file("e")) && renameFile(c, dir.file("f")) != 0);
  EXPECT_EQ(deleteFile(dir.file("e")), 0);
  EXPECT_TRUE(!fileExists(dir.file("e")) && deleteFile(dir.file("e")) == -1);

  // Directories: listDirs sees the folders only, not the files beside them.
  EXPECT_TRUE(makeDir(dir.file("beta")) && makeDir(dir.file("beta")));  // the second: already there
  EXPECT_TRUE(makeDir(dir.file("alpha.d")) && makeDir(dir.file("gamma")));
  EXPECT_FALSE(makeDir(dir.file("x/y/z")));
  EXPECT_EQ(deleteFile(dir.file("beta")), -1);  // a directory is not removed
  EXPECT_TRUE(isDir(dir.path()) && isDir(dir.file("beta")));
  EXPECT_FALSE(isDir(f) || isDir(dir.file("missing")));
  using V = std::vector<std::string>;
  EXPECT_EQ(listDirs(dir.path()), (V{"alpha.d", "beta", "gamma"}));
  EXPECT_TRUE(listDirs(dir.path(), "*.d") == V{"alpha.d"} && listDirs(dir.path(), "?eta") == V{"beta"});
  EXPECT_EQ(listDirs(dir.file("missing")), V{});
  std::string before = currentDir();
  ASSERT_FALSE(before.empty());
  changeDir(dir.file("gamma"));
  changeDir(dir.file("missing"));  // stays where it was
  EXPECT_EQ(currentDir(), dir.file("gamma"));
  changeDir(before);
  EXPECT_EQ(currentDir(), before);
}

TEST(VFiles, Log) {
  thTest::TempDir dir;
  std::string savedName = logFileName, log = dir.file("work.log");
  int32_t savedLevel = logLevel;
  thTest::writeText(log, "old entry\n");
  openLog(log, false);  // an old log is removed
  EXPECT_TRUE(!fileExists(log) && logFileName == log);
  logLevel = 0;
  logMessage("opened");
  logMessage("closed");
  logLevel = -1;  // off
  logMessage("hidden");
  // Two lines: a 14-digit time stamp, a blank and the text.
  std::string text = readFileToString(log);
  ASSERT_EQ(text.size(), 2 * (14u + 1 + 6 + 1)) << text;
  EXPECT_TRUE(VStr::isInteger(text.substr(0, 14)));
  EXPECT_EQ(text.substr(14, 8) + text.substr(22 + 14), " opened\n closed\n");
  // Kept: the old log moves aside as work<time stamp>.log, the only file in the folder now.
  openLog(log, true);
  EXPECT_FALSE(fileExists(log));
  std::string listing;
  thTest::runCommand("ls " + dir.path(), &listing);
  EXPECT_EQ(listing.size(), 4u + 14 + 4 + 1) << listing;
  EXPECT_EQ(listing.substr(0, 4) + listing.substr(18), "work.log\n");
  EXPECT_EQ(readFileToString(dir.file(listing.substr(0, 22))), text);
  logFileName = savedName;
  logLevel = savedLevel;
}

TEST(VFiles, CaptureStdout) {
  EXPECT_TRUE(captureStdoutStart(1) == nullptr && captureStdoutEnd(nullptr).empty());
  char* buf = captureStdoutStart(4096);
  ASSERT_NE(buf, nullptr);
  std::printf("captured %d", 42);
  std::cout << " and more" << std::flush;
  EXPECT_EQ(captureStdoutEnd(buf), "captured 42 and more");
  delete[] buf;
  buf = captureStdoutStart(8);  // more than the buffer holds: n - 1 bytes kept
  ASSERT_NE(buf, nullptr);
  std::printf("0123456789abc");
  EXPECT_TRUE(captureStdoutEnd(buf) == "0123456" && buf[7] == '\0');
  delete[] buf;
}

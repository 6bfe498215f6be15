#include "support/VFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "support/VDT.h"
#include "support/VStr.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VFiles, FileNameParts) {
  EXPECT_EQ(dirPart("a\\b\\c.txt"), "a\\b");
  EXPECT_EQ(dirPart("c.txt"), "");
  EXPECT_EQ(dirPart("/tmp/x/c.txt"), "/tmp/x");
  EXPECT_EQ(dirPart("a/b\\c"), "a/b");
  EXPECT_EQ(fileName("a\\b\\c.txt"), "c.txt");
  EXPECT_EQ(fileName("a/b/c.txt"), "c.txt");
  EXPECT_EQ(fileName("c.txt"), "c.txt");
  EXPECT_EQ(fileName("dir\\"), "");
  EXPECT_EQ(baseName("a\\b\\run.v1.nc"), "run.v1");
  EXPECT_EQ(baseName("a.d/run"), "run");
  EXPECT_EQ(baseName(""), "");
  EXPECT_EQ(extPart("a\\run.nc"), "nc");
  EXPECT_EQ(extPart("run"), "run");
  EXPECT_EQ(extPart("run."), "");
  EXPECT_EQ(setExt("run.nc", "emb"), "run.emb");
  EXPECT_EQ(setExt("run", "emb"), "run.emb");
  EXPECT_EQ(setExt("run.", "emb"), "run..emb");  // a point as the last character stays
  EXPECT_EQ(insertBeforeExt("run.nc", "_1"), "run_1.nc");
  EXPECT_EQ(insertBeforeExt("run", "_1"), "run");
  EXPECT_EQ(insertBeforeExt(".nc", "_1"), ".nc");
  EXPECT_EQ(insertBeforeExt("a/b.c/run.nc", "_1"), "a/b.c/run_1.nc");
  EXPECT_EQ(addBackslash("dir"), "dir\\");
  EXPECT_EQ(addBackslash("dir\\"), "dir\\");
  EXPECT_EQ(addBackslash("dir/"), "dir/");
  EXPECT_EQ(addBackslash(""), "");
}

TEST(VFiles, Sizes) {
  EXPECT_EQ(sizeToStr(0), "0 bytes");
  EXPECT_EQ(sizeToStr(1023), "1023 bytes");
  EXPECT_EQ(sizeToStr(1024), "1 KB");
  EXPECT_EQ(sizeToStr(1536), "1 KB");
  EXPECT_EQ(sizeToStr(1048576), "1 MB");
  EXPECT_EQ(sizeToStr(1048575), "1023 KB");
  EXPECT_EQ(sizeToStr(2147483647), "1 GB");
  EXPECT_EQ(sizeToStr(-5), "-5 bytes");
  EXPECT_EQ(parseSize("1.5 KB"), 1536u);
  EXPECT_EQ(parseSize("2 tb"), 2199024000000u);
  EXPECT_EQ(parseSize("10"), 10u);
  EXPECT_EQ(parseSize("3mb"), 3145728u);
  EXPECT_EQ(parseSize("1 G B"), 1073741824u);
  EXPECT_EQ(parseSize("1 pb"), 1125900000000000u);
  EXPECT_EQ(parseSize("kb"), 0u);  // atof of a text without a number
  EXPECT_EQ(parseSize(""), 0u);
  EXPECT_EQ(parseSize("-5 kb"), 0u);
  EXPECT_EQ(parseSize("1e30 pb"), UINT64_MAX);
}

TEST(VFiles, WholeFiles) {
  thTest::TempDir dir;
  std::string f = dir.file("t.txt");
  EXPECT_EQ(writeTextFile(f, "first\n", false), 0);
  EXPECT_EQ(writeTextFile(f, "second\n", true), 0);
  EXPECT_EQ(readFileToString(f), "first\nsecond\n");
  EXPECT_EQ(writeTextFile(f, "new", false), 0);  // replaces the contents
  EXPECT_EQ(readFileToString(f), "new");
  EXPECT_EQ(writeTextFile(dir.file("no/such/dir.txt"), "x", false), -1);
  std::string bin = dir.file("b.bin");
  thTest::writeBytes(bin, {0, 1, 0, 255});
  EXPECT_EQ(readFileToString(bin), std::string("\0\1\0\xff", 4));
  EXPECT_EQ(readFileToString(dir.file("missing")), "");
  EXPECT_EQ(readFileToString(dir.path()), "");
  EXPECT_TRUE(fileExists(f));
  EXPECT_FALSE(fileExists(dir.file("missing")));
  EXPECT_FALSE(fileExists(dir.path()));
  EXPECT_FALSE(fileExists(""));
  EXPECT_EQ(fileSize(f), 3);
  EXPECT_EQ(fileSize(dir.file("missing")), 0);
  EXPECT_GT(fileModTime(f), 1500000000);
  EXPECT_GT(fileCreateTime(f), 1500000000);
  EXPECT_EQ(fileModTime(dir.file("missing")), 0);
  EXPECT_EQ(fileCreateTime(dir.file("missing")), 0);
  copyFile(bin, dir.file("c.bin"));
  EXPECT_EQ(readFileToString(dir.file("c.bin")), std::string("\0\1\0\xff", 4));
  copyFile(dir.file("missing"), dir.file("d.bin"));  // nothing happens
  EXPECT_FALSE(fileExists(dir.file("d.bin")));
  // More than one 512-byte block.
  std::string big(1300, 'q');
  writeTextFile(dir.file("big"), big);
  copyFile(dir.file("big"), dir.file("big2"));
  EXPECT_EQ(readFileToString(dir.file("big2")), big);
  EXPECT_EQ(renameFile(dir.file("c.bin"), dir.file("e.bin")), 0);
  EXPECT_TRUE(fileExists(dir.file("e.bin")));
  EXPECT_NE(renameFile(dir.file("c.bin"), dir.file("f.bin")), 0);
  EXPECT_EQ(deleteFile(dir.file("e.bin")), 0);
  EXPECT_FALSE(fileExists(dir.file("e.bin")));
  EXPECT_EQ(deleteFile(dir.file("e.bin")), -1);
  ASSERT_TRUE(makeDir(dir.file("sub")));
  EXPECT_EQ(deleteFile(dir.file("sub")), -1);  // a directory is not removed
  EXPECT_TRUE(isDir(dir.file("sub")));
}

TEST(VFiles, Directories) {
  thTest::TempDir dir;
  EXPECT_TRUE(makeDir(dir.file("beta")));
  EXPECT_TRUE(makeDir(dir.file("beta")));  // already there
  EXPECT_TRUE(makeDir(dir.file("alpha.d")));
  EXPECT_TRUE(makeDir(dir.file("gamma")));
  EXPECT_FALSE(makeDir(dir.file("x/y/z")));
  thTest::writeText(dir.file("file.txt"), "x");
  EXPECT_TRUE(isDir(dir.path()));
  EXPECT_FALSE(isDir(dir.file("file.txt")));
  EXPECT_FALSE(isDir(dir.file("missing")));
  using V = std::vector<std::string>;
  EXPECT_EQ(listDirs(dir.path()), (V{"alpha.d", "beta", "gamma"}));
  EXPECT_EQ(listDirs(dir.path(), "*.d"), (V{"alpha.d"}));
  EXPECT_EQ(listDirs(dir.path(), "?eta"), (V{"beta"}));
  EXPECT_EQ(listDirs(dir.file("missing")), V{});
  std::string before = currentDir();
  ASSERT_FALSE(before.empty());
  changeDir(dir.file("gamma"));
  EXPECT_EQ(currentDir(), dir.file("gamma"));
  changeDir(dir.file("missing"));  // stays where it was
  EXPECT_EQ(currentDir(), dir.file("gamma"));
  changeDir(before);
  EXPECT_EQ(currentDir(), before);
}

TEST(VFiles, Log) {
  thTest::TempDir dir;
  std::string savedName = logFileName;
  int32_t savedLevel = logLevel;
  std::string log = dir.file("work.log");
  thTest::writeText(log, "old entry\n");
  openLog(log, false);  // an old log is removed
  EXPECT_FALSE(fileExists(log));
  EXPECT_EQ(logFileName, log);
  logLevel = 0;
  logMessage("opened");
  logMessage("closed");
  std::string text = readFileToString(log);
  std::vector<std::string> lines;
  for (size_t p = 0, q; (q = text.find('\n', p)) != std::string::npos; p = q + 1) lines.push_back(text.substr(p, q - p));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].size(), 14u + 1 + 6);
  EXPECT_EQ(lines[0].substr(14), " opened");
  EXPECT_TRUE(VCppLib::VStr::isInteger(lines[0].substr(0, 14)));
  EXPECT_EQ(lines[1].substr(14), " closed");
  logLevel = -1;  // off
  logMessage("hidden");
  EXPECT_EQ(readFileToString(log), text);
  // Kept: the old log moves aside under a time-stamped name.
  openLog(log, true);
  EXPECT_FALSE(fileExists(log));
  // The renamed file is work<time stamp>.log, the only file in the folder now.
  std::string listing;
  thTest::runCommand("ls " + dir.path(), &listing);
  EXPECT_NE(listing.find(".log"), std::string::npos);
  EXPECT_EQ(listing.find("work.log"), std::string::npos);
  std::string renamed = dir.file(listing.substr(0, listing.find('\n')));
  EXPECT_EQ(readFileToString(renamed), text);
  EXPECT_EQ(fileName(renamed).size(), 4u + 14 + 4);
  logFileName = "";
  logLevel = 0;
  logMessage("nowhere");  // no log file set: nothing happens
  logFileName = savedName;
  logLevel = savedLevel;
}

TEST(VFiles, CaptureStdout) {
  EXPECT_EQ(captureStdoutStart(1), nullptr);
  char* buf = captureStdoutStart(4096);
  ASSERT_NE(buf, nullptr);
  std::printf("captured %d", 42);
  std::cout << " and more" << std::flush;
  std::string got = captureStdoutEnd(buf);
  delete[] buf;
  EXPECT_EQ(got, "captured 42 and more");
  EXPECT_EQ(captureStdoutEnd(nullptr), "");
  std::printf("\n");
}

TEST(VFiles, CaptureStdoutBeyondTheBuffer) {
  char* buf = captureStdoutStart(8);
  ASSERT_NE(buf, nullptr);
  std::printf("0123456789abc");
  std::string got = captureStdoutEnd(buf);
  EXPECT_EQ(got, "0123456");  // n - 1 bytes kept
  EXPECT_EQ(buf[7], '\0');
  delete[] buf;
}

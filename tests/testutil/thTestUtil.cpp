#include "testutil/thTestUtil.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace thTest {

TempDir::TempDir() {
  std::string tmpl = (fs::temp_directory_path() / "thalmod_test_XXXXXX").string();
  std::vector<char> buf(tmpl.begin(), tmpl.end());
  buf.push_back('\0');
  if (!mkdtemp(buf.data())) throw std::runtime_error("cannot make a temporary folder");
  dir = buf.data();
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(dir, ec);
}

void writeText(const std::string& path, const std::string& text) {
  std::ofstream f(path, std::ios::binary);
  f << text;
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream f(path, std::ios::binary);
  f.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::string readText(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream ss;
  ss << f.rdbuf();
  return ss.str();
}

int runCommand(const std::string& cmd, std::string* out) {
  FILE* p = popen((cmd + " 2>&1").c_str(), "r");
  if (!p) return -1;
  std::string text;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) text.append(buf, n);
  int status = pclose(p);
  if (out) *out = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void ncgen(const std::string& cdl, const std::string& ncPath, const std::string& kind) {
  std::string cdlPath = ncPath + ".cdl";
  writeText(cdlPath, cdl);
  std::string out;
  int rc =
      runCommand(std::string(THAL_NCGEN) + " -k " + kind + " -o '" + ncPath + "' '" + cdlPath + "'", &out);
  ASSERT_EQ(rc, 0) << "ncgen failed (" << kind << "): " << out;
}

std::string ncdump(const std::string& ncPath, const std::string& options) {
  std::string out;
  int rc = runCommand(std::string(THAL_NCDUMP) + " " + options + " '" + ncPath + "'", &out);
  EXPECT_EQ(rc, 0) << "ncdump failed: " << out;
  return out;
}

void truncateFile(const std::string& path, size_t keep) {
  std::error_code ec;
  fs::resize_file(path, keep, ec);
}

}  // namespace thTest

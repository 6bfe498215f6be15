// Log file layout: one line an entry, "YYYYMMDDhhmmss text\n" (local time), appended.
#include "support/VFiles.h"

#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

#include "support/VDT.h"
#include "support/VStr.h"

namespace VCppLib {

using FilePtr = std::unique_ptr<FILE, int (*)(FILE*)>;

static FilePtr openFile(const std::string& path, const char* mode) {
  return FilePtr(std::fopen(path.c_str(), mode), std::fclose);
}

static bool isRegularOrOther(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

// ---- Log

void logMessage(std::string text) {
  if (logLevel < 0 || logFileName.empty()) return;
  writeTextFile(logFileName, VDT::nowStr(VTimeStampFmt) + " " + text + newline, true);
}

void openLog(std::string path, bool keepOld) {
  logFileName = path;
  if (!fileExists(path)) return;
  if (keepOld) {
    std::rename(path.c_str(), insertBeforeExt(path, VDT::nowStr(VTimeStampFmt)).c_str());
  } else {
    std::remove(path.c_str());
  }
}

// ---- Whole files

std::string readFileToString(std::string path) {
  if (!isRegularOrOther(path)) return "";
  FilePtr f = openFile(path, "rb");
  if (!f) return "";
  std::string out;
  // The length found by seeking is only a hint: some files (devices, pipes) report none.
  if (std::fseek(f.get(), 0, SEEK_END) == 0) {
    long len = std::ftell(f.get());
    if (len > 0 && len < (1L << 32)) out.reserve(static_cast<size_t>(len));
  }
  std::rewind(f.get());
  char buf[65536];
  size_t got;
  while ((got = std::fread(buf, 1, sizeof buf, f.get())) > 0) out.append(buf, got);
  return out;
}

int32_t writeTextFile(std::string path, std::string text, bool append) {
  FilePtr f = openFile(path, append ? "ab" : "wb");
  if (!f) return -1;
  std::fwrite(text.data(), 1, text.size(), f.get());
  return 0;
}

// Directories open for reading here, unlike on the platform these helpers come from: they are not files.
bool fileExists(std::string path) { return isRegularOrOther(path) && openFile(path, "r") != nullptr; }

int64_t fileModTime(std::string path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? static_cast<int64_t>(st.st_mtime) : 0;
}

int64_t fileCreateTime(std::string path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? static_cast<int64_t>(st.st_ctime) : 0;
}

int32_t fileSize(std::string path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return 0;
  return static_cast<int32_t>(std::min<int64_t>(st.st_size, std::numeric_limits<int32_t>::max()));
}

// ---- File names

static size_t lastSeparator(const std::string& path) { return path.find_last_of("\\/"); }

std::string dirPart(std::string path) {
  size_t p = lastSeparator(path);
  return p == std::string::npos ? "" : path.substr(0, p);
}

std::string fileName(std::string path) {
  size_t p = lastSeparator(path);
  return p == std::string::npos ? path : path.substr(p + 1);
}

std::string baseName(std::string path) {
  std::string name = fileName(path);
  size_t dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(0, dot);
}

std::string extPart(std::string path) {
  size_t dot = path.rfind('.');
  return dot == std::string::npos ? path : path.substr(dot + 1);
}

std::string setExt(std::string path, std::string ext) {
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot + 1 == path.size()) return path + "." + ext;
  return path.substr(0, dot + 1) + ext;
}

std::string insertBeforeExt(std::string path, std::string tag) {
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot == 0) return path;
  return path.substr(0, dot) + tag + path.substr(dot);
}

// The separator added is "\\" as before; a text ending with "/" already has one.
std::string addBackslash(std::string dir) {
  if (dir.empty() || dir.back() == '\\' || dir.back() == '/') return dir;
  return dir + "\\";
}

// ---- Directories

std::vector<std::string> listDirs(std::string dir, std::string pattern) {
  std::vector<std::string> names;
  std::string where = dir.empty() ? "." : dir;
  std::unique_ptr<DIR, int (*)(DIR*)> d(opendir(where.c_str()), closedir);
  if (!d) return names;
  // "*.*" matches every name, as the wildcard of the original platform does.
  bool all = pattern == "*.*" || pattern == "*";
  while (dirent* e = readdir(d.get())) {
    std::string name = e->d_name;
    if (name == "." || name == "..") continue;
    if (!all && fnmatch(pattern.c_str(), name.c_str(), 0) != 0) continue;
    if (isDir(where + "/" + name)) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool isDir(std::string path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool makeDir(std::string path) { return mkdir(path.c_str(), 0777) == 0 || errno == EEXIST; }

void changeDir(std::string path) {
  if (chdir(path.c_str()) != 0) return;  // a failure leaves the current directory as it was
}

std::string currentDir() {
  std::vector<char> buf(PATH_MAX + 1);
  if (getcwd(buf.data(), buf.size()) == nullptr) return "";
  return buf.data();
}

int32_t renameFile(std::string from, std::string to) { return std::rename(from.c_str(), to.c_str()); }

void copyFile(std::string from, std::string to) {
  FilePtr in = openFile(from, "rb");
  if (!in) return;
  FilePtr out = openFile(to, "wb");
  if (!out) return;
  char buf[512];
  size_t got;
  while ((got = std::fread(buf, 1, sizeof buf, in.get())) > 0) std::fwrite(buf, 1, got, out.get());
}

int32_t deleteFile(std::string path) {
  if (!fileExists(path)) return -1;
  return std::remove(path.c_str());
}

// ---- Sizes

std::string sizeToStr(int32_t bytes) {
  static const char* units[] = {"bytes", "KB", "MB", "GB", "TB", "PB"};
  int32_t step = 0;
  while (bytes >= 1024) {
    bytes >>= 10;
    step++;
  }
  return std::to_string(bytes) + " " + units[step];
}

uint64_t parseSize(std::string s) {
  std::string t = VStr::toLower(VStr::replaceAll(s, " ", ""));
  double mult = 1.0;
  if (t.size() >= 3) {
    std::string suffix = t.substr(t.size() - 2);
    if (suffix == "kb")
      mult = 1024.0;
    else if (suffix == "mb")
      mult = 1048576.0;
    else if (suffix == "gb")
      mult = 1073741824.0;
    else if (suffix == "tb")
      mult = 1099512000000.0;  // rounded decimals, not powers of 1024
    else if (suffix == "pb")
      mult = 1125900000000000.0;
  }
  double v = std::atof(s.c_str()) * mult;
  if (!(v > 0)) return 0;  // negative sizes and NaN
  if (v >= 18446744073709551616.0) return std::numeric_limits<uint64_t>::max();
  return static_cast<uint64_t>(v);
}

// ---- Capturing standard output
// The stdio buffer alone does not hold what was printed: the C library may flush it at any write.
// So, beside the buffer, descriptor 1 goes to an anonymous file while the capture runs, and at the
// end what went there is copied into the buffer.

namespace {
struct Capture {
  size_t size = 0;       // of the buffer handed out
  int savedFd = -1;      // descriptor 1 as it was
  FILE* sink = nullptr;  // where descriptor 1 points meanwhile
};
Capture capture;
}  // namespace

char* captureStdoutStart(int32_t n) {
  if (n < 2 || capture.savedFd >= 0) return nullptr;
  std::fflush(stdout);
  char* buffer = new char[n]();
  capture.size = static_cast<size_t>(n);
  capture.sink = std::tmpfile();
  if (capture.sink != nullptr) {
    capture.savedFd = dup(STDOUT_FILENO);
    if (capture.savedFd < 0 || dup2(fileno(capture.sink), STDOUT_FILENO) < 0) {
      if (capture.savedFd >= 0) close(capture.savedFd);
      capture.savedFd = -1;
      std::fclose(capture.sink);
      capture.sink = nullptr;
    }
  }
  std::setvbuf(stdout, buffer, _IOFBF, capture.size);
  return buffer;
}

std::string captureStdoutEnd(char* buffer) {
  std::fputs("#cpf#", stdout);
  std::setvbuf(stdout, nullptr, _IONBF, 0);  // flushes what is still buffered
  if (capture.savedFd >= 0) {
    dup2(capture.savedFd, STDOUT_FILENO);
    close(capture.savedFd);
    capture.savedFd = -1;
    if (buffer != nullptr) {
      std::rewind(capture.sink);
      size_t got = std::fread(buffer, 1, capture.size - 1, capture.sink);
      std::memset(buffer + got, 0, capture.size - got);
    }
    std::fclose(capture.sink);
    capture.sink = nullptr;
  }
  if (buffer == nullptr) return "";
  std::string held(buffer, strnlen(buffer, capture.size));
  size_t mark = held.find("#cpf#");
  return mark == std::string::npos ? held : held.substr(0, mark);
}

}  // namespace VCppLib

// Fixture writers and checks shared by all test programs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "support/VCppLib.h"

namespace thTest {

// A fresh, empty folder for the running test, removed when the object goes.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return dir; }
  std::string file(const std::string& name) const { return dir + "/" + name; }

 private:
  std::string dir;
};

void writeText(const std::string& path, const std::string& text);
void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes);
std::string readText(const std::string& path);

// Appends the bytes of a value in the machine's (little-endian) order.
template <typename T>
void putLE(std::vector<uint8_t>& out, T v) {
  const auto* p = reinterpret_cast<const uint8_t*>(&v);
  out.insert(out.end(), p, p + sizeof(T));
}

// Writes a NetCDF file of the given kind ("nc4", "classic", "64-bit-offset", "cdf5") from CDL text
// through ncgen; fails the test if ncgen fails.
void ncgen(const std::string& cdl, const std::string& ncPath, const std::string& kind = "nc4");
// ncdump's output of a file (with the given options, e.g. "-h" or "-v var").
std::string ncdump(const std::string& ncPath, const std::string& options = "");
// Runs a shell command, returning its exit status and (optionally) its standard output.
int runCommand(const std::string& cmd, std::string* out = nullptr);

// Cuts a file down to its first `keep` bytes.
void truncateFile(const std::string& path, size_t keep);

// The first n entries of a plain array, for comparing with EXPECT_EQ.
template <typename T>
std::vector<T> arr(const T* p, int64_t n) {
  return std::vector<T>(p, p + n);
}

// A new heap array holding v, for the library's fields that own raw arrays.
template <typename T>
T* newArray(const std::vector<T>& v) {
  T* a = new T[v.size()];
  std::copy(v.begin(), v.end(), a);
  return a;
}

// The first n entries (none when n < 0) of an array handed to the caller, which is freed here.
template <typename T>
std::vector<T> take(T* p, int64_t n) {
  std::vector<T> v(p, p + (n > 0 ? n : 0));
  delete[] p;
  return v;
}

// Success when both lists have the same length and every entry lies within tol of its counterpart.
inline ::testing::AssertionResult near(const std::vector<double>& got, const std::vector<double>& want,
                                       double tol = 1e-12) {
  if (got.size() != want.size()) return ::testing::AssertionFailure() << got.size() << " entries";
  for (size_t i = 0; i < want.size(); i++)
    if (!(std::fabs(got[i] - want[i]) <= tol))
      return ::testing::AssertionFailure() << "entry " << i << " is " << got[i] << ", not " << want[i];
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult contains(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "\"" << text << "\" does not contain \"" << part << "\"";
}

}  // namespace thTest

// Runs a statement and, if it throws VCppLib::VException, applies `check` to its message (message_);
// fails the test if it throws none. No lambda: the statement may name structured bindings.
#define THTEST_VEXCEPTION_CHECK_(stmt, check)               \
  do {                                                      \
    std::string message_;                                   \
    bool thrown_ = false;                                   \
    try {                                                   \
      stmt;                                                 \
    } catch (const VCppLib::VException& e_) {               \
      thrown_ = true;                                       \
      message_ = e_.message;                                \
    }                                                       \
    if (thrown_) {                                          \
      check;                                                \
    } else {                                                \
      ADD_FAILURE() << "expected a VException from " #stmt; \
    }                                                       \
  } while (0)

// Checks that a statement throws VCppLib::VException whose message is exactly `msg`.
#define EXPECT_VEXCEPTION(stmt, msg) THTEST_VEXCEPTION_CHECK_(stmt, EXPECT_EQ(message_, std::string(msg)))

// Checks that a statement throws VCppLib::VException whose message contains `part`.
#define EXPECT_VEXCEPTION_HAS(stmt, part) \
  THTEST_VEXCEPTION_CHECK_(stmt, EXPECT_TRUE(thTest::contains(message_, part)))

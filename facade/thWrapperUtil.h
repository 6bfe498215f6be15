// Conversions of the facade between the library's plain arrays and the caller's vectors. Internal
// to the facade sources.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/VCppLib.h"

namespace thWrapper {

// A new vector with the first l values of arr; empty for a null arr or l <= 0. arr stays.
template <typename T>
std::vector<T> cArr2cliArr(const T* arr, int64_t l) {
  if (!arr || l <= 0) return {};
  return std::vector<T>(arr, arr + l);
}

// A caller's vector, its length as the library's 32-bit count.
template <typename T>
int32_t arrLen(const std::vector<T>& v, const char* fn, const char* what) {
  if (v.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max()))
    throw VCppLib::VException(std::string(fn) + ": the array " + what + " is too long.");
  return static_cast<int32_t>(v.size());
}

// The address of a caller's array, null for an empty one.
template <typename T>
T* arrPtr(std::vector<T>& v) {
  return v.empty() ? nullptr : v.data();
}
template <typename T>
const T* arrPtr(const std::vector<T>& v) {
  return v.empty() ? nullptr : v.data();
}

// Raises unless `have` is at least `need` entries.
inline void needLength(int64_t have, int64_t need, const char* fn, const char* what) {
  if (have < need)
    throw VCppLib::VException(std::string(fn) + ": the array " + what + " holds " + std::to_string(have) +
                              " values, fewer than the " + std::to_string(need) + " needed.");
}

}  // namespace thWrapper

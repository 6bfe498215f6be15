// Shared types of the whole library: the exception, the deleted value and the global constants.
#pragma once

#include <cstdint>
#include <string>

namespace VCppLib {

// The one exception type of the system. Thrown by value, caught by reference; the text is in `message`.
class VException {
 public:
  std::string message;
  int32_t code = 0;  // copied with the object; nothing sets or reads it

  explicit VException(std::string text) : message(std::move(text)) {}
  const std::string& what() const { return message; }
  void print() const;  // the message and a line end on standard output
};

// The library's floating type.
using vfloat = double;

inline const std::string newline = "\n";
inline const std::string VTimeStampFmt = "%Y%m%d%H%M%S";
inline constexpr bool vfloatIsDbl = true;

}  // namespace VCppLib

// The deleted value: cells under the sea bed, points outside the mesh, empty text fields.
inline constexpr float delVal = -1e-30f;

namespace thGlobal {
extern const std::string email;
// Appended to messages of failures that a user may not understand.
extern const std::string errTail;
}  // namespace thGlobal

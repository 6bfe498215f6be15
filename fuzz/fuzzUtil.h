// Shared pieces of the fuzz targets: the bytes of an input as a file of a chosen name, for the
// readers that take file names.
#pragma once

#include <unistd.h>
#include <utime.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace thFuzz {

// A file in a folder of this process that holds the input; removed when the object goes.
class InputFile {
 public:
  std::string path;
  InputFile(const uint8_t* data, size_t size, const std::string& ext) {
    path = "/tmp/thfuzz-" + std::to_string(getpid()) + "." + ext;
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f) {
      if (size > 0) std::fwrite(data, 1, size, f);
      std::fclose(f);
    }
  }
  ~InputFile() { std::remove(path.c_str()); }
  // Dates the file back to 2011-01-01, before the readers that go by a file's age expect a version.
  void makeOld() const {
    struct utimbuf t = {1293840000, 1293840000};
    utime(path.c_str(), &t);
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
};

// True for input that the NetCDF library would hand to HDF5 (the signature at byte 0, 512, 1024,
// 2048, ...), unless THALMOD_FUZZ_HDF5 is set. Damaged HDF5 files crash, hang and leak inside
// HDF5 itself, beyond this library's reach, so the regular runs keep to the formats it reads.
inline bool skipHdf5(const uint8_t* data, size_t size) {
  static const bool withHdf5 = std::getenv("THALMOD_FUZZ_HDF5") != nullptr;
  if (withHdf5) return false;
  for (size_t at = 0; at + 8 <= size; at = at == 0 ? 512 : 2 * at)
    if (std::memcmp(data + at, "\x89HDF\r\n\x1a\n", 8) == 0) return true;
  return false;
}

}  // namespace thFuzz

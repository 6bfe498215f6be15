// Mesh files: text input through the text reader, anything else as a binary image. The first
// byte picks the version the image is read as (-1, a stand-alone mesh file, or 0 to 8).
#include "fuzzUtil.h"
#include "mesh/thMesh2D.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const int version = data[0] % 10 - 1;
  const char* body = reinterpret_cast<const char*>(data + 1);
  try {
    thalmod::thMesh2D text;
    text.readMeshText(std::string(body, size - 1));
  } catch (const VCppLib::VException&) {
  }
  try {
    thalmod::thMesh2D binary;
    binary.readMeshBuffer(body, static_cast<uint32_t>(version), static_cast<int64_t>(size - 1));
  } catch (const VCppLib::VException&) {
  }
  return 0;
}

// Bathymetry grids: a NetCDF raster read and painted through the facade, as paint-bathy does, once
// under a plain name and once under a name that says GEBCO (another layout of the variables).
#include <vector>

#include "facade/miscWrapper.h"
#include "fuzzUtil.h"
#include "support/VCppLib.h"

namespace {

void paint(const uint8_t* data, size_t size, const char* ext) {
  thFuzz::InputFile in(data, size, ext);
  const int32_t nx = 16, ny = 12;
  std::vector<uint8_t> bitmap(static_cast<size_t>(nx) * ny * 4);
  std::vector<int32_t> colours = {0x0000ff, 0x00ff00, 0xff0000};
  try {
    thWrapper::miscWrapper w;
    w.readNetCdfBathyAndInterpOnBitmap(in.path, bitmap, nx, ny, 3, 0.0, 100.0, 0.0, 100.0, -50.0, 10.0,
                                       colours, 2.0);
  } catch (const VCppLib::VException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (thFuzz::skipHdf5(data, size)) return 0;
  paint(data, size, "nc");
  paint(data, size, "gebco.nc");
  return 0;
}

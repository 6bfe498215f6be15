// Named colour palettes: a few control colours that the library's colour ramp spreads over the
// colour steps of a picture.
#include <string>
#include <vector>

#include "thalArgs.h"
#include "thalImage.h"

namespace thTool {

namespace {

struct Palette {
  const char* name;
  std::vector<int32_t> controls;  // 0xRRGGBB, low value first
};

const std::vector<Palette>& palettes() {
  static const std::vector<Palette> all = {
      // A rainbow that stays readable: dark blue over cyan, green and yellow to dark red.
      {"turbo",
       {0x30123B, 0x4662D7, 0x36AAF9, 0x1AE4B6, 0x72FE5E, 0xC8EF34, 0xFABA39, 0xF66B19, 0xCA2A04, 0x7A0403}},
      {"viridis",
       {0x440154, 0x482878, 0x3E4A89, 0x31688E, 0x26828E, 0x1F9E89, 0x35B779, 0x6DCD59, 0xB4DE2C, 0xFDE725}},
      // Water depth: pale for shallow, dark blue for deep.
      {"deep", {0xE4F4FB, 0xB5E0F0, 0x7FC4E3, 0x4C9FD0, 0x2A75B5, 0x174D93, 0x0B2C66, 0x06173D}},
      // Diverging, for anomalies around a middle value.
      {"balance", {0x1B2A8C, 0x4A78C8, 0xA6C8E8, 0xF5F5F5, 0xF0B19A, 0xD0553D, 0x7A0C1E}},
      {"gray", {0x000000, 0xFFFFFF}},
  };
  return all;
}

}  // namespace

std::string paletteNames() {
  std::string s;
  for (const Palette& p : palettes()) s += (s.empty() ? "" : ", ") + std::string(p.name);
  return s;
}

std::vector<int32_t> paletteControls(const std::string& name) {
  for (const Palette& p : palettes())
    if (name == p.name) {
      std::vector<int32_t> c;
      for (int32_t rgb : p.controls)
        c.push_back(static_cast<int32_t>(0xFF000000u | static_cast<uint32_t>(rgb)));
      return c;
    }
  throw ToolError("Unknown palette '" + name + "'; the palettes are " + paletteNames() + ".");
}

}  // namespace thTool

// The colours of every picture of thal: one colour table from a named palette, and one way to
// find the range of values that it spans.
#include <algorithm>
#include <cmath>
#include <memory>

#include "facade/thResultFileWrapper.h"
#include "interp/VDraw.h"
#include "thalCommands.h"
#include "thalImage.h"

namespace thTool {

bool hasValue(double v) {
  return std::isfinite(v) && v != static_cast<double>(thWrapper::thResultFileWrapper::delVal());
}

// The facade paints with a caller's colour table but makes none: the ramp is the library's own.
std::vector<int32_t> colourTable(const std::string& palette) {
  const std::vector<int32_t> controls = paletteControls(palette);
  std::unique_ptr<int32_t[]> ramp(
      VCppLib::VDraw::colourRamp(controls.data(), static_cast<int32_t>(controls.size()), colourSteps));
  return std::vector<int32_t>(ramp.get(), ramp.get() + colourSteps);
}

void colourRange(const Args& args, const std::vector<double>& values, const std::string& noValues, double& lo,
                 double& hi) {
  if (args.has("--range")) {
    parseRange(args.required("--range"), lo, hi);
    return;
  }
  lo = INFINITY;
  hi = -INFINITY;
  for (double v : values)
    if (hasValue(v)) {
      lo = std::min(lo, v);
      hi = std::max(hi, v);
    }
  if (!(lo <= hi)) throw ToolError(noValues);
  if (!(lo < hi)) {  // a uniform field still needs a scale
    lo -= 0.5;
    hi += 0.5;
  }
}

}  // namespace thTool

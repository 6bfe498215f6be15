// The subcommands of thal. Each returns the exit status; failures raise ToolError or pass the
// library's VCppLib::VException through to main().
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "thalArgs.h"

namespace thTool {

int cmdInfo(const Args& args);
int cmdPaint(const Args& args);
int cmdPaintBathy(const Args& args);
int cmdSeries(const Args& args);
int cmdProfile(const Args& args);
int cmdSample(const Args& args);
int cmdConvert(const Args& args);
int cmdExportUgrid(const Args& args);
// thal mesh SUBCOMMAND ...: parses its own arguments (it has a switch, --tri-only).
int cmdMesh(int argc, char** argv);
// thal section FILE ...: parses its own arguments (it has a switch, --csv).
int cmdSection(int argc, char** argv);

// Colour steps of every picture, and the named palette spread over them, so that a map and its
// legend use the same colours.
inline constexpr int32_t colourSteps = 256;
std::vector<int32_t> colourTable(const std::string& palette);
// A value to paint: finite and not the deleted value of the result files.
bool hasValue(double v);
// The colour range of a picture: --range MIN:MAX when given, else from the least to the greatest
// painted value (a uniform field widened by 0.5 either way); without any, ToolError(noValues).
void colourRange(const Args& args, const std::vector<double>& values, const std::string& noValues, double& lo,
                 double& hi);

// The map's width and height from --size, which gives the whole picture, legend included.
// Without --size the width is 800 and the height 0: the map's own proportions decide it.
void mapSize(const Args& args, int& w, int& h);

}  // namespace thTool

// The subcommands of thal. Each returns the exit status; failures raise ToolError or pass the
// library's VCppLib::VException through to main().
#pragma once

#include "thalArgs.h"

namespace thTool {

int cmdInfo(const Args& args);
int cmdPaint(const Args& args);
int cmdPaintBathy(const Args& args);
int cmdSeries(const Args& args);
int cmdProfile(const Args& args);
int cmdSample(const Args& args);
int cmdConvert(const Args& args);
// thal mesh SUBCOMMAND ...: parses its own arguments (it has a switch, --tri-only).
int cmdMesh(int argc, char** argv);
// thal section FILE ...: parses its own arguments (it has a switch, --csv).
int cmdSection(int argc, char** argv);

// The map's width and height from --size, which gives the whole picture, legend included.
// Without --size the width is 800 and the height 0: the map's own proportions decide it.
void mapSize(const Args& args, int& w, int& h);

}  // namespace thTool

// thal: looks into the result files of the model from the command line.
// Every failure ends as one line "thal: <sentence>" on standard error and exit status 1.
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <new>
#include <set>
#include <string>

#include "support/VCppLib.h"
#include "thalCommands.h"
#include "thalImage.h"

namespace {

using thTool::Args;

const char* usageText =
    "Usage: thal COMMAND ...\n"
    "\n"
    "  thal info FILE [--level N]\n"
    "      the file's report, its items with their kinds, the time axis and the mesh\n"
    "  thal paint FILE --item NAME --time T [--layer L] [--size WxH] [--range MIN:MAX]\n"
    "             [--palette NAME] -o OUT.png\n"
    "      a layer at a timestep as a PNG map with a legend; T is a timestep number or a date-time\n"
    "      \"YYYY-MM-DD HH:MM:SS\"; L is a layer (0 at the bottom), bottom (-1), top (999, the default)\n"
    "      or surface\n"
    "  thal paint-bathy FILE.nc [--size WxH] [--range MIN:MAX] [--palette NAME] -o OUT.png\n"
    "      a gridded bathymetry (NetCDF with x and y coordinate variables) as a PNG map\n"
    "  thal series FILE --item NAME --at X,Y [--layer L]\n"
    "      the values at a point over all timesteps, as CSV (L defaults to the surface)\n"
    "  thal profile FILE --item NAME --at X,Y --time T\n"
    "      the values of all layers at a point and a timestep, as CSV\n"
    "  thal section FILE --item NAME --line X1,Y1:X2,Y2[:...] --time T [--csv] [-o OUT.png]\n"
    "               [--size WxH] [--range MIN:MAX] [--palette NAME]\n"
    "      a 3-D item cell by cell along a polyline, as CSV (--csv) or as a PNG of the vertical\n"
    "      section (distance along the line against depth) with the sea bed and a legend\n"
    "  thal convert IN OUT\n"
    "      rewrites a result file as NC or EMB, by OUT's extension (.nc, .emb): every item and\n"
    "      timestep, the time axis and the model description with its mesh\n"
    "  thal export-ugrid RUN OUT.nc\n"
    "      the whole run as a NetCDF-4 file of the UGRID 1.0 conventions (for xarray and the like)\n"
    "  thal sample DIR\n"
    "      writes a sample model run (fjord.nc) and its bathymetry (fjord_bathy.nc) into DIR\n"
    "  thal mesh info MESH\n"
    "      counts, extent, projection, boundaries, the orthogonality verdict and the worst angles\n"
    "  thal mesh convert IN OUT\n"
    "      a mesh file as text (.mesh, .emt, .txt) or binary (.emb, .bmesh, .bin), by OUT's extension\n"
    "  thal mesh optimise IN OUT [--passes N] [--tri-only] [--even F]\n"
    "      N sweeps (3) moving each inner node to the mean of its neighbours (--tri-only: among\n"
    "      triangles only; --even F: each sweep also draws nodes toward larger elements by F), fresh\n"
    "      Voronoi points, and the orthogonality before and after\n"
    "  thal mesh project IN OUT --to lonlat|utmNN\n"
    "      the mesh in longitude/latitude or UTM zone NN (negative south of the equator)\n"
    "  thal mesh merge A B OUT\n"
    "      two meshes joined at their common nodes\n"
    "      (each mesh command takes --projection P, the projection of its input: UTM32 unless given)\n"
    "\n"
    "FILE is a result file: NC, or EMB with the \"^\" files that continue it (RESTART and DECOUPLED\n"
    "files too, where their items allow). A TEXT0D table goes to info and to series (without --at),\n"
    "a TEXT1D table to info.\n";

struct Command {
  const char* name;
  std::set<std::string> options;
  std::function<int(const Args&)> run;
};

const Command commands[] = {
    {"info", {"--level"}, thTool::cmdInfo},
    {"paint", {"--item", "--time", "--layer", "--size", "--range", "--palette", "-o"}, thTool::cmdPaint},
    {"paint-bathy", {"--size", "--range", "--palette", "-o"}, thTool::cmdPaintBathy},
    {"series", {"--item", "--at", "--layer"}, thTool::cmdSeries},
    {"profile", {"--item", "--at", "--time"}, thTool::cmdProfile},
    {"sample", {}, thTool::cmdSample},
    {"convert", {}, thTool::cmdConvert},
    {"export-ugrid", {}, thTool::cmdExportUgrid},
};

// One line, whatever the message holds.
int fail(std::string message) {
  for (char& c : message)
    if (c == '\n' || c == '\r') c = ' ';
  while (!message.empty() && message.back() == ' ') message.pop_back();
  std::cout.flush();
  std::cerr << "thal: " << message << std::endl;
  return 1;
}

int run(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << usageText;
    return 1;
  }
  const std::string name = argv[1];
  if (name == "--help" || name == "-h" || name == "help") {
    std::cout << usageText << "\nPalettes: " << thTool::paletteNames() << ".\n";
    return 0;
  }
  if (name == "mesh") return thTool::cmdMesh(argc, argv);
  if (name == "section") return thTool::cmdSection(argc, argv);
  for (const Command& c : commands)
    if (name == c.name) return c.run(Args::parse(name, argc, argv, 2, c.options));
  return fail("Unknown command '" + name + "'; 'thal --help' lists the commands.");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const thTool::ToolError& e) {
    return fail(e.message);
  } catch (const VCppLib::VException& e) {
    return fail(e.message);
  } catch (const std::bad_alloc&) {
    return fail("Out of memory.");
  } catch (const std::exception& e) {
    return fail(e.what());
  } catch (...) {
    return fail("An unexpected failure stopped the command.");
  }
}
